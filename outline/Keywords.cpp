// tavlin keywords: lists, counts and edits the keywords of documents.

#include <memory>

#include "edit/KeywordEdits.h"
#include "exchange/JsonText.h"
#include "outline/Commands.h"
#include "outline/KeywordCounts.h"
#include "outline/common/FieldLines.h"
#include "outline/common/Messages.h"
#include "outline/common/PropertyText.h"

namespace tavlin {

namespace {

struct KeywordOptions {
  std::vector<std::string> arguments;
  JobOptions jobs;
  SaveOptions saving;
  std::vector<std::string> keywords;
  std::string from;
  std::string to;
  bool isJson = false;
  Coloring coloring = Coloring::automatic;  // nothing here has a colour yet
};

std::vector<ns::String> keywordsOf(const OLDataManager& document) {
  const auto property = documentProperty(document, *propertyKeyNamed("keywords"));
  return property ? property->texts : std::vector<ns::String>();
}

std::string listedKeywords(const OLDataManager& document) {
  return outputText(inOneLine(listText(keywordsOf(document))));
}

void printJson(const std::string& file, const std::vector<ns::String>& keywords, Output& output) {
  std::string line;
  JsonWriter json(line);
  json.beginObject();
  json.member("file", file);
  json.key("keywords");
  json.beginArray();
  for (const ns::String& keyword : keywords) json.string(keyword);
  json.endArray();
  json.endObject();
  output << line << "\n";
}

int list(const KeywordOptions& options) {
  const DocumentArguments documents = documentsOfArguments(options.arguments);
  Output output(Output::toStandardOutput);
  const auto listFile = [&](const std::string& file, Output& out) {
    const OpenDocument opened = openDocument(file);
    if (options.isJson) {
      printJson(file, keywordsOf(*opened.document), out);
    } else {
      out << outputText(file) << ": " << listedKeywords(*opened.document) << "\n";
    }
    return kDone;
  };
  const JobSummary summary = forEachFile(documents.files, options.jobs, output, listFile);
  output.flush();
  return statusOfJobs(summary, documents);
}

int count(const KeywordOptions& options) {
  const DocumentArguments documents = eachDocumentOnce(documentsOfArguments(options.arguments));
  KeywordCounts counts;
  Output collected([&](std::string_view piece) { counts.take(piece); });
  const auto countFile = [&](const std::string& file, Output& out) {
    out << KeywordCounts::encoded(keywordsOf(*openDocument(file).document));
    return kDone;
  };
  const JobSummary summary = forEachFile(documents.files, options.jobs, collected, countFile);
  collected.flush();
  Output output(Output::toStandardOutput);
  for (const auto& [keyword, number] : counts.mostFrequentFirst()) {
    output << std::to_string(number) << "\t" << outputText(inOneLine(keyword)) << "\n";
  }
  output.flush();
  return statusOfJobs(summary, documents);
}

int edit(const KeywordOptions& options, KeywordEdit::Kind kind) {
  KeywordEdit wanted{kind, {}};
  const auto& given = kind == KeywordEdit::Kind::rename
                          ? std::vector<std::string>{options.from, options.to}
                          : options.keywords;
  try {
    for (const std::string& keyword : given) wanted.keywords.push_back(argumentText(keyword));
  } catch (const FileFailure& failure) {
    report(failure.what());
    return kFailed;
  }
  const DocumentArguments documents = eachDocumentOnce(documentsOfArguments(options.arguments));
  Output output(Output::toStandardOutput);
  const auto editFile = [&](const std::string& file, Output& out) {
    const OpenDocument opened = openDocumentForChange(file);
    if (!editKeywords(*opened.document, wanted)) return kDone;
    if (options.saving.isDryRun) {
      out << outputText(file) << ": " << listedKeywords(*opened.document) << "\n";
    }
    saveDocument(opened, options.saving);
    return kDone;
  };
  JobOptions jobs = options.jobs;
  jobs.finishesWhenInterrupted = true;
  const JobSummary summary = forEachFile(documents.files, jobs, output, editFile);
  output.flush();
  return statusOfJobs(summary, documents);
}

using Options = std::shared_ptr<KeywordOptions>;

Options addReading(CLI::App& command) {
  auto options = std::make_shared<KeywordOptions>();
  addColoring(command, options->coloring);
  addFilesAndFolders(command, options->arguments, options->jobs);
  return options;
}

void addEditing(CLI::App& parent, Action& action, const char* name, const char* help,
                KeywordEdit::Kind kind) {
  CLI::App& command = *parent.add_subcommand(name, localized(help));
  auto options = std::make_shared<KeywordOptions>();
  if (kind == KeywordEdit::Kind::rename) {
    command.add_option("--from", options->from, localized("The keyword as it is"))
        ->required()
        ->type_name("OLD");
    command.add_option("--to", options->to, localized("The keyword as it becomes"))
        ->required()
        ->type_name("NEW");
  } else {
    CLI::Option* const keywords = addRepeated(command, "-k,--keyword", options->keywords,
                                              localized("A keyword; may be given several times"))
                                      ->type_name("KEYWORD");
    if (kind != KeywordEdit::Kind::set) keywords->required();
  }
  addSaveOptions(command, options->saving);
  addFilesAndFolders(command, options->arguments, options->jobs);
  setAction(command, action, [options, kind] { return edit(*options, kind); });
}

}  // namespace

void addKeywords(CLI::App& table, Action& action) {
  using Kind = KeywordEdit::Kind;
  CLI::App& command =
      *table.add_subcommand("keywords", localized("Lists and changes keywords of documents"));
  command.require_subcommand(1);
  CLI::App& listing = *command.add_subcommand("list", localized("Prints keywords"));
  const Options listed = addReading(listing);
  listing.add_flag("--json", listed->isJson, localized("A JSON value for each document"));
  setAction(listing, action, [listed] { return list(*listed); });
  addEditing(command, action, "add", "Adds keywords that are not there yet", Kind::add);
  addEditing(command, action, "remove", "Removes keywords", Kind::remove);
  addEditing(command, action, "set", "Replaces all keywords, by none without -k", Kind::set);
  addEditing(command, action, "rename", "Puts a keyword in the place of another", Kind::rename);
  CLI::App& counting = *command.add_subcommand(
      "count", localized("Counts for each keyword the documents that have it"));
  const Options counted = addReading(counting);
  setAction(counting, action, [counted] { return count(*counted); });
}

}  // namespace tavlin
