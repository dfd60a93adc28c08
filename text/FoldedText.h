#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/String.h"

namespace tavlin {

/// A text as a search with StringCompareOptions compares it: what the options make equal is the
/// same sequence of units here.  Canonical equivalence, case and width are those of Unicode.
///
/// With kLiteralSearch the text is taken code point by code point (unit by unit, where no other
/// option says what is equal); without it character by character as the user sees them, which are
/// Unicode's extended grapheme clusters, except that each unit of the pair CR LF is one.
class FoldedText {
 public:
  /// No place in the text.
  static constexpr size_t kInside = SIZE_MAX;

  /// The part of a text that lies in a range; a character that reaches out of it is left out.
  /// Linear in the text.
  FoldedText(std::u16string_view text, ns::Range range, uint64_t options);

  /// What is compared.
  [[nodiscard]] const std::u32string& units() const { return units_; }
  /// Where in the text the character begins of which a unit is the first, kInside where it is not
  /// the first; and where the one ends of which it is the last.
  [[nodiscard]] size_t begin(size_t unit) const { return begins_[unit]; }
  [[nodiscard]] size_t end(size_t unit) const { return ends_[unit]; }
  /// Whether no character reaches over the end of the range.
  [[nodiscard]] bool endsWithTheRange() const { return endsWithTheRange_; }

 private:
  void addUnitsOf(std::u16string_view text, ns::Range range);
  void add(std::u16string_view text, ns::Range character, uint64_t options);

  std::u32string units_;
  std::vector<size_t> begins_;
  std::vector<size_t> ends_;
  bool endsWithTheRange_ = true;
};

}  // namespace tavlin
