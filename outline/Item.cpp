// tavlin item: edits items.

#include <memory>

#include "edit/EditOperation.h"
#include "outline/Commands.h"
#include "outline/common/EditText.h"
#include "outline/common/Messages.h"

namespace tavlin {

namespace {

using Kind = EditOperation::Kind;

struct ItemOptions {
  Kind kind = Kind::add;
  std::string file;
  std::vector<std::string> paths;
  std::optional<std::string> under;
  std::optional<std::string> before;
  std::optional<std::string> after;
  std::optional<std::string> title;
  std::optional<std::string> note;
  bool isChecked = false;
  bool isUnchecked = false;
  SaveOptions saving;
};

EditOperation operationOf(const ItemOptions& options) {
  EditOperation operation;
  operation.kind = options.kind;
  operation.paths = options.paths;
  const auto takePlace = [&](const std::optional<std::string>& path, ItemPlace::Kind kind) {
    if (!path) return;
    operation.placeKind = kind;
    operation.place = *path;
  };
  takePlace(options.under, ItemPlace::Kind::under);
  takePlace(options.before, ItemPlace::Kind::before);
  takePlace(options.after, ItemPlace::Kind::after);
  if (options.title) operation.content.title = argumentText(*options.title);
  if (options.note) operation.content.note = argumentText(*options.note);
  if (options.isChecked || options.isUnchecked) operation.content.isChecked = options.isChecked;
  operation.validate();
  return operation;
}

int runItem(const ItemOptions& options) {
  Output output(Output::toStandardOutput);
  const auto edit = [&](const std::string& file, Output& out) {
    const EditOperation operation = operationOf(options);
    const OpenDocument opened = openDocumentForChange(file);
    DocumentEditor editor(opened.document);
    const EditOutcome outcome = carryOut(editor, operation);
    if (outcome.hasChanged) saveDocument(opened, options.saving);
    printOutcome(operation, outcome, options.saving.isDryRun, out);
    return kDone;
  };
  const JobSummary summary = forEachFile({options.file}, {.count = 1}, output, edit);
  output.flush();
  return summary.status();
}

using Text = std::optional<std::string>;

CLI::Option* addText(CLI::App& command, const char* name, Text& text, const char* type,
                     const char* help) {
  return command
      .add_option_function<std::string>(
          name, [&text](const std::string& given) { text = given; }, localized(help))
      ->type_name(type);
}

void addPlace(CLI::App& command, ItemOptions& options) {
  CLI::Option* const under =
      addText(command, "--under", options.under, "PATH", "As the last below this item");
  CLI::Option* const before =
      addText(command, "--before", options.before, "PATH", "Directly before this item");
  CLI::Option* const after =
      addText(command, "--after", options.after, "PATH", "Directly after this item");
  under->excludes(before)->excludes(after);
  before->excludes(after);
}

std::shared_ptr<ItemOptions> addEdit(CLI::App& command, Action& action, Kind kind) {
  auto options = std::make_shared<ItemOptions>();
  options->kind = kind;
  addSaveOptions(command, options->saving);
  addChangedFile(command, options->file);
  setAction(command, action, [options] { return runItem(*options); });
  return options;
}

void addPaths(CLI::App& command, ItemOptions& options) {
  command.add_option("PATH", options.paths, localized("Items, such as 2.1.3"))
      ->required()
      ->type_name("");
}

CLI::Option* addChecked(CLI::App& command, ItemOptions& options) {
  return command.add_flag("--checked", options.isChecked, localized("With its mark set"));
}

void addAdd(CLI::App& parent, Action& action) {
  CLI::App& command =
      *parent.add_subcommand("add", localized("Adds an item, last at the top without a place"));
  const auto options = addEdit(command, action, Kind::add);
  addPlace(command, *options);
  addText(command, "--title", options->title, "T", "The title")->required();
  addText(command, "--note", options->note, "N", "The note");
  addChecked(command, *options);
}

void addSet(CLI::App& parent, Action& action) {
  CLI::App& command =
      *parent.add_subcommand("set", localized("Sets title, note and mark of an item"));
  const auto options = addEdit(command, action, Kind::set);
  command
      .add_option_function<std::string>(
          "PATH", [options](const std::string& path) { options->paths = {path}; },
          localized("The item, such as 2.1.3"))
      ->required()
      ->type_name("");
  addText(command, "--title", options->title, "T", "The title");
  addText(command, "--note", options->note, "N", "The note; an empty one is none");
  CLI::Option* const checked = addChecked(command, *options);
  command.add_flag("--unchecked", options->isUnchecked, localized("With its mark not set"))
      ->excludes(checked);
}

}  // namespace

void addItem(CLI::App& table, Action& action) {
  CLI::App& command = *table.add_subcommand("item", localized("Edits items of a document"));
  command.require_subcommand(1);
  addAdd(command, action);
  addSet(command, action);
  CLI::App& moving = *command.add_subcommand("move", localized("Moves items, with all below them"));
  const auto moved = addEdit(moving, action, Kind::move);
  addPaths(moving, *moved);
  addPlace(moving, *moved);
  const auto addOther = [&](const char* name, const char* help, Kind kind) {
    CLI::App& other = *command.add_subcommand(name, localized(help));
    addPaths(other, *addEdit(other, action, kind));
  };
  addOther("delete", "Deletes items, with all below them", Kind::remove);
  addOther("indent", "Puts items below the one before them", Kind::indent);
  addOther("outdent", "Puts items after the one above them", Kind::outdent);
}

}  // namespace tavlin
