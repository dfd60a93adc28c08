#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "edit/DocumentEditor.h"

namespace tavlin {

/// An edit of items that are named by paths.
struct EditOperation {
  enum class Kind : uint8_t { add, set, move, remove, indent, outdent };

  Kind kind = Kind::add;
  std::vector<std::string> paths;  ///< Of the items that it is about; none for add.
  ItemPlace::Kind placeKind = ItemPlace::Kind::atEnd;
  std::string place;  ///< The path that goes with it, but for atEnd.
  ItemChange content;

  /// Raises EditRefusal where something that the operation needs is not there, or something is
  /// that it has no use for.
  void validate() const;
};

/// "add", "set", "move", "delete", "indent", "outdent".
[[nodiscard]] const char* nameOf(EditOperation::Kind kind);
[[nodiscard]] std::optional<EditOperation::Kind> editOperationKindNamed(std::string_view name);

/// What an operation did.
struct EditOutcome {
  bool hasChanged = false;
  std::vector<std::string> newPaths;  ///< Of what was added or moved.
};

/// Carries out a valid operation; the paths are those at that moment.  Raises EditRefusal, and then
/// has changed nothing.
EditOutcome carryOut(DocumentEditor& editor, const EditOperation& operation);

/// The operation that a line of JSON describes, such as
///
///     {"op": "add", "under": "2", "title": "Leeks", "checked": true}
///     {"op": "set", "paths": ["2.1"], "checked": false}
///     {"op": "move", "paths": ["2.1", "2.3"], "before": "1"}
///
/// "unchecked": true says the same as "checked": false, and is for set alone.
/// Valid when it comes back.  Raises EditRefusal: for what is no JSON, unknown and repeated keys,
/// values of a wrong kind, text that is no Unicode text, and as validate() does.
[[nodiscard]] EditOperation editOperationFromJson(std::string_view line);

}  // namespace tavlin
