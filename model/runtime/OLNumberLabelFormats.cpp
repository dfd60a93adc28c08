#include "model/runtime/OLNumberLabelFormats.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/OLTree.h"

namespace tavlin {
namespace {

constexpr size_t kLongestAncestors = 256;

std::string romanText(uint64_t number) {
  using Numeral = std::pair<uint64_t, std::string_view>;
  static constexpr std::array<Numeral, 13> kNumerals{{{1000, "m"},
                                                      {900, "cm"},
                                                      {500, "d"},
                                                      {400, "cd"},
                                                      {100, "c"},
                                                      {90, "xc"},
                                                      {50, "l"},
                                                      {40, "xl"},
                                                      {10, "x"},
                                                      {9, "ix"},
                                                      {5, "v"},
                                                      {4, "iv"},
                                                      {1, "i"}}};
  std::string text;
  for (const auto& [worth, numeral] : kNumerals) {
    for (; number >= worth; number -= worth) text += numeral;
  }
  return text;
}

std::string letterText(uint64_t number) {
  constexpr uint64_t kLetters = 26;
  std::string text;
  for (; number > 0; number = (number - 1) / kLetters) {
    text += static_cast<char>('a' + (number - 1) % kLetters);
  }
  std::ranges::reverse(text);
  return text;
}

ns::String joined(const std::vector<ns::String>& parts) {
  if (std::ranges::all_of(parts, &ns::String::isAscii)) {
    std::string text;
    for (const auto& part : parts) text += part.ascii();
    return ns::String::fromAscii(text);
  }
  std::u16string text;
  for (const auto& part : parts) part.appendUnitsTo(text);
  return ns::String(text);
}

bool hasSuffix(const ns::String& text, const ns::String& suffix) {
  if (suffix.length() > text.length()) return false;
  return text.substring({text.length() - suffix.length(), suffix.length()}) == suffix;
}

// The numbers of the parent and its ancestors, out of the parent's label.
ns::String numbersOf(const ns::Value& label, const OLNumberLabelOptions& options) {
  const ns::String text = label.string();
  const size_t around = options.prefix.length() + options.suffix.length();
  if (around == 0 || text.length() < around) return text;
  if (!text.hasPrefix(options.prefix) || !hasSuffix(text, options.suffix)) return text;
  return text.substring({options.prefix.length(), text.length() - around});
}

void replaceByDocument(ns::String& text, const OLTree& tree, const char* key) {
  const ns::Value value = tree.objectValueForKey(key);
  if (value.isString()) text = value.string();
}

}  // namespace

ns::String numberText(uint64_t number, OLNumberType type) {
  constexpr uint64_t kLargestRoman = 3999;
  const bool isRoman = type == OLNumberType::upperRoman || type == OLNumberType::lowerRoman;
  const bool isDecimal =
      type == OLNumberType::decimal || number == 0 || (isRoman && number > kLargestRoman);
  if (isDecimal) return ns::String::fromAscii(std::to_string(number));
  std::string text = isRoman ? romanText(number) : letterText(number);
  if (type == OLNumberType::upperRoman || type == OLNumberType::upperLetters) {
    for (char& letter : text) letter = static_cast<char>(letter - 'a' + 'A');
  }
  return ns::String::fromAscii(text);
}

OLNumberLabelOptions OLNumberLabelOptions::replacedByDocument(const OLTree& tree) const {
  OLNumberLabelOptions options = *this;
  const ns::Value type =
      tree.objectValueForKey(OLNumberLabelKeys::documentNumberLabelFormatNumberType);
  const int64_t code = type.integerValue();
  if (type.isNumber() && code >= 0 && code <= static_cast<int64_t>(OLNumberType::lowerLetters)) {
    options.numberType = static_cast<OLNumberType>(code);
  }
  replaceByDocument(options.prefix, tree, OLNumberLabelKeys::documentNumberLabelFormatPrefix);
  replaceByDocument(options.suffix, tree, OLNumberLabelKeys::documentNumberLabelFormatSuffix);
  replaceByDocument(options.separator, tree, OLNumberLabelKeys::documentNumberLabelFormatSeparator);
  const ns::Value shows =
      tree.objectValueForKey(OLNumberLabelKeys::documentNumberLabelFormatShowAncestorNumber);
  if (shows.isNumber() || shows.isString()) options.showsAncestorNumber = shows.boolValue();
  return options;
}

ns::Value OLNumberLabelTextFormat::numberLabelWithParentNumberLabelItemIndexItemLevel(
    const ns::Value& parentNumberLabel, uint64_t itemIndex, int64_t itemLevel) const {
  const bool hasLevel = itemLevel >= 0 && itemLevel != static_cast<int64_t>(ns::kNotFound);
  const auto level = hasLevel ? static_cast<uint64_t>(itemLevel) : 0;
  // An item that its parent does not list has the number 0.
  const ns::String number = numberText(itemIndex + 1, numberTypeOfLevel(level));
  ns::String ancestors;
  if (options_.showsAncestorNumber) ancestors = numbersOf(parentNumberLabel, options_);
  if (ancestors.empty()) return joined({options_.prefix, number, options_.suffix});
  if (ancestors.length() > kLongestAncestors) ancestors = "…";
  return joined({options_.prefix, ancestors, options_.separator, number, options_.suffix});
}

std::shared_ptr<OLNumberLabelFormat> OLNumberLabelFormatLegal::copy() const {
  return std::make_shared<OLNumberLabelFormatLegal>(*this);
}

OLNumberType OLNumberLabelFormatLegal::numberTypeOfLevel(uint64_t /*level*/) const {
  return options().numberType;
}

OLNumberLabelOptions OLNumberLabelFormatHarvard::defaultOptions() {
  OLNumberLabelOptions options;
  options.suffix = ".";
  options.showsAncestorNumber = false;
  return options;
}

std::shared_ptr<OLNumberLabelFormat> OLNumberLabelFormatHarvard::copy() const {
  return std::make_shared<OLNumberLabelFormatHarvard>(*this);
}

OLNumberType OLNumberLabelFormatHarvard::numberTypeOfLevel(uint64_t level) const {
  static constexpr std::array kTypes{OLNumberType::upperRoman, OLNumberType::upperLetters,
                                     OLNumberType::decimal, OLNumberType::lowerLetters,
                                     OLNumberType::lowerRoman};
  return kTypes[level % kTypes.size()];
}

std::shared_ptr<OLNumberLabelFormat> numberLabelFormatOfDocument(const OLTree& tree) {
  const ns::Value selected = tree.objectValueForKey(OLNumberLabelKeys::selectedNumberLabelFormat);
  if (selected.string() == OLNumberLabelKeys::numberLabelFormatHarvard) {
    return std::make_shared<OLNumberLabelFormatHarvard>(
        OLNumberLabelFormatHarvard::defaultOptions().replacedByDocument(tree));
  }
  return std::make_shared<OLNumberLabelFormatLegal>(
      OLNumberLabelFormatLegal::defaultOptions().replacedByDocument(tree));
}

}  // namespace tavlin
