// Saving, reverting, quitting, and what is asked about that.

#include <ctime>

#include "editor/EditorScreen.h"
#include "ui/Localized.h"

namespace tavlin {

using SaveResult = EditedDocument::SaveResult;

void EditorScreen::finishReport(SaveResult result) {
  switch (result) {
    case SaveResult::saved:
      message_ = localized("Saved:") + " " + document_.file();
      break;
    case SaveResult::unchanged:
      message_ = localized("There is nothing to save");
      break;
    case SaveResult::failed:
      message_ = localized("Not saved:") + " " + document_.failure();
      break;
    case SaveResult::changedOnDisk:
      break;
  }
}

void EditorScreen::save(bool overwrites, bool isQuitting) {
  const SaveResult result = document_.save(overwrites);
  if (result == SaveResult::changedOnDisk) return askAboutChangedFile(isQuitting);
  finishReport(result);
  if (isQuitting && result != SaveResult::failed) isFinished_ = true;
}

void EditorScreen::askAboutChangedFile(bool isQuitting) {
  Question question;
  question.text = localized("Another program has changed the file.");
  // nothing is lost by the first, which Enter stands for
  question.answers = {
      {{'a'}, localized("save as"), [this] { askWhereToSave(); }},
      {{'o'}, localized("overwrite"), [this, isQuitting] { save(true, isQuitting); }},
      {{'r'}, localized("reload"), [this] { revert(); }},
  };
  ask(std::move(question));
}

void EditorScreen::askWhereToSave() {
  Prompt prompt;
  prompt.label = localized("Save as:");
  prompt.text = TypedText(ns::Value(ns::String(std::string_view(document_.file()))));
  prompt.onEnter = [this](const std::string& file) {
    if (!file.empty()) saveAs(file, false);
  };
  prompt_ = std::move(prompt);
}

void EditorScreen::saveAs(const std::string& file, bool overwrites) {
  const SaveResult result = document_.saveAs(file, overwrites);
  if (result != SaveResult::changedOnDisk) return finishReport(result);
  Question question;
  question.text = localized("There is such a file already.");
  question.answers = {
      {{'a'}, localized("save as"), [this] { askWhereToSave(); }},
      {{'o'}, localized("overwrite"), [this, file] { saveAs(file, true); }},
  };
  ask(std::move(question));
}

void EditorScreen::askToRevert() {
  if (!document_.hasChanges()) return revert();
  Question question;
  question.text = localized("Give up all changes since the last saving?");
  question.answers = {{{'y'}, localized("yes"), [this] { revert(); }},
                      {{'n'}, localized("no"), {}}};
  ask(std::move(question));
}

void EditorScreen::revert() {
  try {
    document_.revert();
  } catch (const std::runtime_error& failure) {
    message_ = localized("Not read:") + std::string(" ") + failure.what();
    return;
  }
  view_ = std::make_unique<OutlineView>(document_.root(), document_.folds());
  marked_.clear();
  search_.stop();
  top_ = {};
  if (labels_) labels_ = OLTreeRuntimeAttributesController::initWithRootItem(document_.root());
  select(view_->first());
  message_ = localized("Read again:") + " " + document_.file();
}

void EditorScreen::quit() {
  const auto leave = [this] {
    document_.close();
    isFinished_ = true;
  };
  if (!document_.hasChanges()) return leave();
  Question question;
  question.text = localized("Save the changes?");
  question.answers = {{{'y', 's'}, localized("yes"), [this] { save(false, true); }},
                      {{'n', 'd'}, localized("no"), leave}};
  ask(std::move(question));
}

void EditorScreen::offerUnsavedWork() {
  const std::optional<time_t> date = document_.unsavedWork();
  if (!date) return;
  char text[64] = {};
  struct tm parts {};
  if (::localtime_r(&*date, &parts)) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &parts);
  Question question;
  question.text = localized("There is unsaved work.") + " (" + text + ")";
  question.isEscapable = false;
  const auto recover = [this] {
    const bool isWhole = document_.recover(ns::String(std::string_view(localized("Recovered"))));
    view_ = std::make_unique<OutlineView>(document_.root(), document_.folds());
    select(view_->first());
    message_ = isWhole ? localized("The unsaved work is here again")
                       : localized("Only a part of the unsaved work could be read");
  };
  question.answers = {
      {{'r', 'y'}, localized("recover"), recover},
      {{'d', 'n'}, localized("delete it"), [this] { document_.forgetUnsavedWork(); }},
      {{'q'}, localized("quit"), [this] { isFinished_ = true; }}};
  ask(std::move(question));
}

}  // namespace tavlin
