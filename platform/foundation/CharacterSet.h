#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/foundation/String.h"

namespace ns {

/// A set of Unicode code points.  The named sets are those of Unicode 17.
class CharacterSet {
 public:
  struct Interval {
    char32_t first;
    char32_t last;
    bool operator==(const Interval&) const = default;
  };

  CharacterSet() = default;
  /// General category Zs and U+0009.
  static CharacterSet whitespace();
  /// General category Z*, U+000A to U+000D and U+0085.  U+0009 is not a member.
  static CharacterSet whitespaceAndNewline();
  /// General categories Cc and Cf.
  static CharacterSet control();
  /// U+000A to U+000D, U+0085, U+2028 and U+2029.
  static CharacterSet newline();
  /// The code points of a string.
  static CharacterSet inString(const String& characters);

  /// Raises InvalidArgumentException past U+10FFFF, or when an interval ends before it begins.
  void addCharacter(char32_t character) { addInterval({character, character}); }
  void addInterval(Interval interval);
  void formUnion(const CharacterSet& other);
  void formIntersection(const CharacterSet& other);
  /// Every code point (U+0000 to U+10FFFF) that is not a member, and no other.
  void invert();

  [[nodiscard]] bool contains(char32_t character) const;
  [[nodiscard]] bool empty() const { return intervals_.empty(); }
  [[nodiscard]] bool isSupersetOf(const CharacterSet& other) const;
  /// Members as ascending intervals that do not touch.
  [[nodiscard]] const std::vector<Interval>& intervals() const { return intervals_; }
  bool operator==(const CharacterSet&) const = default;

 private:
  std::vector<Interval> intervals_;
};

}  // namespace ns
