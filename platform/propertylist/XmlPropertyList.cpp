#include "platform/propertylist/XmlPropertyList.h"

#include <expat.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Exception.h"
#include "platform/foundation/String.h"
#include "platform/propertylist/PropertyListWriter.h"

namespace ns {

namespace {

constexpr size_t kDeepestNesting = 512;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Turns the events of the XML parser into objects of a binary list, children before the
/// container that holds them.
class XmlReader {
 public:
  explicit XmlReader(const Data& xml) : xml_(xml), parser_(XML_ParserCreate(nullptr)) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), startHandler, endHandler);
    XML_SetCharacterDataHandler(parser_.get(), textHandler);
    XML_SetEntityDeclHandler(parser_.get(), entityHandler);
    XML_SetSkippedEntityHandler(parser_.get(), skippedHandler);
  }

  Data read() {
    constexpr size_t kChunk = size_t{16} << 20;
    const char* bytes = reinterpret_cast<const char*>(xml_.bytes());
    for (size_t at = 0; at <= xml_.length(); at += kChunk) {
      const size_t length = std::min(kChunk, xml_.length() - at);
      const bool isLast = at + length == xml_.length();
      const XML_Status status =
          XML_Parse(parser_.get(), bytes + at, static_cast<int>(length), isLast);
      if (exception_) std::rethrow_exception(exception_);
      if (!error_.empty()) refuse(error_);
      if (status != XML_STATUS_OK) refuse(XML_ErrorString(XML_GetErrorCode(parser_.get())));
      if (isLast) break;
    }
    if (!top_) refuse("the list holds no value");
    return writer_.finish(*top_);
  }

 private:
  struct Frame {
    bool isDictionary;
    std::vector<uint32_t> keys;
    std::vector<uint32_t> values;
    bool hasKey = false;  // a key waits for its value
    bool isUid = false;   // the only key is "CF$UID"
  };

  static void startHandler(void* self, const char* name, const char** /*attributes*/) {
    static_cast<XmlReader*>(self)->guarded([&](XmlReader& reader) { reader.start(name); });
  }
  static void endHandler(void* self, const char* name) {
    static_cast<XmlReader*>(self)->guarded([&](XmlReader& reader) { reader.end(name); });
  }
  static void textHandler(void* self, const char* text, int length) {
    static_cast<XmlReader*>(self)->guarded([&](XmlReader& reader) {
      reader.text({text, static_cast<size_t>(length)});
    });
  }
  static void entityHandler(void* self, const char* /*name*/, int /*isParameter*/,
                            const char* /*value*/, int /*length*/, const char* /*base*/,
                            const char* /*system*/, const char* /*publicId*/,
                            const char* /*notation*/) {
    static_cast<XmlReader*>(self)->stop("entity declarations are not taken");
  }

  /// A name that the parser cannot look up, for the type declaration names a file nobody reads.
  static void skippedHandler(void* self, const char* /*name*/, int /*isParameter*/) {
    static_cast<XmlReader*>(self)->stop("an entity is not declared");
  }

  /// No exception may pass through the parser, which is C.
  template <class Action>
  void guarded(Action action) {
    if (!error_.empty()) return;
    try {
      action(*this);
    } catch (...) {
      exception_ = std::current_exception();
      stop("the list cannot be read");
    }
  }

  void stop(const std::string& what) {
    if (error_.empty()) error_ = what;
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  [[noreturn]] void refuse(const std::string& what) const {
    throw ArchiveException("XML property list: " + what + ", line " +
                           std::to_string(XML_GetCurrentLineNumber(parser_.get())) + " column " +
                           std::to_string(XML_GetCurrentColumnNumber(parser_.get())));
  }

  void start(std::string_view name) {
    if (isInScalar_) return stop("an element inside a value");
    if (!isOpen_) {
      if (name != "plist") return stop("the top element is not \"plist\"");
      isOpen_ = true;
      return;
    }
    if (frames_.empty() && top_) return stop("more than one value");
    if (!frames_.empty() && frames_.back().isDictionary && name != "key" &&
        !frames_.back().hasKey) {
      return stop("a value without a key");
    }
    if (name == "dict" || name == "array") {
      if (frames_.size() >= kDeepestNesting) return stop("containers are nested too deeply");
      frames_.push_back({name == "dict", {}, {}});
      return;
    }
    if (name == "key" &&
        (frames_.empty() || !frames_.back().isDictionary || frames_.back().hasKey)) {
      return stop("a key where none belongs");
    }
    isInScalar_ = true;
    scalar_.clear();
  }

  void text(std::string_view part) {
    if (isInScalar_) {
      scalar_.append(part);
    } else if (!trimmed(part).empty()) {
      stop("text outside a value");
    }
  }

  void end(std::string_view name) {
    if (isInScalar_) {
      isInScalar_ = false;
      if (name == "key") {
        Frame& frame = frames_.back();
        frame.keys.push_back(string(scalar_));
        frame.hasKey = true;
        frame.isUid = frame.keys.size() == 1 && scalar_ == "CF$UID";
      } else {
        number_.reset();
        const std::optional<uint32_t> value = scalarNamed(name);
        if (value) add(*value);
      }
      return;
    }
    if (name == "plist") return;
    Frame frame = std::move(frames_.back());
    frames_.pop_back();
    if (frame.hasKey) return stop("a key without a value");
    if (frame.isDictionary && frame.keys.size() == 1 && frame.isUid && number_) {
      if (*number_ < 0 || *number_ > 0xFFFFFFFF) return stop("a reference out of range");
      const uint32_t uid = writer_.uid(static_cast<uint32_t>(*number_));
      number_.reset();
      return add(uid);
    }
    number_.reset();
    const size_t count = frame.values.size();
    const PropertyListWriter::Container container =
        frame.isDictionary ? writer_.dictionary(count) : writer_.array(count);
    size_t position = 0;
    for (const uint32_t key : frame.keys) writer_.set(container, position++, key);
    for (const uint32_t value : frame.values) writer_.set(container, position++, value);
    add(container.reference);
  }

  void add(uint32_t value) {
    if (frames_.empty()) {
      top_ = value;
      return;
    }
    frames_.back().values.push_back(value);
    frames_.back().hasKey = false;
  }

  uint32_t string(const std::string& utf8) {
    const bool isAscii = std::all_of(utf8.begin(), utf8.end(),
                                     [](char c) { return static_cast<signed char>(c) >= 0; });
    if (isAscii) return writer_.ascii(utf8);
    return writer_.string(String(std::string_view(utf8)).units());
  }

  std::optional<uint32_t> scalarNamed(std::string_view name) {
    if (name == "string") return string(scalar_);
    if (name == "true") return writer_.boolean(true);
    if (name == "false") return writer_.boolean(false);
    if (name == "integer") return integer(trimmed(scalar_));
    if (name == "real") return real(trimmed(scalar_));
    if (name == "data") return data();
    if (name == "date") return date(trimmed(scalar_));
    stop("an element \"" + std::string(name.substr(0, 40)) + "\" is no value");
    return std::nullopt;
  }

  std::optional<uint32_t> integer(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    std::string_view digits = text;
    if (isNegative || text.starts_with('+')) digits.remove_prefix(1);
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
      digits.remove_prefix(2);
      base = 16;
    }
    uint64_t magnitude = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
    if (error != std::errc() || end != digits.data() + digits.size() ||
        (isNegative && magnitude > uint64_t{1} << 63)) {
      stop("an integer cannot be read");
      return std::nullopt;
    }
    if (!isNegative && magnitude > uint64_t{0x7FFFFFFFFFFFFFFF}) {
      return writer_.integer16(0, magnitude);
    }
    number_ = static_cast<int64_t>(isNegative ? 0 - magnitude : magnitude);
    return writer_.integer(*number_);
  }

  std::optional<uint32_t> real(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
      stop("a real cannot be read");
      return std::nullopt;
    }
    return writer_.real64(std::bit_cast<uint64_t>(value));
  }

  std::optional<uint32_t> data() {
    std::string bytes;
    uint32_t bits = 0;
    int count = 0;
    bool isPadded = false;
    for (const char c : scalar_) {
      int digit = -1;
      if (c >= 'A' && c <= 'Z') digit = c - 'A';
      if (c >= 'a' && c <= 'z') digit = c - 'a' + 26;
      if (c >= '0' && c <= '9') digit = c - '0' + 52;
      if (c == '+') digit = 62;
      if (c == '/') digit = 63;
      if (c == ' ' || c == '\t' || c == '\n' || c == '\r') continue;
      if (c == '=') {
        isPadded = true;
        continue;
      }
      if (digit < 0 || isPadded) {
        stop("data is not in base 64");
        return std::nullopt;
      }
      bits = bits << 6 | static_cast<uint32_t>(digit);
      if (++count == 4) {
        for (int shift = 16; shift >= 0; shift -= 8) {
          bytes.push_back(static_cast<char>(static_cast<uint8_t>(bits >> shift)));
        }
        bits = 0;
        count = 0;
      }
    }
    if (count == 1) {
      stop("data is cut off");
      return std::nullopt;
    }
    if (count >= 2)
      bytes.push_back(static_cast<char>(static_cast<uint8_t>(bits >> (count == 2 ? 4 : 10))));
    if (count == 3) bytes.push_back(static_cast<char>(static_cast<uint8_t>(bits >> 2)));
    return writer_.data(bytes);
  }

  /// "2001-01-01T00:00:00Z", years of four digits.
  std::optional<uint32_t> date(std::string_view text) {
    int field[6];
    const int most[6] = {9999, 12, 31, 23, 59, 60};
    constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:ddZ";
    bool isRight = text.size() == kForm.size();
    int number = 0;
    int index = 0;
    for (size_t i = 0; isRight && i < kForm.size(); ++i) {
      if (kForm[i] == 'd') {
        isRight = text[i] >= '0' && text[i] <= '9';
        number = number * 10 + (text[i] - '0');
      } else {
        isRight = text[i] == kForm[i] && number <= most[index];
        field[index++] = number;
        number = 0;
      }
    }
    if (!isRight || field[1] == 0 || field[2] == 0) {
      stop("a date cannot be read");
      return std::nullopt;
    }
    // days by years that begin in March; 2001-01-01 is day 730791 of that count
    constexpr int64_t kFirstDay = 730791;
    const int64_t year = field[0] - (field[1] <= 2 ? 1 : 0);
    const int64_t month = (field[1] + 9) % 12;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * month + 2) / 5 + field[2] - 1;
    const int64_t days =
        era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - kFirstDay;
    const int64_t seconds = days * 86400 + field[3] * 3600 + field[4] * 60 + field[5];
    return writer_.date(std::bit_cast<uint64_t>(static_cast<double>(seconds)));
  }

  struct Free {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  const Data& xml_;
  std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser_;
  PropertyListWriter writer_;
  std::vector<Frame> frames_;
  std::optional<uint32_t> top_;
  std::optional<int64_t> number_;  // the integer read last
  std::string scalar_;
  std::string error_;
  std::exception_ptr exception_;
  bool isOpen_ = false;
  bool isInScalar_ = false;
};

}  // namespace

Data binaryFromXmlPropertyList(const Data& xml) { return XmlReader(xml).read(); }

}  // namespace ns
