#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/foundation/ContainerAccess.h"

namespace ns {

class ArrayBody final : public ValueBody {
 public:
  ArrayBody() : ValueBody(Kind::array) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override;

  std::vector<Value> values;
  ClassRef archivedClass;
  Ref<const Origin> origin;
};

/// The entries of a dictionary.  A long one has an index by hash, made when first needed, and
/// leaves holes where entries were removed until somebody looks at all of them, so that setting,
/// finding and removing a key take the same time however many there are.
class DictionaryBody final : public ValueBody {
 public:
  using Entry = Dictionary::Entry;

  DictionaryBody() : ValueBody(Kind::dictionary) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override;

  [[nodiscard]] size_t count() const { return entries_.size() - holes_.size(); }
  [[nodiscard]] const std::vector<Entry>& entries() const {
    if (!holes_.empty()) closeHoles();
    return entries_;
  }
  /// The value of the first entry with a key, or null; valid until the next edit.
  [[nodiscard]] const Value* find(const Value& key) const;
  /// How many keys there are; less than count() where a key is repeated, as archives may do.
  [[nodiscard]] size_t keyCount() const;

  void assign(std::vector<Entry> entries);
  void set(const Value& key, Value value);
  /// Every entry with the key.
  void remove(const Value& key);

  ClassRef archivedClass;
  Ref<const Origin> origin;

 private:
  /// Whether there are too many entries to search them one by one.
  [[nodiscard]] bool isLong() const;
  /// The position of the first entry with a key, or the number of entries.
  [[nodiscard]] size_t position(const Value& key) const;
  void makeIndex() const;
  void closeHoles() const;
  void dropRepeatedKeys();

  // Closing holes and making the index change nothing that anybody can see.
  mutable std::vector<Entry> entries_;
  mutable std::vector<size_t> holes_;  ///< positions; only with an index
  /// The position of the first entry with each key, by hash; empty where there is no index.
  mutable std::unordered_multimap<size_t, size_t> index_;
  mutable std::optional<size_t> keyCount_;  ///< kept only without an index
};

/// Whether two values are one key.  As equality, except that containers inside a key, and
/// dictionaries as keys, have to be the very same one: a look-up must not have to walk documents.
bool areSameKey(const Value& a, const Value& b);

/// Equality of two containers, in a loop instead of a recursion.  Takes time in proportion to
/// what is compared, however often it is shared.
bool equalContainers(const ValueBody& a, const ValueBody& b);

}  // namespace ns
