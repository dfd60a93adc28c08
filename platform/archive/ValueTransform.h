#pragma once

#include "platform/archive/StoredText.h"
#include "platform/foundation/Value.h"

namespace ns {

class KeyedArchive;

/// A rewriting that reaches through dictionaries and arrays to the attributed strings in them and
/// to those strings that hold "$null", and to nothing else: neither keys, nor sets, nor objects
/// of other classes.
///
/// Archives apply one lazily to what they decode, and while they copy what nobody decoded.  A
/// transform is a long-lived constant; it is compared by address.
class ValueTransform {
 public:
  virtual ~ValueTransform() = default;

  /// Whether `string` would answer other text; cheap, never a false "no"; not without "$null".
  [[nodiscard]] virtual bool changesText(const StoredText& text) const = 0;
  /// The rewritten string; the same handle when nothing changes.
  [[nodiscard]] virtual String string(const String& string) const = 0;

  /// Whether any attributed string of the archive might be rewritten; a quick way out.
  [[nodiscard]] virtual bool mayChangeAttributedStrings(const KeyedArchive& archive) const = 0;
  /// The rewritten attributed string; the same handle when nothing changes.
  [[nodiscard]] virtual Value attributedString(const Value& value) const = 0;
  /// An address that transforms which rewrite attributed strings alike have in common, so that
  /// one that several of them reach stays one.
  [[nodiscard]] virtual const void* attributedStringRule() const { return this; }
};

}  // namespace ns
