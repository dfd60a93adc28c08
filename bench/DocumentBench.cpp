// What operations on whole documents cost.  Each grows with the number of items: the times per
// item, which "per_item" shows, stay about the same until the items no longer fit into caches.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "document/OLDataManager.h"
#include "model/OLTree.h"

namespace tavlin {
namespace {

using Document = std::shared_ptr<OLDataManager>;
using Item = std::shared_ptr<OLNode>;

enum Shape : int64_t { outline, list, chain };

// Items in document order with titles of their own, a note at every tenth: an outline in which
// each item has up to ten children, one list, or one chain.
Document documentOf(size_t count, Shape shape) {
  auto document = OLDataManager::create();
  const size_t widest = shape == outline ? 10 : shape == list ? count : 1;
  size_t deepest = shape == chain ? count : 1;
  for (size_t held = widest; shape == outline && held < count; held *= widest) ++deepest;
  OLNodeList path{document->rootItem()};
  for (size_t i = 0; i < count; ++i) {
    while (path.size() > deepest || path.back()->countChildren() == widest) path.pop_back();
    auto item = OLNode::create();
    item->setDataForKey(ns::String("Item number " + std::to_string(i)), "title");
    if (i % 10 == 0) item->setDataForKey("A note of some words", "note");
    path.back()->addChild(item);
    path.push_back(std::move(item));
  }
  return document;
}

// Sizes of each shape, and the time for one item.
void sizes(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"items", "shape"})->Unit(benchmark::kMillisecond);
  for (const int64_t shape : {outline, list, chain}) {
    for (const int64_t items : {10'000, 100'000, 1'000'000}) bench->Args({items, shape});
  }
}

Document documentOf(const benchmark::State& state) {
  return documentOf(static_cast<size_t>(state.range(0)), static_cast<Shape>(state.range(1)));
}

void perItem(benchmark::State& state) {
  state.counters["per_item"] =
      benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void CountOfAllItems(benchmark::State& state) {
  const Document document = documentOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(document->countOfAllItems());
  perItem(state);
}
BENCHMARK(CountOfAllItems)->Apply(sizes);

void MetadataString(benchmark::State& state) {
  const Document document = documentOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(document->metadataString());
  perItem(state);
}
BENCHMARK(MetadataString)->Apply(sizes);

// To rich text and back, so that each round finds the same document.
void ConvertItems(benchmark::State& state) {
  const Document document = documentOf(state);
  for (auto _ : state) {
    document->convertItemsToRichTextWithUndo(true, false);
    document->convertItemsToRichTextWithUndo(false, false);
  }
  perItem(state);
}
BENCHMARK(ConvertItems)->Apply(sizes);

void ConvertListedItems(benchmark::State& state) {
  const Document document = documentOf(state);
  for (auto _ : state) {
    const OLNodeList items = document->childrenByItem(nullptr);
    document->convertItemsToRichTextWithUndo(items, true, false);
    document->convertItemsToRichTextWithUndo(items, false, false);
  }
  perItem(state);
}
BENCHMARK(ConvertListedItems)->Apply(sizes);

void Validate(benchmark::State& state) {
  const Document document = documentOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(document->validateDataWithRecovery(false));
  perItem(state);
}
BENCHMARK(Validate)->Apply(sizes);

// Of items that all have lost their parent links.
void Recover(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    Document document = documentOf(state);
    const Item first = document->firstItem();
    for (Item item = first; item; item = item->childAtIndex(0)) {
      for (const auto& child : item->children()) child->setParent(nullptr);
    }
    for (const auto& item : document->rootItem()->children()) {
      if (item != first || state.range(1) == chain) item->setParent(nullptr);
    }
    state.ResumeTiming();
    benchmark::DoNotOptimize(document->validateDataWithRecovery(true));
    state.PauseTiming();
    document.reset();
    state.ResumeTiming();
  }
  perItem(state);
}
void recoverSizes(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"items", "shape"})->Unit(benchmark::kMillisecond);
  for (const int64_t shape : {list, chain}) {
    for (const int64_t items : {10'000, 100'000, 1'000'000}) bench->Args({items, shape});
  }
}
BENCHMARK(Recover)->Apply(recoverSizes);

}  // namespace
}  // namespace tavlin

BENCHMARK_MAIN();
