#include "model/runtime/CheckStatePass.h"

#include "model/undo/OLTreeUndoController.h"
#include "tests/model/runtime/RuntimeTesting.h"

// The one walk that refreshes all check flags stores what the three passes store that it stands
// for, and stands for them only where nobody would notice.

namespace tavlin {
namespace {

using testing::check;
using testing::flags;
using testing::hide;
using testing::Item;
using testing::Outline;
using testing::Random;

const ns::Value kStatus = "checkStatus";
const ns::Value kShow = "showCheckState";

// Of a derived class, so it goes the long way.
class ThreePasses : public OLTreeRuntimeAttributesController {
 public:
  explicit ThreePasses(const std::shared_ptr<OLTree>& tree) { setTree(tree); }
};

// Items that are not always placed as they should be, some with flags already.
struct Graph {
  explicit Graph(Random& random) {
    for (size_t count = 2 + random.below(14); items.size() < count;) {
      Item item = OLNode::create();
      if (!items.empty()) items[random.below(items.size())]->addChild(item);
      if (random.below(3) == 0) check(item, random.below(2) == 0);
      if (random.below(3) == 0) hide(item, random.below(2) == 0);
      for (const char* key :
           {SNRuntimeAttributeCheckedDescendant, SNRuntimeAttributeCheckedAllChildren,
            SNRuntimeAttributeCheckedAncestor}) {
        if (random.below(4) == 0) item->setRuntimeAttributeValueForKey(random.below(2) == 0, key);
        if (random.below(16) == 0) item->setRuntimeAttributeValueForKey("not a boolean", key);
      }
      items.push_back(item);
    }
    tree = OLTree::initWithRootItem(items[0]);
  }
  ~Graph() {
    for (const Item& item : items) item->setChildren(OLNodeList());
  }
  Graph(const Graph&) = delete;
  Graph& operator=(const Graph&) = delete;

  [[nodiscard]] std::vector<ns::Dictionary> attributes() const {
    std::vector<ns::Dictionary> all;
    for (const Item& item : items) all.push_back(item->runtimeAttributes());
    return all;
  }
  void setAttributes(const std::vector<ns::Dictionary>& all) {
    for (size_t i = 0; i < items.size(); ++i) items[i]->setRuntimeAttributes(all[i]);
  }

  OLNodeList items;  // the root first
  std::shared_ptr<OLTree> tree;
};

void expectTheSame(Graph& graph, const Item& top, const std::string& what) {
  const auto before = graph.attributes();
  CheckStatePass pass(*graph.tree, kStatus, kShow);
  // where an item is found twice the walk may take it for a circle
  if (!pass.run(top)) return;
  const auto once = graph.attributes();
  graph.setAttributes(before);
  ThreePasses(graph.tree).buildRuntimeCheckStateByItem(top);
  EXPECT_EQ(once, graph.attributes()) << what;
}

TEST(CheckStatePass, StoresWhatThreePassesStore) {
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    Random random(seed);
    Graph graph(random);
    expectTheSame(graph, graph.items[random.below(graph.items.size())],
                  "seed " + std::to_string(seed));
  }
}

TEST(CheckStatePass, StoresTheSameWhereLinksLeadElsewhere) {
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    Random random(seed);
    Graph graph(random);
    const auto any = [&] { return graph.items[random.below(graph.items.size())]; };
    for (int i = 0; i < 3; ++i) {
      const Item item = any();
      if (random.below(2) == 0) item->setParent(random.below(4) == 0 ? nullptr : any());
    }
    expectTheSame(graph, any(), "seed " + std::to_string(seed));
  }
}

TEST(CheckStatePass, StoresTheSameWhereItemsAreListedTwice) {
  size_t compared = 0;
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    Random random(seed);
    Graph graph(random);
    // only items made later, so that there is no circle
    const size_t at = random.below(graph.items.size());
    const size_t below = at + random.below(graph.items.size() - at);
    if (at != below) graph.items[at]->addChild(graph.items[below]);
    CheckStatePass pass(*graph.tree, kStatus, kShow);
    const auto before = graph.attributes();
    compared += pass.run(graph.items[0]) ? 1U : 0U;
    graph.setAttributes(before);
    expectTheSame(graph, graph.items[0], "seed " + std::to_string(seed));
  }
  EXPECT_GT(compared, 1000U);
}

TEST(CheckStatePass, SaysNoToACircle) {
  const Outline outline("A(B(C D) E)");
  const auto tree = OLTree::initWithRootItem(outline.root);
  outline["C"]->addChild(outline["A"]);
  EXPECT_FALSE(CheckStatePass(*tree, kStatus, kShow).run(outline["A"]));
  outline["C"]->setChildren(OLNodeList());
  EXPECT_TRUE(CheckStatePass(*tree, kStatus, kShow).run(outline["A"]));
}

// Three passes that count what they update.
template <class Base>
class Counting : public Base {
 public:
  explicit Counting(const Item& root) { this->setTree(OLTree::initWithRootItem(root)); }
  void updateCheckStateOfAncestorsByItem(const Item& item) override {
    ++updates;
    Base::updateCheckStateOfAncestorsByItem(item);
  }
  size_t updates = 0;
};

template <class Base>
void expectUpdatesOfDerivedClass() {
  const Outline outline("A(B+ C)");
  Counting<Base> controller(outline.root);
  controller.buildRuntimeCheckState();
  EXPECT_EQ(controller.updates, 3U);
  EXPECT_EQ(outline.print(flags), "Ad.. B... C...");
}

TEST(CheckStatePass, IsNotForClassesThatMayHaveRulesOfTheirOwn) {
  expectUpdatesOfDerivedClass<OLTreeRuntimeAttributesController>();
  expectUpdatesOfDerivedClass<OLTreeUndoController>();
}

TEST(CheckStatePass, IsForTheClassesOfTheLibrary) {
  class Asking : public OLTreeUndoController {
   public:
    using OLTreeUndoController::mayReplaceCheckStates;
  };
  const Outline outline("A(B+ C)");
  for (const auto& controller : {OLTreeRuntimeAttributesController::initWithRootItem(outline.root),
                                 std::static_pointer_cast<OLTreeRuntimeAttributesController>(
                                     OLTreeUndoController::initWithRootItem(outline.root))}) {
    for (const char* name : {"A", "B", "C"}) outline[name]->setRuntimeAttributes({});
    controller->buildRuntimeCheckState();
    EXPECT_EQ(outline.print(flags), "Ad.. B... C...");
  }
  EXPECT_TRUE(Asking().mayReplaceCheckStates());
}

}  // namespace
}  // namespace tavlin
