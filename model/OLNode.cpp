#include "model/OLNode.h"

#include <exception>
#include <string>

#include "model/CircleGuard.h"
#include "model/OLExceptionController.h"
#include "platform/foundation/AsciiCheck.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/NotificationCenter.h"

namespace tavlin {
namespace {

bool isTextKey(std::string_view key) { return key == "title" || key == "note"; }

bool isTextKey(const ns::Value& key) {
  if (!key.isString()) return false;
  const ns::String text = key.string();
  return text == "title" || text == "note";
}

// The value, which under a key of text must be text.
template <class Key>
ns::Value checked(ns::Value value, const Key& key) {
  const bool isText = value.isString() || value.kind() == ns::Kind::attributedString;
  if (!value.isNone() && !isText && isTextKey(key)) {
    OLExceptionController::raiseWithString("invocation");
  }
  return value;
}

}  // namespace

OLNode::~OLNode() {
  // The parent has this node in its list no longer, or the list would own it: of removeChild()
  // only the posting is left to do.
  if (const auto parent = parent_.lock()) {
    try {
      parent->postDidChangeChildrenCount();
    } catch (const std::exception& exception) {
      ns::log(std::string("an observer failed while a node was destroyed: ") + exception.what());
    } catch (...) {
      ns::log("an observer failed while a node was destroyed");
    }
  }
  if (!children_) return;
  for (const auto& child : *children_) child->parent_.reset();
  if (children_.use_count() == 1) dismantle(std::move(*children_));
}

// Releases nodes.  One that nobody else owns first hands over its children, so that no node is
// destroyed from within the destruction of its parent, however deep the tree.
void OLNode::dismantle(OLNodeList nodes) noexcept {
  while (!nodes.empty()) {
    const std::shared_ptr<OLNode> node = std::move(nodes.back());
    nodes.pop_back();
    if (node.use_count() > 1 || !node->children_ || node->children_.use_count() > 1) continue;
    for (auto& child : *node->children_) {
      child->parent_.reset();
      nodes.push_back(std::move(child));
    }
    node->children_.reset();
  }
}

std::shared_ptr<OLNode> OLNode::create() {
  auto node = std::make_shared<OLNode>();
  node->hasData_ = true;
  return node;
}

std::shared_ptr<OLNode> OLNode::copy() const {
  auto copy = create();
  if (archived_.children != 0) loadArchivedChildren();
  if (archived_.data != 0) loadArchivedData();
  copy->children_ = children_;
  copy->childrenForm_ = hasChildrenArray() ? ChildrenForm::immutableArray : ChildrenForm::none;
  copy->data_ = data_;
  copy->hasData_ = hasData_;
  copy->isExpanded_ = isExpanded_;
  copy->isOutlineStyle_ = isOutlineStyle_;
  return copy;
}

std::shared_ptr<OLNode> OLNode::self() {
  return std::static_pointer_cast<OLNode>(shared_from_this());
}

void OLNode::postDidChangeChildrenCount() {
  auto& center = ns::NotificationCenter::defaultCenter();
  if (!center.hasObservers()) return;
  const auto kept = self();  // an observer may release the last owner of this node
  center.post(OLNodeDidChangeChildrenCountNotification, this);
}

ns::Value OLNode::hashNumber() const {
  if (hashNumber_.isNone()) {
    hashNumber_ = ns::Value(static_cast<uint64_t>(reinterpret_cast<uintptr_t>(this)));
  }
  return hashNumber_;
}

bool OLNode::isContainedBy(const OLNode* node) const {
  if (!node) return false;
  CircleGuard guard;
  // Owners of the ancestors do not change here, so plain pointers to them stay good.
  for (const OLNode* ancestor = this; ancestor; ancestor = ancestor->parent_.lock().get()) {
    if (ancestor == node) return true;
    if (guard.closes(ancestor)) return false;
  }
  return false;
}

const ns::Dictionary* OLNode::loadedData() const {
  if (archived_.data != 0) loadArchivedData();
  return hasData_ ? &data_ : nullptr;
}

ns::Dictionary& OLNode::editData() {
  if (archived_.data != 0) loadArchivedData();
  hasData_ = true;
  return data_;
}

std::optional<ns::Dictionary> OLNode::data() const {
  const ns::Dictionary* data = loadedData();
  return data ? std::optional(*data) : std::nullopt;
}

void OLNode::setData(std::optional<ns::Dictionary> data) {
  archived_.data = 0;
  leaveArchive();
  hasData_ = data.has_value();
  data_ = std::move(data).value_or(ns::Dictionary());
}

ns::Value OLNode::storedValueForKey(const ns::Value& key, Wanted wanted) const {
  if (key.isNone()) return {};
  if (archived_.data != 0 && key.isString()) {
    const ns::String text = key.string();
    if (text.isAscii()) {
      if (auto value = archivedValueForKey(text.ascii(), wanted)) return *std::move(value);
    }
  }
  const ns::Dictionary* data = loadedData();
  return data ? data->objectForKey(key) : ns::Value();
}

ns::Value OLNode::dataForKey(const ns::Value& key) const {
  return checked(storedValueForKey(key), key);
}

ns::Value OLNode::dataForKey(const char* key) const {
  if (!key) return {};
  if (archived_.data != 0 && ns::isAllAscii(key)) {
    if (auto value = archivedValueForKey(key, Wanted::value)) {
      return checked(*std::move(value), std::string_view(key));
    }
  }
  const ns::Dictionary* data = loadedData();
  return data ? checked(data->objectForKey(key), std::string_view(key)) : ns::Value();
}

bool OLNode::setDataForKey(const ns::Value& value, const ns::Value& key) {
  if (key.isNone()) return false;
  if (value.isNone()) {
    removeDataForKey(key);
  } else {
    editData().setObjectForKey(value, key);
  }
  return true;
}

void OLNode::removeDataForKey(const ns::Value& key) {
  if (key.isNone()) return;
  const ns::Dictionary* data = loadedData();
  if (data && data->contains(key)) editData().removeObjectForKey(key);
}

ns::Dictionary OLNode::runtimeAttributes() const { return runtimeAttributes_.dictionary(); }

void OLNode::setRuntimeAttributes(ns::Dictionary attributes) {
  runtimeAttributes_ = OLRuntimeAttributes(std::move(attributes));
}

void OLNode::setRuntimeAttributeValueForKey(const ns::Value& value, const ns::Value& key) {
  if (!key.isNone()) runtimeAttributes_.setObjectForKey(value, key);
}

ns::Value OLNode::runtimeAttributeValueForKey(const ns::Value& key) const {
  return key.isNone() ? ns::Value() : runtimeAttributes_.objectForKey(key);
}

ns::Value OLNode::runtimeAttributeValueForKey(const char* key) const {
  return key ? runtimeAttributes_.objectForKey(std::string_view(key)) : ns::Value();
}

}  // namespace tavlin
