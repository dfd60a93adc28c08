#include "ui/Localized.h"

#include <vector>

#include "platform/propertylist/Bundle.h"

namespace tavlin {

std::string localized(const char* text) {
  static const bool isEnglish = [] {
    const std::vector<std::string> languages = ns::Bundle::preferredLanguages();
    return languages.empty() || languages.front().starts_with("en");
  }();
  if (isEnglish) return text;
  return ns::Bundle::mainBundle().localizedStringForKeyValueTable(text, text, "Outline").utf8();
}

}  // namespace tavlin
