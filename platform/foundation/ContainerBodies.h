#pragma once

#include <unordered_map>
#include <vector>

#include "platform/foundation/ContainerAccess.h"

namespace ns {

class ArrayBody final : public ValueBody {
 public:
  ArrayBody() : ValueBody(Kind::array) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override { return values.size() * 31 + 1; }

  std::vector<Value> values;
  ClassRef archivedClass;
  Ref<const Origin> origin;
};

class DictionaryBody final : public ValueBody {
 public:
  DictionaryBody() : ValueBody(Kind::dictionary) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override { return entries.size() * 31 + 2; }

  /// The position of a key, or the number of entries.
  [[nodiscard]] size_t find(const Value& key) const;

  std::vector<Dictionary::Entry> entries;
  ClassRef archivedClass;
  Ref<const Origin> origin;
  /// Positions by hash, for dictionaries too long to search; made when first needed.
  mutable std::unordered_multimap<size_t, size_t> index;
};

/// Equality of two containers, by a list of pairs still to be compared instead of recursion.
/// Each pair of containers is compared once, however many ways lead to it.
bool equalContainers(const ValueBody& a, const ValueBody& b);

}  // namespace ns
