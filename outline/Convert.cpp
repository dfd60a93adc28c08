// tavlin convert: titles and notes to rich or to plain text.

#include <memory>

#include "exchange/OutlineWalk.h"
#include "exchange/TextStyle.h"
#include "outline/Commands.h"
#include "outline/common/Messages.h"

namespace tavlin {

namespace {

struct ConvertOptions {
  std::vector<std::string> files;
  bool toRich = false;
  bool toPlain = false;
  SaveOptions saving;
};

/// Converts what is of the other kind, and answers how many texts that were.
uint64_t convertTexts(OLDataManager& document, bool toRich) {
  const ns::Dictionary titles = document.textRichTextAttributes();
  const ns::Dictionary notes = document.noteRichTextAttributes();
  const auto isOther = [toRich](const char* key, const std::shared_ptr<OLNode>& item) {
    const ns::Value text = OLTree::objectValueForKeyByItem(key, item);
    return toRich ? text.isString() : isRichText(text);
  };
  uint64_t count = 0;
  auto walk = OutlineWalk::below(document.rootItem());
  for (; walk.item(); walk.next()) {
    const uint64_t texts = uint64_t{isOther("title", walk.item())} + isOther("note", walk.item());
    if (texts == 0) continue;
    document.convertItemToRichTextTextAttributesNoteAttributesWithUndo(walk.item(), toRich, titles,
                                                                       notes, false);
    count += texts;
  }
  return count;
}

int runConvert(const ConvertOptions& options) {
  if (!options.toRich && !options.toPlain) {
    report(localized("convert needs --rich or --plain"));
    return kFailed;
  }
  Output output(Output::toStandardOutput);
  const auto convertFile = [&](const std::string& file, Output& out) {
    const OpenDocument opened = openDocumentForChange(file);
    const uint64_t count = convertTexts(*opened.document, options.toRich);
    if (count == 0) return kDone;
    if (options.saving.isDryRun) {
      out << outputText(file) << ": " << std::to_string(count) << (count == 1 ? " text" : " texts")
          << " would become " << (options.toRich ? "rich" : "plain") << "\n";
    }
    saveDocument(opened, options.saving);
    return kDone;
  };
  const DocumentArguments documents{options.files, false};
  const JobOptions jobs{.count = 1, .finishesWhenInterrupted = true};
  const JobSummary summary = forEachFile(documents.files, jobs, output, convertFile);
  output.flush();
  return statusOfJobs(summary, documents);
}

}  // namespace

void addConvert(CLI::App& table, Action& action) {
  CLI::App* const command =
      table.add_subcommand("convert", localized("Makes titles and notes rich or plain text"));
  const auto options = std::make_shared<ConvertOptions>();
  CLI::Option* const rich =
      command->add_flag("--rich", options->toRich, localized("To text with attributes"));
  command->add_flag("--plain", options->toPlain, localized("To text without attributes"))
      ->excludes(rich);
  addSaveOptions(*command, options->saving);
  command->add_option("FILE", options->files, localized("Documents"))->required()->type_name("");
  setAction(*command, action, [options] { return runConvert(*options); });
}

}  // namespace tavlin
