#include "model/OLRuntimeAttributes.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tavlin {
namespace {

constexpr std::array kFlags{OLRuntimeFlag::checkedDescendant, OLRuntimeFlag::checkedAllChildren,
                            OLRuntimeFlag::checkedAncestor};
constexpr std::array<const char*, kFlags.size()> kNames{SNRuntimeAttributeCheckedDescendant,
                                                        SNRuntimeAttributeCheckedAllChildren,
                                                        SNRuntimeAttributeCheckedAncestor};

const char* nameOf(OLRuntimeFlag flag) { return kNames[static_cast<size_t>(flag)]; }

std::optional<OLRuntimeFlag> flagNamed(std::string_view name) {
  const auto* const found = std::ranges::find(kNames, name);
  if (found == kNames.end()) return std::nullopt;
  return kFlags[static_cast<size_t>(found - kNames.begin())];
}

std::optional<OLRuntimeFlag> flagNamed(const ns::Value& name) {
  if (!name.isString()) return std::nullopt;
  const ns::String text = name.string();
  return text.isAscii() ? flagNamed(text.ascii()) : std::nullopt;
}

}  // namespace

OLRuntimeAttributes::OLRuntimeAttributes(ns::Dictionary attributes)
    : others_(std::move(attributes)) {
  for (const OLRuntimeFlag flag : kFlags) {
    const ns::Value value = others_.objectForKey(nameOf(flag));
    if (value.kind() == ns::Kind::boolean) storeFlag(flag, value.boolValue());
  }
}

ns::Dictionary OLRuntimeAttributes::dictionary() const {
  if (present_ == 0) return others_;
  std::vector<ns::Dictionary::Entry> entries;
  for (const OLRuntimeFlag flag : kFlags) {
    if (const auto value = valueOfFlag(flag)) entries.emplace_back(nameOf(flag), *value);
  }
  entries.insert(entries.end(), others_.begin(), others_.end());
  ns::Dictionary all(std::move(entries));
  all.setArchivedClass(others_.archivedClass());
  return all;
}

std::optional<ns::Value> OLRuntimeAttributes::valueOfFlag(std::optional<OLRuntimeFlag> flag) const {
  if (!flag || (present_ & bitOf(*flag)) == 0) return std::nullopt;
  return ns::Value((values_ & bitOf(*flag)) != 0);
}

ns::Value OLRuntimeAttributes::objectForKey(const ns::Value& key) const {
  const auto value = valueOfFlag(flagNamed(key));
  return value ? *value : others_.objectForKey(key);
}

ns::Value OLRuntimeAttributes::objectForKey(std::string_view key) const {
  const auto value = valueOfFlag(flagNamed(key));
  return value ? *value : others_.objectForKey(key);
}

void OLRuntimeAttributes::setObjectForKey(const ns::Value& value, const ns::Value& key) {
  if (const auto flag = flagNamed(key)) {
    if (value.kind() == ns::Kind::boolean) return setFlag(*flag, value.boolValue());
    present_ &= static_cast<uint8_t>(~bitOf(*flag));
  }
  others_.setObjectForKey(value, key);
}

bool OLRuntimeAttributes::otherFlag(OLRuntimeFlag flag) const {
  return !others_.empty() && others_.objectForKey(nameOf(flag)).boolValue();
}

void OLRuntimeAttributes::storeFlag(OLRuntimeFlag flag, bool value) {
  const uint8_t bit = bitOf(flag);
  if ((present_ & bit) == 0 && !others_.empty()) others_.removeObjectForKey(nameOf(flag));
  present_ |= bit;
  values_ = static_cast<uint8_t>(value ? values_ | bit : values_ & ~bit);
}

}  // namespace tavlin
