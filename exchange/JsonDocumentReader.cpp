#include "exchange/JsonDocumentReader.h"

#include <algorithm>
#include <array>

#include "exchange/JsonNames.h"
#include "model/OLTree.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/archive/ArchivedClasses.h"

namespace tavlin {

namespace {

namespace names = json_names;

constexpr std::array<std::string_view, 8> kItemKeys = {
    "title", "note", "checked", "showsCheck", "data", "expanded", "outlineStyle", "children"};

constexpr std::array<std::string_view, 7> kTopKeys = {
    "tavlin", "controller", "root", "properties", "settings", "items", "objects"};

constexpr const char* kWrongKind = "a value of another kind belongs there";

[[noreturn]] void fail(const std::string& what) { throw JsonShapeException(what); }

bool flag(const ns::Value& value) {
  if (value.kind() != ns::Kind::boolean) fail("needs true or false");
  return value.boolValue();
}

}  // namespace

// Events.

void JsonDocumentReader::key(ns::String name) {
  switch (level()) {
    case Level::top:
      return topKey(name);
    case Level::root:
      rootKey_ = name.utf8();
      return;
    case Level::item:
      return itemKey(name);
    case Level::skipped:
      return;
    default:
      openValue().key = std::move(name);
  }
}

void JsonDocumentReader::topKey(const ns::String& name) {
  topKey_ = name.utf8();
  if (std::ranges::find(topKeys_, topKey_) != topKeys_.end()) fail("a key is there twice");
  topKeys_.push_back(topKey_);
}

void JsonDocumentReader::itemKey(const ns::String& name) {
  OpenItem& item = items_.back();
  const auto* const found =
      std::ranges::find_if(kItemKeys, [&](std::string_view each) { return name == each; });
  const auto place = static_cast<size_t>(found - kItemKeys.begin());
  item.key = static_cast<ItemKey>(place);
  if (found == kItemKeys.end()) return;
  const auto bit = static_cast<uint16_t>(1U << place);
  if ((item.seen & bit) != 0) fail("a key is there twice");
  item.seen = static_cast<uint16_t>(item.seen | bit);
}

void JsonDocumentReader::scalar(ns::Value value) {
  if (levels_.empty()) fail("not an outline: an object is needed");
  deliver(std::move(value));
}

void JsonDocumentReader::number(std::string_view json) {
  if (!levels_.empty() && level() == Level::skipped) return;
  scalar(JsonValueReader::number(json));
}

JsonDocumentReader::Level JsonDocumentReader::levelOfNext(bool isObject) const {
  switch (level()) {
    case Level::top:
      if (topKey_ == "root" && isObject) return Level::root;
      if (topKey_ == "items" && !isObject) return Level::items;
      if ((topKey_ == "properties" || topKey_ == "settings") && isObject) return Level::object;
      if (std::ranges::find(kTopKeys, topKey_) != kTopKeys.end()) fail(kWrongKind);
      return Level::skipped;
    case Level::root:
      if (rootKey_ == "expanded" || rootKey_ == "outlineStyle") fail(kWrongKind);
      return Level::skipped;
    case Level::items:
      if (!isObject) fail(kWrongKind);
      return Level::item;
    case Level::item: {
      const ItemKey key = items_.back().key;
      if (key == ItemKey::children && !isObject) return Level::items;
      if (key == ItemKey::unknown) return Level::skipped;
      if (key >= ItemKey::expanded) fail(kWrongKind);
      break;
    }
    case Level::object: {
      const ns::String& key = open_[openCount_ - 1].key;
      if (key == names::kDictionary && isObject) return Level::dictionary;
      if (key == names::kRuns && !isObject) return Level::runs;
      break;
    }
    case Level::runs:
      if (!isObject) fail(kWrongKind);
      return Level::run;
    case Level::skipped:
      return Level::skipped;
    default:
      break;
  }
  return isObject ? Level::object : Level::array;
}

void JsonDocumentReader::start(bool isObject) {
  if (levels_.empty()) {
    if (!isObject) fail("not an outline: an object is needed");
    levels_.push_back(Level::top);
    items_.emplace_back().node = OLNode::create();
    return;
  }
  const Level next = levelOfNext(isObject);
  switch (next) {
    case Level::item: {
      auto node = OLNode::create();
      node->setParent(items_.back().node);
      items_.emplace_back().node = std::move(node);
      break;
    }
    case Level::skipped:
      if (level() == Level::skipped) {
        ++skippedLevels_;
        return;
      }
      ++losses_.values;
      break;
    case Level::runs: {
      OpenValue& text = openValue();
      if (text.hasRuns) fail("a key is there twice");
      text.hasRuns = true;
      break;
    }
    case Level::object:
    case Level::dictionary:
    case Level::array:
    case Level::run:
      if (openCount_ == open_.size()) open_.emplace_back();
      ++openCount_;
      break;
    default:
      break;
  }
  levels_.push_back(next);
}

void JsonDocumentReader::end(std::string_view json) {
  const Level ended = level();
  ns::Value value;
  switch (ended) {
    case Level::item:
      levels_.pop_back();
      return endItem();
    case Level::skipped:
      if (skippedLevels_ > 0) {
        --skippedLevels_;
        return;
      }
      levels_.pop_back();
      return;
    case Level::run: {
      JsonValueReader::Stretch stretch = values_.run(openValue().members, json);
      close();
      openValue().stretches.push_back(std::move(stretch));
      return;
    }
    // these stay open until their value is made, for the message if there is none
    case Level::array:
      value = ns::Value(ns::Array(std::move(openValue().elements)));
      break;
    case Level::dictionary:
      value = ns::Value(JsonValueReader::dictionary(openValue().members));
      break;
    case Level::object: {
      OpenValue& open = openValue();
      value = values_.object(open.members, open.hasRuns ? &open.stretches : nullptr, json);
      break;
    }
    default:
      levels_.pop_back();
      return;
  }
  close();
  deliver(std::move(value));
}

void JsonDocumentReader::close() {
  OpenValue& open = openValue();
  open.members.clear();
  open.elements.clear();
  open.stretches.clear();
  open.hasRuns = false;
  --openCount_;
  levels_.pop_back();
}

// Values in their places.

void JsonDocumentReader::deliver(ns::Value value) {
  switch (level()) {
    case Level::top:
      return deliverToTop(value);
    case Level::root:
      return deliverToRoot(value);
    case Level::items:
    case Level::runs:
      fail(kWrongKind);
    case Level::item:
      return deliverToItem(std::move(value));
    case Level::array:
      openValue().elements.push_back(std::move(value));
      return;
    case Level::skipped:
      return;
    default:
      openValue().members.emplace_back(openValue().key, std::move(value));
  }
}

void JsonDocumentReader::deliverToTop(const ns::Value& value) {
  if (topKey_ == "tavlin") {
    if (!(value == ns::Value(names::kVersion)) || value.kind() != ns::Kind::integer) {
      fail("a form that this program does not know");
    }
    hasVersion_ = true;
  } else if (topKey_ == "controller") {
    if (!value.isString()) fail(kWrongKind);
    controllerName_ = value.string().utf8();
  } else if (topKey_ == "properties" || topKey_ == "settings") {
    if (!value.isDictionary() && !value.isNone()) fail(kWrongKind);
    if (topKey_ == "properties") {
      properties_ = value;
    } else {
      settings_ = value;
      hasNoSettings_ = value.isNone();
    }
  } else if (topKey_ == "objects") {
    if (!value.isString()) fail(kWrongKind);  // they were read before
  } else if (topKey_ == "items" && value.isNone()) {
    items_.front().hasNoChildrenArray = true;
  } else if (topKey_ == "items" || topKey_ == "root") {
    fail(kWrongKind);
  } else {
    ++losses_.values;
  }
}

void JsonDocumentReader::deliverToRoot(const ns::Value& value) {
  if (rootKey_ == "expanded") {
    items_.front().node->setIsExpanded(flag(value));
  } else if (rootKey_ == "outlineStyle") {
    items_.front().node->setIsOutlineStyle(flag(value));
  } else {
    ++losses_.values;
  }
}

void JsonDocumentReader::deliverToItem(ns::Value value) {
  OpenItem& item = items_.back();
  switch (item.key) {
    case ItemKey::data:
      if (!value.isDictionary() && !value.isNone()) fail(kWrongKind);
      item.hasNoData = value.isNone();
      item.data = std::move(value);
      return;
    case ItemKey::expanded:
      return item.node->setIsExpanded(flag(value));
    case ItemKey::outlineStyle:
      return item.node->setIsOutlineStyle(flag(value));
    case ItemKey::children:
      if (!value.isNone()) fail(kWrongKind);
      item.hasNoChildrenArray = true;
      return;
    case ItemKey::unknown:
      ++losses_.values;
      return;
    default:
      item.fields[static_cast<size_t>(item.key)] = std::move(value);
  }
}

void JsonDocumentReader::endItem() {
  OpenItem item = std::move(items_.back());
  items_.pop_back();
  std::vector<ns::Dictionary::Entry> entries;
  for (size_t i = 0; i < kFieldCount; ++i) {
    if (!item.fields[i].isNone()) entries.emplace_back(fieldKeys_[i], std::move(item.fields[i]));
  }
  const ns::Dictionary others = item.data.dictionary();
  for (const ns::Dictionary::Entry& entry : entries) {
    if (others.contains(entry.first)) fail("a key of its data is there twice");
  }
  entries.insert(entries.end(), others.begin(), others.end());
  if (entries.empty() && item.hasNoData) {
    item.node->setData(std::nullopt);
  } else {
    ns::Dictionary data(std::move(entries));
    // the usual one is said here, or saving would copy each dictionary to say it
    data.setArchivedClass(others.archivedClass() ? others.archivedClass()
                                                 : ns::mutableDictionaryClass());
    item.node->setData(std::move(data));
  }
  if (item.hasNoChildrenArray) {
    item.node->setChildren(std::nullopt);
  } else if (!item.children.empty()) {
    item.children.shrink_to_fit();
    item.node->setChildren(std::move(item.children));
  }
  items_.back().children.push_back(std::move(item.node));
}

// The whole.

std::string JsonDocumentReader::place() const {
  constexpr size_t kMostParts = 12;  // of a deep place, this many at its end
  std::string place;
  size_t item = 0;
  size_t value = 0;
  std::vector<std::string> parts;
  size_t left = 0;
  for (const Level each : levels_) {
    std::string part;
    switch (each) {
      case Level::top:
        part = topKey_;
        break;
      case Level::root:
        part = rootKey_;
        break;
      case Level::items:
        part = std::to_string(items_[item].children.size());
        break;
      case Level::item: {
        ++item;
        const auto key = static_cast<size_t>(items_[item].key);
        part = key < kItemKeys.size() ? kItemKeys[key] : "";
        break;
      }
      case Level::array:
        part = std::to_string(open_[value++].elements.size());
        break;
      case Level::runs:
        part = std::to_string(open_[value - 1].stretches.size());
        break;
      case Level::skipped:
        continue;
      default:
        part = open_[value++].key.utf8();
    }
    parts.push_back(std::move(part));
    if (parts.size() > 2 * kMostParts) {
      parts.erase(parts.begin(), parts.begin() + kMostParts);
      left += kMostParts;
    }
  }
  if (left > 0) place = "/…";
  for (const std::string& part : parts) place += "/" + part;
  return place;
}

std::shared_ptr<OLTreeController> JsonDocumentReader::controller(
    const std::shared_ptr<OLNode>& root) const {
  if (controllerName_ == "OLTreeUndoController")
    return OLTreeUndoController::initWithRootItem(root);
  if (controllerName_ == "OLTreeRuntimeAttributesController") {
    return OLTreeRuntimeAttributesController::initWithRootItem(root);
  }
  if (controllerName_ == "OLTreeController") return OLTreeController::initWithRootItem(root);
  fail("/controller: there is no class \"" + controllerName_ + "\" of controllers");
}

Imported JsonDocumentReader::finish() {
  if (!hasVersion_) {
    fail("not an outline: \"tavlin\": " + std::to_string(names::kVersion) + " is missing");
  }
  OpenItem& root = items_.front();
  if (root.hasNoChildrenArray) {
    root.node->setChildren(std::nullopt);
  } else {
    root.node->setChildren(std::move(root.children));
  }
  const ns::Dictionary settings = settings_.dictionary();
  std::vector<ns::Dictionary::Entry> entries;
  if (!properties_.isNone()) {
    if (settings.contains("documentProperties")) fail("the properties are there twice");
    entries.emplace_back("documentProperties", properties_);
  }
  entries.insert(entries.end(), settings.begin(), settings.end());
  if (entries.empty() && hasNoSettings_) {
    root.node->setData(std::nullopt);
  } else {
    ns::Dictionary data(std::move(entries));
    data.setArchivedClass(settings.archivedClass());
    root.node->setData(std::move(data));
  }
  Imported imported;
  imported.document = OLDataManager::create();
  imported.document->setTreeController(controller(root.node));
  imported.losses = losses_;
  return imported;
}

}  // namespace tavlin
