#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/undo/OLTreeUndoController.h"

// What undo costs: recording, undoing and redoing many edits, as groups of their own and as one
// group.  Each reports the time for each edit, which has to stay the same whatever their number.

namespace tavlin {
namespace {

class Document : public OLDataSource {
 public:
  [[nodiscard]] std::shared_ptr<ns::UndoManager> undoManager() const override { return manager; }
  [[nodiscard]] std::shared_ptr<OLDataSourceDelegate> delegate() const override { return nullptr; }
  const std::shared_ptr<ns::UndoManager> manager = std::make_shared<ns::UndoManager>();
};

enum class Kind : int { values, structure };

/// A document with ten items and as many edits as asked for.
class Edits {
 public:
  Edits(size_t count, Kind kind, bool isOneGroup) {
    OLNodeList items;
    while (items.size() < 10) items.push_back(controller->addItemWithSelected(nullptr));
    document->manager->removeAllActions();
    document->manager->endEvent();
    const ns::Value words[] = {"one", "two"};
    for (size_t i = 0; i < count; ++i) {
      const auto& item = items[i % items.size()];
      if (kind == Kind::values) {
        controller->setObjectValueForKeyByItem(words[i / items.size() % 2], "title", item);
      } else {
        controller->moveItemToParentAtIndex(item, nullptr, static_cast<int64_t>(i * 7 % 10));
      }
      if (!isOneGroup) document->manager->endEvent();
    }
    document->manager->endEvent();
  }
  void undoAll() {
    while (document->manager->canUndo()) document->manager->undo();
  }
  void redoAll() {
    while (document->manager->canRedo()) document->manager->redo();
  }

 private:
  const std::shared_ptr<Document> document = std::make_shared<Document>();
  const std::shared_ptr<OLTreeUndoController> controller =
      OLTreeUndoController::initWithDataSource(document);
};

void run(benchmark::State& state, int step) {
  const auto count = static_cast<size_t>(state.range(0));
  const auto kind = static_cast<Kind>(state.range(1));
  const bool isOneGroup = state.range(2) != 0;
  for (auto _ : state) {
    if (step > 0) state.PauseTiming();
    auto edits = std::make_unique<Edits>(count, kind, isOneGroup);
    if (step == 1) state.ResumeTiming();
    if (step >= 1) edits->undoAll();
    if (step == 2) state.ResumeTiming();
    if (step >= 2) edits->redoAll();
    state.PauseTiming();
    edits.reset();
    state.ResumeTiming();
  }
  state.counters["per_edit"] =
      benchmark::Counter(static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

void record(benchmark::State& state) { run(state, 0); }
void undo(benchmark::State& state) { run(state, 1); }
void redo(benchmark::State& state) { run(state, 2); }

void arguments(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"edits", "structure", "one_group"})
      ->ArgsProduct({{10000, 100000, 1000000}, {0, 1}, {0, 1}})
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1);
}

BENCHMARK(record)->Apply(arguments);
BENCHMARK(undo)->Apply(arguments);
BENCHMARK(redo)->Apply(arguments);

}  // namespace
}  // namespace tavlin

BENCHMARK_MAIN();
