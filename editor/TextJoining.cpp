#include "editor/TextJoining.h"

#include <string>
#include <vector>

#include "platform/text/AttributedString.h"

namespace tavlin {

namespace {

bool isRich(const ns::Value& text) { return text.kind() == ns::Kind::attributedString; }

std::u16string unitsOf(const ns::Value& text) {
  if (text.isString()) return text.string().units();
  return isRich(text) ? ns::AttributedString(text).string().units() : std::u16string();
}

void addStretches(std::vector<ns::AttributedString::Stretch>& stretches, const ns::Value& text) {
  if (!isRich(text)) {
    stretches.emplace_back(unitsOf(text).size(), ns::Dictionary());
    return;
  }
  const ns::AttributedString rich(text);
  for (size_t i = 0; i < rich.runCount(); ++i) {
    stretches.emplace_back(rich.runRange(i).length, rich.runAttributes(i));
  }
}

}  // namespace

size_t lengthOfText(const ns::Value& text) { return unitsOf(text).size(); }

std::pair<ns::Value, ns::Value> splitText(const ns::Value& text, size_t at) {
  if (isRich(text)) {
    const ns::AttributedString rich(text);
    return {rich.attributedSubstringFromRange({0, at}).asValue(),
            rich.attributedSubstringFromRange({at, rich.length() - at}).asValue()};
  }
  const std::u16string units = unitsOf(text);
  return {ns::Value(ns::String(units.substr(0, at))), ns::Value(ns::String(units.substr(at)))};
}

ns::Value joinedText(const ns::Value& one, const ns::Value& other, const char* between) {
  const std::u16string first = unitsOf(one);
  const std::u16string second = unitsOf(other);
  if (second.empty() && !one.isNone()) return one;
  if (first.empty() && isRich(one) == isRich(other)) return other;
  const bool areBoth = !first.empty() && !second.empty();
  const std::u16string link = areBoth ? ns::String(between).units() : std::u16string();
  const ns::String text(first + link + second);
  if (!isRich(one) && !isRich(other)) return ns::Value(text);
  std::vector<ns::AttributedString::Stretch> stretches;
  addStretches(stretches, one);
  if (!link.empty()) stretches.emplace_back(link.size(), ns::Dictionary());
  addStretches(stretches, other);
  return ns::AttributedString::withStretches(text, stretches).asValue();
}

}  // namespace tavlin
