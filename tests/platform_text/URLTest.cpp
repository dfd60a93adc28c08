#include "platform/text/URL.h"

#include <gtest/gtest.h>

#include <fstream>

#include "TextTesting.h"

namespace ns {
namespace {

std::string fileURL(const std::string& path) {
  const auto url = URL::fileURLWithPath(path);
  return url ? url->relativeString().utf8() : "none";
}

Value relativeTo(const Value& base, const char* text) {
  return Record(makeClass({"NSURL", "NSObject"}),
                {{"NS.base", Field::reference(base)}, {"NS.relative", Field::reference(text)}})
      .asValue();
}

TEST(URL, FileURLsArePercentEscaped) {
  EXPECT_EQ(fileURL("/Users/me/a.txt"), "file:///Users/me/a.txt");
  EXPECT_EQ(fileURL("/a b%c?d#e;f"), "file:///a%20b%25c%3Fd%23e%3Bf");
  EXPECT_EQ(fileURL("/[\"<>\\^`{|}]"), "file:///%5B%22%3C%3E%5C%5E%60%7B%7C%7D%5D");
  EXPECT_EQ(fileURL("/-._~!$&'()*+,=:@"), "file:///-._~!$&'()*+,=:@");
  EXPECT_EQ(fileURL("/0123456789azAZ"), "file:///0123456789azAZ");
  // what stands in ASCII right before and behind letters and digits
  EXPECT_EQ(fileURL("/@[`{:;"), "file:///@%5B%60%7B:%3B");
  EXPECT_EQ(fileURL("/\x7F\x80"), "file:///%7F%80");
  EXPECT_EQ(fileURL("/grün"), "file:///gr%C3%BCn");
  EXPECT_EQ(fileURL("/\xFF\n"), "file:///%FF%0A");
}

TEST(URL, AFolderEndsInASlash) {
  const TemporaryFolder folder;
  EXPECT_EQ(fileURL(folder.path()), "file://" + folder.path() + "/");
  EXPECT_EQ(fileURL(folder / ""), "file://" + folder.path() + "/");
  EXPECT_EQ(fileURL("/no/such/folder/"), "file:///no/such/folder/");
  EXPECT_EQ(fileURL("/"), "file:///");
}

TEST(URL, AFileDoesNot) {
  const TemporaryFolder folder;
  std::ofstream(folder / "a").put('x');
  EXPECT_EQ(fileURL(folder / "a"), "file://" + folder.path() + "/a");
}

TEST(URL, ARelativePathStartsAtTheWorkingFolder) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path("/");
  EXPECT_EQ(fileURL("no-such-file"), "file:///no-such-file");
  std::filesystem::current_path(before);
  EXPECT_EQ(fileURL("no-such-file"),
            "file://" + (std::filesystem::current_path() / "no-such-file").string());
}

TEST(URL, SomePathsMakeNone) {
  EXPECT_EQ(fileURL(""), "none");
  EXPECT_EQ(fileURL(std::string("/a\0b", 4)), "none");
  EXPECT_FALSE(URL::URLWithString(""));
}

TEST(URL, TheRecordIsThatOfThePlatform) {
  const Record record(URL::URLWithString("http://a.b")->asValue());
  EXPECT_EQ(record.archivedClass()->name, "NSURL");
  EXPECT_EQ(record.keys(), (std::vector<String>{"NS.base", "NS.relative"}));
  EXPECT_EQ(record.fieldForKey("NS.base").form, Field::Form::reference);
  EXPECT_TRUE(record.valueForKey("NS.base").isNone());
}

TEST(URL, Schemes) {
  const auto scheme = [](const char* text) {
    const auto found = URL::URLWithString(text)->scheme();
    return found ? found->utf8() : "none";
  };
  EXPECT_EQ(scheme("http://a.b"), "http");
  EXPECT_EQ(scheme("x-my.app+1:path"), "x-my.app+1");
  EXPECT_EQ(scheme("MAILTO:me"), "MAILTO");
  for (const char* const whole : {"a", "z", "A", "Z", "aA", "az", "zZ", "x0", "x9", "x0123456789",
                                  "x+", "x-", "x.", "zAZa+9-.0"}) {
    EXPECT_EQ(scheme((std::string(whole) + ":b").c_str()), whole);
  }
  for (const char* const other :
       {"0:b",  "9:b",  "+:b",  ".:b",  "@:b",  "[:b",  "`:b",  "{:b",      "x/:b",      "x;:b",
        "x@:b", "x[:b", "x`:b", "x{:b", "x,:b", "x*:b", "x :b", "\u00E9:b", "x\u00E9:b", "x"}) {
    EXPECT_EQ(scheme(other), "none") << other;
  }
  EXPECT_EQ(scheme("a:b:c"), "a");
  EXPECT_EQ(scheme("a/b:c"), "none");
  EXPECT_EQ(scheme("1a:b"), "none");
  EXPECT_EQ(scheme(":b"), "none");
  EXPECT_EQ(scheme("-a:b"), "none");
  EXPECT_EQ(scheme("plain"), "none");
}

TEST(URL, ARelativeURLHasTheSchemeOfItsBase) {
  const Value base = relativeTo(nullptr, "ftp://a.b/");
  EXPECT_EQ(URL::fromValue(relativeTo(relativeTo(base, "c/"), "d"))->scheme(), String("ftp"));
  EXPECT_EQ(URL::fromValue(relativeTo(base, "x:d"))->scheme(), String("x"));
  EXPECT_EQ(URL::fromValue(relativeTo("text", "d"))->scheme(), std::nullopt);
}

TEST(URL, AChainOfBasesIsFollowedForAWhile) {
  Value url = relativeTo(nullptr, "ftp://a.b/");
  for (int bases = 0; bases < 64; ++bases) url = relativeTo(url, "c");
  EXPECT_EQ(URL::fromValue(url)->scheme(), String("ftp"));
  EXPECT_EQ(URL::fromValue(relativeTo(url, "c"))->scheme(), std::nullopt);
}

TEST(URL, OnlyARecordOfItsClassIsOne) {
  EXPECT_FALSE(URL::fromValue("http://a.b"));
  EXPECT_FALSE(URL::fromValue(nullptr));
  EXPECT_FALSE(URL::fromValue(Record(makeClass({"NSShadow", "NSObject"})).asValue()));
  EXPECT_TRUE(URL::fromValue(Record(makeClass({"MyURL", "NSURL", "NSObject"})).asValue()));
}

}  // namespace
}  // namespace ns
