#pragma once

#include <CLI/App.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "outline/Program.h"
#include "outline/common/Documents.h"
#include "outline/common/Jobs.h"
#include "outline/common/TerminalText.h"

namespace tavlin {

// Each command is declared by a function in a file of its own, and adds itself to the table.

void addShow(CLI::App& table, Action& action);
void addInfo(CLI::App& table, Action& action);
void addFind(CLI::App& table, Action& action);
void addExport(CLI::App& table, Action& action);
void addImport(CLI::App& table, Action& action);
void addCompletions(CLI::App& table, Action& action);
void addCheck(CLI::App& table, Action& action);
void addNew(CLI::App& table, Action& action);
void addKeywords(CLI::App& table, Action& action);
void addProperties(CLI::App& table, Action& action);
void addConvert(CLI::App& table, Action& action);
void addItem(CLI::App& table, Action& action);
void addApply(CLI::App& table, Action& action);
void addEdit(CLI::App& table, Action& action);

/// All of them, in the order in which help shows them.
void addCommands(CLI::App& table, Action& action);

// Options and arguments that several commands have.

/// FILE...
CLI::Option* addFiles(CLI::App& command, std::vector<std::string>& files);
/// FILE|FOLDER..., and -j.
CLI::Option* addFilesAndFolders(CLI::App& command, std::vector<std::string>& arguments,
                                JobOptions& jobs);
/// --color
void addColoring(CLI::App& command, Coloring& coloring);
/// --item, the path of an item to which what is shown is limited.
CLI::Option* addItemPath(CLI::App& command, std::optional<std::string>& path);
/// FILE, of a document that is changed.
CLI::Option* addChangedFile(CLI::App& command, std::string& file);
/// An option that may be given several times, with one value each.
CLI::Option* addRepeated(CLI::App& command, const std::string& names,
                         std::vector<std::string>& values, const std::string& help);
/// --dry-run and --backup
void addSaveOptions(CLI::App& command, SaveOptions& options);
/// An option whose value is one of some words, which become numbers from 0 on.
CLI::Option* addChoice(CLI::App& command, const std::string& names, size_t& chosen,
                       const std::vector<std::string>& words, const std::string& help);

/// An option whose value names a format.
void addFormat(CLI::App& command, const std::string& option, std::string& format,
               const std::vector<std::string>& names, const std::string& help);

/// Runs the action when the command is what the arguments name.
void setAction(CLI::App& command, Action& chosen, Action action);

/// Text that an argument has.  Raises FileFailure where it is no UTF-8.
[[nodiscard]] ns::String argumentText(const std::string& argument);

/// The documents that arguments name; folders that cannot be read are reported and counted.
struct DocumentArguments {
  std::vector<std::string> files;
  bool hasFailed = false;
};
[[nodiscard]] DocumentArguments documentsOfArguments(const std::vector<std::string>& arguments);
/// The same without documents that were named before, be it by another name: for commands that
/// write, where two at work on one document would stand in each other's way, and for counting.
[[nodiscard]] DocumentArguments eachDocumentOnce(DocumentArguments documents);
/// How far work came that was interrupted: reports it, and answers the status.
[[nodiscard]] int statusOfJobs(const JobSummary& summary, const DocumentArguments& documents);

}  // namespace tavlin
