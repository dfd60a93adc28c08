#include "text/FieldEditor.h"

#include <limits>

namespace tavlin {

void setMeUpAsFieldEditorWithRichText(ns::TextViewSettings& settings, bool isRichText) {
  settings.usesFontPanel = isRichText;
  settings.isRichText = isRichText;
  settings.usesFindPanel = false;
  settings.usesRuler = isRichText;
  settings.maxWidth = std::numeric_limits<double>::max();
  settings.maxHeight = std::numeric_limits<double>::max();
}

}  // namespace tavlin
