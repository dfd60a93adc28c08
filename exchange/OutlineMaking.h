#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "exchange/Exchange.h"

namespace tavlin {

/// Makes the document that a reader answers.
///
///     OutlineMaking making;
///     auto item = making.addItem(making.root());
///     making.setTitle(*item, "Milk");
///     return making.finish();
class OutlineMaking {
 public:
  OutlineMaking();

  [[nodiscard]] const std::shared_ptr<OLNode>& root() const { return root_; }
  [[nodiscard]] OLDataManager& document() { return *imported_.document; }
  Losses& losses() { return imported_.losses; }

  /// A new last child.
  std::shared_ptr<OLNode> addItem(const std::shared_ptr<OLNode>& parent);
  /// A text that is empty is stored as a title, and as a note it is none.
  static void setTitle(OLNode& item, std::string_view utf8);
  static void setNote(OLNode& item, std::string_view utf8);

  /// Notes that the item came with a check mark, set or not.
  void setMark(OLNode& item, bool isChecked);
  /// Notes that it came without one: it hides its mark when any other item came with one.
  void addUnmarked(const std::shared_ptr<OLNode>& item) { unmarked_.push_back(item); }

  /// Unfolds every item, for formats that do not say which are.
  void expandAll();

  /// The document; nothing may be added afterwards.
  [[nodiscard]] Imported finish();

 private:
  Imported imported_;
  std::shared_ptr<OLNode> root_;
  std::vector<std::shared_ptr<OLNode>> unmarked_;
  bool hasMarks_ = false;
};

/// Raises ExchangeException where blanks or tabs that indent the lines of titles, `bytes` for each
/// level, would take more than `most` bytes in all, as they do where a branch has tens of thousands
/// of levels.  `format` is the name that the message gives.  Linear, without a look at any text.
void checkIndentation(const ExportSource& source, uint64_t bytes, uint64_t most,
                      std::string_view format);

/// Text that people have, as UTF-8: without byte order mark, UTF-16 by its byte order mark
/// converted into `storage`.  Raises ExchangeException for text that is neither.
[[nodiscard]] std::string_view textOfContent(std::string_view content, std::string& storage);

}  // namespace tavlin
