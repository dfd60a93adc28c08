#include "platform/text/Color.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace ns {

namespace {

// Named colours fall back on named colours at times; nobody nests them deeper.
constexpr int kDeepestFallback = 16;

double cut(double component) { return component > 0 ? std::min(component, 1.0) : 0.0; }

/// Up to ten digits, without zeros at the end, and one zero byte behind the last number.
Data text(const std::vector<double>& components) {
  std::string bytes;
  for (const double component : components) {
    if (!bytes.empty()) bytes.push_back(' ');
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), component,
                                   std::chars_format::general, 10);
    bytes.append(digits, end.ptr);
  }
  bytes.push_back('\0');
  return Data(std::move(bytes));
}

/// The numbers of a text, with or without a zero byte at the end; nothing when it is malformed.
std::vector<double> numbers(std::string_view bytes) {
  std::vector<double> found;
  bytes = bytes.substr(0, bytes.find('\0'));
  while (true) {
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\n\r"), bytes.size()));
    if (bytes.empty()) return found;
    double number = 0;
    const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), number);
    if (error == std::errc::result_out_of_range) {
      number = 0;  // too small to tell
    } else if (error != std::errc() || !std::isfinite(number)) {
      return {};
    }
    found.push_back(number);
    bytes.remove_prefix(static_cast<size_t>(end - bytes.data()));
  }
}

/// Number of components without alpha; 0 for a space that has none.
size_t componentCount(Color::Space space) {
  switch (space) {
    case Color::Space::calibratedRGB:
    case Color::Space::deviceRGB:
      return 3;
    case Color::Space::calibratedWhite:
    case Color::Space::deviceWhite:
      return 1;
    case Color::Space::deviceCMYK:
      return 4;
    default:
      return 0;
  }
}

Value storedComponents(const Record& record, Color::Space space) {
  switch (componentCount(space)) {
    case 3:
      return record.valueForKey("NSRGB");
    case 1:
      return record.valueForKey("NSWhite");
    case 4: {
      const Value stored = record.valueForKey("NSCMYK");
      // some writers swap two letters
      return stored.isNone() ? record.valueForKey("NSCYMK") : stored;
    }
    default:
      return {};
  }
}

const ClassRef& colorClass() {
  static thread_local const ClassRef made = makeClass({"NSColor", "NSObject"});
  return made;
}

}  // namespace

std::optional<Color> Color::fromValue(const Value& value) {
  if (value.kind() != Kind::color) return std::nullopt;
  return Color(Record(value));
}

Color Color::withComponents(Space space, const char* key, const std::vector<double>& components) {
  std::vector<double> stored;
  for (const double component : components) stored.push_back(cut(component));
  if (stored.back() == 1) stored.pop_back();
  return Color(
      Record(colorClass(), {{"NSColorSpace", Field::primitive(Value(static_cast<int64_t>(space)))},
                            {key, Field::primitive(Value(text(stored)))}}));
}

Color Color::colorWithCalibratedRedGreenBlueAlpha(double red, double green, double blue,
                                                  double alpha) {
  return withComponents(Space::calibratedRGB, "NSRGB", {red, green, blue, alpha});
}

Color Color::colorWithDeviceRedGreenBlueAlpha(double red, double green, double blue, double alpha) {
  return withComponents(Space::deviceRGB, "NSRGB", {red, green, blue, alpha});
}

Color Color::colorWithCalibratedWhiteAlpha(double white, double alpha) {
  return withComponents(Space::calibratedWhite, "NSWhite", {white, alpha});
}

Color Color::colorWithDeviceWhiteAlpha(double white, double alpha) {
  return withComponents(Space::deviceWhite, "NSWhite", {white, alpha});
}

Color Color::colorWithDeviceCyanMagentaYellowBlackAlpha(double cyan, double magenta, double yellow,
                                                        double black, double alpha) {
  return withComponents(Space::deviceCMYK, "NSCMYK", {cyan, magenta, yellow, black, alpha});
}

Color Color::colorWithCatalogNameColorName(const String& catalogName, const String& colorName,
                                           const Color& fallback) {
  return Color(
      Record(colorClass(),
             {{"NSColorSpace", Field::primitive(Value(static_cast<int64_t>(Space::catalog)))},
              {"NSCatalogName", Field::reference(Value(catalogName))},
              {"NSColorName", Field::reference(Value(colorName))},
              {"NSColor", Field::reference(fallback.asValue())}}));
}

const Color& Color::textColor() {
  static thread_local const Color color =
      colorWithCatalogNameColorName("System", "textColor", colorWithCalibratedWhiteAlpha(0, 1));
  return color;
}

Color::Space Color::colorSpace() const {
  return static_cast<Space>(record_.valueForKey("NSColorSpace").integerValue());
}

std::vector<double> Color::components() const {
  const size_t count = componentCount(colorSpace());
  if (count == 0) return {};
  std::vector<double> found = numbers(storedComponents(record_, colorSpace()).data().view());
  if (found.size() == count) found.push_back(1);
  if (found.size() != count + 1) return {};
  return found;
}

String Color::catalogNameComponent() const { return record_.valueForKey("NSCatalogName").string(); }

String Color::colorNameComponent() const { return record_.valueForKey("NSColorName").string(); }

std::optional<Color::RGBA> Color::rgba() const {
  Color color = *this;
  for (int depth = 0; color.colorSpace() == Space::catalog; ++depth) {
    const std::optional<Color> fallback = fromValue(color.record_.valueForKey("NSColor"));
    if (!fallback || depth == kDeepestFallback) return std::nullopt;
    color = *fallback;
  }
  const std::vector<double> parts = color.components();
  if (parts.empty()) return std::nullopt;
  const double alpha = cut(parts.back());
  switch (componentCount(color.colorSpace())) {
    case 3:
      return RGBA{cut(parts[0]), cut(parts[1]), cut(parts[2]), alpha};
    case 1:
      return RGBA{cut(parts[0]), cut(parts[0]), cut(parts[0]), alpha};
    default: {
      const double light = 1 - cut(parts[3]);
      return RGBA{(1 - cut(parts[0])) * light, (1 - cut(parts[1])) * light,
                  (1 - cut(parts[2])) * light, alpha};
    }
  }
}

}  // namespace ns
