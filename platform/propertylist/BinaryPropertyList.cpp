#include "platform/propertylist/BinaryPropertyList.h"

#include <bit>
#include <cstdio>

#include "platform/foundation/AsciiCheck.h"

namespace ns {

namespace {

constexpr size_t kTrailerLength = 32;
// header, an object of one byte, one offset, trailer
constexpr size_t kSmallestFile = 8 + 1 + 1 + kTrailerLength;
// indexes are kept in 32 bits, and the uppermost ones serve as marks
constexpr uint64_t kMostObjects = 0xFFFFFF00U;

[[noreturn]] void refuse(const std::string& what) {
  throw ArchiveException("binary property list: " + what);
}

/// What other versions of the format have under a marker that this one does not define.
const char* otherVersionsName(uint8_t marker) {
  switch (marker) {
    case 0x00:
      return " (null)";
    case 0x0C:
    case 0x0D:
      return " (a URL)";
    case 0x0E:
      return " (a UUID)";
    default:
      break;
  }
  switch (marker >> 4) {
    case 0x7:
      return " (a UTF-8 string)";
    case 0xB:
      return " (an ordered set)";
    case 0xC:
      return " (a set)";
    default:
      return "";
  }
}

bool fits(uint64_t number, unsigned width) { return width >= 8 || number >> (8 * width) == 0; }

}  // namespace

BinaryPropertyList::BinaryPropertyList(Data data) : data_(std::move(data)), base_(data_.bytes()) {
  const size_t length = data_.length();
  if (!hasSignature(data_.view())) refuse("the file does not begin with \"bplist\"");
  if (length < kSmallestFile) {
    refuse("the file is too short: " + std::to_string(length) + " bytes");
  }
  if (base_[6] != '0') refuse("the file is of another version of the format, at byte 6");
  const uint8_t* trailer = base_ + length - kTrailerLength;
  const size_t trailerAt = length - kTrailerLength;
  offsetSize_ = trailer[6];
  referenceSize_ = trailer[7];
  const uint64_t count = load(trailer + 8, 8);
  const uint64_t top = load(trailer + 16, 8);
  tableOffset_ = load(trailer + 24, 8);
  const std::string where = ", in the trailer at byte " + std::to_string(trailerAt);
  if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
    refuse("offsets of " + std::to_string(offsetSize_) + " and references of " +
           std::to_string(referenceSize_) + " bytes" + where);
  }
  offsetShift_ = 64 - 8 * offsetSize_;
  referenceShift_ = 64 - 8 * referenceSize_;
  if (count == 0) refuse("no objects" + where);
  if (tableOffset_ < 9 || tableOffset_ >= trailerAt) {
    refuse("the offset table at " + std::to_string(tableOffset_) + " lies outside the file" +
           where);
  }
  const uint64_t room = trailerAt - tableOffset_;
  if (count > room / offsetSize_ || count * offsetSize_ != room) {
    refuse(std::to_string(count) + " offsets of " + std::to_string(offsetSize_) +
           " bytes do not fill the " + std::to_string(room) + " bytes of the offset table" + where);
  }
  if (count > kMostObjects) refuse(std::to_string(count) + " objects are too many" + where);
  if (top >= count) {
    refuse("the top object " + std::to_string(top) + " is not among the " + std::to_string(count) +
           " objects" + where);
  }
  // as the platform has it, a reference can hold the count itself, not just the last index
  if (!fits(count, referenceSize_)) {
    refuse("references of " + std::to_string(referenceSize_) + " bytes for " +
           std::to_string(count) + " objects" + where);
  }
  if (!fits(tableOffset_, offsetSize_)) {
    refuse("offsets of " + std::to_string(offsetSize_) + " bytes for an offset table at " +
           std::to_string(tableOffset_) + where);
  }
  count_ = static_cast<uint32_t>(count);
  top_ = static_cast<uint32_t>(top);
  table_ = base_ + tableOffset_;
}

const char* BinaryPropertyList::nameOf(Type type) {
  switch (type) {
    case Type::boolean:
      return "a boolean";
    case Type::integer:
      return "an integer";
    case Type::real:
      return "a real";
    case Type::date:
      return "a date";
    case Type::data:
      return "data";
    case Type::ascii:
    case Type::utf16:
      return "a string";
    case Type::uid:
      return "a reference";
    case Type::array:
      return "an array";
    case Type::dictionary:
      return "a dictionary";
  }
  return "nothing known";
}

std::optional<String> BinaryPropertyList::string(const Object& object) {
  if (object.type != Type::ascii) return String::fromUtf16BigEndian(object.text());
  if (!isAllAscii(object.text())) return std::nullopt;
  return String::fromAscii(object.text());
}

Value BinaryPropertyList::scalar(const Object& object) {
  switch (object.type) {
    case Type::boolean:
      return Value(object.width != 0);
    case Type::integer: {
      if (object.width == 16) {
        return Value(Integer{BinaryPropertyList::load(object.bytes + 8, 8),
                             BinaryPropertyList::load(object.bytes, 8), false, true});
      }
      return Value(Integer{BinaryPropertyList::load(object.bytes, object.width), 0, true, false});
    }
    case Type::real: {
      if (object.width == 4) {
        return Value(
            std::bit_cast<float>(static_cast<uint32_t>(BinaryPropertyList::load(object.bytes, 4))));
      }
      return Value(std::bit_cast<double>(BinaryPropertyList::load(object.bytes, 8)));
    }
    case Type::date:
      return Value(Date{std::bit_cast<double>(BinaryPropertyList::load(object.bytes, 8))});
    case Type::data:
      return Value(Data(std::string(object.text())));
    case Type::ascii:
    case Type::utf16: {
      const std::optional<String> text = string(object);
      return text ? Value(*text) : Value();
    }
    case Type::uid:
    case Type::array:
    case Type::dictionary:
      break;
  }
  return {};
}

void BinaryPropertyList::failObject(uint32_t index, uint64_t offset) const {
  if (offset < 8 || offset >= tableOffset_) {
    fail(offset, index, "the offset lies outside the objects");
  }
  char marker[8];
  std::snprintf(marker, sizeof marker, "0x%02X", base_[offset]);
  const uint8_t type = base_[offset] >> 4;
  const bool known = (type >= 1 && type <= 6) || type == 8 || type == 0xA || type == 0xD;
  fail(offset, index,
       std::string(known ? "the object has an undefined size or does not fit before the offset "
                           "table, marker "
                         : "undefined object, marker ") +
           marker + (known ? "" : otherVersionsName(base_[offset])));
}

void BinaryPropertyList::failReference(const uint8_t* at, uint64_t found) const {
  refuse("reference to object " + std::to_string(found) + " of " + std::to_string(count_) +
         ", at byte " + std::to_string(at - base_));
}

void BinaryPropertyList::fail(uint64_t offset, uint32_t index, const std::string& what) const {
  refuse(what + ", object " + std::to_string(index) + " at byte " + std::to_string(offset));
}

}  // namespace ns
