#pragma once

#include <memory>
#include <span>
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

/// The entries of a dictionary, which lie in one piece with the body while they are few: most
/// dictionaries belong to items of outlines, and what a walk costs is the memory it has to fetch.
/// More entries than there is room for are held apart, for good, with an index by hash made when
/// first needed.  They have holes where entries were removed until somebody looks at all of them,
/// so that setting, finding and removing a key take the same time however many there are.
class DictionaryBody final : public ValueBody {
 public:
  using Entry = Dictionary::Entry;

  /// An empty body with room for so many entries, exactly.
  static Ref<DictionaryBody> make(size_t room = 0);
  /// A body with the same entries and archived class, without origin, and with room for `more`
  /// entries and some to come.  Takes the entries over, or copies them for a shared body.
  static Ref<DictionaryBody> remake(DictionaryBody& body, size_t more);
  ~DictionaryBody() override;

  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override;

  [[nodiscard]] size_t count() const;
  /// Valid until the next edit.
  [[nodiscard]] std::span<const Entry> entries() const;
  /// The value of the first entry with a key, or null; valid until the next edit.
  [[nodiscard]] const Value* find(const Value& key) const;
  /// How many keys there are; less than count() where a key is repeated, as archives may do.
  [[nodiscard]] size_t keyCount() const;
  /// Whether so many entries can be added.
  [[nodiscard]] bool hasRoomFor(size_t more) const { return many() || count_ + more <= room_; }

  /// Adds an entry, for which there is room.  Its key is new, unless nobody has looked for keys
  /// yet.
  void add(Entry entry);
  /// Replaces the value of the first entry with a key that is there.
  void replace(const Value& key, Value value);
  /// Every entry with the key.
  void remove(const Value& key);
  void removeAll();

  [[nodiscard]] const ClassRef& archivedClass() const;
  void setArchivedClass(ClassRef archivedClass);
  /// Valid while the body lives unchanged; null for none.
  [[nodiscard]] const Origin* origin() const { return rare_ ? rare_->origin.get() : nullptr; }
  void setOrigin(Ref<const Origin> origin);

 private:
  struct Index {
    void add(const Value& key, size_t hash, size_t position);
    void remove(const Value& key, size_t position);

    /// The position of the first entry with each key, by hash.  Of texts with attributes, records
    /// and arrays, which take long to compare, only so many are kept under one hash; from there on
    /// only the very same one is the same key, kept under its address, so that a file cannot have
    /// each compared to all others.
    static constexpr size_t kMostAlike = 16;
    std::unordered_multimap<size_t, size_t> positions;
    std::vector<size_t> holes;  ///< positions of removed entries
  };
  /// The entries held apart.
  struct Many {
    std::vector<Entry> entries;
    std::unique_ptr<Index> index;  ///< once it was needed
  };
  /// What few dictionaries have.
  struct Rare {
    ClassRef archivedClass;
    Ref<const Origin> origin;
    std::unique_ptr<Many> many;
  };

  explicit DictionaryBody(size_t room)
      : ValueBody(Kind::dictionary), room_(static_cast<uint8_t>(room)) {}
  static void* operator new(size_t size, size_t extra) { return ::operator new(size + extra); }
  static void operator delete(void* at) { ::operator delete(at); }
  static void operator delete(void* at, size_t /*extra*/) { ::operator delete(at); }
  [[nodiscard]] Entry* own() const {
    return reinterpret_cast<Entry*>(const_cast<DictionaryBody*>(this) + 1);
  }
  [[nodiscard]] Rare& rare();
  [[nodiscard]] Many* many() const { return rare_ ? rare_->many.get() : nullptr; }
  /// The entries with their holes.
  [[nodiscard]] std::span<Entry> slots() const {
    return many() ? std::span(many()->entries) : std::span(own(), count_);
  }

  /// Whether there are too many entries to search them one by one.
  [[nodiscard]] bool isLong() const { return many() && many()->entries.size() > kSearched; }
  /// The position of the first entry with a key, or the number of entries.
  [[nodiscard]] size_t position(const Value& key) const;
  [[nodiscard]] static size_t indexedPosition(std::span<const Entry> entries, const Index& index,
                                              const Value& key, size_t hash);
  /// The index of a long one.
  [[nodiscard]] Index& index() const;
  void closeHoles() const;
  void dropRepeatedKeys();

  // Closing holes and making the index change nothing that anybody can see.
  static constexpr size_t kSearched = 8;
  static constexpr uint8_t kNotCounted = 255;
  mutable uint8_t keyCount_ = kNotCounted;  ///< kept only of a short one
  uint8_t count_ = 0;                       ///< of the entries behind the body
  const uint8_t room_;                      ///< for these
  std::unique_ptr<Rare> rare_;
};

/// Whether two values are one key.  As equality, except that containers inside a key, and
/// dictionaries as keys, have to be the very same one: a look-up must not have to walk documents.
bool areSameKey(const Value& a, const Value& b);

/// Equality of two containers, in a loop instead of a recursion.  Takes time in proportion to
/// what is compared, however often it is shared.
bool equalContainers(const ValueBody& a, const ValueBody& b);

}  // namespace ns
