#include "platform/text/TextStorage.h"

#include <algorithm>

#include "platform/foundation/Exception.h"

namespace ns {

void TextStorage::endEditing() {
  if (depth_ == 0) throw InvalidArgumentException("endEditing without beginEditing");
  if (--depth_ == 0) processEditing();
}

void TextStorage::edited(Range range, std::ptrdiff_t changeInLength) {
  if (changed_) {
    // what changed before moves along with the text behind the new change
    const size_t start = std::min(changed_->location, range.location);
    const size_t oldEnd = range.end() - static_cast<size_t>(changeInLength);
    const size_t end = std::max(changed_->end(), oldEnd) + static_cast<size_t>(changeInLength);
    changed_ = {start, end - start};
  } else {
    changed_ = range;
  }
  if (depth_ == 0 && !isFixing_) processEditing();
}

void TextStorage::processEditing() {
  if (!changed_) return;
  isFixing_ = true;
  fixAttributesInRange(*changed_);
  isFixing_ = false;
  const Range range = *std::exchange(changed_, std::nullopt);
  if (callback_) callback_(range);
}

}  // namespace ns
