#pragma once

namespace ns {

/// How a text view is to behave: what a view reads when it is set up.  The values here are those
/// of a new text view.
struct TextViewSettings {
  bool usesFontPanel = true;
  bool isRichText = true;
  bool usesFindPanel = false;
  bool usesRuler = true;
  /// The size that the view may grow to, in points.
  double maxWidth = 0;
  double maxHeight = 0;

  bool operator==(const TextViewSettings&) const = default;
};

}  // namespace ns
