#include "platform/text/Color.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ns {
namespace {

std::string stored(const Color& color, const char* key) {
  return std::string(Record(color.asValue()).valueForKey(key).data().view());
}

Color colorOf(int64_t space, const char* key, const std::string& bytes) {
  const Record record(makeClass({"NSColor", "NSObject"}),
                      {{"NSColorSpace", Field::primitive(Value(space))},
                       {key, Field::primitive(Value(Data(bytes)))}});
  return *Color::fromValue(record.asValue(Kind::color));
}

TEST(Color, ComponentsAreStoredAsNumbersWithAZeroByteBehindThem) {
  using std::string;
  EXPECT_EQ(stored(Color::colorWithCalibratedRedGreenBlueAlpha(0, 0.5, 1, 1), "NSRGB"),
            string("0 0.5 1\0", 8));
  EXPECT_EQ(stored(Color::colorWithDeviceRedGreenBlueAlpha(1, 0, 0, 0.25), "NSRGB"),
            string("1 0 0 0.25\0", 11));
  EXPECT_EQ(stored(Color::colorWithCalibratedWhiteAlpha(1.0 / 3, 1), "NSWhite"),
            string("0.3333333333\0", 13));
  EXPECT_EQ(stored(Color::colorWithDeviceWhiteAlpha(0, 0), "NSWhite"), string("0 0\0", 4));
  EXPECT_EQ(stored(Color::colorWithDeviceCyanMagentaYellowBlackAlpha(0, 1, 0, 0.5, 1), "NSCMYK"),
            string("0 1 0 0.5\0", 10));
  EXPECT_EQ(stored(Color::colorWithDeviceWhiteAlpha(7.0437733711e-05, 1), "NSWhite"),
            string("7.043773371e-05\0", 16));
}

TEST(Color, ComponentsOutsideTheirRangeAreCut) {
  const Color color = Color::colorWithDeviceRedGreenBlueAlpha(-1, 2, std::nan(""), 7);
  EXPECT_EQ(color.components(), (std::vector<double>{0, 1, 0, 1}));
}

TEST(Color, EverySpaceTurnsIntoRgb) {
  using RGBA = Color::RGBA;
  EXPECT_EQ(Color::colorWithCalibratedRedGreenBlueAlpha(0.25, 0.5, 1, 0.5).rgba(),
            (RGBA{0.25, 0.5, 1, 0.5}));
  EXPECT_EQ(Color::colorWithCalibratedWhiteAlpha(0.5, 1).rgba(), (RGBA{0.5, 0.5, 0.5, 1}));
  EXPECT_EQ(Color::colorWithDeviceWhiteAlpha(1, 0).rgba(), (RGBA{1, 1, 1, 0}));
  EXPECT_EQ(Color::colorWithDeviceCyanMagentaYellowBlackAlpha(0, 1, 0.5, 0.5, 1).rgba(),
            (RGBA{0.5, 0, 0.25, 1}));
  EXPECT_EQ(colorOf(5, "NSCYMK", "0 0 0 1").rgba(), (RGBA{0, 0, 0, 1}));
}

TEST(Color, ANamedColourLooksLikeItsFallback) {
  const Color color = Color::colorWithCatalogNameColorName(
      "System", "labelColor", Color::colorWithDeviceWhiteAlpha(0.25, 1));
  EXPECT_EQ(color.colorSpace(), Color::Space::catalog);
  EXPECT_EQ(color.catalogNameComponent(), "System");
  EXPECT_EQ(color.colorNameComponent(), "labelColor");
  EXPECT_TRUE(color.components().empty());
  EXPECT_EQ(color.rgba(), (Color::RGBA{0.25, 0.25, 0.25, 1}));
  Color nested = color;
  for (int i = 0; i < 10; ++i) {
    nested = Color::colorWithCatalogNameColorName("System", "gridColor", nested);
  }
  EXPECT_EQ(nested.rgba(), color.rgba());
  for (int i = 0; i < 10; ++i) {
    nested = Color::colorWithCatalogNameColorName("System", "gridColor", nested);
  }
  EXPECT_EQ(nested.rgba(), std::nullopt);
}

TEST(Color, TheTextColourIsNamedAndShared) {
  EXPECT_EQ(Color::textColor().catalogNameComponent(), "System");
  EXPECT_EQ(Color::textColor().colorNameComponent(), "textColor");
  EXPECT_EQ(Color::textColor().rgba(), (Color::RGBA{0, 0, 0, 1}));
  EXPECT_EQ(Color::textColor().asValue().body(), Color::textColor().asValue().body());
}

TEST(Color, ReadsWhatOthersWrite) {
  EXPECT_EQ(colorOf(1, "NSRGB", std::string("0.33333299 0 1\0", 15)).components(),
            (std::vector<double>{0.33333299, 0, 1, 1}));
  EXPECT_EQ(colorOf(3, "NSWhite", "1").components(), (std::vector<double>{1, 1}));
  EXPECT_EQ(colorOf(3, "NSWhite", " 1   0.5 ").components(), (std::vector<double>{1, 0.5}));
  EXPECT_EQ(colorOf(3, "NSWhite", "1e-999").components(), (std::vector<double>{0, 1}));
}

TEST(Color, MalformedComponentsAreNone) {
  for (const char* bytes : {"", "1", "1 2", "1 2 3 4 5", "a b c", "1 2 x", "inf 0 0", "nan 0 0"}) {
    EXPECT_TRUE(colorOf(1, "NSRGB", bytes).components().empty()) << bytes;
    EXPECT_EQ(colorOf(1, "NSRGB", bytes).rgba(), std::nullopt) << bytes;
  }
  EXPECT_EQ(colorOf(10, "NSImage", "").rgba(), std::nullopt);
  EXPECT_EQ(colorOf(6, "NSCatalogName", "").rgba(), std::nullopt);
  EXPECT_EQ(colorOf(77, "NSRGB", "1 1 1").rgba(), std::nullopt);
}

TEST(Color, OnlyAColourIsOne) {
  EXPECT_FALSE(Color::fromValue("red"));
  EXPECT_FALSE(Color::fromValue(nullptr));
}

}  // namespace
}  // namespace ns
