#pragma once

#include "platform/foundation/Object.h"
#include "platform/foundation/String.h"

namespace tavlin {

/// The words that the outliner shows.
///
/// Every operation answers the text of one key in the main bundle's table "Localizable", in the
/// user's language; where the table lacks the key, the key itself, never an empty string.  The key
/// is the operation's name, unless the comment at its right gives another one.  The translation
/// tables are written against the keys, so that none is ever changed, slips of the pen included.
///
/// Nothing is cached here: a changed language or table shows at the next call.
///
/// An operation whose name is a word of C++ has an underscore after it: `delete` is delete_(),
/// with the key "delete".
///
/// A text of an operation with "Format" in its name has one placeholder: "%@" for a name, "%ld"
/// for a number.
class SNUIString final : public ns::Object {
 public:
  SNUIString() = delete;

  // Editing item text
  static ns::String cut();
  static ns::String paste();
  static ns::String split();
  static ns::String merge();
  static ns::String checkTextAndReplace();
  static ns::String hideSpellingPanel();
  static ns::String showSpellingPanel();
  static ns::String hideSubstitutionsPanel();
  static ns::String showSubstitutionsPanel();

  // Views and document text
  static ns::String view();      // "views"
  static ns::String listView();  // "listview"
  static ns::String treeView();  // "treeview"
  static ns::String toggleShowCheckBox();
  static ns::String toggleShowNumbering();
  static ns::String makePlainText();  // "makePalinText"
  static ns::String makeRichText();

  // Items
  static ns::String edit();              // "editItem"
  static ns::String add();               // "addSibling"
  static ns::String insertAndAddItem();  // "insertSibling"
  static ns::String addSiblingOfParent();
  static ns::String delete_();
  static ns::String duplicate();
  static ns::String addChild();
  static ns::String addChildByOutlineStyle();  // "addChildByOutlineExpanded"
  static ns::String indent();
  static ns::String outdent();
  static ns::String expand();
  static ns::String moveUp();
  static ns::String moveDown();
  static ns::String collapse();
  static ns::String expandByOutline();         // "expandByList"
  static ns::String openItemInSeparateTab();   // "openItemTreeInSeparateTab"
  static ns::String closeItemInSeparateTab();  // "closeTab"
  static ns::String addItemAndOpenInATab();    // "addTab"
  static ns::String expandParent();
  static ns::String collapseParent();
  static ns::String expandParentByOutline();  // "expandParentByList"
  static ns::String showAllDescendants();
  static ns::String collapseAllDescendants();
  static ns::String showAllItems();
  static ns::String collapseAllItems();

  // Labels, notes, check marks and columns
  static ns::String label();
  static ns::String editNote();
  static ns::String showNote();
  static ns::String collapseNote();
  static ns::String toggleAllNotes();
  static ns::String toggleCheckState();
  static ns::String toggleShowCheckState();
  static ns::String editColumnTitle();
  static ns::String drop();

  // Preference panes
  static ns::String general();
  static ns::String display();
  static ns::String prefNumbering();  // "numbering"
  static ns::String prefLabel();      // "label", like label()
  static ns::String import_export();  // "importExport"
  static ns::String keyboard();

  // Default label names
  static ns::String defaultLabelName1();      // "red"
  static ns::String defaultLabelName2();      // "orange"
  static ns::String defaultLabelName3();      // "brown"
  static ns::String defaultLabelName4();      // "green"
  static ns::String defaultLabelName5();      // "blue"
  static ns::String defaultLabelName6();      // "purple"
  static ns::String defaultLabelName7();      // "gray"
  static ns::String labelPanelTitleFormat();  // %@ is the document

  // Errors and error reports
  static ns::String unexpectedStuation();  // "unexpectedStuationHasOccured"
  static ns::String situation();
  static ns::String saveTheReportAt();      // "messageReportPath"
  static ns::String pleaseSendTheReport();  // "messageSendReport"
  static ns::String suggestionAtException();
  static ns::String notSupportedVersionOfOS();  // "NotSupportedOSVersion"
  static ns::String osVersionRequired();        // "messageRequiredOSVer"

  // Documents that cannot be used as they are
  static ns::String validationFailed();
  static ns::String fileHasInconsistency();
  static ns::String labelNamesHasInconsistency();   // "labelNameInfoHasInconsistency"
  static ns::String labelColorsHasInconsistency();  // "labelColorInfoHasInconsistency"
  static ns::String largeFileVersion();
  static ns::String laterFileVersion();  // "fileIsGeneratedByNewerApplication"
  static ns::String titleOfAlertConfirmingMakePlainText();
  static ns::String informativeTextForAlertConfirmingMakePlainText();

  // Text encodings of imported files
  static ns::String autoDetectCharacterEncoding();
  static ns::String selectFromOtherCharacterEncodings();
  static ns::String recentlyUsedTextEncodings();
  static ns::String temporallySelectedTextEncodings();

  // Progress
  static ns::String progressMessageAtBuildingArrays();
  static ns::String progressMessageAtPreparingForPrinting();
  static ns::String progressMessageAtBuildingInformationForPrint();
  static ns::String progressMessageAtPreparingForComputingResionsToPrint();
  static ns::String progressMessageAtComputingResionsToPrint();

  // The product, and the end of a session
  static ns::String homeWebSiteURL();
  static ns::String messageForEndSession();
  static ns::String informativeTextForSessionEnd();
  static ns::String messageFormatForAlertMultiDocEdited();           // %ld documents
  static ns::String messageFormatForAlertSingleDocEdited();          // %@ is the document
  static ns::String informativeTextFormatForAlertMultiDocEdited();   // %ld documents
  static ns::String informativeTextFormatForAlertSingleDocEdited();  // %@ is the document
  static ns::String reviewChangesTitle();
  static ns::String discardChangesTitle();
};

}  // namespace tavlin
