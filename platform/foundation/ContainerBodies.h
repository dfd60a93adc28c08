#pragma once

#include <memory>
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

  [[nodiscard]] size_t count() const {
    return entries_.size() - (index_ ? index_->holes.size() : 0);
  }
  [[nodiscard]] const std::vector<Entry>& entries() const {
    if (index_ && !index_->holes.empty()) closeHoles();
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

 private:
  /// What only a long dictionary has; apart, because most are short.
  struct Index {
    /// The position of the first entry with each key, by hash.
    std::unordered_multimap<size_t, size_t> positions;
    std::vector<size_t> holes;  ///< positions of removed entries
  };

  /// Whether there are too many entries to search them one by one.
  [[nodiscard]] bool isLong() const;
  /// The position of the first entry with a key, or the number of entries.
  [[nodiscard]] size_t position(const Value& key) const;
  [[nodiscard]] size_t indexedPosition(const Index& index, const Value& key, size_t hash) const;
  void makeIndex() const;
  void closeHoles() const;
  void dropRepeatedKeys();

  // What look-ups read comes first, so that it usually lies in one line of a cache.
  // Closing holes and making the index change nothing that anybody can see.
  static constexpr uint8_t kNotCounted = 255;
  mutable uint8_t keyCount_ = kNotCounted;  ///< kept only without an index
  mutable std::vector<Entry> entries_;
  mutable std::unique_ptr<Index> index_;  ///< only of a long one, and once it was needed

 public:
  ClassRef archivedClass;
  Ref<const Origin> origin;
};

/// Whether two values are one key.  As equality, except that containers inside a key, and
/// dictionaries as keys, have to be the very same one: a look-up must not have to walk documents.
bool areSameKey(const Value& a, const Value& b);

/// Equality of two containers, in a loop instead of a recursion.  Takes time in proportion to
/// what is compared, however often it is shared.
bool equalContainers(const ValueBody& a, const ValueBody& b);

}  // namespace ns
