#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "exchange/DocumentProperties.h"
#include "exchange/Exchange.h"

namespace tavlin {

/// Properties as YAML between two lines "---"; empty for none.  Lists are lists, texts are quoted,
/// so that none is taken for a number, a date or a truth value.
[[nodiscard]] std::string frontMatter(const std::vector<Property>& properties, Losses& losses);

/// What a Markdown text begins with.
struct FrontMatter {
  size_t length = 0;  ///< In bytes, with both lines "---"; 0 where there is none.
  std::vector<Property> properties;
};

/// Reads it.  A key that is no property, and a value that is neither text nor a list of texts, are
/// counted.  One text where a list belongs is a list of one, keywords parted by commas several; a
/// list where one text belongs is joined by commas; "author" stands in for "authors".  What stands
/// between such lines and is no mapping is no front matter.
///
/// Raises ExchangeException with the line where it is no YAML.
[[nodiscard]] FrontMatter readFrontMatter(std::string_view markdown, Losses& losses);

}  // namespace tavlin
