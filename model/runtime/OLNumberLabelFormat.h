#pragma once

#include <cstdint>
#include <memory>

#include "platform/foundation/Value.h"

namespace tavlin {

/// Makes the number labels of items.  OLTreeRuntimeAttributesController decides which items get
/// a label and when; a format only says what it looks like.
///
/// A program derives its own format from this class, or takes a ready one of
/// OLNumberLabelFormats.h.  Labels are usually strings, but any value will do: the controller
/// stores it as it is, and hands it back as the parent's label of the item's children.
class OLNumberLabelFormat {
 public:
  virtual ~OLNumberLabelFormat() = default;

  /// -copy  A format that makes the same labels and that later changes of this one do not reach.
  [[nodiscard]] virtual std::shared_ptr<OLNumberLabelFormat> copy() const = 0;

  /// -numberLabelWithParentNumberLabel:itemIndex:itemLevel:  The label of an item; none for no
  /// label.
  ///
  ///   parentNumberLabel   the label that the item's parent has; none for a top-level item
  ///   itemIndex           the item's position among its parent's children, from 0; 2^64 - 1 for
  ///                       an item that its parent does not list
  ///   itemLevel           0 for a top-level item, 1 for its children, and so on; 2^63 - 1 for an
  ///                       item without parent
  ///
  /// To be a function of these arguments alone: the controller does not ask again for an item
  /// whose arguments cannot have changed.
  [[nodiscard]] virtual ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
      const ns::Value& parentNumberLabel, uint64_t itemIndex, int64_t itemLevel) const = 0;

 protected:
  OLNumberLabelFormat() = default;
  OLNumberLabelFormat(const OLNumberLabelFormat&) = default;
  OLNumberLabelFormat& operator=(const OLNumberLabelFormat&) = default;
};

}  // namespace tavlin
