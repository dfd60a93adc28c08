// Fields that a document has and this program does not know stay, whichever way it is saved.

#include <gtest/gtest.h>

#include <string>

#include "document/OLDataManager.h"
#include "model/OLNode.h"
#include "tests/archive/ArchiveTesting.h"
#include "tests/archive/FileGraph.h"

namespace tavlin {
namespace {

using testing_archives::archive;
using testing_archives::fileGraph;
using testing_archives::instance;
using testing_archives::P;
using testing_archives::references;

P classWith(const char* name, const std::vector<const char*>& bases, const std::string& marker) {
  P chain = P::array({name});
  for (const char* base : bases) chain.add(base);
  return P::dictionary({{"$classname", name},
                        {"$classes", chain},
                        {"since", P::string("class " + marker)},
                        {"list", P::array({P::string("in " + marker), 7})},
                        {"$classhints", P::array({"NSObject"})}});
}

/// A document of which every record and class has fields of its own, the text `keyword`, and items
/// of some version.
ns::Data document(const char* keyword, int version) {
  const auto field = [](const std::string& of) { return P::string("field of " + of); };
  return archive({
      "$null",
      instance(16, {{"tree", P::uid(2)}, {"window", field("controller")}}),
      instance(17, {{"root", P::uid(3)}, {"age", P::array({field("tree"), P::real(2.5)})}}),
      instance(18, {{"colour", P::uid(15)},
                    {"parent", P::uid(0)},
                    {"children", P::uid(4)},
                    {"data", P::uid(5)},
                    {"expanded", P::boolean(true)},
                    {"outlineStyle", P::boolean(false)},
                    {"encoding_version", version}}),
      instance(19, {{"NS.objects", references({6})}}),
      instance(20, {{"NS.keys", references({7})},
                    {"NS.objects", references({8})},
                    {"sorted", field("data")}}),
      instance(18, {{"parent", P::uid(3)},
                    {"children", P::uid(0)},
                    {"data", P::uid(9)},
                    {"expanded", P::boolean(false)},
                    {"outlineStyle", P::boolean(false)},
                    {"encoding_version", version},
                    {"badge", field("item")}}),
      "documentProperties",
      instance(20, {{"sorted", field("properties")},
                    {"NS.keys", references({12})},
                    {"NS.objects", references({13})}}),
      instance(20, {{"NS.keys", references({10})}, {"NS.objects", references({11})}}),
      "title",
      P::string("an item in " + std::string(5000, 'x')),  // so that little is left over
      "keywords",
      instance(19, {{"NS.objects", references({14})}, {"locked", field("keywords")}}),
      keyword,
      "field of root",
      classWith("OLTreeController", {"NSObject"}, "controller"),
      classWith("OLTree", {"NSObject"}, "tree"),
      classWith("OLNode", {"NSObject"}, "node"),
      classWith("NSMutableArray", {"NSArray", "NSObject"}, "array"),
      classWith("NSMutableDictionary", {"NSDictionary", "NSObject"}, "dictionary"),
  });
}

/// Saves with another keyword, edited where it stands.
ns::Data savedWith(OLDataManager& manager, const char* keyword) {
  ns::Dictionary properties = manager.objectValueForKey("documentProperties").dictionary();
  ns::Array keywords = properties.objectForKey("keywords").array();
  keywords.replace(0, keyword);
  properties.setObjectForKey(ns::Value(keywords), "keywords");
  manager.setObjectValueForKey(ns::Value(properties), "documentProperties");
  return manager.dataRepresentation().value();
}

TEST(OtherFields, StayWhereTheFileIsKept) {
  const ns::Data file = document("before", 2);
  const auto manager = OLDataManager::create();
  ASSERT_TRUE(manager->loadDataRepresentationOfType(file));
  const ns::Data saved = savedWith(*manager, "after");
  EXPECT_EQ(fileGraph(saved), fileGraph(document("after", 2)));
  EXPECT_EQ(saved.view().find("before"), std::string_view::npos);
}

TEST(OtherFields, StayWhereADocumentIsArchivedAnew) {
  // a version below 2 is a reason to
  const auto manager = OLDataManager::create();
  ASSERT_TRUE(manager->loadDataRepresentationOfType(document("before", 1)));
  const ns::Data saved = savedWith(*manager, "after");
  for (const char* of : {"controller", "tree", "root", "data", "item", "properties", "keywords"}) {
    EXPECT_NE(saved.view().find(std::string("field of ") + of), std::string_view::npos) << of;
  }
  for (const char* of : {"controller", "tree", "node", "array", "dictionary"}) {
    EXPECT_NE(saved.view().find(std::string("class ") + of), std::string_view::npos) << of;
    EXPECT_NE(saved.view().find(std::string("in ") + of), std::string_view::npos) << of;
  }
  // and again, from a file of this program's form
  const auto again = OLDataManager::create();
  ASSERT_TRUE(again->loadDataRepresentationOfType(saved));
  EXPECT_EQ(fileGraph(savedWith(*again, "later")).size(), fileGraph(saved).size());
}

TEST(OtherFields, AreOfTheItemThatHadThem) {
  const auto manager = OLDataManager::create();
  ASSERT_TRUE(manager->loadDataRepresentationOfType(document("x", 2)));
  const auto item = manager->rootItem()->childAtIndex(0);
  ASSERT_TRUE(manager->setTitleByItemWithUndo("another", item, false));
  manager->rootItem()->addChild(OLNode::create());
  const ns::Data saved = manager->dataRepresentation().value();
  const std::string graph = fileGraph(saved);
  EXPECT_NE(graph.find("field of item"), std::string::npos);
  EXPECT_EQ(graph.find("field of item"), graph.rfind("field of item"));
}

}  // namespace
}  // namespace tavlin
