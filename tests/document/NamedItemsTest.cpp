// Items that the data of items names: they are the same objects as those of the tree, and those
// that only data names are kept with the document.

#include <algorithm>
#include <atomic>
#include <set>

#include "document/DocumentClasses.h"
#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Array.h"
#include "tests/archive/ArchiveTesting.h"
#include "tests/archive/FileGraph.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::Random;
using testing_archives::classRecord;
using testing_archives::fileGraph;
using testing_archives::instance;
using testing_archives::P;
using testing_archives::references;

constexpr uint64_t kNull = 0;

/// The file of a document, entry after entry.
class FileMaker {
 public:
  FileMaker() : entries_{"$null", "", ""} {
    controllerClass_ = add(classRecord({"OLTreeController", "NSObject"}));
    treeClass_ = add(classRecord({"OLTree", "NSObject"}));
    nodeClass_ = add(classRecord({"OLNode", "NSObject"}));
    listClass_ = add(classRecord({"NSMutableArray", "NSArray", "NSObject"}));
    arrayClass_ = add(classRecord({"NSArray", "NSObject"}));
    dictionaryClass_ = add(classRecord({"NSMutableDictionary", "NSDictionary", "NSObject"}));
    setClass_ = add(classRecord({"NSSet", "NSObject"}));
    thingClass_ = add(classRecord({"Thing", "NSObject"}));
    textClass_ = add(classRecord({"NSAttributedString", "NSObject"}));
    entries_[1] = instance(controllerClass_, {{"tree", P::uid(2)}});
  }

  uint64_t add(const P& entry) {
    entries_.push_back(entry);
    return entries_.size() - 1;
  }
  /// A number for something that comes later.
  uint64_t reserve() { return add("$null"); }
  uint64_t text(const std::string& text) { return add(P::string(text)); }
  uint64_t listOf(const P& elements) {
    return add(instance(listClass_, {{"NS.objects", elements}}));
  }
  uint64_t list(const std::vector<uint64_t>& numbers) { return listOf(references(numbers)); }
  void setArray(uint64_t number, const std::vector<uint64_t>& numbers) {
    entries_[number] = instance(arrayClass_, {{"NS.objects", references(numbers)}});
  }
  uint64_t array(const std::vector<uint64_t>& numbers) {
    const uint64_t number = reserve();
    setArray(number, numbers);
    return number;
  }
  uint64_t set(const std::vector<uint64_t>& numbers) {
    return add(instance(setClass_, {{"NS.objects", references(numbers)}}));
  }
  uint64_t thing(uint64_t one, uint64_t other) {
    return add(instance(
        thingClass_, {{"one", P::uid(one)}, {"map", P::dictionary({{"other", P::uid(other)}})}}));
  }
  uint64_t dictionary(const std::vector<std::pair<std::string, uint64_t>>& pairs) {
    std::vector<uint64_t> keys;
    std::vector<uint64_t> values;
    for (const auto& [key, value] : pairs) {
      keys.push_back(text(key));
      values.push_back(value);
    }
    return add(instance(dictionaryClass_,
                        {{"NS.keys", references(keys)}, {"NS.objects", references(values)}}));
  }
  /// Rich text with an attribute that is no text's.
  uint64_t richText(uint64_t value) {
    const uint64_t attributes = dictionary({{"mark", value}});
    return add(instance(
        textClass_, {{"NSString", P::uid(text("rich"))}, {"NSAttributes", P::uid(attributes)}}));
  }
  void setNode(uint64_t number, uint64_t parent, uint64_t children, uint64_t data) {
    entries_[number] = instance(nodeClass_, {{"parent", P::uid(parent)},
                                             {"children", P::uid(children)},
                                             {"data", P::uid(data)},
                                             {"expanded", P::boolean(false)},
                                             {"outlineStyle", P::boolean(false)},
                                             {"encoding_version", 2}});
  }
  uint64_t node(uint64_t parent, uint64_t children, uint64_t data) {
    const uint64_t number = reserve();
    setNode(number, parent, children, data);
    return number;
  }
  ns::Data file(uint64_t root, testing_archives::Fields top = {}) {
    entries_[2] = instance(treeClass_, {{"root", P::uid(root)}});
    top.insert(top.begin(), {"root", P::uid(1)});
    return P::dictionary({{"$version", 100000},
                          {"$archiver", "NSKeyedArchiver"},
                          {"$top", P::dictionary(top)},
                          {"$objects", P::array(entries_)}})
        .binary();
  }

 private:
  std::vector<P> entries_;
  uint64_t controllerClass_, treeClass_, nodeClass_, listClass_, arrayClass_, dictionaryClass_,
      setClass_, thingClass_, textClass_;
};

/// A loaded document.  At its end, opens the circles of items whose data was read and names them.
class Loaded {
 public:
  explicit Loaded(const ns::Data& file) : document_(OLDataManager::create()) {
    EXPECT_TRUE(document_->loadDataRepresentationOfType(file));
  }
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;
  ~Loaded() {
    for (const Item& item : read_) item->setData(std::nullopt);
    // what changes the root's data reads it
    root()->setData(std::nullopt);
  }

  [[nodiscard]] Item root() const { return document_->rootItem(); }
  [[nodiscard]] OLDataManager& document() const { return *document_; }
  [[nodiscard]] ns::Data saved() const { return *document_->dataRepresentation(); }
  /// The data of an item, read.
  ns::Dictionary data(const Item& item) {
    read_.push_back(item);
    return item->data().value_or(ns::Dictionary());
  }
  Item named(const Item& by, const char* key) {
    return data(by).objectForKey(ns::Value(key)).objectAs<OLNode>();
  }
  /// Reads the data of all items, those that only data names included.
  OLNodeList readAll() {
    OLNodeList met{root()};
    const auto meet = [&](const Item& item) {
      if (std::ranges::find(met, item) == met.end()) met.push_back(item);
    };
    std::vector<ns::Value> values;
    for (size_t i = 0; i < met.size(); ++i) {
      for (const Item& child : met[i]->children()) meet(child);
      values.emplace_back(data(met[i]));
      std::set<const ns::ValueBody*> seen;
      while (!values.empty()) {
        const ns::Value value = values.back();
        values.pop_back();
        if (value.kind() == ns::Kind::object) meet(value.objectAs<OLNode>());
        if (!seen.insert(value.body().get()).second) continue;
        if (value.isArray())
          values.insert(values.end(), value.array().begin(), value.array().end());
        if (!value.isDictionary()) continue;
        for (const auto& entry : value.dictionary()) values.push_back(entry.second);
      }
    }
    return met;
  }

 private:
  std::shared_ptr<OLDataManager> document_;
  OLNodeList read_;
};

/// root lists n, whose data names p, which lists n, too.
ns::Data outsideParent(bool linksParent = true) {
  FileMaker maker;
  const uint64_t root = maker.reserve();
  const uint64_t n = maker.reserve();
  const uint64_t p = maker.reserve();
  maker.setNode(root, kNull, maker.list({n}), maker.dictionary({}));
  maker.setNode(n, linksParent ? p : root, maker.list({}), maker.dictionary({{"p", p}}));
  maker.setNode(p, kNull, maker.list({n}), maker.dictionary({{"title", maker.text("P")}}));
  return maker.file(root);
}

TEST(NamedItems, AnItemWhoseParentOnlyDataNamesHasIt) {
  Loaded loaded(outsideParent());
  const Item n = loaded.root()->childAtIndex(0);
  ASSERT_TRUE(n->parent());
  EXPECT_EQ(n->parent()->dataForKey("title"), ns::Value("P"));
  const Item p = loaded.named(n, "p");
  EXPECT_EQ(n->parent(), p);
  EXPECT_EQ(p->childAtIndex(0), n);
}

TEST(NamedItems, AnItemThatDataAndAListNameIsOne) {
  for (const bool linksParent : {false, true}) {
    const ns::Data file = outsideParent(linksParent);
    EXPECT_EQ(fileGraph(Loaded(file).saved()), fileGraph(file));
    Loaded loaded(file);
    loaded.readAll();
    EXPECT_EQ(fileGraph(loaded.saved()), fileGraph(file));
  }
}

// Such an item was not archived for its own sake: it comes and goes without a trace.
TEST(NamedItems, AnItemThatOnlyParentLinksNameIsNone) {
  FileMaker maker;
  const uint64_t root = maker.reserve();
  const uint64_t a = maker.reserve();
  const uint64_t b = maker.reserve();
  const uint64_t stray = maker.reserve();
  maker.setNode(root, kNull, maker.list({a, b}), maker.dictionary({}));
  maker.setNode(a, stray, maker.list({}), maker.dictionary({}));
  maker.setNode(b, root, maker.list({}), maker.dictionary({}));
  maker.setNode(stray, kNull, maker.list({a, b}), maker.dictionary({}));
  const Loaded loaded(maker.file(root));
  EXPECT_FALSE(loaded.root()->childAtIndex(0)->parent());
  EXPECT_EQ(loaded.root()->childAtIndex(1)->parent(), loaded.root());
}

TEST(NamedItems, AnEditStaysWhenTheItemLeavesTheTree) {
  FileMaker maker;
  const uint64_t root = maker.reserve();
  const uint64_t x = maker.reserve();
  const uint64_t y = maker.reserve();
  maker.setNode(root, kNull, maker.list({x, y}), maker.dictionary({}));
  maker.setNode(x, root, maker.list({}), maker.dictionary({{"title", maker.text("old")}}));
  maker.setNode(y, root, maker.list({}), maker.dictionary({{"x", x}}));
  Loaded loaded(maker.file(root));
  loaded.root()->childAtIndex(0)->setDataForKey("new", "title");
  loaded.root()->removeChildAtIndex(0);
  Loaded again(loaded.saved());
  EXPECT_EQ(again.named(again.root()->childAtIndex(0), "x")->dataForKey("title"), ns::Value("new"));
  EXPECT_EQ(loaded.named(loaded.root()->childAtIndex(0), "x")->dataForKey("title"),
            ns::Value("new"));
}

// Of a record that nobody interprets, of a set, and of rich text.
TEST(NamedItems, WhatValuesNameThatStayInTheArchiveIsKept) {
  for (const int kind : {0, 1, 2, 3}) {
    FileMaker maker;
    const uint64_t root = maker.reserve();
    const uint64_t n = maker.reserve();
    const uint64_t p = maker.reserve();
    const uint64_t holder = kind == 0   ? maker.set({p})
                            : kind == 1 ? maker.thing(p, kNull)
                            : kind == 2 ? maker.thing(kNull, p)
                                        : maker.richText(p);
    maker.setNode(root, kNull, maker.list({n}), maker.dictionary({}));
    maker.setNode(n, p, maker.list({}), maker.dictionary({{"title", holder}}));
    maker.setNode(p, kNull, maker.list({n}), maker.dictionary({}));
    const ns::Data file = maker.file(root);
    Loaded loaded(file);
    const Item item = loaded.root()->childAtIndex(0);
    ASSERT_TRUE(item->parent()) << kind;
    EXPECT_EQ(item->parent()->childAtIndex(0), item) << kind;
    loaded.readAll();
    EXPECT_TRUE(item->parent()) << kind;
    EXPECT_EQ(fileGraph(loaded.saved()), fileGraph(file)) << kind;
  }
}

TEST(NamedItems, DataMayNameItsOwnItemAndOneAbove) {
  FileMaker maker;
  const uint64_t root = maker.reserve();
  const uint64_t n = maker.reserve();
  maker.setNode(root, kNull, maker.list({n}), maker.dictionary({}));
  maker.setNode(n, root, maker.list({}), maker.dictionary({{"own", n}, {"above", root}}));
  const ns::Data file = maker.file(root);
  Loaded loaded(file);
  const Item item = loaded.root()->childAtIndex(0);
  EXPECT_EQ(loaded.named(item, "own"), item);
  EXPECT_EQ(loaded.named(item, "above"), loaded.root());
}

TEST(NamedItems, WhatTheTopNamesIsTheItemOfTheTree) {
  FileMaker maker;
  const uint64_t root = maker.reserve();
  const uint64_t n = maker.reserve();
  const uint64_t p = maker.reserve();
  maker.setNode(root, kNull, maker.list({n}), maker.dictionary({}));
  maker.setNode(n, p, maker.list({}), maker.dictionary({}));
  maker.setNode(p, kNull, maker.list({n}), maker.dictionary({}));
  const ns::Data file = maker.file(root, {{"other", P::uid(p)}, {"more", P::array({P::uid(n)})}});
  Loaded loaded(file);
  EXPECT_TRUE(loaded.root()->childAtIndex(0)->parent());
  EXPECT_EQ(fileGraph(loaded.saved()), fileGraph(file));
}

// Lists as short as can be, which items share.
TEST(NamedItems, ListsOfChildrenThatItemsShareStayOne) {
  for (size_t length = 0; length < 10; ++length) {
    FileMaker maker;
    const uint64_t root = maker.reserve();
    const uint64_t a = maker.reserve();
    const uint64_t b = maker.reserve();
    std::vector<uint64_t> children;
    for (size_t i = 0; i < length; ++i) {
      children.push_back(maker.node(a, maker.list({}), maker.dictionary({})));
    }
    const uint64_t shared = maker.list(children);
    maker.setNode(root, kNull, maker.list({a, b}), maker.dictionary({}));
    maker.setNode(a, root, shared, maker.dictionary({}));
    maker.setNode(b, root, shared, maker.dictionary({}));
    const ns::Data file = maker.file(root);
    const Loaded loaded(file);
    EXPECT_EQ(fileGraph(loaded.saved()), fileGraph(file)) << length;
    // sharing is how they are stored, and no more
    loaded.root()->childAtIndex(0)->addChild(testing::named("new"));
    EXPECT_EQ(loaded.root()->childAtIndex(1)->countChildren(), length);
  }
}

// Two lists in a file that stores what is in them once are two.
TEST(NamedItems, ListsWithTheSameElementsStayTwo) {
  FileMaker maker;
  const uint64_t root = maker.reserve();
  const uint64_t a = maker.reserve();
  const uint64_t b = maker.reserve();
  std::vector<uint64_t> children;
  for (size_t i = 0; i < 9; ++i) {
    children.push_back(maker.node(a, maker.list({}), maker.dictionary({})));
  }
  const P elements = references(children);
  maker.setNode(root, kNull, maker.list({a, b}), maker.dictionary({}));
  maker.setNode(a, root, maker.listOf(elements), maker.dictionary({}));
  maker.setNode(b, root, maker.listOf(elements), maker.dictionary({}));
  const ns::Data file = maker.file(root);
  EXPECT_EQ(fileGraph(Loaded(file).saved()), fileGraph(file));
}

// So many items, each with data that names one of its own that no list has.
ns::Data manyOutside(size_t count) {
  FileMaker maker;
  const uint64_t root = maker.reserve();
  std::vector<uint64_t> items;
  for (size_t i = 0; i < count; ++i) {
    const uint64_t outside =
        maker.node(kNull, maker.list({}), maker.dictionary({{"title", maker.text("outside")}}));
    items.push_back(maker.node(root, maker.list({}), maker.dictionary({{"other", outside}})));
  }
  maker.setNode(root, kNull, maker.list(items), maker.dictionary({}));
  return maker.file(root);
}

/// How many nodes were made so far.
std::atomic<size_t> madeNodes = 0;

const ns::ClassRegistry& countingClasses() {
  static const ns::ClassRegistry classes = [] {
    ns::ClassRegistry registry = documentClasses();
    ns::ClassCoding node = *registry.find("OLNode");
    node.create = [](ns::Arena& arena) -> std::shared_ptr<ns::Object> {
      ++madeNodes;
      return arena.make<OLNode>();
    };
    registry.add("OLNode", node);
    return registry;
  }();
  return classes;
}

TEST(NamedItems, ReadingTheirDataMakesEachOnce) {
  for (const size_t count : {20U, 2000U, 4000U}) {
    const auto archive = ns::KeyedArchive::open(manyOutside(count), countingClasses());
    madeNodes = 0;
    const auto controller =
        ns::KeyedUnarchiver::unarchiveObject(archive, archive->root()).objectAs<OLTreeController>();
    const auto root = controller->tree()->rootNode();
    for (const Item& item : root->children()) {
      const ns::Value other = item->data()->objectForKey(ns::Value("other"));
      EXPECT_EQ(other.objectAs<OLNode>()->dataForKey("title"), ns::Value("outside"));
    }
    EXPECT_EQ(madeNodes, 2 * count + 1) << count;
  }
}

// Where nobody keeps them, each is made for itself, with what belongs to it.
TEST(NamedItems, ReadingTheDataOfItemsWithoutADocumentIsLinear) {
  constexpr size_t kCount = 2000;
  const auto archive = ns::KeyedArchive::open(manyOutside(kCount), countingClasses());
  const auto tree = ns::FieldReader(*archive, archive->root()).reference("tree");
  const auto number = ns::FieldReader(*archive, tree).reference("root");
  madeNodes = 0;
  const Item root = ns::KeyedUnarchiver::unarchiveObject(archive, number).objectAs<OLNode>();
  for (const Item& item : root->children()) {
    const ns::Value other = item->data()->objectForKey(ns::Value("other"));
    EXPECT_EQ(other.objectAs<OLNode>()->dataForKey("title"), ns::Value("outside"));
  }
  EXPECT_LE(madeNodes, 3 * kCount + 1);
}

// Random files in which data names items in every way.

class RandomFile {
 public:
  explicit RandomFile(Random& random) : random_(random) {}

  ns::Data made() {
    nodes_.resize(2 + random_.below(12));
    for (uint64_t& node : nodes_) node = maker_.reserve();
    for (size_t i = 0; i < 3; ++i) lateArrays_.push_back(maker_.reserve());
    for (size_t i = 0; i < nodes_.size(); ++i) children_.push_back(childrenOf(i));
    for (size_t i = 0; i < nodes_.size(); ++i) {
      // what is changed has to be the root's alone
      maker_.setNode(nodes_[i], random_.chance(2) ? parentOf(i) : anyNode(), children_[i].second,
                     i == 0 ? newData() : data());
    }
    for (const uint64_t array : lateArrays_) maker_.setArray(array, {value(0), anyNode(), array});
    return maker_.file(nodes_[0]);
  }

 private:
  uint64_t anyNode() { return random_.chance(8) ? kNull : nodes_[random_.below(nodes_.size())]; }

  // The children come after their parent, so that none is its own descendant.
  std::pair<std::vector<size_t>, uint64_t> childrenOf(size_t node) {
    if (random_.chance(8)) return {{}, kNull};
    if (!children_.empty() && random_.chance(4)) {
      const auto shared = children_[random_.below(children_.size())];
      if (std::ranges::all_of(shared.first, [&](size_t child) { return child > node; })) {
        return shared;
      }
    }
    std::vector<size_t> places;
    std::vector<uint64_t> numbers;
    for (size_t i = random_.below(5); i > 0 && node + 1 < nodes_.size(); --i) {
      places.push_back(node + 1 + random_.below(nodes_.size() - node - 1));
      numbers.push_back(nodes_[places.back()]);
    }
    return {places, random_.chance(4) ? maker_.array(numbers) : maker_.list(numbers)};
  }

  uint64_t parentOf(size_t node) {
    for (size_t i = 0; i < node; ++i) {
      if (std::ranges::find(children_[i].first, node) != children_[i].first.end()) return nodes_[i];
    }
    return kNull;
  }

  uint64_t value(int depth) {
    if (!values_.empty() && random_.chance(4)) return values_[random_.below(values_.size())];
    const uint64_t made = newValue(depth);
    values_.push_back(made);
    return made;
  }

  uint64_t newValue(int depth) {
    const size_t kinds = depth < 3 ? 10 : 4;
    switch (random_.below(kinds)) {
      case 0:
        return maker_.text("text");
      case 1:
        return lateArrays_[random_.below(lateArrays_.size())];
      case 2:
      case 3:
        return anyNode();
      case 4:
        return maker_.array({value(depth + 1), value(depth + 1)});
      case 5:
        return maker_.dictionary({{"one", value(depth + 1)}, {"two", value(depth + 1)}});
      case 6:
        return maker_.set({value(depth + 1), value(depth + 1)});
      case 7:
        return maker_.thing(value(depth + 1), value(depth + 1));
      case 8:
        return maker_.richText(anyNode());
      default:
        return maker_.list({anyNode()});
    }
  }

  uint64_t data() {
    if (random_.chance(8)) return kNull;
    if (!data_.empty() && random_.chance(5)) return data_[random_.below(data_.size())];
    data_.push_back(newData());
    return data_.back();
  }

  uint64_t newData() {
    std::vector<std::pair<std::string, uint64_t>> pairs{{"title", maker_.text("item")}};
    for (size_t i = random_.below(4); i > 0; --i) {
      pairs.emplace_back("k" + std::to_string(i), value(0));
    }
    return maker_.dictionary(pairs);
  }

  Random& random_;
  FileMaker maker_;
  std::vector<uint64_t> nodes_;
  std::vector<std::pair<std::vector<size_t>, uint64_t>> children_;
  std::vector<uint64_t> lateArrays_;  // in circles
  std::vector<uint64_t> values_;
  std::vector<uint64_t> data_;
};

TEST(NamedItems, RandomFilesComeBackAsTheSameGraph) {
  Random random(181);
  for (int round = 0; round < 400; ++round) {
    const ns::Data file = RandomFile(random).made();
    const std::string graph = fileGraph(file);
    const ns::Data copied = Loaded(file).saved();
    ASSERT_EQ(fileGraph(copied), graph) << round;
    EXPECT_LE(testing_archives::unusedEntries(copied), testing_archives::unusedEntries(file))
        << round;
    ASSERT_EQ(fileGraph(Loaded(copied).saved()), graph) << round;
    Loaded read(file);
    read.readAll();
    ASSERT_EQ(fileGraph(read.saved()), graph) << round;
    Loaded changed(file);
    changed.document().setObjectValueForKey(ns::Value("some"), "fresh key");
    Loaded back(changed.saved());
    back.document().setObjectValueForKey(ns::Value(), "fresh key");
    ASSERT_EQ(fileGraph(back.saved()), graph) << round;
  }
}

}  // namespace
}  // namespace tavlin
