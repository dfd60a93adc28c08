#include <gtest/gtest.h>

#include "../platform_text/TextTesting.h"
#include "model/OLTree.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/text/Color.h"
#include "platform/text/UserDefaults.h"
#include "text/FontSizes.h"

namespace tavlin {
namespace {

using ns::Color;
using ns::Font;

/// A tree class with values and attributes of its own.
struct OtherTree : OLTree {
  static ns::Value objectValueForKeyByItem(const ns::Value& key, const std::shared_ptr<OLNode>&) {
    return key;
  }
  static ns::Dictionary titleStringAttributes() { return {{"of", "title"}}; }
  static ns::Dictionary noteStringAttributes() { return {{"of", "note"}}; }
};

class TextAttributes : public ::testing::Test {
 protected:
  static Font fontOf(const ns::Dictionary& attributes) {
    return *Font::fromValue(attributes.objectForKey(ns::kFontAttributeName));
  }
  static ns::Value colorOf(const ns::Dictionary& attributes) {
    return attributes.objectForKey(ns::kForegroundColorAttributeName);
  }
  static std::string fontNameOf(const ns::Dictionary& attributes) {
    return ns::printed(fontOf(attributes).asValue());
  }

  ns::TemporaryFolder folder;
  ns::UserDefaults defaults{folder / "preferences.plist"};
  ns::UserDefaults::ScopedShared scope{defaults};
  std::shared_ptr<OLTree> tree = OLTree::create();
  std::shared_ptr<OLNode> item = tree->addItem();
  const ns::Value red = Color::colorWithDeviceRedGreenBlueAlpha(1, 0, 0, 1).asValue();
  const ns::Value green = Color::colorWithDeviceRedGreenBlueAlpha(0, 1, 0, 1).asValue();
};

TEST_F(TextAttributes, WithoutPreferences) {
  for (const auto& attributes : {OLTree::titleStringAttributes(), OLTree::noteStringAttributes(),
                                 OLTree::titleStringAttributesWithLabelColor(nullptr)}) {
    ASSERT_EQ(attributes.count(), 3U);
    EXPECT_EQ(colorOf(attributes), Color::textColor().asValue());
    EXPECT_EQ(attributes.objectForKey(ns::kParagraphStyleAttributeName).body(),
              ns::ParagraphStyle::defaultParagraphStyle().asValue().body());
  }
  EXPECT_EQ(fontOf(OLTree::titleStringAttributes()).fontName(), "Helvetica");
  EXPECT_EQ(fontOf(OLTree::titleStringAttributes()).pointSize(), 13.0);
  EXPECT_EQ(fontOf(OLTree::noteStringAttributes()).fontName(), "Helvetica");
  EXPECT_EQ(fontOf(OLTree::noteStringAttributes()).pointSize(), 11.0);
  EXPECT_EQ(userFontSize(), 13.0);
  EXPECT_EQ(smallUserFontSize(), 11.0);
}

TEST_F(TextAttributes, TheirObjectsAreShared) {
  EXPECT_EQ(fontOf(OLTree::titleStringAttributes()).asValue().body(),
            fontOf(OLTree::titleStringAttributes()).asValue().body());
  EXPECT_EQ(colorOf(OLTree::titleStringAttributes()).body(),
            colorOf(OLTree::noteStringAttributes()).body());
}

TEST_F(TextAttributes, EachPreferenceHasItsPlace) {
  defaults.setUnarchivedValueForKeyPath(Font::named("Title", 20).asValue(), "values.textFont");
  defaults.setUnarchivedValueForKeyPath(Font::named("Note", 10).asValue(), "values.noteFont");
  defaults.setUnarchivedValueForKeyPath(red, "values.textColor");
  defaults.setUnarchivedValueForKeyPath(green, "values.noteColor");
  EXPECT_EQ(fontNameOf(OLTree::titleStringAttributes()), "Title 20");
  EXPECT_EQ(colorOf(OLTree::titleStringAttributes()), red);
  EXPECT_EQ(fontNameOf(OLTree::noteStringAttributes()), "Note 10");
  EXPECT_EQ(colorOf(OLTree::noteStringAttributes()), green);
}

TEST_F(TextAttributes, PreferencesMayBeInArchivesWithoutKeys) {
  using namespace std::string_literals;
  const std::string header = "\x04\x0Bstreamtyped\x81\xE8\x03\x84\x01@\x84\x84\x84"s;
  const std::string object = "\x84\x84\x08NSObject\0\x85"s;
  const std::string name = "\x06\0\0\0\x0E\0\0\0\xFF\xFEM\0o\0n\0a\0c\0o\0"s;
  const std::string font = header + "\x06NSFont\x1E" + object + "\x84\x01i\x16\x84\x05[22c]" +
                           name + "\x84\x01" + "f\x0F\x84\x01" + "c\0\x98\x01\x98\0\x98\0\x86"s;
  const std::string color =
      header + "\x07NSColor\0"s + object + "\x84\x01" + "c\x02\x84\x04" + "ffff\x01\0\0\x01\x86"s;
  for (const char* path : {"values.textFont", "values.noteFont"}) {
    defaults.setValueForKeyPath(ns::Data(font), path);
  }
  for (const char* path : {"values.textColor", "values.noteColor"}) {
    defaults.setValueForKeyPath(ns::Data(color), path);
  }
  for (const auto& attributes : {OLTree::titleStringAttributes(), OLTree::noteStringAttributes()}) {
    EXPECT_EQ(fontNameOf(attributes), "Monaco 15");
    EXPECT_EQ(colorOf(attributes), red);
  }
}

TEST_F(TextAttributes, FontAndColourFallBackOnTheirOwn) {
  defaults.setUnarchivedValueForKeyPath(red, "values.textColor");
  defaults.setValueForKeyPath(ns::Data(std::string("junk")), "values.textFont");
  defaults.setUnarchivedValueForKeyPath(Font::named("Note", 10).asValue(), "values.noteFont");
  defaults.setValueForKeyPath("text", "values.noteColor");
  EXPECT_EQ(fontNameOf(OLTree::titleStringAttributes()), "Helvetica 13");
  EXPECT_EQ(colorOf(OLTree::titleStringAttributes()), red);
  EXPECT_EQ(fontNameOf(OLTree::noteStringAttributes()), "Note 10");
  EXPECT_EQ(colorOf(OLTree::noteStringAttributes()), Color::textColor().asValue());
}

TEST_F(TextAttributes, AFontOfTheWrongClassFallsBackAColourIsNotLookedAt) {
  defaults.setUnarchivedValueForKeyPath(red, "values.textFont");
  defaults.setUnarchivedValueForKeyPath("no colour", "values.textColor");
  EXPECT_EQ(fontNameOf(OLTree::titleStringAttributes()), "Helvetica 13");
  EXPECT_EQ(colorOf(OLTree::titleStringAttributes()), ns::Value("no colour"));
}

TEST_F(TextAttributes, ALabelColourStandsForThePreferredOne) {
  defaults.setUnarchivedValueForKeyPath(red, "values.textColor");
  defaults.setUnarchivedValueForKeyPath(Font::named("Title", 20).asValue(), "values.textFont");
  const ns::Dictionary attributes = OLTree::titleStringAttributesWithLabelColor(green);
  EXPECT_EQ(colorOf(attributes), green);
  EXPECT_EQ(fontNameOf(attributes), "Title 20");
  EXPECT_EQ(colorOf(OLTree::titleStringAttributesWithLabelColor(nullptr)), red);
}

TEST_F(TextAttributes, NoItemNoValueAndOtherKindsAreEmptyAttributedText) {
  EXPECT_EQ(OLTree::attributedStringForKeyByItem("title", nullptr).length(), 0U);
  EXPECT_EQ(OLTree::attributedStringForKeyByItem("title", item).length(), 0U);
  for (const ns::Value& value : {ns::Value(7), ns::Value(true), red}) {
    for (const char* key : {"title", "note", "label"}) {
      item->setDataForKey(value, key);
      EXPECT_EQ(OLTree::attributedStringForKeyByItem(key, item), ns::AttributedString());
      EXPECT_EQ(OLTree::attributedStringForKeyAttributesByItem(key, ns::Dictionary(), item),
                ns::AttributedString());
    }
  }
}

TEST_F(TextAttributes, PlainTextGetsTheAttributesOfItsKey) {
  for (const char* key : {"title", "note", "whatever"}) item->setDataForKey("text", key);
  const ns::String text("text");
  EXPECT_EQ(OLTree::attributedStringForKeyByItem("title", item),
            ns::AttributedString(text, OLTree::titleStringAttributes()));
  EXPECT_EQ(OLTree::attributedStringForKeyByItem("whatever", item),
            ns::AttributedString(text, OLTree::titleStringAttributes()));
  EXPECT_EQ(OLTree::attributedStringForKeyByItem("note", item),
            ns::AttributedString(text, OLTree::noteStringAttributes()));
}

TEST_F(TextAttributes, PlainTextTakesGivenAttributesAlsoNone) {
  item->setDataForKey("text", "note");
  const ns::Dictionary given{{"a", 1}};
  EXPECT_EQ(ns::printed(OLTree::attributedStringForKeyAttributesByItem("note", given, item)),
            "[text|a=1]");
  EXPECT_EQ(
      ns::printed(OLTree::attributedStringForKeyAttributesByItem("note", ns::Dictionary(), item)),
      "[text|]");
}

TEST_F(TextAttributes, AStoredAttributedTextComesBackAsItIs) {
  const ns::Value rich = ns::AttributedString(ns::String("rich"), {{"own", 1}}).asValue();
  item->setDataForKey(rich, "note");
  EXPECT_EQ(OLTree::attributedStringForKeyByItem("note", item).asValue().body(), rich.body());
  EXPECT_EQ(OLTree::attributedStringForKeyAttributesByItem("note", ns::Dictionary{{"a", 2}}, item)
                .asValue()
                .body(),
            rich.body());
}

TEST_F(TextAttributes, AReceivingClassIsAskedForWhatItDeclaresAnew) {
  EXPECT_EQ(OLTree::stringForKeyByItem<OtherTree>("title", nullptr), "title");
  EXPECT_EQ(ns::printed(OLTree::attributedStringForKeyByItem<OtherTree>("title", nullptr)),
            "[title|of=title]");
  EXPECT_EQ(ns::printed(OLTree::attributedStringForKeyByItem<OtherTree>("note", nullptr)),
            "[note|of=note]");
}

}  // namespace
}  // namespace tavlin
