// Containers, and the end of a property list's file.

#include <cstring>

#include "platform/foundation/Exception.h"
#include "platform/propertylist/BinaryPropertyList.h"
#include "platform/propertylist/PropertyListWriter.h"

namespace ns {

unsigned PropertyListWriter::widthFor(uint64_t number) {
  if (number < 0x100) return 1;
  if (number < 0x10000) return 2;
  return number <= 0xFFFFFFFF ? 4 : 8;
}

PropertyListWriter::Container PropertyListWriter::container(uint8_t type, size_t count,
                                                            size_t references) {
  const Reference reference = begin();
  std::string head;
  appendMarker(head, type, count);
  buffer_.append(head);
  const size_t at = buffer_.size();
  std::memset(buffer_.extend(references * 4), 0, references * 4);
  return {reference, at, references};
}

PropertyListWriter::Container PropertyListWriter::array(size_t count) {
  return container(0xA0, count, count);
}

PropertyListWriter::Container PropertyListWriter::dictionary(size_t count) {
  return container(0xD0, count, count * 2);
}

/// Rewrites the objects with references of fewer bytes.
void PropertyListWriter::narrow(unsigned width) {
  const std::string_view wide = buffer_.view();
  GrowingBytes narrowed;
  narrowed.reserve(wide.size());
  narrowed.append(wide.substr(0, BinaryPropertyList::kHeaderLength));
  for (size_t index = 0; index < offsets_.size(); ++index) {
    const size_t from = offsets_[index];
    const size_t to = index + 1 < offsets_.size() ? offsets_[index + 1] : wide.size();
    offsets_[index] = static_cast<uint32_t>(narrowed.size());
    const auto marker = static_cast<uint8_t>(wide[from]);
    if ((marker & 0xF0) != 0xA0 && (marker & 0xF0) != 0xD0) {
      narrowed.append(wide.substr(from, to - from));
      continue;
    }
    size_t at = from + 1;
    if ((marker & 15) == 15) at += 1 + (size_t{1} << (wide[at] & 15));
    narrowed.append(wide.substr(from, at - from));
    for (; at < to; at += 4) narrowed.append(wide.substr(at + 4 - width, width));
  }
  buffer_ = std::move(narrowed);
}

void PropertyListWriter::storeTrailer(uint8_t* at, unsigned offsetSize, unsigned referenceSize,
                                      uint64_t count, uint64_t top, uint64_t tableOffset) {
  constexpr size_t kUnused = 6;
  std::memset(at, 0, kUnused);
  at = storeBigEndian(at + kUnused, offsetSize, 1);
  at = storeBigEndian(at, referenceSize, 1);
  at = storeBigEndian(at, count, 8);
  at = storeBigEndian(at, top, 8);
  (void)storeBigEndian(at, tableOffset, 8);
}

Data PropertyListWriter::finish(Reference top) {
  const uint64_t count = offsets_.size();
  // the width must hold the count itself, not just the last index
  const unsigned referenceSize = wraps_.empty() ? widthFor(count) : 4;
  if (referenceSize < 4) narrow(referenceSize);
  const uint64_t tableOffset = buffer_.size();
  const unsigned offsetSize = widthFor(tableOffset);
  uint64_t high = 0;
  size_t wrap = 0;
  uint8_t* out = buffer_.extend(count * offsetSize + kTrailerLength);
  for (size_t index = 0; index < count; ++index) {
    while (wrap < wraps_.size() && wraps_[wrap] <= index) {
      ++wrap;
      high += uint64_t{1} << 32;
    }
    out = storeInTable(out, high | offsets_[index], offsetSize);
  }
  storeTrailer(out, offsetSize, referenceSize, count, top, tableOffset);
  Data result = buffer_.finish();
  *this = PropertyListWriter();
  return result;
}

}  // namespace ns
