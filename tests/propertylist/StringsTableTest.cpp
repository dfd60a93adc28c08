#include "platform/propertylist/StringsTable.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/foundation/Exception.h"

namespace {

ns::StringsTable parse(std::string bytes) {
  return ns::StringsTable::parse(ns::Data(std::move(bytes)));
}

/// The text of a key as UTF-8; "(none)" when the table lacks it.
std::string textOf(const ns::StringsTable& table, const char* key) {
  const ns::String* text = table.stringForKey(key);
  return text ? text->utf8() : "(none)";
}

/// The text of the key "k".
std::string textOf(const std::string& bytes) { return textOf(parse(bytes), "k"); }

std::u16string unitsOf(const std::string& bytes) {
  const ns::StringsTable table = parse(bytes);
  const ns::String* text = table.stringForKey("k");
  return text ? text->units() : u"(none)";
}

std::string faultOf(const std::string& bytes) {
  try {
    parse(bytes);
  } catch (const ns::ArchiveException& exception) {
    return exception.what();
  }
  return "no fault";
}

/// UTF-8 text as UTF-16, with a byte order mark if wanted.
std::string utf16(const std::string& utf8, bool isBigEndian, bool hasMark) {
  std::u16string units = ns::String(std::string_view(utf8)).units();
  if (hasMark) units.insert(units.begin(), u'\xFEFF');
  std::string bytes;
  for (const char16_t unit : units) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += isBigEndian ? high : low;
    bytes += isBigEndian ? low : high;
  }
  return bytes;
}

TEST(StringsTableTest, ReadsEntries) {
  const ns::StringsTable table = parse("\"cut\" = \"Schneiden\";\n\"paste\"=\"Einsetzen\";");
  EXPECT_EQ(table.count(), 2u);
  EXPECT_EQ(textOf(table, "cut"), "Schneiden");
  EXPECT_EQ(textOf(table, "paste"), "Einsetzen");
  EXPECT_EQ(textOf(table, "copy"), "(none)");
}

TEST(StringsTableTest, AnEmptyFileIsAnEmptyTable) {
  EXPECT_EQ(parse("").count(), 0u);
  EXPECT_EQ(parse(" \n\t// nothing\n/* here */").count(), 0u);
  EXPECT_EQ(parse("\xEF\xBB\xBF").count(), 0u);
  EXPECT_EQ(parse("{}").count(), 0u);
}

TEST(StringsTableTest, SkipsCommentsAnywhereBetweenTokens) {
  EXPECT_EQ(textOf("/* a \"k\" = \"x\"; */ \"k\" /* b */ = // c\r\"v\" /***/ ; // end"), "v");
  EXPECT_EQ(textOf("/*/ still a comment */ k = v;"), "v");
}

TEST(StringsTableTest, CommentSignsInStringsAreText) {
  EXPECT_EQ(textOf("\"k\" = \"/* no */ // comment\";"), "/* no */ // comment");
}

TEST(StringsTableTest, ReadsBareTokensAndSingleQuotes) {
  EXPECT_EQ(textOf("k = v;"), "v");
  EXPECT_EQ(textOf("k = http://example.com/a_b-c.$d;"), "http://example.com/a_b-c.$d");
  EXPECT_EQ(textOf("'k' = 'say \"v\"';"), "say \"v\"");
  EXPECT_EQ(textOf("\"k\" = \"it's\";"), "it's");
}

TEST(StringsTableTest, AnEntryWithoutTextHasItsKeyAsText) { EXPECT_EQ(textOf("\"k\";"), "k"); }

TEST(StringsTableTest, TheLastOfEqualKeysCounts) {
  EXPECT_EQ(textOf("k = first; k = last;"), "last");
}

TEST(StringsTableTest, MayStandInBraces) {
  EXPECT_EQ(textOf("// head\n{ \"k\" = \"v\"; } // tail\n"), "v");
}

TEST(StringsTableTest, ReadsEscapes) {
  EXPECT_EQ(unitsOf(R"(k = "\a\b\f\n\r\t\v";)"), u"\a\b\f\n\r\t\v");
  EXPECT_EQ(textOf(R"(k = "\"quoted\" \\ \'x\' \q \/";)"), "\"quoted\" \\ 'x' q /");
  EXPECT_EQ(textOf("k = \"one \\\ntwo\";"), "one \ntwo");
  EXPECT_EQ(unitsOf(R"(k = "\U00e9\U20AC\U41 \Ud83c\UDF3F\Ud800";)"),
            std::u16string(u"\u00e9\u20ac\u0041 \U0001F33F") + char16_t{0xD800});
  EXPECT_EQ(textOf(R"("\U006b" = v;)"), "v") << "in keys too";
  EXPECT_EQ(textOf(R"(k = "\U00e9abc";)"), "\u00e9abc") << "four digits at most";
}

TEST(StringsTableTest, OctalEscapesAreCharactersOfTheNextEncoding) {
  EXPECT_EQ(textOf(R"(k = "\101\60\1010";)"), "A0A0") << "three digits at most";
  EXPECT_EQ(unitsOf(R"(k = "\0";)"), std::u16string(1, u'\0'));
  EXPECT_EQ(textOf(R"(k = "\200\241\251\341\365\373\377";)"),
            "\u00A0\u00A1\u2019\u00C6\u0131\u00DF\uFFFD");
}

TEST(StringsTableTest, ReadsLineBreaksInStrings) {
  EXPECT_EQ(textOf("k = \"one\ntwo\";"), "one\ntwo");
}

TEST(StringsTableTest, ReadsEveryEncoding) {
  const std::string text = "/* Größe */ \"k\" = \"日本語 🌿\";";
  EXPECT_EQ(textOf(text), "日本語 🌿");
  EXPECT_EQ(textOf("\xEF\xBB\xBF" + text), "日本語 🌿");
  for (const bool isBigEndian : {false, true}) {
    for (const bool hasMark : {false, true}) {
      EXPECT_EQ(textOf(utf16(text, isBigEndian, hasMark)), "日本語 🌿") << isBigEndian << hasMark;
    }
  }
}

TEST(StringsTableTest, ReadsAnyBlanks) {
  EXPECT_EQ(textOf("\v\f k\t=\r\n\"v\"\u2028;\u2029"), "v");
}

TEST(StringsTableTest, TellsWhatIsWrongAndWhere) {
  EXPECT_EQ(faultOf("\"a\" = \"b\"\n\"c\" = \"d\";"),
            "line 1: \";\" is missing after the text of \"a\"");
  EXPECT_EQ(faultOf("\n\n\"a\" \"b\";"), "line 3: \"=\" is missing after the key \"a\"");
  EXPECT_EQ(faultOf("a = b;\r\n\r\n= c;"), "line 3: a key is expected, not \"=\"");
  EXPECT_EQ(faultOf("a =\r;"), "line 2: the text of \"a\" is expected, not \";\"");
  EXPECT_EQ(faultOf("a ="), "line 1: the text of \"a\" is expected, not the end of the file");
  EXPECT_EQ(faultOf("a = (b, c);"), "line 1: the text of \"a\" is expected, not \"(\"");
  EXPECT_EQ(faultOf("a = {b = c;};"), "line 1: the text of \"a\" is expected, not \"{\"");
  EXPECT_EQ(faultOf("ä = b;"), "line 1: a key is expected, not \"ä\"");
  EXPECT_EQ(faultOf("🌿 = b;"), "line 1: a key is expected, not \"🌿\"");
  EXPECT_EQ(faultOf("a = \"b;\nc = d;\n"), "line 1: the string is not closed");
  EXPECT_EQ(faultOf("a = \"b\\"), "line 1: the string is not closed");
  EXPECT_EQ(faultOf("a = b;\n/* c"), "line 2: the comment is not closed");
  EXPECT_EQ(faultOf("/*/"), "line 1: the comment is not closed");
  EXPECT_EQ(faultOf("/"), "line 1: \"=\" is missing after the key \"/\"");
  EXPECT_EQ(faultOf("\n{ a = b;"), "line 2: the brace is not closed");
  EXPECT_EQ(faultOf("{ a = b; }\nc"), "line 2: \"c\" follows the closing brace");
  EXPECT_EQ(faultOf("a = b; }"), "line 1: a key is expected, not \"}\"");
  EXPECT_EQ(faultOf("a = \"\\Ux\";"), "line 1: \\U is not followed by a hexadecimal digit");
  EXPECT_EQ(faultOf("a = \"\n\\400\";"), "line 2: an octal escape is above \\377");
}

TEST(StringsTableTest, TellsOfBrokenEncodings) {
  EXPECT_EQ(faultOf("a = b;\r\nc = \"\xC3\";\r\n"), "line 2: not UTF-8");
  EXPECT_EQ(faultOf("a = b;\rc = \"\xE6\x97\";"), "line 2: not UTF-8");
  EXPECT_EQ(faultOf("a = \"\xFF\""), "line 1: not UTF-8");
  EXPECT_EQ(faultOf(utf16("a = b;\n", true, true) + "c"),
            "line 2: the last UTF-16 code unit is cut off");
}

TEST(StringsTableTest, EveryPrefixOfATableIsReadOrRefused) {
  const std::string text =
      "\xEF\xBB\xBF{/* c */ \"a\" = \"\\U00e9\\101\\n ü\"; // d\r\n 'b' ;\nc/d = e; }";
  ASSERT_EQ(parse(text).count(), 3u);
  for (const std::string& whole :
       {text, utf16(text.substr(3), true, true), utf16(text.substr(3), false, false)}) {
    for (size_t length = 1; length < whole.size(); ++length) {
      const std::string fault = faultOf(whole.substr(0, length));
      EXPECT_TRUE(fault == "no fault" || fault.starts_with("line ")) << length << fault;
    }
  }
}

TEST(StringsTableTest, ReadsPropertyLists) {
  const std::string body =
      "<plist version=\"1.0\"><dict><key>k</key><string>v &amp; ü</string></dict></plist>";
  EXPECT_EQ(textOf("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + body), "v & ü");
  EXPECT_EQ(textOf("\xEF\xBB\xBF \n" + body), "v & ü");
  // A dictionary {k = v} in binary form.
  const std::string binary(
      "bplist00\xD1\x01\x02\x51k\x51v\x08\x0B\x0D\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x03\0\0\0\0\0"
      "\0\0\0\0\0\0\0\0\0\0\x0F",
      8 + 3 + 2 + 2 + 3 + 32);
  EXPECT_EQ(textOf(binary), "v");
}

TEST(StringsTableTest, RefusesPropertyListsOfAnotherShape) {
  const auto fault = [](const std::string& content) {
    return faultOf("<?xml version=\"1.0\"?><plist version=\"1.0\">" + content + "</plist>");
  };
  EXPECT_EQ(fault("<array/>"), "the property list is an array, not a dictionary");
  EXPECT_EQ(fault("<dict><key>k</key><dict/></dict>"),
            "the text of \"k\" is a dictionary, not a string");
  EXPECT_NE(faultOf("<plist><dict>"), "no fault");
  EXPECT_NE(faultOf("bplist00"), "no fault");
}

}  // namespace
