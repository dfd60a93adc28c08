// tavlin check: what is wrong with documents, and its repair.

#include <memory>
#include <optional>

#include "exchange/JsonText.h"
#include "inspect/DocumentInspection.h"
#include "outline/Commands.h"
#include "outline/common/FieldLines.h"
#include "outline/common/Messages.h"

namespace tavlin {

namespace {

struct CheckOptions {
  std::vector<std::string> arguments;
  JobOptions jobs;
  SaveOptions saving;
  bool repairs = false;
  bool isJson = false;
};

/// One document, what is wrong with it, and what is left of that.
class DocumentCheck {
 public:
  DocumentCheck(const std::string& file, const CheckOptions& options)
      : file_(file), options_(options), content_(readInput(file, state_)), inspection_(content_) {}

  void repair() {
    if (!options_.repairs) return;
    if (file_ == "-") throw FileFailure("standard input cannot be repaired");
    std::optional<ns::Data> mended;
    try {
      mended = inspection_.repaired();
    } catch (const ns::Exception& exception) {
      throw FileFailure(exception.what());
    }
    if (!mended) return;
    saveContent(file_, content_, state_, *mended, options_.saving);
    isRepaired_ = !options_.saving.isDryRun;
  }

  void print(Output& output) const { options_.isJson ? printJson(output) : printLines(output); }

  /// Whether an error or a warning is left.
  [[nodiscard]] bool hasFaultsLeft() const {
    return inspection_.faultCount() > (isRepaired_ ? inspection_.repairableCount() : 0);
  }

 private:
  void printLines(Output& output) const {
    for (const Finding& finding : inspection_.findings()) {
      std::string line = outputText(file_) + ":";
      if (!finding.path.empty()) line += finding.path + ":";
      line += " " + std::string(nameOf(finding.severity())) + ": ";
      line += outputText(inOneLine(finding.text));
      if (!finding.isRepairable) {
        line += "; --repair leaves it";
      } else if (isRepaired_) {
        line += "; repaired";
      } else {
        line += "; --repair " + outputText(finding.remedy);
      }
      output << line << " [" << nameOf(finding.code) << "]\n";
    }
  }

  void printJson(Output& output) const {
    std::string line;
    JsonWriter json(line);
    json.beginObject();
    json.member("file", file_);
    json.key("findings");
    json.beginArray();
    for (const Finding& finding : inspection_.findings()) {
      json.beginObject();
      json.key("path");
      finding.path.empty() ? json.null() : json.string(finding.path);
      json.member("severity", nameOf(finding.severity()));
      json.member("code", nameOf(finding.code));
      json.member("text", finding.text);
      json.member("repairable", finding.isRepairable);
      json.endObject();
    }
    json.endArray();
    json.member("repaired", isRepaired_ ? inspection_.repairableCount() : uint64_t{0});
    json.endObject();
    output << line << "\n";
  }

  const std::string& file_;
  const CheckOptions& options_;
  ns::FileState state_;
  ns::Data content_;
  DocumentInspection inspection_;
  bool isRepaired_ = false;
};

int check(const CheckOptions& options) {
  const DocumentArguments documents = eachDocumentOnce(documentsOfArguments(options.arguments));
  JobOptions jobs = options.jobs;
  jobs.finishesWhenInterrupted = options.repairs;
  Output output(Output::toStandardOutput);
  const auto checkFile = [&](const std::string& file, Output& out) {
    DocumentCheck document(file, options);
    try {
      document.repair();
    } catch (const FileFailure&) {
      document.print(out);  // what is wrong is known all the same
      throw;
    }
    document.print(out);
    return document.hasFaultsLeft() ? kNo : kDone;
  };
  const JobSummary summary = forEachFile(documents.files, jobs, output, checkFile);
  output.flush();
  return statusOfJobs(summary, documents);
}

}  // namespace

void addCheck(CLI::App& table, Action& action) {
  CLI::App* const command =
      table.add_subcommand("check", localized("Says what is wrong with documents, and mends it"));
  const auto options = std::make_shared<CheckOptions>();
  command->add_flag("--repair", options->repairs,
                    localized("Mend what can be mended without losing anything"));
  command->add_flag("--json", options->isJson, localized("A JSON value for each document"));
  addSaveOptions(*command, options->saving);
  addFilesAndFolders(*command, options->arguments, options->jobs);
  setAction(*command, action, [options] { return check(*options); });
}

}  // namespace tavlin
