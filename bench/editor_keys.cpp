// How long keys take in the editor: editor_keys FILE KEYS [TIMES]
//
// Carries out the keys of a story so many times on a document, draws after each, and prints for
// every key the median, the 99th percentile and the longest processor time, in milliseconds.

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "editor/EditorScreen.h"
#include "platform/foundation/File.h"

namespace {

class ReadingStore final : public tavlin::DocumentStore {
 public:
  tavlin::LoadedDocument read(const std::string& file) override {
    tavlin::LoadedDocument loaded;
    loaded.content = ns::readFile(file, loaded.state);
    loaded.document = load(loaded.content);
    return loaded;
  }
  std::shared_ptr<tavlin::OLDataManager> load(const ns::Data& content) override {
    auto document = tavlin::OLDataManager::create();
    if (!document->loadDataRepresentationOfType(content)) std::exit(1);
    return document;
  }
  ns::FileState write(const std::string& /*file*/, const ns::DataPieces& /*content*/,
                      const std::optional<ns::FileState>& /*expected*/) override {
    return {};
  }
};

/// Milliseconds of processor time, which does not count what other programs take meanwhile.
double now() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double millisecondsSince(double start) { return now() - start; }

void print(const std::string& name, std::vector<double> times) {
  std::ranges::sort(times);
  const auto at = [&times](size_t percent) {
    return times[std::min(times.size() - 1, times.size() * percent / 100)];
  };
  std::printf("%-12s %8zu %10.3f %10.3f %10.3f\n", name.c_str(), times.size(), at(50), at(99),
              times.back());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: editor_keys FILE \"Down PageDown - + F3 ...\" [TIMES]\n");
    return 2;
  }
  ReadingStore store;
  const double start = now();
  const std::string folder = argc > 4 ? argv[4] : "";
  tavlin::EditedDocument document(store, argv[1], folder);
  tavlin::EditorScreen screen(document, tavlin::KeyTable());
  screen.resize(80, 24);
  (void)screen.draw();
  std::printf("open and draw %.1f ms\n%-12s %8s %10s %10s %10s\n", millisecondsSince(start), "key",
              "times", "median", "99 %", "longest");
  std::map<std::string, std::vector<double>> times;
  for (int round = argc > 3 ? std::atoi(argv[3]) : 1; round > 0; --round) {
    std::istringstream keys(argv[2]);
    for (std::string name; keys >> name;) {
      const std::string known = name.starts_with("=") ? name.substr(1, 1) : name;
      tavlin::Key key = name == "Escape" ? tavlin::Key::of(tavlin::KeyCode::escape)
                                         : tavlin::keyNamed(known).value_or(tavlin::Key());
      const double began = now();
      screen.press(key);
      (void)screen.draw();
      times[name].push_back(millisecondsSince(began));
      // what goes on while nobody types, slice by slice
      while (screen.hasWork()) {
        const double slice = now();
        screen.work(std::chrono::milliseconds(8));
        (void)screen.draw();
        times[name + " (goes on)"].push_back(millisecondsSince(slice));
      }
    }
  }
  for (const auto& [name, all] : times) print(name, all);
}
