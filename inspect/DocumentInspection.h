#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Data.h"

namespace tavlin {

/// What a finding is about.
enum class FindingCode : uint8_t {
  archive,      ///< The archive is malformed: no program that reads it takes the document.
  parentLink,   ///< A parent link leads elsewhere than to the item that lists the item.
  listedTwice,  ///< An item stands in several lists of children, or twice in one.
  properties,   ///< Document properties, or one of them, of a wrong type.
  runs,         ///< The attribute runs of a text do not cover it.
  font,         ///< A text in an interface font, which documents may not name.
  unused,       ///< Entries of the archive that nothing refers to.
  version       ///< An item of an "encoding_version" that this program does not know.
};

enum class FindingSeverity : uint8_t { error, warning, note };

/// "archive", "parent-link", "listed-twice", ...
[[nodiscard]] std::string_view nameOf(FindingCode code);
/// "error", "warning", "note"
[[nodiscard]] std::string_view nameOf(FindingSeverity severity);
/// Errors are what keeps the document from being loaded or shown as it was meant, warnings what
/// loading mends by itself, notes what nobody has to care about.
[[nodiscard]] FindingSeverity severityOf(FindingCode code);

/// Something that is not as it should be.
struct Finding {
  std::string path;  ///< Of the item, as ItemPath writes it; empty: the document, or its root.
  FindingCode code = FindingCode::archive;
  std::string text;    ///< What is wrong, in one line without a full stop at its end.
  std::string remedy;  ///< What the repair does about it, in such words; empty: nothing.
  bool isRepairable = false;
  uint64_t count = 1;  ///< How many it stands for, where those of a kind are summed up.

  [[nodiscard]] FindingSeverity severity() const { return severityOf(code); }
};

/// What is wrong with a document, and its repair.
///
///     const DocumentInspection inspection(ns::readFile(path));
///     for (const Finding& finding : inspection.findings()) print(finding.text);
///     if (const auto mended = inspection.repaired()) ns::writeFileAtomically(path, *mended);
///
/// It looks into the archive, below what loads a document: loading refuses some of what is found
/// here, and mends or passes over some.  Every object that the archive's top leads to is looked at
/// once, however many others refer to it, and depth costs no stack.  What is looked at more than
/// once by its nature, the path of each finding and the characters of text in a private font, is
/// bounded: findings of one kind that would be named by endless paths are summed up in one.
class DocumentInspection {
 public:
  /// Inspects the content of a file, be it anything.  Raises nothing but what memory raises.
  explicit DocumentInspection(const ns::Data& file);
  ~DocumentInspection();
  DocumentInspection(DocumentInspection&&) noexcept;
  DocumentInspection& operator=(DocumentInspection&&) noexcept;

  /// Those of the document as a whole first, then by item in document order.
  [[nodiscard]] const std::vector<Finding>& findings() const { return findings_; }
  /// How many of them repaired() mends; of those that are summed up each counts.
  [[nodiscard]] uint64_t repairableCount() const;
  /// How many are more than notes, counted the same way.
  [[nodiscard]] uint64_t faultCount() const;

  /// The content of the file with everything repairable mended; none where nothing is.
  ///
  ///   parent-link   the link names the item that lists the item; the root's names nothing
  ///   listed-twice  the second listing becomes an item of its own, with all that is below it; the
  ///                 copies have data of their own, with the same values in it
  ///   runs          runs behind the text are cut, and the last one goes on to its end
  ///   font          another font of the same size, as loading chooses it
  ///
  /// Records that have nothing to do with what is mended are as they were, with all their fields,
  /// also those that loading leaves out, and so are the forms of text that saving escapes.  What
  /// only a wrong parent link led to stays in the archive, although nothing refers to it any
  /// longer.  Other entries to which nothing refers are left out, and numbers of entries change.
  /// The result is inspected in turn: should it not be sound, ns::Exception is raised.
  [[nodiscard]] std::optional<ns::Data> repaired() const;

 private:
  struct Inspected;
  std::unique_ptr<Inspected> inspected_;  // none of an archive that cannot be opened
  std::vector<Finding> findings_;
};

}  // namespace tavlin
