#include "editor/terminal/EditorLoop.h"

#include "editor/terminal/Terminal.h"

namespace tavlin {

namespace {

// How long an Escape waits for what would make it a key, in milliseconds, and pasted text for its
// end, which some terminals lose.
constexpr int kEscapeTime = 40;
constexpr int kPasteTime = 5000;
constexpr int kTickTime = 300;
constexpr auto kSlice = std::chrono::milliseconds(8);

int waitingTime(const KeyReader& reader, const EditorScreen& screen) {
  if (screen.hasWork()) return 0;
  if (reader.isWaiting()) return kEscapeTime;
  if (reader.isPasting()) return kPasteTime;
  return screen.wantsTick() ? kTickTime : -1;
}

}  // namespace

bool editOnTerminal(EditedDocument& document, const KeyTable& keys, const std::string& message) {
  Terminal terminal;
  EditorScreen screen(document, keys);
  KeyReader reader;
  Terminal::addSequences(reader);
  screen.setPlainMarks(terminal.isPlain());
  screen.resize(terminal.columns(), terminal.rows());
  screen.showMessage(message);
  bool isDrawn = false;
  while (!screen.isFinished()) {
    if (screen.takeRedrawRequest()) terminal.forgetScreen();
    if (!isDrawn) terminal.show(screen.draw());
    isDrawn = true;
    const Terminal::Event event = terminal.wait(waitingTime(reader, screen));
    if (event.isEnded) {
      screen.stop();
      return false;
    }
    if (event.isSuspended) terminal.suspend();
    if (event.isResized) terminal.fitWindow();
    if (event.isSuspended || event.isResized) {
      screen.resize(terminal.columns(), terminal.rows());
      isDrawn = false;
    }
    if (event.hasInput) {
      reader.feed(event.input);
    } else if (screen.hasWork()) {
      screen.work(kSlice);
      isDrawn = false;
    } else if (!event.isResized && !event.isSuspended) {
      if (reader.isWaiting() || reader.isPasting()) {
        reader.finish();
      } else {
        screen.tick();
      }
    }
    while (const auto key = reader.next()) {
      screen.press(*key);
      isDrawn = false;
      if (screen.isFinished()) break;
    }
    if (const auto copied = screen.takeCopied()) terminal.setClipboard(*copied);
    if (screen.takeClipboardRequest()) terminal.askForClipboard();
  }
  return true;
}

}  // namespace tavlin
