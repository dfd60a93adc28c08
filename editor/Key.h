#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tavlin {

enum class KeyCode : uint8_t {
  none,
  character,
  up,
  down,
  left,
  right,
  home,
  end,
  pageUp,
  pageDown,
  enter,
  tab,
  backspace,
  deleteForward,
  insert,
  escape,
  function,
  paste,      ///< Text that the terminal says was pasted.
  clipboard,  ///< The system's clipboard, which the terminal was asked for.
  click,
  wheelUp,
  wheelDown,
};

/// What came from the keyboard, or from the mouse, or was pasted.
struct Key {
  KeyCode code = KeyCode::none;
  char32_t character = 0;  ///< Of a character; of a function key its number.
  bool shift = false;      ///< Not of characters, which are other ones then.
  bool alt = false;
  bool ctrl = false;
  size_t row = 0;  ///< Of the mouse, from 0; so is the next.
  size_t column = 0;
  std::string text;  ///< What was pasted, as UTF-8.

  bool operator==(const Key&) const = default;

  static Key of(KeyCode code) {
    Key key;
    key.code = code;
    return key;
  }
  static Key ofCharacter(char32_t character) {
    Key key = of(KeyCode::character);
    key.character = character;
    return key;
  }
  static Key withCtrl(char32_t letter) {
    Key key = ofCharacter(letter);
    key.ctrl = true;
    return key;
  }
};

/// "Ctrl-S", "Alt-Up", "Space", "Hash", "F2", "g": the name of a key in help and configuration.
[[nodiscard]] std::string nameOfKey(const Key& key);
[[nodiscard]] std::optional<Key> keyNamed(std::string_view name);

/// Makes keys of what a terminal sends.
///
/// Understands what xterm, tmux, screen, rxvt, the Linux console and VT terminals send, whichever
/// of them the environment names, and beside that what the terminal's description says.
class KeyReader {
 public:
  /// A sequence of the terminal's own.
  void addSequence(std::string_view sequence, const Key& key);

  void feed(std::string_view bytes) { bytes_ += bytes; }
  /// The next whole key, or none until more comes.
  std::optional<Key> next();
  /// Whether there is a beginning that could be a key by itself: an Escape.  Whoever reads waits a
  /// moment for more, and then calls finish().
  [[nodiscard]] bool isWaiting() const { return !bytes_.empty() && !isPasting_; }
  /// Whether something is being pasted whose end has not come yet.
  [[nodiscard]] bool isPasting() const { return isPasting_; }
  /// Nothing more comes that belongs to what is there.
  void finish() { isFinal_ = true; }

 private:
  struct Parsed {
    Key key;
    size_t length;  // 0: incomplete
  };
  [[nodiscard]] Parsed parse(std::string_view bytes) const;
  [[nodiscard]] Parsed parseEscape(std::string_view bytes) const;
  [[nodiscard]] static Parsed parseControlSequence(std::string_view bytes);
  [[nodiscard]] static Parsed parseClipboard(std::string_view bytes);
  [[nodiscard]] static Parsed parseCharacter(std::string_view bytes);

  std::string bytes_;
  std::map<std::string, Key, std::less<>> sequences_;
  std::string pasted_;
  bool isPasting_ = false;
  bool isFinal_ = false;
};

}  // namespace tavlin
