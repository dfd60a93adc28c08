// Documents that somebody made to cost time, memory or stack.  Where the work were in proportion to
// the square of anything here, no test would end before it is stopped.

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "inspect/DocumentInspection.h"
#include "platform/propertylist/PropertyListWriter.h"
#include "platform/text/FontSource.h"

namespace {

using ns::PropertyListWriter;
using tavlin::DocumentInspection;
using tavlin::Finding;
using tavlin::FindingCode;

/// Writes archives entry by entry; which numbers entries have is up to the caller.
class ArchiveMaker {
 public:
  using Reference = PropertyListWriter::Reference;
  using Field = std::pair<const char*, Reference>;

  explicit ArchiveMaker(uint32_t count)
      : top_(writer_.dictionary(4)), objects_(writer_.array(count)) {
    set(0, writer_.ascii("$null"));
  }
  PropertyListWriter& writer() { return writer_; }
  Reference uid(uint32_t number) { return writer_.uid(number); }
  void set(uint32_t number, Reference content) { writer_.set(objects_, number, content); }
  void setClass(uint32_t number, const char* name) {
    set(number, map({{"$classname", writer_.ascii(name)}}));
  }
  void setRecord(uint32_t number, uint32_t classNumber, std::vector<Field> fields) {
    fields.emplace_back("$class", uid(classNumber));
    set(number, map(fields));
  }
  Reference list(uint32_t count, const std::function<uint32_t(uint32_t)>& at) {
    const auto made = writer_.array(count);
    for (uint32_t i = 0; i < count; ++i) writer_.set(made, i, uid(at(i)));
    return made.reference;
  }
  ns::Data finish(uint32_t root) {
    const char* const names[] = {"$version", "$archiver", "$top", "$objects"};
    for (size_t i = 0; i < 4; ++i) writer_.set(top_, i, writer_.ascii(names[i]));
    writer_.set(top_, 4, writer_.integer(100000));
    writer_.set(top_, 5, writer_.ascii("NSKeyedArchiver"));
    writer_.set(top_, 6, map({{"root", uid(root)}}));
    writer_.set(top_, 7, objects_.reference);
    return writer_.finish(top_.reference);
  }

 private:
  Reference map(const std::vector<Field>& fields) {
    const auto made = writer_.dictionary(fields.size());
    for (size_t i = 0; i < fields.size(); ++i) {
      writer_.set(made, i, writer_.ascii(fields[i].first));
      writer_.set(made, fields.size() + i, fields[i].second);
    }
    return made.reference;
  }

  PropertyListWriter writer_;
  PropertyListWriter::Container top_;
  PropertyListWriter::Container objects_;
};

// Numbers of the entries that all documents here have.
enum : uint32_t {
  kController = 1,
  kTree,
  kControllerClass,
  kTreeClass,
  kNodeClass,
  kListClass,
  kDictionaryClass,
  kTextClass,
  kFontClass,
  kKey,
  kFirst  // of those that are left
};

/// A document whose root is entry kFirst; `fill` writes that and all others.
ns::Data documentOf(uint32_t count, const std::function<void(ArchiveMaker&)>& fill) {
  ArchiveMaker maker(count);
  maker.setClass(kControllerClass, "OLTreeController");
  maker.setClass(kTreeClass, "OLTree");
  maker.setClass(kNodeClass, "OLNode");
  maker.setClass(kListClass, "NSMutableArray");
  maker.setClass(kDictionaryClass, "NSDictionary");
  maker.setClass(kTextClass, "NSAttributedString");
  maker.setClass(kFontClass, "NSFont");
  maker.set(kKey, maker.writer().ascii("key"));
  maker.setRecord(kController, kControllerClass, {{"tree", maker.uid(kTree)}});
  maker.setRecord(kTree, kTreeClass, {{"root", maker.uid(kFirst)}});
  fill(maker);
  return maker.finish(kController);
}

/// As many levels below the root, each with the parent link that a function answers for the
/// entries of the item and its parent.
ns::Data levels(uint32_t count, const std::function<uint32_t(uint32_t, uint32_t)>& link) {
  return documentOf(kFirst + 2 * (count + 1), [&](ArchiveMaker& maker) {
    for (uint32_t level = 0; level <= count; ++level) {
      const uint32_t item = kFirst + 2 * level;
      const uint32_t parent = level == 0 ? 0 : link(item, item - 2);
      maker.setRecord(item, kNodeClass,
                      {{"parent", maker.uid(parent)}, {"children", maker.uid(item + 1)}});
      const auto children =
          maker.list(level < count ? 1 : 0, [item](uint32_t) { return item + 2; });
      maker.setRecord(item + 1, kListClass, {{"NS.objects", children}});
    }
  });
}

/// A root whose data holds as many values, entries from kFirst + 2 on, under one key each.
void setRootWithValues(ArchiveMaker& maker, uint32_t count,
                       const std::function<uint32_t(uint32_t)>& at) {
  maker.setRecord(kFirst, kNodeClass, {{"data", maker.uid(kFirst + 1)}});
  maker.setRecord(kFirst + 1, kDictionaryClass,
                  {{"NS.keys", maker.list(count, [](uint32_t) { return kKey; })},
                   {"NS.objects", maker.list(count, at)}});
}

uint64_t countOf(const DocumentInspection& inspection, FindingCode code) {
  uint64_t count = 0;
  for (const Finding& each : inspection.findings()) count += each.code == code ? each.count : 0;
  return count;
}

constexpr uint32_t kMillion = 1000000;

TEST(HostileDocuments, AMillionLevels) {
  const auto sound = [](uint32_t, uint32_t parent) { return parent; };
  EXPECT_EQ(DocumentInspection(levels(kMillion, sound)).faultCount(), 0);
}

TEST(HostileDocuments, FindingsOnAMillionLevels) {
  const DocumentInspection inspection(levels(kMillion, [](uint32_t, uint32_t) { return 0; }));
  // their paths would take a terabyte
  size_t pathLength = 0;
  for (const Finding& each : inspection.findings()) pathLength += each.path.size();
  EXPECT_LT(pathLength, 80U << 20);
  EXPECT_EQ(inspection.faultCount(), kMillion);
  EXPECT_EQ(inspection.repairableCount(), kMillion);
  const Finding& last = inspection.findings().back();
  EXPECT_EQ(last.text, std::to_string(last.count) + " more of this kind");
  const auto mended = inspection.repaired();
  ASSERT_TRUE(mended);
  EXPECT_EQ(DocumentInspection(*mended).faultCount(), 0);
}

TEST(HostileDocuments, AMillionLevelsThatEndAtTheirBeginning) {
  const ns::Data file = documentOf(kFirst + 2 * kMillion, [](ArchiveMaker& maker) {
    for (uint32_t level = 0; level < kMillion; ++level) {
      const uint32_t item = kFirst + 2 * level;
      maker.setRecord(item, kNodeClass, {{"children", maker.uid(item + 1)}});
      maker.setRecord(item + 1, kListClass, {{"NS.objects", maker.list(1, [&](uint32_t) {
                                                return level + 1 < kMillion ? item + 2 : kFirst;
                                              })}});
    }
  });
  const DocumentInspection inspection(file);
  EXPECT_EQ(countOf(inspection, FindingCode::archive), 1);
  EXPECT_FALSE(inspection.repaired());
}

TEST(HostileDocuments, OneListOfManyItemsThatManyItemsHave) {
  constexpr uint32_t kCount = 20000;  // items in the list, and items that have it
  const uint32_t owners = kFirst + 2;
  const uint32_t shared = owners + kCount;
  const ns::Data file = documentOf(shared + 1 + kCount, [&](ArchiveMaker& maker) {
    maker.setRecord(kFirst, kNodeClass, {{"children", maker.uid(kFirst + 1)}});
    maker.setRecord(kFirst + 1, kListClass,
                    {{"NS.objects", maker.list(kCount, [&](uint32_t i) { return owners + i; })}});
    for (uint32_t i = 0; i < kCount; ++i) {
      maker.setRecord(owners + i, kNodeClass,
                      {{"parent", maker.uid(kFirst)}, {"children", maker.uid(shared)}});
      maker.setRecord(shared + 1 + i, kNodeClass, {{"parent", maker.uid(owners)}});
    }
    maker.setRecord(
        shared, kListClass,
        {{"NS.objects", maker.list(kCount, [&](uint32_t i) { return shared + 1 + i; })}});
  });
  const DocumentInspection inspection(file);
  EXPECT_EQ(countOf(inspection, FindingCode::listedTwice), (kCount - 1) * uint64_t{kCount});
  EXPECT_LT(inspection.findings().size(), 2 * kMillion);
  EXPECT_EQ(inspection.repairableCount(), 0);
  EXPECT_FALSE(inspection.repaired());
}

/// Texts that share their characters and their run list, but not their attributes, which name a
/// font each.
ns::Data sharedTexts(uint32_t count, const std::string& characters, const std::string& runs,
                     const std::string& font) {
  const uint32_t string = kFirst + 2;
  const uint32_t info = kFirst + 3;
  const uint32_t fontKey = kFirst + 4;
  const uint32_t texts = kFirst + 5;
  constexpr uint32_t kEach = 5;  // text, list, attributes, font, name
  const auto at = [&](uint32_t i) { return texts + kEach * i; };
  return documentOf(at(count), [&](ArchiveMaker& maker) {
    setRootWithValues(maker, count, at);
    maker.set(string, maker.writer().ascii(characters));
    maker.set(info, maker.writer().data(runs));
    maker.set(fontKey, maker.writer().ascii("NSFont"));
    for (uint32_t i = 0; i < count; ++i) {
      const uint32_t text = at(i);
      const auto only = [&](uint32_t number) {
        return maker.list(1, [number](uint32_t) { return number; });
      };
      maker.setRecord(text, kTextClass,
                      {{"NSString", maker.uid(string)},
                       {"NSAttributes", maker.uid(text + 1)},
                       {"NSAttributeInfo", maker.uid(info)}});
      maker.setRecord(text + 1, kListClass, {{"NS.objects", only(text + 2)}});
      maker.setRecord(text + 2, kDictionaryClass,
                      {{"NS.keys", only(fontKey)}, {"NS.objects", only(text + 3)}});
      maker.setRecord(text + 3, kFontClass,
                      {{"NSName", maker.uid(text + 4)}, {"NSSize", maker.writer().real64(0)}});
      maker.set(text + 4, maker.writer().ascii(font + std::to_string(i)));
    }
  });
}

constexpr uint32_t kTexts = 20000;
constexpr uint32_t kLongest = kMillion;

/// A run for each character, in base 128: a length of 1 and attributes 0.
std::string singleRuns(size_t count) {
  std::string runs;
  for (size_t i = 0; i < count; ++i) runs += std::string("\x01\x00", 2);
  return runs;
}

TEST(HostileDocuments, OneTextAndOneRunListOfManyTexts) {
  const std::string text(kLongest, 'x');
  EXPECT_EQ(
      DocumentInspection(sharedTexts(kTexts, text, singleRuns(kLongest), "Font")).faultCount(), 0);
  const DocumentInspection inspection(sharedTexts(kTexts, text, singleRuns(kLongest - 1), "Font"));
  EXPECT_EQ(countOf(inspection, FindingCode::runs), kTexts);
  // to mend the same runs over and over would take time and room without end
  EXPECT_GT(inspection.repairableCount(), 0);
  EXPECT_LT(inspection.repairableCount(), 100);
}

TEST(HostileDocuments, OneTextOfManyTextsInPrivateFonts) {
  const ns::FontList fonts({{"Latin", "Latin", "", ns::CharacterSet::inString("x")}});
  const ns::FontSource::ScopedShared scope(fonts);
  const std::string text(kLongest, 'x');
  const std::string whole("\xC0\x84\x3D\x00", 4);  // a million, and 0
  const DocumentInspection inspection(sharedTexts(kTexts, text, whole, ".Private"));
  EXPECT_EQ(countOf(inspection, FindingCode::font), kTexts);
  EXPECT_GT(inspection.repairableCount(), 0);
  EXPECT_LT(inspection.repairableCount(), 100);
  const auto mended = inspection.repaired();
  ASSERT_TRUE(mended);
  EXPECT_EQ(countOf(DocumentInspection(*mended), FindingCode::font),
            kTexts - inspection.repairableCount());
}

TEST(HostileDocuments, ListsInListsOfAMillionLevels) {
  const ns::Data file = documentOf(kFirst + 2 + kMillion, [](ArchiveMaker& maker) {
    setRootWithValues(maker, 1, [](uint32_t) { return kFirst + 2; });
    for (uint32_t i = 0; i < kMillion; ++i) {
      const uint32_t next = i + 1 < kMillion ? kFirst + 2 + i + 1 : 0;
      maker.setRecord(kFirst + 2 + i, kListClass,
                      {{"NS.objects", maker.list(1, [next](uint32_t) { return next; })}});
    }
  });
  EXPECT_EQ(DocumentInspection(file).faultCount(), 0);
}

}  // namespace
