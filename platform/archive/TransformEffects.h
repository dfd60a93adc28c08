#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/archive/StoredArchive.h"
#include "platform/archive/TextKey.h"
#include "platform/archive/ValueTransform.h"

namespace ns {

class KeyedArchive;

/// Which objects of an archive transforms change.  Found out once for each transform, when it is
/// first asked for.
class TransformEffects {
 public:
  /// Whether a transform changes anything in the archive.
  bool changesAnything(const KeyedArchive& archive, const ValueTransform& transform);
  /// Whether it changes anything in what a number stands for.
  bool changes(const KeyedArchive& archive, const ValueTransform& transform, uint32_t number);
  /// Whether it changes a stored text; found out once for a long one, however many objects have it.
  bool changesText(const ValueTransform& transform, const StoredArchive::Object& text);
  /// Whether it may change any attributed string.
  bool mayChangeAttributedStrings(const KeyedArchive& archive, const ValueTransform& transform);

 private:
  struct Changes {
    bool nothing = false;
    std::vector<bool> changed;  // by number
  };
  const Changes& changesOf(const KeyedArchive& archive, const ValueTransform& transform);
  /// The strings and attributed strings that a transform changes.
  std::vector<uint32_t> changedTexts(const KeyedArchive& archive, const ValueTransform& transform);
  std::unordered_map<const ValueTransform*, Changes> changes_;
  std::unordered_map<TransformedText, bool, TransformedTextHash> longTexts_;  // whether changed
  std::unordered_map<const void*, bool> attributedStringChanges_;             // by the rule
};

}  // namespace ns
