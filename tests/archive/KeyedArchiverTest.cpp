#include "platform/archive/KeyedArchiver.h"

#include <gtest/gtest.h>

#include "ArchiveTesting.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace {

using ns::Array;
using ns::Dictionary;
using ns::KeyedArchiver;
using ns::Value;
using testing_archives::archive;
using testing_archives::classRecord;
using testing_archives::describeGraph;
using testing_archives::instance;
using testing_archives::Item;
using testing_archives::opened;
using testing_archives::P;
using testing_archives::readBack;
using testing_archives::references;
using testing_archives::utf8;

ns::Data written(const Value& root) { return KeyedArchiver::archivedDataWithRootObject(root); }
Value roundTrip(const Value& root) { return readBack(written(root)); }
std::shared_ptr<Item> roundTrip(const std::shared_ptr<Item>& root) {
  return roundTrip(Value(root)).objectAs<Item>();
}

/// The value of a plain reading against the value of a copy that nobody looked into.
void expectCopied(const ns::Data& data) {
  const auto original = opened(data);
  // a container that is wrapped is written anew; what it holds is copied record by record
  const Value value = original->value(original->root());
  const std::string graph = describeGraph(value);
  const ns::Data copy = written(value);
  EXPECT_EQ(describeGraph(readBack(copy)), graph);
  EXPECT_EQ(written(readBack(copy)), copy);
}

TEST(KeyedArchiver, WritesBareRoots) {
  for (const Value& value :
       {Value("text"), Value("größe"), Value(true), Value(7), Value(-7), Value(1.5), Value(1.5F),
        Value(ns::Data("x")), Value(UINT64_MAX), Value(ns::Integer{1, 2, false, true})}) {
    const Value read = roundTrip(value);
    EXPECT_EQ(read, value);
    EXPECT_EQ(read.kind(), value.kind());
    EXPECT_EQ(read.isFloat(), value.isFloat());
    EXPECT_EQ(read.integer().sixteenBytes,
              value.integer().sixteenBytes || !value.integer().isSigned);
  }
  EXPECT_TRUE(roundTrip(Value()).isNone());
  EXPECT_EQ(roundTrip(ns::Date{2.5}).date().seconds, 2.5);
}

TEST(KeyedArchiver, KeepsClassesOfContainersAndMutableValues) {
  Array array{Value(ns::String("inside").withArchivedClass(
                  ns::makeClass({"NSMutableString", "NSString", "NSObject"}))),
              Value::dataWithArchivedClass(ns::Data("x"),
                                           ns::makeClass({"NSMutableData", "NSData", "NSObject"}))};
  array.setArchivedClass(ns::makeClass({"NSMutableArray", "NSArray", "NSObject"}));
  const Value read = roundTrip(array);
  EXPECT_EQ(describeGraph(read), describeGraph(array));
  EXPECT_EQ(read.array().archivedClass()->name, "NSMutableArray");
}

TEST(KeyedArchiver, WritesEqualScalarsOnceAndSharedContainersOnce) {
  const Array inner{1};
  const Value read = roundTrip(Array{inner, inner, Array{1}, "a", "a"});
  EXPECT_EQ(read.array()[0].body(), read.array()[1].body());
  EXPECT_NE(read.array()[0].body(), read.array()[2].body());
  const auto held = opened(written(Array{"a", "a", 1, 1, true, 1.0}));
  // null, the array, four scalars, the class
  EXPECT_EQ(held->objectCount(), 7U);
}

TEST(KeyedArchiver, KeepsIdentityAndCircles) {
  const auto root = Item::make("root");
  const auto child = Item::make("child");
  root->add(child);
  root->add(child);
  root->conditional = root;
  child->conditional = root;
  const auto read = roundTrip(root);
  ASSERT_EQ(read->children.size(), 2U);
  EXPECT_EQ(read->children[0], read->children[1]);
  EXPECT_EQ(read->children[0]->parent.lock(), read);
  EXPECT_EQ(read->conditional.lock(), read);
  EXPECT_EQ(utf8(read->children[0]->name), "child");
}

TEST(KeyedArchiver, ConditionalReferencesBeforeAfterAndNever) {
  const auto root = Item::make("root");
  const auto first = Item::make("first");
  const auto last = Item::make("last");
  const auto stranger = Item::make("stranger");
  root->add(first);
  root->add(last);
  first->conditional = last;     // written after
  last->conditional = first;     // written before
  root->conditional = stranger;  // never written
  const auto read = roundTrip(root);
  EXPECT_EQ(read->children[0]->conditional.lock(), read->children[1]);
  EXPECT_EQ(read->children[1]->conditional.lock(), read->children[0]);
  EXPECT_FALSE(read->conditional.lock());
  const auto held = opened(written(root));
  const auto field = held->fieldForKey(held->record(held->root()), "friend");
  // an entry of its own that holds null, as the platform writes it
  EXPECT_NE(held->target(*field), 0U);
  EXPECT_TRUE(held->isNull(held->target(*field)));
}

TEST(KeyedArchiver, MarksKeysThatBeginWithTheArchiversSign) {
  const auto root = Item::make("root");
  root->size = -123456789012;
  root->flag = true;
  const auto held = opened(written(root));
  const auto record = held->record(held->root());
  EXPECT_TRUE(held->fieldForKey(record, "$$size"));
  EXPECT_FALSE(held->fieldForKey(record, "$size"));
  const auto read = roundTrip(root);
  EXPECT_EQ(read->size, -123456789012);
  EXPECT_TRUE(read->flag);
}

TEST(KeyedArchiver, TheTextOfTheNullMarkerIsNotNull) {
  const Value read = roundTrip(Array{"$null", "$null", Dictionary{{"$null", "$null"}}, "x$null"});
  EXPECT_EQ(utf8(read.array()[0]), "$null");
  EXPECT_EQ(read.array()[0].kind(), ns::Kind::string);
  EXPECT_EQ(utf8(read.array()[2].dictionary().objectForKey("$null")), "$null");
  EXPECT_EQ(utf8(roundTrip("$null")), "$null");
  EXPECT_EQ(written(read), written(readBack(written(read))));
}

TEST(KeyedArchiver, ListsKeepTheirClass) {
  const auto root = Item::make("root");
  root->isImmutable = true;
  EXPECT_TRUE(roundTrip(root)->isImmutable);
  root->isImmutable = false;
  EXPECT_FALSE(roundTrip(root)->isImmutable);
}

TEST(KeyedArchiver, RefusesObjectsWithoutAClass) {
  class Nameless : public ns::Object {
    void encodeWithCoder(ns::Coder& /*coder*/) const override {}
  };
  EXPECT_THROW((void)written(Array{Value(std::make_shared<Nameless>())}),
               ns::InvalidArgumentException);
}

TEST(KeyedArchiver, CopiesEveryKindOfField) {
  const P shared = P::array({P::uid(1), P::array({P::real4(1)}), "text"});
  expectCopied(archive({"$null",
                        instance(2, {{"bool", P::boolean(true)},
                                     {"small", 200},
                                     {"negative", -2147483392},
                                     {"wide", P::integer(5, 16)},
                                     {"float", P::real4(0.1F)},
                                     {"double", P::real(0.1)},
                                     {"date", P::date(3)},
                                     {"data", P::data("bytes")},
                                     {"text", "in the record"},
                                     {P::wide(u"schlüssel"), P::wide(u"größe")},
                                     {"$0", P::uid(0)},
                                     {"$$mine", P::uid(3)},
                                     {"self", P::uid(1)},
                                     {"list", shared},
                                     {"again", shared},
                                     {"map", P::dictionary({{"a", 1}, {"b", P::uid(4)}})},
                                     {"empty", P::array({})}}),
                        P::dictionary({{"$classname", "Thing"},
                                       {"$classes", P::array({"Thing", "%Thing", "NSObject"})},
                                       {"$classhints", P::array({"NSString", "NSArray"})}}),
                        "$null", instance(5), P::dictionary({{"$classname", "Bare"}})}));
}

TEST(KeyedArchiver, CopiesKeepUnresolvedReferencesApartFromNull) {
  const ns::Data data =
      archive({"$null", instance(2, {{"a", P::uid(0)}, {"b", P::uid(3)}, {"c", P::uid(3)}}),
               classRecord({"Thing", "NSObject"}), "$null"});
  const auto copy = opened(written(readBack(data)));
  const auto record = copy->record(copy->root());
  EXPECT_EQ(copy->target(*copy->fieldForKey(record, "a")), 0U);
  const uint32_t unresolved = copy->target(*copy->fieldForKey(record, "b"));
  EXPECT_NE(unresolved, 0U);
  EXPECT_TRUE(copy->isNull(unresolved));
  EXPECT_EQ(copy->target(*copy->fieldForKey(record, "c")), unresolved);
}

TEST(KeyedArchiver, CopiesContainersInOldForms) {
  expectCopied(archive(
      {"$null", instance(2, {{"NS.key.0", P::uid(3)}, {"NS.object.0", P::uid(4)}, {"extra", 1}}),
       classRecord({"NSDictionary", "NSObject"}), "k",
       instance(5, {{"NS.object.0", P::uid(1)}, {"NS.object.1", P::uid(3)}}),
       classRecord({"NSMutableArray", "NSArray", "NSObject"})}));
}

TEST(KeyedArchiver, AnEditedContainerKeepsItsNeighboursAsTheyWere) {
  const ns::Data data = archive({"$null", instance(2, {{"NS.objects", references({3, 4, 6, 3})}}),
                                 classRecord({"NSArray", "NSObject"}),
                                 instance(5, {{"me", P::uid(3)}, {"real", P::real4(1)}}),
                                 instance(2, {{"NS.objects", references({3})}}),
                                 classRecord({"Thing", "NSObject"}), "text"});
  const Value original = readBack(data);
  Array edited = original.array();
  edited.append("more");
  const Value read = roundTrip(edited);
  ASSERT_EQ(read.array().count(), 5U);
  EXPECT_EQ(describeGraph(read), describeGraph(edited));
  // the record is one object still, wherever it is mentioned
  const auto held = opened(written(edited));
  const auto numbers = held->elementNumbers(held->record(held->root()), "NS.objects", "");
  EXPECT_EQ(numbers[0], numbers[3]);
  const auto inner = held->elementNumbers(held->record(numbers[1]), "NS.objects", "");
  EXPECT_EQ(inner[0], numbers[0]);
}

TEST(KeyedArchiver, ValuesWithAClassStayOneWhenOneOfTheirHoldersIsEdited) {
  const std::vector<std::string> classes[] = {{"NSMutableString", "NSString", "NSObject"},
                                              {"NSMutableData", "NSData", "NSObject"},
                                              {"NSDate", "%NSDate", "NSObject"}};
  // the array 1 holds 3, 4, 5 and the array 6, which holds them too
  const ns::Data data =
      archive({"$null", instance(2, {{"NS.objects", references({3, 4, 5, 6})}}),
               classRecord({"NSMutableArray", "NSArray", "NSObject"}),
               instance(7, {{"more", 1}, {"NS.string", "text"}}),
               instance(8, {{"NS.data", P::data("x")}}), instance(9, {{"NS.time", P::real(1.5)}}),
               instance(2, {{"NS.objects", references({3, 4, 5})}}), classRecord(classes[0]),
               classRecord(classes[1]), classRecord(classes[2])});
  Array edited = readBack(data).array();
  edited.append("more");
  const auto held = opened(written(edited));
  const auto numbers = held->elementNumbers(held->record(held->root()), "NS.objects", "");
  const auto inner = held->elementNumbers(held->record(numbers[3]), "NS.objects", "");
  ASSERT_EQ(inner.size(), 3U);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(numbers[i], inner[i]);
    EXPECT_EQ(held->record(numbers[i]).archivedClass->info->chain, classes[i]);
  }
  EXPECT_EQ(held->record(numbers[0]).shape->count(), 3U);  // the field that nobody knows, too
  EXPECT_EQ(held->objectCount(), 10U + 1U);
}

TEST(KeyedArchiver, AValueInPlaceOfAnotherLeavesTheOtherToItsHolders) {
  const ns::Data data =
      archive({"$null", instance(2, {{"NS.objects", references({3, 5})}}),
               classRecord({"NSArray", "NSObject"}), instance(4, {{"NS.string", "old"}}),
               classRecord({"NSMutableString", "NSString", "NSObject"}),
               instance(2, {{"NS.objects", references({3})}})});
  const Array array = readBack(data).array();
  const ns::String old = array[0].string();
  const Array edited{Value(ns::String("new").withArchivedClass(old.archivedClass())), array[1]};
  const Array read = roundTrip(edited).array();
  EXPECT_EQ(utf8(read[0]), "new");
  EXPECT_EQ(read[0].archivedClass()->name, "NSMutableString");
  EXPECT_EQ(utf8(read[1].array()[0]), "old");
  // the same text under another class is another value
  const auto changed = roundTrip(Array{Value(old.withArchivedClass(nullptr)), array[1]}).array();
  EXPECT_FALSE(changed[0].archivedClass());
  EXPECT_EQ(utf8(changed[0]), "old");
}

TEST(KeyedArchiver, WritesAsManyEntriesAsThereAre) {
  // on both sides of what references of one and of two bytes can name, in "$objects" and outside
  for (const size_t count : {240U, 250U, 254U, 256U, 65000U, 65533U, 65534U, 65536U, 70000U}) {
    std::vector<Value> values;
    for (size_t i = 0; i < count; ++i) values.emplace_back(static_cast<int64_t>(i));
    const Array array(std::move(values));
    const ns::Data data = written(array);
    EXPECT_EQ(readBack(data), Value(array)) << count;
    EXPECT_EQ(written(readBack(data)), data);
    EXPECT_EQ(opened(data)->objectCount(), count + 3);
  }
}

TEST(KeyedArchiver, WritesWhatStandsBesideTheRoot) {
  const Array shared{1};
  ns::Field list;
  list.form = ns::Field::Form::list;
  list.fields = {ns::Field::reference(Value(shared)), ns::Field::primitive("x")};
  const ns::Data data = KeyedArchiver::archivedDataWithRootObject(
      Value(shared), {{"flag", ns::Field::primitive(true)},
                      {"größe", ns::Field::primitive(0.5F)},
                      {"same", ns::Field::reference(Value(shared))},
                      {"none", ns::Field::reference(Value())},
                      {"list", list}});
  const auto held = opened(data);
  EXPECT_EQ(held->root(), 1U);
  const auto& others = held->otherTopEntries();
  ASSERT_EQ(others.size(), 5U);
  EXPECT_EQ(others[0].key, "flag");
  EXPECT_EQ(others[0].object.type, ns::KeyedArchive::Type::boolean);
  EXPECT_EQ(others[1].key, "größe");
  EXPECT_EQ(others[1].object.width, 4);
  EXPECT_EQ(held->target(others[2].object), held->root());
  EXPECT_EQ(held->target(others[3].object), 0U);
  EXPECT_EQ(held->target(held->element(others[4].object, 0)), held->root());
  // and again
  ns::Fields again;
  for (const auto& [key, entry, index] : others)
    again.emplace_back(key, ns::archivedField(held, entry));
  EXPECT_EQ(KeyedArchiver::archivedDataWithRootObject(held->value(held->root()), again), data);
}

TEST(KeyedArchiver, ValuesOfSeveralArchivesGoIntoOne) {
  const ns::Data first =
      archive({"$null", instance(2, {{"a", 1}}), classRecord({"Thing", "NSObject"})});
  const ns::Data second =
      archive({"$null", instance(2, {{"a", 2}}), classRecord({"Thing", "NSObject"})});
  const Array both{readBack(first), readBack(second), readBack(first)};
  const Value read = roundTrip(both);
  EXPECT_EQ(ns::Record(read.array()[0]).valueForKey("a").integerValue(), 1);
  EXPECT_EQ(ns::Record(read.array()[1]).valueForKey("a").integerValue(), 2);
  EXPECT_EQ(ns::Record(read.array()[2]).valueForKey("a").integerValue(), 1);
  const auto held = opened(written(both));
  // null, the array and its class, three things (one data opened twice is two archives) and one
  // class
  EXPECT_EQ(held->objectCount(), 7U);
}

TEST(KeyedArchiver, ObjectsInValuesAreTheObjectsOfTheDocument) {
  const auto root = Item::make("root");
  const auto child = Item::make("child");
  root->add(child);
  root->values = Dictionary{{"favourite", Value(child)}, {"me", Value(root)}};
  const auto read = roundTrip(root);
  root->values = {};
  EXPECT_EQ(read->values.dictionary().objectForKey("favourite").object(), read->children[0]);
  EXPECT_EQ(read->values.dictionary().objectForKey("me").object(), read);
  // unchanged values are copied and lead to the living objects
  const auto again = roundTrip(read);
  EXPECT_EQ(again->values.dictionary().objectForKey("favourite").object(), again->children[0]);
  read->values = {};
  again->values = {};
}

}  // namespace
