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

TEST_F(ReadKeywords, WhatCannotBeReadIsTold) {
  EXPECT_EQ(readKeywords(documentWith("a string"), nullptr), kFailure);
  EXPECT_EQ(log_,
            std::vector<std::string>{"the document properties are a string and not a dictionary"});
  log_.clear();
  EXPECT_EQ(readKeywords(documentWith(propertiesWith({"first", 5})), nullptr), kFailure);
  EXPECT_EQ(log_, std::vector<std::string>{"keyword 2 is an integer and not a string"});
}

TEST_F(ReadKeywords, FailuresToOpen) {
  EXPECT_EQ(readKeywords("", nullptr), kFailure);
  EXPECT_EQ(log_, std::vector<std::string>{"fail: file path"});
  log_.clear();
  EXPECT_EQ(readKeywords(folder_ + "/missing", nullptr), kFailure);
  ASSERT_FALSE(log_.empty());
  EXPECT_EQ(log_.back(), "fail: open document");
  log_.clear();
  ns::writeFileAtomically(folder_ + "/empty", ns::Data());
  EXPECT_EQ(readKeywords(folder_ + "/empty", nullptr), kFailure);
  EXPECT_EQ(log_, (std::vector<std::string>{"Document contains no data", "fail: open document"}));
  log_.clear();
  ns::writeFileAtomically(folder_ + "/text", ns::Data("some text"));
  EXPECT_EQ(readKeywords(folder_ + "/text", nullptr), kFailure);
  ASSERT_EQ(log_.size(), 2U);
  EXPECT_EQ(log_.back(), "fail: open document");
}

}  // namespace
}  // namespace tavlin
