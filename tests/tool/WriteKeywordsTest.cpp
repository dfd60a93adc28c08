#include <sys/stat.h>

#include <functional>

#include "platform/foundation/Array.h"
#include "platform/foundation/FileSteps.h"
#include "tests/tool/ToolTesting.h"
#include "tool/Modes.h"

namespace tavlin {
namespace {

using WriteKeywords = ToolTest;

TEST_F(WriteKeywords, ReplacesAndKeepsTheRest) {
  const std::string path = documentWith(
      ns::Dictionary{{"title", "T"}, {"keywords", ns::Array{"old"}}, {"authors", ns::Array{"A"}}});
  EXPECT_EQ(writeKeywords(path, {{ns::String("x\ty"), ns::String("p\nq")}}), kSuccess);
  EXPECT_EQ(propertiesOf(path), ns::Value(ns::Dictionary{{"title", "T"},
                                                         {"keywords", ns::Array{"x y", "p q"}},
                                                         {"authors", ns::Array{"A"}}}));
  EXPECT_TRUE(log_.empty());
}

TEST_F(WriteKeywords, AnEmptyListIsStored) {
  const std::string path = documentWith(ns::Dictionary{{"keywords", ns::Array{"old"}}});
  EXPECT_EQ(writeKeywords(path, std::vector<ns::String>()), kSuccess);
  EXPECT_EQ(propertiesOf(path).dictionary().objectForKey("keywords"), ns::Value(ns::Array()));
}

TEST_F(WriteKeywords, AddsTheEntryWhereThereIsNone) {
  const std::string path = documentWith(ns::Dictionary{{"title", "T"}});
  EXPECT_EQ(writeKeywords(path, {{ns::String("new")}}), kSuccess);
  EXPECT_EQ(propertiesOf(path).dictionary().objectForKey("keywords"), ns::Value(ns::Array{"new"}));
}

TEST_F(WriteKeywords, NoListFailsSilently) {
  const std::string path = documentWith(ns::Dictionary{{"title", "T"}});
  const ns::Data before = ns::readFile(path);
  EXPECT_EQ(writeKeywords(path, std::nullopt), kFailure);
  EXPECT_TRUE(log_.empty());
  EXPECT_EQ(ns::readFile(path), before);
}

TEST_F(WriteKeywords, WithoutPropertiesNothingIsWrittenAndTheReasonIsTold) {
  const std::pair<ns::Value, const char*> kRefused[] = {
      {ns::Value(), "the document has no properties that keywords could be put into"},
      {ns::Value("text"), "the document properties are a string and not a dictionary"},
      {ns::Value(ns::Array{1}), "the document properties are an array and not a dictionary"},
  };
  for (const auto& [properties, reason] : kRefused) {
    log_.clear();
    const std::string path = documentWith(properties);
    const ns::Data before = ns::readFile(path);
    EXPECT_EQ(writeKeywords(path, {{ns::String("x")}}), kFailure);
    EXPECT_EQ(log_, (std::vector<std::string>{path + ": " + reason, "fail: write document"}));
    EXPECT_EQ(ns::readFile(path), before);
  }
}

std::function<void()> theirs;  ///< done once the new file is complete

// Another program saves while the keywords are being written.
TEST_F(WriteKeywords, ADocumentThatWasSavedInBetweenIsNotOverwritten) {
  const std::string path = documentWith(ns::Dictionary{{"title", "T"}});
  theirs = [&] {
    theirs = nullptr;
    documentWith(ns::Dictionary{{"title", "theirs"}});
  };
  ns::fileFault = [](ns::FileStep step) {
    if (step == ns::FileStep::close && theirs) theirs();
    return 0;
  };
  const int status = writeKeywords(path, {{ns::String("x")}});
  ns::fileFault = nullptr;
  EXPECT_EQ(status, kFailure);
  EXPECT_EQ(log_, (std::vector<std::string>{
                      "replace " + path + ": another program has changed it meanwhile",
                      "fail: write document"}));
  EXPECT_EQ(propertiesOf(path), ns::Value(ns::Dictionary{{"title", "theirs"}}));
  EXPECT_EQ(writeKeywords(path, {{ns::String("x")}}), kSuccess);
}

// It could not be put back.
TEST_F(WriteKeywords, RefusesWhatCanBeReadOnlyOnce) {
  const std::string fifo = folder_ + "/fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(writeKeywords(fifo, {{ns::String("x")}}), kFailure);
  EXPECT_EQ(log_, (std::vector<std::string>{"read " + fifo + ": Operation not supported",
                                            "fail: open document"}));
}

TEST_F(WriteKeywords, FailuresToOpen) {
  EXPECT_EQ(writeKeywords("", {{ns::String("x")}}), kFailure);
  EXPECT_EQ(log_, std::vector<std::string>{"fail: file path"});
  log_.clear();
  EXPECT_EQ(writeKeywords(folder_ + "/missing", {{ns::String("x")}}), kFailure);
  ASSERT_FALSE(log_.empty());
  EXPECT_EQ(log_.back(), "fail: open document");
}

}  // namespace
}  // namespace tavlin
