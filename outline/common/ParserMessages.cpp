#include "outline/common/ParserMessages.h"

#include <cctype>
#include <optional>
#include <string_view>
#include <vector>

#include "outline/common/Messages.h"

namespace tavlin {

namespace {

bool isPlace(std::string_view text, size_t at) {
  return text[at] == '%' && at + 1 < text.size() &&
         std::isdigit(static_cast<unsigned char>(text[at + 1])) != 0;
}

/// What stands in a message at the places "%1", "%2" of a text; none where it is another text.
std::optional<std::vector<std::string>> partsOf(std::string_view message, std::string_view text) {
  std::vector<std::string> parts;
  size_t at = 0;
  while (at < text.size()) {
    if (!isPlace(text, at)) {
      if (message.empty() || message.front() != text[at]) return std::nullopt;
      message.remove_prefix(1);
      ++at;
      continue;
    }
    at += 2;
    size_t end = at;
    while (end < text.size() && !isPlace(text, end)) ++end;
    const std::string_view behind = text.substr(at, end - at);
    const size_t length = behind.empty() ? message.size() : message.find(behind);
    if (length == std::string_view::npos) return std::nullopt;
    parts.emplace_back(message.substr(0, length));
    message.remove_prefix(length);
  }
  if (!message.empty()) return std::nullopt;
  return parts;
}

/// The message in the user's language where it is this text, whose places come in order.
std::optional<std::string> translated(const std::string& message, const char* text) {
  const auto parts = partsOf(message, text);
  if (!parts) return std::nullopt;
  const std::string form = localized(text);
  std::string result;
  for (size_t at = 0; at < form.size(); ++at) {
    const auto number = static_cast<size_t>(isPlace(form, at) ? form[at + 1] - '0' : 0);
    if (number == 0 || number > parts->size()) {
      result += form[at];
    } else {
      result += (*parts)[number - 1];
      ++at;
    }
  }
  return result;
}

}  // namespace

std::string localizedParserMessage(const std::string& message) {
  if (const auto text = translated(message, "A subcommand is required")) return *text;
  if (const auto text = translated(message, "%1 is required")) return *text;
  if (const auto text = translated(message, "%1 excludes %2")) return *text;
  if (const auto text = translated(message, "%1: 1 required %2 missing")) return *text;
  if (const auto text = translated(message, "%1: At Most 1 required but received %2")) return *text;
  if (const auto text = translated(message, "%1: %2 not in {%3}")) return *text;
  if (const auto text = translated(message, "%1: Value %2 not in range %3 to %4")) return *text;
  if (const auto text = translated(message, "%1 was given a disallowed flag override"))
    return *text;
  if (const auto text = translated(message, "The following argument was not expected: %1")) {
    return *text;
  }
  if (const auto text = translated(message, "The following arguments were not expected: %1")) {
    return *text;
  }
  return message;
}

}  // namespace tavlin
