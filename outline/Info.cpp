// tavlin info: what a document is about and how large it is.

#include <memory>

#include "exchange/DerivedState.h"
#include "exchange/JsonText.h"
#include "exchange/OutlineStatistics.h"
#include "outline/Commands.h"
#include "outline/common/FieldLines.h"
#include "outline/common/Messages.h"
#include "outline/common/PropertyText.h"

namespace tavlin {

namespace {

struct InfoOptions {
  std::vector<std::string> arguments;
  JobOptions jobs;
  bool isJson = false;
  Coloring coloring = Coloring::automatic;  // nothing here has a colour yet
};

void printJson(const OpenDocument& opened, const OutlineStatistics& statistics, Output& output) {
  std::string line;
  JsonWriter json(line);
  json.beginObject();
  json.member("file", opened.file);
  appendProperties(json, *opened.document);
  json.member("items", statistics.items);
  json.member("depth", statistics.depth);
  json.member("checked", statistics.checked);
  json.member("rich", statistics.rich);
  json.member("words", statistics.words);
  json.member("bytes", static_cast<uint64_t>(opened.content.length()));
  json.endObject();
  output << line << "\n";
}

void printText(const OpenDocument& opened, const OutlineStatistics& statistics, Output& output) {
  std::string lines = propertyLines(*opened.document);
  const auto add = [&lines](const char* name, uint64_t number) {
    appendFieldLine(lines, name, std::to_string(number));
  };
  add("items", statistics.items);
  add("depth", statistics.depth);
  add("checked", statistics.checked);
  add("rich", statistics.rich);
  add("words", statistics.words);
  add("bytes", opened.content.length());
  output << lines;
}

int info(const InfoOptions& options) {
  const DocumentArguments documents = documentsOfArguments(options.arguments);
  bool isFirst = true;
  Output output([&isFirst](std::string_view piece) {
    if (isFirst && piece.starts_with('\n')) piece.remove_prefix(1);
    isFirst = false;
    Output::toStandardOutput(piece);
  });
  const bool hasHeads = documents.files.size() > 1 && !options.isJson;
  const auto infoOfFile = [&](const std::string& file, Output& out) {
    const OpenDocument opened = openDocument(file);
    const OutlineStatistics statistics =
        outlineStatistics(*opened.document->treeController()->tree());
    // the first that can be read has no empty line above it, which only the output knows
    if (hasHeads) out << "\n" + outputText(file) + ":\n";
    options.isJson ? printJson(opened, statistics, out) : printText(opened, statistics, out);
    return kDone;
  };
  const JobSummary summary = forEachFile(documents.files, options.jobs, output, infoOfFile);
  output.flush();
  return documents.hasFailed ? kFailed : summary.status();
}

}  // namespace

void addInfo(CLI::App& table, Action& action) {
  CLI::App* const command =
      table.add_subcommand("info", localized("Tells properties and size of documents"));
  const auto options = std::make_shared<InfoOptions>();
  command->add_flag("--json", options->isJson, localized("A JSON value for each document"));
  addColoring(*command, options->coloring);
  addFilesAndFolders(*command, options->arguments, options->jobs);
  setAction(*command, action, [options] { return info(*options); });
}

}  // namespace tavlin
