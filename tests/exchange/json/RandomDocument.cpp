#include "tests/exchange/json/RandomDocument.h"

#include <limits>

#include "model/OLTree.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/archive/Record.h"
#include "platform/text/Color.h"
#include "platform/text/Font.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/URL.h"

namespace tavlin::testing {

namespace {

template <class T, size_t N>
const T& oneOf(Random& random, const T (&choices)[N]) {
  return choices[random.below(N)];
}

ns::ClassRef randomClass(Random& random, const char* base) {
  const std::string mutableName = std::string("NSMutable") + base;
  const std::string name = std::string("NS") + base;
  if (random.chance(2)) return ns::makeClass({mutableName, name, "NSObject"});
  auto info = std::make_shared<ns::ClassInfo>();
  info->name = mutableName;
  info->chain = {mutableName, name, "ZZBase", "NSObject"};
  if (random.chance(2)) info->hints = {"ZZHint"};
  return info;
}

ns::Value randomNumber(Random& random) {
  static const double reals[] = {0.0,
                                 -0.0,
                                 0.1,
                                 1.0,
                                 -2.5e-300,
                                 1e300,
                                 5e-324,
                                 123456789.125,
                                 std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN(),
                                 -std::numeric_limits<double>::quiet_NaN()};
  static const int64_t integers[] = {0,     1,         -1,        255,       256,
                                     65536, 1LL << 32, INT64_MAX, INT64_MIN, (1LL << 53) + 1};
  switch (random.below(6)) {
    case 0:
      return random.chance(2);
    case 1:
      return oneOf(random, integers);
    case 2:
      return ns::Integer{random.below(1000), random.below(3), true, true};
    case 3:
      return static_cast<float>(oneOf(random, reals));
    default:
      return oneOf(random, reals);
  }
}

ns::Value randomDate(Random& random) {
  static const double times[] = {0,
                                 -0.0,
                                 0.5,
                                 -0.25,
                                 804621600.123456,
                                 -63113904000.0,
                                 -1e-9,
                                 252423993600.5,
                                 1e300,
                                 -1e300,
                                 1e-300,
                                 1.0 / 3,
                                 std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()};
  if (random.chance(2)) return ns::Date{oneOf(random, times)};
  return ns::Date{static_cast<double>(random.below(2000000000)) / 7 - 1e8};
}

ns::Value randomPlatformValue(Random& random) {
  const auto share = [&] { return static_cast<double>(random.below(11)) / 10; };
  switch (random.below(9)) {
    case 0:
      return ns::Font::named(random.chance(2) ? "Helvetica-Bold" : "Menlo-Italic", 11.5).asValue();
    case 1:
      return ns::Record(ns::Font::named("Times-Roman", 12).asValue())
          .with("NSfFlags", ns::Field::primitive(20))
          .with("NSSize", ns::Field::primitive(12.0F))
          .asValue(ns::Kind::font);
    case 2:
      return ns::Color::colorWithCalibratedRedGreenBlueAlpha(share(), share(), share(), share())
          .asValue();
    case 3:
      return ns::Color::colorWithDeviceCyanMagentaYellowBlackAlpha(share(), share(), share(),
                                                                   share(), 1)
          .asValue();
    case 4:
      return ns::Color::textColor().asValue();
    case 5: {
      ns::ParagraphStyle style = ns::ParagraphStyle::defaultParagraphStyle();
      style.setAlignment(random.chance(2) ? ns::ParagraphStyle::Alignment::center
                                          : ns::ParagraphStyle::Alignment::left);
      style.setHeadIndent(share() * 10);
      return style.asValue();
    }
    case 6: {
      ns::ParagraphStyle style = ns::ParagraphStyle::defaultParagraphStyle();
      style.setTabStops(ns::Array{ns::Record(ns::makeClass({"NSTextTab", "NSObject"}),
                                             {{"NSLocation", ns::Field::primitive(12.5)}})
                                      .asValue()});
      return style.asValue();
    }
    case 7:
      return ns::URL::URLWithString("https://example.org/?q=ü")->asValue();
    default:
      return ns::Record(ns::makeClass({"ZZThing", "NSObject"}),
                        {{"name", ns::Field::reference("thing")},
                         {"size", ns::Field::primitive(3.5F)},
                         {"parts",
                          {ns::Field::Form::list,
                           {},
                           {ns::Field::reference(randomString(random)), ns::Field::primitive(true)},
                           {}}}})
          .asValue();
  }
}

ns::Value randomText(Random& random, int depth) {
  static const char* const names[] = {"NSFont", "NSColor", "NSUnderline",      "NSLink", "ZZOwn",
                                      "font",   "length",  "NSParagraphStyle", "größe",  "size"};
  const ns::String text = randomString(random);
  std::vector<ns::AttributedString::Stretch> stretches;
  for (size_t at = 0; at < text.length();) {
    const size_t length = 1 + random.below(text.length() - at);
    ns::Dictionary attributes;
    for (size_t i = random.below(4); i > 0; --i) {
      const char* name = oneOf(random, names);
      attributes.setObjectForKey(
          random.chance(2) ? randomPlatformValue(random) : randomValue(random, depth - 1), name);
    }
    if (random.chance(8)) attributes.setArchivedClass(randomClass(random, "Dictionary"));
    stretches.emplace_back(length, attributes);
    at += length;
  }
  const bool isClassed = random.chance(4);
  return ns::AttributedString::withStretches(
             isClassed ? text.withArchivedClass(randomClass(random, "String")) : text, stretches,
             isClassed
                 ? ns::makeClass({"NSMutableAttributedString", "NSAttributedString", "NSObject"})
                 : nullptr)
      .asValue();
}

ns::Value randomContainer(Random& random, int depth) {
  static const char* const keys[] = {"a", "date", "text", "runs", "dictionary", "größe", "\n", ""};
  if (random.chance(2)) {
    ns::Array array;
    for (size_t i = random.below(4); i > 0; --i) array.append(randomValue(random, depth - 1));
    if (random.chance(3)) array.setArchivedClass(randomClass(random, "Array"));
    return ns::Value(array);
  }
  ns::Dictionary dictionary;
  for (size_t i = random.below(4); i > 0; --i) {
    const ns::Value key = random.chance(5) ? randomNumber(random) : ns::Value(oneOf(random, keys));
    dictionary.setObjectForKey(randomValue(random, depth - 1), key);
  }
  if (random.chance(3)) dictionary.setArchivedClass(randomClass(random, "Dictionary"));
  return ns::Value(dictionary);
}

}  // namespace

ns::String randomString(Random& random) {
  static const char16_t units[] = {u'a',   u' ',   u'"',   u'\\',  u'\n',  u'\r',  u'\t',  0,
                                   0x1B,   0x7F,   0x85,   u'<',   u'ü',   0x2028, 0x202E, 0xFEFF,
                                   0xFFFE, 0xFFFF, 0xD83C, 0xDF3F, 0xDC00, 0xD800};
  static const char* const words[] = {"",        "$null", "\\$null", "milk",
                                      "\\ud83c", "🌿",     "null",    "2026-11-22T18:00:00Z"};
  if (random.chance(3)) return ns::String(oneOf(random, words));
  std::u16string text;
  for (size_t i = random.below(8); i > 0; --i) text += oneOf(random, units);
  return ns::String(std::u16string_view(text));
}

ns::Value randomValue(Random& random, int depth) {
  switch (random.below(depth > 0 ? 9 : 6)) {
    case 0:
      return randomNumber(random);
    case 1:
      return randomDate(random);
    case 2: {
      const ns::Data data(std::string(random.below(7), '\xF0') + "x");
      return random.chance(2) ? ns::Value(data)
                              : ns::Value::dataWithArchivedClass(data, randomClass(random, "Data"));
    }
    case 3:
      return randomString(random);
    case 4:
      return randomString(random).withArchivedClass(randomClass(random, "String"));
    case 5:
      return randomPlatformValue(random);
    case 6:
      return randomText(random, depth);
    default:
      return randomContainer(random, depth);
  }
}

std::shared_ptr<OLDataManager> randomDocument(Random& random) {
  const auto document = OLDataManager::create();
  if (random.chance(2)) document->setTreeController(OLTreeUndoController::create());
  const auto tree = document->treeController()->tree();
  if (!random.chance(4)) {
    document->setObjectValueForKey(
        ns::Dictionary{{"title", randomString(random)}, {"keywords", ns::Array{"a", "b"}}},
        "documentProperties");
  }
  document->setObjectValueForKey(randomValue(random, 3), "windowFrame");
  tree->rootNode()->setIsExpanded(random.chance(2));
  OLNodeList items{tree->rootItem()};
  static const char* const keys[] = {"title", "note", "checkStatus", "showCheckState",
                                     "label", "date", "größe"};
  for (size_t i = random.below(12); i > 0; --i) {
    const Item item = tree->addChildToItem(items[random.below(items.size())]);
    for (size_t n = random.below(5); n > 0; --n) {
      item->setDataForKey(randomValue(random, 3), ns::Value(oneOf(random, keys)));
    }
    if (random.chance(2)) item->setDataForKey(randomText(random, 2), "title");
    item->setIsExpanded(random.chance(2));
    item->setIsOutlineStyle(random.chance(2));
    if (random.chance(9)) item->setData(std::nullopt);
    items.push_back(item);
  }
  const Item last = items.back();
  if (last->countChildren() == 0 && random.chance(5)) last->setChildren(std::nullopt);
  return document;
}

}  // namespace tavlin::testing
