#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/DocumentProperties.h"
#include "exchange/Exchange.h"
#include "platform/foundation/String.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// What simple formats take of an item, read in one go.
struct ItemContent {
  ns::Value title;  ///< A string, attributed text, or none.
  ns::Value note;   ///< The same.
  bool isChecked = false;
  bool showsCheck = true;
  bool isFolded = false;     ///< Has children, and does not show them.
  uint64_t otherValues = 0;  ///< Entries of the item beside these.
};

/// Raises nothing: a title that is no text counts among the other values.
[[nodiscard]] ItemContent contentOfItem(const OLNode& item);

/// How many attributes the runs of a title or note have, each for itself; 0 for plain text.
[[nodiscard]] uint64_t countOfAttributes(const ns::Value& text);

/// The UTF-8 of strings, in storage that is used again and again.
class Utf8Text {
 public:
  /// Valid until the next call.  An unpaired surrogate becomes U+FFFD and is counted.
  [[nodiscard]] std::string_view of(const ns::String& string, Losses& losses);
  /// The same for a value: a string, attributed text, or none, which is empty.
  [[nodiscard]] std::string_view of(const ns::Value& text, Losses& losses);

 private:
  ns::String kept_;
  std::string bytes_;
};

/// What of the document beside its items is no property, or of another kind than its key asks for:
/// entries of the root, of the properties, elements of lists.
[[nodiscard]] uint64_t countOfOtherDocumentValues(const OLDataManager& document);
/// What an archive names beside its root object, which has no place but in documents.  Costs next
/// to nothing; raises as opening the archive does.
[[nodiscard]] uint64_t countOfOtherArchiveEntries(const ns::Data& archive);
/// Makes them the properties of a document; none makes no dictionary.
void setDocumentProperties(OLDataManager& document, const std::vector<Property>& properties);

/// "12 attributes of text and 1 value have no place in opml": what was left out, in words.
/// `whereTo` is "opml"; `ofText` follows the attributes.
[[nodiscard]] std::string describeLosses(const Losses& losses, std::string_view whereTo,
                                         std::string_view ofText = " of text");

}  // namespace tavlin
