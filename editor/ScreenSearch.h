#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "exchange/OutlineSearch.h"
#include "model/OLTree.h"

namespace tavlin {

/// The search for the next item whose title or note has a text, in all of an outline, a slice at a
/// time, so that a key is answered meanwhile.
class ScreenSearch {
 public:
  enum class Direction { forward, backward };
  enum class State { idle, running, found, failed };

  /// Begins a search.  Case does not matter.  `from` itself is looked at last, or first where
  /// `isFromIncluded`; none begins at the beginning.
  void start(const std::shared_ptr<OLTree>& tree, const std::string& utf8, Direction direction,
             const std::shared_ptr<OLNode>& from, bool isFromIncluded);
  void stop() { state_ = State::idle; }

  [[nodiscard]] State state() const { return state_; }
  /// Looks at items until the time is over or the search has come to its end.
  void work(std::chrono::microseconds time);
  [[nodiscard]] const std::shared_ptr<OLNode>& found() const { return item_; }
  /// Whether it has gone over the end of the outline to what was found.
  [[nodiscard]] bool hasWrapped() const { return hasWrapped_; }

 private:
  [[nodiscard]] std::shared_ptr<OLNode> step();
  [[nodiscard]] bool matches(const std::shared_ptr<OLNode>& item) const;

  std::shared_ptr<OLTree> tree_;
  std::string text_;
  std::unique_ptr<TextPattern> pattern_;
  Direction direction_ = Direction::forward;
  std::shared_ptr<OLNode> from_;
  std::shared_ptr<OLNode> item_;
  bool hasWrapped_ = false;
  State state_ = State::idle;
};

}  // namespace tavlin
