#include "platform/foundation/Value.h"

#include <cmath>
#include <limits>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

class Thing : public Object {};
class Other : public Object {};

TEST(Value, KnowsItsKind) {
  EXPECT_EQ(Value().kind(), Kind::none);
  EXPECT_EQ(Value(nullptr).kind(), Kind::none);
  EXPECT_EQ(Value(true).kind(), Kind::boolean);
  EXPECT_EQ(Value(1).kind(), Kind::integer);
  EXPECT_EQ(Value('a').kind(), Kind::integer);
  EXPECT_EQ(Value(uint8_t{1}).kind(), Kind::integer);
  EXPECT_EQ(Value(Integer{1}).kind(), Kind::integer);
  EXPECT_EQ(Value(1.0).kind(), Kind::real);
  EXPECT_EQ(Value(1.0F).kind(), Kind::real);
  EXPECT_EQ(Value("text").kind(), Kind::string);
  EXPECT_EQ(Value(String("text")).kind(), Kind::string);
  EXPECT_EQ(Value(Data()).kind(), Kind::data);
  EXPECT_EQ(Value(Date()).kind(), Kind::date);
  EXPECT_EQ(Value(Array()).kind(), Kind::array);
  EXPECT_EQ(Value(Dictionary()).kind(), Kind::dictionary);
  EXPECT_EQ(Value(std::make_shared<Thing>()).kind(), Kind::object);
  EXPECT_EQ(Value(std::shared_ptr<Thing>()).kind(), Kind::none);
}

TEST(Value, IsNotMadeFromPointersByAccident) {
  static_assert(!std::is_constructible_v<Value, const char16_t*>);
  static_assert(!std::is_constructible_v<Value, Thing*>);
  static_assert(!std::is_constructible_v<Value, const void*>);
  char text[] = "text";
  EXPECT_EQ(Value(static_cast<char*>(text)), Value("text"));
}

TEST(Value, AsksForKinds) {
  EXPECT_TRUE(Value().isNone());
  EXPECT_TRUE(Value("").isString());
  EXPECT_TRUE(Value(Array()).isArray());
  EXPECT_TRUE(Value(Dictionary()).isDictionary());
  EXPECT_TRUE(Value(false).isNumber());
  EXPECT_TRUE(Value(0).isNumber());
  EXPECT_TRUE(Value(0.5).isNumber());
  EXPECT_FALSE(Value("1").isNumber());
  EXPECT_FALSE(Value(0).isNone());
}

TEST(Value, DescribesEveryKindForMessages) {
  EXPECT_STREQ(describe(Kind::none), "none");
  EXPECT_STREQ(describe(Kind::boolean), "a boolean");
  EXPECT_STREQ(describe(Kind::integer), "an integer");
  EXPECT_STREQ(describe(Kind::real), "a real");
  EXPECT_STREQ(describe(Kind::string), "a string");
  EXPECT_STREQ(describe(Kind::data), "data");
  EXPECT_STREQ(describe(Kind::date), "a date");
  EXPECT_STREQ(describe(Kind::array), "an array");
  EXPECT_STREQ(describe(Kind::dictionary), "a dictionary");
  EXPECT_STREQ(describe(Kind::attributedString), "an attributed string");
  EXPECT_STREQ(describe(Kind::font), "a font");
  EXPECT_STREQ(describe(Kind::color), "a colour");
  EXPECT_STREQ(describe(Kind::paragraphStyle), "a paragraph style");
  EXPECT_STREQ(describe(Kind::record), "an object of another class");
  EXPECT_STREQ(describe(Kind::object), "an object of the document");
}

TEST(Value, GivesBackWhatItWasMadeFrom) {
  EXPECT_EQ(Value("text").string(), "text");
  EXPECT_EQ(Value(Data(std::string("ab"))).data(), Data(std::string("ab")));
  EXPECT_EQ(Value(Date{1.5}).date(), Date{1.5});
  EXPECT_EQ(Value(Array{1}).array(), Array{1});
  EXPECT_EQ(Value(Dictionary{{"a", 1}}).dictionary(), (Dictionary{{"a", 1}}));
  const auto thing = std::make_shared<Thing>();
  EXPECT_EQ(Value(thing).object(), thing);
  EXPECT_EQ(Value(std::shared_ptr<const Thing>(thing)).object(), thing);
  EXPECT_EQ(Value(thing).objectAs<Thing>(), thing);
  EXPECT_EQ(Value(thing).objectAs<Other>(), nullptr);
}

TEST(Value, AnswersEmptyForAnotherKind) {
  const Value values[] = {Value(), "text", 1, Array{1}, std::make_shared<Thing>()};
  for (const Value& value : values) {
    if (!value.isString()) {
      EXPECT_EQ(value.string().length(), 0U);
    }
    if (!value.isArray()) {
      EXPECT_TRUE(value.array().empty());
    }
    if (value.kind() != Kind::object) {
      EXPECT_EQ(value.object(), nullptr);
      EXPECT_EQ(value.objectAs<Thing>(), nullptr);
    }
    EXPECT_TRUE(value.dictionary().empty());
    EXPECT_TRUE(value.data().empty());
    EXPECT_EQ(value.date(), Date{0});
    if (!value.isNumber()) {
      EXPECT_EQ(value.integerValue(), 0);
      EXPECT_EQ(value.doubleValue(), 0);
      EXPECT_EQ(value.integer().low, 0U);
    }
    EXPECT_FALSE(value.isFloat());
  }
}

TEST(Value, StringsAreTrueByTheirBeginning) {
  for (const char* text : {"Y", "y", "YES", "yes", "T", "true", "1", "9", "5x", " 1", "\t\n\v\f\r1",
                           "+1", "-1", "001", " +01", "-0y", "7.5", "00T"}) {
    EXPECT_TRUE(Value(text).boolValue()) << text;
  }
  for (const char* text : {"", "0", "NO", "no", "false", "F", "n", "x1", "+", "-", "+-1", "0.5",
                           "000", " ", "- 1", "\u00a01", "ä", "１"}) {
    EXPECT_FALSE(Value(text).boolValue()) << text;
  }
}

TEST(Value, OtherKindsAsTruth) {
  EXPECT_TRUE(Value(true).boolValue());
  EXPECT_FALSE(Value(false).boolValue());
  EXPECT_TRUE(Value(-1).boolValue());
  EXPECT_FALSE(Value(0).boolValue());
  EXPECT_TRUE(Value(Integer{0, 1, false, true}).boolValue());
  EXPECT_TRUE(Value(0.1).boolValue());
  EXPECT_FALSE(Value(-0.0).boolValue());
  EXPECT_FALSE(Value().boolValue());
  EXPECT_FALSE(Value(Array{1}).boolValue());
  EXPECT_FALSE(Value(Date{1}).boolValue());
}

TEST(Value, ComparesOtherKindsByContent) {
  EXPECT_EQ(Value(), Value(nullptr));
  EXPECT_FALSE(Value() == Value(0));
  EXPECT_FALSE(Value("1") == Value(1));
  EXPECT_FALSE(Value("") == Value());
  EXPECT_FALSE(Value("ab") == Value(Data(std::string("ab"))));
  EXPECT_EQ(Value(Data(std::string("ab"))), Value(Data(std::string("ab"))));
  EXPECT_FALSE(Value(Data(std::string("ab"))) == Value(Data(std::string("ac"))));
  EXPECT_EQ(Value(Date{1}), Value(Date{1}));
  EXPECT_FALSE(Value(Date{1}) == Value(Date{2}));
  EXPECT_FALSE(Value(Date{1}) == Value(1));
  const auto thing = std::make_shared<Thing>();
  EXPECT_EQ(Value(thing), Value(thing));
  EXPECT_FALSE(Value(thing) == Value(std::make_shared<Thing>()));
}

TEST(Value, EqualValuesHaveEqualHashes) {
  EXPECT_EQ(Value(Date{0.0}), Value(Date{-0.0}));
  EXPECT_EQ(Value(Date{0.0}).hash(), Value(Date{-0.0}).hash());
  EXPECT_EQ(Value("ab").hash(), Value(String(u"ab")).hash());
  EXPECT_EQ(Value("äb").hash(), Value(String(u"äb")).hash());
  EXPECT_EQ(Value(Data(std::string("ab"))).hash(), Value(Data(std::string("ab"))).hash());
  EXPECT_EQ(Value().hash(), Value(nullptr).hash());
  const auto thing = std::make_shared<Thing>();
  EXPECT_EQ(Value(thing).hash(), Value(thing).hash());
  EXPECT_EQ(std::hash<Value>()(Value(1)), Value(1).hash());
}

TEST(Value, KeepsTheArchivedClass) {
  const ClassRef mutableData = makeClass({"NSMutableData", "NSData", "NSObject"});
  const Value data = Value::dataWithArchivedClass(Data(std::string("ab")), mutableData);
  EXPECT_EQ(data.archivedClass(), mutableData);
  EXPECT_EQ(data, Value(Data(std::string("ab"))));
  EXPECT_EQ(data.hash(), Value(Data(std::string("ab"))).hash());
  EXPECT_EQ(Value(data.data()).archivedClass(), nullptr);

  const ClassRef mutableString = makeClass({"NSMutableString", "NSString", "NSObject"});
  EXPECT_EQ(Value(String("x").withArchivedClass(mutableString)).archivedClass(), mutableString);
  EXPECT_EQ(Value("x").archivedClass(), nullptr);
  EXPECT_EQ(Value(1).archivedClass(), nullptr);
  EXPECT_EQ(Value().archivedClass(), nullptr);
}

TEST(Value, SharesWhenCopied) {
  const Value value = Array{1};
  const Value copy = value;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(copy.body().get(), value.body().get());
}

// Counts are not atomic, so what two threads make must not meet in one body.
TEST(Value, SharesNothingThatWasMadeApart) {
  const auto areApart = [](const Value& a, const Value& b) {
    return a == b && a.body().get() != b.body().get();
  };
  EXPECT_TRUE(areApart(true, true));
  EXPECT_TRUE(areApart(false, false));
  EXPECT_TRUE(areApart(0, 0));
  EXPECT_TRUE(areApart(String(), String()));
  EXPECT_TRUE(areApart("", ""));
  EXPECT_TRUE(areApart(Array(), Array()));
  EXPECT_TRUE(areApart(Dictionary(), Dictionary()));
}

TEST(Value, HandlesThatWereMovedFromAreEmpty) {
  Array array{1};
  Dictionary dictionary{{"a", 1}};
  String string("text");
  const Array elsewhere = std::move(array);
  const Dictionary elsewhereToo = std::move(dictionary);
  const String away = std::move(string);
  // NOLINTBEGIN(bugprone-use-after-move): that is the question
  EXPECT_EQ(array, Array());
  EXPECT_EQ(dictionary, Dictionary());
  EXPECT_EQ(string, String());
  EXPECT_EQ(string.hash(), String().hash());
  EXPECT_EQ(string.withArchivedClass(makeClass({"NSMutableString"})), "");
  EXPECT_TRUE(Value(array).isArray());
  EXPECT_TRUE(Value(dictionary).isDictionary());
  EXPECT_TRUE(Value(string).isString());
  array.append(2);
  dictionary.setObjectForKey(2, "b");
  EXPECT_EQ(array, Array{2});
  EXPECT_EQ(dictionary, (Dictionary{{"b", 2}}));
  // NOLINTEND(bugprone-use-after-move)
  EXPECT_EQ(elsewhere, Array{1});
  EXPECT_EQ(elsewhereToo, (Dictionary{{"a", 1}}));
  EXPECT_EQ(away, "text");
}

TEST(Value, KeepsAnObjectAliveAndLetsItGo) {
  auto thing = std::make_shared<Thing>();
  const std::weak_ptr<Thing> watch = thing;
  Value value = Array{thing, thing};
  thing.reset();
  EXPECT_FALSE(watch.expired());
  value = {};
  EXPECT_TRUE(watch.expired());
}

}  // namespace
}  // namespace ns
