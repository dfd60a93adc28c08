#pragma once

#include <cctype>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "model/runtime/OLTreeRuntimeAttributesController.h"
#include "tests/model/ModelTesting.h"

namespace tavlin::testing {

inline void check(const Item& item, bool isChecked = true) {
  item->setDataForKey(isChecked, "checkStatus");
}
inline void hide(const Item& item, bool isHidden = true) {
  item->setDataForKey(!isHidden, "showCheckState");
}

/// Items written as "A(A1 A2+) B-(B1)": their names, "+" for checked, "-" for hidden, children in
/// brackets.  Names are letters and digits, each once.
class Outline {
 public:
  explicit Outline(const std::string& text) {
    std::vector<Item> parents{root};
    Item last;
    for (size_t i = 0; i < text.size();) {
      const char mark = text[i];
      if (std::isalnum(static_cast<unsigned char>(mark))) {
        std::string name;
        while (i < text.size() && std::isalnum(static_cast<unsigned char>(text[i]))) {
          name += text[i++];
        }
        last = named(name.c_str());
        EXPECT_TRUE(items_.emplace(name, last).second) << name;
        parents.back()->addChild(last);
        continue;
      }
      if (mark == '+') check(last);
      if (mark == '-') hide(last);
      if (mark == '(') parents.push_back(last);
      if (mark == ')') parents.pop_back();
      ++i;
    }
    EXPECT_EQ(parents.size(), 1U) << text;
  }

  const Item& operator[](const char* name) const { return items_.at(name); }

  /// For each item in document order its name and what `describe` says of it, joined by blanks.
  template <class Describe>
  [[nodiscard]] std::string print(Describe describe) const {
    const auto tree = OLTree::initWithRootItem(root);
    std::string out;
    for (Item item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
      if (!out.empty()) out += ' ';
      out += nameOf(item) + describe(item);
    }
    return out;
  }

  const Item root = named("R");

 private:
  std::map<std::string, Item> items_;
};

inline bool flag(const Item& item, const char* key) {
  return item->runtimeAttributeValueForKey(key).boolValue();
}

/// The three flags as "dca": checked descendant, all children checked, checked ancestor; "." for
/// each that is false.
inline std::string flags(const Item& item) {
  std::string out = "...";
  if (flag(item, SNRuntimeAttributeCheckedDescendant)) out[0] = 'd';
  if (flag(item, SNRuntimeAttributeCheckedAllChildren)) out[1] = 'c';
  if (flag(item, SNRuntimeAttributeCheckedAncestor)) out[2] = 'a';
  return out;
}

/// The stored label; "-" for none.
inline std::string label(const Item& item) {
  const ns::Value value = OLTreeRuntimeAttributesController::numberLabelByItem(item);
  return value.isNone() ? "-" : value.string().utf8();
}

/// Labels that show all three inputs: "parent's label/index@level".
class PlainFormat : public OLNumberLabelFormat {
 public:
  [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override {
    return std::make_shared<PlainFormat>(*this);
  }
  [[nodiscard]] ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
      const ns::Value& parentNumberLabel, uint64_t itemIndex, int64_t itemLevel) const override {
    const std::string text = parentNumberLabel.string().utf8() + "/" + std::to_string(itemIndex) +
                             "@" + std::to_string(itemLevel);
    return text.c_str();
  }
};

/// Records the refresh operations that are called from outside, not those that they call in turn,
/// as "name(item)".  A window of depth 1 records what those call, and so on.
class RecordingController : public OLTreeRuntimeAttributesController {
 public:
  explicit RecordingController(const Item& root) { setTree(OLTree::initWithRootItem(root)); }

  /// What was called since the last call, joined by blanks.
  std::string take() { return std::exchange(log_, {}); }
  void recordDepth(int depth) { depth_ = depth; }

  void buildRuntimeCheckStateByItem(const Item& item) override {
    const Call call(*this, "all", item);
    OLTreeRuntimeAttributesController::buildRuntimeCheckStateByItem(item);
  }
  void buildRuntimeCheckStateCausedByItem(const Item& item) override {
    const Call call(*this, "caused", item);
    OLTreeRuntimeAttributesController::buildRuntimeCheckStateCausedByItem(item);
  }
  void buildCheckStateDescendantsAndAllChildrenFromItem(const Item& item) override {
    const Call call(*this, "upward", item);
    OLTreeRuntimeAttributesController::buildCheckStateDescendantsAndAllChildrenFromItem(item);
  }
  void buildRuntimeNumberLabelFromItem(const Item& item) override {
    const Call call(*this, "labelsFrom", item);
    OLTreeRuntimeAttributesController::buildRuntimeNumberLabelFromItem(item);
  }
  void buildRuntimeNumberLabelByItem(const Item& item) override {
    const Call call(*this, "labels", item);
    OLTreeRuntimeAttributesController::buildRuntimeNumberLabelByItem(item);
  }
  void buildRuntimeCheckState() override {
    const Call call(*this, "wholeTreeChecks", nullptr);
    OLTreeRuntimeAttributesController::buildRuntimeCheckState();
  }
  void buildRuntimeNumberLabel() override {
    const Call call(*this, "wholeTreeLabels", nullptr);
    OLTreeRuntimeAttributesController::buildRuntimeNumberLabel();
  }
  void buildCheckStateOfDescendantsByItem(const Item& item) override {
    const Call call(*this, "descendants", item);
    OLTreeRuntimeAttributesController::buildCheckStateOfDescendantsByItem(item);
  }
  void buildCheckStateOfAllChildrenByItem(const Item& item) override {
    const Call call(*this, "allChildren", item);
    OLTreeRuntimeAttributesController::buildCheckStateOfAllChildrenByItem(item);
  }
  void buildCheckStateOfAncestorsByItem(const Item& item) override {
    const Call call(*this, "ancestors", item);
    OLTreeRuntimeAttributesController::buildCheckStateOfAncestorsByItem(item);
  }
  void updateCheckStateOfDescendantsByItem(const Item& item) override {
    const Call call(*this, "d", item);
    OLTreeRuntimeAttributesController::updateCheckStateOfDescendantsByItem(item);
  }
  void updateCheckStateOfAllChildrenByItem(const Item& item) override {
    const Call call(*this, "c", item);
    OLTreeRuntimeAttributesController::updateCheckStateOfAllChildrenByItem(item);
  }
  void updateCheckStateOfAncestorsByItem(const Item& item) override {
    const Call call(*this, "a", item);
    OLTreeRuntimeAttributesController::updateCheckStateOfAncestorsByItem(item);
  }
  ns::Value generateNumberLabelByItem(const Item& item) override {
    const Call call(*this, "generate", item);
    return OLTreeRuntimeAttributesController::generateNumberLabelByItem(item);
  }
  void setNumberLabelByItem(const ns::Value& label, const Item& item) override {
    const Call call(*this, "set", item);
    ++labelsSet;
    OLTreeRuntimeAttributesController::setNumberLabelByItem(label, item);
  }

  size_t labelsSet = 0;

 private:
  class Call {
   public:
    Call(RecordingController& controller, const char* name, const Item& item)
        : controller_(controller) {
      if (controller_.running_++ != controller_.depth_) return;
      std::string& log = controller_.log_;
      if (!log.empty()) log += ' ';
      log += std::string(name) + '(' + nameOf(item) + ')';
    }
    ~Call() { --controller_.running_; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    RecordingController& controller_;
  };

  std::string log_;
  int running_ = 0;
  int depth_ = 0;
};

}  // namespace tavlin::testing
