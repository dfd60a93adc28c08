#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Value.h"

namespace tavlin {

// The runtime attributes that say what the check marks around an item add up to.  They hold
// booleans and read as false when absent.

/// Some descendant, at any depth, is shown and checked.
inline constexpr char SNRuntimeAttributeCheckedDescendant[] = "SNRuntimeAttributeCheckedDescendant";
/// Every child that counts is checked, or has all its children checked.
inline constexpr char SNRuntimeAttributeCheckedAllChildren[] =
    "SNRuntimeAttributeCheckedAllChildren";
/// Some ancestor, the root included, is shown and checked.
inline constexpr char SNRuntimeAttributeCheckedAncestor[] = "SNRuntimeAttributeCheckedAncestor";

/// The same three, for who uses them at every item of a tree.
enum class OLRuntimeFlag : uint8_t { checkedDescendant, checkedAllChildren, checkedAncestor };

/// The runtime attributes of one node: a dictionary in which the three flags take a few bits, so
/// that the passes over a whole tree which derive them find them in the node itself.
class OLRuntimeAttributes {
 public:
  OLRuntimeAttributes() = default;
  explicit OLRuntimeAttributes(ns::Dictionary attributes);

  /// All attributes, the flags first.
  [[nodiscard]] ns::Dictionary dictionary() const;
  /// The value of a key, or none.
  [[nodiscard]] ns::Value objectForKey(const ns::Value& key) const;
  [[nodiscard]] ns::Value objectForKey(std::string_view key) const;
  /// None removes the key.
  void setObjectForKey(const ns::Value& value, const ns::Value& key);

  /// As objectForKey() under the flag's name, as a truth value.
  [[nodiscard]] bool flag(OLRuntimeFlag flag) const {
    return (present_ & bitOf(flag)) != 0 ? (values_ & bitOf(flag)) != 0 : otherFlag(flag);
  }
  /// As setObjectForKey() with a boolean.
  void setFlag(OLRuntimeFlag flag, bool value) {
    if (this->flag(flag) != value || (present_ & bitOf(flag)) == 0) storeFlag(flag, value);
  }

 private:
  [[nodiscard]] static uint8_t bitOf(OLRuntimeFlag flag) {
    return static_cast<uint8_t>(1U << static_cast<unsigned>(flag));
  }
  [[nodiscard]] std::optional<ns::Value> valueOfFlag(std::optional<OLRuntimeFlag> flag) const;
  [[nodiscard]] bool otherFlag(OLRuntimeFlag flag) const;
  void storeFlag(OLRuntimeFlag flag, bool value);

  ns::Dictionary others_;  ///< also what is not a boolean under a flag's name
  uint8_t present_ = 0;    ///< a bit for each flag that is there
  uint8_t values_ = 0;
};

}  // namespace tavlin
