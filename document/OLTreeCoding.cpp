// Trees and tree controllers in archives: a controller holds its tree under "tree", a tree its
// root under "root".  The texts of refusals differ between the classes on purpose.

#include <span>

#include "document/DocumentClasses.h"
#include "document/NodeArchiving.h"
#include "model/OLExceptionController.h"
#include "model/OLTree.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"

namespace tavlin {

namespace {

void checkKeyedCoding(const ns::Coder& coder, const char* refusal) {
  if (!coder.allowsKeyedCoding()) OLExceptionController::raiseWithString(refusal);
}

/// The object of a class under a key, or none.
template <class T>
std::shared_ptr<T> decode(ns::Coder& coder, const char* key, const char* what) {
  const std::shared_ptr<ns::Object> object = coder.decodeReferenceForKey(key);
  auto found = std::dynamic_pointer_cast<T>(object);
  if (object && !found) throw ns::ArchiveException(std::string("keyed archive: ") + what);
  return found;
}

using Keys = std::span<const char* const>;

/// The record that is read, where it has more than these keys; else none.
ns::Ref<const ns::FormerRecord> formerRecord(const ns::Coder& coder, Keys keys) {
  const auto* unarchiver = dynamic_cast<const ns::KeyedUnarchiver*>(&coder);
  if (!unarchiver || unarchiver->fields().hasOnly(keys)) return {};
  return ns::Ref<const ns::FormerRecord>(
      new ns::FormerRecord(unarchiver->archive(), unarchiver->fields().number()));
}

void encodeOtherFields(ns::Coder& coder, const ns::Ref<const ns::FormerRecord>& former, Keys keys) {
  auto* archiver = dynamic_cast<ns::KeyedArchiver*>(&coder);
  if (archiver && former) archiver->encodeOtherFields(former->archive(), former->number(), keys);
}

}  // namespace

ns::ClassRef OLTree::classForCoder() const {
  static thread_local const ns::ClassRef info = ns::makeClass({"OLTree", "NSObject"});
  return info;
}

void OLTree::encodeWithCoder(ns::Coder& coder) const {
  checkKeyedCoding(coder, "It is not expected that control reach here.");
  coder.encodeObjectForKey(ns::Value(rootNode_), kRootKey);
  encodeOtherFields(coder, formerRecord_, kTreeKeys);
}

void OLTree::initWithCoder(ns::Coder& coder) {
  checkKeyedCoding(coder, "coder does not allow keyed coding");
  rootNode_ = decode<OLNode>(coder, kRootKey, "the root of an OLTree is not an OLNode");
  formerRecord_ = formerRecord(coder, kTreeKeys);
}

std::shared_ptr<OLNode> OLTree::duplicatePartOfTreeByRootItem(
    const std::shared_ptr<OLNode>& item) const {
  if (!item) return nullptr;
  const ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(item));
  return ns::KeyedUnarchiver::unarchiveObject(data, documentClasses()).objectAs<OLNode>();
}

ns::ClassRef OLTreeController::classForCoder() const {
  static thread_local const ns::ClassRef info = ns::makeClass({"OLTreeController", "NSObject"});
  return info;
}

void OLTreeController::encodeWithCoder(ns::Coder& coder) const {
  checkKeyedCoding(coder, "coder not allow keyed coding");
  coder.encodeObjectForKey(ns::Value(tree_), kTreeKey);
  encodeOtherFields(coder, formerRecord_, kControllerKeys);
}

void OLTreeController::initWithCoder(ns::Coder& coder) {
  checkKeyedCoding(coder, "coder not allow keyed coding");
  tree_ = decode<OLTree>(coder, kTreeKey, "the tree of a tree controller is not an OLTree");
  formerRecord_ = formerRecord(coder, kControllerKeys);
  // data that stays in the archive owns nothing, and would be the owner of what it names
  if (const auto* unarchiver = dynamic_cast<ns::KeyedUnarchiver*>(&coder)) {
    company_ = unarchiver->company();
  }
}

}  // namespace tavlin
