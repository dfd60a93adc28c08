#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"
#include "tests/tool/ToolTesting.h"
#include "tool/Modes.h"

namespace tavlin {
namespace {

using ReadKeywords = ToolTest;

class ReadKeywordsOutput : public ToolTest {
 protected:
  /// What a read prints.
  std::string printed(const std::string& path, int expected = kSuccess) {
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(readKeywords(path, nullptr), expected);
    return ::testing::internal::GetCapturedStdout();
  }
};

ns::Value propertiesWith(const ns::Array& keywords) {
  return ns::Dictionary{{"keywords", keywords}};
}

TEST_F(ReadKeywordsOutput, CommasAreEscapedAndSeparate) {
  EXPECT_EQ(printed(documentWith(propertiesWith({"a,b", "c"}))), "a\\,b,c");
  EXPECT_EQ(printed(documentWith(propertiesWith({"back\\slash", "", "日本"}))),
            "back\\slash,,日本");
}

TEST_F(ReadKeywordsOutput, NothingToPrint) {
  EXPECT_EQ(printed(documentWith(ns::Value())), "");
  EXPECT_EQ(printed(documentWith(ns::Dictionary{{"title", "T"}})), "");
  EXPECT_EQ(printed(documentWith(ns::Dictionary{{"keywords", "no array"}})), "");
  EXPECT_EQ(printed(documentWith(propertiesWith({}))), "");
  EXPECT_TRUE(log_.empty());
}

TEST_F(ReadKeywordsOutput, AttributedKeywordsReadLikeStrings) {
  EXPECT_EQ(
      printed(documentWith(propertiesWith({ns::AttributedString(ns::String("rich,x")).asValue()}))),
      "rich\\,x");
}

TEST_F(ReadKeywords, CollectorIsEmptiedAndFilled) {
  std::vector<ns::String> collected{ns::String("old")};
  const std::string path = documentWith(propertiesWith({"a,b", "c"}));
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(readKeywords(path, &collected), kSuccess);
  (void)::testing::internal::GetCapturedStdout();
  EXPECT_EQ(collected, (std::vector<ns::String>{ns::String("a\\,b"), ns::String("c")}));
  collected = {ns::String("old")};
  EXPECT_EQ(readKeywords(documentWith(propertiesWith({})), &collected), kSuccess);
  EXPECT_TRUE(collected.empty());
}

TEST_F(ReadKeywords, WhatCannotBeReadIsToldWithTheFile) {
  const std::string path = documentWith("a string");
  EXPECT_EQ(readKeywords(path, nullptr), kFailure);
  EXPECT_EQ(log_, std::vector<std::string>{
                      path + ": the document properties are a string and not a dictionary"});
  log_.clear();
  EXPECT_EQ(readKeywords(documentWith(propertiesWith({"first", 5})), nullptr), kFailure);
  EXPECT_EQ(log_, std::vector<std::string>{path + ": keyword 2 is an integer and not a string"});
}

TEST_F(ReadKeywords, FailuresToOpen) {
  EXPECT_EQ(readKeywords("", nullptr), kFailure);
  EXPECT_EQ(log_, std::vector<std::string>{"fail: file path"});
  log_.clear();
  const std::string missing = folder_ + "/missing";
  EXPECT_EQ(readKeywords(missing, nullptr), kFailure);
  EXPECT_EQ(log_, (std::vector<std::string>{"open " + missing + ": No such file or directory",
                                            "fail: open document"}));
  log_.clear();
  const std::string empty = folder_ + "/empty";
  ns::writeFileAtomically(empty, ns::Data());
  EXPECT_EQ(readKeywords(empty, nullptr), kFailure);
  EXPECT_EQ(log_, (std::vector<std::string>{"Document contains no data",
                                            empty + ": there is no document in it",
                                            "fail: open document"}));
  log_.clear();
  const std::string text = folder_ + "/text";
  ns::writeFileAtomically(text, ns::Data("some text"));
  EXPECT_EQ(readKeywords(text, nullptr), kFailure);
  ASSERT_EQ(log_.size(), 2U);
  EXPECT_EQ(log_.front().rfind(text + ": ", 0), 0U) << log_.front();
  EXPECT_GT(log_.front().size(), text.size() + 2);
  EXPECT_EQ(log_.back(), "fail: open document");
}

TEST_F(ReadKeywords, KeepsNoDocument) {
  const std::string path = documentWith(propertiesWith({"a"}));
  const std::weak_ptr<OLDataManager> opened = openDocument(path);
  EXPECT_TRUE(opened.expired());
}

TEST_F(ReadKeywordsOutput, LeavesTheDocumentWithACallerWhoAsksForIt) {
  const std::string path = documentWith(propertiesWith({"a"}));
  std::shared_ptr<OLDataManager> opened;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(readKeywords(path, nullptr, &opened), kSuccess);
  (void)::testing::internal::GetCapturedStdout();
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(opened.use_count(), 1);
  EXPECT_EQ(opened->objectValueForKey("documentProperties"), ns::Value(propertiesWith({"a"})));
}

TEST_F(ReadKeywordsOutput, ReadsWhatCanBeReadOnce) {
  const ns::Data document = ns::readFile(documentWith(propertiesWith({"piped"})));
  const std::string fifo = folder_ + "/fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(fifo, std::ios::binary) << document.view(); });
  EXPECT_EQ(printed(fifo), "piped");
  writer.join();
  EXPECT_TRUE(log_.empty());
}

}  // namespace
}  // namespace tavlin
