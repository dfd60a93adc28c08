// tavlin new: an empty document.

#include <cstring>
#include <filesystem>
#include <memory>

#include "edit/PropertyEdits.h"
#include "model/undo/OLTreeUndoController.h"
#include "outline/Commands.h"
#include "outline/common/Messages.h"
#include "platform/foundation/File.h"

namespace tavlin {

namespace {

struct NewOptions {
  std::string file;
  std::string title;
  bool hasTitle = false;
  SaveOptions saving;
};

std::shared_ptr<OLDataManager> emptyDocument(const NewOptions& options) {
  auto document = OLDataManager::create();
  document->setTreeController(OLTreeUndoController::create());
  ns::Dictionary properties;
  if (options.hasTitle) {
    properties.setObjectForKey(ns::Value(argumentText(options.title)), "title");
  }
  setProperties(*document, properties);
  return document;
}

int makeDocument(const NewOptions& options, const std::string& file, Output& output) {
  if (file == "-") throw FileFailure("a document needs a file; standard output is none");
  const std::shared_ptr<OLDataManager> document = emptyDocument(options);
  if (std::error_code error; std::filesystem::exists(file, error))
    throw FileFailure("the file is there already");
  if (options.saving.isDryRun) {
    checkFileCanBeMade(file);
    output << outputText(file) << ": a new document would be made\n";
    return kDone;
  }
  try {
    ns::writeFileAtomically(file, *document->dataRepresentationInPieces(), ns::FileState());
  } catch (const ns::FileChangedException&) {
    throw FileFailure("the file is there already");
  } catch (const ns::FileException& exception) {
    throw FileFailure(std::strerror(exception.error()));
  }
  return kDone;
}

int runNew(const NewOptions& options) {
  Output output(Output::toStandardOutput);
  const auto make = [&](const std::string& file, Output& out) {
    return makeDocument(options, file, out);
  };
  const JobSummary summary = forEachFile({options.file}, {.count = 1}, output, make);
  output.flush();
  return summary.status();
}

}  // namespace

void addNew(CLI::App& table, Action& action) {
  CLI::App* const command = table.add_subcommand("new", localized("Makes an empty document"));
  const auto options = std::make_shared<NewOptions>();
  command
      ->add_option_function<std::string>(
          "--title",
          [options](const std::string& title) {
            options->title = title;
            options->hasTitle = true;
          },
          localized("The property title"))
      ->type_name("T");
  addSaveOptions(*command, options->saving);
  command->add_option("FILE", options->file, localized("The document; must not be there yet"))
      ->required()
      ->type_name("");
  setAction(*command, action, [options] { return runNew(*options); });
}

}  // namespace tavlin
