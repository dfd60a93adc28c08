#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/archive/ClassRegistry.h"
#include "platform/foundation/ClassInfo.h"
#include "platform/foundation/String.h"
#include "platform/propertylist/BinaryPropertyList.h"

namespace ns {

/// A class that an archive names.
struct ArchivedClass {
  ClassRef info;
  const ClassCoding* coding;  ///< none for a class that the registry does not know
  uint32_t number;            ///< of its class record
  bool isImmutableArray;      ///< NSArray itself
  [[nodiscard]] Kind kind() const { return coding ? coding->kind : Kind::record; }
};

/// The keys that a number of records of an archive have in common, in the same order.
class ArchiveShape {
 public:
  /// For the `count` keys that stand at `references` in the file; they are added one by one.
  ArchiveShape(uint32_t number, const uint8_t* references, uint32_t count)
      : count_(count),
        literals_(count),
        references_(references),
        number_(number),
        class_(count),
        className_(count) {}
  void addKey(const String& key);

  [[nodiscard]] uint32_t count() const { return count_; }
  [[nodiscard]] const String& key(uint32_t position) const { return keys_[position]; }
  /// The position of a key, or count().  A literal is found by its address the second time.
  [[nodiscard]] uint32_t find(const char* literal) const {
    // fields are mostly read in the order they were written in
    const uint32_t next = recent_ + 1;
    if (next < count() && literals_[next] == literal) return recent_ = next;
    for (uint32_t i = 0; i < count(); ++i) {
      if (literals_[i] == literal) return recent_ = i;
    }
    return literal == absent_ ? count() : findNew(literal);
  }
  /// The same for any other text, which need not stay.
  [[nodiscard]] uint32_t find(const String& key) const;
  /// Whether there are no keys but these, which stay, and "$class".  Quick where it was the last
  /// that was asked.
  [[nodiscard]] bool hasOnly(std::span<const char* const> keys) const {
    return keys.data() == whole_ || findOthers(keys);
  }
  /// The position of "$class", or count().
  [[nodiscard]] uint32_t classPosition() const { return class_; }
  /// The position of "$classname", or count().
  [[nodiscard]] uint32_t classNamePosition() const { return className_; }
  /// The references of the keys, in the file.
  [[nodiscard]] const uint8_t* references() const { return references_; }
  /// The shapes of an archive are numbered from 0 as they are met.
  [[nodiscard]] uint32_t number() const { return number_; }
  /// Whether so many references, each of so many bytes, are those of the keys.
  [[nodiscard]] bool hasKeys(const uint8_t* references, uint64_t count, size_t width) const {
    return count_ == count && BinaryPropertyList::areSame(references_, references, count * width);
  }

  /// The class of the records that were looked at last, and the reference that named it there.
  struct RecentClass {
    uint32_t index = 0;
    const ArchivedClass* found = nullptr;
  };
  /// Two of them, the last one first.
  [[nodiscard]] RecentClass (&recentClasses() const)[2] { return recentClasses_; }

 private:
  [[nodiscard]] uint32_t findNew(const char* literal) const;
  [[nodiscard]] bool findOthers(std::span<const char* const> keys) const;

  std::vector<String> keys_;
  uint32_t count_;
  mutable std::vector<const char*> literals_;   // by position, of keys that were found once
  mutable uint32_t recent_ = 0;                 // the position found last
  mutable const char* absent_ = nullptr;        // a literal that was looked for in vain
  mutable const char* const* whole_ = nullptr;  // keys beside which there are none
  const uint8_t* references_;                   // of the keys, in the file
  uint32_t number_;
  mutable RecentClass recentClasses_[2];
  uint32_t class_;
  uint32_t className_;
};

}  // namespace ns
