// Check marks and labels after random edits, undo and redo against those that are built anew.

#include <gtest/gtest.h>

#include <random>

#include "EditTesting.h"
#include "model/runtime/OLNumberLabelFormats.h"

namespace tavlin {
namespace {

/// Marks and labels of all items.
std::string derivedBy(const OLTreeRuntimeAttributesController& controller) {
  std::string text;
  auto walk = OutlineWalk::below(controller.tree()->rootNode());
  for (; walk.item(); walk.next()) {
    text += walk.path() + " " + std::to_string(controller.runtimeCheckStateByItem(walk.item())) +
            " " + std::to_string(walk.item()->runtimeFlag(OLRuntimeFlag::checkedDescendant)) +
            std::to_string(walk.item()->runtimeFlag(OLRuntimeFlag::checkedAllChildren)) +
            std::to_string(walk.item()->runtimeFlag(OLRuntimeFlag::checkedAncestor)) + " " +
            OLTreeRuntimeAttributesController::numberLabelByItem(walk.item()).string().utf8() +
            "\n";
  }
  return text;
}

/// A copy of the items, without what was derived.
std::shared_ptr<OLNode> copyOf(const std::shared_ptr<OLNode>& root) {
  auto top = root->copy();
  top->setChildren(OLNodeList());
  std::vector<std::pair<std::shared_ptr<OLNode>, std::shared_ptr<OLNode>>> todo = {{root, top}};
  while (!todo.empty()) {
    const auto [from, to] = todo.back();
    todo.pop_back();
    for (const auto& child : from->children()) {
      auto copy = child->copy();
      copy->setChildren(OLNodeList());
      to->addChild(copy);
      todo.emplace_back(child, copy);
    }
  }
  return top;
}

std::string derivedAnew(const OLDataManager& document) {
  const auto controller =
      OLTreeRuntimeAttributesController::initWithRootItem(copyOf(document.rootItem()));
  controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
  controller->buildRuntimeCheckState();
  controller->buildRuntimeNumberLabel();
  return derivedBy(*controller);
}

class RandomEdits {
 public:
  explicit RandomEdits(unsigned seed) : random_(seed) {
    for (int i = 0; i < 40; ++i) addOne();
    editor_.undoManager()->removeAllActions();
    editor_.controller()->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
    editor_.controller()->buildRuntimeCheckState();
    editor_.controller()->buildRuntimeNumberLabel();
  }

  /// Does something and answers what, for messages.
  std::string step() {
    switch (below(9)) {
      case 0:
        addOne();
        return "add";
      case 1:
        return attempt("remove", [&] { editor_.remove(some(below(4) == 0 ? 6 : 1)); });
      case 2:
      case 3:
        return attempt("move", [&] { editor_.move(some(1 + below(5)), place()); });
      case 4:
        return attempt("indent", [&] { editor_.indent(some(1 + below(2))); });
      case 5:
        return attempt("outdent", [&] { editor_.outdent(some(1 + below(3))); });
      case 6:
        return attempt("check", [&] {
          const auto item = some(1);
          if (!item.empty()) editor_.set(item.front(), {{}, {}, below(2) == 0});
        });
      case 7:
        if (editor_.undoManager()->canUndo()) editor_.undoManager()->undo();
        return "undo";
      default:
        if (editor_.undoManager()->canRedo()) editor_.undoManager()->redo();
        return "redo";
    }
  }

  DocumentEditor& editor() { return editor_; }
  const OLDataManager& document() { return *editor_.document(); }

 private:
  uint64_t below(uint64_t bound) { return random_() % bound; }

  OLNodeList all() {
    OLNodeList items;
    auto walk = OutlineWalk::below(document().rootItem());
    for (; walk.item(); walk.next()) items.push_back(walk.item());
    return items;
  }

  OLNodeList some(uint64_t count) {
    const OLNodeList items = all();
    OLNodeList chosen;
    for (; !items.empty() && count > 0; --count) chosen.push_back(items[below(items.size())]);
    return chosen;
  }

  ItemPlace place() {
    const OLNodeList item = some(1);
    if (item.empty() || below(8) == 0) return {};
    return {static_cast<ItemPlace::Kind>(1 + below(3)), item.front()};
  }

  void addOne() {
    editor_.undoManager()->beginUndoGrouping();
    const auto item = editor_.add({ns::String("t"), {}, below(3) == 0}, place());
    if (below(4) == 0) {
      editor_.controller()->setObjectValueForKeyByItem(below(3) == 0, "showCheckState", item);
    }
    editor_.undoManager()->endUndoGrouping();
  }

  template <class Edit>
  std::string attempt(const char* name, Edit edit) {
    try {
      edit();
    } catch (const EditRefusal& refusal) {
      return std::string(name) + " refused: " + refusal.what();
    }
    return name;
  }

  std::mt19937 random_;
  DocumentEditor editor_{OLDataManager::create()};
};

TEST(DocumentEditorRandom, MarksAndLabelsAreThoseOfTheWholeTreeBuiltAnew) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    RandomEdits edits(seed);
    std::string done;
    for (int i = 0; i < 60; ++i) {
      done += edits.step() + "\n";
      ASSERT_EQ(derivedBy(*edits.editor().controller()), derivedAnew(edits.document()))
          << "seed " << seed << ":\n"
          << done;
    }
  }
}

TEST(DocumentEditorRandom, UndoGoesBackThroughEveryState) {
  for (unsigned seed = 100; seed < 140; ++seed) {
    RandomEdits edits(seed);
    const auto& manager = *edits.editor().undoManager();
    std::vector<std::string> states = {derivedAnew(edits.document())};
    for (int i = 0; i < 40; ++i) {
      const uint64_t before = edits.editor().changeCount();
      const std::string what = edits.step();
      if (what == "undo" || what == "redo") {
        states = {derivedAnew(edits.document())};
        edits.editor().undoManager()->removeAllActions();
      } else if (edits.editor().changeCount() > before) {
        states.push_back(derivedAnew(edits.document()));
      }
    }
    while (manager.canUndo()) {
      ASSERT_EQ(derivedBy(*edits.editor().controller()), states.back()) << "seed " << seed;
      states.pop_back();
      ASSERT_FALSE(states.empty());
      edits.editor().undoManager()->undo();
    }
  }
}

}  // namespace
}  // namespace tavlin
