#include "document/DocumentClasses.h"

#include "document/NodeArchiving.h"

#include "model/OLTree.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/text/TextClasses.h"

namespace tavlin {

namespace {

template <class T>
std::shared_ptr<ns::Object> make(ns::Arena& arena) {
  return arena.make<T>();
}

template <class T>
ns::ClassCoding objectClass() {
  return {ns::Kind::object, nullptr, nullptr, make<T>};
}

}  // namespace

const ns::ClassRegistry& documentClasses() {
  static const ns::ClassRegistry* const classes = [] {
    auto* registry = new ns::ClassRegistry();
    ns::addTextClasses(*registry);
    ns::ClassCoding node = objectClass<OLNode>();
    node.fields = archivedNodeFields();
    registry->add("OLNode", node);
    registry->add("OLTree", objectClass<OLTree>());
    registry->add("OLTreeController", objectClass<OLTreeController>());
    registry->add("OLTreeRuntimeAttributesController",
                  objectClass<OLTreeRuntimeAttributesController>());
    registry->add("OLTreeUndoController", objectClass<OLTreeUndoController>());
    return registry;
  }();
  return *classes;
}

}  // namespace tavlin
