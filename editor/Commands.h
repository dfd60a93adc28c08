#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "editor/Key.h"

namespace tavlin {

/// What a key does where nothing is being typed.
enum class EditorCommand : uint8_t {
  up,
  down,
  fold,
  unfold,
  first,
  last,
  pageUp,
  pageDown,
  previousSibling,
  nextSibling,
  parent,
  newItem,
  editTitle,
  editNote,
  indent,
  outdent,
  moveUp,
  moveDown,
  check,
  remove,
  cut,
  copy,
  paste,
  undo,
  redo,
  search,
  next,
  previous,
  mark,
  foldAll,
  unfoldAll,
  level1,
  level2,
  level3,
  level4,
  level5,
  level6,
  level7,
  level8,
  level9,
  numbers,
  save,
  saveAs,
  revert,
  quit,
  help,
  redraw,
};

/// A command as it is shown.
struct CommandEntry {
  EditorCommand command;
  const char* name;  ///< In the file of keys.
  const char* keys;  ///< By default, with blanks between them.
};
[[nodiscard]] const std::vector<CommandEntry>& commandEntries();
/// What it does, in the user's language; the levels share one.
[[nodiscard]] std::string descriptionOf(EditorCommand command);

/// Which key does what.
class KeyTable {
 public:
  /// The keys as they are without a file.
  KeyTable();

  /// Takes the lines of a file: a key and the name of a command ("Ctrl-T indent"), or "none" for a
  /// key that is to do nothing.  "#" begins a comment; the key of that sign is called Hash. Answers
  /// what is wrong, a line each: "line 3: there is no command \"indet\"".
  std::vector<std::string> read(std::string_view content);

  [[nodiscard]] std::optional<EditorCommand> commandOf(const Key& key) const;
  /// The names of the keys that carry out a command, in order.
  [[nodiscard]] std::vector<std::string> keysOf(EditorCommand command) const;

 private:
  void bind(const std::string& key, EditorCommand command);

  std::map<std::string, EditorCommand> commands_;             // by name of the key
  std::vector<std::pair<std::string, EditorCommand>> order_;  // as they were bound
};

}  // namespace tavlin
