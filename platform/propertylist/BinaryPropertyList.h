#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Data.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/Value.h"

namespace ns {

/// A binary property list, read in place.
///
/// Opening checks the header, the trailer and the bounds of the offset table; an object's own
/// bytes are checked each time it is asked for, so nothing is paid for objects that nobody
/// reads.  No byte outside the file is ever used, whatever the file says.
///
/// Layout: "bplist00", objects back to back, the offset table, a trailer of 32 bytes; all
/// numbers big-endian.
class BinaryPropertyList {
 public:
  enum class Type : uint8_t {
    boolean,
    integer,
    real,
    date,
    data,
    ascii,
    utf16,
    uid,
    array,
    dictionary
  };

  /// What messages call an object: "a boolean", "an array".
  static const char* nameOf(Type type);

  /// One object of the table.  `bytes` is its content: the number of a scalar, the characters
  /// of a string, the references of a container (a dictionary's keys first, then its values).
  struct Object {
    Type type;
    uint8_t width;  ///< bytes of an integer, real or UID; of a boolean, its value
    const uint8_t* bytes;
    uint64_t count;  ///< bytes of data, units of a string, elements or pairs of a container

    [[nodiscard]] bool isString() const { return type == Type::ascii || type == Type::utf16; }
    [[nodiscard]] bool isContainer() const {
      return type == Type::array || type == Type::dictionary;
    }
    [[nodiscard]] std::string_view text() const {
      return {reinterpret_cast<const char*>(bytes), type == Type::utf16 ? count * 2 : count};
    }
  };

  /// The text of a string; none for an ASCII string with bytes above 127.
  static std::optional<String> string(const Object& object);
  /// The value of a scalar; none for a container, a UID, and text that is none.
  static Value scalar(const Object& object);

  static constexpr size_t kHeaderLength = 8;  ///< of "bplist00"
  /// Whether the data begins like a binary property list.
  static bool hasSignature(std::string_view data) { return data.substr(0, 6) == "bplist"; }

  /// Raises ArchiveException when header or trailer are unsound.  Shares the data.
  explicit BinaryPropertyList(Data data);

  [[nodiscard]] uint32_t objectCount() const { return count_; }
  [[nodiscard]] uint32_t topObject() const { return top_; }
  [[nodiscard]] size_t fileLength() const { return data_.length(); }
  [[nodiscard]] const Data& data() const { return data_; }
  /// Where the objects end.
  [[nodiscard]] uint64_t tableOffset() const { return tableOffset_; }
  [[nodiscard]] const uint8_t* bytesAt(uint64_t offset) const { return base_ + offset; }

  /// The object of an index below objectCount(); raises ArchiveException when its bytes are no
  /// object or run into the offset table.
  [[nodiscard]] Object object(uint32_t index) const { return object(index, offsetOf(index)); }
  /// The same where offsetOf() is at hand.
  [[nodiscard]] Object object(uint32_t index, uint64_t offset) const;
  /// Whether so many bytes are the same at two places.  Up to 8 bytes behind them are read.
  static bool areSame(const uint8_t* a, const uint8_t* b, size_t length) {
    const auto word = [](const uint8_t* at) {
      uint64_t bytes;
      std::memcpy(&bytes, at, sizeof bytes);
      return bytes;
    };
    for (; length > 8; a += 8, b += 8, length -= 8) {
      if (word(a) != word(b)) return false;
    }
    // the first byte is the lowest
    return length == 0 || (word(a) ^ word(b)) << (64 - 8 * length) == 0;
  }
  /// Whether the object of an index is a sound dictionary of less than 15 pairs, the usual kind;
  /// its references and the number of pairs.
  [[nodiscard]] bool isShortDictionary(uint32_t index, const uint8_t** references,
                                       uint64_t* count) const {
    return isShortDictionaryAt(offsetOf(index), references, count);
  }
  /// The same where offsetOf() is at hand.
  [[nodiscard]] bool isShortDictionaryAt(uint64_t offset, const uint8_t** references,
                                         uint64_t* count) const {
    return isShort(offset, 0xD0, uint64_t{2} * referenceSize_, references, count);
  }
  /// The same for an array of less than 15 elements.
  [[nodiscard]] bool isShortArray(uint32_t index, const uint8_t** references,
                                  uint64_t* count) const {
    return isShort(offsetOf(index), 0xA0, referenceSize_, references, count);
  }
  /// Whether the object of an index is a sound UID, and its number.
  [[nodiscard]] bool isUid(uint32_t index, uint64_t* number) const {
    const uint64_t offset = offsetOf(index);
    if (!isAmongObjects(offset)) return false;
    const uint8_t* at = base_ + offset;
    constexpr unsigned kWidest = 7;
    const unsigned width = *at - 0x80U;  // less one
    if (width > kWidest || tableOffset_ - offset - 1 <= width) return false;
    *number = load(at + 1, width + 1);
    return true;
  }
  /// Where an object ends.
  [[nodiscard]] uint64_t endOf(const Object& object) const {
    uint64_t length = 0;
    switch (object.type) {
      case Type::boolean:
        break;
      case Type::array:
      case Type::dictionary:
        length = referenceCount(object) * referenceSize_;
        break;
      default:
        length = object.width + object.text().size();
    }
    return static_cast<uint64_t>(object.bytes - base_) + length;
  }
  /// How many references a container is made of.
  static uint64_t referenceCount(const Object& container) {
    return container.count * (container.type == Type::array ? 1 : 2);
  }
  /// The byte offset of an object, unchecked.
  [[nodiscard]] uint64_t offsetOf(uint32_t index) const {
    return loadShifted(table_ + size_t{index} * offsetSize_, offsetShift_);
  }

  /// The i-th reference of a container's content; raises ArchiveException when it is not below
  /// objectCount().
  [[nodiscard]] uint32_t reference(const uint8_t* references, uint64_t i) const {
    const uint64_t found = loadShifted(references + i * referenceSize_, referenceShift_);
    if (found >= count_) failReference(references + i * referenceSize_, found);
    return static_cast<uint32_t>(found);
  }
  /// Calls `use` with each of so many references; raises as reference() does.  Costs less than one
  /// after the other where all references of a file are looked at.
  template <class Use>
  void forEachReference(const uint8_t* references, uint64_t count, Use use) const {
    const uint32_t size = referenceSize_;
    const uint32_t shift = referenceShift_;
    const uint32_t limit = count_;
    for (const uint8_t* end = references + count * size; references != end; references += size) {
      const uint64_t found = loadShifted(references, shift);
      if (found >= limit) failReference(references, found);
      use(static_cast<uint32_t>(found));
    }
  }
  void prefetchOffset(uint32_t index) const {
    __builtin_prefetch(table_ + size_t{index} * offsetSize_);
  }
  void prefetchObject(uint32_t index) const {
    const uint64_t offset = offsetOf(index);
    if (offset < tableOffset_) __builtin_prefetch(base_ + offset);
  }
  [[nodiscard]] uint32_t referenceSize() const { return referenceSize_; }

  /// An unsigned big-endian number of 1 to 8 bytes.  Up to 8 bytes are read from `bytes`: inside
  /// a list the trailer always follows.
  static uint64_t load(const uint8_t* bytes, unsigned width) {
    return loadShifted(bytes, 64 - 8 * width);
  }

 private:
  /// Whether there is a sound object at an offset whose marker holds its count, below 15.
  [[nodiscard]] bool isShort(uint64_t offset, unsigned firstMarker, uint64_t unit,
                             const uint8_t** content, uint64_t* count) const {
    if (!isAmongObjects(offset)) return false;
    const uint8_t* at = base_ + offset;
    const unsigned held = *at - firstMarker;
    if (held > 14 || held * unit > tableOffset_ - offset - 1) return false;
    *content = at + 1;
    *count = held;
    return true;
  }
  /// Whether an object may begin at an offset.
  [[nodiscard]] bool isAmongObjects(uint64_t offset) const {
    return offset >= kHeaderLength && offset < tableOffset_;
  }
  /// The first bytes of eight, as many as a shift to the right leaves.
  static uint64_t loadShifted(const uint8_t* bytes, unsigned shift) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return __builtin_bswap64(word) >> shift;
  }
  [[noreturn]] void fail(uint64_t offset, uint32_t index, const std::string& what) const;
  [[noreturn]] void failReference(const uint8_t* at, uint64_t found) const;
  [[noreturn]] void failObject(uint32_t index, uint64_t offset) const;

  Data data_;
  const uint8_t* base_;
  const uint8_t* table_;
  uint64_t tableOffset_;
  uint32_t count_;
  uint32_t top_;
  // words, so that no byte that somebody writes could be one of them
  uint32_t offsetSize_;
  uint32_t referenceSize_;
  uint32_t offsetShift_;
  uint32_t referenceShift_;
};

inline BinaryPropertyList::Object BinaryPropertyList::object(uint32_t index,
                                                             uint64_t offset) const {
  if (!isAmongObjects(offset)) failObject(index, offset);
  const uint8_t* at = base_ + offset;
  const uint64_t space = tableOffset_ - offset - 1;  // bytes behind the marker
  const uint8_t marker = *at++;
  const uint8_t low = marker & 15;
  Type type;
  uint64_t unit = 1;
  switch (marker >> 4) {
    case 0x0:
      if (low == 8 || low == 9) return {Type::boolean, static_cast<uint8_t>(low & 1), at, 0};
      failObject(index, offset);
    case 0x1:
      if (low > 4 || (1U << low) > space) failObject(index, offset);
      return {Type::integer, static_cast<uint8_t>(1U << low), at, 0};
    case 0x2:
      if ((low != 2 && low != 3) || (1U << low) > space) failObject(index, offset);
      return {Type::real, static_cast<uint8_t>(1U << low), at, 0};
    case 0x3:
      if (low != 3 || space < 8) failObject(index, offset);
      return {Type::date, 8, at, 0};
    case 0x8:
      if (low > 7 || low + 1U > space) failObject(index, offset);
      return {Type::uid, static_cast<uint8_t>(low + 1), at, 0};
    case 0x4:
      type = Type::data;
      break;
    case 0x5:
      type = Type::ascii;
      break;
    case 0x6:
      type = Type::utf16;
      unit = 2;
      break;
    case 0xA:
      type = Type::array;
      unit = referenceSize_;
      break;
    case 0xD:
      type = Type::dictionary;
      unit = uint64_t{2} * referenceSize_;
      break;
    default:
      failObject(index, offset);
  }
  uint64_t count = low;
  uint64_t left = space;
  if (low == 15) {
    // a count of 15 or more stands behind the marker as an integer object
    if (left < 2 || (*at & 0xF0) != 0x10 || (*at & 15) > 3) failObject(index, offset);
    const unsigned width = 1U << (*at & 15);
    if (left < 1 + width) failObject(index, offset);
    count = load(at + 1, width);
    at += 1 + width;
    left -= 1 + width;
  }
  // neither product overflows: what is left is less than a file can be long
  if (count > left || count * unit > left) failObject(index, offset);
  return {type, 0, at, count};
}

}  // namespace ns
