#include "platform/foundation/Value.h"

#include <bit>
#include <cmath>
#include <limits>

#include "platform/foundation/ContainerAccess.h"
#include "platform/foundation/ContainerBodies.h"
#include "platform/foundation/StringBody.h"

namespace ns {

namespace {

__extension__ using Magnitude = unsigned __int128;

class BooleanBody final : public ValueBody {
 public:
  explicit BooleanBody(bool is) : ValueBody(Kind::boolean), value(is) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override {
    return value == static_cast<const BooleanBody&>(other).value;
  }
  [[nodiscard]] size_t hash() const override { return value ? 1 : 0; }
  const bool value;
};

class IntegerBody final : public ValueBody {
 public:
  explicit IntegerBody(Integer is) : ValueBody(Kind::integer), value(is) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override;
  const Integer value;
};

class RealBody final : public ValueBody {
 public:
  RealBody(double is, bool isFloat) : ValueBody(Kind::real), value(is), isSingle(isFloat) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  [[nodiscard]] size_t hash() const override;
  const double value;
  const bool isSingle;
};

class DataBody final : public ValueBody {
 public:
  DataBody(Data is, ClassRef of, Ref<const Origin> from = {})
      : ValueBody(Kind::data),
        value(std::move(is)),
        archivedClass(std::move(of)),
        origin(std::move(from)) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override {
    return value == static_cast<const DataBody&>(other).value;
  }
  [[nodiscard]] size_t hash() const override { return std::hash<std::string_view>()(value.view()); }
  const Data value;
  const ClassRef archivedClass;
  const Ref<const Origin> origin;
};

class DateBody final : public ValueBody {
 public:
  explicit DateBody(Date is, Ref<const Origin> from = {})
      : ValueBody(Kind::date), value(is), origin(std::move(from)) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override {
    return value == static_cast<const DateBody&>(other).value;
  }
  [[nodiscard]] size_t hash() const override { return std::hash<double>()(value.seconds); }
  const Date value;
  const Ref<const Origin> origin;
};

class ObjectBody final : public ValueBody {
 public:
  explicit ObjectBody(std::shared_ptr<Object> is) : ValueBody(Kind::object), value(std::move(is)) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override {
    return value == static_cast<const ObjectBody&>(other).value;
  }
  [[nodiscard]] size_t hash() const override { return std::hash<Object*>()(value.get()); }
  const std::shared_ptr<Object> value;
};

/// A number in a form in which equal numbers look the same: sign and size of an integer, or,
/// for everything else, the bits of the real.
struct Number {
  bool isInteger = false;
  bool isNegative = false;
  Magnitude magnitude = 0;
  uint64_t bits = 0;
  bool operator==(const Number&) const = default;
};

Number numberOf(Integer integer) {
  Number number{true, integer.isNegative()};
  if (integer.sixteenBytes) {
    number.magnitude = static_cast<Magnitude>(integer.high) << 64 | integer.low;
  } else {
    number.magnitude = integer.isNegative() ? 0 - integer.low : integer.low;
  }
  return number;
}

Number numberOf(double real) {
  constexpr double kTooLarge = 0x1p128;
  if (std::trunc(real) == real && std::fabs(real) < kTooLarge) {
    return {true, real < 0, static_cast<Magnitude>(std::fabs(real))};
  }
  return {false, false, 0, std::bit_cast<uint64_t>(real)};
}

Number numberOf(const ValueBody& body) {
  switch (body.kind()) {
    case Kind::boolean:
      return numberOf(Integer{static_cast<const BooleanBody&>(body).value ? 1U : 0U});
    case Kind::integer:
      return numberOf(static_cast<const IntegerBody&>(body).value);
    default:
      return numberOf(static_cast<const RealBody&>(body).value);
  }
}

size_t hashOf(const Number& number) {
  return std::hash<uint64_t>()(static_cast<uint64_t>(number.magnitude) ^ number.bits) +
         (number.isNegative ? 1 : 0);
}

bool IntegerBody::isEqual(const ValueBody& other) const {
  return numberOf(value) == numberOf(other);
}
size_t IntegerBody::hash() const { return hashOf(numberOf(value)); }
bool RealBody::isEqual(const ValueBody& other) const { return numberOf(value) == numberOf(other); }
size_t RealBody::hash() const { return hashOf(numberOf(value)); }

template <class T>
const T& as(const Ref<const ValueBody>& body) {
  return static_cast<const T&>(*body);
}

bool boolValueOfString(const String& string) {
  size_t at = 0;
  const auto unit = [&] { return at < string.length() ? string.at(at) : u'\0'; };
  while (unit() == ' ' || (unit() >= '\t' && unit() <= '\r')) ++at;
  if (unit() == '+' || unit() == '-') ++at;
  while (unit() == '0') ++at;
  const char16_t decisive = unit();
  return decisive == 'Y' || decisive == 'y' || decisive == 'T' || decisive == 't' ||
         (decisive >= '1' && decisive <= '9');
}

}  // namespace

const char* describe(Kind kind) {
  switch (kind) {
    case Kind::none:
      return "none";
    case Kind::boolean:
      return "a boolean";
    case Kind::integer:
      return "an integer";
    case Kind::real:
      return "a real";
    case Kind::string:
      return "a string";
    case Kind::data:
      return "data";
    case Kind::date:
      return "a date";
    case Kind::array:
      return "an array";
    case Kind::dictionary:
      return "a dictionary";
    case Kind::attributedString:
      return "an attributed string";
    case Kind::font:
      return "a font";
    case Kind::color:
      return "a colour";
    case Kind::paragraphStyle:
      return "a paragraph style";
    case Kind::record:
      return "an object of another class";
    case Kind::object:
      return "an object of the document";
  }
  return "nothing known";
}

Value::Value(bool value) : body_(new BooleanBody(value)) {}
Value::Value(double value) : body_(new RealBody(value, false)) {}
Value::Value(float value) : body_(new RealBody(static_cast<double>(value), true)) {}
Value::Value(Integer value) : body_(new IntegerBody(value)) {}
Value::Value(const char* utf8) : Value(String(utf8)) {}
Value::Value(const String& string) : body_(string.body_) {
  if (!body_) body_ = Ref<const ValueBody>(StringBody::make(0, false));
}
Value::Value(const Data& data) : body_(new DataBody(data, nullptr)) {}
Value::Value(Date date) : body_(new DateBody(date)) {}
Value::Value(const Array& array) : body_(array.body_) {
  if (!body_) body_ = Ref<const ValueBody>(new ArrayBody());
}
Value::Value(const Dictionary& dictionary) : body_(dictionary.body_) {
  if (!body_) body_ = DictionaryBody::make();
}

Value Value::fromObject(std::shared_ptr<Object> object) {
  if (!object) return {};
  return Value(Ref<const ValueBody>(new ObjectBody(std::move(object))));
}

Value Value::dataWithArchivedClass(const Data& data, ClassRef archivedClass) {
  return Value(Ref<const ValueBody>(new DataBody(data, std::move(archivedClass))));
}

Value ClassedAccess::string(const String& text, ClassRef archivedClass, Ref<const Origin> origin) {
  const Value plain(text.withArchivedClass(nullptr));
  return Value(Ref<const ValueBody>(
      new ClassedStringBody(Ref<const StringBody>(&as<StringBody>(plain.body())),
                            std::move(archivedClass), std::move(origin))));
}

Value ClassedAccess::data(const Data& data, ClassRef archivedClass, Ref<const Origin> origin) {
  return Value(
      Ref<const ValueBody>(new DataBody(data, std::move(archivedClass), std::move(origin))));
}

Value ClassedAccess::date(Date date, Ref<const Origin> origin) {
  return Value(Ref<const ValueBody>(new DateBody(date, std::move(origin))));
}

const Origin* ClassedAccess::origin(const Value& value) {
  switch (value.kind()) {
    case Kind::string:
      return as<StringBody>(value.body()).origin();
    case Kind::data:
      return as<DataBody>(value.body()).origin.get();
    case Kind::date:
      return as<DateBody>(value.body()).origin.get();
    default:
      return nullptr;
  }
}

bool Value::boolValue() const {
  switch (kind()) {
    case Kind::boolean:
      return as<BooleanBody>(body_).value;
    case Kind::integer:
      return integer().low != 0 || integer().high != 0;
    case Kind::real:
      return as<RealBody>(body_).value != 0;
    case Kind::string:
      return boolValueOfString(string());
    default:
      return false;
  }
}

int64_t Value::integerValue() const {
  constexpr auto kMost = std::numeric_limits<int64_t>::max();
  constexpr auto kLeast = std::numeric_limits<int64_t>::min();
  switch (kind()) {
    case Kind::boolean:
      return boolValue() ? 1 : 0;
    case Kind::integer: {
      const Integer number = integer();
      if (number.isNegative()) return static_cast<int64_t>(number.low);
      const bool fits = number.high == 0 && number.low <= static_cast<uint64_t>(kMost);
      return fits ? static_cast<int64_t>(number.low) : kMost;
    }
    case Kind::real: {
      const double number = as<RealBody>(body_).value;
      if (std::isnan(number)) return 0;
      if (number >= 0x1p63) return kMost;
      if (number < -0x1p63) return kLeast;
      return static_cast<int64_t>(number);
    }
    default:
      return 0;
  }
}

double Value::doubleValue() const {
  switch (kind()) {
    case Kind::boolean:
      return boolValue() ? 1 : 0;
    case Kind::integer: {
      const Number number = numberOf(integer());
      const auto magnitude = static_cast<double>(number.magnitude);
      return number.isNegative ? -magnitude : magnitude;
    }
    case Kind::real:
      return as<RealBody>(body_).value;
    default:
      return 0;
  }
}

Integer Value::integer() const {
  return kind() == Kind::integer ? as<IntegerBody>(body_).value : Integer{};
}
bool Value::isFloat() const { return kind() == Kind::real && as<RealBody>(body_).isSingle; }
String Value::string() const { return isString() ? String(body_) : String(); }
Data Value::data() const { return kind() == Kind::data ? as<DataBody>(body_).value : Data(); }
Date Value::date() const { return kind() == Kind::date ? as<DateBody>(body_).value : Date(); }
Array Value::array() const { return isArray() ? Array(body_) : Array(); }
Dictionary Value::dictionary() const { return isDictionary() ? Dictionary(body_) : Dictionary(); }
std::shared_ptr<Object> Value::object() const {
  return kind() == Kind::object ? as<ObjectBody>(body_).value : nullptr;
}

ClassRef Value::archivedClass() const {
  switch (kind()) {
    case Kind::string:
      return as<StringBody>(body_).archivedClass();
    case Kind::data:
      return as<DataBody>(body_).archivedClass;
    case Kind::array:
      return as<ArrayBody>(body_).archivedClass;
    case Kind::dictionary:
      return as<DictionaryBody>(body_).archivedClass();
    default:
      return nullptr;
  }
}

bool Value::isEqual(const Value& other) const {
  if (body_ == other.body_) return true;
  if (!body_ || !other.body_) return false;
  if (isNumber() && other.isNumber()) return numberOf(*body_) == numberOf(*other.body_);
  return kind() == other.kind() && body_->isEqual(*other.body_);
}

size_t Value::hash() const {
  if (!body_) return 0;
  return isNumber() ? hashOf(numberOf(*body_)) : body_->hash();
}

}  // namespace ns
