#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/OLTree.h"
#include "platform/foundation/Exception.h"

namespace re2 {
class RE2;
}

namespace tavlin {

/// A regular expression that is none; the reason says why.
class PatternException : public ns::Exception {
 public:
  using ns::Exception::Exception;
};

/// What is looked for, in one line of text at a time.  Matching takes linear time.
class TextPattern {
 public:
  struct Options {
    bool ignoresCase = false;
    bool isLiteral = false;     ///< The pattern is plain text.
    bool matchesWords = false;  ///< A match begins and ends where a word does.
  };
  /// From UTF-8.  Raises PatternException.
  TextPattern(const std::string& pattern, const Options& options);
  ~TextPattern();
  TextPattern(const TextPattern&) = delete;
  TextPattern& operator=(const TextPattern&) = delete;

  [[nodiscard]] bool matches(std::string_view utf8) const;
  /// All matches that do not overlap, left to right: where each begins and ends, in bytes.
  [[nodiscard]] std::vector<std::pair<size_t, size_t>> matchesIn(std::string_view utf8) const;

 private:
  std::unique_ptr<re2::RE2> expression_;
  int group_ = 0;  // which part of the expression the match is
};

/// Which items are looked at, and where.
struct SearchOptions {
  enum class Where { title, note, all };
  enum class Marks { any, checked, unchecked };  ///< Of their own, and shown.
  Where where = Where::all;
  Marks marks = Marks::any;
};

/// A title, or a line of a note, that matches.
struct SearchHit {
  const std::string& path;  ///< Of the item; valid during the call.
  bool isNote;
  const std::string& text;  ///< The title, or the line, as UTF-8.
};

/// Gives the hits of a tree, in document order, the title's before the note's, until `onHit`
/// answers false.  Answers how many items have one.
size_t searchOutline(const OLTree& tree, const TextPattern& pattern, const SearchOptions& options,
                     const std::function<bool(const SearchHit& hit)>& onHit);

}  // namespace tavlin
