#pragma once

#include <optional>
#include <string>

#include "platform/archive/Record.h"

namespace ns {

/// A URL as attributes and documents hold it: text, and perhaps a URL that it is relative to,
/// read through an archived record of class NSURL.
class URL {
 public:
  /// The URL of a value that is such a record; none of any other.
  static std::optional<URL> fromValue(const Value& value);
  /// +URLWithString:  The text is taken as it is; none for the empty text.
  static std::optional<URL> URLWithString(const String& text);
  /// +fileURLWithPath:  The URL of a path (bytes, usually UTF-8), relative to the working
  /// directory unless it begins with "/".  It ends in "/" when the path does or names a folder
  /// that exists.  Of characters, letters, digits and -._~!$&'()*+,=:@/ of ASCII stand for
  /// themselves; every other byte is percent-escaped.  None for an empty path and one that holds
  /// a zero byte.
  static std::optional<URL> fileURLWithPath(const std::string& path);

  /// -relativeString  The text without what it is relative to.
  [[nodiscard]] String relativeString() const;
  /// -scheme  That of the absolute form, as it is written; none where that has none.  A scheme
  /// is an ASCII letter, then letters, digits, "+", "-" and ".", up to a colon.
  [[nodiscard]] std::optional<String> scheme() const;

  [[nodiscard]] Value asValue() const { return record_.asValue(); }

 private:
  explicit URL(Record record) : record_(std::move(record)) {}
  Record record_;
};

}  // namespace ns
