#include <gtest/gtest.h>

#include "TextTesting.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/text/Color.h"
#include "platform/text/TextClasses.h"

namespace ns {
namespace {

const ClassRegistry& classes() {
  static const ClassRegistry* const made = [] {
    auto* registry = new ClassRegistry();
    addTextClasses(*registry);
    return registry;
  }();
  return *made;
}

Data archived(const Value& value) { return KeyedArchiver::archivedDataWithRootObject(value); }

Value there(const Value& value) {
  return KeyedUnarchiver::unarchiveObject(archived(value), classes());
}

AttributedString thereAndBack(const AttributedString& text) {
  const Value value = there(text.asValue());
  EXPECT_EQ(value.kind(), Kind::attributedString);
  // what was read is copied when it is written again; what was changed is written anew
  const AttributedString read(value);
  EXPECT_EQ(AttributedString(there(value)), read);
  MutableAttributedString changed(read);
  changed.addAttributeValueRange("mark", 1, {0, read.length()});
  changed.removeAttributeRange("mark", {0, read.length()});
  EXPECT_EQ(AttributedString(there(changed.copy().asValue())), read);
  EXPECT_TRUE(coversExactly(read));
  return read;
}

/// A record of a class, which nothing has checked yet.
Value recordOf(const char* name, std::vector<std::pair<String, Field>> fields) {
  return Record(makeClass({name, "NSObject"}), std::move(fields)).asValue();
}

/// An attributed string with text of four units, attributes and a run list as given; none is left
/// out.
Value stored(const Value& attributes, const std::optional<std::string>& runs,
             const Value& text = "four") {
  std::vector<std::pair<String, Field>> fields{{"NSString", Field::reference(text)}};
  if (!attributes.isNone()) fields.emplace_back("NSAttributes", Field::reference(attributes));
  if (runs) fields.emplace_back("NSAttributeInfo", Field::reference(Value(Data(*runs))));
  return recordOf("NSAttributedString", std::move(fields));
}

/// What is wrong with a stored text; "no fault" when it can be read.
std::string faultOf(const Value& value) {
  try {
    EXPECT_EQ(there(value).kind(), Kind::attributedString);
  } catch (const ArchiveException& exception) {
    return exception.what();
  }
  return "no fault";
}

Dictionary attributes() {
  ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
  style.setHeadIndent(20);
  return {{kFontAttributeName, Font::named("Helvetica", 12).asValue()},
          {kForegroundColorAttributeName, Color::textColor().asValue()},
          {kParagraphStyleAttributeName, style.asValue()}};
}

TEST(AttributedStringCoding, OneRun) {
  const AttributedString text(String("Grün \U0001F33F"), attributes());
  EXPECT_EQ(thereAndBack(text), text);
  EXPECT_EQ(thereAndBack(text).runCount(), 1U);
}

TEST(AttributedStringCoding, NoAttributes) {
  const AttributedString text(String("plain"));
  EXPECT_EQ(thereAndBack(text), text);
}

TEST(AttributedStringCoding, EmptyText) {
  EXPECT_EQ(thereAndBack(AttributedString()), AttributedString());
  EXPECT_EQ(thereAndBack(AttributedString(String(), attributes())).length(), 0U);
}

TEST(AttributedStringCoding, SeveralRunsShareTheirAttributes) {
  MutableAttributedString text(AttributedString(String("one two one"), attributes()));
  text.setAttributesRange({{"NSUnderline", 1}}, {4, 3});
  const AttributedString read = thereAndBack(text.copy());
  EXPECT_EQ(read, text.copy());
  ASSERT_EQ(read.runCount(), 3U);
  const Dictionary first = read.runAttributes(0);
  EXPECT_EQ(Value(first).body(), Value(read.runAttributes(2)).body());
}

TEST(AttributedStringCoding, RunsLongerThanANumberOfOneByte) {
  MutableAttributedString text(AttributedString(String(std::string(40000, 'x'))));
  text.setAttributesRange({{"a", 1}}, {127, 128});
  text.setAttributesRange({{"a", 2}}, {300, 20000});
  EXPECT_EQ(thereAndBack(text.copy()), text.copy());
}

TEST(AttributedStringCoding, UnknownAttributesSurvive) {
  const Value shadow = Record(makeClass({"NSShadow", "NSObject"}),
                              {{"NSShadowBlurRadius", Field::primitive(Value(8.0f))},
                               {"NSShadowColor", Field::reference(Color::textColor().asValue())}})
                           .asValue();
  const AttributedString text(
      String("abc"), {{"NSShadow", shadow},
                      {"MyAttribute", Array({1, "two", true})},
                      {"NSLink", AttributedString(String("inner"), attributes()).asValue()}});
  EXPECT_EQ(thereAndBack(text), text);
}

TEST(AttributedStringCoding, LoneSurrogatesSurvive) {
  const std::u16string units{u'a', 0xD800, u'b', 0xDC00};
  MutableAttributedString text{textOf(units)};
  text.addAttributeValueRange("a", 1, {1, 1});
  EXPECT_EQ(thereAndBack(text.copy()).string().units(), units);
}

TEST(AttributedStringCoding, RefusesRunsThatDoNotFitTheText) {
  const Value two(Array{Dictionary{{"a", 1}}, Dictionary()});
  const std::string start = "keyed archive: object 1: ";
  EXPECT_EQ(faultOf(stored(two, std::string("\1\0\3\1", 4))), "no fault");
  // a length of four in two bytes, and a run of nothing
  EXPECT_EQ(faultOf(stored(two, std::string("\x84\0\0\0\1", 5))), "no fault");
  EXPECT_EQ(faultOf(stored(two, std::string("\x84\0\0", 3))), "no fault");
  EXPECT_EQ(faultOf(stored(two, std::string("\0\0\4\1", 4))), "no fault");
  EXPECT_EQ(faultOf(stored(two, std::string("\4", 1))),
            start + "the runs of an attributed string break off");
  EXPECT_EQ(faultOf(stored(two, std::string("\4\x80", 2))),
            start + "the runs of an attributed string break off");
  EXPECT_EQ(faultOf(stored(two, std::string(10, '\xFF') + std::string("\1\0", 2))),
            start + "the runs of an attributed string break off");
  EXPECT_EQ(faultOf(stored(two, std::string("\4\2", 2))), start + "a run with attributes 2 of 2");
  EXPECT_EQ(faultOf(stored(two, std::string("\3\0", 2))),
            start + "the runs of an attributed string cover 3 of 4 units");
  EXPECT_EQ(faultOf(stored(two, std::string())),
            start + "the runs of an attributed string cover 0 of 4 units");
  EXPECT_EQ(faultOf(stored(two, std::string("\3\0\2\1", 4))),
            start + "the runs of an attributed string are longer than its text");
  EXPECT_EQ(faultOf(stored(two, std::string("\1\0", 2) + std::string(8, '\xFF') + "\x7F\1")),
            start + "the runs of an attributed string are longer than its text");
  // a character outside the basic plane has two units
  EXPECT_EQ(faultOf(stored(two, std::string("\3\0\1\1", 4), "xx\U0001F33F")), "no fault");
}

TEST(AttributedStringCoding, RefusesOtherForms) {
  const Value one(Dictionary{{"a", 1}});
  const std::string start = "keyed archive: object 1: ";
  EXPECT_EQ(faultOf(stored(one, std::nullopt)), "no fault");
  EXPECT_EQ(faultOf(stored(Value(), std::nullopt)), "no fault");
  EXPECT_EQ(faultOf(recordOf("NSAttributedString", {})),
            start + "an attributed string without text");
  EXPECT_EQ(faultOf(stored(one, std::nullopt, 7)), start + "an attributed string without text");
  EXPECT_EQ(faultOf(recordOf("NSAttributedString", {{"NSString", Field::primitive("inside")}})),
            start + "an attributed string without text");
  EXPECT_EQ(faultOf(stored("text", std::nullopt)),
            start + "the attributes of a text are no dictionary");
  EXPECT_EQ(faultOf(stored(one, std::string("\4\0", 2))),
            start + "the attributes of a text are no dictionary");
  EXPECT_EQ(faultOf(stored(Value(), std::string("\4\0", 2))),
            start + "an attributed string with runs but without attributes");
  EXPECT_EQ(faultOf(stored(Value(Array{Dictionary(), "x"}), std::string("\4\0", 2))),
            start + "the attributes of a run are no dictionary");
  EXPECT_EQ(faultOf(recordOf("NSAttributedString",
                             {{"NSString", Field::reference("four")},
                              {"NSAttributes", Field::reference(Value(Array{Dictionary()}))},
                              {"NSAttributeInfo", Field::reference(7)}})),
            start + "the runs of an attributed string are no data");
}

TEST(AttributedStringCoding, TextInAnOldFormStaysARecord) {
  const Value text = recordOf("NSMutableString", {{"NS.bytes", Field::primitive(Data("größe"))}});
  const Value value = there(stored(Value(Dictionary{{"a", 1}}), std::nullopt, text));
  EXPECT_EQ(value.kind(), Kind::record);
  EXPECT_EQ(Record(value).valueForKey("NSString").string().utf8(), "größe");
  EXPECT_EQ(archived(value), archived(there(value)));
}

TEST(AttributedStringCoding, AttributesSharedBetweenTextsAreWrittenOnce) {
  const Dictionary shared = attributes();
  Array texts;
  for (int i = 0; i < 100; ++i) texts.append(AttributedString(String("x"), shared).asValue());
  const size_t one = archived(Array({texts.at(0)})).length();
  EXPECT_LT(archived(texts).length(), one + 100 * 60);
  const Array read = there(texts).array();
  EXPECT_EQ(Value(AttributedString(read.at(0)).runAttributes(0)).body(),
            Value(AttributedString(read.at(99)).runAttributes(0)).body());
}

/// A text that holds texts in texts: each level twice, in two runs.
AttributedString nested(int levels) {
  AttributedString text(String("ab"), {{"innermost", 1}});
  for (int level = 1; level < levels; ++level) {
    MutableAttributedString next(AttributedString(String("ab")));
    next.addAttributeValueRange("first", text.asValue(), {0, 1});
    next.addAttributeValueRange("second", text.asValue(), {1, 1});
    text = next.copy();
  }
  return text;
}

TEST(AttributedStringCoding, TextsThatShareTheTextsInsideAreComparedOnce) {
  EXPECT_EQ(nested(60), nested(60));
  EXPECT_EQ(thereAndBack(nested(60)), nested(60));
  EXPECT_EQ(thereAndBack(nested(60)), thereAndBack(nested(60)));
  MutableAttributedString other(nested(60));
  other.addAttributeValueRange("second", nested(58).asValue(), {1, 1});
  EXPECT_FALSE(other.copy() == nested(60));
}

TEST(AttributedStringCoding, TextsNestedTooDeepAreEqualOnlyToThemselves) {
  const AttributedString deep = nested(5000);
  EXPECT_EQ(deep, deep);
  EXPECT_FALSE(deep == nested(5000));
}

TEST(AttributedStringCoding, AKeyThatDiffersDoesNotMakeDictionariesDiffer) {
  // each key of one is the other's second one, so keys that differ are compared first
  const auto key = [](int64_t number) {
    return AttributedString(String("key"), {{"n", number}}).asValue();
  };
  Dictionary one;
  one.setObjectForKey(key(1), key(1));
  one.setObjectForKey(key(2), key(2));
  Dictionary other;
  other.setObjectForKey(key(2), key(2));
  other.setObjectForKey(key(1), key(1));
  EXPECT_EQ(AttributedString(String("x"), {{"in", one}}),
            AttributedString(String("x"), {{"in", other}}));
  Dictionary swapped;
  swapped.setObjectForKey(key(1), key(2));
  swapped.setObjectForKey(key(2), key(1));
  EXPECT_FALSE(AttributedString(String("x"), {{"in", one}}) ==
               AttributedString(String("x"), {{"in", swapped}}));
}

TEST(AttributedStringCoding, AnyTextComesBack) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    std::u16string units(random() % 30, u'x');
    for (char16_t& unit : units) unit = static_cast<char16_t>(random() % 0x10000);
    MutableAttributedString text{textOf(units)};
    for (int i = 0; i < 6 && !units.empty(); ++i) {
      const size_t start = random() % units.size();
      text.addAttributeValueRange(random() % 2 == 0 ? "a" : "b", static_cast<int64_t>(random() % 3),
                                  {start, random() % (units.size() - start + 1)});
    }
    ASSERT_EQ(thereAndBack(text.copy()), text.copy());
  }
}

}  // namespace
}  // namespace ns
