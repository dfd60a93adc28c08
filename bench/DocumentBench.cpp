// What operations on whole documents cost.  Each grows with the number of items: the time for one
// item stays about the same once the items no longer fit into the processor's caches.

#include <benchmark/benchmark.h>

#include "bench/SampleDocuments.h"

namespace tavlin {
namespace {

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
