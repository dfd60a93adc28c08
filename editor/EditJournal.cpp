#include "editor/EditJournal.h"

#include <algorithm>

#include "document/DocumentClasses.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Array.h"

namespace tavlin {

namespace {

ns::Value textValue(const std::string& text) {
  return ns::Value(ns::String(std::string_view(text)));
}

ns::Value pathValue(const std::shared_ptr<OLNode>& item) {
  return textValue(DocumentEditor::pathOf(item));
}

ns::Array record(const char* kind, std::initializer_list<ns::Value> values) {
  ns::Array array;
  array.append(kind);
  for (const ns::Value& value : values) array.append(value);
  return array;
}

std::string textAt(const ns::Array& record, size_t index) {
  const ns::Value value = record.at(index);
  return value.isString() ? value.string().utf8() : std::string();
}

/// Makes edits again.
class Replay {
 public:
  Replay(DocumentEditor& editor, FoldState& folds) : editor_(editor), folds_(folds) {}

  void perform(const ns::Array& record) {
    const std::string kind = textAt(record, 0);
    auto& controller = *editor_.controller();
    if (kind == "typing") {
      typing_ = record;
      return;
    }
    if (kind != "expand" && kind != "levels") typing_.reset();
    if (kind == "set") {
      // a value that is none has no place in a list
      const ns::Value value = record.count() > 3 ? record.at(3) : ns::Value();
      controller.setObjectValueForKeyByItem(value, record.at(2), itemAt(record, 1));
    } else if (kind == "insert") {
      for (size_t i = 1; i + 1 < record.count(); i += 2) {
        const auto node = record.at(i + 1).objectAs<OLNode>();
        if (!node) throw EditRefusal("no item");
        insert(node, textAt(record, i));
      }
    } else if (kind == "remove") {
      OLNodeList items;
      for (size_t i = 1; i < record.count(); ++i) items.push_back(itemAt(record, i));
      items.size() == 1 ? controller.deleteItem(items.front()) : controller.deleteItems(items);
    } else if (kind == "move") {
      move(itemAt(record, 1), textAt(record, 2));
    } else if (kind == "expand") {
      controller.setExpandedByItem(record.at(2).boolValue(), itemAt(record, 1));
    } else if (kind == "levels") {
      folds_.setOpenLevels(static_cast<size_t>(record.at(1).integerValue()));
    }
  }

  /// What was being typed at the end.
  void finish() {
    if (!typing_) return;
    const auto item = itemAt(*typing_, 1);
    const ns::String text = typing_->at(3).string();
    ItemChange content;
    (textAt(*typing_, 2) == "note" ? content.note : content.title) = text;
    editor_.set(item, content);
  }

 private:
  std::shared_ptr<OLNode> itemAt(const ns::Array& record, size_t index) {
    return editor_.itemAtPath(textAt(record, index));
  }
  /// The parent of a path, and the index there.
  std::pair<std::shared_ptr<OLNode>, int64_t> placeAt(const std::string& path) {
    const auto parsed = ItemPath::parse(path);
    if (!parsed) throw EditRefusal("no path");
    const size_t dot = path.rfind('.');
    const auto parent = dot == std::string::npos ? editor_.controller()->tree()->rootNode()
                                                 : editor_.itemAtPath(path.substr(0, dot));
    const uint64_t position = parsed->positions().back();
    return {parent, static_cast<int64_t>(position) - 1};
  }
  void insert(const std::shared_ptr<OLNode>& node, const std::string& path) {
    const auto [parent, index] = placeAt(path);
    if (static_cast<uint64_t>(index) > parent->countChildren()) throw EditRefusal("no place");
    node->setParent(nullptr);
    editor_.controller()->insertItemToParentAtIndex(node, parent, index);
  }
  /// The path is that of the item once it is there, so its parent is found without the item.
  void move(const std::shared_ptr<OLNode>& item, const std::string& path) {
    const auto parent = item->parent();
    const auto index = static_cast<uint64_t>(parent->indexOfChild(item.get()));
    editor_.controller()->deleteItem(item);
    try {
      const auto [target, place] = placeAt(path);
      editor_.controller()->insertItemToParentAtIndex(item, target, place);
    } catch (const EditRefusal&) {
      editor_.controller()->insertItemToParentAtIndex(item, parent, static_cast<int64_t>(index));
      throw;
    }
  }

  DocumentEditor& editor_;
  FoldState& folds_;
  std::optional<ns::Array> typing_;
};

std::optional<ns::Array> decoded(const std::string& bytes) {
  try {
    const ns::Value value =
        ns::KeyedUnarchiver::unarchiveObject(ns::Data(bytes), documentClasses());
    if (value.kind() != ns::Kind::array) return std::nullopt;
    return value.array();
  } catch (const ns::Exception&) {
    return std::nullopt;
  }
}

}  // namespace

void EditJournal::write(const ns::Array& record) {
  if (!file_) {
    if (!start_) return;
    const Start start = start_();
    if (start.path.empty()) return;
    path_ = start.path;
    file_ = std::make_unique<JournalFile>(start.path, start.base);
    const ns::Array origin =
        tavlin::record("origin", {textValue(start.origin.file), textValue(start.origin.state)});
    file_->append(ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(origin)).view());
  }
  file_->append(ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(record)).view());
}

void EditJournal::discard() {
  if (!file_) return;
  file_.reset();
  JournalFile::remove(path_);
}

void EditJournal::noteTyping(const std::shared_ptr<OLNode>& item, const char* key,
                             const ns::String& text) {
  write(record("typing", {pathValue(item), key, ns::Value(text)}));
}

void EditJournal::noteOpenLevels(const std::optional<size_t>& levels) {
  if (!levels) return;
  constexpr size_t kMost = INT64_MAX;
  write(record("levels", {ns::Value(static_cast<int64_t>(std::min(*levels, kMost)))}));
}

void EditJournal::didInsert(const OLNodeList& items) {
  ns::Array written = record("insert", {});
  std::vector<std::pair<std::vector<uint64_t>, std::shared_ptr<OLNode>>> placed;
  for (const auto& item : items) {
    if (const auto path = ItemPath::ofItem(item)) placed.emplace_back(path->positions(), item);
  }
  std::ranges::sort(placed, {}, &decltype(placed)::value_type::first);
  for (const auto& [path, item] : placed) {
    written.append(pathValue(item));
    written.append(ns::Value(item));
  }
  write(written);
}

void EditJournal::willRemove(const OLNodeList& items) {
  ns::Array written = record("remove", {});
  for (const auto& item : items) {
    if (item && item->parent()) written.append(pathValue(item));
  }
  const auto parent = items.front() ? items.front()->parent() : nullptr;
  lastRemoved_ = {parent, parent ? parent->indexOfChild(items.front().get()) : -1};
  write(written);
}

void EditJournal::willMove(const std::shared_ptr<OLNode>& item) {
  movedFrom_ = DocumentEditor::pathOf(item);
}

void EditJournal::didMove(const std::shared_ptr<OLNode>& item) {
  const std::string to = DocumentEditor::pathOf(item);
  if (to == movedFrom_) return;
  write(record("move", {textValue(movedFrom_), textValue(to)}));
}

void EditJournal::didSetValue(const std::shared_ptr<OLNode>& item, const ns::Value& key) {
  ns::Array written = record("set", {pathValue(item), key});
  const ns::Value value = OLTree::objectValueForKeyByItem(key, item);
  if (!value.isNone()) written.append(value);
  write(written);
}

void EditJournal::didSetExpanded(const std::shared_ptr<OLNode>& item) {
  const bool isExpanded = item->storesExpanded();
  expansions_.emplace(item, !isExpanded);  // the first change tells
  write(record("expand", {pathValue(item), ns::Value(isExpanded)}));
}

void EditJournal::restoreExpansions() {
  const auto expansions = std::exchange(expansions_, {});
  for (const auto& [item, was] : expansions) {
    if (item->storesExpanded() == was) continue;
    item->setIsExpanded(was);
    if (ItemPath::ofItem(item)) write(record("expand", {pathValue(item), ns::Value(was)}));
  }
}

std::optional<EditJournal::Origin> EditJournal::originOf(const std::vector<std::string>& records) {
  if (records.empty()) return std::nullopt;
  const std::optional<ns::Array> first = decoded(records.front());
  if (!first || first->count() < 3 || textAt(*first, 0) != "origin") return std::nullopt;
  return Origin{textAt(*first, 1), textAt(*first, 2)};
}

bool EditJournal::replay(const std::vector<std::string>& records, DocumentEditor& editor,
                         FoldState& folds) {
  Replay replay(editor, folds);
  try {
    for (size_t i = 1; i < records.size(); ++i) {
      const std::optional<ns::Array> record = decoded(records[i]);
      if (!record || record->empty()) return false;
      replay.perform(*record);
    }
    replay.finish();
  } catch (const ns::Exception&) {
    return false;
  }
  return true;
}

}  // namespace tavlin
