#pragma once

#include <compare>

#include "platform/foundation/String.h"

namespace ns {

/// How heavy a face is, and whether it leans.
struct FontStyle {
  int weight = 400;  ///< from 100 (thin) over 400 (regular) and 700 (bold) to 900 (black)
  bool isSlanted = false;

  /// What a PostScript name says behind its first hyphen ("Helvetica-BoldOblique"), or at all
  /// where it has none (".AppleSystemUIFontBold").  What it does not say is regular and upright.
  static FontStyle ofFontName(const String& postScriptName);
  /// What the name of a face says: "Bold Italic".
  static FontStyle ofFaceName(const String& faceName);

  /// From 600 on.
  [[nodiscard]] constexpr bool isBold() const { return weight >= 600; }

  /// How unlike another style is: whether one is bold and the other is not counts most, then
  /// whether one leans and the other does not, then the difference of their weights.
  struct Distance {
    bool isOtherBoldness;
    bool isOtherSlant;
    int weights;
    constexpr auto operator<=>(const Distance&) const = default;
  };
  [[nodiscard]] constexpr Distance distanceTo(const FontStyle& other) const {
    return {isBold() != other.isBold(), isSlanted != other.isSlanted,
            weight > other.weight ? weight - other.weight : other.weight - weight};
  }
  constexpr bool operator==(const FontStyle&) const = default;
};

}  // namespace ns
