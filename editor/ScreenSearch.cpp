#include "editor/ScreenSearch.h"

namespace tavlin {

void ScreenSearch::start(const std::shared_ptr<OLTree>& tree, const std::string& utf8,
                         Direction direction, const std::shared_ptr<OLNode>& from,
                         bool isFromIncluded) {
  tree_ = tree;
  direction_ = direction;
  hasWrapped_ = false;
  state_ = State::failed;
  if (utf8.empty() || !tree_->firstItem()) return;
  if (!pattern_ || text_ != utf8) {
    pattern_ = std::make_unique<TextPattern>(
        utf8, TextPattern::Options{.ignoresCase = true, .isLiteral = true});
    text_ = utf8;
  }
  from_ = from ? from : tree_->firstItem();
  item_ = from_;
  state_ = State::running;
  if ((isFromIncluded || !from) && matches(item_)) state_ = State::found;
}

std::shared_ptr<OLNode> ScreenSearch::step() {
  const bool isForward = direction_ == Direction::forward;
  auto next = isForward ? tree_->nextItemByItem(item_) : tree_->prevItemByItem(item_);
  if (next) return next;
  hasWrapped_ = true;
  return isForward ? tree_->firstItem() : tree_->lastItemByItem(nullptr);
}

bool ScreenSearch::matches(const std::shared_ptr<OLNode>& item) const {
  for (const char* key : {"title", "note"}) {
    const ns::String text = OLTree::stringForKeyByItem(key, item);
    if (text.isAscii() ? pattern_->matches(text.ascii()) : pattern_->matches(text.utf8()))
      return true;
  }
  return false;
}

void ScreenSearch::work(std::chrono::microseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  constexpr int kBetweenLooks = 64;
  while (state_ == State::running) {
    for (int i = 0; i < kBetweenLooks && state_ == State::running; ++i) {
      item_ = step();
      if (matches(item_)) {
        state_ = State::found;
      } else if (item_ == from_) {
        state_ = State::failed;
      }
    }
    if (std::chrono::steady_clock::now() >= end) return;
  }
}

}  // namespace tavlin
