#pragma once

#include <string>
#include <string_view>

namespace tavlin {

/// Makes Markdown safe for a parser that needs time in proportion to the square of some texts:
/// where more than a hundred tags of a kind that searches for its end ("<?", "<!X", "<![CDATA[")
/// have none in their paragraph, their "<" becomes a noncharacter that the text does not use.
class MarkdownGuard {
 public:
  /// The text must live as long.
  explicit MarkdownGuard(std::string_view markdown);

  /// What is to be parsed.
  [[nodiscard]] std::string_view text() const { return text_; }
  /// What the parser says, as it was.
  [[nodiscard]] std::string_view original(std::string_view parsed);

  /// Whether tables can be read: short rows below a wide one are filled up by the parser, so that
  /// few bytes become very many cells.
  [[nodiscard]] bool allowsTables() const { return allowsTables_; }

 private:
  void hideOpenTags(std::string_view markdown);

  std::string_view text_;
  std::string changed_;
  std::string restored_;
  std::string sign_;  // what "<" became; empty where nothing was changed
  bool allowsTables_ = true;
};

}  // namespace tavlin
