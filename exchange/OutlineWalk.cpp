#include "exchange/OutlineWalk.h"

#include "exchange/ItemPath.h"

namespace tavlin {

OutlineWalk OutlineWalk::below(const std::shared_ptr<OLNode>& node) {
  OutlineWalk walk;
  if (const auto path = ItemPath::ofItem(node)) walk.prefix_ = path->text() + ".";
  walk.places_.push_back({node, 0});
  if (node) walk.item_ = node->childAtIndex(0);
  return walk;
}

OutlineWalk OutlineWalk::from(const std::shared_ptr<OLNode>& item) {
  OutlineWalk walk;
  if (const auto path = ItemPath::ofItem(item)) walk.prefix_ = path->text();
  walk.places_.push_back({nullptr, 0});
  walk.item_ = item;
  return walk;
}

std::string OutlineWalk::path() const {
  std::string path = prefix_;
  const bool isSingle = !places_.front().parent;
  for (size_t i = isSingle ? 1 : 0; i < places_.size(); ++i) {
    if (!path.empty() && path.back() != '.') path += '.';
    path += std::to_string(places_[i].index + 1);
  }
  return path;
}

void OutlineWalk::next(bool entersChildren) {
  if (entersChildren) {
    if (std::shared_ptr<OLNode> child = item_->childAtIndex(0)) {
      places_.push_back({std::move(item_), 0});
      item_ = std::move(child);
      return;
    }
  }
  while (true) {
    Place& place = places_.back();
    item_ = place.parent ? place.parent->childAtIndex(++place.index) : nullptr;
    if (item_ || places_.size() == 1) return;
    places_.pop_back();
  }
}

}  // namespace tavlin
