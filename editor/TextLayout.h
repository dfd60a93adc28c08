#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "editor/Drawing.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// Where a line of wrapped text begins and ends, in UTF-16 code units; the blank or line break that
/// it was wrapped at is not in it.
struct WrappedLine {
  size_t begin;
  size_t end;
};

/// Text in lines of at most so many columns, wrapped at blanks where there are any; not more lines
/// than asked for.
[[nodiscard]] std::vector<WrappedLine> wrapped(std::u16string_view text, size_t columns,
                                               size_t mostLines);

/// The looks of a title or note, by place.
class TextLooks {
 public:
  explicit TextLooks(const ns::Value& text);
  [[nodiscard]] Look at(size_t place, const Look& base) const;

 private:
  struct Run {
    size_t end;
    Look look;
  };
  std::vector<Run> runs_;
};

/// The beginning of a line that is longer than so many columns.
[[nodiscard]] DrawnLine clipped(const DrawnLine& line, size_t columns);

/// Adds a stretch of text to a line, up to so many columns, and "…" where there is more of it.
/// Answers the column, from the beginning of the stretch, of a place in the text, if it is there.
std::optional<size_t> addText(DrawnLine& line, std::u16string_view text, size_t begin, size_t end,
                              size_t columns, const TextLooks& looks, const Look& base,
                              std::optional<size_t> place);

}  // namespace tavlin
