#pragma once

#include "platform/text/TextViewSettings.h"

namespace tavlin {

/// -setMeUpAsFieldEditorWithRichText:  Sets a text view up to edit one item: with font panel and
/// ruler if the text is rich, never with the find panel, and growing without bound.
void setMeUpAsFieldEditorWithRichText(ns::TextViewSettings& settings, bool isRichText);

}  // namespace tavlin
