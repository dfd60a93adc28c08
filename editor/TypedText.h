#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Value.h"
#include "platform/text/MutableAttributedString.h"

namespace tavlin {

/// A text while it is typed, with the place where it is.  A rich one keeps its attributes around
/// what is changed; what comes in takes those of what is before it.
class TypedText {
 public:
  TypedText() = default;
  /// A title or note as it is stored: a string, attributed text, or none.
  explicit TypedText(const ns::Value& stored);

  [[nodiscard]] const std::u16string& text() const { return text_; }
  [[nodiscard]] size_t at() const { return at_; }
  void setAt(size_t at);
  [[nodiscard]] bool isChanged() const { return isChanged_; }
  /// What is to be stored.
  [[nodiscard]] ns::Value value() const;

  void insert(std::u16string_view text);
  /// Takes out what is between two places.
  void erase(size_t begin, size_t end);

  // Places; each moves there.
  void toCharacterBefore();
  void toCharacterAfter();
  void toWordBefore();
  void toWordAfter();
  void toLineBegin();
  void toLineEnd();
  /// To the line above or below, in about the same column; false where there is none.
  bool toLineAbove();
  bool toLineBelow();

 private:
  void replace(size_t begin, size_t end, std::u16string_view with);
  [[nodiscard]] size_t lineBegin(size_t at) const;
  [[nodiscard]] size_t lineEnd(size_t at) const;
  void toColumn(size_t lineStart, size_t columns);
  [[nodiscard]] size_t column() const;

  std::u16string text_;
  std::optional<ns::MutableAttributedString> rich_;
  std::optional<ns::Dictionary> kept_;  // of the text that was taken out whole
  size_t at_ = 0;
  bool isChanged_ = false;
};

}  // namespace tavlin
