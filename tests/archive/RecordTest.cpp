#include "platform/archive/Record.h"

#include <gtest/gtest.h>

#include "ArchiveTesting.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/foundation/Array.h"

namespace {

using ns::Field;
using ns::Record;
using ns::Value;
using testing_archives::archive;
using testing_archives::classRecord;
using testing_archives::instance;
using testing_archives::opened;
using testing_archives::P;
using testing_archives::readBack;
using testing_archives::utf8;

const ns::ClassRef kThing = ns::makeClass({"Thing", "NSObject"});

/// Things of an archive: each entry is one, with the fields given; the class comes last.
ns::Data things(const std::vector<testing_archives::Fields>& all) {
  std::vector<P> entries{"$null"};
  for (const auto& fields : all) entries.push_back(instance(all.size() + 1, fields));
  entries.push_back(classRecord({"Thing", "NSObject"}));
  return archive(std::move(entries));
}

TEST(Record, IsMadeOfFields) {
  const Record made = Record(kThing)
                          .with("flag", Field::primitive(true))
                          .with("name", Field::reference("x"))
                          .with("flag", Field::primitive(false));
  EXPECT_EQ(made.count(), 2U);
  EXPECT_TRUE(made.contains("flag"));
  EXPECT_FALSE(made.contains("other"));
  EXPECT_FALSE(made.valueForKey("flag").boolValue());
  EXPECT_EQ(made.valueForKey("flag").kind(), ns::Kind::boolean);
  EXPECT_EQ(made.fieldForKey("name").form, Field::Form::reference);
  EXPECT_EQ(made.fieldForKey("other").form, Field::Form::reference);
  EXPECT_TRUE(made.valueForKey("other").isNone());
  EXPECT_EQ(made.archivedClass(), kThing);
  const Record less = made.without("flag");
  EXPECT_EQ(less.keys().size(), 1U);
  EXPECT_EQ(less.keys()[0].utf8(), "name");
  EXPECT_EQ(made.count(), 2U);
}

TEST(Record, OfAnotherValueHasNothing) {
  const Record none(Value("text"));
  EXPECT_EQ(none.count(), 0U);
  EXPECT_FALSE(none.archivedClass());
}

TEST(Record, ReadsFromItsArchive) {
  const Record record(readBack(things({{{"flag", P::boolean(true)},
                                        {"me", P::uid(1)},
                                        {"list", P::array({1, P::array({P::uid(1)})})},
                                        {"map", P::dictionary({{"k", "v"}})},
                                        {"null", P::uid(0)}}})));
  EXPECT_EQ(record.count(), 5U);
  EXPECT_EQ(record.archivedClass()->name, "Thing");
  EXPECT_TRUE(record.valueForKey("flag").boolValue());
  EXPECT_EQ(Record(record.valueForKey("me")).count(), 5U);
  const Field list = record.fieldForKey("list");
  ASSERT_EQ(list.form, Field::Form::list);
  ASSERT_EQ(list.fields.size(), 2U);
  EXPECT_EQ(list.fields[1].fields[0].form, Field::Form::reference);
  const Field map = record.fieldForKey("map");
  ASSERT_EQ(map.form, Field::Form::map);
  EXPECT_EQ(map.keys[0].utf8(), "k");
  EXPECT_EQ(utf8(map.fields[0].value), "v");
  EXPECT_TRUE(record.contains("null"));
  EXPECT_TRUE(record.valueForKey("null").isNone());
  EXPECT_FALSE(record.contains("$class"));
}

TEST(Record, FindsKeysByTheirTextAndNotByWhereTheTextLies) {
  const Record record(readBack(things({{{"first", 1}, {"other", 2}, {"third", 3}}})));
  char key[8] = "first";
  EXPECT_EQ(record.valueForKey(key).integerValue(), 1);
  std::copy_n("other", 6, key);
  EXPECT_EQ(record.valueForKey(key).integerValue(), 2);
  std::copy_n("third", 6, key);
  EXPECT_EQ(record.fieldForKey(key).value.integerValue(), 3);
  std::copy_n("none!", 6, key);
  EXPECT_FALSE(record.contains(key));
}

TEST(Record, KeepsTheOtherFieldsWhenOneChanges) {
  const Record record(readBack(things({{{"float", P::real4(0.1F)},
                                        {"wide", P::integer(3, 16)},
                                        {"list", P::array({P::uid(2), P::boolean(true)})},
                                        {"name", P::uid(0)}},
                                       {{"size", 1}}})));
  const Value changed = record.with("name", Field::reference("x")).asValue();
  const Value read = readBack(ns::KeyedArchiver::archivedDataWithRootObject(changed));
  EXPECT_EQ(testing_archives::describeGraph(read).find("record(Thing:Thing:NSObject) float=0 f"),
            testing_archives::describeGraph(read).find("record"));
  const Record again(read);
  EXPECT_TRUE(again.valueForKey("float").isFloat());
  EXPECT_TRUE(again.valueForKey("wide").integer().sixteenBytes);
  EXPECT_EQ(again.fieldForKey("list").fields[1].value.kind(), ns::Kind::boolean);
  EXPECT_EQ(Record(again.fieldForKey("list").fields[0].value).valueForKey("size").integerValue(),
            1);
  EXPECT_EQ(utf8(again.valueForKey("name")), "x");
}

TEST(Record, EqualityTellsKindsOfFieldsApart) {
  const auto with = [](const Field& field) { return Record(kThing).with("a", field).asValue(); };
  EXPECT_EQ(with(Field::primitive(1)), with(Field::primitive(1)));
  EXPECT_FALSE(with(Field::primitive(1)) == with(Field::primitive(true)));
  EXPECT_FALSE(with(Field::primitive(1)) == with(Field::primitive(1.0)));
  EXPECT_FALSE(with(Field::primitive(1)) == with(Field::reference(1)));
  EXPECT_FALSE(with(Field::primitive(1)) == Record(kThing).asValue());
  EXPECT_FALSE(
      with(Field::primitive(1)) ==
      Record(ns::makeClass({"Other", "NSObject"})).with("a", Field::primitive(1)).asValue());
  const Value ab =
      Record(kThing).with("a", Field::primitive(1)).with("b", Field::primitive(2)).asValue();
  const Value ba =
      Record(kThing).with("b", Field::primitive(2)).with("a", Field::primitive(1)).asValue();
  EXPECT_EQ(ab, ba);
  EXPECT_EQ(ab.hash(), ba.hash());
}

TEST(Record, EqualityOfArchivesLooksAtContentAndEndsInCircles) {
  const ns::Data circle =
      things({{{"next", P::uid(2)}, {"n", 1}}, {{"next", P::uid(1)}, {"n", 2}}});
  const ns::Data other = things({{{"next", P::uid(2)}, {"n", 1}}, {{"next", P::uid(1)}, {"n", 3}}});
  EXPECT_EQ(readBack(circle), readBack(circle));
  EXPECT_FALSE(readBack(circle) == readBack(other));
  // a failed comparison leaves nothing behind
  EXPECT_EQ(readBack(circle), readBack(circle));
  EXPECT_FALSE(readBack(circle) == readBack(other));
  EXPECT_EQ(readBack(circle), Record(readBack(circle)).with("n", Field::primitive(1)).asValue());
}

TEST(Record, EqualityOfManyPathsIsQuick) {
  // 2^60 ways lead from the first to the last
  std::vector<testing_archives::Fields> ladder;
  for (uint64_t i = 0; i < 60; ++i) {
    ladder.push_back({{"a", P::uid(i + 2)}, {"b", P::uid(i + 2)}});
  }
  ladder.push_back({{"end", 1}});
  EXPECT_EQ(readBack(things(ladder)), readBack(things(ladder)));
}

TEST(Record, EqualityOfDeepChainsNeedsNoStack) {
  std::vector<testing_archives::Fields> chain;
  for (uint64_t i = 0; i < 20000; ++i) chain.push_back({{"next", P::uid((i + 1) % 20000 + 1)}});
  const auto held = opened(things(chain));
  const Value first = held->value(1);
  EXPECT_EQ(held->value(1), first);
  (void)(readBack(things(chain)) == first);  // either answer will do; it must come
}

TEST(Record, AsValueOfAnotherKindIsTheSameObjectOfTheArchive) {
  const Value record = readBack(things({{{"size", 1}}}));
  const Value font = Record(record).asValue(ns::Kind::font);
  EXPECT_EQ(font.kind(), ns::Kind::font);
  const auto held = opened(ns::KeyedArchiver::archivedDataWithRootObject(ns::Array{record, font}));
  const auto numbers = held->elementNumbers(held->record(held->root()), "NS.objects", "");
  EXPECT_EQ(numbers[0], numbers[1]);
}

}  // namespace
