// tavlin properties: prints and sets what a document is about.

#include <algorithm>
#include <memory>

#include "edit/PropertyEdits.h"
#include "outline/Commands.h"
#include "outline/common/FieldLines.h"
#include "outline/common/Messages.h"
#include "outline/common/PropertyText.h"

namespace tavlin {

namespace {

struct PropertyOptions {
  std::string file;
  std::vector<std::string> set;
  std::vector<std::string> unset;
  bool isJson = false;
  SaveOptions saving;
  Coloring coloring = Coloring::automatic;  // nothing here has a colour yet
};

const PropertyKey& keyNamed(const std::string& name) {
  if (const PropertyKey* key = propertyKeyNamed(name)) return *key;
  std::string known;
  for (const PropertyKey& key : kPropertyKeys) {
    known += (known.empty() ? "" : ", ") + std::string(key.name);
  }
  throw FileFailure("\"" + name + "\" is no property; there are " + known);
}

/// What the options ask for, a change for each key.
std::vector<PropertyChange> changesAskedFor(const PropertyOptions& options) {
  std::vector<PropertyChange> changes;
  const auto find = [&](const PropertyKey& key) {
    return std::ranges::find(changes, &key, &PropertyChange::key);
  };
  for (const std::string& assignment : options.set) {
    const size_t equals = assignment.find('=');
    if (equals == std::string::npos) {
      throw FileFailure("--set needs KEY=VALUE, and \"" + assignment + "\" has no \"=\"");
    }
    const PropertyKey& key = keyNamed(assignment.substr(0, equals));
    ns::String text = argumentText(assignment.substr(equals + 1));
    const auto known = find(key);
    if (known == changes.end()) {
      changes.push_back({&key, std::vector<ns::String>{std::move(text)}});
    } else if (key.isList) {
      known->texts->push_back(std::move(text));
    } else {
      throw FileFailure(std::string(key.name) + " is no list, and can be set only once");
    }
  }
  for (const std::string& name : options.unset) {
    const PropertyKey& key = keyNamed(name);
    const auto known = find(key);
    if (known == changes.end()) {
      changes.push_back({&key, std::nullopt});
    } else if (known->texts) {
      throw FileFailure(name + " cannot be set and unset at once");
    }
  }
  return changes;
}

void printChange(const std::string& file, const PropertyChange& change, Output& output) {
  output << outputText(file) << ": " << change.key->name;
  if (!change.texts) {
    output << " would be removed\n";
    return;
  }
  const std::string text =
      change.key->isList ? listText(*change.texts) : change.texts->front().utf8();
  output << ": " << outputText(inOneLine(text)) << "\n";
}

void print(const PropertyOptions& options, const OpenDocument& opened, Output& output) {
  if (!options.isJson) {
    output << propertyLines(*opened.document);
    return;
  }
  std::string line;
  JsonWriter json(line);
  json.beginObject();
  json.member("file", opened.file);
  appendProperties(json, *opened.document);
  json.endObject();
  output << line << "\n";
}

int workOn(const PropertyOptions& options, const std::string& file, Output& output) {
  const std::vector<PropertyChange> wanted = changesAskedFor(options);
  const OpenDocument opened = wanted.empty() ? openDocument(file) : openDocumentForChange(file);
  const std::vector<PropertyChange> made = changeProperties(*opened.document, wanted);
  if (options.saving.isDryRun && !options.isJson) {
    for (const PropertyChange& change : made) printChange(file, change, output);
  }
  if (!made.empty()) saveDocument(opened, options.saving);
  // in a dry run as they would be
  if (wanted.empty() || options.isJson) print(options, opened, output);
  return kDone;
}

int runProperties(const PropertyOptions& options) {
  Output output(Output::toStandardOutput);
  const auto work = [&](const std::string& file, Output& out) {
    return workOn(options, file, out);
  };
  const JobSummary summary = forEachFile({options.file}, {.count = 1}, output, work);
  output.flush();
  return summary.status();
}

}  // namespace

void addProperties(CLI::App& table, Action& action) {
  CLI::App* const command =
      table.add_subcommand("properties", localized("Prints and sets properties of a document"));
  const auto options = std::make_shared<PropertyOptions>();
  addRepeated(*command, "--set", options->set,
              localized("Set a property; repeated for one that is a list"))
      ->type_name("KEY=VALUE");
  addRepeated(*command, "--unset", options->unset, localized("Remove a property"))
      ->type_name("KEY");
  command->add_flag("--json", options->isJson, localized("Print a JSON value"));
  addSaveOptions(*command, options->saving);
  addColoring(*command, options->coloring);
  addChangedFile(*command, options->file);
  setAction(*command, action, [options] { return runProperties(*options); });
}

}  // namespace tavlin
