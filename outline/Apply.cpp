// tavlin apply: many edits of one document, all or none.

#include <cstring>
#include <memory>

#include "edit/EditOperation.h"
#include "outline/Commands.h"
#include "outline/common/EditText.h"
#include "outline/common/Messages.h"
#include "platform/foundation/File.h"

namespace tavlin {

namespace {

struct ApplyOptions {
  std::string file;
  std::string operations = "-";
  SaveOptions saving;
};

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

/// Carries out the operations one by one.  Raises FileFailure, with the line, where one fails; what
/// the others did is taken back then.
void carryOutLines(DocumentEditor& editor, std::string_view lines, bool isDryRun, Output& output) {
  uint64_t number = 0;
  while (!lines.empty()) {
    const size_t end = lines.find('\n');
    const std::string_view line = lines.substr(0, end);
    lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
    ++number;
    if (isBlank(line)) continue;
    try {
      const EditOperation operation = editOperationFromJson(line);
      printOutcome(operation, carryOut(editor, operation), isDryRun, output);
    } catch (const EditRefusal& refusal) {
      editor.rollBackTo(0);
      throw FileFailure("operation in line " + std::to_string(number) + ": " + refusal.what());
    }
  }
}

ns::Data readOperations(const std::string& file) {
  const std::string name = "the operations " + file + ": ";
  try {
    return file == "-" ? readInput(file) : ns::readFileOrStream(file);
  } catch (const FileFailure& failure) {
    throw FileFailure(name + failure.what());
  } catch (const ns::FileException& exception) {
    throw FileFailure(name + std::strerror(exception.error()));
  }
}

int applyTo(const ApplyOptions& options, const std::string& file, Output& output) {
  const OpenDocument opened = openDocumentForChange(file);
  const ns::Data operations = readOperations(options.operations);
  DocumentEditor editor(opened.document);
  std::string printed;  // only once everything was done and saved
  Output kept([&](std::string_view piece) { printed += piece; });
  carryOutLines(editor, operations.view(), options.saving.isDryRun, kept);
  kept.flush();
  if (editor.changeCount() > 0) saveDocument(opened, options.saving);
  output << printed;
  return kDone;
}

int runApply(const ApplyOptions& options) {
  Output output(Output::toStandardOutput);
  const auto apply = [&](const std::string& file, Output& out) {
    return applyTo(options, file, out);
  };
  const JobSummary summary = forEachFile({options.file}, {.count = 1}, output, apply);
  output.flush();
  return summary.status();
}

}  // namespace

void addApply(CLI::App& table, Action& action) {
  CLI::App* const command = table.add_subcommand(
      "apply", localized("Carries out operations on items, all of them or none"));
  const auto options = std::make_shared<ApplyOptions>();
  addSaveOptions(*command, options->saving);
  addChangedFile(*command, options->file);
  command
      ->add_option("OPERATIONS", options->operations,
                   localized("Operations in JSON, one a line; standard input if not given"))
      ->type_name("");
  setAction(*command, action, [options] { return runApply(*options); });
}

}  // namespace tavlin
