#include "outline/Commands.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "outline/common/Messages.h"

namespace tavlin {

void addCommands(CLI::App& table, Action& action) {
  addShow(table, action);
  addInfo(table, action);
  addFind(table, action);
  addExport(table, action);
  addImport(table, action);
  addNew(table, action);
  addKeywords(table, action);
  addProperties(table, action);
  addConvert(table, action);
  addItem(table, action);
  addApply(table, action);
  addEdit(table, action);
  addCheck(table, action);
  addCompletions(table, action);
}

CLI::Option* addFiles(CLI::App& command, std::vector<std::string>& files) {
  return command.add_option("FILE", files, localized("Documents; - is standard input"))
      ->required()
      ->type_name("");
}

CLI::Option* addFilesAndFolders(CLI::App& command, std::vector<std::string>& arguments,
                                JobOptions& jobs) {
  command
      .add_option(
          "-j,--jobs", jobs.count,
          localized("How many documents to work on at once; one for each processor by default"))
      ->type_name("N")
      ->check(CLI::Range(size_t{1}, size_t{1024}).description(""));
  return command
      .add_option("FILE|FOLDER", arguments,
                  localized("Documents; of a folder all below it that end in .tavlin"))
      ->required()
      ->type_name("");
}

void addColoring(CLI::App& command, Coloring& coloring) {
  const auto set = [&coloring](const std::string& word) {
    coloring = word == "always"  ? Coloring::always
               : word == "never" ? Coloring::never
                                 : Coloring::automatic;
  };
  command.add_option_function<std::string>("--color", set, localized("When to colour"))
      ->type_name("auto|always|never")
      ->check(CLI::IsMember({"auto", "always", "never"}).description(""));
}

CLI::Option* addItemPath(CLI::App& command, std::optional<std::string>& path) {
  return command
      .add_option_function<std::string>(
          "--item", [&path](const std::string& given) { path = given; },
          localized("Only this item and what is below it"))
      ->type_name("PATH");
}

CLI::Option* addChangedFile(CLI::App& command, std::string& file) {
  return command.add_option("FILE", file, localized("The document"))->required()->type_name("");
}

CLI::Option* addRepeated(CLI::App& command, const std::string& names,
                         std::vector<std::string>& values, const std::string& help) {
  return command
      .add_option_function<std::string>(
          names, [&values](const std::string& value) { values.push_back(value); }, help)
      ->trigger_on_parse()
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

void addSaveOptions(CLI::App& command, SaveOptions& options) {
  command.add_flag("-n,--dry-run", options.isDryRun,
                   localized("Say what would be done, and touch nothing"));
  command.add_flag("--backup", options.keepsBackup, localized("Keep the old file as FILE~"));
}

CLI::Option* addChoice(CLI::App& command, const std::string& names, size_t& chosen,
                       const std::vector<std::string>& words, const std::string& help) {
  std::string form;
  for (const std::string& word : words) form += (form.empty() ? "" : "|") + word;
  const auto set = [&chosen, words](const std::string& word) {
    chosen = static_cast<size_t>(std::ranges::find(words, word) - words.begin());
  };
  return command.add_option_function<std::string>(names, set, help)
      ->type_name(form)
      ->check(CLI::IsMember(words).description(""));
}

void addFormat(CLI::App& command, const std::string& option, std::string& format,
               const std::vector<std::string>& names, const std::string& help) {
  std::string form;
  for (const std::string& name : names) form += (form.empty() ? "" : "|") + name;
  command.add_option(option, format, help)
      ->type_name(form)
      ->check(CLI::IsMember(names).description(""));
}

void setAction(CLI::App& command, Action& chosen, Action action) {
  command.callback([&chosen, action = std::move(action)] { chosen = action; });
}

ns::String argumentText(const std::string& argument) {
  std::optional<ns::String> text = ns::String::fromUtf8(argument);
  if (!text) throw FileFailure("\"" + argument + "\" is no UTF-8 text");
  return *std::move(text);
}

int statusOfJobs(const JobSummary& summary, const DocumentArguments& documents) {
  if (!summary.isInterrupted) return documents.hasFailed ? kFailed : summary.status();
  report("interrupted: " + std::to_string(summary.done + summary.no) + " of " +
         std::to_string(documents.files.size()) + " documents were done");
  return kFailed;
}

DocumentArguments eachDocumentOnce(DocumentArguments documents) {
  std::set<std::pair<dev_t, ino_t>> seen;
  std::erase_if(documents.files, [&seen](const std::string& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 && !seen.emplace(status.st_dev, status.st_ino).second;
  });
  return documents;
}

DocumentArguments documentsOfArguments(const std::vector<std::string>& arguments) {
  DocumentArguments documents;
  documents.files =
      documentFiles(arguments, [&](const std::string& folder, const std::string& why) {
        report(folder, why);
        documents.hasFailed = true;
      });
  return documents;
}

}  // namespace tavlin
