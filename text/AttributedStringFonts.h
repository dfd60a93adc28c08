#pragma once

#include "platform/text/MutableAttributedString.h"

namespace tavlin {

/// -fixFontAttributes_suitableForDocumentInRange:  Replaces every private interface font in the
/// range by a font that may stand in a document, of the same size.
///
/// A private font of a known face is replaced by the document font that looks the same, if that
/// is installed and has every character of the run; any other by an installed font whose family is
/// suitable and that has the characters of the private font (of the run, where the private font is
/// not installed).  Of several it is the one of the nearest style (ns::FontStyle::distanceTo()), so
/// that bold stays bold and italic italic; of those, the first of ns::FontSource::faces().  The
/// style of a private font that is not installed is the one its name says.
///
/// Where there is none the run keeps its font; see ns::installedFonts() for a machine without any.
/// Nothing happens when the range is empty or reaches past the end.  Other attributes stay.
void fixFontAttributes_suitableForDocumentInRange(ns::MutableAttributedString& text,
                                                  ns::Range range);

/// +isFamilyNameSuitableForUserDocuments:  Whether a font family may be written into a document:
/// not if its name begins with a full stop, which marks the platform's own interface fonts.  The
/// empty name is suitable.
bool isFamilyNameSuitableForUserDocuments(const ns::String& familyName);
/// The same for a family that may be none, which is not suitable.
bool isFamilyNameSuitableForUserDocuments(std::nullptr_t familyName);

}  // namespace tavlin
