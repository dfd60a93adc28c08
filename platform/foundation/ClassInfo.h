#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ns {

/// The class of an archived object, as an archive describes it: its name, the chain from the
/// class itself to its root class, and the substitute classes named for readers that lack it.
///
/// Immutable and shared; compare with `==` for equal content.
struct ClassInfo {
  std::string name;                ///< "NSMutableArray"; UTF-8
  std::vector<std::string> chain;  ///< {"NSMutableArray", "NSArray", "NSObject"}
  std::vector<std::string> hints;  ///< substitutes; usually empty
  bool hasChain = true;            ///< false: the archive's record had no "$classes"

  bool operator==(const ClassInfo&) const = default;

  /// Whether the chain names the class `ancestor` (the class itself included).
  [[nodiscard]] bool inheritsFrom(std::string_view ancestor) const;
};

using ClassRef = std::shared_ptr<const ClassInfo>;

/// A class given by its chain, most derived class first.
ClassRef makeClass(std::vector<std::string> chain);

}  // namespace ns
