#include "platform/foundation/UndoGroup.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ns {

void moveActions(UndoActions& to, UndoActions& from) {
  if (to.empty()) {
    to.swap(from);
  } else {
    std::move(from.begin(), from.end(), std::back_inserter(to));
    from.clear();
  }
}

void takeActions(const UndoActionsOnTarget& meant, UndoActions& list, UndoActions& taken) {
  for (auto& action : list)
    if (meant.include(*action)) taken.push_back(std::move(action));
  std::erase(list, nullptr);
}

std::vector<const UndoAction*> UndoGroup::lastFirst() const {
  std::vector<const UndoAction*> result;
  for (auto action = actions.rbegin(); action != actions.rend(); ++action)
    result.push_back(action->get());
  return result;
}

void OpenUndoGroup::open(bool byEvent) {
  level_ = 1;
  isOpenedByEvent_ = byEvent;
}

void OpenUndoGroup::add(std::unique_ptr<UndoAction> action) {
  steps_.push_back({Step::Kind::action, std::move(action)});
}

void OpenUndoGroup::openInner() {
  steps_.push_back({Step::Kind::begin, nullptr});
  ++level_;
}

void OpenUndoGroup::closeInner() {
  --level_;
  if (steps_.back().kind == Step::Kind::begin) {
    steps_.pop_back();
  } else {
    steps_.push_back({Step::Kind::end, nullptr});
  }
}

UndoGroup OpenUndoGroup::close() {
  UndoGroup group{std::exchange(name_, String()), {}};
  for (Step& step : steps_)
    if (step.action) group.actions.push_back(std::move(step.action));
  steps_.clear();
  level_ = 0;
  isOpenedByEvent_ = false;
  return group;
}

void OpenUndoGroup::addInner(UndoActions actions) {
  steps_.push_back({Step::Kind::begin, nullptr});
  for (auto& action : actions) add(std::move(action));
  steps_.push_back({Step::Kind::end, nullptr});
}

UndoActions OpenUndoGroup::takeInner() {
  UndoActions actions;
  size_t depth = 0;
  do {
    Step step = std::move(steps_.back());
    steps_.pop_back();
    if (step.kind == Step::Kind::end) ++depth;
    if (step.kind == Step::Kind::begin) --depth;
    if (step.action) actions.push_back(std::move(step.action));
  } while (depth > 0);
  std::reverse(actions.begin(), actions.end());
  return actions;
}

void OpenUndoGroup::takeAll(UndoActions& taken) {
  for (Step& step : steps_)
    if (step.action) taken.push_back(std::move(step.action));
  steps_.clear();
  for (size_t level = 1; level < level_; ++level) steps_.push_back({Step::Kind::begin, nullptr});
  name_ = String();
}

void OpenUndoGroup::take(const UndoActionsOnTarget& meant, UndoActions& taken) {
  std::vector<Step> kept;
  for (Step& step : steps_) {
    if (step.action && meant.include(*step.action)) {
      taken.push_back(std::move(step.action));
    } else if (step.kind == Step::Kind::end && kept.back().kind == Step::Kind::begin) {
      kept.pop_back();  // the group has become empty
    } else {
      kept.push_back(std::move(step));
    }
  }
  steps_ = std::move(kept);
}

std::vector<const UndoAction*> OpenUndoGroup::lastFirst() const {
  std::vector<const UndoAction*> result;
  for (auto step = steps_.rbegin(); step != steps_.rend(); ++step)
    if (step->action) result.push_back(step->action.get());
  return result;
}

void UndoActionDisposal::dispose(UndoActions actions) {
  moveActions(waiting_, actions);
  run();
}

void UndoActionDisposal::dispose(std::unique_ptr<UndoAction> action) {
  if (!action) return;
  waiting_.push_back(std::move(action));
  run();
}

void UndoActionDisposal::run() {
  if (isRunning_) return;
  isRunning_ = true;
  while (!waiting_.empty()) {
    const std::unique_ptr<UndoAction> action = std::move(waiting_.back());
    waiting_.pop_back();
  }
  isRunning_ = false;
}

}  // namespace ns
