// Trees and tree controllers in archives: a controller holds its tree under "tree", a tree its
// root under "root".  The texts of refusals differ between the classes on purpose.

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

}  // namespace

ns::ClassRef OLTree::classForCoder() const {
  static thread_local const ns::ClassRef info = ns::makeClass({"OLTree", "NSObject"});
  return info;
}

void OLTree::encodeWithCoder(ns::Coder& coder) const {
  checkKeyedCoding(coder, "It is not expected that control reach here.");
  coder.encodeObjectForKey(ns::Value(rootNode_), kRootKey);
}

void OLTree::initWithCoder(ns::Coder& coder) {
  checkKeyedCoding(coder, "coder does not allow keyed coding");
  rootNode_ = decode<OLNode>(coder, kRootKey, "the root of an OLTree is not an OLNode");
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
}

void OLTreeController::initWithCoder(ns::Coder& coder) {
  checkKeyedCoding(coder, "coder not allow keyed coding");
  tree_ = decode<OLTree>(coder, kTreeKey, "the tree of a tree controller is not an OLTree");
  // data that stays in the archive owns nothing, and would be the owner of what it names
  if (const auto* unarchiver = dynamic_cast<ns::KeyedUnarchiver*>(&coder)) {
    company_ = unarchiver->company();
  }
}

}  // namespace tavlin
