// tavlin import: documents from other formats.

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>

#include "exchange/ItemContent.h"
#include "outline/Commands.h"
#include "outline/common/Backup.h"
#include "outline/common/Formats.h"
#include "outline/common/Messages.h"
#include "platform/foundation/File.h"

namespace tavlin {

namespace {

struct ImportOptions {
  std::string in;
  std::string format;
  std::string out;  // one of these two is there
  std::string into;
  std::string under;
  bool isUnderGiven = false;
  bool replaces = false;
  SaveOptions saving;
};

bool isThere(const std::string& file) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(file, error));
}

std::string counted(uint64_t items) {
  return std::to_string(items) + (items == 1 ? " item" : " items");
}

/// Reads what is to come in; what has no place in a document is reported.
Imported readImported(const ImportOptions& options, const std::string& in) {
  const Format* const format =
      options.format.empty() ? formatOfFile(in) : formatNamed(options.format);
  const ns::Data content = readInput(in);
  return format->read({reinterpret_cast<const char*>(content.bytes()), content.length()});
}

/// What the document holds beside its items, which does not go into another one.
uint64_t countOfDocumentValues(const OLDataManager& document) {
  return documentProperties(document).size() + countOfOtherDocumentValues(document);
}

void writeNewDocument(const ImportOptions& options, const OLDataManager& document, Output& output) {
  const std::string& file = options.out;
  ns::FileState state;
  ns::Data old;
  if (isThere(file)) {
    if (!options.replaces) throw FileFailure(file, "the file is there already; see --force");
    if (options.saving.keepsBackup) old = ns::readFile(file, state);
  }
  if (options.saving.isDryRun) {
    try {
      checkFileCanBeMade(file);
    } catch (const FileFailure& failure) {
      throw FileFailure(file, failure.what());
    }
    output << outputText(file) << ": a document of " << counted(document.countOfAllItems())
           << " would be made\n";
    return;
  }
  try {
    const ns::DataPieces content = *document.dataRepresentationInPieces();
    std::optional<Backup> backup;
    if (state.isThere()) backup.emplace(file, old);
    if (options.replaces && !state.isThere()) {
      ns::writeFileAtomically(file, content);
    } else {
      ns::writeFileAtomically(file, content, state);
    }
    if (backup) backup->keep();
  } catch (const ns::FileChangedException&) {
    throw FileFailure(file, "another program has changed it meanwhile; nothing was written");
  } catch (const ns::FileException& exception) {
    throw FileFailure(file, std::strerror(exception.error()));
  }
}

/// Moves the items into a document, whose properties stay.
void addToDocument(const ImportOptions& options, const OLDataManager& imported, Output& output) {
  OpenDocument opened = [&] {
    try {
      return openDocument(options.into);
    } catch (const FileFailure& failure) {
      throw FileFailure(options.into, failure.what());
    }
  }();
  const auto parent = [&] {
    if (!options.isUnderGiven) return opened.document->rootItem();
    try {
      return itemAtPath(*opened.document, options.under);
    } catch (const FileFailure& failure) {
      throw FileFailure(options.into, failure.what());
    }
  }();
  const uint64_t count = imported.countOfAllItems();
  if (options.saving.isDryRun) {
    output << outputText(options.into) << ": " << counted(count) << " would be added\n";
    return;
  }
  if (count == 0) return;
  const OLNodeList items = imported.rootItem()->children();
  imported.rootItem()->setChildren(OLNodeList());
  const auto& tree = opened.document->treeController()->tree();
  for (const auto& item : items) tree->addChildToItem(item, parent);
  try {
    saveDocument(opened, options.saving);
  } catch (const FileFailure& failure) {
    throw FileFailure(options.into, failure.what());
  }
}

int importFile(const ImportOptions& options, const std::string& in, Output& output) {
  if (!options.out.empty() && !options.replaces && isThere(options.out)) {
    throw FileFailure(options.out, "the file is there already; see --force");
  }
  Imported imported = readImported(options, in);
  if (options.out.empty()) {
    imported.losses.values += countOfDocumentValues(*imported.document);
    addToDocument(options, *imported.document, output);
  } else {
    writeNewDocument(options, *imported.document, output);
  }
  reportLosses(in, imported.losses, "a document", "");
  return kDone;
}

/// What of the arguments does not go together; empty where all does.
std::string faultOf(const ImportOptions& options) {
  if (options.out.empty() == options.into.empty()) {
    return options.out.empty() ? "import: -o OUT or --into FILE is missing"
                               : "import: -o and --into exclude each other";
  }
  if (options.out == "-") return "import: a document needs a file; standard output is none";
  if (options.into == "-") return "import: standard input cannot be changed";
  if (options.replaces && options.out.empty()) return "import: --force needs -o";
  if (options.isUnderGiven && options.into.empty()) return "import: --under needs --into";
  if (options.format.empty()) {
    const Format* const format = formatOfFile(options.in);
    if (!format || !format->read) {
      return "import: the name of \"" + options.in + "\" tells no format; --from=FORMAT does";
    }
  }
  return {};
}

int runImport(const ImportOptions& options) {
  if (const std::string fault = faultOf(options); !fault.empty()) {
    report(fault);
    return kFailed;
  }
  Output output(Output::toStandardOutput);
  const auto work = [&](const std::string& file, Output& out) {
    return importFile(options, file, out);
  };
  const JobSummary summary = forEachFile({options.in}, {.count = 1}, output, work);
  output.flush();
  return summary.status();
}

}  // namespace

void addImport(CLI::App& table, Action& action) {
  CLI::App* const command =
      table.add_subcommand("import", localized("Makes documents and items of other formats"));
  const auto options = std::make_shared<ImportOptions>();
  addFormat(*command, "--from", options->format, formatNames(true),
            localized("The format; by default the one that the name of IN tells"));
  command->add_option("-o,--output", options->out, localized("The document to make"))
      ->type_name("OUT");
  command->add_option("--into", options->into, localized("The document to add the items to"))
      ->type_name("FILE");
  command
      ->add_option_function<std::string>(
          "--under",
          [options](const std::string& path) {
            options->under = path;
            options->isUnderGiven = true;
          },
          localized("The item to add them under; by default they come last at the top"))
      ->type_name("PATH");
  command->add_flag("-f,--force", options->replaces, localized("Replace OUT where it is there"));
  addSaveOptions(*command, options->saving);
  command->add_option("IN", options->in, localized("What to import; - is standard input"))
      ->required()
      ->type_name("");
  setAction(*command, action, [options] { return runImport(*options); });
}

}  // namespace tavlin
