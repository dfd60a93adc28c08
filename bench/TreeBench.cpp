// What walks, look-ups and edits of trees cost.  The time for one item stays about the same as the
// tree grows, once the items no longer fit into the processor's caches; for a single edit of a list
// and a search through it, that is the time for each sibling.

#include <benchmark/benchmark.h>

#include <algorithm>

#include "bench/SampleDocuments.h"
#include "platform/foundation/IndexSet.h"

namespace tavlin {
namespace {

// Walks.

void WalkForward(benchmark::State& state, Shape shape) {
  const OLTree& tree = *documentOf(state, shape)->treeController()->tree();
  for (auto _ : state) {
    for (Item item = tree.firstItem(); item; item = tree.nextItemByItem(item)) {
      benchmark::DoNotOptimize(item.get());
    }
  }
  perItem(state);
}

void WalkBackward(benchmark::State& state, Shape shape) {
  const OLTree& tree = *documentOf(state, shape)->treeController()->tree();
  for (auto _ : state) {
    for (Item item = tree.lastItemByItem(nullptr); item; item = tree.prevItemByItem(item)) {
      benchmark::DoNotOptimize(item.get());
    }
  }
  perItem(state);
}

void WalkSiblings(benchmark::State& state) {
  const OLTree& tree = *documentOf(state, Shape::list)->treeController()->tree();
  for (auto _ : state) {
    for (Item item = tree.firstItem(); item; item = tree.nextSiblingByItem(item)) {
      benchmark::DoNotOptimize(item.get());
    }
  }
  perItem(state);
}

void WalkByIndex(benchmark::State& state) {
  const OLTree& tree = *documentOf(state, Shape::list)->treeController()->tree();
  for (auto _ : state) {
    const auto count = static_cast<uint64_t>(tree.numberOfChildrenOfItem(nullptr));
    for (uint64_t i = 0; i < count; ++i) {
      benchmark::DoNotOptimize(tree.childAtIndexOfItem(i, nullptr).get());
    }
  }
  perItem(state);
}

void Levels(benchmark::State& state) {
  const OLTree& tree = *documentOf(state, Shape::chain)->treeController()->tree();
  const Item last = tree.lastItemByItem(nullptr);
  for (auto _ : state) benchmark::DoNotOptimize(tree.levelForItem(last));
  perItem(state);
}

// The places of children in one list.

void IndexOfChildInOrder(benchmark::State& state) {
  const Item root = documentOf(state, Shape::list)->rootItem();
  for (auto _ : state) {
    for (const Item& child : root->children()) {
      benchmark::DoNotOptimize(root->indexOfChild(child.get()));
    }
  }
  perItem(state);
}

void IndexOfChildInReverse(benchmark::State& state) {
  const Item root = documentOf(state, Shape::list)->rootItem();
  const OLNodeList& children = root->children();
  for (auto _ : state) {
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      benchmark::DoNotOptimize(root->indexOfChild(child->get()));
    }
  }
  perItem(state);
}

void IndexOfTheSameChild(benchmark::State& state) {
  const Item root = documentOf(state, Shape::list)->rootItem();
  const OLNode* child = root->children()[root->countChildren() / 2].get();
  for (auto _ : state) {
    for (int64_t i = 0; i < state.range(0); ++i) {
      benchmark::DoNotOptimize(root->indexOfChild(child));
    }
  }
  perItem(state);
}

// The cached index is of no use: each look-up passes over the list.
void IndexOfChildrenFarApart(benchmark::State& state) {
  const Item root = documentOf(state, Shape::list)->rootItem();
  const OLNodeList& children = root->children();
  const OLNode* far[] = {children.back().get(), children[children.size() - 4].get()};
  size_t turn = 0;
  for (auto _ : state) benchmark::DoNotOptimize(root->indexOfChild(far[turn++ % 2]));
  perItem(state);
}

void IndexOfAStranger(benchmark::State& state) {
  const Item root = documentOf(state, Shape::list)->rootItem();
  const Item stranger = OLNode::create();
  for (auto _ : state) benchmark::DoNotOptimize(root->indexOfChild(stranger.get()));
  perItem(state);
}

// One item into a list and out of it again.
enum class Place : uint8_t { front, middle, end };

void InsertAndDelete(benchmark::State& state, Place place) {
  OLTree& tree = *documentOf(state, Shape::list)->treeController()->tree();
  const uint64_t count = tree.rootItem()->countChildren();
  const uint64_t at = place == Place::front ? 0 : place == Place::middle ? count / 2 : count;
  for (auto _ : state) tree.deleteItem(tree.insertChildToItemAtIndex(tree.rootItem(), at));
  perItem(state);
}

// A list made by adding at its end, with what is made and released.
void Append(benchmark::State& state) {
  for (auto _ : state) {
    const auto tree = OLTree::create();
    for (int64_t i = 0; i < state.range(0); ++i) tree->addItem();
  }
  perItem(state);
}

// Operations on many items at once: on 20,000 selected ones, or a fifth of a small document.

size_t countOfSelected(const benchmark::State& state) {
  return std::min<size_t>(20'000, static_cast<size_t>(state.range(0)) / 5);
}

void perSelected(benchmark::State& state, size_t selected) {
  state.counters["per_selected"] = benchmark::Counter(
      static_cast<double>(selected),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// At even distances in a list.
OLNodeList selectionOf(const benchmark::State& state, ns::IndexSet* places = nullptr) {
  const OLNodeList& items = documentOf(state, Shape::list)->rootItem()->children();
  const size_t count = countOfSelected(state);
  OLNodeList selection;
  for (size_t i = 0; i < count; ++i) {
    const size_t at = i * (items.size() / count);
    selection.push_back(items[at]);
    if (places) places->addIndex(at);
  }
  return selection;
}

void DeleteAndInsertSelected(benchmark::State& state) {
  OLTree& tree = *documentOf(state, Shape::list)->treeController()->tree();
  ns::IndexSet places;
  const OLNodeList selection = selectionOf(state, &places);
  for (auto _ : state) {
    tree.deleteItems(selection);
    tree.rootItem()->insertChildrenAtIndexes(selection, places);
  }
  perItem(state);
}

void MoveSelectedToTheEnd(benchmark::State& state) {
  OLTree& tree = *documentOf(state, Shape::list)->treeController()->tree();
  const OLNodeList selection = selectionOf(state);
  for (auto _ : state) {
    const auto rest = static_cast<int64_t>(tree.rootItem()->countChildren() - selection.size());
    tree.insertChildrenToItemAtIndex(selection, tree.rootItem(), rest);
  }
  perItem(state);
}

// Sixth children, into the sibling before and out again.
void IndentAndOutdentSelected(benchmark::State& state) {
  const Document document = makeDocument(static_cast<size_t>(state.range(0)), Shape::outline);
  OLTree& tree = *document->treeController()->tree();
  OLNodeList selection;
  for (Item item = tree.firstItem(); item && selection.size() < countOfSelected(state);
       item = tree.nextItemByItem(item)) {
    const Item parent = item->parent();
    if (parent->countChildren() > 5 && parent->children()[5] == item) selection.push_back(item);
  }
  for (auto _ : state) {
    for (const Item& item : selection) tree.makeItemChild(item);
    for (const Item& item : selection) tree.makeItemParent(item);
  }
  perSelected(state, selection.size());
}

void FindAmongSelected(benchmark::State& state) {
  const Document& document = documentOf(state, Shape::outline);
  OLNodeList selection;
  for (Item item = document->firstItem(); item && selection.size() < countOfSelected(state);
       item = document->nextItemByItem(item)) {
    selection.push_back(item);
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(document->itemsRemoveDescendantsFromItems(selection));
    benchmark::DoNotOptimize(document->itemsInItemItems(document->firstItem(), selection));
  }
  perSelected(state, selection.size());
}

// With everything below it, and released again.
void Duplicate(benchmark::State& state, Shape shape) {
  const OLTree& tree = *documentOf(state, shape)->treeController()->tree();
  for (auto _ : state) {
    benchmark::DoNotOptimize(tree.duplicatePartOfTreeByRootItem(tree.rootItem()).get());
  }
  perItem(state);
}

BENCHMARK_CAPTURE(WalkForward, outline, Shape::outline)->Apply(sizes);
BENCHMARK_CAPTURE(WalkForward, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(WalkForward, chain, Shape::chain)->Apply(sizes);
BENCHMARK_CAPTURE(WalkBackward, outline, Shape::outline)->Apply(sizes);
BENCHMARK_CAPTURE(WalkBackward, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(WalkBackward, chain, Shape::chain)->Apply(sizes);
BENCHMARK(WalkSiblings)->Apply(sizes);
BENCHMARK(WalkByIndex)->Apply(sizes);
BENCHMARK(Levels)->Apply(sizes);
BENCHMARK(IndexOfChildInOrder)->Apply(sizes);
BENCHMARK(IndexOfChildInReverse)->Apply(sizes);
BENCHMARK(IndexOfTheSameChild)->Apply(sizes);
BENCHMARK(IndexOfChildrenFarApart)->Apply(sizes);
BENCHMARK(IndexOfAStranger)->Apply(sizes);
BENCHMARK_CAPTURE(InsertAndDelete, front, Place::front)->Apply(sizes);
BENCHMARK_CAPTURE(InsertAndDelete, middle, Place::middle)->Apply(sizes);
BENCHMARK_CAPTURE(InsertAndDelete, end, Place::end)->Apply(sizes);
BENCHMARK(Append)->Apply(sizes);
BENCHMARK(DeleteAndInsertSelected)->Apply(sizes);
BENCHMARK(MoveSelectedToTheEnd)->Apply(sizes);
BENCHMARK(IndentAndOutdentSelected)->Apply(sizes);
BENCHMARK(FindAmongSelected)->Apply(sizes);
BENCHMARK_CAPTURE(Duplicate, outline, Shape::outline)->Apply(sizes);
BENCHMARK_CAPTURE(Duplicate, list, Shape::list)->Apply(sizes);
BENCHMARK_CAPTURE(Duplicate, chain, Shape::chain)->Apply(sizes);

}  // namespace
}  // namespace tavlin

BENCHMARK_MAIN();
