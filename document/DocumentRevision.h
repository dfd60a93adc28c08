#pragma once

#include <memory>
#include <optional>

#include "model/OLTreeController.h"
#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/DataPieces.h"

namespace tavlin {

/// Remembers the archive that a document was loaded from, so that a document of which nothing was
/// changed but the data of its root is saved by keeping most of the file as it is.
///
/// That gives what archiving all its objects anew would give, but for the numbers that objects
/// have in the file: it is done only where loading and saving change nothing in any item, and
/// where the records of all items are as this program writes them.
class DocumentRevision {
 public:
  DocumentRevision() = default;
  DocumentRevision(std::shared_ptr<const ns::KeyedArchive> archive,
                   const std::shared_ptr<OLTreeController>& controller);

  /// The file for a document with this controller; none where the objects have to be archived.
  [[nodiscard]] std::optional<ns::DataPieces> data(const OLTreeController& controller) const;

 private:
  [[nodiscard]] bool isAsWritten() const;

  std::shared_ptr<const ns::KeyedArchive> archive_;
  uint32_t treeNumber_ = 0;
  uint32_t rootNumber_ = 0;
  std::weak_ptr<const OLTreeController> controller_;
  std::weak_ptr<const OLTree> tree_;
  std::weak_ptr<const OLNode> root_;
  mutable std::optional<bool> isAsWritten_;
};

}  // namespace tavlin
