#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "document/OLDataManager.h"
#include "model/OLTree.h"

// Documents made in memory, as benchmarks of several programs need them.

namespace tavlin {

using Document = std::shared_ptr<OLDataManager>;
using Item = std::shared_ptr<OLNode>;

/// Each item with up to ten children, all in one list, or each the only child of the one before.
enum class Shape : uint8_t { outline, list, chain };

/// Items in document order with titles of their own, a note at every tenth.
inline Document makeDocument(size_t count, Shape shape) {
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

/// A document of as many items as the benchmark is run with: one for all that ask for it, since
/// what is made in memory that an earlier document was scattered over measures that memory.
inline const Document& documentOf(const benchmark::State& state, Shape shape) {
  static std::map<std::pair<int64_t, Shape>, Document> made;
  Document& document = made[{state.range(0), shape}];
  if (!document) document = makeDocument(static_cast<size_t>(state.range(0)), shape);
  return document;
}

/// Has the time for each of the items reported.
inline void perItem(benchmark::State& state) {
  state.counters["per_item"] =
      benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

inline void sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

}  // namespace tavlin
