#include "platform/propertylist/PropertyListWriter.h"

#include <bit>
#include <cstring>

#include "platform/foundation/Exception.h"
#include "platform/propertylist/BinaryPropertyList.h"

namespace ns {

namespace {

constexpr uint64_t kMostObjects = 0xFFFFFF00U;

template <class T>
void appendBigEndian(std::string& out, T value) {
  for (int shift = 8 * (int{sizeof(T)} - 1); shift >= 0; shift -= 8) {
    out.push_back(static_cast<char>(static_cast<uint8_t>(value >> shift)));
  }
}

template <class T>
std::string bigEndian(T value) {
  std::string bytes;
  appendBigEndian(bytes, value);
  return bytes;
}

__extension__ using Product = unsigned __int128;

uint64_t mix(uint64_t a, uint64_t b) {
  const Product product = static_cast<Product>(a ^ 0x9E3779B97F4A7C15U) * (b ^ 0xD6E8FEB86659FD93U);
  return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

uint64_t hashBytes(std::string_view bytes, uint64_t seed) {
  uint64_t hash = seed ^ bytes.size();
  const char* at = bytes.data();
  size_t left = bytes.size();
  uint64_t a = 0;
  uint64_t b = 0;
  while (left > 16) {
    std::memcpy(&a, at, 8);
    std::memcpy(&b, at + 8, 8);
    hash = mix(a ^ hash, b);
    at += 16;
    left -= 16;
  }
  a = b = 0;
  if (left >= 8) {
    std::memcpy(&a, at, 8);
    std::memcpy(&b, at + left - 8, 8);
  } else if (left > 0) {
    std::memcpy(&a, at, left);
  }
  return mix(a ^ hash, b + left);
}

}  // namespace

void PropertyListWriter::appendMarker(std::string& out, uint8_t type, size_t count) {
  if (count < 15) {
    out.push_back(static_cast<char>(type | count));
    return;
  }
  out.push_back(static_cast<char>(type | 15));
  if (count < 0x100) {
    out.push_back(0x10);
    appendBigEndian(out, static_cast<uint8_t>(count));
  } else if (count < 0x10000) {
    out.push_back(0x11);
    appendBigEndian(out, static_cast<uint16_t>(count));
  } else if (count <= 0xFFFFFFFF) {
    out.push_back(0x12);
    appendBigEndian(out, static_cast<uint32_t>(count));
  } else {
    out.push_back(0x13);
    appendBigEndian(out, static_cast<uint64_t>(count));
  }
}

PropertyListWriter::PropertyListWriter() { buffer_.append("bplist00"); }

void PropertyListWriter::reserve(size_t bytes, size_t objects) {
  buffer_.reserve(bytes);
  offsets_.reserve(objects);
}

PropertyListWriter::Reference PropertyListWriter::begin() {
  if (offsets_.size() >= kMostObjects) {
    throw ArchiveException("binary property list: too many objects to write");
  }
  const uint64_t offset = buffer_.size();
  const auto reference = static_cast<Reference>(offsets_.size());
  while ((offset >> 32) > wraps_.size()) wraps_.push_back(reference);
  offsets_.push_back(static_cast<uint32_t>(offset));
  return reference;
}

uint64_t PropertyListWriter::offsetOf(Reference reference) const {
  uint64_t high = 0;
  while (high < wraps_.size() && wraps_[high] <= reference) ++high;
  return high << 32 | offsets_[reference];
}

void PropertyListWriter::grow() {
  std::vector<Slot> old(slots_.empty() ? 256 : slots_.size() * 2, Slot{0, 0, 0});
  old.swap(slots_);
  const size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.reference == 0) continue;
    size_t at = slot.hash & mask;
    while (slots_[at].reference != 0) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

PropertyListWriter::Reference PropertyListWriter::find(uint64_t hash, std::string_view head,
                                                       std::string_view content) {
  if ((used_ + 1) * 4 > slots_.size() * 3) grow();
  const auto shortHash = static_cast<uint32_t>(hash >> 32);
  const size_t mask = slots_.size() - 1;
  const size_t length = head.size() + content.size();
  for (size_t at = shortHash & mask;; at = (at + 1) & mask) {
    Slot& slot = slots_[at];
    if (slot.reference == 0) {
      const Reference reference = begin();
      buffer_.append(head);
      buffer_.append(content);
      slot = {shortHash, reference + 1, 0};
      ++used_;
      word_ = &slot.word;
      return reference;
    }
    if (slot.hash != shortHash) continue;
    // an object's marker tells its length, so equal leading bytes are the same object
    const uint64_t offset = offsetOf(slot.reference - 1);
    const std::string_view known = buffer_.view().substr(offset);
    if (known.size() >= length && known.starts_with(head) &&
        known.substr(head.size()).starts_with(content)) {
      word_ = &slot.word;
      return slot.reference - 1;
    }
  }
}

PropertyListWriter::Reference PropertyListWriter::scalar(std::string_view bytes) {
  return find(hashBytes(bytes, 1), bytes, {});
}

PropertyListWriter::Reference PropertyListWriter::counted(uint8_t type, size_t count,
                                                          std::string_view content) {
  std::string head;
  appendMarker(head, type, count);
  return find(hashBytes(content, type), head, content);
}

PropertyListWriter::Reference PropertyListWriter::boolean(bool value) {
  Known& known = booleans_[value ? 1 : 0];
  if (known.reference == 0) {
    known.reference = begin() + 1;
    buffer_.append(value ? uint8_t{0x09} : uint8_t{0x08});
  }
  word_ = &known.word;
  return known.reference - 1;
}

PropertyListWriter::Reference PropertyListWriter::integer(int64_t value) {
  if (value >= 0 && value < 256) {
    Known& known = bytes_[value];
    if (known.reference == 0) {
      known.reference = begin() + 1;
      buffer_.append(uint8_t{0x10});
      buffer_.append(static_cast<uint8_t>(value));
    }
    word_ = &known.word;
    return known.reference - 1;
  }
  std::string bytes;
  if (value < 0 || value > 0xFFFFFFFF) {
    bytes.push_back(0x13);
    appendBigEndian(bytes, static_cast<uint64_t>(value));
  } else if (value < 0x10000) {
    bytes.push_back(0x11);
    appendBigEndian(bytes, static_cast<uint16_t>(value));
  } else {
    bytes.push_back(0x12);
    appendBigEndian(bytes, static_cast<uint32_t>(value));
  }
  return scalar(bytes);
}

PropertyListWriter::Reference PropertyListWriter::integer16(uint64_t high, uint64_t low) {
  std::string bytes(1, 0x14);
  appendBigEndian(bytes, high);
  appendBigEndian(bytes, low);
  return scalar(bytes);
}

PropertyListWriter::Reference PropertyListWriter::real32(uint32_t bits) {
  std::string bytes(1, 0x22);
  appendBigEndian(bytes, bits);
  return scalar(bytes);
}

PropertyListWriter::Reference PropertyListWriter::real64(uint64_t bits) {
  std::string bytes(1, 0x23);
  appendBigEndian(bytes, bits);
  return scalar(bytes);
}

PropertyListWriter::Reference PropertyListWriter::date(uint64_t bits) {
  std::string bytes(1, 0x33);
  appendBigEndian(bytes, bits);
  return scalar(bytes);
}

PropertyListWriter::Reference PropertyListWriter::data(std::string_view bytes) {
  return counted(0x40, bytes.size(), bytes);
}

PropertyListWriter::Reference PropertyListWriter::ascii(std::string_view text) {
  return counted(0x50, text.size(), text);
}

PropertyListWriter::Reference PropertyListWriter::utf16BigEndian(std::string_view bytes) {
  return counted(0x60, bytes.size() / 2, bytes);
}

PropertyListWriter::Reference PropertyListWriter::string(std::u16string_view units) {
  std::string bytes;
  bool isAscii = true;
  for (const char16_t unit : units) isAscii = isAscii && unit < 0x80;
  if (isAscii) {
    bytes.assign(units.begin(), units.end());
    return ascii(bytes);
  }
  bytes.reserve(units.size() * 2);
  for (const char16_t unit : units) appendBigEndian(bytes, static_cast<uint16_t>(unit));
  return utf16BigEndian(bytes);
}

PropertyListWriter::Reference PropertyListWriter::string(const String& string) {
  return string.isAscii() ? ascii(string.ascii()) : this->string(string.wide());
}

PropertyListWriter::Reference PropertyListWriter::value(const Value& value) {
  switch (value.kind()) {
    case Kind::boolean:
      return boolean(value.boolValue());
    case Kind::integer: {
      const Integer number = value.integer();
      const bool isWide = !number.isSigned && (number.low >> 63) != 0;
      if (number.sixteenBytes || isWide) return integer16(number.high, number.low);
      return integer(static_cast<int64_t>(number.low));
    }
    case Kind::real:
      if (value.isFloat()) {
        return real32(std::bit_cast<uint32_t>(static_cast<float>(value.doubleValue())));
      }
      return real64(std::bit_cast<uint64_t>(value.doubleValue()));
    case Kind::date:
      return date(std::bit_cast<uint64_t>(value.date().seconds));
    case Kind::data:
      return data(value.data().view());
    default:
      return string(value.string());
  }
}

std::string_view PropertyListWriter::bytesOf(Reference reference) const {
  const uint64_t from = offsetOf(reference);
  const uint64_t to = reference + 1 < offsets_.size() ? offsetOf(reference + 1) : buffer_.size();
  return buffer_.view().substr(from, to - from);
}

PropertyListWriter::Reference PropertyListWriter::uid(uint32_t value) {
  // an archive numbers its entries without gaps; a number far beyond them is a stray one
  if (value >= uids_.size() && value > 4 * offsets_.size() + 1024) {
    const unsigned width = widthFor(value);
    std::string bytes(1, static_cast<char>(0x80 | (width - 1)));
    bytes += width == 4 ? bigEndian(value) : bigEndian(static_cast<uint16_t>(value));
    return scalar(bytes);
  }
  if (value >= uids_.size()) {
    uids_.resize(std::max<size_t>(value + size_t{1}, uids_.size() + uids_.size() / 2), 0);
  }
  Reference& known = uids_[value];
  if (known == 0) {
    known = begin() + 1;
    const unsigned width = widthFor(value);
    buffer_.append(static_cast<uint8_t>(0x80 | (width - 1)));
    for (unsigned byte = width; byte-- > 0;) {
      buffer_.append(static_cast<uint8_t>(value >> (8 * byte)));
    }
  }
  return known - 1;
}

}  // namespace ns
