// Rewriting what lies in an archive, while decoding and while copying.

#include "platform/archive/ValueTransform.h"

#include <gtest/gtest.h>

#include "ArchiveTesting.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace {

using testing_archives::archive;
using testing_archives::classRecord;
using testing_archives::describeGraph;
using testing_archives::instance;
using testing_archives::opened;
using testing_archives::P;
using testing_archives::readBack;
using testing_archives::references;
using testing_archives::utf8;

/// Turns texts that begin with "$null: old" into texts that begin with "$null: new".
class Renewal final : public ns::ValueTransform {
 public:
  [[nodiscard]] bool changesText(const ns::StoredText& text) const override {
    return !text.isWide && text.bytes.starts_with("$null: old");
  }
  [[nodiscard]] ns::String string(const ns::String& string) const override {
    const std::string text = string.utf8();
    return text.starts_with("$null: old")
               ? ns::String(std::string_view("$null: new" + text.substr(10)))
               : string;
  }
  [[nodiscard]] bool mayChangeAttributedStrings(
      const ns::KeyedArchive& /*archive*/) const override {
    return false;
  }
  [[nodiscard]] ns::Value attributedString(const ns::Value& value) const override { return value; }
};

const Renewal renewal;

/// A root that writes a value of an archive, rewritten, without looking at it.
class Carrier final : public ns::Object {
 public:
  explicit Carrier(std::shared_ptr<const ns::KeyedArchive> archive)
      : archive_(std::move(archive)) {}
  [[nodiscard]] ns::ClassRef classForCoder() const override {
    return ns::makeClass({"Carrier", "NSObject"});
  }
  void encodeWithCoder(ns::Coder& coder) const override {
    dynamic_cast<ns::KeyedArchiver&>(coder).encodeArchivedValueForKey(archive_, archive_->root(),
                                                                      &renewal, "data");
  }

 private:
  std::shared_ptr<const ns::KeyedArchive> archive_;
};

/// The rewritten value, copied without being decoded and then read.
ns::Value copied(const std::shared_ptr<ns::KeyedArchive>& archive) {
  const auto held = opened(
      ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(std::make_shared<Carrier>(archive))));
  return held->value(held->target(*held->fieldForKey(held->record(held->root()), "data")));
}

const std::vector<std::string> kArray{"NSArray", "NSObject"};
const std::vector<std::string> kDictionary{"NSMutableDictionary", "NSDictionary", "NSObject"};
const std::vector<std::string> kMutableString{"NSMutableString", "NSString", "NSObject"};

/// Numbers: 1 array, 2 its class, 3 "$null: old text", 4 unaffected array, 5 affected array,
/// 6 dictionary with a key and a value "$null: old key", 7 its class, 8 "$null: old key", 9 mutable
/// string, 10 its class, 11 "plain", 12 a thing with a text, 13 its class.
std::vector<P> entries() {
  return {"$null",
          instance(2, {{"NS.objects", references({3, 4, 5, 5, 6, 9, 12, 0})}}),
          classRecord(kArray),
          "$null: old text",
          instance(2, {{"NS.objects", references({11})}}),
          instance(2, {{"NS.objects", references({3, 4})}}),
          instance(7, {{"NS.keys", references({8})}, {"NS.objects", references({8})}}),
          classRecord(kDictionary),
          "$null: old key",
          instance(10, {{"NS.string", "$null: old mutable"}}),
          classRecord(kMutableString),
          "plain",
          instance(13, {{"text", P::uid(3)}, {"inside", "$null: old"}}),
          classRecord({"Thing", "NSObject"})};
}

TEST(ValueTransform, ReachesStringsInContainersAndNothingElse) {
  const auto held = opened(archive(entries()));
  const ns::Array array = held->value(1, &renewal).array();
  EXPECT_EQ(utf8(array[0]), "$null: new text");
  EXPECT_EQ(utf8(array[1].array()[0]), "plain");
  EXPECT_EQ(utf8(array[2].array()[0]), "$null: new text");
  EXPECT_EQ(utf8(array[4].dictionary().entries()[0].first), "$null: old key");
  EXPECT_EQ(utf8(array[4].dictionary().entries()[0].second), "$null: new key");
  EXPECT_EQ(utf8(array[5]), "$null: new mutable");
  EXPECT_EQ(array[5].archivedClass()->name, "NSMutableString");
  EXPECT_EQ(array[6].kind(), ns::Kind::record);
  EXPECT_TRUE(array[7].isNone());
  // without it, nothing has changed
  EXPECT_EQ(utf8(held->value(1).array()[0]), "$null: old text");
}

/// Counts how often a text is rewritten.
class Counted final : public ns::ValueTransform {
 public:
  [[nodiscard]] bool changesText(const ns::StoredText& text) const override {
    ++looks;
    return renewal.changesText(text);
  }
  [[nodiscard]] ns::String string(const ns::String& string) const override {
    ++rewrites;
    return renewal.string(string);
  }
  [[nodiscard]] bool mayChangeAttributedStrings(
      const ns::KeyedArchive& /*archive*/) const override {
    return false;
  }
  [[nodiscard]] ns::Value attributedString(const ns::Value& value) const override { return value; }

  mutable int looks = 0;
  mutable int rewrites = 0;
};

const Counted counted;

TEST(ValueTransform, ALongTextIsLookedAtAndRewrittenOnceHoweverManyHaveIt) {
  // 3,000 strings with one text, bare and in records, which texts of a few hundred letters may be
  const P text = P::string("$null: old" + std::string(1000, 'x'));
  std::vector<uint64_t> all;
  std::vector<P> list{"$null", "", classRecord(kArray), classRecord(kMutableString)};
  for (int i = 0; i < 3000; ++i) {
    all.push_back(list.size());
    list.push_back(i % 2 == 0 ? text : instance(3, {{"NS.string", text}}));
  }
  list[1] = instance(2, {{"NS.objects", references(all)}});
  const auto held = opened(archive(list));
  counted.looks = counted.rewrites = 0;
  const ns::Array read = held->value(1, &counted).array();
  ASSERT_EQ(read.count(), 3000U);
  for (const ns::Value& each : read) {
    EXPECT_EQ(each.string().ascii().data(), read[0].string().ascii().data());
  }
  EXPECT_EQ(read[1].archivedClass()->name, "NSMutableString");
  EXPECT_EQ(utf8(read[0]), "$null: new" + std::string(1000, 'x'));
  EXPECT_EQ(counted.rewrites, 1);
  EXPECT_EQ(counted.looks, 1);
  const auto file = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(read));
  EXPECT_EQ(describeGraph(readBack(file)), describeGraph(ns::Value(read)));
  EXPECT_EQ(counted.rewrites, 1);
  EXPECT_EQ(counted.looks, 1);
}

TEST(ValueTransform, SharedPartsStaySharedAndUnaffectedPartsStayTheSame) {
  const auto held = opened(archive(entries()));
  const ns::Value plain = held->value(1);
  const ns::Value rewritten = held->value(1, &renewal);
  EXPECT_EQ(rewritten.array()[2].body(), rewritten.array()[3].body());
  EXPECT_EQ(rewritten.array()[1].body(), plain.array()[1].body());
  EXPECT_EQ(rewritten.array()[2].array()[1].body(), plain.array()[1].body());
  EXPECT_NE(rewritten.array()[2].body(), plain.array()[2].body());
  // asked for again, both are what they were
  EXPECT_EQ(held->value(1, &renewal).body(), rewritten.body());
  EXPECT_EQ(held->value(1).body(), plain.body());
  EXPECT_EQ(held->value(4, &renewal).body(), plain.array()[1].body());
}

TEST(ValueTransform, CopyingDoesWhatDecodingDoes) {
  const auto held = opened(archive(entries()));
  EXPECT_EQ(describeGraph(copied(held)), describeGraph(held->value(1, &renewal)));
  // of the file's texts the thing keeps the old one, the array has the new one
  const std::string graph = describeGraph(copied(held));
  EXPECT_NE(graph.find("'$null: old text'"), std::string::npos);
  EXPECT_NE(graph.find("'$null: new text'"), std::string::npos);
}

TEST(ValueTransform, CopyingReachesNumberedElementsToo) {
  const auto held = opened(archive(
      {"$null",
       instance(2, {{"NS.object.0", P::uid(3)}, {"NS.object.1", P::uid(4)}, {"more", P::uid(3)}}),
       classRecord(kArray), "$null: old text",
       instance(5, {{"NS.key.0", P::uid(3)}, {"NS.object.0", P::uid(3)}}),
       classRecord(kDictionary)}));
  const ns::Value decoded = held->value(1, &renewal);
  EXPECT_EQ(utf8(decoded.array()[0]), "$null: new text");
  EXPECT_EQ(describeGraph(copied(held)), describeGraph(decoded));
}

TEST(ValueTransform, CopyingKeepsTheOtherFieldsOfARewrittenString) {
  const auto held = opened(archive(
      {"$null", instance(2, {{"NS.objects", references({3, 3})}}), classRecord(kArray),
       instance(4, {{"first", P::uid(3)}, {"NS.string", "$null: old text"}, {"last", P::real4(1)}}),
       classRecord(kMutableString)}));
  const auto copy = opened(
      ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(std::make_shared<Carrier>(held))));
  const uint32_t list = copy->target(*copy->fieldForKey(copy->record(copy->root()), "data"));
  const auto numbers = copy->elementNumbers(copy->record(list), "NS.objects", "");
  EXPECT_EQ(numbers[0], numbers[1]);
  const auto record = copy->record(numbers[0]);
  ASSERT_EQ(record.shape->count(), 4U);
  EXPECT_EQ(record.shape->key(0), "first");
  EXPECT_EQ(ns::KeyedArchive::string(copy->field(record, 1)), "$null: new text");
  EXPECT_EQ(copy->field(record, 2).width, 4);
}

TEST(ValueTransform, ARewrittenValueIsOneWithItsCopies) {
  // decoded and rewritten, it comes from the same place as what is copied from there
  const auto held = opened(archive(entries()));
  const ns::Array array = held->value(1, &renewal).array();
  const auto carrier = std::make_shared<Carrier>(held);
  const ns::Array both{array[2], array[5], ns::Value(carrier)};
  const auto copy = opened(ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(both)));
  const auto top = copy->elementNumbers(copy->record(copy->root()), "NS.objects", "");
  const uint32_t list = copy->target(*copy->fieldForKey(copy->record(top[2]), "data"));
  const auto numbers = copy->elementNumbers(copy->record(list), "NS.objects", "");
  EXPECT_EQ(top[0], numbers[2]);
  EXPECT_EQ(top[1], numbers[5]);
}

TEST(ValueTransform, KeysStayAsTheyAreHoweverDeep) {
  const auto held = opened(archive(
      {"$null", instance(2, {{"NS.keys", references({3})}, {"NS.objects", references({3})}}),
       classRecord(kDictionary), instance(4, {{"NS.objects", references({5})}}),
       classRecord(kArray), "$null: old"}));
  const ns::Value decoded = held->value(1, &renewal);
  const auto& [key, value] = decoded.dictionary().entries()[0];
  EXPECT_EQ(utf8(key.array()[0]), "$null: old");
  EXPECT_EQ(utf8(value.array()[0]), "$null: new");
  EXPECT_EQ(describeGraph(copied(held)), describeGraph(decoded));
}

TEST(ValueTransform, WithNothingToDoGivesTheSameValues) {
  const auto held = opened(archive(
      {"$null", instance(2, {{"NS.objects", references({3})}}), classRecord(kArray), "plain"}));
  const ns::Value plain = held->value(1);
  EXPECT_EQ(held->value(1, &renewal).body(), plain.body());
  EXPECT_FALSE(held->isChangedBy(renewal, 1));
}

// The only "$null" stands in a record, and an entry that nobody refers to makes the archive one
// that is looked at the long way.
TEST(ValueTransform, ReachesAStringRecordInAnOddArchive) {
  const auto held = opened(archive({"$null", instance(2, {{"NS.objects", references({3})}}),
                                    classRecord(kArray), instance(4, {{"NS.string", "$null: old"}}),
                                    classRecord(kMutableString), P::uid(1)}));
  EXPECT_EQ(utf8(held->value(1, &renewal).array()[0]), "$null: new");
  EXPECT_EQ(utf8(copied(held).array()[0]), "$null: new");
}

TEST(ValueTransform, CirclesEnd) {
  const auto held = opened(
      archive({"$null", instance(2, {{"NS.objects", references({3, 1, 4})}}), classRecord(kArray),
               "$null: old", instance(2, {{"NS.objects", references({1})}})}));
  EXPECT_EQ(utf8(held->value(1, &renewal).array()[0]), "$null: new");
  EXPECT_EQ(utf8(copied(held).array()[0]), "$null: new");
  EXPECT_TRUE(held->isChangedBy(renewal, 4));
}

}  // namespace
