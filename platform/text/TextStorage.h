#pragma once

#include <functional>
#include <optional>

#include "platform/text/MutableAttributedString.h"

namespace ns {

/// Text that is being shown: it fixes its attributes itself when a batch of changes closes, and
/// then tells whoever lays it out, once.  A change outside a batch is a batch of its own.
///
///     ns::TextStorage storage(text);
///     storage.setDidProcessEditing([&](ns::Range range) { layOut(range); });
///     cleanAttributesAsItemText(storage);   // one call
class TextStorage final : public MutableAttributedString {
 public:
  /// Given the range of the present text that changed since the last call.
  using DidProcessEditing = std::function<void(Range)>;

  TextStorage() = default;
  explicit TextStorage(const AttributedString& text) : MutableAttributedString(text) {}

  /// Whom to tell; none to tell nobody.
  void setDidProcessEditing(DidProcessEditing callback) { callback_ = std::move(callback); }

  void beginEditing() override { ++depth_; }
  /// Closes a batch.  At the end of the outermost one, fixes the attributes of the paragraphs
  /// that changed.  Raises InvalidArgumentException when none is open.
  void endEditing() override;

 protected:
  void edited(Range range, std::ptrdiff_t changeInLength) override;

 private:
  void processEditing();

  DidProcessEditing callback_;
  std::optional<Range> changed_;
  int depth_ = 0;
  bool isFixing_ = false;
};

}  // namespace ns
