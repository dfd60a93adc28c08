#include "edit/DocumentEditor.h"

#include <algorithm>
#include <unordered_set>

#include "edit/TextEdits.h"
#include "ui/SNUIString.h"

namespace tavlin {

/// What the controller works with.  An object of its own: the controller owns it.
class DocumentEditor::DataSource final : public OLDataSource {
 public:
  explicit DataSource(std::shared_ptr<ns::UndoManager> manager) : manager_(std::move(manager)) {}
  [[nodiscard]] std::shared_ptr<ns::UndoManager> undoManager() const override { return manager_; }
  [[nodiscard]] std::shared_ptr<OLDataSourceDelegate> delegate() const override {
    return delegate_.lock();
  }
  void setDelegate(const std::shared_ptr<OLDataSourceDelegate>& delegate) { delegate_ = delegate; }

 private:
  std::shared_ptr<ns::UndoManager> manager_;
  std::weak_ptr<OLDataSourceDelegate> delegate_;
};

namespace {

std::string item(const std::shared_ptr<OLNode>& node) {
  return "item " + DocumentEditor::pathOf(node);
}

uint64_t indexOf(const std::shared_ptr<OLNode>& node) {
  return static_cast<uint64_t>(node->parent()->indexOfChild(node.get()));
}

/// Whether a title or note says that already; none says what an empty text says.
bool saysText(const ns::Value& former, const ns::String& text) {
  if (former.isNone()) return text.empty();
  if (former.isString()) return former.string() == text;
  return former.kind() == ns::Kind::attributedString &&
         ns::AttributedString(former).string() == text;
}

/// What is stored for a text: rich in the place of rich text, none for an empty note.
ns::Value textInPlaceOf(const ns::Value& former, const ns::String& text, bool isNote) {
  if (isNote && text.empty()) return {};
  if (former.kind() != ns::Kind::attributedString) return ns::Value(text);
  return textReplacing(ns::AttributedString(former), text).asValue();
}

OLNodeList inDocumentOrder(const OLNodeList& items) {
  std::vector<std::pair<std::vector<uint64_t>, std::shared_ptr<OLNode>>> placed;
  placed.reserve(items.size());
  for (const auto& each : items) placed.emplace_back(ItemPath::ofItem(each)->positions(), each);
  std::ranges::sort(placed, {}, &decltype(placed)::value_type::first);
  OLNodeList sorted;
  sorted.reserve(items.size());
  for (auto& [path, each] : placed) sorted.push_back(std::move(each));
  return sorted;
}

}  // namespace

DocumentEditor::DocumentEditor(std::shared_ptr<OLDataManager> document)
    : document_(std::move(document)),
      manager_(std::make_shared<ns::UndoManager>()),
      dataSource_(std::make_shared<DataSource>(manager_)),
      controller_(
          EditController::create(dataSource_, document_->treeController()->tree()->rootNode())) {
  manager_->setGroupsByEvent(false);
}

void DocumentEditor::setDelegate(const std::shared_ptr<OLDataSourceDelegate>& delegate) {
  dataSource_->setDelegate(delegate);
}

void DocumentEditor::rollBackTo(uint64_t changeCount) {
  for (; changes_ > changeCount; --changes_) manager_->undo();
}

void DocumentEditor::perform(const ns::String& actionName, const std::function<void()>& edit) {
  manager_->beginUndoGrouping();
  try {
    edit();
  } catch (...) {
    manager_->endUndoGrouping();
    manager_->undo();
    throw;
  }
  manager_->setActionName(actionName);
  manager_->endUndoGrouping();
  ++changes_;
}

// Places.

std::shared_ptr<OLNode> DocumentEditor::itemAtPath(std::string_view path) const {
  const std::optional<ItemPath> parsed = ItemPath::parse(path);
  if (!parsed || !parsed->itemIn(*controller_->tree())) throw EditRefusal(whyNoItem(path));
  const auto refuse = [&](const char* why) {
    throw EditRefusal("item " + std::string(path) + " cannot be edited, since " + why +
                      "; tavlin check --repair mends that");
  };
  std::shared_ptr<OLNode> node = controller_->tree()->rootNode();
  for (const uint64_t position : parsed->positions()) {
    std::shared_ptr<OLNode> child = node->childAtIndex(position - 1);
    if (child->parent() != node) refuse("links between items disagree on the way to it");
    if (std::ranges::count(node->children(), child) > 1) {
      refuse("it or an item above it is listed twice");
    }
    node->setCacheIndexOfChild(static_cast<int64_t>(position) - 1);
    node = std::move(child);
  }
  return node;
}

std::string DocumentEditor::pathOf(const std::shared_ptr<OLNode>& node) {
  const std::optional<ItemPath> path = ItemPath::ofItem(node);
  return path ? path->text() : std::string();
}

DocumentEditor::Target DocumentEditor::targetOf(const ItemPlace& place) const {
  if (place.kind == ItemPlace::Kind::atEnd || place.kind == ItemPlace::Kind::under) {
    const auto& parent = place.item ? place.item : controller_->tree()->rootNode();
    return {parent, parent->countChildren()};
  }
  const uint64_t index = indexOf(place.item);
  return {place.item->parent(), place.kind == ItemPlace::Kind::after ? index + 1 : index};
}

OLNodeList DocumentEditor::topsOf(const OLNodeList& items) const {
  OLNodeList tops;
  std::unordered_set<const OLNode*> known;
  for (const auto& each : items) {
    if (known.insert(each.get()).second) tops.push_back(each);
  }
  OLTree::removeDescendantsFromItems(tops);
  return tops;
}

void DocumentEditor::checkNotInside(const OLNodeList& items, const ItemPlace& place) const {
  std::unordered_set<const OLNode*> moved;
  for (const auto& each : items) moved.insert(each.get());
  // before and after itself are places; below itself is none
  auto node = place.item;
  if (node && place.kind != ItemPlace::Kind::under) node = node->parent();
  for (; node; node = node->parent()) {
    if (moved.contains(node.get())) throw EditRefusal(item(node) + " cannot go below itself");
  }
}

// Edits.

std::shared_ptr<OLNode> DocumentEditor::add(const ItemChange& content, const ItemPlace& place) {
  const Target target = targetOf(place);
  auto node = OLNode::create();
  node->setDataForKey(content.title.value_or(ns::String()), "title");
  if (content.note && !content.note->empty()) node->setDataForKey(*content.note, "note");
  if (content.isChecked.value_or(false)) node->setDataForKey(true, "checkStatus");
  perform(SNUIString::add(), [&] {
    controller_->insertItemToParentAtIndex(node, target.parent, int64_t(target.index));
  });
  return node;
}

bool DocumentEditor::set(const std::shared_ptr<OLNode>& node, const ItemChange& content) {
  std::vector<std::pair<const char*, ns::Value>> values;
  for (const auto& [key, text] : {std::pair("title", &content.title), {"note", &content.note}}) {
    const ns::Value former = OLTree::objectValueForKeyByItem(key, node);
    if (*text && !saysText(former, **text)) {
      values.emplace_back(key, textInPlaceOf(former, **text, text == &content.note));
    }
  }
  const bool isChecked = OLTree::objectValueForKeyByItem("checkStatus", node).boolValue();
  if (content.isChecked.value_or(isChecked) != isChecked) {
    values.emplace_back("checkStatus", !isChecked);
  }
  if (values.empty()) return false;
  const std::string_view first = values.front().first;
  const ns::String name = first == "title"  ? SNUIString::edit()
                          : first == "note" ? SNUIString::editNote()
                                            : SNUIString::toggleCheckState();
  perform(name, [&] {
    for (const auto& [key, value] : values) {
      controller_->setObjectValueForKeyByItem(value, key, node);
    }
  });
  return true;
}

OLNodeList DocumentEditor::move(const OLNodeList& items, const ItemPlace& place) {
  OLNodeList tops = topsOf(items);
  checkNotInside(tops, place);
  Target target = targetOf(place);
  // the index that counts once the items have left
  const uint64_t end = target.index;
  bool isThere = true;
  for (const auto& each : tops) {
    if (each->parent() != target.parent) {
      isThere = false;
    } else if (indexOf(each) < end) {
      --target.index;
    }
  }
  for (size_t i = 0; isThere && i < tops.size(); ++i) {
    isThere = indexOf(tops[i]) == target.index + i;
  }
  if (isThere) return tops;
  perform(SNUIString::drop(), [&] {
    if (tops.size() == 1) {
      controller_->moveItemToParentAtIndex(tops.front(), target.parent, int64_t(target.index));
      return;
    }
    // in document order, since undoing puts the items of one parent back by their places
    controller_->deleteItems(inDocumentOrder(tops));
    ns::IndexSet indexes;
    indexes.addIndexesInRange({target.index, tops.size()});
    controller_->insertItemsToParentAtIndexes(tops, target.parent, indexes);
  });
  return tops;
}

bool DocumentEditor::remove(const OLNodeList& items) {
  const OLNodeList tops = inDocumentOrder(topsOf(items));
  if (tops.empty()) return false;
  perform(SNUIString::delete_(), [&] {
    tops.size() == 1 ? controller_->deleteItem(tops.front()) : controller_->deleteItems(tops);
  });
  return true;
}

bool DocumentEditor::indent(const OLNodeList& items) {
  const OLNodeList tops = inDocumentOrder(topsOf(items));
  for (const auto& each : tops) {
    if (indexOf(each) == 0) {
      throw EditRefusal(item(each) + " is the first of its siblings, so nothing can take it in");
    }
  }
  if (tops.empty()) return false;
  perform(SNUIString::indent(), [&] {
    for (const auto& each : tops) controller_->makeItemChild(each);
  });
  return true;
}

bool DocumentEditor::outdent(const OLNodeList& items) {
  OLNodeList tops = inDocumentOrder(topsOf(items));
  for (const auto& each : tops) {
    if (controller_->tree()->isRoot(each->parent())) {
      throw EditRefusal(item(each) + " is at the top already");
    }
  }
  if (tops.empty()) return false;
  perform(SNUIString::outdent(), [&] {
    // each goes directly after its parent, so the last comes first
    for (auto each = tops.rbegin(); each != tops.rend(); ++each) {
      controller_->makeItemParentWithUndoRegister(*each, true);
    }
  });
  return true;
}

}  // namespace tavlin
