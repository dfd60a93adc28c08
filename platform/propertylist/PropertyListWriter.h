#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Data.h"
#include "platform/foundation/GrowingBytes.h"
#include "platform/foundation/Value.h"

namespace ns {

/// Writes a binary property list, object after object, straight into the bytes of the file.
///
/// Each operation answers the new object's reference: its index in the object table.  Equal
/// scalars (strings, numbers of the same kind and width, data, UIDs) are written once and
/// answer the same reference.  Containers are begun with room for their references, which are
/// filled in later, in any order; a container that is never filled refers to object 0.
///
/// References take four bytes while the file is built; finish() narrows them where the number
/// of objects allows it.
class PropertyListWriter {
 public:
  using Reference = uint32_t;
  /// Where a container's references lie in the buffer.
  struct Container {
    Reference reference;
    size_t at;
    size_t count;
  };

  PropertyListWriter();

  /// Makes room beforehand; a guess costs nothing but address space.
  void reserve(size_t bytes, size_t objects);

  Reference boolean(bool value);
  /// The shortest form: 1, 2 or 4 bytes for 0 to 2^32 - 1, else 8.
  Reference integer(int64_t value);
  /// A number above 2^63 - 1, or any that was stored in 16 bytes, in that form.
  Reference integer16(uint64_t high, uint64_t low);
  Reference real32(uint32_t bits);
  Reference real64(uint64_t bits);
  Reference date(uint64_t bits);
  Reference data(std::string_view bytes);
  /// ASCII characters only.
  Reference ascii(std::string_view text);
  /// Big-endian UTF-16; text of ASCII characters is to be written with ascii().
  Reference utf16BigEndian(std::string_view bytes);
  Reference uid(uint32_t value);
  /// Whichever of the two string forms fits.
  Reference string(std::u16string_view units);
  Reference string(const String& string);
  /// A boolean, number, date, data or string.
  Reference value(const Value& value);

  /// A word of the caller's beside the scalar that the operation just before answered; 0 at
  /// first.  (A keyed archive keeps the scalar's entry number there.)  UIDs have none.
  uint32_t& word() { return *word_; }

  Container array(size_t count);
  /// `count` pairs: references 0 to count - 1 are the keys, count to 2 count - 1 the values.
  Container dictionary(size_t count);
  void set(const Container& container, size_t position, Reference reference) {
    store(buffer_.bytes() + container.at + position * 4, reference);
  }
  [[nodiscard]] uint32_t objectCount() const { return static_cast<uint32_t>(offsets_.size()); }
  /// An object as it stands in the file, but for the width of references; valid until the next
  /// operation.
  [[nodiscard]] std::string_view bytesOf(Reference reference) const;

  /// Ends the file with `top` as its top object and hands out its bytes.  Raises
  /// ArchiveException when there are more objects than references can name.
  Data finish(Reference top);

  // The parts of the format, for those who write some of it themselves.

  /// The fewest bytes of 1, 2, 4 or 8 that hold a number.
  static unsigned widthFor(uint64_t number);
  /// Appends a type's marker with a count.
  static void appendMarker(std::string& out, uint8_t type, size_t count);
  /// Stores the last `width` bytes of a number; answers where they end.
  static uint8_t* storeBigEndian(uint8_t* at, uint64_t number, unsigned width) {
    const uint64_t bigEndian = __builtin_bswap64(number << (64 - 8 * width));
    __builtin_memcpy(at, &bigEndian, width);
    return at + width;
  }

  /// The same in a table that is filled from front to back: eight bytes are stored, and what comes
  /// next takes those behind the number.  Behind the last one there must be room for them.
  static uint8_t* storeInTable(uint8_t* at, uint64_t number, unsigned width) {
    const uint64_t bigEndian = __builtin_bswap64(number << (64 - 8 * width));
    __builtin_memcpy(at, &bigEndian, sizeof bigEndian);
    return at + width;
  }

  static constexpr size_t kTrailerLength = 32;
  /// Stores what ends a file.
  static void storeTrailer(uint8_t* at, unsigned offsetSize, unsigned referenceSize, uint64_t count,
                           uint64_t top, uint64_t tableOffset);

  static void store(uint8_t* at, uint32_t value) {
    const uint32_t bigEndian = __builtin_bswap32(value);
    __builtin_memcpy(at, &bigEndian, sizeof bigEndian);
  }

 private:
  Reference begin();
  Reference begin(uint8_t type, size_t count);
  Container container(uint8_t type, size_t count, size_t references);
  /// The scalar with these bytes, written now or before.
  Reference scalar(std::string_view bytes);
  Reference counted(uint8_t type, size_t count, std::string_view content);
  Reference find(uint64_t hash, std::string_view head, std::string_view content);
  void grow();
  [[nodiscard]] uint64_t offsetOf(Reference reference) const;
  void narrow(unsigned width);

  struct Slot {
    uint32_t hash;
    Reference reference;  // plus 1; 0 marks a free slot
    uint32_t word;        // the caller's
  };
  struct Known {
    Reference reference = 0;  // plus 1; 0: not written yet
    uint32_t word = 0;
  };

  GrowingBytes buffer_;
  std::vector<uint32_t> offsets_;  // the low 32 bits
  std::vector<Reference> wraps_;   // first object of each further 4 GiB
  std::vector<Slot> slots_;
  size_t used_ = 0;
  std::vector<Reference> uids_;  // reference plus 1, by UID
  Known booleans_[2];
  Known bytes_[256];  // integers of one byte
  uint32_t* word_ = nullptr;
};

}  // namespace ns
