// Partners on the immutable class answer immutable text, also of text that was read as mutable.
#include <gtest/gtest.h>

#include "../platform_text/TextTesting.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/archive/Record.h"
#include "platform/text/TextClasses.h"
#include "text/ItemText.h"

namespace tavlin {
namespace {

using ns::AttributedString;
using ns::Field;

ns::Value readAgain(const ns::Value& value) {
  static const ns::ClassRegistry classes = [] {
    ns::ClassRegistry registry;
    ns::addTextClasses(registry);
    return registry;
  }();
  return ns::KeyedUnarchiver::unarchiveObject(ns::KeyedArchiver::archivedDataWithRootObject(value),
                                              classes);
}

/// Text in two runs as it is read from an archive that has it as of a class.
AttributedString readAs(std::vector<std::string> chain, const char* characters = "ab") {
  const ns::Value text =
      ns::String(characters)
          .withArchivedClass(ns::makeClass({"NSMutableString", "NSString", "NSObject"}));
  const ns::Dictionary first{{"NSOriginalFont", 1}, {"n", 1}};
  const ns::Dictionary second{{"NSColor", 2}, {"n", 2}};
  const ns::Record record(
      ns::makeClass(std::move(chain)),
      {{"NSString", Field::reference(text)},
       {"NSAttributes", Field::reference(ns::Value(ns::Array({first, second})))},
       {"NSAttributeInfo", Field::reference(ns::Value(ns::Data(std::string("\1\0\1\1", 4))))},
       {"ZZMore", Field::primitive(ns::Value(7))}});
  return AttributedString(readAgain(record.asValue()));
}

AttributedString readAsMutable() {
  return readAs({"NSMutableAttributedString", "NSAttributedString", "NSObject"});
}

std::string classOf(const AttributedString& text) {
  return text.archivedClass() ? text.archivedClass()->name : "none";
}

/// The classes of a text and of its characters in an archive, and its other field.
std::string archivedAs(const AttributedString& text) {
  const ns::ClassRegistry none;
  const ns::Record record(ns::KeyedUnarchiver::unarchiveObject(
      ns::KeyedArchiver::archivedDataWithRootObject(text.asValue()), none));
  const ns::ClassRef characters = record.valueForKey("NSString").string().archivedClass();
  return record.archivedClass()->name + " of " + (characters ? characters->name : "a string") +
         ", " + std::to_string(record.valueForKey("ZZMore").integerValue());
}

using Partner = AttributedString (*)(const AttributedString&);

const std::pair<const char*, Partner> kPartners[] = {
    {"cleaned", cleanedAttributedStringAsItemText},
    {"without interfering", attributedStringByRemovingInterferingAttributes},
    {"colored", [](const AttributedString& text) { return coloredAttributedString(text, 5); }},
    {"replaced",
     [](const AttributedString& text) {
       return attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(
           text, "a", "x", 0, {0, text.length()});
     }},
    {"replaced nothing",
     [](const AttributedString& text) {
       return attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(
           text, "z", "x", 0, {0, text.length()});
     }},
    {"replaced in nothing", [](const AttributedString& text) {
       return attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(text, "a", "x",
                                                                                   0, {0, 0});
     }}};

TEST(ImmutablePartners, TextReadAsMutableIsAnsweredAsImmutable) {
  const AttributedString text = readAsMutable();
  ASSERT_EQ(classOf(text), "NSMutableAttributedString");
  ASSERT_EQ(archivedAs(text), "NSMutableAttributedString of NSMutableString, 7");
  for (const auto& [name, partner] : kPartners) {
    const AttributedString answer = partner(text);
    EXPECT_EQ(archivedAs(answer), "NSAttributedString of a string, 7") << name;
    EXPECT_EQ(classOf(AttributedString(readAgain(answer.asValue()))), "NSAttributedString") << name;
    EXPECT_EQ(answer.runCount(), 2U) << name;
    EXPECT_EQ(answer.attributeAtIndex("n", 1), ns::Value(2)) << name;
  }
  EXPECT_EQ(archivedAs(text), "NSMutableAttributedString of NSMutableString, 7")
      << "the receiver stays as it is";
}

TEST(ImmutablePartners, SoIsTextOfAClassDerivedFromTheMutableOne) {
  for (const auto& [name, partner] : kPartners) {
    EXPECT_EQ(archivedAs(partner(readAs({"NSTextStorage", "NSMutableAttributedString",
                                         "NSAttributedString", "NSObject"}))),
              "NSAttributedString of a string, 7")
        << name;
  }
}

TEST(ImmutablePartners, EmptyTextReadAsMutableToo) {
  const AttributedString text = AttributedString(readAgain(
      ns::Record(ns::makeClass({"NSMutableAttributedString", "NSAttributedString", "NSObject"}),
                 {{"NSString", Field::reference("")}})
          .asValue()));
  ASSERT_EQ(classOf(text), "NSMutableAttributedString");
  for (const auto& [name, partner] : kPartners) {
    EXPECT_EQ(archivedAs(partner(text)).substr(0, 22), "NSAttributedString of ") << name;
  }
}

TEST(ImmutablePartners, ImmutableTextInWhichNothingChangesIsTheSame) {
  const AttributedString text = readAs({"NSAttributedString", "NSObject"});
  for (const auto& [name, partner] : kPartners) {
    if (std::string_view(name).starts_with("replaced ")) {
      EXPECT_EQ(partner(text).asValue().body(), text.asValue().body()) << name;
    }
    EXPECT_EQ(archivedAs(partner(text)).substr(0, 22), "NSAttributedString of ") << name;
  }
}

TEST(ImmutablePartners, AMutableTextGoesOnBeingOne) {
  ns::MutableAttributedString text(readAsMutable());
  cleanAttributesAsItemText(text);
  EXPECT_EQ(classOf(text.copy()), "NSMutableAttributedString");
}

}  // namespace
}  // namespace tavlin
