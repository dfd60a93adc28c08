#include "outline/common/Formats.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "exchange/HtmlFormat.h"
#include "exchange/ItemContent.h"
#include "exchange/JsonFormat.h"
#include "exchange/MarkdownFormat.h"
#include "exchange/OpmlFormat.h"
#include "exchange/TextFormat.h"
#include "outline/common/Messages.h"

namespace tavlin {

namespace {

template <auto write>
Losses unnumbered(const ExportSource& source, const NumberLabels& /*numbers*/,
                  const TextSink& sink) {
  return write(source, sink);
}

Losses writeHtml(const ExportSource& source, const NumberLabels& numbers, const TextSink& sink) {
  return exportHtml(source, HtmlOptions{numbers}, sink);
}

}  // namespace

const std::vector<Format>& formats() {
  static const std::vector<Format> kFormats = {
      {"text", {"txt", "text"}, unnumbered<exportText>, importText},
      {"markdown", {"md", "markdown", "mdown", "mkd"}, unnumbered<exportMarkdown>, importMarkdown},
      {"opml", {"opml"}, unnumbered<exportOpml>, importOpml},
      {"html", {"html", "htm"}, writeHtml, nullptr, true},
      {"json", {"json"}, unnumbered<exportJson>, importJson}};
  return kFormats;
}

std::vector<std::string> formatNames(bool thatComeBack) {
  std::vector<std::string> names;
  for (const Format& format : formats()) {
    if (format.read || !thatComeBack) names.emplace_back(format.name);
  }
  return names;
}

const Format* formatNamed(const std::string& name) {
  const auto found = std::ranges::find(formats(), name, [](const Format& f) { return f.name; });
  return found == formats().end() ? nullptr : &*found;
}

const Format* formatOfFile(const std::string& file) {
  std::string extension = std::filesystem::path(file).extension().string();
  if (extension.empty()) return nullptr;
  extension.erase(0, 1);
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const auto found = std::ranges::find_if(formats(), [&](const Format& format) {
    return std::ranges::find(format.extensions, extension) != format.extensions.end();
  });
  return found == formats().end() ? nullptr : &*found;
}

void reportLosses(const std::string& file, const Losses& losses, const std::string& whereTo,
                  const std::string& ofText) {
  if (losses.any()) report(file, describeLosses(losses, whereTo, ofText));
}

}  // namespace tavlin
