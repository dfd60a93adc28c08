#pragma once

#include <optional>
#include <vector>

#include "platform/archive/Record.h"

namespace ns {

/// A colour as documents hold it: a colour space and its components, read through the archived
/// record.  What the record says besides (a colour profile, for example) stays as it is.
///
/// A record keeps its components as decimal numbers in ASCII with one blank between them and a
/// zero byte at the end; alpha is left out when it is 1.
class Color {
 public:
  /// The number under "NSColorSpace".
  enum class Space : int64_t {
    calibratedRGB = 1,
    deviceRGB = 2,
    calibratedWhite = 3,
    deviceWhite = 4,
    deviceCMYK = 5,
    catalog = 6,
    pattern = 10,
  };

  /// Components from 0 to 1.
  struct RGBA {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const RGBA&) const = default;
  };

  /// The colour of a value of kind color; none of any other.
  static std::optional<Color> fromValue(const Value& value);

  // New colours.  Components are cut to the range from 0 to 1.

  static Color colorWithCalibratedRedGreenBlueAlpha(double red, double green, double blue,
                                                    double alpha);
  static Color colorWithDeviceRedGreenBlueAlpha(double red, double green, double blue,
                                                double alpha);
  static Color colorWithCalibratedWhiteAlpha(double white, double alpha);
  static Color colorWithDeviceWhiteAlpha(double white, double alpha);
  static Color colorWithDeviceCyanMagentaYellowBlackAlpha(double cyan, double magenta,
                                                          double yellow, double black,
                                                          double alpha);
  /// A named colour, whose looks the reading machine decides; one that does not know the name
  /// takes the fallback.
  static Color colorWithCatalogNameColorName(const String& catalogName, const String& colorName,
                                             const Color& fallback);
  /// The platform's named colour of text, black where it is not known.  Always the same object.
  static const Color& textColor();

  /// What the record says, also a number that is no space known here; 0 when it says nothing.
  [[nodiscard]] Space colorSpace() const;
  /// The components as the record has them, in the order of the space, with alpha last: 4 for
  /// RGB, 2 for white, 5 for CMYK.  None for a named colour or a pattern, and where the record
  /// does not hold as many numbers as its space needs.
  [[nodiscard]] std::vector<double> components() const;
  [[nodiscard]] String catalogNameComponent() const;
  [[nodiscard]] String colorNameComponent() const;

  /// The colour in RGB, of a named colour that of its fallback, components cut to 0 to 1; none
  /// where it cannot be told.  Colour profiles do not count: they keep a converted value beside
  /// them.
  [[nodiscard]] std::optional<RGBA> rgba() const;

  [[nodiscard]] Value asValue() const { return record_.asValue(Kind::color); }

 private:
  // the record is made one of a colour here, so that every value of a colour is the same object
  explicit Color(const Record& record) : record_(record.asValue(Kind::color)) {}
  static Color withComponents(Space space, const char* key, const std::vector<double>& components);
  Record record_;
};

}  // namespace ns
