#include "platform/text/FontStyle.h"

#include <gtest/gtest.h>

#include "TextTesting.h"
#include "platform/foundation/Log.h"
#include "platform/text/FontSource.h"

namespace ns {
namespace {

std::string styleOf(const char* name) {
  const FontStyle style = FontStyle::ofFontName(name);
  return std::to_string(style.weight) + (style.isSlanted ? " slanted" : "");
}

TEST(FontStyle, IsSaidByTheNameOfTheFont) {
  const std::pair<const char*, const char*> cases[] = {
      {"Helvetica", "400"},
      {"", "400"},
      {"-", "400"},
      {"Helvetica-", "400"},
      {".LucidaGrandeUI", "400"},
      {".LucidaGrandeUI-Bold", "700"},
      {".HelveticaNeueDeskUI-BoldItalic", "700 slanted"},
      {".HelveticaNeueDeskUI-Italic", "400 slanted"},
      {".HelveticaNeueDeskUI-MediumP4", "500"},
      {".SFNSText-SemiboldItalic", "600 slanted"},
      {".SFNS-UltraLight", "200"},
      {".SFNS-ExtraLightItalic", "200 slanted"},
      {".SFNS-Thin", "100"},
      {".SFNS-Light", "300"},
      {".SFNS-Heavy", "800"},
      {".SFNS-Black", "900"},
      {".SFNS-ExtraBold", "800"},
      {".SFNS-DemiBold", "600"},
      {".SFNS-Demi", "600"},
      {"Helvetica-BoldOblique", "700 slanted"},
      {"TimesNewRomanPS-BoldItalicMT", "700 slanted"},
      {"Times-Roman", "400"},
      {"AquaKana-Bold", "700"},
      {".HiraKakuInterface-W6", "600"},
      {".HiraKakuInterface-W3", "300"},
      {"HiraKakuStd-W9", "900"},
      {"HiraKakuStd-W0", "400"},
      // without a hyphen
      {".AppleSystemUIFont", "400"},
      {".AppleSystemUIFontBold", "700"},
      {".AppleSystemUIFontBoldItalic", "700 slanted"},
      {".AppleSystemUIFontItalic", "400 slanted"},
      // a word of the family says nothing, nor does a part of a word
      {"BlackForest-Light", "300"},
      {"Boldface-Regular", "400"},
      {".Highlight", "400"},
      {".SFNS-Kobold", "400"},
      {".SFNS-W", "400"},
      {".SFNS-W12", "400"},
      {"Grün-Bold", "700"},
  };
  for (const auto& [name, style] : cases) EXPECT_EQ(styleOf(name), style) << name;
}

TEST(FontStyle, IsSaidByTheNameOfTheFace) {
  for (const auto& [name, style] : {std::pair("Bold Italic", "700 slanted"),
                                    {"Book", "400"},
                                    {"Condensed Oblique", "400 slanted"},
                                    {"Semibold", "600"},
                                    {"extra light", "200"},
                                    {"Regular", "400"}}) {
    const FontFace face{"F", "F", name, {}};
    EXPECT_EQ(std::to_string(face.style.weight) + (face.style.isSlanted ? " slanted" : ""), style)
        << name;
  }
}

/// How near a style is to others, nearest first.
std::string nearestTo(const char* wanted, std::vector<const char*> names) {
  const FontStyle style = FontStyle::ofFontName(wanted);
  std::stable_sort(names.begin(), names.end(), [&](const char* a, const char* b) {
    return style.distanceTo(FontStyle::ofFontName(a)) < style.distanceTo(FontStyle::ofFontName(b));
  });
  std::string all;
  for (const char* name : names) all += (all.empty() ? "" : " ") + std::string(name).substr(2);
  return all;
}

TEST(FontStyle, ABoldOneIsNearestToBoldOnesThenTheSlantCounts) {
  const std::vector<const char*> names = {"F-Light", "F-Regular",    "F-Italic", "F-Medium",
                                          "F-Bold",  "F-BoldItalic", "F-Black"};
  EXPECT_EQ(nearestTo("F-Bold", names), "Bold Black BoldItalic Medium Regular Light Italic");
  EXPECT_EQ(nearestTo("F-BoldItalic", names), "BoldItalic Bold Black Italic Medium Regular Light");
  EXPECT_EQ(nearestTo("F-Semibold", names), "Bold Black BoldItalic Medium Regular Light Italic");
  EXPECT_EQ(nearestTo("F-Regular", names), "Regular Light Medium Italic Bold Black BoldItalic");
  EXPECT_EQ(nearestTo("F-Italic", names), "Italic Regular Light Medium BoldItalic Bold Black");
  EXPECT_EQ(nearestTo("F-Thin", names), "Light Regular Medium Italic Bold Black BoldItalic");
}

TEST(FontSource, TheMachinesFacesHaveTheirStyles) {
  const FontFace* const bold = FontSource::shared().faceNamed("DejaVuSans-Bold");
  const FontFace* const plain = FontSource::shared().faceNamed("DejaVuSans");
  if (!bold || !plain) GTEST_SKIP() << "not those that are looked for";
  EXPECT_EQ(bold->style.weight, 700);
  EXPECT_FALSE(bold->style.isSlanted);
  EXPECT_EQ(plain->style.weight, 400);
  if (const FontFace* face = FontSource::shared().faceNamed("DejaVuSans-BoldOblique")) {
    EXPECT_EQ(face->style.weight, 700);
    EXPECT_TRUE(face->style.isSlanted);
  }
}

/// The messages that are logged while it lives.
class Messages {
 public:
  Messages() {
    previous_ = setLogHandler([this](std::string_view each) { all.emplace_back(each); });
  }
  ~Messages() { setLogHandler(previous_); }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;
  std::vector<std::string> all;

 private:
  LogHandler previous_;
};

TEST(FontSource, AMachineWithoutFontsIsToldOfOnce) {
  const TemporaryFolder folder;
  const std::string settings = folder / "fonts.conf";
  FILE* const file = fopen(settings.c_str(), "w");
  ASSERT_NE(file, nullptr);
  fputs("<?xml version=\"1.0\"?><fontconfig></fontconfig>", file);
  fclose(file);
  const char* const before = getenv("FONTCONFIG_FILE");
  const std::string kept = before ? before : "";
  setenv("FONTCONFIG_FILE", settings.c_str(), 1);
  {
    const Messages messages;
    const auto fonts = installedFonts();
    EXPECT_EQ(fonts->familyNameOfFont("DejaVuSans-Bold"), std::nullopt);
    EXPECT_TRUE(messages.all.empty()) << "the name says enough about a family";
    EXPECT_TRUE(fonts->faces().empty());
    EXPECT_EQ(fonts->faceNamed("DejaVuSans-Bold"), nullptr);
    ASSERT_EQ(messages.all.size(), 1U);
    EXPECT_EQ(messages.all.front(), "no fonts found: interface fonts in rich text are left");
  }
  if (before) {
    setenv("FONTCONFIG_FILE", kept.c_str(), 1);
  } else {
    unsetenv("FONTCONFIG_FILE");
  }
}

}  // namespace
}  // namespace ns
