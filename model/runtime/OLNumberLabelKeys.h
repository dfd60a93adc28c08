#pragma once

/// The keys under which documents hold what concerns number labels, as values of the whole
/// document.  The controllers read none of them: they are for who makes the format.
namespace tavlin::OLNumberLabelKeys {

/// Whether labels are shown.
inline constexpr char showNumberLabel[] = "showNumberLabel";

/// How a label is put together; see OLNumberLabelOptions.
inline constexpr char documentNumberLabelFormatNumberType[] = "documentNumberLabelFormatNumberType";
inline constexpr char documentNumberLabelFormatPrefix[] = "documentNumberLabelFormatPrefix";
inline constexpr char documentNumberLabelFormatSuffix[] = "documentNumberLabelFormatSuffix";
inline constexpr char documentNumberLabelFormatShowAncestorNumber[] =
    "documentNumberLabelFormatShowAncestorNumber";
inline constexpr char documentNumberLabelFormatSeparator[] = "documentNumberLabelFormatSeparator";

/// The names of the ready formats, and where the name of the chosen one is.
inline constexpr char numberLabelFormatLegal[] = "numberLabelFormatLegal";
inline constexpr char numberLabelFormatHarvard[] = "numberLabelFormatHarvard";
inline constexpr char selectedNumberLabelFormat[] = "selectedNumberLabelFormat";

}  // namespace tavlin::OLNumberLabelKeys
