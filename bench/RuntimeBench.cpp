#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "model/runtime/OLNumberLabelFormats.h"
#include "model/runtime/OLTreeRuntimeAttributesController.h"

// What the derived attributes cost: builds of whole trees, single edits among many siblings,
// operations on many items.

namespace tavlin {
namespace {

using Controller = OLTreeRuntimeAttributesController;
using Item = std::shared_ptr<OLNode>;

Item addNew(const Item& parent) {
  auto item = OLNode::create();
  parent->addChild(item);
  return item;
}

struct Document {
  std::shared_ptr<Controller> controller = Controller::create();
  OLNodeList items;  // in the order in which they were made
  [[nodiscard]] const Item& root() const { return controller->tree()->rootItem(); }
};

// Items in document order, each with up to ten children, every tenth of them checked, as an
// outline that somebody wrote: made from front to back, like one that was read.
Document outlineOf(size_t count) {
  constexpr size_t kChildren = 10;
  Document document;
  document.controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
  size_t depth = 1;
  for (size_t held = kChildren; held < count; held *= kChildren) ++depth;
  const ns::Value title = "title", checkStatus = "checkStatus";
  OLNodeList path{document.root()};
  while (document.items.size() < count) {
    while (path.size() > depth || path.back()->countChildren() == kChildren) path.pop_back();
    path.push_back(addNew(path.back()));
    document.items.push_back(path.back());
    path.back()->setDataForKey("An item of the outline", title);
    if (document.items.size() % 10 == 0) path.back()->setDataForKey(true, checkStatus);
  }
  return document;
}

Document chainOf(size_t count) {
  Document document;
  document.controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
  Item last = document.root();
  for (size_t i = 0; i < count; ++i) last = addNew(last);
  return document;
}

Document flatListOf(size_t count, size_t depth) {
  Document document;
  document.controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
  Item parent = document.root();
  for (size_t i = 0; i < depth; ++i) parent = addNew(parent);
  for (size_t i = 0; i < count; ++i) document.items.push_back(addNew(parent));
  document.controller->buildRuntimeCheckState();
  document.controller->buildRuntimeNumberLabel();
  return document;
}

void perItem(benchmark::State& state, size_t items) {
  state.counters["per_item"] =
      benchmark::Counter(static_cast<double>(items), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

// A document of its own, so that the items do not lie scattered over what earlier ones left.
Document freshDocument(benchmark::State& state, Document (*make)(size_t)) {
  malloc_trim(0);
  return make(static_cast<size_t>(state.range(0)));
}

// Including the memory for what is stored.
void BM_FirstBuildOfCheckStates(benchmark::State& state) {
  const Document document = freshDocument(state, outlineOf);
  for (auto _ : state) document.controller->buildRuntimeCheckState();
  perItem(state, document.items.size());
}

void BM_FirstBuildOfNumberLabels(benchmark::State& state) {
  const Document document = freshDocument(state, outlineOf);
  document.controller->buildRuntimeCheckState();
  for (auto _ : state) document.controller->buildRuntimeNumberLabel();
  perItem(state, document.items.size());
}

// One that has all its attributes already.
Document builtDocument(benchmark::State& state, Document (*make)(size_t)) {
  Document document = freshDocument(state, make);
  document.controller->buildRuntimeCheckState();
  document.controller->buildRuntimeNumberLabel();
  return document;
}

void BM_BuildCheckStates(benchmark::State& state) {
  const Document document = builtDocument(state, outlineOf);
  for (auto _ : state) document.controller->buildRuntimeCheckState();
  perItem(state, document.items.size());
}

void BM_BuildNumberLabels(benchmark::State& state) {
  const Document document = builtDocument(state, outlineOf);
  for (auto _ : state) document.controller->buildRuntimeNumberLabel();
  perItem(state, document.items.size());
}

// Each item the only child of the one before.
void BM_BuildAttributesOfAChain(benchmark::State& state) {
  const Document document = builtDocument(state, chainOf);
  for (auto _ : state) {
    document.controller->buildRuntimeCheckState();
    document.controller->buildRuntimeNumberLabel();
  }
  perItem(state, static_cast<size_t>(state.range(0)));
}

void BM_CheckOneOfManySiblings(benchmark::State& state) {
  const Document document = flatListOf(static_cast<size_t>(state.range(0)), 10);
  const Item item = document.items[document.items.size() / 2];
  bool isChecked = false;
  for (auto _ : state) {
    document.controller->setObjectValueForKeyByItem(isChecked = !isChecked, "checkStatus", item);
  }
}

void BM_InsertAndDeleteAmongManySiblings(benchmark::State& state) {
  const Document document = flatListOf(static_cast<size_t>(state.range(0)), 10);
  const Item selected = document.items[document.items.size() / 2];
  for (auto _ : state) {
    document.controller->deleteItem(document.controller->addItemWithSelected(selected));
  }
}

void BM_CheckOneOfManyHiddenSiblings(benchmark::State& state) {
  const Document document = flatListOf(static_cast<size_t>(state.range(0)), 10);
  for (const Item& item : document.items) item->setDataForKey(false, "showCheckState");
  const Item item = document.items[document.items.size() / 2];
  for (auto _ : state) {
    document.controller->setObjectValueForKeyByItem(true, "checkStatus", item);
  }
}

// Items scattered over a tree, or every second one of a flat list, in an order without plan.
OLNodeList selectionOf(const Document& document, size_t count) {
  OLNodeList selection;
  uint64_t random = 1;
  for (size_t i = 0; i < count; ++i) {
    selection.push_back(document.items[i * document.items.size() / count]);
    random = random * 6364136223846793005U + 1442695040888963407U;
    std::swap(selection.back(), selection[(random >> 33) % selection.size()]);
  }
  return selection;
}

constexpr size_t kItemsPerSelected = 5;

template <class Operation>
void onManyItems(benchmark::State& state, bool isFlat, Operation operation) {
  const auto count = static_cast<size_t>(state.range(0));
  const Document document =
      isFlat ? flatListOf(kItemsPerSelected * count, 0) : outlineOf(kItemsPerSelected * count);
  const OLNodeList selection = selectionOf(document, count);
  for (auto _ : state) operation(*document.controller, selection);
  perItem(state, count);
}

void removeDescendants(Controller&, OLNodeList items) { OLTree::removeDescendantsFromItems(items); }
void filter(Controller& controller, OLNodeList items) {
  controller.filterItemsArrayToBuildRuntimeNumberLabel(items);
}
void noteForDeletion(Controller& controller, const OLNodeList& items) {
  OLNodeList parents, nextSiblings;
  controller.parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, items);
}

void BM_RemoveDescendants(benchmark::State& state) { onManyItems(state, false, removeDescendants); }
void BM_StartingPoints(benchmark::State& state) { onManyItems(state, false, filter); }
void BM_StartingPointsOfSiblings(benchmark::State& state) { onManyItems(state, true, filter); }
void BM_DeletionBookkeeping(benchmark::State& state) { onManyItems(state, false, noteForDeletion); }
void BM_DeletionBookkeepingOfSiblings(benchmark::State& state) {
  onManyItems(state, true, noteForDeletion);
}

// Deletes a selection from a document that has all its attributes; nothing else is timed.
void measureDeletion(benchmark::State& state, std::unique_ptr<Document> document,
                     OLNodeList selection) {
  document->controller->buildRuntimeCheckState();
  document->controller->buildRuntimeNumberLabel();
  state.ResumeTiming();
  document->controller->deleteItems(selection);
  state.PauseTiming();
  selection.clear();
  document.reset();
  state.ResumeTiming();
}

// Four neighbours out of five, in each of many parents.
void BM_DeleteManyItems(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto document = std::make_unique<Document>();
    document->controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
    OLNodeList selection;
    while (selection.size() < count) {
      const Item parent = addNew(document->root());
      for (int i = 0; i < 5; ++i) {
        const Item item = addNew(parent);
        if (i < 4) selection.push_back(item);
      }
    }
    measureDeletion(state, std::move(document), std::move(selection));
  }
  perItem(state, count);
}

// The middle one of three children at every level of a deep outline: each has its own stretch to
// relabel.
void BM_DeleteOneItemOfEveryLevel(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto document = std::make_unique<Document>();
    document->controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
    OLNodeList selection;
    Item level = document->root();
    while (selection.size() < count) {
      const Item next = addNew(level);
      selection.push_back(addNew(level));
      addNew(level);
      level = next;
    }
    measureDeletion(state, std::move(document), std::move(selection));
  }
  perItem(state, count);
}

constexpr auto kUnit = benchmark::kMillisecond;

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(kUnit);
}
void sizesOnce(benchmark::internal::Benchmark* benchmark) {
  sizes(benchmark);
  benchmark->Iterations(1);
}

BENCHMARK(BM_FirstBuildOfCheckStates)->Apply(sizesOnce);
BENCHMARK(BM_FirstBuildOfNumberLabels)->Apply(sizesOnce);
BENCHMARK(BM_BuildCheckStates)->Apply(sizes);
BENCHMARK(BM_BuildNumberLabels)->Apply(sizes);
BENCHMARK(BM_BuildAttributesOfAChain)->Apply(sizes);
BENCHMARK(BM_CheckOneOfManySiblings)->Arg(1000)->Arg(100000)->Unit(kUnit);
BENCHMARK(BM_InsertAndDeleteAmongManySiblings)->Arg(1000)->Arg(100000)->Unit(kUnit);
BENCHMARK(BM_CheckOneOfManyHiddenSiblings)->Arg(1000)->Arg(20000)->Unit(kUnit);
BENCHMARK(BM_RemoveDescendants)->Arg(1000)->Arg(20000)->Unit(kUnit);
BENCHMARK(BM_StartingPoints)->Arg(1000)->Arg(20000)->Unit(kUnit);
BENCHMARK(BM_StartingPointsOfSiblings)->Arg(1000)->Arg(20000)->Unit(kUnit);
BENCHMARK(BM_DeletionBookkeeping)->Arg(1000)->Arg(20000)->Unit(kUnit);
BENCHMARK(BM_DeletionBookkeepingOfSiblings)->Arg(1000)->Arg(20000)->Unit(kUnit);
BENCHMARK(BM_DeleteManyItems)->Arg(1000)->Arg(20000)->Unit(kUnit);
BENCHMARK(BM_DeleteOneItemOfEveryLevel)->Arg(1000)->Arg(20000)->Unit(kUnit);

}  // namespace
}  // namespace tavlin

BENCHMARK_MAIN();
