#include "text/StringUtilities.h"

#include <gtest/gtest.h>

#include <fstream>

#include "../platform_text/TextTesting.h"
#include "platform/foundation/Array.h"
#include "platform/propertylist/PropertyList.h"
#include "platform/text/Workspace.h"
#include "text/FieldEditor.h"
#include "text/TypeUtilities.h"

namespace tavlin {
namespace {

using ns::String;
using Strings = std::vector<String>;

TEST(Lines, EachTerminatorEndsALine) {
  EXPECT_EQ(lines(String("a\nb\rc\r\nd\u0085e\u2028f\u2029g")),
            (Strings{"a", "b", "c", "d", "e", "f", "g"}));
  EXPECT_EQ(lines(String("a\vb\fc")), Strings{"a\vb\fc"});
}

TEST(Lines, Edges) {
  EXPECT_EQ(lines(String("")), Strings());
  EXPECT_EQ(lines(String("a")), Strings{"a"});
  EXPECT_EQ(lines(String("a\n")), Strings{"a"});
  EXPECT_EQ(lines(String("a\r\n")), Strings{"a"});
  EXPECT_EQ(lines(String("a\n\nb")), (Strings{"a", "", "b"}));
  EXPECT_EQ(lines(String("\n")), Strings{""});
  EXPECT_EQ(lines(String("\r\n")), Strings{""});
  EXPECT_EQ(lines(String("\n\r")), (Strings{"", ""}));
}

TEST(Lines, AttributedLinesKeepTheirAttributes) {
  ns::MutableAttributedString text(ns::AttributedString(String("ab\r\n\ncd\n")));
  text.addAttributeValueRange("a", 1, {1, 5});
  const auto found = lines(text.copy());
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(ns::printed(found[0]), "[a|][b|a=1]");
  EXPECT_EQ(found[1], ns::AttributedString());
  EXPECT_EQ(ns::printed(found[2]), "[c|a=1][d|]");
  EXPECT_TRUE(lines(ns::AttributedString()).empty());
}

TEST(RemoveCharacters, MembersGo) {
  String text("a b\tc ");
  removeCharactersFromSet(text, ns::CharacterSet::whitespace());
  EXPECT_EQ(text, "abc");
  String blanks("   ");
  removeCharactersFromSet(blanks, ns::CharacterSet::whitespace());
  EXPECT_EQ(blanks, "");
  String same("a b");
  removeCharactersFromSet(same, ns::CharacterSet());
  EXPECT_EQ(same, "a b");
  String plant("a\U0001F33Fb\U0001F340");
  removeCharactersFromSet(plant, ns::CharacterSet::inString("\U0001F33F"));
  EXPECT_EQ(plant, "ab\U0001F340");
}

TEST(RemoveCharacters, AnyTextIsTheOneThatRemovingOneByOneGives) {
  std::mt19937 random(4);
  const std::u16string kUnits{u'a', u'b', 0xD83C, 0xD83D, 0xDF3F, 0xDF40};
  for (int round = 0; round < 5000; ++round) {
    ns::CharacterSet set;
    for (const char32_t member : {U'a', U'\U0001F33F', U'\U0001F340', U'\U0001F73F'}) {
      if (random() % 2 == 0) set.addCharacter(member);
    }
    if (random() % 3 == 0) set.addCharacter(0xD83C);
    if (random() % 3 == 0) set.addCharacter(0xDF3F);
    std::u16string naive(random() % 12, u' ');
    for (char16_t& unit : naive) unit = kUnits[random() % kUnits.size()];
    String text{std::u16string_view(naive)};
    removeCharactersFromSet(text, set);
    for (size_t at = 0; at < naive.size();) {
      const ns::CodePoint found = ns::codePointAt(naive, at);
      if (set.contains(found.value)) {
        naive.erase(at, found.length);
        at = 0;
      } else {
        at += found.length;
      }
    }
    ASSERT_EQ(text.units(), naive);
  }
}

TEST(RemoveCharacters, TenMillionUnits) {
  std::string units(10'000'000, 'a');
  for (size_t at = 0; at < units.size(); at += 2) units[at] = ' ';
  String text = String::fromAscii(units);
  removeCharactersFromSet(text, ns::CharacterSet::whitespace());
  EXPECT_EQ(text.length(), units.size() / 2);
  EXPECT_EQ(lines(String::fromAscii(std::string(1'000'000, '\n'))).size(), 1'000'000U);
}

class FileLists : public ::testing::Test {
 protected:
  FileLists() {
    const auto declaration = [](const char* type, const ns::Value& extensions) {
      return ns::Value(
          ns::Dictionary({{"UTTypeIdentifier", type},
                          {"UTTypeConformsTo", "com.apple.package"},
                          {"UTTypeTagSpecification",
                           ns::Dictionary({{"public.filename-extension", extensions}})}}));
    };
    const ns::Array types{declaration("my.package", "pkgdir"), declaration("one", "x"),
                          declaration("two", ns::Array({"x", "y"})), declaration("three", "y")};
    std::ofstream(folder / "types.plist")
        << ns::dataFromPropertyList(ns::Dictionary({{"UTExportedTypeDeclarations", types}})).view();
  }
  [[nodiscard]] String path(const char* name) const { return String((folder / name).c_str()); }
  [[nodiscard]] std::string url(const char* name) const { return "file://" + folder.path() + name; }

  ns::TemporaryFolder folder;
  ns::Workspace workspace{{folder / "types.plist"}};
  ns::Workspace::ScopedShared scope{workspace};
};

TEST_F(FileLists, NamesAndUrls) {
  std::filesystem::create_directory(folder / "B.pkgdir");
  std::filesystem::create_directory(folder / "plain");
  String text;
  appendStringAsFileNameFilePathListDelimiter(text, {path("a b.txt"), path("B.pkgdir")}, "\n");
  EXPECT_EQ(text.utf8(),
            "a b.txt (" + url("/a%20b.txt") + ")\nB.pkgdir (" + url("/B.pkgdir") + ")");
  text = "before";
  appendStringAsFileNameFilePathListDelimiter(text, {path("plain")}, ", ");
  EXPECT_EQ(text.utf8(), "beforeplain (" + url("/plain/") + ")");
}

TEST_F(FileLists, Edges) {
  String text("kept/");
  appendStringAsFileNameFilePathListDelimiter(text, {}, ", ");
  EXPECT_EQ(text, "kept/");
  appendStringAsFileNameFilePathListDelimiter(text, {"", String(std::string_view("\0", 1))}, ", ");
  EXPECT_EQ(text, "kept/");
  text = "";
  appendStringAsFileNameFilePathListDelimiter(text, {"", "/no/a", "", "/no/gr\u00FCn/"}, ", ");
  EXPECT_EQ(text, "a (file:///no/a), gr\u00FCn (file:///no/gr%C3%BCn/)");
  text = "";
  appendStringAsFileNameFilePathListDelimiter(text, {"/"}, ", ");
  EXPECT_EQ(text, "/ (file:///)");
}

TEST_F(FileLists, VerboseTypes) {
  EXPECT_EQ(verboseTypesForTypes({}), Strings());
  EXPECT_EQ(verboseTypesForTypes({"unknown"}), Strings{"unknown"});
  EXPECT_EQ(verboseTypesForTypes({"one"}), (Strings{"one", "two"}));
  EXPECT_EQ(verboseTypesForTypes({"one", "two"}), (Strings{"one", "two", "one", "two"}));
  EXPECT_EQ(verboseTypesForTypes({"three", "unknown", "unknown"}),
            (Strings{"two", "three", "unknown"}));
}

TEST(FieldEditor, RichAndPlain) {
  constexpr double kLargest = 1.7976931348623157e308;
  ns::TextViewSettings settings;
  settings.usesFindPanel = true;
  setMeUpAsFieldEditorWithRichText(settings, false);
  EXPECT_EQ(settings, (ns::TextViewSettings{false, false, false, false, kLargest, kLargest}));
  setMeUpAsFieldEditorWithRichText(settings, true);
  EXPECT_EQ(settings, (ns::TextViewSettings{true, true, false, true, kLargest, kLargest}));
}

}  // namespace
}  // namespace tavlin
