#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <map>
#include <string>

#include "editor/EditorScreen.h"
#include "exchange/JsonFormat.h"
#include "exchange/TextFormat.h"
#include "platform/foundation/File.h"

namespace tavlin {

/// A store whose documents lie in memory.
class MemoryStore final : public DocumentStore {
 public:
  std::map<std::string, ns::Data> files;
  bool isChanged = false;  ///< as if another program had written

  LoadedDocument read(const std::string& file) override {
    const auto found = files.find(file);
    if (found == files.end()) return {OLDataManager::create(), {}, {}};
    return {load(found->second), found->second, {}};
  }
  std::shared_ptr<OLDataManager> load(const ns::Data& content) override {
    auto document = OLDataManager::create();
    if (!document->loadDataRepresentationOfType(content)) throw std::runtime_error("no document");
    return document;
  }
  ns::FileState write(const std::string& file, const ns::DataPieces& content,
                      const std::optional<ns::FileState>& expected) override {
    if (isChanged && expected) throw ns::FileChangedException(file, ESTALE);
    files[file] = content.joined();
    return {};
  }

  [[nodiscard]] std::string text(const std::string& file) { return exported(file, exportText); }
  [[nodiscard]] std::string json(const std::string& file) { return exported(file, exportJson); }

 private:
  template <class Export>
  std::string exported(const std::string& file, Export exportAs) {
    std::string text;
    const auto document = load(files.at(file));
    exportAs(ExportSource{document, nullptr}, [&text](std::string_view piece) { text += piece; });
    return text;
  }
};

/// A folder for journals that goes with the test.
class StateFolder {
 public:
  StateFolder() {
    std::string name = "/tmp/tavlin-editor-test.XXXXXX";
    path_ = ::mkdtemp(name.data());
  }
  ~StateFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  StateFolder(const StateFolder&) = delete;
  StateFolder& operator=(const StateFolder&) = delete;
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

/// Makes a document of a text as exportText() writes it.
inline void addDocument(MemoryStore& store, const std::string& file, const std::string& text) {
  Imported imported = importText(text);
  store.files[file] = *imported.document->dataRepresentation();
}

/// Presses keys by their names ("Ctrl-S", "Escape"); "=text" types a text.
inline void press(EditorScreen& screen, std::initializer_list<std::string> names) {
  for (const std::string& name : names) {
    if (name.size() > 1 && name[0] == '=') {
      const std::u16string units = ns::String(std::string_view(name).substr(1)).units();
      for (size_t i = 0; i < units.size();) {
        const ns::CodePoint point = ns::codePointAt(units, i);
        screen.press(Key::ofCharacter(point.value));
        i += point.length;
      }
    } else if (name == "Escape") {
      screen.press(Key::of(KeyCode::escape));
    } else {
      const auto key = keyNamed(name);
      ASSERT_TRUE(key) << name;
      screen.press(*key);
    }
    while (screen.hasWork()) screen.work(std::chrono::milliseconds(5));
  }
}

/// The lines of the outline without blanks at their ends.
inline std::vector<std::string> linesOf(EditorScreen& screen) {
  std::vector<std::string> lines;
  for (const DrawnLine& line : screen.draw().lines) {
    std::string text = line.text();
    text.erase(text.find_last_not_of(' ') + 1);
    lines.push_back(text);
  }
  return lines;
}

}  // namespace tavlin
