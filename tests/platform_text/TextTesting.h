#pragma once

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/text/Font.h"
#include "platform/text/MutableAttributedString.h"
#include "platform/text/ParagraphStyle.h"

namespace ns {

/// Text of UTF-16 units, without attributes.
inline AttributedString textOf(const std::u16string& units) {
  return AttributedString(String(std::u16string_view(units)));
}

/// A value as tests compare it: strings and numbers as they are, fonts by name and size, styles
/// by head indent and alignment, others by their kind.
inline std::string printed(const Value& value) {
  switch (value.kind()) {
    case Kind::string:
      return value.string().utf8();
    case Kind::integer:
      return std::to_string(value.integerValue());
    case Kind::font: {
      const Font font = *Font::fromValue(value);
      return font.fontName().utf8() + " " + std::to_string(static_cast<int>(font.pointSize()));
    }
    case Kind::paragraphStyle: {
      const ParagraphStyle style = *ParagraphStyle::fromValue(value);
      return "head " + std::to_string(static_cast<int>(style.headIndent())) + " align " +
             std::to_string(static_cast<int>(style.alignment()));
    }
    default:
      return describe(value.kind());
  }
}

/// Runs in order, neighbours that are equal put together, keys sorted: "[see|][below|a=1,b=2]".
inline std::string printed(const AttributedString& text) {
  std::string all;
  std::string last;
  for (size_t run = 0; run < text.runCount(); ++run) {
    std::vector<std::string> entries;
    for (const auto& [key, value] : text.runAttributes(run)) {
      entries.push_back(key.string().utf8() + "=" + printed(value));
    }
    std::sort(entries.begin(), entries.end());
    std::string attributes;
    for (const std::string& entry : entries) attributes += (attributes.empty() ? "" : ",") + entry;
    const std::string part = text.string().substring(text.runRange(run)).utf8();
    if (run > 0 && attributes == last) {
      all.insert(all.rfind('|'), part);
    } else {
      all += "[" + part + "|" + attributes + "]";
    }
    last = attributes;
  }
  return all;
}

/// Whether runs cover the text exactly, none of them empty.
inline bool coversExactly(const AttributedString& text) {
  size_t at = 0;
  for (size_t run = 0; run < text.runCount(); ++run) {
    const Range range = text.runRange(run);
    if (range.location != at || range.length == 0) return false;
    at = range.end();
  }
  return at == text.length();
}

/// A folder of its own, removed with all it holds at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavlin-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  [[nodiscard]] std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace ns
