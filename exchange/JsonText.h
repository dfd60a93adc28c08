#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/foundation/String.h"

namespace tavlin {

/// What a JSON text has in the place of an unpaired surrogate, which UTF-8 has no form for.
enum class JsonSurrogates : uint8_t {
  replaced,  ///< U+FFFD
  escaped,   ///< "\ud83c", which readers that take it read as the code unit it was
};

/// Appends text as a JSON string, with its quotation marks.  Quotation marks, backslashes and
/// controls are escaped, and so is what a terminal or a browser might obey instead of showing it
/// (C1 controls, line and paragraph separators, marks of writing direction): a JSON text may go
/// anywhere as it is.  All other text is UTF-8.
void appendJsonString(std::string& out, const ns::String& text,
                      JsonSurrogates surrogates = JsonSurrogates::replaced);
/// The same from UTF-8; each byte that is not part of well-formed UTF-8 becomes U+FFFD.
void appendJsonString(std::string& out, std::string_view utf8);
inline void appendJsonString(std::string& out, const char* utf8) {
  appendJsonString(out, std::string_view(utf8));
}

/// Appends a JSON value to a string, piece by piece and without blanks.
///
///     std::string line;
///     JsonWriter json(line);
///     json.beginObject();
///     json.member("file", path);
///     json.key("matches");
///     json.beginArray();
///     json.number(3);
///     json.endArray();
///     json.endObject();                    // {"file":"a.tavlin","matches":[3]}
///
/// It puts the commas; that keys and values alternate, and what was begun ends, is up to the
/// caller.  It holds nothing for a level, so values may nest as deep as one likes, and the string
/// may be emptied between any two calls.
class JsonWriter {
 public:
  /// `out` must outlive the writer.
  explicit JsonWriter(std::string& out, JsonSurrogates surrogates = JsonSurrogates::replaced)
      : out_(out), surrogates_(surrogates) {}

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginArray() { begin('['); }
  void endArray() { end(']'); }
  /// The key of the value that follows.
  void key(std::string_view utf8);
  void key(const char* utf8) { key(std::string_view(utf8)); }
  void key(const ns::String& text);

  void string(std::string_view utf8);
  void string(const char* utf8) { string(std::string_view(utf8)); }
  void string(const ns::String& text);
  void boolean(bool value) { literal(value ? "true" : "false"); }
  void null() { literal("null"); }
  void number(int64_t value);
  void number(uint64_t value);
  void number(int value) { number(static_cast<int64_t>(value)); }
  /// The shortest decimal that reads back as the same number, always with a point or an exponent;
  /// `value` is finite, since JSON has nothing else.
  void number(double value);
  void number(float value);

  // A key and its value.
  void member(std::string_view name, std::string_view utf8) { key(name), string(utf8); }
  void member(std::string_view name, const char* utf8) {
    key(name), string(std::string_view(utf8));
  }
  void member(std::string_view name, const ns::String& text) { key(name), string(text); }
  void member(std::string_view name, bool value) { key(name), boolean(value); }
  void member(std::string_view name, int64_t value) { key(name), number(value); }
  void member(std::string_view name, uint64_t value) { key(name), number(value); }
  void member(std::string_view name, int value) { key(name), number(value); }

  /// What comes next begins a line, behind its comma.
  void breakLine() { breaksLine_ = true; }

  /// A value in the caller's own words.
  void literal(std::string_view json);

 private:
  void begin(char bracket);
  void end(char bracket);
  void separate();

  std::string& out_;
  JsonSurrogates surrogates_;
  bool needsComma_ = false;
  bool breaksLine_ = false;
};

}  // namespace tavlin
