// The item operations of documents.  They go straight to the tree, past any controller.

#include <unordered_map>
#include <vector>

#include "document/ItemCount.h"
#include "document/OLDataManager.h"
#include "model/OLExceptionController.h"
#include "model/OLTree.h"

namespace tavlin {
namespace {

// Answers whether nodes are contained by one item.  Remembers the answer for every node that it
// climbed past, so that each parent link is followed once.
class ContainedNodes {
 public:
  explicit ContainedNodes(const OLNode* item) : item_(item) {}

  bool contain(const OLNode* node) {
    std::vector<bool*> way;
    bool isContained = false;
    for (const OLNode* at = node; at && !isContained; at = at->parent().get()) {
      const auto [known, isNew] = answers_.try_emplace(at, false);
      isContained = at == item_ || known->second;
      if (!isNew) break;  // asked before, or just now: a circle that misses the item
      way.push_back(&known->second);
    }
    for (bool* answer : way) *answer = isContained;
    return isContained;
  }

 private:
  const OLNode* const item_;
  std::unordered_map<const OLNode*, bool> answers_;
};

}  // namespace

const OLTree* OLDataManager::tree() const {
  return treeController_ ? treeController_->tree().get() : nullptr;
}

std::shared_ptr<OLNode> OLDataManager::rootItem() const {
  return tree() ? tree()->rootItem() : nullptr;
}

std::shared_ptr<OLNode> OLDataManager::parentOfItem(const std::shared_ptr<OLNode>& item) const {
  return item ? item->parent() : nullptr;
}

OLNodeList OLDataManager::childrenByItem(const std::shared_ptr<OLNode>& item) const {
  OLNodeList children;
  if (!tree()) return children;
  const int64_t count = tree()->numberOfChildrenOfItem(item);
  for (int64_t index = 0; index < count; ++index) {
    children.push_back(tree()->childAtIndexOfItem(static_cast<uint64_t>(index), item));
  }
  return children;
}

int64_t OLDataManager::indexOfItemInBranch(const ns::Value& item) const {
  const auto node = item.objectAs<OLNode>();
  if (!node) OLExceptionController::raiseWithString("Unexpected situation");
  const auto parent = node->parent();
  return parent ? parent->indexOfChild(node.get()) : 0;
}

uint64_t OLDataManager::countChildrenOfItem(const std::shared_ptr<OLNode>& item) const {
  constexpr int64_t kTooMany = int64_t{1} << 31;
  const int64_t count = numberOfChildrenOfItem(item);
  if (count >= kTooMany) OLExceptionController::raiseWithString("too many items to display");
  return static_cast<uint64_t>(count);
}

int64_t OLDataManager::numberOfChildrenOfItem(const std::shared_ptr<OLNode>& item) const {
  return tree() ? tree()->numberOfChildrenOfItem(item) : 0;
}

uint64_t OLDataManager::countOfAllItems() const {
  const auto root = rootItem();
  uint64_t count = 0;
  if (!root) return count;
  for (const auto& item : root->children()) count += ItemCount(*item).run();
  return count;
}

uint64_t OLDataManager::countOfAllItemsByItem(const ns::Value& item) const {
  const auto node = item.objectAs<OLNode>();
  return node ? ItemCount(*node).run() : 0;
}

bool OLDataManager::isItemContainedBy(const std::shared_ptr<ns::Object>& item,
                                      OLItems items) const {
  return OLTree::isItemContainedBy(item, items);
}

std::optional<OLNodeList> OLDataManager::itemsInItemItems(const std::shared_ptr<OLNode>& item,
                                                          OLItems items) const {
  if (!item || items.isNone()) return std::nullopt;
  ContainedNodes nodes(item.get());
  OLNodeList contained;
  for (const auto& member : items) {
    if (!member) OLExceptionController::raiseWithString("Unexpected situation");
    if (nodes.contain(member.get())) contained.push_back(member);
  }
  return contained;
}

OLNodeList OLDataManager::itemsRemoveDescendantsFromItems(OLItems items) const {
  OLNodeList topmost = items.list();
  OLTree::removeDescendantsFromItems(topmost);
  return topmost;
}

ns::Value OLDataManager::objectValueForKeyByItem(const ns::Value& key,
                                                 const std::shared_ptr<OLNode>& item) const {
  return OLTree::objectValueForKeyByItem(key, item);
}

bool OLDataManager::setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                               const std::shared_ptr<OLNode>& item) {
  if (!tree()) return false;
  return treeController_->tree()->setObjectValueForKeyByItem(value, key, item);
}

bool OLDataManager::setTitleByItemWithUndo(const ns::Value& title,
                                           const std::shared_ptr<OLNode>& item, bool /*undo*/) {
  static thread_local const ns::Value key("title");
  return setObjectValueForKeyByItem(title, key, item);
}

bool OLDataManager::setNoteByItemWithUndo(const ns::Value& note,
                                          const std::shared_ptr<OLNode>& item, bool /*undo*/) {
  static thread_local const ns::Value key("note");
  return setObjectValueForKeyByItem(note, key, item);
}

std::shared_ptr<OLNode> OLDataManager::firstItem() const {
  return tree() ? tree()->firstItem() : nullptr;
}

std::shared_ptr<OLNode> OLDataManager::lastItemByItem(const std::shared_ptr<OLNode>& item) const {
  return tree() ? tree()->lastItemByItem(item) : nullptr;
}

std::shared_ptr<OLNode> OLDataManager::nextItemByItem(const std::shared_ptr<OLNode>& item) const {
  return tree() ? tree()->nextItemByItem(item) : nullptr;
}

std::shared_ptr<OLNode> OLDataManager::prevItemByItem(const std::shared_ptr<OLNode>& item) const {
  return tree() ? tree()->prevItemByItem(item) : nullptr;
}

std::shared_ptr<OLNode> OLDataManager::nextSiblingByItem(
    const std::shared_ptr<OLNode>& item) const {
  return tree() ? tree()->nextSiblingByItem(item) : nullptr;
}

}  // namespace tavlin
