#include "document/DocumentRevision.h"

#include <string_view>
#include <vector>

#include "document/NodeArchiving.h"
#include "document/NodeDataTransform.h"
#include "model/OLTree.h"
#include "platform/archive/ArchiveRevision.h"
#include "platform/archive/ArchivedClasses.h"
#include "platform/archive/FieldReader.h"

namespace tavlin {

DocumentRevision::DocumentRevision(std::shared_ptr<const ns::KeyedArchive> archive,
                                   const std::shared_ptr<OLTreeController>& controller) {
  if (!archive->isTree() || !controller->tree() || !controller->tree()->rootNode()) return;
  archive_ = std::move(archive);
  treeNumber_ = ns::FieldReader(*archive_, archive_->root()).reference(kTreeKey);
  rootNumber_ = ns::FieldReader(*archive_, treeNumber_).reference(kRootKey);
  controller_ = controller;
  tree_ = controller->tree();
  root_ = controller->tree()->rootNode();
}

bool DocumentRevision::isAsWritten() const {
  return archive_->findings().memberInteger == kEncodingVersion &&
         !archive_->isChangedBy(dataForSaving(true));
}

std::optional<ns::DataPieces> DocumentRevision::data(const OLTreeController& controller) const {
  if (!archive_ || controller_.lock().get() != &controller) return std::nullopt;
  const std::shared_ptr<const OLNode> root = root_.lock();
  if (tree_.lock() != controller.tree() || !root || root != controller.tree()->rootNode() ||
      !root->isAsArchived(*archive_, rootNumber_)) {
    return std::nullopt;
  }
  if (!isAsWritten_) isAsWritten_ = isAsWritten();
  if (!*isAsWritten_) return std::nullopt;
  const std::optional<ns::Dictionary> data = root->dataForArchive();
  return ns::revisedArchive(archive_, rootNumber_, kDataKey, data ? ns::Value(*data) : ns::Value());
}

}  // namespace tavlin
