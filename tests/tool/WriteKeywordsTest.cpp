#include "platform/foundation/Array.h"
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

TEST_F(WriteKeywords, WithoutPropertiesNothingIsWritten) {
  for (const ns::Value& properties : {ns::Value(), ns::Value("text"), ns::Value(ns::Array{1})}) {
    log_.clear();
    const std::string path = documentWith(properties);
    const ns::Data before = ns::readFile(path);
    EXPECT_EQ(writeKeywords(path, {{ns::String("x")}}), kFailure);
    EXPECT_EQ(log_, std::vector<std::string>{"fail: write document"});
    EXPECT_EQ(ns::readFile(path), before);
  }
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
