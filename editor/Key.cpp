#include "editor/Key.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "platform/foundation/String.h"

namespace tavlin {

namespace {

constexpr char kEscape = '\x1b';
constexpr std::string_view kPasteEnd = "\x1b[201~";

struct NamedCode {
  KeyCode code;
  std::string_view name;
};
constexpr std::array<NamedCode, 13> kNames = {{{KeyCode::up, "Up"},
                                               {KeyCode::down, "Down"},
                                               {KeyCode::left, "Left"},
                                               {KeyCode::right, "Right"},
                                               {KeyCode::home, "Home"},
                                               {KeyCode::end, "End"},
                                               {KeyCode::pageUp, "PageUp"},
                                               {KeyCode::pageDown, "PageDown"},
                                               {KeyCode::enter, "Enter"},
                                               {KeyCode::tab, "Tab"},
                                               {KeyCode::backspace, "Backspace"},
                                               {KeyCode::deleteForward, "Delete"},
                                               {KeyCode::insert, "Insert"}}};

bool isSame(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, [](char a, char b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; };
    return lower(a) == lower(b);
  });
}

/// What xterm adds to 1: shift 1, alt 2, ctrl 4, meta 8.
void setModifiers(Key& key, int parameter) {
  const int bits = std::max(parameter, 1) - 1;
  key.shift = (bits & 1) != 0;
  key.alt = (bits & 10) != 0;
  key.ctrl = (bits & 4) != 0;
}

Key functionKey(int number, int modifiers) {
  Key key = Key::of(KeyCode::function);
  setModifiers(key, modifiers);
  constexpr int kShifted = 12;  // F13 is what terminals say for the first with shift
  if (number > kShifted) {
    number -= kShifted;
    key.shift = true;
  }
  key.character = static_cast<char32_t>(number);
  return key;
}

/// The key of a control sequence that ends in a letter.
Key letterKey(char last, int modifiers) {
  static const std::map<char, KeyCode> codes = {{'A', KeyCode::up},    {'B', KeyCode::down},
                                                {'C', KeyCode::right}, {'D', KeyCode::left},
                                                {'H', KeyCode::home},  {'F', KeyCode::end}};
  if (last >= 'P' && last <= 'S') return functionKey(last - 'P' + 1, modifiers);
  Key key;
  setModifiers(key, modifiers);
  if (last == 'Z') {
    key.code = KeyCode::tab;
    key.shift = true;
  } else if (last == 'M') {
    key.code = KeyCode::enter;
  } else if (const auto found = codes.find(last); found != codes.end()) {
    key.code = found->second;
  } else if (last >= 'a' && last <= 'd') {  // rxvt: shift after "[", ctrl after "O"
    key.code =
        std::array{KeyCode::up, KeyCode::down, KeyCode::right, KeyCode::left}[size_t(last - 'a')];
  }
  return key;
}

/// The key of one that ends in "~", by its number.
Key numberedKey(int number, int modifiers) {
  static const std::map<int, KeyCode> codes = {
      {1, KeyCode::home},   {2, KeyCode::insert},   {3, KeyCode::deleteForward}, {4, KeyCode::end},
      {5, KeyCode::pageUp}, {6, KeyCode::pageDown}, {7, KeyCode::home},          {8, KeyCode::end}};
  static const std::map<int, int> functions = {{11, 1},  {12, 2},  {13, 3},  {14, 4},  {15, 5},
                                               {17, 6},  {18, 7},  {19, 8},  {20, 9},  {21, 10},
                                               {23, 11}, {24, 12}, {25, 13}, {26, 14}, {28, 15},
                                               {29, 16}, {31, 17}, {32, 18}, {33, 19}, {34, 20}};
  if (const auto found = functions.find(number); found != functions.end()) {
    return functionKey(found->second, modifiers);
  }
  Key key;
  setModifiers(key, modifiers);
  if (const auto found = codes.find(number); found != codes.end()) key.code = found->second;
  return key;
}

/// A key that is told by its character ("\x1b[13;3u").
Key codedKey(int character, int modifiers) {
  Key key;
  setModifiers(key, modifiers);
  switch (character) {
    case 9:
      key.code = KeyCode::tab;
      break;
    case 13:
      key.code = KeyCode::enter;
      break;
    case 27:
      key.code = KeyCode::escape;
      break;
    case 127:
      key.code = KeyCode::backspace;
      break;
    default:
      key.code = character >= 32 ? KeyCode::character : KeyCode::none;
      key.character = static_cast<char32_t>(std::max(character, 0));
      key.shift = false;
  }
  return key;
}

Key mouseKey(int button, int column, int row) {
  Key key;
  constexpr int kModifiers = 4 + 8 + 16;
  const int which = button & ~kModifiers;
  if (which == 0) key.code = KeyCode::click;
  if (which == 64) key.code = KeyCode::wheelUp;
  if (which == 65) key.code = KeyCode::wheelDown;
  key.column = static_cast<size_t>(std::max(column - 1, 0));
  key.row = static_cast<size_t>(std::max(row - 1, 0));
  return key;
}

std::vector<int> parametersOf(std::string_view text) {
  std::vector<int> parameters;
  while (true) {
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    parameters.push_back(value);
    const size_t end = text.find(';');
    if (end == std::string_view::npos) return parameters;
    text.remove_prefix(end + 1);
  }
}

std::string decodedBase64(std::string_view text) {
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (const char digit : text) {
    const size_t value = kDigits.find(digit);
    if (value == std::string_view::npos) continue;
    bits = (bits << 6) | static_cast<unsigned>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>((bits >> count) & 0xFF);
  }
  return bytes;
}

}  // namespace

std::string nameOfKey(const Key& key) {
  std::string name;
  if (key.ctrl) name += "Ctrl-";
  if (key.alt) name += "Alt-";
  if (key.shift) name += "Shift-";
  if (key.code == KeyCode::escape) return name + "Escape";
  if (key.code == KeyCode::function) {
    return name + "F" + std::to_string(static_cast<uint32_t>(key.character));
  }
  if (key.code == KeyCode::character) {
    if (key.character == ' ') return name + "Space";
    if (key.character == '#') return name + "Hash";
    char32_t shown = key.character;
    if (key.ctrl && shown >= 'a' && shown <= 'z') shown -= 32;
    std::u16string units;
    ns::appendCodePoint(units, shown);
    return name + ns::String(units).utf8();
  }
  for (const NamedCode& each : kNames) {
    if (each.code == key.code) return name.append(each.name);
  }
  return name;
}

std::optional<Key> keyNamed(std::string_view name) {
  Key key;
  const auto take = [&name](std::string_view prefix) {
    if (name.size() <= prefix.size() || !isSame(name.substr(0, prefix.size()), prefix))
      return false;
    name.remove_prefix(prefix.size());
    return true;
  };
  while (true) {
    if (take("Ctrl-")) {
      key.ctrl = true;
    } else if (take("Alt-")) {
      key.alt = true;
    } else if (take("Shift-")) {
      key.shift = true;
    } else {
      break;
    }
  }
  for (const NamedCode& each : kNames) {
    if (!isSame(each.name, name)) continue;
    key.code = each.code;
    return key;
  }
  key.code = KeyCode::character;
  if (isSame(name, "Space") || isSame(name, "Hash")) {
    key.character = isSame(name, "Space") ? ' ' : '#';
    return key;
  }
  if (name.size() > 1 && (name[0] == 'F' || name[0] == 'f')) {
    int number = 0;
    const auto [end, error] = std::from_chars(name.data() + 1, name.data() + name.size(), number);
    if (error == std::errc() && end == name.data() + name.size() && number >= 1 && number <= 12) {
      key.code = KeyCode::function;
      key.character = static_cast<char32_t>(number);
      return key;
    }
  }
  const std::optional<ns::String> text = ns::String::fromUtf8(name);
  if (!text || text->empty() || key.shift) return std::nullopt;
  const std::u16string units = text->units();
  const ns::CodePoint point = ns::codePointAt(units, 0);
  if (point.length != units.size() || point.value <= ' ') return std::nullopt;
  key.character = point.value;
  if (key.ctrl) {
    if (point.value >= 'A' && point.value <= 'Z') key.character += 32;
    // those that terminals cannot tell from Tab, Enter and the like
    const char32_t letter = key.character;
    if (letter < 'a' || letter > 'z' || letter == 'i' || letter == 'm' || letter == 'j' ||
        letter == 'h') {
      return std::nullopt;
    }
  }
  return key;
}

void KeyReader::addSequence(std::string_view sequence, const Key& key) {
  if (sequence.size() > 1) sequences_.emplace(sequence, key);
}

std::optional<Key> KeyReader::next() {
  if (isPasting_ && isFinal_) bytes_ += kPasteEnd;  // it got lost on the way
  while (!bytes_.empty()) {
    if (isPasting_) {
      const size_t end = bytes_.find(kPasteEnd);
      // the end may have come in part
      const size_t whole = end != std::string::npos ? end
                           : bytes_.size() >= kPasteEnd.size()
                               ? bytes_.size() - kPasteEnd.size() + 1
                               : 0;
      pasted_.append(bytes_, 0, whole);
      bytes_.erase(0, whole);
      if (end == std::string::npos) return std::nullopt;
      bytes_.erase(0, kPasteEnd.size());
      isPasting_ = false;
      Key key = Key::of(KeyCode::paste);
      key.text = std::exchange(pasted_, {});
      return key;
    }
    const Parsed parsed = parse(bytes_);
    if (parsed.length == 0) {
      if (!isFinal_) return std::nullopt;
      // an Escape by itself, or a beginning that nothing ever ended
      isFinal_ = false;
      const bool isEscape = bytes_[0] == kEscape;
      bytes_.erase(0, isEscape && bytes_.size() > 1 ? bytes_.size() : 1);
      if (isEscape) return Key::of(KeyCode::escape);
      continue;
    }
    bytes_.erase(0, parsed.length);
    if (parsed.key.code == KeyCode::paste) {
      isPasting_ = true;
    } else if (parsed.key.code != KeyCode::none) {
      isFinal_ = false;
      return parsed.key;
    }
  }
  isFinal_ = false;
  return std::nullopt;
}

KeyReader::Parsed KeyReader::parse(std::string_view bytes) const {
  const auto first = static_cast<unsigned char>(bytes[0]);
  if (bytes[0] == kEscape) return parseEscape(bytes);
  if (first == '\r' || first == '\n') return {Key::of(KeyCode::enter), 1};
  if (first == '\t') return {Key::of(KeyCode::tab), 1};
  if (first == 0x7F || first == 0x08) return {Key::of(KeyCode::backspace), 1};
  if (first == 0) return {Key::withCtrl(' '), 1};
  if (first <= 26) return {Key::withCtrl(static_cast<char32_t>('a' + first - 1)), 1};
  if (first < 32) return {{}, 1};
  return parseCharacter(bytes);
}

KeyReader::Parsed KeyReader::parseCharacter(std::string_view bytes) {
  const auto first = static_cast<unsigned char>(bytes[0]);
  const size_t length = first < 0x80   ? 1
                        : first < 0xC2 ? 1
                        : first < 0xE0 ? 2
                        : first < 0xF0 ? 3
                                       : 4;
  for (size_t i = 1; i < length && i < bytes.size(); ++i) {
    if ((static_cast<unsigned char>(bytes[i]) & 0xC0U) != 0x80)
      return {Key::ofCharacter(0xFFFD), i};
  }
  if (bytes.size() < length) return {{}, 0};
  const std::u16string units = ns::String(bytes.substr(0, length)).units();
  return {Key::ofCharacter(ns::codePointAt(units, 0).value), length};
}

KeyReader::Parsed KeyReader::parseEscape(std::string_view bytes) const {
  if (bytes.size() == 1) return {{}, 0};
  for (const auto& [sequence, key] : sequences_) {
    if (bytes.starts_with(sequence)) return {key, sequence.size()};
  }
  switch (bytes[1]) {
    case '[':
      return parseControlSequence(bytes);
    case ']':
      return parseClipboard(bytes);
    case 'O': {
      if (bytes.size() == 2) return {{}, 0};
      Key key = letterKey(bytes[2], 1);
      if (bytes[2] >= 'a' && bytes[2] <= 'd') key.ctrl = true;
      if (key.code == KeyCode::none) break;
      return {key, 3};
    }
    case kEscape: {  // Alt with a key that has a sequence itself
      if (bytes.size() == 2) return {{}, 0};
      if (bytes[2] != '[' && bytes[2] != 'O') break;
      Parsed parsed = parseEscape(bytes.substr(1));
      if (parsed.length == 0) return parsed;
      parsed.key.alt = true;
      return {parsed.key, parsed.length + 1};
    }
    default: {
      Parsed parsed = parse(bytes.substr(1));
      if (parsed.length == 0) return parsed;
      parsed.key.alt = true;
      return {parsed.key, parsed.length + 1};
    }
  }
  return {Key::of(KeyCode::escape), 1};
}

KeyReader::Parsed KeyReader::parseControlSequence(std::string_view bytes) {
  size_t at = 2;
  if (bytes.size() > 2 && bytes[2] == '[') {  // the Linux console: "\x1b[[A" is F1
    if (bytes.size() == 3) return {{}, 0};
    const int number = bytes[3] - 'A' + 1;
    return {number >= 1 && number <= 5 ? functionKey(number, 1) : Key(), 4};
  }
  if (bytes.size() > 2 && bytes[2] == 'M') {  // the mouse as xterm told it first
    if (bytes.size() < 6) return {{}, 0};
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]) - 32; };
    return {mouseKey(byte(3), byte(4), byte(5)), 6};
  }
  while (at < bytes.size() && bytes[at] >= 0x20 && bytes[at] < 0x40) ++at;
  if (at == bytes.size()) {
    constexpr size_t kMost = 64;
    if (bytes.size() < kMost) return {{}, 0};
    return {{}, at};
  }
  const char last = bytes[at];
  const size_t length = at + 1;
  const std::string_view inner = bytes.substr(2, at - 2);
  if (last < 0x40 || last > 0x7E) return {{}, at};  // no control sequence after all
  if (!inner.empty() && inner[0] == '<') {
    const std::vector<int> values = parametersOf(inner.substr(1));
    if (last != 'M' || values.size() < 3) return {{}, length};
    return {mouseKey(values[0], values[1], values[2]), length};
  }
  if (!inner.empty() && (inner[0] < '0' || inner[0] > '9')) return {{}, length};
  const std::vector<int> values = parametersOf(inner);
  const int modifiers = values.size() > 1 ? values[1] : 1;
  if (last == '~') {
    if (values[0] == 200) return {Key::of(KeyCode::paste), length};
    if (values[0] == 27 && values.size() > 2) return {codedKey(values[2], modifiers), length};
    return {numberedKey(values[0], modifiers), length};
  }
  if (last == 'u') return {codedKey(values[0], modifiers), length};
  Key key = letterKey(last, modifiers);
  if (last >= 'a' && last <= 'd') key.shift = true;
  return {key, length};
}

KeyReader::Parsed KeyReader::parseClipboard(std::string_view bytes) {
  constexpr std::string_view kStart = "\x1b]52;";
  const size_t bell = bytes.find('\a');
  const size_t string = bytes.find("\x1b\\", 2);
  const size_t end = std::min(bell, string);
  if (end == std::string_view::npos) {
    const size_t shorter = std::min(bytes.size(), kStart.size());
    const bool isOne = bytes.substr(0, shorter) == kStart.substr(0, shorter);
    return isOne ? Parsed{{}, 0} : Parsed{Key::of(KeyCode::escape), 1};
  }
  const size_t length = end + (end == bell ? 1 : 2);
  if (!bytes.starts_with(kStart)) return {{}, length};
  Key key = Key::of(KeyCode::clipboard);
  const std::string_view content = bytes.substr(kStart.size(), end - kStart.size());
  const size_t separator = content.find(';');
  if (separator == std::string_view::npos) return {{}, length};
  key.text = decodedBase64(content.substr(separator + 1));
  return {key, length};
}

}  // namespace tavlin
