// What operations on whole documents cost.  Each grows with the number of items: the time for one
// item stays about the same once the items no longer fit into the processor's caches.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "document/OLDataManager.h"
#include "model/OLTree.h"

namespace tavlin {
namespace {

using Document = std::shared_ptr<OLDataManager>;
using Item = std::shared_ptr<OLNode>;

/// Each item with up to ten children, all in one list, or each the only child of the one before.
enum class Shape : uint8_t { outline, list, chain };

// Items in document order with titles of their own, a note at every tenth.
Document makeDocument(size_t count, Shape shape) {
  auto document = OLDataManager::create();
  const size_t widest = shape == Shape::outline ? 10 : shape == Shape::list ? count : 1;
  size_t deepest = shape == Shape::chain ? count : 1;
  if (shape == Shape::outline) {
    for (size_t held = widest; held < count; held *= widest) ++deepest;
  }
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

// One document for all that ask for it: what is made in memory that an earlier document was
// scattered over measures that memory.
const Document& documentOf(const benchmark::State& state, Shape shape) {
  static std::map<std::pair<int64_t, Shape>, Document> made;
  Document& document = made[{state.range(0), shape}];
  if (!document) document = makeDocument(static_cast<size_t>(state.range(0)), shape);
  return document;
}

void perItem(benchmark::State& state) {
  state.counters["per_item"] =
      benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void CountOfAllItems(benchmark::State& state, Shape shape) {
  const Document& document = documentOf(state, shape);
  for (auto _ : state) benchmark::DoNotOptimize(document->countOfAllItems());
  perItem(state);
}

void MetadataString(benchmark::State& state, Shape shape) {
  const Document& document = documentOf(state, shape);
  for (auto _ : state) benchmark::DoNotOptimize(document->metadataString());
  perItem(state);
}

void Validate(benchmark::State& state, Shape shape) {
  const Document& document = documentOf(state, shape);
  for (auto _ : state) benchmark::DoNotOptimize(document->validateDataWithRecovery(false));
  perItem(state);
}

// To rich text and back, so that each round finds the same document.
void ConvertItems(benchmark::State& state, Shape shape) {
  const Document& document = documentOf(state, shape);
  for (auto _ : state) {
    document->convertItemsToRichTextWithUndo(true, false);
    document->convertItemsToRichTextWithUndo(false, false);
  }
  perItem(state);
}

void ConvertListedItems(benchmark::State& state, Shape shape) {
  const Document& document = documentOf(state, shape);
  for (auto _ : state) {
    const OLNodeList items = document->childrenByItem(nullptr);
    document->convertItemsToRichTextWithUndo(items, true, false);
    document->convertItemsToRichTextWithUndo(items, false, false);
  }
  perItem(state);
}

// Of a document none of whose items knows its parent, but the first of a list.
void Recover(benchmark::State& state, Shape shape) {
  for (auto _ : state) {
    state.PauseTiming();
    Document document = makeDocument(static_cast<size_t>(state.range(0)), shape);
    for (Item item = document->firstItem(); item; item = item->childAtIndex(0)) {
      for (const auto& child : item->children()) child->setParent(nullptr);
    }
    for (const auto& item : document->rootItem()->children()) {
      if (shape == Shape::chain || item != document->firstItem()) item->setParent(nullptr);
    }
    state.ResumeTiming();
    benchmark::DoNotOptimize(document->validateDataWithRecovery(true));
    state.PauseTiming();
    document.reset();
    state.ResumeTiming();
  }
  perItem(state);
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(CountOfAllItems, outline, Shape::outline)->Apply(sizes);
BENCHMARK_CAPTURE(CountOfAllItems, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(CountOfAllItems, chain, Shape::chain)->Apply(sizes);
BENCHMARK_CAPTURE(MetadataString, outline, Shape::outline)->Apply(sizes);
BENCHMARK_CAPTURE(MetadataString, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(MetadataString, chain, Shape::chain)->Apply(sizes);
BENCHMARK_CAPTURE(Validate, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(Validate, chain, Shape::chain)->Apply(sizes);
BENCHMARK_CAPTURE(ConvertItems, outline, Shape::outline)->Apply(sizes);
BENCHMARK_CAPTURE(ConvertItems, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(ConvertItems, chain, Shape::chain)->Apply(sizes);
BENCHMARK_CAPTURE(ConvertListedItems, outline, Shape::outline)->Apply(sizes);
BENCHMARK_CAPTURE(ConvertListedItems, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(ConvertListedItems, chain, Shape::chain)->Apply(sizes);
BENCHMARK_CAPTURE(Recover, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(Recover, chain, Shape::chain)->Apply(sizes);

}  // namespace
}  // namespace tavlin

BENCHMARK_MAIN();
