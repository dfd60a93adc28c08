#include "document/OLDataManager.h"

#include "document/DocumentClasses.h"
#include "document/ItemCircles.h"
#include "model/OLExceptionController.h"
#include "model/OLTree.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Log.h"

namespace tavlin {

OLDataManager::OLDataManager() : treeController_(OLTreeController::create()) {}

std::shared_ptr<OLDataManager> OLDataManager::create() { return std::make_shared<OLDataManager>(); }

void OLDataManager::setTreeController(const std::shared_ptr<ns::Object>& controller) {
  auto accepted = std::dynamic_pointer_cast<OLTreeController>(controller);
  if (controller && !accepted) OLExceptionController::raiseWithString("Unexpected class");
  treeController_ = std::move(accepted);
}

std::optional<ns::Data> OLDataManager::dataRepresentation() const {
  const std::optional<ns::DataPieces> pieces = dataRepresentationInPieces();
  return pieces ? std::optional(pieces->joined()) : std::nullopt;
}

std::optional<ns::DataPieces> OLDataManager::dataRepresentationInPieces() const {
  if (!treeController_) return std::nullopt;
  if (std::optional<ns::DataPieces> revised = revision_.data(*treeController_)) return revised;
  return ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(treeController_), otherTopEntries_,
                                                       archive_);
}

bool OLDataManager::loadDataRepresentationOfType(const std::optional<ns::Data>& data,
                                                 const ns::Value& /*type*/) {
  if (!data || data->empty()) {
    ns::log("Document contains no data");
    return false;
  }
  const auto archive = ns::KeyedArchive::open(*data, documentClasses());
  if (!archive->isTree()) refuseItemCircles(*archive);
  const ns::Value root = ns::KeyedUnarchiver::unarchiveObject(archive, archive->root());
  if (root.isNone()) {
    ns::log("Document has something corrupted");
    return false;
  }
  const auto controller = root.objectAs<OLTreeController>();
  if (!controller) {
    ns::log("Document contains unacceptable data");
    return false;
  }
  ns::Fields otherTopEntries;
  for (const auto& [key, entry, index] : archive->otherTopEntries()) {
    otherTopEntries.emplace_back(key, ns::archivedField(archive, entry));
  }
  if (treeController_) setTreeController(nullptr);
  setTreeController(controller);
  if (!treeController_) {
    OLExceptionController::raiseWithString("unarchiver put not nil but nil");
  }
  otherTopEntries_ = std::move(otherTopEntries);
  archive_ = archive;
  revision_ = DocumentRevision(archive, controller);
  return true;
}

ns::Value OLDataManager::objectValueForKey(const ns::Value& key) const {
  if (!treeController_ || !treeController_->tree()) return {};
  return treeController_->tree()->objectValueForKey(key);
}

void OLDataManager::setObjectValueForKey(const ns::Value& value, const ns::Value& key) {
  if (!treeController_ || !treeController_->tree()) return;
  treeController_->tree()->setObjectValueForKey(value, key);
}

}  // namespace tavlin
