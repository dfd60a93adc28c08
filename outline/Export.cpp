// tavlin export: documents in other formats.

#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <optional>

#include "exchange/ItemContent.h"
#include "model/runtime/OLNumberLabelFormats.h"
#include "outline/Commands.h"
#include "outline/common/ArgumentErrors.h"
#include "outline/common/Formats.h"
#include "outline/common/Messages.h"
#include "platform/foundation/File.h"

namespace tavlin {

namespace {

constexpr size_t kNumberFormats = 3;

struct ExportOptions {
  std::string file;
  std::string out = "-";
  std::string format;
  std::optional<std::string> item;
  size_t numbers = kNumberFormats;  // none
};

NumberLabels numberLabels(size_t choice, const OLDataManager& document) {
  if (choice == 1) return std::make_shared<OLNumberLabelFormatLegal>();
  if (choice == 2) return std::make_shared<OLNumberLabelFormatHarvard>();
  return numberLabelFormatOfDocument(*document.treeController()->tree());
}

bool isDeviceOrPipe(const std::string& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

/// Into a device or a pipe, which nothing can be put in the place of.
Losses writeThrough(const std::string& file, const Format& format, const ExportSource& source,
                    const NumberLabels& numbers) {
  std::ofstream stream(file, std::ios::binary);
  const auto write = [&](std::string_view piece) {
    stream.write(piece.data(), static_cast<std::streamsize>(piece.size()));
    if (!stream) throw FileFailure(file, "it cannot be written");
  };
  if (!stream) write("");
  const Losses losses = format.write(source, numbers, write);
  stream.close();
  if (!stream) write("");
  return losses;
}

/// In place of a file, whole or not at all.
Losses replaceFile(const std::string& file, const Format& format, const ExportSource& source,
                   const NumberLabels& numbers) {
  ns::DataPieces pieces;
  const Losses losses = format.write(source, numbers, [&](std::string_view piece) {
    pieces.append(ns::Data(std::string(piece)));
  });
  try {
    ns::writeFileAtomically(file, pieces);
  } catch (const ns::FileException& exception) {
    throw FileFailure(file, std::strerror(exception.error()));
  }
  return losses;
}

Losses writeToStandardOutput(const Format& format, const ExportSource& source,
                             const NumberLabels& numbers, Output& output) {
  if (!isTerminalOutput()) {
    return format.write(source, numbers, [&](std::string_view piece) { output.write(piece); });
  }
  TerminalLines lines(output);
  const Losses losses =
      format.write(source, numbers, [&](std::string_view piece) { lines.write(piece); });
  lines.finish();
  return losses;
}

bool areOneFile(const std::string& file, const std::string& other) {
  struct stat a {};
  struct stat b {};
  return ::stat(file.c_str(), &a) == 0 && ::stat(other.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
         a.st_ino == b.st_ino;
}

int exportDocument(const ExportOptions& options, const std::string& file, Output& output) {
  const Format* const format =
      options.format.empty() ? formatOfFile(options.out) : formatNamed(options.format);
  if (options.out != "-" && file != "-" && areOneFile(file, options.out)) {
    throw FileFailure(options.out, "the document itself would be replaced");
  }
  const OpenDocument opened = openDocument(file);
  ExportSource source{opened.document, nullptr};
  if (options.item) source.item = itemAtPath(*opened.document, *options.item);
  const NumberLabels numbers =
      options.numbers == kNumberFormats ? nullptr : numberLabels(options.numbers, *opened.document);
  Losses losses;
  if (options.out == "-") {
    losses = writeToStandardOutput(*format, source, numbers, output);
  } else if (isDeviceOrPipe(options.out)) {
    losses = writeThrough(options.out, *format, source, numbers);
  } else {
    losses = replaceFile(options.out, *format, source, numbers);
  }
  output.flush();
  losses.values += countOfOtherArchiveEntries(opened.content);
  reportLosses(file, losses, format->name, " of text");
  return kDone;
}

int runExport(const ExportOptions& options) {
  if (options.format.empty() && !formatOfFile(options.out)) {
    report(options.out == "-"
               ? "export: --to=FORMAT is missing"
               : "export: the name of \"" + options.out + "\" tells no format; --to=FORMAT does");
    return kFailed;
  }
  const Format* const format =
      options.format.empty() ? formatOfFile(options.out) : formatNamed(options.format);
  if (options.numbers != kNumberFormats && !format->showsNumbers) {
    report(std::string("export: --numbers has no place in ") + format->name);
    return kFailed;
  }
  Output output(Output::toStandardOutput);
  const auto work = [&](const std::string& file, Output& out) {
    return exportDocument(options, file, out);
  };
  const JobSummary summary = forEachFile({options.file}, {.count = 1}, output, work);
  output.flush();
  return summary.status();
}

}  // namespace

void addExport(CLI::App& table, Action& action) {
  CLI::App* const command =
      table.add_subcommand("export", localized("Writes a document in another format"));
  const auto options = std::make_shared<ExportOptions>();
  addFormat(*command, "--to", options->format, formatNames(false),
            localized("The format; by default the one that the name of OUT tells"));
  command
      ->add_option("-o,--output", options->out,
                   localized("The file to write, in place of what is there; - is standard output"))
      ->type_name("OUT");
  addItemPath(*command, options->item);
  CLI::Option* const numbers =
      addChoice(*command, "--numbers", options->numbers, {"document", "legal", "harvard"},
                localized("Show number labels in HTML, by default those that the document names"));
  setValueLeftOut(*numbers, "document");
  command->add_option("FILE", options->file, localized("The document; - is standard input"))
      ->required()
      ->type_name("");
  setAction(*command, action, [options] { return runExport(*options); });
}

}  // namespace tavlin
