#include "edit/EditOperation.h"

#include <algorithm>
#include <array>

namespace tavlin {

namespace {

using Kind = EditOperation::Kind;

constexpr std::array<const char*, 6> kNames = {"add", "set", "move", "delete", "indent", "outdent"};

[[noreturn]] void refuse(const EditOperation& operation, const std::string& why) {
  throw EditRefusal(std::string(nameOf(operation.kind)) + " " + why);
}

bool isEmpty(const ItemChange& content) {
  return !content.title && !content.note && !content.isChecked;
}

ItemPlace placeOf(const DocumentEditor& editor, const EditOperation& operation) {
  if (operation.placeKind == ItemPlace::Kind::atEnd) return {};
  return {operation.placeKind, editor.itemAtPath(operation.place)};
}

}  // namespace

const char* nameOf(EditOperation::Kind kind) { return kNames[static_cast<size_t>(kind)]; }

std::optional<EditOperation::Kind> editOperationKindNamed(std::string_view name) {
  const auto found = std::ranges::find(kNames, name);
  if (found == kNames.end()) return std::nullopt;
  return static_cast<Kind>(found - kNames.begin());
}

void EditOperation::validate() const {
  const bool hasPlace = placeKind != ItemPlace::Kind::atEnd;
  if (kind == Kind::add) {
    if (!paths.empty()) refuse(*this, "takes no paths");
    if (!content.title) refuse(*this, "needs a title");
    return;
  }
  if (paths.empty()) refuse(*this, "needs the path of an item");
  if (kind == Kind::set && paths.size() > 1) refuse(*this, "takes one path");
  if (kind == Kind::set && isEmpty(content)) refuse(*this, "needs something to set");
  if (kind != Kind::set && !isEmpty(content)) refuse(*this, "takes no title, note or mark");
  if (kind == Kind::move && !hasPlace) refuse(*this, "needs a place: under, before or after");
  if (kind != Kind::move && hasPlace) refuse(*this, "takes no place");
}

EditOutcome carryOut(DocumentEditor& editor, const EditOperation& operation) {
  OLNodeList items;
  items.reserve(operation.paths.size());
  for (const std::string& path : operation.paths) items.push_back(editor.itemAtPath(path));
  const ItemPlace place = placeOf(editor, operation);
  const uint64_t before = editor.changeCount();
  OLNodeList placed;
  switch (operation.kind) {
    case Kind::add:
      placed = {editor.add(operation.content, place)};
      break;
    case Kind::set:
      editor.set(items.front(), operation.content);
      break;
    case Kind::move:
      placed = editor.move(items, place);
      break;
    case Kind::remove:
      editor.remove(items);
      break;
    case Kind::indent:
      editor.indent(items);
      break;
    case Kind::outdent:
      editor.outdent(items);
      break;
  }
  EditOutcome outcome{editor.changeCount() > before, {}};
  outcome.newPaths.reserve(placed.size());
  for (const auto& item : placed) outcome.newPaths.push_back(DocumentEditor::pathOf(item));
  return outcome;
}

}  // namespace tavlin
