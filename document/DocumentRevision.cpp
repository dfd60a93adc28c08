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

namespace {

/// Whether a record has these keys, in this order with "$class" at the end, and this class.
bool isOfForm(const ns::KeyedArchive& archive, uint32_t number,
              const std::vector<std::string_view>& keys, const ns::ClassRef& archivedClass) {
  const ns::KeyedArchive::Record record = archive.record(number);
  if (record.shape->count() != keys.size() + 1 || record.shape->classPosition() != keys.size() ||
      !(*record.archivedClass->info == *archivedClass)) {
    return false;
  }
  for (uint32_t i = 0; i < keys.size(); ++i) {
    if (!(record.shape->key(i) == ns::String(keys[i]))) return false;
  }
  return true;
}

bool isNodeAsWritten(const ns::KeyedArchive& archive, uint32_t number) {
  static const std::vector<std::string_view> keys = {
      kParentKey, kChildrenKey, kDataKey, kExpandedKey, kOutlineStyleKey, kEncodingVersionKey};
  return isOfForm(archive, number, keys, OLNode().classForCoder()) &&
         ns::FieldReader(archive, number).integer(kEncodingVersionKey) == kEncodingVersion;
}

bool isListAsWritten(const ns::KeyedArchive& archive, uint32_t number) {
  static const std::vector<std::string_view> keys = {"NS.objects"};
  return isOfForm(archive, number, keys, ns::mutableArrayClass()) ||
         isOfForm(archive, number, keys, ns::arrayClass());
}

}  // namespace

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
  if (archive_->hasStrays() || archive_->isChangedBy(dataForSaving(true))) return false;
  const auto controller = controller_.lock();
  if (!isOfForm(*archive_, archive_->root(), {kTreeKey}, controller->classForCoder()) ||
      !isOfForm(*archive_, treeNumber_, {kRootKey}, controller->tree()->classForCoder())) {
    return false;
  }
  for (const ns::KeyedArchive::Form& form : archive_->forms()) {
    const bool isList = archive_->kind(form.example) == ns::Kind::array;
    if (!form.isUniform || !(isList ? isListAsWritten(*archive_, form.example)
                                    : isNodeAsWritten(*archive_, form.example))) {
      return false;
    }
  }
  return true;
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
