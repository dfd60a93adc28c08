#include <map>
#include <stdexcept>

#include "platform/foundation/Log.h"
#include "tests/model/undo/UndoTesting.h"

// Edits in the middle of which something raises: the tree, an observer of what is posted, the
// delegate, the undo manager, a label format.  Each has to leave the tree as it was and nothing
// recorded, also within an undo, which can then be tried again.

namespace tavlin {
namespace {

using testing::Item;
using testing::Outline;

using Controller = OLTreeUndoController;

struct Fault : std::runtime_error {
  Fault() : std::runtime_error("refused") {}
};

/// A document with somebody who looks at it, who raises when asked to.
class Scene {
 public:
  static constexpr char kStart[] = "A(A1 A2 A3) B C(C1)";

  explicit Scene(const char* start = kStart) : outline(start) {
    own.center.addObserver(this, OLNodeDidChangeChildrenCountNotification, nullptr,
                           [this](const auto& notification) {
                             auto* node = dynamic_cast<OLNode*>(notification.object);
                             if (node != x.get()) seen_[node] = node->children();
                             if (whenPosted) whenPosted();
                             call();
                           });
    document->whenAsked = [this] { call(); };
    logHandler_ = ns::setLogHandler([this](std::string_view text) { logged += text; });
  }
  ~Scene() {
    own.center.removeObserver(this);
    ns::setLogHandler(logHandler_);
  }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  const Item& operator[](const char* name) const { return name[0] == 'X' ? x : outline[name]; }
  [[nodiscard]] std::string tree() const { return testing::printChildren(*outline.root); }
  ns::UndoManager& manager() { return *document->manager; }

  /// Has the call of that number raise, and with `forGood` all that follow; 0 for none.
  void failAt(size_t number, bool forGood = false) {
    callsLeft_ = number;
    isForGood_ = forGood;
  }
  /// Whether something raised.
  template <class Action>
  bool fails(size_t number, Action action) {
    failAt(number);
    bool isRaised = false;
    try {
      action();
    } catch (const Fault&) {
      isRaised = true;
    }
    failAt(0);
    return isRaised;
  }

  /// The lists, the parent links, and what the observer has seen of the lists.
  [[nodiscard]] std::string state() const {
    std::string out = tree();
    for (const char* name : {"A", "A1", "A2", "A3", "B", "C", "C1", "X"}) {
      out += ' ' + testing::nameOf((*this)[name]->parent());
    }
    for (const auto& [node, children] : seen_) {
      if (children != node->children()) {
        out += " unseen: " + node->dataForKey("title").string().utf8();
      }
    }
    return out;
  }

  testing::OwnCenter own;
  const Outline outline;
  const Item x = testing::named("X");
  const std::shared_ptr<testing::UndoDocument> document = std::make_shared<testing::UndoDocument>();
  const std::shared_ptr<Controller> controller =
      Controller::initWithDataSourceRootItem(document, outline.root);
  std::function<void()> whenPosted;
  std::string logged;

 private:
  void call() {
    if (callsLeft_ == 0) return;
    if (callsLeft_ > 1) {
      --callsLeft_;
      return;
    }
    if (!isForGood_) callsLeft_ = 0;
    throw Fault();
  }

  std::map<OLNode*, OLNodeList> seen_;
  size_t callsLeft_ = 0;
  bool isForGood_ = false;
  ns::LogHandler logHandler_;
};

struct Edit {
  const char* name;
  void (*apply)(Controller&, const Scene&);
};

/// Every operation that changes the structure.
constexpr Edit kEdits[] = {
    {"addItemWithSelected:", [](Controller& c, const Scene& s) { c.addItemWithSelected(s["A2"]); }},
    {"addItemWithSelected: none", [](Controller& c, const Scene&) { c.addItemWithSelected({}); }},
    {"insertSiblingWithSelected:",
     [](Controller& c, const Scene& s) { c.insertSiblingWithSelected(s["A2"]); }},
    {"insertChildToItem:atIndex:",
     [](Controller& c, const Scene& s) { c.insertChildToItemAtIndex(s["A"], 1); }},
    {"addChild:toItem:", [](Controller& c, const Scene& s) { c.addChildToItem(s["X"], s["A"]); }},
    {"addChild:toItem: of another parent",
     [](Controller& c, const Scene& s) { c.addChildToItem(s["A2"], s["B"]); }},
    {"addChild:toItem: once more",
     [](Controller& c, const Scene& s) { c.addChildToItem(s["A2"], s["A"]); }},
    {"insertItem:selected:",
     [](Controller& c, const Scene& s) { c.insertItemSelected(s["A1"], s["C1"]); }},
    {"insertItems:selected:",
     [](Controller& c, const Scene& s) {
       c.insertItemsSelected({s["A3"], s["X"], s["C1"], s["A1"]}, s["B"]);
     }},
    {"insertItem:toParent:atIndex:",
     [](Controller& c, const Scene& s) { c.insertItemToParentAtIndex(s["A1"], s["B"], 0); }},
    {"insertItems:toParent:atIndexes:",
     [](Controller& c, const Scene& s) {
       c.insertItemsToParentAtIndexes({s["A3"], s["X"], s["C1"]}, s["A"], {0, 2, 3});
     }},
    {"deleteItem:", [](Controller& c, const Scene& s) { c.deleteItem(s["A2"]); }},
    {"deleteItems:",
     [](Controller& c, const Scene& s) {
       c.deleteItems({s["A3"], s["A1"]});
     }},
    {"deleteItems: of several parents",
     [](Controller& c, const Scene& s) {
       c.deleteItems({s["C1"], s["A3"], s["A"], s["A1"]});
     }},
    {"makeItemChild:", [](Controller& c, const Scene& s) { c.makeItemChild(s["B"]); }},
    {"makeItemChildWithNoSelection...",
     [](Controller& c, const Scene& s) { c.makeItemChildWithNoSelectionAtUndoRedo(s["A2"]); }},
    {"makeItemParent:", [](Controller& c, const Scene& s) { c.makeItemParent(s["A2"]); }},
    {"makeItemParent:withUndoRegister:",
     [](Controller& c, const Scene& s) { c.makeItemParentWithUndoRegister(s["A2"], true); }},
    {"moveItem:toParent:atIndex:",
     [](Controller& c, const Scene& s) { c.moveItemToParentAtIndex(s["A1"], s["B"], 0); }},
    {"moveItem:toParent:atIndex: from outside",
     [](Controller& c, const Scene& s) { c.moveItemToParentAtIndex(s["X"], s["A"], 1); }},
    {"moveItems:ofParent:atIndexes:",
     [](Controller& c, const Scene& s) {
       c.moveItemsOfParentAtIndexes({s["A3"], s["A1"]}, s["A"], {0, 1});
     }},
    {"deleteItemWithNoSelection...",
     [](Controller& c, const Scene& s) {
       c.deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(s["A2"]);
     }},
    {"deleteItemsWithNoSelection...",
     [](Controller& c, const Scene& s) {
       c.deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo({s["A3"], s["A1"]});
     }},
    {"insertItemWithNoSelection...toItem:atIndex:",
     [](Controller& c, const Scene& s) {
       c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex(s["A1"], s["B"], 0);
     }},
    {"insertItemsWithNoSelection...toItem:atIndexes:",
     [](Controller& c, const Scene& s) {
       c.insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes({s["A1"], s["X"]},
                                                                           s["B"], {0, 1});
     }},
    {"insertItemWithNoSelection...beforeItem:",
     [](Controller& c, const Scene& s) {
       c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoBeforeItem(s["A1"], s["C1"]);
     }},
    {"insertItemWithNoSelection...toParent:atIndex:",
     [](Controller& c, const Scene& s) {
       c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToParentAtIndex(s["A1"], s["B"], 0);
     }},
    {"addChildWithNoSelection...toItem:",
     [](Controller& c, const Scene& s) {
       c.addChildWithNoSelectionAtDeleteCausedByUndoRedoToItem(s["X"], s["B"]);
     }},
};

TEST(UndoFaults, WhoeverRaisesWhenTheTreeIsAsItWasAndNothingIsRecorded) {
  for (const Edit& edit : kEdits) {
    bool isDone = false;
    for (size_t number = 1; !isDone; ++number) {
      SCOPED_TRACE(std::string(edit.name) + " call " + std::to_string(number));
      Scene scene;
      const std::string before = scene.state();
      isDone = !scene.fails(number, [&] { edit.apply(*scene.controller, scene); });
      EXPECT_EQ(scene.logged, "");
      if (isDone) {
        EXPECT_NE(scene.state(), before);
        EXPECT_GT(number, 1U) << "nothing was called";
      } else {
        EXPECT_EQ(scene.state(), before);
        EXPECT_FALSE(scene.manager().canUndo());
      }
    }
  }
}

/// Undoes and redoes an edit, each a second time when it fails.  Answers the trees after both, and
/// in `isAnyFailure` whether the call of that number was made.
std::string undoneAndRedone(const Edit& edit, size_t number, bool& isAnyFailure) {
  Scene scene;
  edit.apply(*scene.controller, scene);
  scene.manager().endEvent();
  isAnyFailure = false;
  // Of several actions those before the one that fails are done.
  if (scene.manager().actionsToUndo().size() != 1) return "";
  const auto perform = [&](void (ns::UndoManager::*direction)()) {
    const std::string before = scene.state();
    const std::string stacks = scene.manager().description();
    const auto run = [&] { (scene.manager().*direction)(); };
    if (scene.fails(number, run)) {
      isAnyFailure = true;
      EXPECT_EQ(scene.state(), before);
      EXPECT_EQ(scene.manager().description(), stacks);
      run();
    }
    return scene.state();
  };
  std::string trees = perform(&ns::UndoManager::undo);
  return trees + " / " + perform(&ns::UndoManager::redo);
}

TEST(UndoFaults, AnUndoOrRedoThatFailsCanBeTriedAgain) {
  size_t failures = 0;
  for (const Edit& edit : kEdits) {
    bool isAnyFailure = false;
    const std::string trees = undoneAndRedone(edit, 0, isAnyFailure);
    size_t number = 0;
    do {
      SCOPED_TRACE(std::string(edit.name) + " call " + std::to_string(++number));
      EXPECT_EQ(undoneAndRedone(edit, number, isAnyFailure), trees);
      if (isAnyFailure) ++failures;
    } while (isAnyFailure);
  }
  EXPECT_GT(failures, 50U);
}

TEST(UndoFaults, WhereTheUndoManagerRefusesNothingIsDone) {
  for (const Edit& edit : kEdits) {
    SCOPED_TRACE(edit.name);
    Scene scene;
    scene.manager().setGroupsByEvent(false);
    const std::string before = scene.state();
    if (std::string_view(edit.name) == "makeItemParent:") continue;  // records nothing
    EXPECT_THROW(edit.apply(*scene.controller, scene), ns::UndoException);
    EXPECT_EQ(scene.state(), before);
  }
}

TEST(UndoFaults, APlaceThatIsPastTheEndLosesNothing) {
  Scene scene("A(B C E)");
  const auto insert = [&](OLTreeController& controller) {
    EXPECT_EQ(testing::raisedAs<ns::RangeException>([&] {
                controller.insertItemsSelected({scene["B"], scene["C"]}, scene["E"]);
              }),
              "OLNode insertChildren:atIndex: index 2 is past the end of 1 children");
    EXPECT_EQ(scene.tree(), "A(B C E)");
    EXPECT_THROW(
        controller.insertItemsToParentAtIndexes({scene["C"], scene["B"]}, scene["A"], {0, 3}),
        ns::RangeException);
    EXPECT_EQ(scene.tree(), "A(B C E)");
    EXPECT_EQ(scene["B"]->parent(), scene["A"]);
  };
  insert(*scene.controller);
  EXPECT_FALSE(scene.manager().canUndo());
  insert(*OLTreeController::initWithRootItem(scene.outline.root));
  insert(*OLTreeRuntimeAttributesController::initWithRootItem(scene.outline.root));
  const testing::OwnCenter nobody;
  insert(*scene.controller);
  insert(*OLTreeController::initWithRootItem(scene.outline.root));
}

TEST(UndoFaults, EveryEntryOfAnItemComesBack) {
  for (const bool isObserved : {true, false}) {
    Scene scene("A(B C D) E");
    scene["A"]->insertChildAtIndex(scene["C"], 0);
    scene["A"]->addChild(scene["C"]);
    ASSERT_EQ(scene.tree(), "A(C B C D C) E");
    ns::NotificationCenter nobody;
    std::optional<ns::NotificationCenter::ScopedDefault> scope;
    if (!isObserved) scope.emplace(nobody);
    EXPECT_THROW(
        scene.controller->insertItemsToParentAtIndexes({scene["C"], scene["E"]}, nullptr, {0, 9}),
        ns::RangeException);
    EXPECT_EQ(scene.tree(), "A(C B C D C) E");
  }
}

TEST(UndoFaults, LinksToAParentThatDoesNotListTheItemComeBack) {
  for (const bool isObserved : {true, false}) {
    Scene scene("A(B) E");
    scene["X"]->setParent(scene["A"]);
    ns::NotificationCenter nobody;
    std::optional<ns::NotificationCenter::ScopedDefault> scope;
    if (!isObserved) scope.emplace(nobody);
    EXPECT_THROW(
        scene.controller->insertItemsToParentAtIndexes({scene["X"], scene["B"]}, nullptr, {0, 9}),
        ns::RangeException);
    EXPECT_EQ(scene.tree(), "A(B) E");
    EXPECT_EQ(scene["X"]->parent(), scene["A"]);
    scene["X"]->setParent(nullptr);
  }
}

// Values and flags.

TEST(UndoFaults, ValuesAndFlagsAreAsTheyWere) {
  Scene scene;
  const Item& a = scene["A"];
  Controller& c = *scene.controller;
  c.buildRuntimeCheckState();
  const ns::Value before(a->data().value());
  scene.manager().setGroupsByEvent(false);
  EXPECT_THROW(c.setObjectValueForKeyByItem("other", "title", a), ns::UndoException);
  EXPECT_THROW(c.setObjectValueForKeyByItem("new", "note", a), ns::UndoException);
  EXPECT_THROW(c.setObjectValueForKeyByItem(nullptr, "title", a), ns::UndoException);
  EXPECT_THROW(c.setObjectValueForKeyByItem(true, "checkStatus", a), ns::UndoException);
  EXPECT_EQ(ns::Value(a->data().value()), before);
  EXPECT_EQ(testing::flags(scene["A1"]), "...") << "refreshed once more";
  EXPECT_THROW(c.setExpandedByItem(true, a), ns::UndoException);
  EXPECT_THROW(c.setExpandWithOutlineStyleByItem(true, a), ns::UndoException);
  EXPECT_FALSE(a->isExpanded());
  EXPECT_FALSE(a->isOutlineStyle());
  a->setData(std::nullopt);
  EXPECT_THROW(c.setObjectValueForKeyByItem("new", "note", a), ns::UndoException);
  EXPECT_FALSE(a->data().has_value());
}

TEST(UndoFaults, AValueThatCannotBeTakenBackStaysAndCanBeTriedAgain) {
  Scene scene;
  scene.controller->setObjectValueForKeyByItem("new", "note", scene["B"]);
  scene.manager().endEvent();
  EXPECT_TRUE(scene.fails(1, [&] { scene.manager().undo(); })) << "the delegate raises";
  EXPECT_EQ(scene["B"]->dataForKey("note"), "new");
  scene.manager().undo();
  EXPECT_TRUE(scene["B"]->dataForKey("note").isNone());
  scene.manager().redo();
  EXPECT_EQ(scene["B"]->dataForKey("note"), "new");
}

// What is derived.

class RaisingFormat : public testing::PlainFormat {
 public:
  explicit RaisingFormat(const bool& isRaising) : isRaising_(isRaising) {}
  [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override {
    return std::make_shared<RaisingFormat>(*this);
  }
  [[nodiscard]] ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
      const ns::Value& parentNumberLabel, uint64_t itemIndex, int64_t itemLevel) const override {
    if (isRaising_ && itemIndex > 0) throw Fault();
    return PlainFormat::numberLabelWithParentNumberLabelItemIndexItemLevel(parentNumberLabel,
                                                                           itemIndex, itemLevel);
  }

 private:
  const bool& isRaising_;
};

TEST(UndoFaults, AFormatThatRaisesTakesTheEditBackAndIsReportedOnce) {
  size_t failures = 0;
  for (const Edit& edit : kEdits) {
    SCOPED_TRACE(edit.name);
    Scene scene;
    bool isRaising = false;
    scene.controller->setNumberLabelFormat(std::make_shared<RaisingFormat>(isRaising));
    scene.controller->buildRuntimeNumberLabel();
    isRaising = true;
    const std::string before = scene.state();
    try {
      edit.apply(*scene.controller, scene);
    } catch (const Fault&) {
      ++failures;
      EXPECT_EQ(scene.state(), before);
      EXPECT_FALSE(scene.manager().canUndo());
      EXPECT_EQ(scene.logged, "a refresh failed after an edit was taken back: refused");
    }
  }
  EXPECT_GT(failures, 20U);
}

TEST(UndoFaults, LabelsAndFlagsFollowTheTreeThatCameBack) {
  Scene scene("A(A1+ A2 A3) B C(C1)");
  scene.controller->setNumberLabelFormat(std::make_shared<testing::PlainFormat>());
  scene.controller->buildRuntimeCheckState();
  scene.controller->buildRuntimeNumberLabel();
  const auto shown = [&] {
    return scene.outline.print(
        [](const Item& item) { return testing::flags(item) + testing::label(item); });
  };
  const std::string before = shown();
  for (size_t number = 1; number <= 3; ++number) {
    // Two deletions that are refreshed, then the insertion fails.
    EXPECT_TRUE(scene.fails(number, [&] {
      scene.controller->moveItemsOfParentAtIndexes({scene["A3"], scene["A1"]}, scene["A"], {0, 1});
    }));
    EXPECT_EQ(shown(), before) << number;
  }
}

// Observers.

TEST(UndoFaults, ObserversThatKeepRaisingAreLogged) {
  Scene scene;
  const std::string before = scene.state();
  scene.failAt(2, true);
  EXPECT_THROW(scene.controller->moveItemToParentAtIndex(scene["A1"], scene["B"], 0), Fault);
  scene.failAt(0);
  EXPECT_EQ(scene.state(), before) << "also what they have seen";
  const std::string line = "an observer failed while an edit was taken back: refused";
  EXPECT_EQ(scene.logged, line + line) << "for B and for A";
}

TEST(UndoFaults, WhatAnObserverEditedMeanwhileIsTakenBackToo) {
  Scene scene;
  const std::string before = scene.state();
  scene.controller->addItemWithSelected(scene["B"]);
  scene.controller->deleteItem(scene.outline.root->childAtIndex(2));
  scene.manager().endEvent();
  const std::string stacks = scene.manager().description();
  int posts = 0;
  scene.whenPosted = [&] {
    if (++posts == 1) scene.controller->moveItemToParentAtIndex(scene["C1"], scene["B"], 0);
    if (posts == 4) throw Fault();
  };
  EXPECT_THROW(scene.controller->moveItemToParentAtIndex(scene["A1"], scene["C"], 0), Fault);
  scene.whenPosted = nullptr;
  EXPECT_EQ(scene.state(), before);
  EXPECT_EQ(scene.manager().description(), stacks);
}

TEST(UndoFaults, AnObserverMayGetOverAnEditOfItsOwnThatFails) {
  Scene scene;
  bool isFirst = true;
  scene.whenPosted = [&] {
    if (!std::exchange(isFirst, false)) return;
    EXPECT_THROW(scene.controller->insertItemsToParentAtIndexes({scene["C1"], scene["A2"]},
                                                                scene["B"], {0, 9}),
                 ns::RangeException);
  };
  scene.controller->moveItemToParentAtIndex(scene["A1"], scene["C"], 0);
  EXPECT_EQ(scene.tree(), "A(A2 A3) B C(A1 C1)");
  EXPECT_EQ(testing::print(scene.manager().actionsToUndo()),
            "moveItem:toParent:atIndex:needSelection:(A1, A, 0, true)");
  scene.manager().undo();
  EXPECT_EQ(scene.tree(), Scene::kStart);
}

TEST(UndoFaults, WhatAnObserverPlacedElsewhereStaysThere) {
  Scene scene;
  bool isFirst = true;
  scene.whenPosted = [&] {
    if (!std::exchange(isFirst, false)) return;
    scene["C"]->addChild(scene["A1"]);
    throw Fault();
  };
  EXPECT_THROW(scene.controller->deleteItem(scene["A1"]), Fault);
  EXPECT_EQ(scene.tree(), "A(A2 A3) B C(C1 A1)");
  EXPECT_EQ(scene["A1"]->parent(), scene["C"]);
}

TEST(UndoFaults, WhatOthersRecordedMeanwhileStays) {
  struct Other : ns::Object {
    void nothing() {}
  };
  const auto other = std::make_shared<Other>();
  Scene scene;
  scene.whenPosted = [&] {
    scene.manager().prepareWithInvocationTarget(other, "other").call(&Other::nothing);
  };
  EXPECT_TRUE(scene.fails(1, [&] { scene.controller->deleteItem(scene["A1"]); }));
  EXPECT_EQ(scene.manager().description(), "\"\" [other other] |")
      << "one from the deletion, one from taking it back";
}

TEST(UndoFaults, TakingBackManyItemsIsLinear) {
  const testing::OwnCenter nobody;
  constexpr size_t kCount = 100000;
  const auto controller = OLTreeController::create();
  const Item root = controller->tree()->rootItem();
  OLNodeList all;
  while (all.size() < kCount) all.push_back(OLNode::create());
  controller->insertItemsToParentAtIndexes(all, nullptr, ns::IndexSet::withRange({0, kCount}));
  OLNodeList items;
  for (size_t i = kCount; i-- > 0;) {
    if (i % 2 == 0) items.push_back(all[i]);
  }
  EXPECT_THROW(controller->insertItemsSelected(items, all.back()), ns::RangeException);
  EXPECT_EQ(root->children(), all);
  const Item other = OLNode::create();
  all.push_back(other);
  controller->addChildToItem(other, nullptr);
  EXPECT_EQ(root->children(), all);
}

}  // namespace
}  // namespace tavlin
