// tavlin find: titles and lines of notes that match.

#include <memory>
#include <optional>

#include "exchange/JsonText.h"
#include "exchange/OutlineSearch.h"
#include "outline/Commands.h"
#include "outline/common/FieldLines.h"
#include "outline/common/Messages.h"

namespace tavlin {

namespace {

struct FindOptions {
  std::string pattern;
  std::vector<std::string> arguments;
  JobOptions jobs;
  TextPattern::Options matching;
  size_t where = static_cast<size_t>(SearchOptions::Where::all);
  bool isChecked = false;
  bool isUnchecked = false;
  bool listsFiles = false;
  bool counts = false;
  bool isJson = false;
  Coloring coloring = Coloring::automatic;
};

/// Prints the hits of one document.
class HitPrinter {
 public:
  HitPrinter(const FindOptions& options, const TextPattern& pattern, const std::string& file,
             Output& output)
      : options_(options),
        pattern_(pattern),
        file_(file),
        output_(output),
        usesColors_(usesColors(options.coloring)) {}

  /// Answers whether others are wanted.
  bool print(const SearchHit& hit) {
    if (options_.listsFiles) return false;
    if (options_.counts) return true;
    options_.isJson ? printJson(hit) : printLine(hit);
    return true;
  }

  void printEnd(size_t items) {
    if (options_.counts) {
      output_ << outputText(file_) << ":" << std::to_string(items) << "\n";
    } else if (options_.listsFiles && items > 0) {
      output_ << outputText(file_) << "\n";
    }
  }

 private:
  void printJson(const SearchHit& hit) {
    std::string line;
    JsonWriter json(line);
    json.beginObject();
    json.member("file", file_);
    json.member("path", hit.path);
    json.member("field", hit.isNote ? "note" : "title");
    json.member("text", hit.text);
    json.key("matches");
    json.beginArray();
    for (const auto& [begin, end] : pattern_.matchesIn(hit.text)) {
      json.beginArray();
      json.number(static_cast<uint64_t>(begin));
      json.number(static_cast<uint64_t>(end));
      json.endArray();
    }
    json.endArray();
    json.endObject();
    output_ << line << "\n";
  }

  void printLine(const SearchHit& hit) {
    std::string line = outputText(file_) + ":" + hit.path + (hit.isNote ? ":note:" : ":");
    if (!usesColors_) {
      line += outputText(inOneLine(hit.text));
    } else {
      appendColored(line, hit.text);
    }
    output_ << line << "\n";
  }

  void appendColored(std::string& line, const std::string& text) const {
    const std::string_view whole = text;
    size_t at = 0;
    const auto add = [&](size_t end) {
      line += outputText(inOneLine(whole.substr(at, end - at)));
      at = end;
    };
    for (const auto& [begin, end] : pattern_.matchesIn(text)) {
      if (begin == end) continue;
      add(begin);
      line += "\x1b[1;31m";
      add(end);
      line += "\x1b[0m";
    }
    add(whole.size());
  }

  const FindOptions& options_;
  const TextPattern& pattern_;
  const std::string& file_;
  Output& output_;
  bool usesColors_;
};

int find(const FindOptions& options) {
  std::optional<TextPattern> pattern;
  try {
    pattern.emplace(options.pattern, options.matching);
  } catch (const PatternException& exception) {
    report(options.pattern, exception.what());
    return kFailed;
  }
  SearchOptions search;
  search.where = static_cast<SearchOptions::Where>(options.where);
  if (options.isChecked) search.marks = SearchOptions::Marks::checked;
  if (options.isUnchecked) search.marks = SearchOptions::Marks::unchecked;
  const DocumentArguments documents = documentsOfArguments(options.arguments);
  Output output(Output::toStandardOutput);
  const auto findInFile = [&](const std::string& file, Output& out) {
    const OpenDocument opened = openDocument(file);
    HitPrinter printer(options, *pattern, file, out);
    const size_t items = searchOutline(*opened.document->treeController()->tree(), *pattern, search,
                                       [&](const SearchHit& hit) { return printer.print(hit); });
    printer.printEnd(items);
    return items > 0 ? kDone : kNo;
  };
  const JobSummary summary = forEachFile(documents.files, options.jobs, output, findInFile);
  output.flush();
  if (documents.hasFailed || summary.failed > 0) return kFailed;
  return summary.done > 0 ? kDone : kNo;
}

}  // namespace

void addFind(CLI::App& table, Action& action) {
  CLI::App* const command =
      table.add_subcommand("find", localized("Finds titles and lines of notes that match"));
  const auto options = std::make_shared<FindOptions>();
  command->add_flag("-i,--ignore-case", options->matching.ignoresCase,
                    localized("Letters match in either case"));
  command->add_flag("-F,--fixed-strings", options->matching.isLiteral,
                    localized("The pattern is plain text"));
  command->add_flag("-w,--word-regexp", options->matching.matchesWords,
                    localized("Only whole words match"));
  addChoice(*command, "--in", options->where, {"title", "note", "all"}, localized("Where to look"));
  CLI::Option* const checked = command->add_flag(
      "--checked", options->isChecked, localized("Only items whose own mark is set and shown"));
  command
      ->add_flag("--unchecked", options->isUnchecked,
                 localized("Only items that show a mark that is not set"))
      ->excludes(checked);
  CLI::Option* const lists =
      command->add_flag("-l,--files-with-matches", options->listsFiles,
                        localized("Print only the names of files with a match"));
  CLI::Option* const counts = command->add_flag(
      "-c,--count", options->counts, localized("Print only how many items of each file match"));
  counts->excludes(lists);
  command->add_flag("--json", options->isJson, localized("A JSON value for each match"))
      ->excludes(lists)
      ->excludes(counts);
  addColoring(*command, options->coloring);
  command->add_option("PATTERN", options->pattern, localized("A regular expression (RE2)"))
      ->required()
      ->type_name("");
  addFilesAndFolders(*command, options->arguments, options->jobs);
  setAction(*command, action, [options] { return find(*options); });
}

}  // namespace tavlin
