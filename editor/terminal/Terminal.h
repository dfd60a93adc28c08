#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "editor/Drawing.h"
#include "editor/Key.h"

namespace tavlin {

/// The terminal of this process as a full screen, from the beginning of this object to its end,
/// however that comes: also when the program fails.  One at a time.
class Terminal {
 public:
  /// Raises std::runtime_error where there is none, or nothing is known of its kind.
  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  [[nodiscard]] size_t columns() const;
  [[nodiscard]] size_t rows() const;
  /// Whether it has few characters beside ASCII.
  [[nodiscard]] bool isPlain() const { return isPlain_; }
  /// Tells the reader what sequences the terminal's description has for keys.
  static void addSequences(KeyReader& reader);

  /// Takes over the size that the window has now.
  void fitWindow();
  void show(const Drawing& drawing);
  /// Has the next show() draw everything.
  void forgetScreen();
  /// Puts text on the system's clipboard, where the terminal can.
  void setClipboard(const std::string& text);
  /// Asks for it; the answer comes as a key.
  void askForClipboard();
  /// Gives the terminal back, stops the process as the user's shell expects, and takes it again.
  void suspend();

  /// What happened while waiting.
  struct Event {
    bool hasInput = false;
    bool isResized = false;
    bool isSuspended = false;
    bool isEnded = false;  ///< A signal asks to end, or the terminal is gone.
    std::string input;
  };
  /// Waits for input or a signal, so many milliseconds at most; -1 for ever.
  Event wait(int milliseconds);

 private:
  void enter();
  void leave();
  void tell(std::string_view bytes) const;

  std::vector<DrawnLine> shown_;
  bool isPlain_ = false;
  bool knowsXterm_ = false;
  bool canHideCursor_ = true;
};

}  // namespace tavlin
