#include "ui/SNUIString.h"

#include "platform/propertylist/Bundle.h"

namespace tavlin {

namespace {

ns::String localized(const char* key) {
  return ns::Bundle::mainBundle().localizedStringForKeyValueTable(key, "", "");
}

}  // namespace

// Editing item text

ns::String SNUIString::cut() { return localized("cut"); }
ns::String SNUIString::paste() { return localized("paste"); }
ns::String SNUIString::split() { return localized("split"); }
ns::String SNUIString::merge() { return localized("merge"); }
ns::String SNUIString::checkTextAndReplace() { return localized("checkTextAndReplace"); }
ns::String SNUIString::hideSpellingPanel() { return localized("hideSpellingPanel"); }
ns::String SNUIString::showSpellingPanel() { return localized("showSpellingPanel"); }
ns::String SNUIString::hideSubstitutionsPanel() { return localized("hideSubstitutionsPanel"); }
ns::String SNUIString::showSubstitutionsPanel() { return localized("showSubstitutionsPanel"); }

// Views and document text

ns::String SNUIString::view() { return localized("views"); }
ns::String SNUIString::listView() { return localized("listview"); }
ns::String SNUIString::treeView() { return localized("treeview"); }
ns::String SNUIString::toggleShowCheckBox() { return localized("toggleShowCheckBox"); }
ns::String SNUIString::toggleShowNumbering() { return localized("toggleShowNumbering"); }
ns::String SNUIString::makePlainText() { return localized("makePalinText"); }
ns::String SNUIString::makeRichText() { return localized("makeRichText"); }

// Items

ns::String SNUIString::edit() { return localized("editItem"); }
ns::String SNUIString::add() { return localized("addSibling"); }
ns::String SNUIString::insertAndAddItem() { return localized("insertSibling"); }
ns::String SNUIString::addSiblingOfParent() { return localized("addSiblingOfParent"); }
ns::String SNUIString::delete_() { return localized("delete"); }
ns::String SNUIString::duplicate() { return localized("duplicate"); }
ns::String SNUIString::addChild() { return localized("addChild"); }
ns::String SNUIString::addChildByOutlineStyle() { return localized("addChildByOutlineExpanded"); }
ns::String SNUIString::indent() { return localized("indent"); }
ns::String SNUIString::outdent() { return localized("outdent"); }
ns::String SNUIString::expand() { return localized("expand"); }
ns::String SNUIString::moveUp() { return localized("moveUp"); }
ns::String SNUIString::moveDown() { return localized("moveDown"); }
ns::String SNUIString::collapse() { return localized("collapse"); }
ns::String SNUIString::expandByOutline() { return localized("expandByList"); }
ns::String SNUIString::openItemInSeparateTab() { return localized("openItemTreeInSeparateTab"); }
ns::String SNUIString::closeItemInSeparateTab() { return localized("closeTab"); }
ns::String SNUIString::addItemAndOpenInATab() { return localized("addTab"); }
ns::String SNUIString::expandParent() { return localized("expandParent"); }
ns::String SNUIString::collapseParent() { return localized("collapseParent"); }
ns::String SNUIString::expandParentByOutline() { return localized("expandParentByList"); }
ns::String SNUIString::showAllDescendants() { return localized("showAllDescendants"); }
ns::String SNUIString::collapseAllDescendants() { return localized("collapseAllDescendants"); }
ns::String SNUIString::showAllItems() { return localized("showAllItems"); }
ns::String SNUIString::collapseAllItems() { return localized("collapseAllItems"); }

// Labels, notes, check marks and columns

ns::String SNUIString::label() { return localized("label"); }
ns::String SNUIString::editNote() { return localized("editNote"); }
ns::String SNUIString::showNote() { return localized("showNote"); }
ns::String SNUIString::collapseNote() { return localized("collapseNote"); }
ns::String SNUIString::toggleAllNotes() { return localized("toggleAllNotes"); }
ns::String SNUIString::toggleCheckState() { return localized("toggleCheckState"); }
ns::String SNUIString::toggleShowCheckState() { return localized("toggleShowCheckState"); }
ns::String SNUIString::editColumnTitle() { return localized("editColumnTitle"); }
ns::String SNUIString::drop() { return localized("drop"); }

// Preference panes

ns::String SNUIString::general() { return localized("general"); }
ns::String SNUIString::display() { return localized("display"); }
ns::String SNUIString::prefNumbering() { return localized("numbering"); }
ns::String SNUIString::prefLabel() { return localized("label"); }
ns::String SNUIString::import_export() { return localized("importExport"); }
ns::String SNUIString::keyboard() { return localized("keyboard"); }

// Default label names

ns::String SNUIString::defaultLabelName1() { return localized("red"); }
ns::String SNUIString::defaultLabelName2() { return localized("orange"); }
ns::String SNUIString::defaultLabelName3() { return localized("brown"); }
ns::String SNUIString::defaultLabelName4() { return localized("green"); }
ns::String SNUIString::defaultLabelName5() { return localized("blue"); }
ns::String SNUIString::defaultLabelName6() { return localized("purple"); }
ns::String SNUIString::defaultLabelName7() { return localized("gray"); }
ns::String SNUIString::labelPanelTitleFormat() { return localized("labelPanelTitleFormat"); }

// Errors and error reports

ns::String SNUIString::unexpectedStuation() { return localized("unexpectedStuationHasOccured"); }
ns::String SNUIString::situation() { return localized("situation"); }
ns::String SNUIString::saveTheReportAt() { return localized("messageReportPath"); }
ns::String SNUIString::pleaseSendTheReport() { return localized("messageSendReport"); }
ns::String SNUIString::suggestionAtException() { return localized("suggestionAtException"); }
ns::String SNUIString::notSupportedVersionOfOS() { return localized("NotSupportedOSVersion"); }
ns::String SNUIString::osVersionRequired() { return localized("messageRequiredOSVer"); }

// Documents that cannot be used as they are

ns::String SNUIString::validationFailed() { return localized("validationFailed"); }
ns::String SNUIString::fileHasInconsistency() { return localized("fileHasInconsistency"); }
ns::String SNUIString::labelNamesHasInconsistency() {
  return localized("labelNameInfoHasInconsistency");
}
ns::String SNUIString::labelColorsHasInconsistency() {
  return localized("labelColorInfoHasInconsistency");
}
ns::String SNUIString::largeFileVersion() { return localized("largeFileVersion"); }
ns::String SNUIString::laterFileVersion() { return localized("fileIsGeneratedByNewerApplication"); }
ns::String SNUIString::titleOfAlertConfirmingMakePlainText() {
  return localized("titleOfAlertConfirmingMakePlainText");
}
ns::String SNUIString::informativeTextForAlertConfirmingMakePlainText() {
  return localized("informativeTextForAlertConfirmingMakePlainText");
}

// Text encodings of imported files

ns::String SNUIString::autoDetectCharacterEncoding() {
  return localized("autoDetectCharacterEncoding");
}
ns::String SNUIString::selectFromOtherCharacterEncodings() {
  return localized("selectFromOtherCharacterEncodings");
}
ns::String SNUIString::recentlyUsedTextEncodings() {
  return localized("recentlyUsedTextEncodings");
}
ns::String SNUIString::temporallySelectedTextEncodings() {
  return localized("temporallySelectedTextEncodings");
}

// Progress

ns::String SNUIString::progressMessageAtBuildingArrays() {
  return localized("progressMessageAtBuildingArrays");
}
ns::String SNUIString::progressMessageAtPreparingForPrinting() {
  return localized("progressMessageAtPreparingForPrinting");
}
ns::String SNUIString::progressMessageAtBuildingInformationForPrint() {
  return localized("progressMessageAtBuildingInformationForPrint");
}
ns::String SNUIString::progressMessageAtPreparingForComputingResionsToPrint() {
  return localized("progressMessageAtPreparingForComputingResionsToPrint");
}
ns::String SNUIString::progressMessageAtComputingResionsToPrint() {
  return localized("progressMessageAtComputingResionsToPrint");
}

// The product, and the end of a session

ns::String SNUIString::homeWebSiteURL() { return localized("homeWebSiteURL"); }
ns::String SNUIString::messageForEndSession() { return localized("messageForEndSession"); }
ns::String SNUIString::informativeTextForSessionEnd() {
  return localized("informativeTextForSessionEnd");
}
ns::String SNUIString::messageFormatForAlertMultiDocEdited() {
  return localized("messageFormatForAlertMultiDocEdited");
}
ns::String SNUIString::messageFormatForAlertSingleDocEdited() {
  return localized("messageFormatForAlertSingleDocEdited");
}
ns::String SNUIString::informativeTextFormatForAlertMultiDocEdited() {
  return localized("informativeTextFormatForAlertMultiDocEdited");
}
ns::String SNUIString::informativeTextFormatForAlertSingleDocEdited() {
  return localized("informativeTextFormatForAlertSingleDocEdited");
}
ns::String SNUIString::reviewChangesTitle() { return localized("reviewChangesTitle"); }
ns::String SNUIString::discardChangesTitle() { return localized("discardChangesTitle"); }

}  // namespace tavlin
