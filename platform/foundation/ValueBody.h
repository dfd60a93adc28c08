#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/foundation/Ref.h"

namespace ns {

enum class Kind : uint8_t {
  none,
  boolean,
  integer,
  real,
  string,
  data,
  date,
  array,
  dictionary,
  attributedString,  ///< see platform/text/AttributedString.h
  font,              ///< see platform/text/Font.h
  color,             ///< see platform/text/Color.h
  paragraphStyle,    ///< see platform/text/ParagraphStyle.h
  record,            ///< an object of a class that nobody here interprets; archive/Record.h
  object,            ///< an object with an identity: a node, a tree, a controller
};

/// The name of a kind for messages: "a string", "an array", "none".
const char* describe(Kind kind);

/// The shared content of a value; private to the values of this layer and the ones above.
class ValueBody : public Body {
 public:
  explicit ValueBody(Kind kind) : kind_(kind) {}
  [[nodiscard]] Kind kind() const { return kind_; }
  /// Equality with a body of the same kind.
  [[nodiscard]] virtual bool isEqual(const ValueBody& other) const = 0;
  [[nodiscard]] virtual size_t hash() const = 0;

 private:
  const Kind kind_;
};

}  // namespace ns
