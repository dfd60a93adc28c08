#pragma once

#include <string_view>

/// What is the same in all pages that exportHtml() writes.
namespace tavlin::html_page {

/// The content of the style element, and its SHA-256 in base64, by which the page's policy knows
/// it.  A test compares them.
extern const std::string_view kStyle;
extern const std::string_view kStyleHash;

/// The same for the script element.
extern const std::string_view kScript;
extern const std::string_view kScriptHash;

}  // namespace tavlin::html_page
