#include "model/OLTree.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

ns::Value OLTree::objectValueForKeyByItem(const ns::Value& key,
                                          const std::shared_ptr<OLNode>& item) {
  return item ? item->storedValueForKey(key) : ns::Value();
}

ns::String OLTree::stringForKeyByItem(const ns::Value& key, const std::shared_ptr<OLNode>& item) {
  const ns::Value value = objectValueForKeyByItem(key, item);
  if (value.kind() == ns::Kind::attributedString) return ns::AttributedString(value).string();
  return value.string();
}

}  // namespace tavlin
