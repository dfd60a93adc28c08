#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <vector>

namespace tavlin {

class OLNode;

/// An ordered array of items.  Never holds none.
using OLNodeList = std::vector<std::shared_ptr<OLNode>>;

/// An array of items as an argument, which may be none.
///
///     tree->deleteItems({first, second});
///     tree->deleteItems(selection);        // an OLNodeList
///     node->insertChildrenAtIndex(nullptr, 0);
///
/// A view: it is valid during the call that it is given to.  Who needs the items longer, or
/// changes a children list that they may be a view of, takes a `list()` first.
class OLItems {
 public:
  OLItems(std::nullptr_t) {}        // NOLINT(google-explicit-constructor)
  OLItems(const OLNodeList& items)  // NOLINT(google-explicit-constructor)
      : first_(items.data()), count_(items.size()), isNone_(false) {}
  OLItems(std::initializer_list<std::shared_ptr<OLNode>> items)
      : first_(std::data(items)), count_(items.size()), isNone_(false) {}

  /// No array at all, which is not the same as an empty one.
  [[nodiscard]] bool isNone() const { return isNone_; }
  [[nodiscard]] size_t count() const { return count_; }
  [[nodiscard]] bool empty() const { return count_ == 0; }
  [[nodiscard]] const std::shared_ptr<OLNode>* begin() const { return first_; }
  [[nodiscard]] const std::shared_ptr<OLNode>* end() const { return first_ + count_; }
  /// The items, copied; empty for none.
  [[nodiscard]] OLNodeList list() const { return OLNodeList(begin(), end()); }

 private:
  const std::shared_ptr<OLNode>* first_ = nullptr;
  size_t count_ = 0;
  bool isNone_ = true;
};

}  // namespace tavlin
