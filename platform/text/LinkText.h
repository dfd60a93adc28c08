#pragma once

#include <cstddef>
#include <string_view>

#include "platform/text/LinkUtf16.h"

namespace ns {

/// A text as the link scanner reads it.  Every read is counted, so that a test can tell whether
/// the work grows with the length of the text and no faster.
class LinkText {
 public:
  explicit LinkText(std::u16string_view text) : text_(text) {}

  [[nodiscard]] size_t size() const { return text_.size(); }
  [[nodiscard]] size_t reads() const { return reads_; }

  /// The unit at an index; 0 at and past the end, which is never part of a link.
  [[nodiscard]] char16_t unit(size_t index) const {
    ++reads_;
    return index < text_.size() ? text_[index] : u'\0';
  }
  /// The code point at an index; 0, one unit long, at and past the end.
  [[nodiscard]] Utf16Character at(size_t index) const {
    ++reads_;
    return index < text_.size() ? utf16At(text_, index) : Utf16Character{0, 1};
  }
  /// The code point that ends before an index; 0, of no length, at the start of the text.
  [[nodiscard]] Utf16Character before(size_t index) const {
    ++reads_;
    return index > 0 ? utf16Before(text_, index) : Utf16Character{0, 0};
  }
  /// The units from `begin` up to `end`.
  [[nodiscard]] std::u16string_view slice(size_t begin, size_t end) const {
    reads_ += end - begin;
    return text_.substr(begin, end - begin);
  }

 private:
  std::u16string_view text_;
  mutable size_t reads_ = 0;
};

}  // namespace ns
