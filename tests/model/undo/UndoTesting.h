#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "model/undo/OLTreeUndoController.h"
#include "tests/model/runtime/RuntimeTesting.h"

namespace tavlin::testing {

/// A document: undo manager, delegate and the log of what the delegate was asked.
class UndoDocument : public OLDataSource {
 public:
  std::shared_ptr<ns::UndoManager> manager = std::make_shared<ns::UndoManager>();
  bool hasDelegate = true;
  bool answers = true;
  std::function<void()> whenAsked = [] {};

  [[nodiscard]] std::shared_ptr<ns::UndoManager> undoManager() const override { return manager; }
  [[nodiscard]] std::shared_ptr<OLDataSourceDelegate> delegate() const override {
    return hasDelegate ? delegate_ : nullptr;
  }
  /// The requests since the last call, in order.
  std::string takeAsked() { return std::exchange(log_, {}); }

 private:
  void log(const std::string& request) {
    log_ += (log_.empty() ? "" : " ") + request;
    whenAsked();
  }

  class Delegate : public OLDataSourceDelegate {
   public:
    explicit Delegate(UndoDocument& document) : document_(document) {}
    void selectItemAfterUndoRedo(const Item& item) override {
      document_.log("select(" + nameOf(item) + ")");
    }
    bool selectItemAfterUndoRedoIfExpandedTreeStyleWithLastChild(const Item& parent,
                                                                 const Item& removed) override {
      document_.log("last(" + nameOf(parent) + ", " + nameOf(removed) + ")");
      return document_.answers;
    }
    bool selectItemWithParentAfterUndoRedoIfExpandedTreeStyle(const Item& item,
                                                              const Item& parent) override {
      document_.log("first(" + nameOf(item) + ", " + nameOf(parent) + ")");
      return document_.answers;
    }
    void selectUpperItemInSameColumnAfterUndoRedoWithParent(const Item& removed,
                                                            const Item& parent) override {
      document_.log("upper(" + nameOf(removed) + ", " + nameOf(parent) + ")");
    }

   private:
    UndoDocument& document_;
  };

  std::shared_ptr<Delegate> delegate_ = std::make_shared<Delegate>(*this);
  std::string log_;
};

inline std::string print(const OLNodeList& items) {
  std::string out;
  for (const Item& item : items) out += (out.empty() ? "" : " ") + nameOf(item);
  return "[" + out + "]";
}

inline std::string print(const ns::IndexSet& indexes) {
  std::string out;
  for (const size_t index : indexes.indexes()) {
    out += (out.empty() ? "" : " ") + std::to_string(index);
  }
  return "{" + out + "}";
}

inline std::string print(const ns::Value& value) {
  if (value.isNone()) return "none";
  if (value.kind() == ns::Kind::boolean) return value.boolValue() ? "true" : "false";
  if (value.kind() == ns::Kind::attributedString) {
    return "rich '" + ns::AttributedString(value).string().utf8() + "'";
  }
  return "'" + value.string().utf8() + "'";
}

/// An action with its arguments: "insertItem:toParent:atIndex:(A1, A, 0)".
inline std::string print(const ns::UndoAction& action) {
  std::string out;
  for (size_t i = 0; i < action.argumentCount(); ++i) {
    if (i > 0) out += ", ";
    if (const auto* item = action.argument<Item>(i)) {
      out += nameOf(*item);
    } else if (const auto* items = action.argument<OLNodeList>(i)) {
      out += print(*items);
    } else if (const auto* indexes = action.argument<ns::IndexSet>(i)) {
      out += print(*indexes);
    } else if (const auto* index = action.argument<int64_t>(i)) {
      out += std::to_string(*index);
    } else if (const auto* flag = action.argument<bool>(i)) {
      out += *flag ? "true" : "false";
    } else if (const auto* value = action.argument<ns::Value>(i)) {
      out += print(*value);
    } else {
      out += "an argument of another kind";
    }
  }
  return action.label() + ("(" + out + ")");
}

inline std::string print(const std::vector<const ns::UndoAction*>& actions) {
  std::string out;
  for (const auto* action : actions) out += (out.empty() ? "" : " ") + print(*action);
  return out;
}

/// What one edit does, and what undoing and redoing it does.
struct Row {
  std::function<void(OLTreeUndoController&)> edit;
  std::string after;    ///< the tree
  std::string inverse;  ///< what undo will perform, in that order
  std::string asked;    ///< of the delegate
  std::string inverseOfUndo;
  std::string askedAtUndo;
  std::string askedAtRedo;
  /// Where these are not the tree before and the same inverse again.
  std::string afterUndo = "";
  std::string inverseOfRedo = "";
};

class UndoControllerTest : public ::testing::Test {
 protected:
  static constexpr char kStart[] = "A(A1 A2 A3) B C(C1)";

  [[nodiscard]] std::string tree() const { return printChildren(*outline.root); }
  ns::UndoManager& manager() { return *document->manager; }
  std::string toUndo() { return print(manager().actionsToUndo()); }
  std::string toRedo() { return print(manager().actionsToRedo()); }
  std::string undo() {
    document->takeAsked();
    manager().undo();
    return document->takeAsked();
  }
  std::string redo() {
    document->takeAsked();
    manager().redo();
    return document->takeAsked();
  }
  void expectRow(const Row& row) {
    ASSERT_EQ(tree(), kStart);
    row.edit(*controller);
    manager().endEvent();
    EXPECT_EQ(tree(), row.after);
    EXPECT_EQ(toUndo(), row.inverse);
    EXPECT_EQ(document->takeAsked(), row.asked);
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(undo(), row.askedAtUndo) << "round " << round;
      EXPECT_EQ(tree(), row.afterUndo.empty() ? kStart : row.afterUndo);
      EXPECT_EQ(toRedo(), row.inverseOfUndo);
      EXPECT_EQ(redo(), row.askedAtRedo) << "round " << round;
      EXPECT_EQ(tree(), row.after);
      EXPECT_EQ(toUndo(), row.inverseOfRedo.empty() ? row.inverse : row.inverseOfRedo);
    }
  }

  const OwnCenter own{};
  const Outline outline{kStart};
  const Item x = named("X");
  const Item y = named("Y");
  const std::shared_ptr<UndoDocument> document = std::make_shared<UndoDocument>();
  std::shared_ptr<OLTreeUndoController> controller =
      OLTreeUndoController::initWithDataSourceRootItem(document, outline.root);
};

}  // namespace tavlin::testing
