#pragma once

#include <string>
#include <unordered_map>

#include "exchange/Exchange.h"
#include "exchange/PieceWriter.h"
#include "exchange/TextStyle.h"

namespace tavlin {

/// Writes text of documents as the content of HTML elements.
class HtmlText {
 public:
  /// What is passed in must outlive this.
  HtmlText(PieceWriter& out, Losses& losses) : out_(out), losses_(losses) {}

  /// Plain text.  Characters that HTML forbids become U+FFFD, and are counted.
  void put(const ns::String& text);
  /// A string or attributed text, with the looks and links that HTML has; other attributes are
  /// counted.  Nothing for none.
  void put(const ns::Value& text);
  [[nodiscard]] static bool isEmpty(const ns::Value& text);

 private:
  /// What is known of attributes, which mostly are those of many texts.
  struct Look {
    ns::Value attributes;  ///< held, so that its address stands for it
    TextStyle style;
    uint64_t lost = 0;
  };
  [[nodiscard]] const Look& lookOf(const ns::Dictionary& attributes);
  void putUtf8(std::string_view utf8);
  void begin(const TextStyle& style);
  void end(const TextStyle& style);

  PieceWriter& out_;
  Losses& losses_;
  std::string utf8_;
  std::unordered_map<const ns::ValueBody*, Look> looks_;
};

}  // namespace tavlin
