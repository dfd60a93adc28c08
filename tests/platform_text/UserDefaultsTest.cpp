#include "platform/text/UserDefaults.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "TextTesting.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/File.h"
#include "platform/propertylist/PropertyList.h"
#include "platform/text/Color.h"

namespace ns {
namespace {

class UserDefaultsTest : public ::testing::Test {
 protected:
  void write(const std::string& bytes) { std::ofstream(path) << bytes; }
  void write(const Dictionary& values) {
    write(std::string(dataFromPropertyList(Value(values)).view()));
  }

  TemporaryFolder folder;
  std::string path = folder / "preferences.plist";
  UserDefaults defaults{path};
};

TEST_F(UserDefaultsTest, NoFileHasNoValues) {
  EXPECT_TRUE(defaults.valueForKeyPath("values.textFont").isNone());
  EXPECT_TRUE(defaults.unarchivedValueForKeyPath("values.textFont").isNone());
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(UserDefaultsTest, ValuesStandForTheTopOfTheList) {
  write(Dictionary{{"textFont", "stored"}});
  EXPECT_EQ(defaults.valueForKeyPath("values.textFont"), Value("stored"));
  EXPECT_TRUE(defaults.valueForKeyPath("textFont").isNone());
  EXPECT_TRUE(defaults.valueForKeyPath("values.").isNone());
  EXPECT_TRUE(defaults.valueForKeyPath("").isNone());
  EXPECT_TRUE(defaults.valueForKeyPath("values.other").isNone());
}

TEST_F(UserDefaultsTest, ReadsXml) {
  write(
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><string>b</string></dict>"
      "</plist>");
  EXPECT_EQ(defaults.valueForKeyPath("values.a"), Value("b"));
}

TEST_F(UserDefaultsTest, BothKindsOfArchivesAreRead) {
  using namespace std::string_literals;
  const std::string old =
      "\x04\x0Bstreamtyped\x81\xE8\x03\x84\x01@\x84\x84\x84\x07NSColor\0\x84\x84\x08NSObject\0\x85"
      "\x84\x01"
      "c\x03\x84\x02"
      "ff\x01\x01\x86"s;
  write(Dictionary{{"old", Data(old)},
                   {"new", KeyedArchiver::archivedDataWithRootObject(
                               Font::named("Times-Roman", 18).asValue())}});
  const auto color = Color::fromValue(defaults.unarchivedValueForKeyPath("values.old"));
  ASSERT_TRUE(color);
  EXPECT_EQ(color->rgba(), (Color::RGBA{1, 1, 1, 1}));
  const auto font = Font::fromValue(defaults.unarchivedValueForKeyPath("values.new"));
  ASSERT_TRUE(font);
  EXPECT_EQ(font->fontName(), "Times-Roman");
  EXPECT_EQ(font->pointSize(), 18);
  EXPECT_EQ(defaults.unarchivedValueForKeyPath("values.new").body(),
            defaults.unarchivedValueForKeyPath("values.new").body());
}

TEST_F(UserDefaultsTest, WhatCannotBeReadIsNone) {
  write(Dictionary{{"text", "no data"},
                   {"empty", Data()},
                   {"junk", Data(std::string("junk"))},
                   {"cut", Data(std::string("\x04\x0Bstreamtyped\x81", 14))}});
  for (const char* key : {"values.text", "values.empty", "values.junk", "values.cut"}) {
    EXPECT_TRUE(defaults.unarchivedValueForKeyPath(key).isNone()) << key;
    EXPECT_FALSE(defaults.valueForKeyPath(key).isNone()) << key;
  }
  for (const char* bytes : {"", "junk", "bplist00", "<plist><array/></plist>"}) {
    write(std::string(bytes));
    EXPECT_TRUE(defaults.valueForKeyPath("values.text").isNone()) << bytes;
  }
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  EXPECT_TRUE(defaults.valueForKeyPath("values.text").isNone());
}

TEST_F(UserDefaultsTest, AChangedFileTakesEffect) {
  write(Dictionary{{"a", "one"}});
  EXPECT_EQ(defaults.valueForKeyPath("values.a"), Value("one"));
  write(Dictionary{{"a", "longer"}});
  EXPECT_EQ(defaults.valueForKeyPath("values.a"), Value("longer"));
  // a file of the same length, written in place within the same tick of the clock
  for (const char* each : {"smalla", "smallb", "smallc", "smalld"}) {
    write(Dictionary{{"a", each}});
    EXPECT_EQ(defaults.valueForKeyPath("values.a"), Value(each));
  }
  // a file of the same length, moved into place
  UserDefaults other(folder / "other");
  other.setValueForKeyPath("biggie", "values.a");
  std::filesystem::rename(folder / "other", path);
  EXPECT_EQ(defaults.valueForKeyPath("values.a"), Value("biggie"));
  std::filesystem::remove(path);
  EXPECT_TRUE(defaults.valueForKeyPath("values.a").isNone());
}

TEST_F(UserDefaultsTest, ASetterWritesTheKeyedFormAndKeepsOtherEntries) {
  write(Dictionary{{"other", Array({1, "two"})}});
  defaults.setUnarchivedValueForKeyPath(Color::textColor().asValue(), "values.textColor");
  UserDefaults again(path);
  EXPECT_EQ(again.valueForKeyPath("values.other"), Value(Array({1, "two"})));
  const Value stored = again.valueForKeyPath("values.textColor");
  EXPECT_EQ(stored.data().view().substr(0, 8), "bplist00");
  EXPECT_EQ(again.unarchivedValueForKeyPath("values.textColor"), Color::textColor().asValue());
  EXPECT_EQ(defaults.unarchivedValueForKeyPath("values.textColor"), Color::textColor().asValue());
  defaults.setUnarchivedValueForKeyPath(nullptr, "values.textColor");
  EXPECT_TRUE(again.valueForKeyPath("values.textColor").isNone());
  EXPECT_FALSE(again.valueForKeyPath("values.other").isNone());
}

TEST_F(UserDefaultsTest, ASetterMakesFoldersForItsOwnerAlone) {
  UserDefaults deep(folder / "a/b/preferences.plist");
  deep.setValueForKeyPath("x", "values.a");
  EXPECT_EQ(deep.valueForKeyPath("values.a"), Value("x"));
  struct stat status {};
  ASSERT_EQ(stat((folder / "a/b").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(UserDefaultsTest, ASetterThatFailsLeavesTheFileAsItIs) {
  write(std::string("precious, but no list"));
  EXPECT_THROW(defaults.setValueForKeyPath("x", "values.a"), ArchiveException);
  EXPECT_EQ(readFile(path).view(), "precious, but no list");
  write(Dictionary{{"a", 1}});
  EXPECT_THROW(defaults.setValueForKeyPath("x", "a"), InvalidArgumentException);
  EXPECT_THROW(defaults.setValueForKeyPath(Color::textColor().asValue(), "values.a"),
               InvalidArgumentException);
  EXPECT_EQ(defaults.valueForKeyPath("values.a"), Value(1));
  write(std::string());
  UserDefaults below(path + "/below/preferences.plist");
  EXPECT_THROW(below.setValueForKeyPath("x", "values.a"), FileException);
}

TEST_F(UserDefaultsTest, WhereTheStandardFileIs) {
  const char* const before = getenv("XDG_CONFIG_HOME");
  const std::string kept = before ? before : "";
  setenv("XDG_CONFIG_HOME", "/somewhere", 1);
  EXPECT_EQ(UserDefaults::standardPath(), "/somewhere/tavlin/preferences.plist");
  setenv("XDG_CONFIG_HOME", "relative", 1);
  const std::string home = expandTildeInPath("~") + "/.config/tavlin/preferences.plist";
  EXPECT_EQ(UserDefaults::standardPath(), home);
  unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(UserDefaults::standardPath(), home);
  if (before) setenv("XDG_CONFIG_HOME", kept.c_str(), 1);
}

TEST_F(UserDefaultsTest, ATestCanReplaceTheSharedOnes) {
  UserDefaults& usual = UserDefaults::shared();
  {
    const UserDefaults::ScopedShared scope(defaults);
    EXPECT_EQ(&UserDefaults::shared(), &defaults);
  }
  EXPECT_EQ(&UserDefaults::shared(), &usual);
}

}  // namespace
}  // namespace ns
