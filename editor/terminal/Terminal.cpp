#include "editor/terminal/Terminal.h"

#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1
#include <fcntl.h>
#include <ncurses.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <term.h>
#include <termios.h>
#include <unistd.h>
// names of capabilities, which that header makes macros of
#undef back_tab
#undef columns
#undef lines
#undef tab

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/foundation/String.h"

namespace tavlin {

namespace {

// What terminals that know nothing of it pass over: pasted text is told as such, and the mouse.
constexpr std::string_view kPasteOn = "\x1b[?2004h";
constexpr std::string_view kPasteOff = "\x1b[?2004l";
constexpr std::string_view kMouseOn = "\x1b[?1000h\x1b[?1006h";
constexpr std::string_view kMouseOff = "\x1b[?1006l\x1b[?1000l";

// For signal handlers, which can take no object along.
int signalPipe[2] = {-1, -1};
struct termios formerModes {};
char lastWords[256] = {};  // what gives the screen back
size_t lastWordsLength = 0;

void noteSignal(int number) {
  const int kept = errno;
  const char byte = static_cast<char>(number);
  // a full pipe has woken the reader already
  if (::write(signalPipe[1], &byte, 1) < 0) errno = kept;
  errno = kept;
}

/// The program is about to fail: the terminal must not stay as it is.
void restoreAndFail(int number) {
  if (::write(STDOUT_FILENO, lastWords, lastWordsLength) < 0) ::_exit(128 + number);
  ::tcsetattr(STDIN_FILENO, TCSANOW, &formerModes);
  std::signal(number, SIG_DFL);
  std::raise(number);
}

void handle(int number, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  ::sigaction(number, &action, nullptr);
}

constexpr std::array kEnding = {SIGTERM, SIGHUP, SIGINT, SIGQUIT};
constexpr std::array kFailing = {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL};

bool startsWithOne(std::string_view text, std::initializer_list<std::string_view> prefixes) {
  for (const std::string_view prefix : prefixes) {
    if (text.starts_with(prefix)) return true;
  }
  return false;
}

std::wstring wideText(const std::string& utf8) {
  std::wstring wide;
  const std::u16string units = ns::String(std::string_view(utf8)).units();
  for (size_t i = 0; i < units.size();) {
    const ns::CodePoint point = ns::codePointAt(units, i);
    wide += static_cast<wchar_t>(point.value);
    i += point.length;
  }
  return wide;
}

attr_t attributesOf(const Look& look) {
  attr_t attributes = A_NORMAL;
  if (look.isBold) attributes |= A_BOLD;
  if (look.isItalic) attributes |= A_ITALIC;
  if (look.isUnderlined) attributes |= A_UNDERLINE;
  if (look.isDim) attributes |= A_DIM;
  if (look.isReversed) attributes |= A_REVERSE;
  return attributes;
}

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t bits = 0;
    for (size_t k = 0; k < 3; ++k) {
      bits = (bits << 8) | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (size_t k = 0; k < 4; ++k) {
      text += i + k > bytes.size() ? '=' : kDigits[(bits >> (18 - 6 * k)) & 63];
    }
  }
  return text;
}

std::string_view terminalName() {
  const char* const name = std::getenv("TERM");
  return name ? name : "";
}

}  // namespace

Terminal::Terminal() {
  if (::isatty(STDIN_FILENO) != 1 || ::isatty(STDOUT_FILENO) != 1) {
    throw std::runtime_error("editing needs a terminal");
  }
  const std::string_view name = terminalName();
  isPlain_ = startsWithOne(name, {"linux", "vt", "ansi", "cons", "sun"});
  knowsXterm_ = !isPlain_ && name != "dumb";
  // the screen is UTF-8, as everything else that this program writes
  std::setlocale(LC_CTYPE, "C.UTF-8");
  ::tcgetattr(STDIN_FILENO, &formerModes);
  int error = 0;
  if (name.empty() || ::setupterm(nullptr, STDOUT_FILENO, &error) != OK || !::tigetstr("cup") ||
      ::tigetstr("cup") == reinterpret_cast<char*>(-1)) {
    throw std::runtime_error("the terminal " + std::string(name) +
                             (name.empty() ? "has no name (TERM)" : " cannot show a full screen"));
  }
  if (!::newterm(nullptr, stdout, stdin)) {
    throw std::runtime_error("the terminal " + std::string(name) + " cannot show a full screen");
  }
  if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
    ::endwin();
    throw std::runtime_error(std::strerror(errno));
  }
  ::raw();
  ::noecho();
  ::nonl();
  ::intrflush(stdscr, FALSE);
  ::typeahead(-1);
  ::scrollok(stdscr, FALSE);
  canHideCursor_ = ::curs_set(0) != ERR;
  std::string words;
  for (const char* capability : {"rmcup", "cnorm", "sgr0"}) {
    const char* const sequence = ::tigetstr(capability);
    if (sequence && sequence != reinterpret_cast<char*>(-1)) words += sequence;
  }
  words += kPasteOff;
  if (knowsXterm_) words += kMouseOff;
  lastWordsLength = std::min(words.size(), sizeof lastWords);
  std::memcpy(lastWords, words.data(), lastWordsLength);
  for (const int number : kEnding) handle(number, noteSignal);
  for (const int number : {SIGWINCH, SIGTSTP}) handle(number, noteSignal);
  for (const int number : kFailing) handle(number, restoreAndFail);
  enter();
}

Terminal::~Terminal() {
  leave();
  for (const int number : kEnding) handle(number, SIG_DFL);
  for (const int number : {SIGWINCH, SIGTSTP}) handle(number, SIG_DFL);
  for (const int number : kFailing) handle(number, SIG_DFL);
  ::close(signalPipe[0]);
  ::close(signalPipe[1]);
}

void Terminal::tell(std::string_view bytes) const {
  std::fflush(stdout);
  while (!bytes.empty()) {
    const ssize_t count = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) {
      struct pollfd writable {
        STDOUT_FILENO, POLLOUT, 0
      };
      ::poll(&writable, 1, 1000);
      continue;
    }
    if (count < 0) return;  // it is gone
    bytes.remove_prefix(static_cast<size_t>(count));
  }
}

void Terminal::enter() {
  ::refresh();
  tell(kPasteOn);
  if (knowsXterm_) tell(kMouseOn);
}

void Terminal::leave() {
  tell(kPasteOff);
  if (knowsXterm_) tell(kMouseOff);
  ::curs_set(1);
  ::endwin();
  std::fflush(stdout);
}

void Terminal::suspend() {
  leave();
  handle(SIGTSTP, SIG_DFL);
  ::kill(0, SIGTSTP);
  handle(SIGTSTP, noteSignal);
  fitWindow();
  forgetScreen();
  enter();
}

size_t Terminal::columns() const { return static_cast<size_t>(std::max(getmaxx(stdscr), 1)); }
size_t Terminal::rows() const { return static_cast<size_t>(std::max(getmaxy(stdscr), 1)); }

void Terminal::fitWindow() {
  struct winsize size {};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
    return;
  ::resizeterm(size.ws_row, size.ws_col);
  forgetScreen();
}

void Terminal::forgetScreen() { ::clearok(curscr, TRUE); }

void Terminal::show(const Drawing& drawing) {
  // A line that changed is written anew.  Scrolling parts of the screen instead would save some
  // bytes; not every terminal knows how, and one that disagrees about a character's width keeps the
  // fault.
  shown_.resize(rows());
  for (size_t row = 0; row < rows(); ++row) {
    DrawnLine line = row < drawing.lines.size() ? drawing.lines[row] : DrawnLine();
    if (line == shown_[row]) continue;
    ::wredrawln(stdscr, static_cast<int>(row), 1);
    shown_[row] = std::move(line);
  }
  ::werase(stdscr);
  for (size_t row = 0; row < drawing.lines.size() && row < rows(); ++row) {
    ::wmove(stdscr, static_cast<int>(row), 0);
    for (const DrawnPiece& piece : drawing.lines[row].pieces) {
      ::wattr_set(stdscr, attributesOf(piece.look), 0, nullptr);
      // the last column of the last line is written, although the cursor has nowhere to go then
      ::waddwstr(stdscr, wideText(piece.text).c_str());
    }
  }
  ::wattr_set(stdscr, A_NORMAL, 0, nullptr);
  if (drawing.cursor) {
    ::wmove(stdscr, static_cast<int>(drawing.cursor->row),
            static_cast<int>(drawing.cursor->column));
  } else {
    ::wmove(stdscr, static_cast<int>(rows()) - 1, static_cast<int>(columns()) - 1);
  }
  if (canHideCursor_) ::curs_set(drawing.cursor ? 1 : 0);
  ::wrefresh(stdscr);
}

void Terminal::setClipboard(const std::string& text) {
  constexpr size_t kMost = 1U << 20U;
  if (!knowsXterm_ || text.size() > kMost) return;
  const std::string sequence = "\x1b]52;c;" + base64(text) + "\a";
  // screen hands on what is wrapped so
  tell(startsWithOne(terminalName(), {"screen"}) && !std::getenv("TMUX")
           ? "\x1bP" + sequence + "\x1b\\"
           : sequence);
}

void Terminal::askForClipboard() {
  if (knowsXterm_) tell("\x1b]52;c;?\a");
}

void Terminal::addSequences(KeyReader& reader) {
  const auto add = [&reader](const char* capability, const Key& key) {
    const char* const sequence = ::tigetstr(capability);
    if (sequence && sequence != reinterpret_cast<char*>(-1) && sequence[0] == '\x1b') {
      reader.addSequence(sequence, key);
    }
  };
  const std::array<std::pair<const char*, KeyCode>, 11> codes = {{{"kcuu1", KeyCode::up},
                                                                  {"kcud1", KeyCode::down},
                                                                  {"kcub1", KeyCode::left},
                                                                  {"kcuf1", KeyCode::right},
                                                                  {"khome", KeyCode::home},
                                                                  {"kend", KeyCode::end},
                                                                  {"kpp", KeyCode::pageUp},
                                                                  {"knp", KeyCode::pageDown},
                                                                  {"kdch1", KeyCode::deleteForward},
                                                                  {"kich1", KeyCode::insert},
                                                                  {"kent", KeyCode::enter}}};
  for (const auto& [capability, code] : codes) add(capability, Key::of(code));
  Key backTab = Key::of(KeyCode::tab);
  backTab.shift = true;
  add("kcbt", backTab);
  for (char32_t number = 1; number <= 24; ++number) {
    Key key = Key::of(KeyCode::function);
    key.character = number > 12 ? number - 12 : number;
    key.shift = number > 12;
    add(("kf" + std::to_string(static_cast<uint32_t>(number))).c_str(), key);
  }
}

Terminal::Event Terminal::wait(int milliseconds) {
  Event event;
  struct pollfd files[2] = {{STDIN_FILENO, POLLIN, 0}, {signalPipe[0], POLLIN, 0}};
  const int count = ::poll(files, 2, milliseconds);
  if (count <= 0) return event;
  char numbers[64];
  const ssize_t signals =
      (files[1].revents & POLLIN) ? ::read(signalPipe[0], numbers, sizeof numbers) : 0;
  for (ssize_t i = 0; i < signals; ++i) {
    if (numbers[i] == SIGWINCH) {
      event.isResized = true;
    } else if (numbers[i] == SIGTSTP) {
      event.isSuspended = true;
    } else {
      event.isEnded = true;
    }
  }
  if (files[0].revents & (POLLIN | POLLHUP | POLLERR | POLLNVAL)) {
    std::vector<char> bytes(64U << 10U);
    const ssize_t length = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (length > 0) {
      event.hasInput = true;
      event.input.assign(bytes.data(), static_cast<size_t>(length));
    } else if (length == 0 || (errno != EINTR && errno != EAGAIN)) {
      event.isEnded = true;
    }
  }
  return event;
}

}  // namespace tavlin
