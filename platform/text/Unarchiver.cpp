// The stream is a list of groups: a type string, then one value for each type in it.  Values are
// led by a byte: a small number itself, or one of the marks below.  Strings of the format (types,
// class names) share one numbering, objects and classes another; both are referred to by number.

#include "platform/text/Unarchiver.h"

#include <bit>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Exception.h"
#include "platform/text/Color.h"
#include "platform/text/Font.h"

namespace ns {

namespace {

constexpr std::string_view kLittleEndian("\x04\x0Bstreamtyped", 13);
constexpr std::string_view kBigEndian("\x04\x0Btypedstream", 13);

enum Mark : int8_t {
  kTwoBytes = -127,
  kFourBytes = -126,
  kFloating = -125,
  kNew = -124,
  kNil = -123,
  kEnd = -122,
  kEightBytes = -121,
};
// The first number that a reference's byte can hold stands for 0.
constexpr int64_t kFirstReference = -110;

// Kinds of a font's name block.
constexpr uint32_t kNarrowName = 5;
constexpr uint32_t kWideName = 6;

// Named colours fall back on named colours at times; nobody nests them deeper.
constexpr int kDeepestObject = 16;

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  Value root() {
    isBigEndian_ = bytes_.substr(0, kBigEndian.size()) == kBigEndian;
    if (!isBigEndian_ && bytes_.substr(0, kLittleEndian.size()) != kLittleEndian) {
      fail("no archive without keys");
    }
    at_ = kLittleEndian.size();
    integer();  // the version of the system that wrote
    expectTypes("@");
    return object(0);
  }

 private:
  /// An object (its value) or a class (its name).
  struct Shared {
    std::string_view className;  // of a class, where it lies: many may have one long name
    Value value;                 // of an object that is complete
    bool isComplete = false;
  };

  [[noreturn]] void fail(const std::string& what) const {
    throw ArchiveException("archive without keys: byte " + std::to_string(at_) + ": " + what);
  }

  std::string_view take(uint64_t count) {
    if (count > bytes_.size() - at_) fail("the data breaks off");
    const std::string_view taken = bytes_.substr(at_, count);
    at_ += count;
    return taken;
  }

  int8_t head() { return static_cast<int8_t>(take(1)[0]); }

  uint64_t bits(size_t width) {
    const std::string_view stored = take(width);
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) {
      const auto byte = static_cast<unsigned char>(stored[isBigEndian_ ? i : width - 1 - i]);
      value = value << 8 | byte;
    }
    return value;
  }

  int64_t integer() { return integer(head()); }

  int64_t integer(int8_t first) {
    switch (first) {
      case kTwoBytes:
        return static_cast<int16_t>(bits(2));
      case kFourBytes:
        return static_cast<int32_t>(bits(4));
      case kEightBytes:
        return static_cast<int64_t>(bits(8));
      default:
        if (first < kFirstReference) fail("a mark in place of a number");
        return first;
    }
  }

  size_t length() {
    const int64_t count = integer();
    if (count < 0) fail("a negative length");
    return static_cast<size_t>(count);
  }

  double floating() {
    const int8_t first = head();
    if (first != kFloating) return static_cast<double>(integer(first));
    return std::bit_cast<float>(static_cast<uint32_t>(bits(4)));
  }

  /// The place that a reference means in a list of `count`.
  size_t reference(int8_t first, size_t count) {
    const int64_t number = integer(first) - kFirstReference;
    if (number < 0 || static_cast<uint64_t>(number) >= count)
      fail("a reference that leads nowhere");
    return static_cast<size_t>(number);
  }

  std::string_view sharedString() {
    const int8_t first = head();
    if (first == kNil) fail("no string");
    if (first != kNew) return strings_[reference(first, strings_.size())];
    strings_.emplace_back(take(length()));
    return strings_.back();
  }

  void expectTypes(std::string_view types) {
    const std::string_view found = sharedString();
    if (found != types) {
      fail("values of types \"" + std::string(found) + "\" instead of \"" + std::string(types) +
           "\"");
    }
  }

  /// The name of a class; its superclasses are read and forgotten.
  std::string_view archivedClass() {
    std::string_view name;
    while (true) {
      const int8_t first = head();
      if (first == kNil) break;
      if (first != kNew) {
        const Shared& known = shared_[reference(first, shared_.size())];
        if (known.className.empty()) fail("an object in place of a class");
        if (name.empty()) name = known.className;
        break;
      }
      const size_t number = shared_.size();
      shared_.emplace_back();
      shared_[number].className = sharedString();
      if (shared_[number].className.empty()) fail("a class without a name");
      if (name.empty()) name = shared_[number].className;
      integer();  // its version: what differs between versions says so itself
    }
    if (name.empty()) fail("an object without a class");
    return name;
  }

  Value object(int depth) {
    const int8_t first = head();
    if (first == kNil) return {};
    if (first != kNew) {
      const Shared& known = shared_[reference(first, shared_.size())];
      if (!known.isComplete) fail("a reference to what is no object, or not complete");
      return known.value;
    }
    if (depth == kDeepestObject) fail("objects nested too deeply");
    const size_t number = shared_.size();
    shared_.emplace_back();
    const std::string_view name = archivedClass();
    Value value;
    if (name == "NSFont") {
      value = font();
    } else if (name == "NSColor") {
      value = color(depth);
    } else if (name == "NSString" || name == "NSMutableString") {
      expectTypes("+");
      value = Value(String(take(length())));
    } else {
      fail("an object of class " + std::string(name));
    }
    if (head() != kEnd) fail("an object of class " + std::string(name) + " does not end");
    shared_[number].value = value;
    shared_[number].isComplete = true;
    return value;
  }

  Value font() {
    expectTypes("i");
    const size_t size = length();
    expectTypes("[" + std::to_string(size) + "c]");
    const String name = fontName(take(size));
    expectTypes("f");
    const double points = floating();
    for (int flag = 0; flag < 4; ++flag) {
      expectTypes("c");
      take(1);
    }
    return Font::named(name, points).asValue();
  }

  /// The name in a block of a kind, a length and so many bytes of text.
  String fontName(std::string_view block) {
    if (block.size() < 8) fail("a font without a name");
    const auto number = [&](size_t at) {
      uint32_t value = 0;
      for (size_t i = 0; i < 4; ++i) {
        value = value << 8 | static_cast<unsigned char>(block[at + (isBigEndian_ ? i : 3 - i)]);
      }
      return value;
    };
    const uint32_t kind = number(0);
    const uint32_t count = number(4);
    if (count > block.size() - 8) fail("a font's name that is longer than its block");
    const std::string_view text = block.substr(8, count);
    String name;
    if (kind == kWideName) {
      name = wideText(text);
    } else if (kind == kNarrowName) {
      name = String(text);
    } else {
      fail("a font's name of kind " + std::to_string(kind));
    }
    if (name.empty()) fail("a font without a name");
    return name;
  }

  /// UTF-16 that says its byte order itself, or has that of the archive.
  String wideText(std::string_view text) {
    bool isBig = isBigEndian_;
    if (text.size() >= 2 && (text.substr(0, 2) == "\xFF\xFE" || text.substr(0, 2) == "\xFE\xFF")) {
      isBig = text[0] == '\xFE';
      text.remove_prefix(2);
    }
    std::u16string units;
    for (size_t at = 0; at + 1 < text.size(); at += 2) {
      const auto high = static_cast<unsigned char>(text[isBig ? at : at + 1]);
      const auto low = static_cast<unsigned char>(text[isBig ? at + 1 : at]);
      units.push_back(static_cast<char16_t>(high << 8 | low));
    }
    return String(std::u16string_view(units));
  }

  Value color(int depth) {
    expectTypes("c");
    const auto space = static_cast<Color::Space>(head());
    std::vector<double> parts;
    const auto readParts = [&](std::string_view types) {
      expectTypes(types);
      for (size_t i = 0; i < types.size(); ++i) parts.push_back(floating());
    };
    switch (space) {
      case Color::Space::calibratedRGB:
        readParts("ffff");
        return Color::colorWithCalibratedRedGreenBlueAlpha(parts[0], parts[1], parts[2], parts[3])
            .asValue();
      case Color::Space::deviceRGB:
        readParts("ffff");
        return Color::colorWithDeviceRedGreenBlueAlpha(parts[0], parts[1], parts[2], parts[3])
            .asValue();
      case Color::Space::calibratedWhite:
        readParts("ff");
        return Color::colorWithCalibratedWhiteAlpha(parts[0], parts[1]).asValue();
      case Color::Space::deviceWhite:
        readParts("ff");
        return Color::colorWithDeviceWhiteAlpha(parts[0], parts[1]).asValue();
      case Color::Space::deviceCMYK:
        readParts("fffff");
        return Color::colorWithDeviceCyanMagentaYellowBlackAlpha(parts[0], parts[1], parts[2],
                                                                 parts[3], parts[4])
            .asValue();
      case Color::Space::catalog: {
        expectTypes("@@@");
        const Value catalog = object(depth + 1);
        const Value name = object(depth + 1);
        const auto fallback = Color::fromValue(object(depth + 1));
        if (!catalog.isString() || !name.isString() || !fallback) {
          fail("a named colour without name or fallback");
        }
        return Color::colorWithCatalogNameColorName(catalog.string(), name.string(), *fallback)
            .asValue();
      }
      default:
        fail("a colour of space " + std::to_string(static_cast<int64_t>(space)));
    }
  }

  std::string_view bytes_;
  size_t at_ = 0;
  bool isBigEndian_ = false;
  std::vector<std::string_view> strings_;
  std::vector<Shared> shared_;
};

}  // namespace

bool Unarchiver::isArchive(const Data& data) {
  const std::string_view start = data.view().substr(0, kLittleEndian.size());
  return start == kLittleEndian || start == kBigEndian;
}

Value Unarchiver::unarchiveObjectWithData(const Data& data) { return Reader(data.view()).root(); }

}  // namespace ns
