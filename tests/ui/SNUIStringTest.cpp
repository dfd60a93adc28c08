#include "ui/SNUIString.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cctype>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/foundation/File.h"
#include "platform/propertylist/Bundle.h"

namespace tavlin {
namespace {

const std::string kResources = TAVLIN_SOURCE_DIR "/resources";
constexpr const char* kLanguages[] = {"en", "ja", "de", "fr", "es"};

struct Row {
  const char* operation;
  ns::String (*call)();
  const char* key;
};

#define ROW(operation, key) \
  { #operation, &SNUIString::operation, key }

/// Every operation in the order of its declaration, with its key.
const std::vector<Row> kRows = {
    ROW(cut, "cut"),
    ROW(paste, "paste"),
    ROW(split, "split"),
    ROW(merge, "merge"),
    ROW(checkTextAndReplace, "checkTextAndReplace"),
    ROW(hideSpellingPanel, "hideSpellingPanel"),
    ROW(showSpellingPanel, "showSpellingPanel"),
    ROW(hideSubstitutionsPanel, "hideSubstitutionsPanel"),
    ROW(showSubstitutionsPanel, "showSubstitutionsPanel"),
    ROW(view, "views"),
    ROW(listView, "listview"),
    ROW(treeView, "treeview"),
    ROW(toggleShowCheckBox, "toggleShowCheckBox"),
    ROW(toggleShowNumbering, "toggleShowNumbering"),
    ROW(makePlainText, "makePalinText"),
    ROW(makeRichText, "makeRichText"),
    ROW(edit, "editItem"),
    ROW(add, "addSibling"),
    ROW(insertAndAddItem, "insertSibling"),
    ROW(addSiblingOfParent, "addSiblingOfParent"),
    ROW(delete_, "delete"),
    ROW(duplicate, "duplicate"),
    ROW(addChild, "addChild"),
    ROW(addChildByOutlineStyle, "addChildByOutlineExpanded"),
    ROW(indent, "indent"),
    ROW(outdent, "outdent"),
    ROW(expand, "expand"),
    ROW(moveUp, "moveUp"),
    ROW(moveDown, "moveDown"),
    ROW(collapse, "collapse"),
    ROW(expandByOutline, "expandByList"),
    ROW(openItemInSeparateTab, "openItemTreeInSeparateTab"),
    ROW(closeItemInSeparateTab, "closeTab"),
    ROW(addItemAndOpenInATab, "addTab"),
    ROW(expandParent, "expandParent"),
    ROW(collapseParent, "collapseParent"),
    ROW(expandParentByOutline, "expandParentByList"),
    ROW(showAllDescendants, "showAllDescendants"),
    ROW(collapseAllDescendants, "collapseAllDescendants"),
    ROW(showAllItems, "showAllItems"),
    ROW(collapseAllItems, "collapseAllItems"),
    ROW(label, "label"),
    ROW(editNote, "editNote"),
    ROW(showNote, "showNote"),
    ROW(collapseNote, "collapseNote"),
    ROW(toggleAllNotes, "toggleAllNotes"),
    ROW(toggleCheckState, "toggleCheckState"),
    ROW(toggleShowCheckState, "toggleShowCheckState"),
    ROW(editColumnTitle, "editColumnTitle"),
    ROW(drop, "drop"),
    ROW(general, "general"),
    ROW(display, "display"),
    ROW(prefNumbering, "numbering"),
    ROW(prefLabel, "label"),
    ROW(import_export, "importExport"),
    ROW(keyboard, "keyboard"),
    ROW(defaultLabelName1, "red"),
    ROW(defaultLabelName2, "orange"),
    ROW(defaultLabelName3, "brown"),
    ROW(defaultLabelName4, "green"),
    ROW(defaultLabelName5, "blue"),
    ROW(defaultLabelName6, "purple"),
    ROW(defaultLabelName7, "gray"),
    ROW(labelPanelTitleFormat, "labelPanelTitleFormat"),
    ROW(unexpectedStuation, "unexpectedStuationHasOccured"),
    ROW(situation, "situation"),
    ROW(saveTheReportAt, "messageReportPath"),
    ROW(pleaseSendTheReport, "messageSendReport"),
    ROW(suggestionAtException, "suggestionAtException"),
    ROW(notSupportedVersionOfOS, "NotSupportedOSVersion"),
    ROW(osVersionRequired, "messageRequiredOSVer"),
    ROW(validationFailed, "validationFailed"),
    ROW(fileHasInconsistency, "fileHasInconsistency"),
    ROW(labelNamesHasInconsistency, "labelNameInfoHasInconsistency"),
    ROW(labelColorsHasInconsistency, "labelColorInfoHasInconsistency"),
    ROW(largeFileVersion, "largeFileVersion"),
    ROW(laterFileVersion, "fileIsGeneratedByNewerApplication"),
    ROW(titleOfAlertConfirmingMakePlainText, "titleOfAlertConfirmingMakePlainText"),
    ROW(informativeTextForAlertConfirmingMakePlainText,
        "informativeTextForAlertConfirmingMakePlainText"),
    ROW(autoDetectCharacterEncoding, "autoDetectCharacterEncoding"),
    ROW(selectFromOtherCharacterEncodings, "selectFromOtherCharacterEncodings"),
    ROW(recentlyUsedTextEncodings, "recentlyUsedTextEncodings"),
    ROW(temporallySelectedTextEncodings, "temporallySelectedTextEncodings"),
    ROW(progressMessageAtBuildingArrays, "progressMessageAtBuildingArrays"),
    ROW(progressMessageAtPreparingForPrinting, "progressMessageAtPreparingForPrinting"),
    ROW(progressMessageAtBuildingInformationForPrint,
        "progressMessageAtBuildingInformationForPrint"),
    ROW(progressMessageAtPreparingForComputingResionsToPrint,
        "progressMessageAtPreparingForComputingResionsToPrint"),
    ROW(progressMessageAtComputingResionsToPrint, "progressMessageAtComputingResionsToPrint"),
    ROW(homeWebSiteURL, "homeWebSiteURL"),
    ROW(messageForEndSession, "messageForEndSession"),
    ROW(informativeTextForSessionEnd, "informativeTextForSessionEnd"),
    ROW(messageFormatForAlertMultiDocEdited, "messageFormatForAlertMultiDocEdited"),
    ROW(messageFormatForAlertSingleDocEdited, "messageFormatForAlertSingleDocEdited"),
    ROW(informativeTextFormatForAlertMultiDocEdited, "informativeTextFormatForAlertMultiDocEdited"),
    ROW(informativeTextFormatForAlertSingleDocEdited,
        "informativeTextFormatForAlertSingleDocEdited"),
    ROW(reviewChangesTitle, "reviewChangesTitle"),
    ROW(discardChangesTitle, "discardChangesTitle"),
};

/// Runs a test with one language chosen.
class SNUIStringTest : public testing::Test {
 protected:
  SNUIStringTest() {
    unsetenv("LC_ALL");
    unsetenv("LC_MESSAGES");
    unsetenv("LANG");
    unsetenv("LANGUAGE");
  }
  static ns::StringsTable tableOf(const std::string& language) {
    return ns::StringsTable::parse(
        ns::readFile(kResources + "/" + language + ".lproj/Localizable.strings"));
  }
  /// What "%" begins, with digits and "$" between if there are any.
  static std::multiset<std::string> placeholdersOf(const std::string& text) {
    std::multiset<std::string> found;
    for (size_t i = text.find('%'); i != std::string::npos; i = text.find('%', i + 1)) {
      const size_t type = text.find_first_not_of("0123456789$", i + 1);
      const size_t end = type == std::string::npos ? type : type + (text[type] == 'l' ? 2 : 1);
      found.insert(text.substr(i, end - i));
    }
    return found;
  }
  static std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static bool isWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
  }
  /// What stands between `before` and `after`, wherever it is a word.
  static std::vector<std::string> wordsBetween(const std::string& text, const std::string& before,
                                               const std::string& after) {
    std::vector<std::string> words;
    for (size_t at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
      at += before.size();
      size_t end = at;
      while (end < text.size() && isWord(text[end])) ++end;
      if (end > at && text.compare(end, after.size(), after) == 0)
        words.push_back(text.substr(at, end - at));
    }
    return words;
  }
};

TEST_F(SNUIStringTest, EveryOperationAnswersItsKeyWithoutTables) {
  ns::Bundle bundle("/nonexistent");
  const ns::Bundle::ScopedMain main(bundle);
  for (const Row& row : kRows) EXPECT_EQ(row.call(), row.key) << row.operation;
}

TEST_F(SNUIStringTest, EveryOperationAnswersTheTextOfItsKeyInEveryLanguage) {
  ns::Bundle bundle(kResources);
  const ns::Bundle::ScopedMain main(bundle);
  for (const char* language : kLanguages) {
    setenv("LANGUAGE", language, 1);
    const ns::StringsTable table = tableOf(language);
    for (const Row& row : kRows) {
      const ns::String* text = table.stringForKey(row.key);
      ASSERT_NE(text, nullptr) << language << row.key;
      EXPECT_EQ(row.call(), *text) << language << row.operation;
    }
    EXPECT_EQ(SNUIString::label(), SNUIString::prefLabel());
  }
}

TEST_F(SNUIStringTest, ShowsTheTextsOfTheLanguage) {
  ns::Bundle bundle(kResources);
  const ns::Bundle::ScopedMain main(bundle);
  EXPECT_EQ(SNUIString::makePlainText(), "Make Plain Text");
  setenv("LANGUAGE", "de", 1);
  EXPECT_EQ(SNUIString::delete_(), "Löschen");
  setenv("LANGUAGE", "ja", 1);
  EXPECT_EQ(SNUIString::defaultLabelName1(), "レッド");
  setenv("LANGUAGE", "nl", 1);
  EXPECT_EQ(SNUIString::delete_(), "Delete");
}

TEST_F(SNUIStringTest, DeclaresItsOperationsInOrderAndNoOthers) {
  const std::vector<std::string> declared =
      wordsBetween(contentOf(TAVLIN_SOURCE_DIR "/ui/SNUIString.h"), "static ns::String ", "();");
  std::vector<std::string> expected;
  expected.reserve(kRows.size());
  for (const Row& row : kRows) expected.emplace_back(row.operation);
  EXPECT_EQ(declared, expected);
}

TEST_F(SNUIStringTest, EveryTableHasExactlyTheKeys) {
  std::set<std::string> keys;
  for (const Row& row : kRows) keys.insert(row.key);
  EXPECT_EQ(keys.size(), kRows.size() - 1) << "two operations share the key \"label\"";
  for (const char* language : kLanguages) {
    std::set<std::string> found;
    const ns::StringsTable table = tableOf(language);
    for (const auto& [key, text] : table.strings()) {
      found.insert(key.utf8());
      EXPECT_FALSE(text.empty()) << language << key.utf8();
    }
    EXPECT_EQ(found, keys) << language;
  }
}

TEST_F(SNUIStringTest, NoTableHasAKeyTwice) {
  for (const char* language : kLanguages) {
    const std::string text = contentOf(kResources + "/" + language + ".lproj/Localizable.strings");
    EXPECT_EQ(wordsBetween(text, "\n\"", "\" = ").size(), tableOf(language).count()) << language;
  }
}

TEST_F(SNUIStringTest, OnlyTheFormatsHavePlaceholdersTheSameInEveryLanguage) {
  const std::map<std::string, std::string> placeholders = {
      {"labelPanelTitleFormat", "%@"},
      {"messageFormatForAlertMultiDocEdited", "%ld"},
      {"messageFormatForAlertSingleDocEdited", "%@"},
      {"informativeTextFormatForAlertMultiDocEdited", "%ld"},
      {"informativeTextFormatForAlertSingleDocEdited", "%@"}};
  for (const Row& row : kRows)
    EXPECT_EQ(std::string(row.operation).find("Format") != std::string::npos,
              placeholders.contains(row.key));
  for (const char* language : kLanguages) {
    const ns::StringsTable table = tableOf(language);
    for (const auto& [key, text] : table.strings()) {
      const auto expected = placeholders.find(key.utf8());
      std::multiset<std::string> wanted;
      if (expected != placeholders.end()) wanted.insert(expected->second);
      EXPECT_EQ(placeholdersOf(text.utf8()), wanted) << language << key.utf8();
    }
  }
}

// They are compared with action names: were two the same, an edit would be taken for another.
TEST_F(SNUIStringTest, NamesOfExpandingAndCollapsingAreLikeNoOtherText) {
  for (const char* language : kLanguages) {
    std::map<std::string, int> uses;
    const ns::StringsTable table = tableOf(language);
    for (const auto& [key, text] : table.strings()) ++uses[text.utf8()];
    for (const char* key : {"expand", "collapse", "expandByList", "expandParent", "collapseParent",
                            "expandParentByList"}) {
      EXPECT_EQ(uses[table.stringForKey(key)->utf8()], 1) << language << key;
    }
  }
}

TEST_F(SNUIStringTest, TheHomePageIsAnAddress) {
  for (const char* language : kLanguages) {
    const ns::StringsTable table = tableOf(language);
    EXPECT_TRUE(table.stringForKey("homeWebSiteURL")->hasPrefix("https://")) << language;
  }
}

}  // namespace
}  // namespace tavlin
