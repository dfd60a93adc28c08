// Deep and large archives, and those that are small but would expand without bound.

#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "ArchiveTesting.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace {

using ns::Value;
using testing_archives::archive;
using testing_archives::classRecord;
using testing_archives::faultOf;
using testing_archives::instance;
using testing_archives::Item;
using testing_archives::opened;
using testing_archives::P;
using testing_archives::readBack;
using testing_archives::references;

constexpr uint64_t kMegabyte = uint64_t{1} << 20;
const std::vector<std::string> kArray{"NSArray", "NSObject"};

/// Fails when what follows takes more memory than a limit, at its highest.
class MemoryLimit {
 public:
  explicit MemoryLimit(uint64_t most) : most_(most), before_(testing_archives::peakMemory()) {}
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;
  ~MemoryLimit() { EXPECT_LT(testing_archives::peakMemory() - before_, most_); }

 private:
  const uint64_t most_;
  const uint64_t before_;
};

ns::Data written(const Value& root) { return ns::KeyedArchiver::archivedDataWithRootObject(root); }

TEST(ArchiveLimits, ObjectsNestAsDeepAsTheyLike) {
  constexpr int kDepth = 200000;
  const auto root = Item::make("root");
  auto deepest = root;
  for (int i = 0; i < kDepth; ++i) {
    const auto next = std::make_shared<Item>();
    next->size = i;
    deepest->add(next);
    deepest = next;
  }
  const ns::Data data = written(Value(root));
  const auto read = readBack(data).objectAs<Item>();
  const Item* at = read.get();
  int depth = 0;
  for (; !at->children.empty(); at = at->children[0].get()) ++depth;
  EXPECT_EQ(depth, kDepth);
  EXPECT_EQ(at->size, kDepth - 1);
}

TEST(ArchiveLimits, ContainersNestAsDeepAsTheyLike) {
  constexpr int kDepth = 200000;
  Value value = "innermost";
  for (int i = 0; i < kDepth; ++i) {
    value = i % 2 == 0 ? Value(ns::Array{value}) : Value(ns::Dictionary{{"k", value}});
  }
  const ns::Data data = written(value);
  const Value read = readBack(data);
  EXPECT_EQ(read, value);
  // all of it made anew but the innermost part
  EXPECT_EQ(written(ns::Array{read}).length() / 1000, data.length() / 1000);
}

TEST(ArchiveLimits, RecordsNestAsDeepAsTheyLike) {
  constexpr uint64_t kDepth = 200000;
  std::vector<P> entries{"$null"};
  for (uint64_t i = 1; i <= kDepth; ++i) {
    entries.push_back(instance(kDepth + 1, {{"next", P::uid(i == kDepth ? 0 : i + 1)}}));
  }
  entries.push_back(classRecord({"Thing", "NSObject"}));
  const Value read = readBack(archive(std::move(entries)));
  const ns::Data copy = written(read);
  EXPECT_EQ(written(readBack(copy)), copy);
}

TEST(ArchiveLimits, ListsSharedByManyRecordsAreTaken) {
  // 50,000 things with one list of 30 between them
  constexpr uint64_t kCount = 50000;
  std::vector<uint64_t> all;
  std::vector<P> entries{"$null", "", classRecord(kArray), classRecord({"Thing", "NSObject"})};
  const P shared = references(std::vector<uint64_t>(30, 0));
  for (uint64_t i = 0; i < kCount; ++i) {
    all.push_back(entries.size());
    entries.push_back(instance(3, {{"n", static_cast<int64_t>(i)}, {"list", shared}}));
  }
  entries[1] = instance(2, {{"NS.objects", references(all)}});
  const ns::Data data = archive(std::move(entries));
  const ns::Data copy = written(readBack(data));
  EXPECT_LT(copy.length(), data.length());
  EXPECT_EQ(readBack(copy).array().count(), kCount);
}

TEST(ArchiveLimits, ListsSharedByTooManyRecordsAreRefused) {
  constexpr uint64_t kCount = 3000;
  std::vector<uint64_t> all;
  std::vector<P> entries{"$null", "", classRecord(kArray)};
  const P shared = references(std::vector<uint64_t>(30000, 0));
  for (uint64_t i = 0; i < kCount; ++i) {
    all.push_back(entries.size());
    entries.push_back(instance(2, {{"NS.objects", shared}}));
  }
  entries[1] = instance(2, {{"NS.objects", references(all)}});
  EXPECT_EQ(faultOf([&] { (void)opened(archive(entries)); }),
            "keyed archive: shared containers expand to far more than the file holds");
}

TEST(ArchiveLimits, ContainersInsideRecordsDoNotExpandWithoutBound) {
  P bomb = P::array({1});
  for (int i = 0; i < 100; ++i) bomb = P::array({bomb, bomb});
  EXPECT_EQ(faultOf([&] {
              (void)opened(archive(
                  {"$null", instance(2, {{"NSName", bomb}}), classRecord({"Thing", "NSObject"})}));
            }),
            "keyed archive: shared containers expand to far more than the file holds");
}

TEST(ArchiveLimits, SharedArraysOfEntriesStaySmall) {
  // thirty levels of arrays that mention the next one twice: 2^30 ways, 31 arrays
  std::vector<P> entries{"$null", "", classRecord(kArray)};
  for (uint64_t i = 0; i < 30; ++i) {
    entries.push_back(instance(2, {{"NS.objects", references({i + 4, i + 4})}}));
  }
  entries.push_back("x");
  entries[1] = instance(2, {{"NS.objects", references({3, 3})}});
  const Value read = readBack(archive(std::move(entries)));
  EXPECT_EQ(read.array()[0].body(), read.array()[1].body());
  EXPECT_LT(written(read).length(), 3000U);
}

TEST(ArchiveLimits, ALongTextMentionedOftenTakesItsMemoryOnce) {
  const MemoryLimit limit(700 * kMegabyte);
  constexpr uint64_t kCount = 20000;
  const P text = P::string(std::string(kMegabyte, 'x'));
  const P wide = P::wide(std::u16string(kMegabyte, u'ü'));
  const P data = P::data(std::string(kMegabyte, 'x'));
  std::vector<uint64_t> all;
  std::vector<P> entries{"$null", "", classRecord(kArray),
                         classRecord({"NSMutableString", "NSString", "NSObject"}),
                         classRecord({"Thing", "NSObject"})};
  for (uint64_t i = 0; i < kCount; ++i) {
    all.push_back(entries.size());
    switch (i % 5) {
      case 0:
        entries.push_back(text);
        break;
      case 1:
        entries.push_back(wide);
        break;
      case 2:
        entries.push_back(data);
        break;
      case 3:
        entries.push_back(instance(3, {{"NS.string", text}}));
        break;
      default:
        entries.push_back(instance(4, {{"text", wide}, {"data", data}}));
    }
  }
  entries[1] = instance(2, {{"NS.objects", references(all)}});
  const ns::Data file = archive(std::move(entries));
  const Value read = readBack(file);
  ASSERT_EQ(read.array().count(), kCount);
  for (const Value& each : read.array()) {
    if (each.kind() == ns::Kind::record) {
      EXPECT_EQ(ns::Record(each).valueForKey("data").data().length(), kMegabyte);
    }
  }
  EXPECT_LT(written(read).length(), file.length() + kMegabyte);
  EXPECT_LT(written(ns::Array{read, 1}).length(), file.length() + kMegabyte);
}

TEST(ArchiveLimits, OverlappingTextsAreRefused) {
  // every sixth byte of a text begins another text that goes on for a megabyte
  std::string text;
  while (text.size() < 2 * kMegabyte) text += std::string("_\x12\0\x10\0\0", 6);
  constexpr uint64_t kCount = 5000;
  std::vector<uint64_t> all;
  for (uint64_t i = 0; i < kCount; ++i) all.push_back(3 + i);
  std::vector<P> entries{"$null", instance(2, {{"NS.objects", references(all)}}),
                         classRecord(kArray)};
  for (uint64_t i = 0; i < kCount; ++i) entries.push_back(P::string("#" + std::to_string(i)));
  std::string file(archive(entries).view());
  // append the text behind the objects and let the strings' offsets lead into it
  const size_t trailer = file.size() - 32;
  const auto number = [&](size_t at) {
    return ns::BinaryPropertyList::load(reinterpret_cast<const uint8_t*>(file.data()) + at, 8);
  };
  const uint64_t table = number(trailer + 24);
  std::string offsets = file.substr(table, trailer - table);
  uint64_t next = 0;
  for (size_t at = 0; at < offsets.size(); at += 4) {
    const uint64_t offset =
        ns::BinaryPropertyList::load(reinterpret_cast<const uint8_t*>(file.data()) + table + at, 4);
    if ((file[offset] & 0xF0) == 0x50 && file[offset + 1] == '#') {
      offsets.replace(at, 4, testing_archives::bigEndian(table + 6 * next++, 4));
    }
  }
  ASSERT_EQ(next, kCount);
  std::string end = file.substr(trailer);
  end.replace(24, 8, testing_archives::bigEndian(table + text.size(), 8));
  const ns::Data evil(file.substr(0, table) + text + offsets + end);
  EXPECT_EQ(faultOf([&] { (void)opened(evil); }),
            "keyed archive: overlapping texts add up to far more than the file holds");
}

TEST(ArchiveLimits, ManyClassesAreFoundQuickly) {
  constexpr uint64_t kCount = 20000;
  std::vector<uint64_t> all;
  std::vector<P> entries{"$null", "", classRecord(kArray)};
  const P same = classRecord({"Same", "NSObject"});
  for (uint64_t i = 0; i < kCount; ++i) {
    all.push_back(entries.size());
    entries.push_back(instance(entries.size() + 1, {{"n", 1}}));
    entries.push_back(i % 2 == 0 ? classRecord({"Class" + std::to_string(i), "NSObject"})
                                 : (i % 3 == 0 ? same : classRecord({"Same", "NSObject"})));
  }
  entries[1] = instance(2, {{"NS.objects", references(all)}});
  const auto start = std::chrono::steady_clock::now();
  const ns::Data copy = written(readBack(archive(std::move(entries))));
  EXPECT_EQ(readBack(copy).array().count(), kCount);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(ArchiveLimits, LongNamesMentionedOftenAreRefused) {
  const P chain = P::array(std::vector<P>(900, P::string(std::string(900, 'x'))));
  constexpr uint64_t kCount = 2000;
  std::vector<uint64_t> all;
  std::vector<P> entries{"$null", "", classRecord(kArray)};
  for (uint64_t i = 0; i < kCount; ++i) {
    all.push_back(entries.size());
    entries.push_back(instance(entries.size() + 1));
    entries.push_back(
        P::dictionary({{"$classname", P::string("C" + std::to_string(i))}, {"$classes", chain}}));
  }
  entries[1] = instance(2, {{"NS.objects", references(all)}});
  EXPECT_EQ(faultOf([&] { (void)opened(archive(entries)); }),
            "keyed archive: names add up to far more than the file holds");
}

TEST(ArchiveLimits, LongNumberedFormsAreReadQuickly) {
  constexpr uint64_t kCount = 50000;
  testing_archives::Fields fields;
  for (uint64_t i = 0; i < kCount; ++i) {
    fields.emplace_back(P::string("NS.object." + std::to_string(i)), P::uid(3));
  }
  const auto start = std::chrono::steady_clock::now();
  const Value read = readBack(archive({"$null", instance(2, fields), classRecord(kArray), "x"}));
  EXPECT_EQ(read.array().count(), kCount);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(ArchiveLimits, BytesOfOneTextMentionedOftenAreOneText) {
  const P bytes = P::data(std::string(500000, 'x'));
  std::vector<uint64_t> all;
  std::vector<P> entries{"$null", "", classRecord(kArray),
                         classRecord({"NSMutableString", "NSString", "NSObject"})};
  for (int i = 0; i < 2000; ++i) {
    all.push_back(entries.size());
    entries.push_back(instance(3, {{"NS.bytes", bytes}}));
  }
  entries[1] = instance(2, {{"NS.objects", references(all)}});
  const ns::Array read = readBack(archive(std::move(entries))).array();
  ASSERT_EQ(read.count(), 2000U);
  for (const Value& each : read) {
    EXPECT_EQ(each.string().ascii().data(), read[0].string().ascii().data());
  }
}

TEST(ArchiveLimits, RecordsAsKeysHaveHashesOfTheirContent) {
  std::vector<P> entries{"$null", "", classRecord(kArray), classRecord({"Thing", "NSObject"})};
  std::vector<uint64_t> all;
  for (int i = 0; i < 1000; ++i) {
    all.push_back(entries.size());
    entries.push_back(instance(3, {{"n", i}, {"text", P::uid(1004)}}));
  }
  entries.push_back("a text");
  // the same as the first, with its fields in another order
  all.push_back(entries.size());
  entries.push_back(instance(3, {{"text", P::uid(1004)}, {"n", 0}}));
  entries[1] = instance(2, {{"NS.objects", references(all)}});
  const ns::Array read = readBack(archive(std::move(entries))).array();
  std::set<size_t> hashes;
  for (const Value& each : read) hashes.insert(each.hash());
  EXPECT_GT(hashes.size(), 990U);
  EXPECT_EQ(read[0], read[1000]);
  EXPECT_EQ(read[0].hash(), read[1000].hash());
  // a record that does not lie in an archive
  const ns::Record made = ns::Record(read[5]).with("n", ns::Field::primitive(6));
  EXPECT_EQ(made.asValue(), read[6]);
  EXPECT_EQ(made.asValue().hash(), read[6].hash());
}

}  // namespace
