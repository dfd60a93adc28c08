#include "exchange/JsonText.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavlin {
namespace {

std::string quoted(const ns::String& text, JsonSurrogates surrogates = JsonSurrogates::replaced) {
  std::string out;
  appendJsonString(out, text, surrogates);
  return out;
}

ns::String units(std::u16string_view text) { return ns::String(text); }

TEST(JsonText, TextStandsForItselfInUtf8) {
  EXPECT_EQ(quoted(""), "\"\"");
  EXPECT_EQ(quoted("Beds / north"), "\"Beds / north\"");
  EXPECT_EQ(quoted("Gärten ☂ 🌿"), "\"Gärten ☂ 🌿\"");
}

TEST(JsonText, EscapesWhatJsonAsksFor) {
  EXPECT_EQ(quoted("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(quoted("a\"b\\cä"), R"("a\"b\\cä")");
  EXPECT_EQ(quoted("\n\r\t"), R"("\n\r\t")");
  EXPECT_EQ(quoted(units(std::u16string(1, u'\0') + u"\x1b\x1f")), R"("\u0000\u001b\u001f")");
}

TEST(JsonText, EscapesWhatATerminalWouldObey) {
  EXPECT_EQ(quoted(units(u"\x7f")), R"("\u007f")");
  EXPECT_EQ(quoted(units(u"\x80\x9b\xa0")), "\"\\u0080\\u009b\u00a0\"");
  EXPECT_EQ(quoted(units(u"\u200e\u200f\u202a\u202e\u2066\u2069\u061c\ufeff")),
            R"("\u200e\u200f\u202a\u202e\u2066\u2069\u061c\ufeff")");
  EXPECT_EQ(quoted(units(u"\u2028\u2029")), R"("\u2028\u2029")");
  EXPECT_EQ(quoted(units(u"\u200d")), "\"\u200d\"") << "joins emoji";
}

TEST(JsonText, UnpairedSurrogatesAreReplacedOrEscaped) {
  const ns::String high = units(std::u16string{u'a', 0xD83C, u'b'});
  const ns::String low = units(std::u16string{0xDF3F});
  EXPECT_EQ(quoted(high), "\"a\ufffdb\"");
  EXPECT_EQ(quoted(low), "\"\ufffd\"");
  EXPECT_EQ(quoted(high, JsonSurrogates::escaped), R"("a\ud83cb")");
  EXPECT_EQ(quoted(low, JsonSurrogates::escaped), R"("\udf3f")");
  EXPECT_EQ(quoted(units(std::u16string{0xDF3F, 0xD83C}), JsonSurrogates::escaped),
            R"("\udf3f\ud83c")");
}

TEST(JsonText, BytesThatAreNoUtf8AreReplaced) {
  std::string out;
  appendJsonString(out, std::string_view("caf\xe9/\xff"));
  EXPECT_EQ(out, "\"caf\ufffd/\ufffd\"");
}

TEST(JsonWriter, PutsCommasAndNothingElse) {
  std::string out;
  JsonWriter json(out);
  json.beginObject();
  json.member("file", "a.tavlin");
  json.key("matches");
  json.beginArray();
  json.beginArray();
  json.endArray();
  json.beginArray();
  json.number(1);
  json.number(2);
  json.endArray();
  json.null();
  json.endArray();
  json.key("properties");
  json.beginObject();
  json.endObject();
  json.member("rich", false);
  json.endObject();
  EXPECT_EQ(out, R"({"file":"a.tavlin","matches":[[],[1,2],null],"properties":{},"rich":false})");
}

TEST(JsonWriter, TheStringMayBeEmptiedMeanwhile) {
  std::string out;
  JsonWriter json(out);
  json.beginArray();
  json.string("a");
  out.clear();
  json.string("b");
  json.endArray();
  EXPECT_EQ(out, R"(,"b"])");
}

TEST(JsonWriter, Numbers) {
  std::string out;
  JsonWriter json(out);
  json.number(std::numeric_limits<int64_t>::min());
  json.number(std::numeric_limits<uint64_t>::max());
  json.number(0.1);
  json.number(0.1F);
  json.number(3.0);
  json.number(-0.0);
  json.number(1e300);
  EXPECT_EQ(out, "-9223372036854775808,18446744073709551615,0.1,0.1,3.0,-0.0,1e+300");
}

}  // namespace
}  // namespace tavlin
