#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "exchange/TextStyle.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// How many columns of a terminal some UTF-8 text takes, as far as the system knows: two for wide
/// characters, none for combining ones.
[[nodiscard]] size_t columnsOf(std::string_view utf8);

/// Titles and notes as lines: plain, or with their looks as a terminal shows them.
class StyledText {
 public:
  explicit StyledText(bool isOn) : isOn_(isOn) {}
  /// Whether looks show.
  [[nodiscard]] bool isOn() const { return isOn_; }

  /// Appends the lines of a text (a string, an attributed string or none): the first behind
  /// `head`, further ones behind as many blanks as `indent` says.  A line that has no text ends
  /// without blanks.
  void appendLines(std::string& out, const std::string& head, size_t indent,
                   const ns::Value& text) const;

 private:
  bool isOn_;
};

}  // namespace tavlin
