// Whatever the quick check of an archive accepts, the thorough one accepts as well, and only
// objects that nobody but their owner knows are taken for a tree.

#include <gtest/gtest.h>

#include <chrono>

#include "document/DocumentClasses.h"
#include "model/OLNode.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Array.h"
#include "tests/archive/ArchiveTesting.h"

namespace tavlin {
namespace {

using testing_archives::archive;
using testing_archives::classRecord;
using testing_archives::faultOf;
using testing_archives::instance;
using testing_archives::P;
using testing_archives::references;

std::shared_ptr<ns::KeyedArchive> opened(const ns::Data& data) {
  return ns::KeyedArchive::open(data, documentClasses());
}

const P kNode = classRecord({"OLNode", "NSObject"});
const P kArray = classRecord({"NSMutableArray", "NSArray", "NSObject"});
const P kDictionary = classRecord({"NSMutableDictionary", "NSDictionary", "NSObject"});

TEST(TreeArchiveScan, AReferenceThatLeadsNowhereIsRefused) {
  const P unknown = classRecord({"Thing", "NSObject"});
  const ns::Data data = archive({"$null", instance(2, {{"field", P::uid(77)}}), unknown});
  EXPECT_EQ(faultOf([&] { (void)opened(data); }), "keyed archive: reference to object 77 of 3");
}

TEST(TreeArchiveScan, EntryZeroIsLookedAtWhenItIsReferredTo) {
  const P broken = P::raw("\x7F");
  const ns::Data data = archive({broken, instance(2, {{"data", P::uid(0)}}), kNode});
  EXPECT_NE(faultOf([&] { (void)opened(data); }), "no fault");
}

TEST(TreeArchiveScan, ListsOfChildrenThatValuesReferToAreNoTree) {
  // 1 root, 2 its list, 3 its data, 4 item, 5 key, 6 array in the data
  const auto file = [](uint64_t inData, const P& six) {
    return archive(
        {"$null", instance(7, {{"children", P::uid(2)}, {"data", P::uid(3)}}),
         instance(8, {{"NS.objects", references({4})}}),
         instance(9, {{"NS.keys", references({5})}, {"NS.objects", references({inData})}}),
         instance(7, {{"parent", P::uid(1)}}), "key", six, kNode, kArray, kDictionary});
  };
  const P plain = instance(8, {{"NS.objects", references({5})}});
  EXPECT_TRUE(opened(file(6, plain))->isTree());
  const P holder = instance(8, {{"NS.objects", references({2})}});
  for (const ns::Data& data : {file(2, plain), file(6, holder)}) {
    const auto document = opened(data);
    EXPECT_FALSE(document->isTree());
    const auto root =
        ns::KeyedUnarchiver::unarchiveObject(document, document->root()).objectAs<OLNode>();
    ns::Array list = root->dataForKey("key").array();
    if (list[0].isArray()) list = list[0].array();
    EXPECT_EQ(list[0].objectAs<OLNode>(), root->childAtIndex(0));
  }
}

// Number 0 is null, whatever stands there.
TEST(TreeArchiveScan, NullIsNoItem) {
  for (const P& zero : {P("$null"), instance(3, {{"children", P::uid(2)}})}) {
    const ns::Data data = archive({zero, instance(3, {{"children", P::uid(2)}}),
                                   instance(4, {{"NS.objects", references({0})}}), kNode, kArray});
    const auto read = [&] {
      const auto document = opened(data);
      EXPECT_FALSE(document->isTree());
      (void)ns::KeyedUnarchiver::unarchiveObject(document, document->root());
    };
    EXPECT_EQ(
        faultOf(read),
        "keyed archive: object 1: OLNode: element 0 of \"children\" is none and not an object of "
        "the document");
  }
}

TEST(TreeArchiveScan, NullIsNoText) {
  const P text = classRecord({"NSAttributedString", "NSObject"});
  const ns::Data data =
      archive({"$null", instance(5, {{"data", P::uid(2)}}),
               instance(6, {{"NS.keys", references({3})}, {"NS.objects", references({4})}}),
               "title", instance(7, {{"NSString", P::uid(0)}, {"NSAttributes", P::uid(2)}}), kNode,
               kDictionary, text});
  EXPECT_EQ(faultOf([&] { (void)opened(data); }),
            "keyed archive: object 4: an attributed string without text");
}

TEST(TreeArchiveScan, AListBesideTheListOfChildrenIsNoTree) {
  const ns::Data data =
      archive({"$null", instance(4, {{"children", P::uid(2)}}),
               instance(5, {{"other", references({3})}, {"NS.objects", references({})}}),
               instance(4, {{"parent", P::uid(1)}}), kNode, kArray});
  EXPECT_FALSE(opened(data)->isTree());
}

TEST(TreeArchiveScan, AReferenceToItsClassOfItsOwnForEveryItem) {
  const auto file = [](size_t count) {
    std::vector<P> entries{"$null", instance(3, {{"children", P::uid(2)}})};
    std::vector<uint64_t> items;
    for (size_t i = 0; i < count; ++i) items.push_back(5 + i);
    entries.push_back(instance(4, {{"NS.objects", references(items)}}));
    entries.push_back(kNode);
    entries.push_back(kArray);
    const P parentKey = "parent";
    const P classKey = "$class";
    for (size_t i = 0; i < count; ++i) {
      entries.push_back(P::dictionary({{parentKey, P::uid(1)}, {classKey, P::uid(3)}}));
    }
    return archive(entries);
  };
  // a quadratic search would take minutes
  const auto document = opened(file(200000));
  EXPECT_TRUE(document->isTree());
  EXPECT_FALSE(document->findings().memberForm.shape);  // the root has other keys
}

}  // namespace
}  // namespace tavlin
