#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavlin {

/// How text looks on the screen, as far as the terminal can.
struct Look {
  bool isBold = false;
  bool isItalic = false;
  bool isUnderlined = false;
  bool isDim = false;
  bool isReversed = false;

  bool operator==(const Look&) const = default;
};

/// A stretch of a line of one look.
struct DrawnPiece {
  std::string text;  ///< UTF-8 without anything that a terminal obeys.
  Look look;

  bool operator==(const DrawnPiece&) const = default;
};

/// A line of the screen, from the left; what it does not reach is blank.
struct DrawnLine {
  std::vector<DrawnPiece> pieces;
  size_t columns = 0;  ///< That the pieces take.

  bool operator==(const DrawnLine&) const = default;

  void add(const std::string& text, size_t textColumns, const Look& look) {
    if (text.empty()) return;
    columns += textColumns;
    if (!pieces.empty() && pieces.back().look == look) {
      pieces.back().text += text;
    } else {
      pieces.push_back({text, look});
    }
  }
  void addBlanks(size_t count, const Look& look) { add(std::string(count, ' '), count, look); }
  [[nodiscard]] std::string text() const {
    std::string all;
    for (const DrawnPiece& piece : pieces) all += piece.text;
    return all;
  }
};

/// A whole screen.
struct Drawing {
  struct Place {
    size_t row;
    size_t column;
  };
  std::vector<DrawnLine> lines;
  std::optional<Place> cursor;  ///< Where something is being typed.
};

}  // namespace tavlin
