#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/foundation/Data.h"
#include "platform/foundation/Exception.h"

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

  /// One object of the table.  `bytes` is its content: the number of a scalar, the characters
  /// of a string, the references of a container (a dictionary's keys first, then its values).
  struct Object {
    Type type;
    uint8_t width;  ///< bytes of an integer, real or UID; of a boolean, its value
    const uint8_t* bytes;
    uint64_t count;  ///< bytes of data, units of a string, elements or pairs of a container

    [[nodiscard]] bool isString() const { return type == Type::ascii || type == Type::utf16; }
    [[nodiscard]] std::string_view text() const {
      return {reinterpret_cast<const char*>(bytes), type == Type::utf16 ? count * 2 : count};
    }
  };

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
  [[nodiscard]] Object object(uint32_t index) const;
  /// The byte offset of an object, unchecked, for messages.
  [[nodiscard]] uint64_t offsetOf(uint32_t index) const {
    return load(table_ + size_t{index} * offsetSize_, offsetSize_);
  }

  /// The i-th reference of a container's content; raises ArchiveException when it is not below
  /// objectCount().
  [[nodiscard]] uint32_t reference(const uint8_t* references, uint64_t i) const {
    const uint64_t found = load(references + i * referenceSize_, referenceSize_);
    if (found >= count_) failReference(references + i * referenceSize_, found);
    return static_cast<uint32_t>(found);
  }
  void prefetchOffset(uint32_t index) const {
    __builtin_prefetch(table_ + size_t{index} * offsetSize_);
  }
  void prefetchObject(uint32_t index) const {
    const uint64_t offset = offsetOf(index);
    if (offset < tableOffset_) __builtin_prefetch(base_ + offset);
  }
  [[nodiscard]] uint8_t referenceSize() const { return referenceSize_; }

  /// An unsigned big-endian number of 1 to 8 bytes.  Up to 8 bytes are read from `bytes`: inside
  /// a list the trailer always follows.
  static uint64_t load(const uint8_t* bytes, unsigned width) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return __builtin_bswap64(word) >> (64 - 8 * width);
  }

 private:
  [[noreturn]] void fail(uint64_t offset, uint32_t index, const std::string& what) const;
  [[noreturn]] void failReference(const uint8_t* at, uint64_t found) const;
  [[noreturn]] void failObject(uint32_t index, uint64_t offset) const;

  Data data_;
  const uint8_t* base_;
  const uint8_t* table_;
  uint64_t tableOffset_;
  uint32_t count_;
  uint32_t top_;
  uint8_t offsetSize_;
  uint8_t referenceSize_;
};

inline BinaryPropertyList::Object BinaryPropertyList::object(uint32_t index) const {
  const uint64_t offset = offsetOf(index);
  if (offset < 8 || offset >= tableOffset_) failObject(index, offset);
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
  if (count > left / unit) failObject(index, offset);
  return {type, 0, at, count};
}

}  // namespace ns
