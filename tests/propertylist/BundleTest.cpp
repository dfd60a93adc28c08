#include "platform/propertylist/Bundle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Log.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kVariables[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG",
                                      "TAVLIN_RESOURCES"};

/// A folder of tables, no language preference and a log that is kept.
class BundleTest : public testing::Test {
 protected:
  BundleTest() {
    for (const char* name : kVariables) {
      const char* value = std::getenv(name);
      if (value) environment_[name] = value;
      unsetenv(name);
    }
    char path[] = "/tmp/bundle-test-XXXXXX";
    folder = mkdtemp(path);
    bundle.emplace(folder);
    previousLog_ = ns::setLogHandler([this](std::string_view text) { logged.emplace_back(text); });
  }
  ~BundleTest() override {
    ns::setLogHandler(previousLog_);
    std::filesystem::remove_all(folder);
    for (const char* name : kVariables) {
      if (environment_.contains(name)) {
        setenv(name, environment_[name].c_str(), 1);
      } else {
        unsetenv(name);
      }
    }
  }

  std::string pathOf(const std::string& language, const std::string& table = "Localizable") {
    return folder + "/" + language + ".lproj/" + table + ".strings";
  }
  void write(const std::string& language, const std::string& content,
             const std::string& table = "Localizable") {
    std::filesystem::create_directory(folder + "/" + language + ".lproj");
    std::ofstream(pathOf(language, table), std::ios::binary) << content;
  }
  /// Gives a file a time, in seconds since 1970.
  static void setTime(const std::string& path, long seconds) {
    const timeval times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimes(path.c_str(), times), 0);
  }
  std::string text(const char* key, const char* value = "", const char* table = "") {
    return bundle->localizedStringForKeyValueTable(key, value, table).utf8();
  }
  static void prefer(const char* name, const char* value) { setenv(name, value, 1); }

  std::string folder;
  std::optional<ns::Bundle> bundle;
  std::vector<std::string> logged;

 private:
  std::map<std::string, std::string> environment_;
  ns::LogHandler previousLog_;
};

TEST_F(BundleTest, AnswersTheKeyOrTheGivenValueWhereNothingIsFound) {
  EXPECT_EQ(text("cut"), "cut");
  EXPECT_EQ(text("cut", "Cut it"), "Cut it");
  write("en", "paste = Paste;");
  EXPECT_EQ(text("cut"), "cut");
  EXPECT_EQ(text("cut", "Cut it"), "Cut it");
  EXPECT_EQ(text("paste", "Glue"), "Paste");
  EXPECT_EQ(text(""), "");
  ns::Bundle missing(folder + "/nowhere");
  EXPECT_EQ(missing.localizedStringForKeyValueTable("cut", "", ""), "cut");
  ns::Bundle file(pathOf("en"));
  EXPECT_EQ(file.localizedStringForKeyValueTable("cut", "", ""), "cut");
  EXPECT_THAT(logged, IsEmpty());
}

TEST_F(BundleTest, TakesTheNamedTable) {
  write("en", "k = default;");
  write("en", "k = other;", "Other");
  EXPECT_EQ(text("k"), "default");
  EXPECT_EQ(text("k", "", "Localizable"), "default");
  EXPECT_EQ(text("k", "", "Other"), "other");
  EXPECT_EQ(text("k", "", "Missing"), "k");
}

TEST_F(BundleTest, PrefersTheUsersLanguageThenEnglish) {
  write("en", "a = English;");
  write("de", "a = Deutsch;");
  EXPECT_EQ(text("a"), "English");
  prefer("LANG", "de_AT.UTF-8");
  EXPECT_EQ(text("a"), "Deutsch");
  write("de-AT", "a = Austria;");
  EXPECT_EQ(text("a"), "Austria");
  prefer("LANG", "it_IT.UTF-8");
  EXPECT_EQ(text("a"), "English");
  prefer("LANGUAGE", "it:de:en");
  EXPECT_EQ(text("a"), "Deutsch");
}

TEST_F(BundleTest, ATextThatTheLanguageLacksShowsItsKey) {
  write("en", "a = English; b = English;");
  write("de", "a = Deutsch;");
  prefer("LANGUAGE", "de_AT:en");
  EXPECT_EQ(text("b"), "b") << "not in English";
  EXPECT_EQ(text("b", "value"), "value");
  write("de", "");
  EXPECT_EQ(text("a"), "a");
  EXPECT_THAT(logged, IsEmpty());
}

TEST_F(BundleTest, ALanguageWithoutTheTableIsPassedOver) {
  write("en", "a = English;");
  write("en", "a = Other;", "Other");
  write("de", "a = Deutsch;");
  prefer("LANG", "de_DE.UTF-8");
  EXPECT_EQ(text("a", "", "Other"), "Other");
  EXPECT_EQ(text("a"), "Deutsch");
  std::filesystem::remove(pathOf("de"));
  EXPECT_EQ(text("a"), "English") << "though the folder is still there";
  prefer("LANGUAGE", std::string(5000, 'x').c_str());
  EXPECT_EQ(text("a"), "English");
  EXPECT_THAT(logged, IsEmpty());
}

TEST_F(BundleTest, ReadsLocaleNames) {
  using ns::Bundle;
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("en"));
  prefer("LANG", "de_AT.UTF-8@euro");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("de-AT", "de", "en"));
  prefer("LANG", "ja");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("ja", "en"));
  prefer("LANG", "sr@latin");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("sr", "en"));
  prefer("LANG", "en_GB.UTF-8");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("en-GB", "en"));
  prefer("LANG", "C.UTF-8");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("en"));
  prefer("LANG", "../de");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("en"));
}

TEST_F(BundleTest, TakesTheFirstLocaleVariableThatIsSet) {
  using ns::Bundle;
  prefer("LANG", "fr_FR");
  prefer("LC_MESSAGES", "");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("fr-FR", "fr", "en"));
  prefer("LC_MESSAGES", "es_ES");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("es-ES", "es", "en"));
  prefer("LC_ALL", "ja_JP");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("ja-JP", "ja", "en"));
}

TEST_F(BundleTest, TakesTheListOfLanguagesBeforeTheLocale) {
  using ns::Bundle;
  prefer("LANGUAGE", "de_AT:de:fr::es_MX");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("de-AT", "de", "fr", "es-MX", "es", "en"));
  prefer("LANG", "ja_JP.UTF-8");
  EXPECT_THAT(Bundle::preferredLanguages(),
              ElementsAre("de-AT", "de", "fr", "es-MX", "es", "ja-JP", "ja", "en"));
  prefer("LANG", "C.UTF-8");
  prefer("LANGUAGE", "fr:C:de");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("fr", "en", "de"));
  prefer("LANGUAGE", ":../../tmp:f/r:");
  EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("en"));
}

TEST_F(BundleTest, ThePlainLocaleMeansEnglishOnly) {
  using ns::Bundle;
  prefer("LANGUAGE", "de");
  for (const char* plain : {"C", "POSIX"}) {
    prefer("LC_ALL", plain);
    prefer("LANG", "fr_FR");
    EXPECT_THAT(Bundle::preferredLanguages(), ElementsAre("en")) << plain;
  }
}

TEST_F(BundleTest, ALanguageChangeShowsAtTheNextCall) {
  write("en", "k = English;");
  write("fr", "k = Francais;");
  EXPECT_EQ(text("k"), "English");
  prefer("LANGUAGE", "fr");
  EXPECT_EQ(text("k"), "Francais");
  prefer("LANGUAGE", "en");
  EXPECT_EQ(text("k"), "English");
}

TEST_F(BundleTest, ReadsATableAgainWhenItHasChanged) {
  write("en", "k = one;");
  EXPECT_EQ(text("k"), "one");
  write("en", "k = second;");
  EXPECT_EQ(text("k"), "second") << "another size";
  for (int i = 100; i < 150; ++i) {
    const std::string number = std::to_string(i);
    write("en", "k = " + number + ";");
    EXPECT_EQ(text("k"), number) << "the same size, within a tick of the file system's clock";
  }
  write("en", "k = thirds;");
  setTime(pathOf("en"), 1'000'000);
  EXPECT_EQ(text("k"), "thirds");
  write("en", "k = fourth;");
  setTime(pathOf("en"), 1'000'000);
  EXPECT_EQ(text("k"), "fourth") << "the same size and the same time";
  write("en", "k = fifths;", "New");
  std::filesystem::rename(pathOf("en", "New"), pathOf("en"));
  EXPECT_EQ(text("k"), "fifths") << "another file under the same name";
  std::filesystem::remove(pathOf("en"));
  EXPECT_EQ(text("k"), "k");
  write("en", "k = back;");
  EXPECT_EQ(text("k"), "back");
  EXPECT_THAT(logged, IsEmpty());
}

TEST_F(BundleTest, DoesNotReadAnUnchangedTableAgain) {
  write("en", "k = one;");
  // A file changed in the future has its access time moved by every read, except where the file
  // system keeps none.
  setTime(pathOf("en"), time(nullptr) + 1000);
  EXPECT_EQ(text("k"), "one");
  struct stat before = {};
  struct stat after = {};
  ASSERT_EQ(stat(pathOf("en").c_str(), &before), 0);
  usleep(30'000);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(text("k"), "one");
  ASSERT_EQ(stat(pathOf("en").c_str(), &after), 0);
  EXPECT_EQ(before.st_atim.tv_sec, after.st_atim.tv_sec);
  EXPECT_EQ(before.st_atim.tv_nsec, after.st_atim.tv_nsec);
}

TEST_F(BundleTest, LogsOnceWhereATableIsMalformed) {
  write("en", "k = \"v\";\n\"broken\" \"x\";\n");
  EXPECT_EQ(text("k"), "k");
  EXPECT_EQ(text("broken"), "broken");
  EXPECT_EQ(text("k", "value"), "value");
  EXPECT_THAT(logged, ElementsAre("strings table " + pathOf("en") +
                                  ": line 2: \"=\" is missing after the key \"broken\""));
  write("en", "k = v;\n\n\nx");
  EXPECT_EQ(text("k"), "k");
  EXPECT_EQ(text("k"), "k");
  ASSERT_EQ(logged.size(), 2u) << "another fault is another message";
  EXPECT_THAT(logged[1], EndsWith(": line 4: \"=\" is missing after the key \"x\""));
  write("en", "k = v;");
  EXPECT_EQ(text("k"), "v");
  EXPECT_EQ(logged.size(), 2u);
}

TEST_F(BundleTest, AMalformedTableShowsKeysAndNoOtherLanguage) {
  write("en", "k = English;");
  write("de", "a = Deutsch;\nk = ");
  prefer("LANG", "de");
  EXPECT_EQ(text("k"), "k");
  EXPECT_EQ(text("a"), "a") << "what stands before the fault does not count either";
  EXPECT_THAT(logged,
              ElementsAre("strings table " + pathOf("de") +
                          ": line 2: the text of \"k\" is expected, not the end of the file"));
  prefer("LANG", "en");
  EXPECT_EQ(text("k"), "English");
  prefer("LANG", "de");
  EXPECT_EQ(text("k"), "k");
  EXPECT_EQ(logged.size(), 1u) << "the fault is known";
}

TEST_F(BundleTest, TablesMayBePropertyLists) {
  write("en", "<plist version=\"1.0\"><dict><key>k</key><string>v</string></dict></plist>");
  EXPECT_EQ(text("k"), "v");
  write("en", "<plist version=\"1.0\"><dict><key>k</key></dict></plist>");
  EXPECT_EQ(text("k"), "k");
  ASSERT_EQ(logged.size(), 1u);
  EXPECT_THAT(logged[0], HasSubstr(pathOf("en")));
}

TEST_F(BundleTest, LogsOnceWhyATableCannotBeRead) {
  std::filesystem::create_directories(pathOf("en"));
  EXPECT_EQ(text("k"), "k");
  EXPECT_EQ(text("k"), "k");
  ASSERT_EQ(logged.size(), 1u);
  EXPECT_THAT(logged[0], HasSubstr(pathOf("en")));
}

TEST_F(BundleTest, KeepsTheMainBundleUntilItIsReplaced) {
  ns::Bundle& main = ns::Bundle::mainBundle();
  EXPECT_EQ(main.resourcePath(), TAVLIN_SOURCE_DIR "/resources")
      << "the test program runs in its build tree";
  {
    const ns::Bundle::ScopedMain outer(*bundle);
    EXPECT_EQ(&ns::Bundle::mainBundle(), &*bundle);
    ns::Bundle another("another");
    {
      const ns::Bundle::ScopedMain inner(another);
      EXPECT_EQ(ns::Bundle::mainBundle().resourcePath(), "another");
    }
    EXPECT_EQ(&ns::Bundle::mainBundle(), &*bundle);
  }
  EXPECT_EQ(&ns::Bundle::mainBundle(), &main);
}

// The choice is made once in a process, so that this asks fresh ones, by their exit status.
TEST(MainBundleTest, TakesTheFolderOfTheEnvironmentFirst) {
  const auto exitTellingWhether = [](const char* variable, const std::string& path) {
    setenv("TAVLIN_RESOURCES", variable, 1);
    std::_Exit(ns::Bundle::mainBundle().resourcePath() == path ? 0 : 1);
  };
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(exitTellingWhether("/somewhere", "/somewhere"), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitTellingWhether("", TAVLIN_SOURCE_DIR "/resources"), testing::ExitedWithCode(0),
              "");
}

}  // namespace
