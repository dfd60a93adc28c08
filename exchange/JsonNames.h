#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "platform/foundation/ClassInfo.h"
#include "platform/foundation/String.h"

/// The words of the JSON form, which its writer and its reader share.
namespace tavlin::json_names {

/// The version of the form, under "tavlin".
inline constexpr int kVersion = 1;

// Keys that say what an object is which stands for a value.  A dictionary is a plain object,
// unless it has one of these keys.
inline constexpr std::string_view kString = "string";
inline constexpr std::string_view kInteger = "integer";
inline constexpr std::string_view kReal = "real";
inline constexpr std::string_view kFloat = "float";
inline constexpr std::string_view kData = "data";
inline constexpr std::string_view kDate = "date";
inline constexpr std::string_view kArray = "array";
inline constexpr std::string_view kDictionary = "dictionary";
inline constexpr std::string_view kEntries = "entries";
inline constexpr std::string_view kText = "text";
inline constexpr std::string_view kRuns = "runs";
inline constexpr std::string_view kFont = "font";
inline constexpr std::string_view kRgb = "rgb";
inline constexpr std::string_view kDeviceRgb = "deviceRGB";
inline constexpr std::string_view kWhite = "white";
inline constexpr std::string_view kDeviceWhite = "deviceWhite";
inline constexpr std::string_view kCmyk = "cmyk";
inline constexpr std::string_view kColorName = "colorName";
inline constexpr std::string_view kParagraph = "paragraph";
inline constexpr std::string_view kUrl = "url";
inline constexpr std::string_view kObject = "object";
inline constexpr std::string_view kArchive = "archive";

inline constexpr std::array kTags = {
    kString,  kInteger,   kReal,      kFloat, kData,   kDate,      kArray, kDictionary,
    kEntries, kText,      kRuns,      kFont,  kRgb,    kDeviceRgb, kWhite, kDeviceWhite,
    kCmyk,    kColorName, kParagraph, kUrl,   kObject, kArchive};

/// Whether a key says what an object is.
[[nodiscard]] bool isTag(std::string_view key);

// What stands beside such keys.
inline constexpr std::string_view kClass = "class";
inline constexpr std::string_view kTextClass = "textClass";
inline constexpr std::string_view kSize = "size";
inline constexpr std::string_view kFlags = "flags";
inline constexpr std::string_view kCatalog = "catalog";
inline constexpr std::string_view kFallback = "fallback";

// Of a run.
inline constexpr std::string_view kLength = "length";
inline constexpr std::string_view kAttributes = "attributes";
inline constexpr std::string_view kFontFlags = "fontFlags";
inline constexpr std::string_view kBold = "bold";
inline constexpr std::string_view kItalic = "italic";

/// The name that an attribute of text has in a run, by the one it has in archives: "underline" for
/// "NSUnderline".  One without a name of its own keeps the other; none for one whose name means
/// something else in a run.
[[nodiscard]] std::optional<std::string_view> runName(std::string_view attribute);
/// The other way round.
[[nodiscard]] std::string_view attributeName(std::string_view runName);

/// The class of a name that says it all, "NSMutableArray"; none for any other name.
[[nodiscard]] ns::ClassRef wellKnownClass(std::string_view name);

}  // namespace tavlin::json_names
