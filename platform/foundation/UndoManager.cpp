#include "platform/foundation/UndoManager.h"

#include <utility>

#include "platform/foundation/NotificationCenter.h"

namespace ns {

namespace {

void describe(std::string& out, const String& name, const std::vector<const UndoAction*>& actions) {
  out += out.empty() ? "\"" : " \"";
  name.appendUtf8To(out);
  out += "\" [";
  for (auto action = actions.rbegin(); action != actions.rend(); ++action) {
    if (action != actions.rbegin()) out += ' ';
    out += *(*action)->label() ? (*action)->label() : "?";
  }
  out += ']';
}

String menuTitle(std::string title, const String& name) {
  if (!name.empty()) {
    title += ' ';
    name.appendUtf8To(title);
  }
  return String(std::string_view(title));
}

}  // namespace

UndoManager::~UndoManager() { removeAllActions(); }

// Registering

std::weak_ptr<Object> UndoManager::weakTarget(Object* target, const char* operation) {
  if (!target) throw InvalidArgumentException(std::string(operation) + ": no target");
  std::weak_ptr<Object> weak = target->weak_from_this();
  const std::weak_ptr<Object> never;
  const bool wasNeverOwned = !weak.owner_before(never) && !never.owner_before(weak);
  if (wasNeverOwned) {
    throw InvalidArgumentException(std::string(operation) +
                                   ": the target is not owned by a shared pointer");
  }
  return weak;
}

void UndoManager::record(std::unique_ptr<UndoAction> action) {
  const auto self = keepAlive();
  action->setNumber(++registered_);
  if (isPerforming()) {
    fresh_.push_back(std::move(action));
    return;
  }
  if (open_.level() == 0 && !groupsByEvent_)
    throw UndoException("registering an undo action: no undo group is open");
  clear(redo_);
  const bool opens = open_.level() == 0;
  if (opens) open_.open(true);
  open_.add(std::move(action));
  if (opens) post(kUndoManagerDidOpenUndoGroupNotification);
}

void UndoManager::enableUndoRegistration() {
  if (disabled_ == 0) throw UndoException("enableUndoRegistration: registration is not disabled");
  --disabled_;
}

void UndoManager::removeAllActions() {
  const auto self = keepAlive();
  disabled_ = 0;
  currentIsRemoved_ = true;
  UndoActions removed;
  open_.takeAll(removed);
  for (UndoActions* actions : {&running_.actions, &inverse_.actions, &fresh_})
    moveActions(removed, *actions);
  for (auto* stack : {&undo_, &redo_}) {
    for (UndoGroup& group : *stack) moveActions(removed, group.actions);
    stack->clear();
  }
  disposal_.dispose(std::move(removed));
}

void UndoManager::removeAllActionsWithTarget(const Object* target) { remove({target}); }

void UndoManager::removeActionsWithTargetSince(const Object* target, uint64_t count) {
  if (registered_ > count) remove({target, count});
}

void UndoManager::remove(const UndoActionsOnTarget& meant) {
  const auto self = keepAlive();
  if (current_ && meant.include(*current_)) currentIsRemoved_ = true;
  UndoActions removed;
  open_.take(meant, removed);
  for (UndoActions* actions : {&running_.actions, &inverse_.actions, &fresh_})
    takeActions(meant, *actions, removed);
  for (auto* stack : {&undo_, &redo_}) {
    for (UndoGroup& group : *stack) takeActions(meant, group.actions, removed);
    std::erase_if(*stack, [](const UndoGroup& group) { return group.actions.empty(); });
  }
  disposal_.dispose(std::move(removed));
}

// Groups

void UndoManager::refuseWhilePerforming(const char* operation) const {
  if (isUndoing()) throw UndoException(std::string(operation) + ": called while undoing");
  if (isRedoing()) throw UndoException(std::string(operation) + ": called while redoing");
}

void UndoManager::requireBegunGroup() const {
  const size_t begun =
      isPerforming() ? innerLevel_ : open_.level() - (open_.isOpenedByEvent() ? 1 : 0);
  if (begun == 0) throw UndoException("endUndoGrouping: no undo group was begun");
}

void UndoManager::beginUndoGrouping() {
  const auto self = keepAlive();
  if (isPerforming()) {
    ++innerLevel_;
    post(kUndoManagerDidOpenUndoGroupNotification);
    return;
  }
  if (open_.level() > 0) post(kUndoManagerCheckpointNotification);
  if (open_.level() == 0 && groupsByEvent_) openOutermostGroup(true);
  if (open_.level() == 0) {
    openOutermostGroup(false);
    return;
  }
  open_.openInner();
  post(kUndoManagerDidOpenUndoGroupNotification);
}

void UndoManager::endUndoGrouping() {
  const auto self = keepAlive();
  requireBegunGroup();
  post(kUndoManagerCheckpointNotification);
  requireBegunGroup();
  if (!isPerforming() && open_.level() == 1) {
    closeOutermostGroup();
    return;
  }
  post(kUndoManagerWillCloseUndoGroupNotification);
  requireBegunGroup();
  if (isPerforming()) {
    --innerLevel_;
  } else {
    open_.closeInner();
  }
  post(kUndoManagerDidCloseUndoGroupNotification);
}

void UndoManager::endEvent() {
  const auto self = keepAlive();
  refuseWhilePerforming("endEvent");
  if (!open_.isOpenedByEvent()) return;
  if (open_.level() > 1)
    throw UndoException("endEvent: an undo group that was begun is still open");
  post(kUndoManagerCheckpointNotification);
  if (open_.isOpenedByEvent()) closeOutermostGroup();
}

size_t UndoManager::groupingLevel() const {
  return isPerforming() ? open_.level() + 1 + innerLevel_ : open_.level();
}

void UndoManager::openOutermostGroup(bool byEvent) {
  open_.open(byEvent);
  post(kUndoManagerDidOpenUndoGroupNotification);
}

void UndoManager::closeOutermostGroup(State next) {
  post(kUndoManagerWillCloseUndoGroupNotification);
  if (open_.level() != 1)
    throw UndoException("closing an undo group: an observer has opened or closed another one");
  push(undo_, open_.close());
  performing_ = next;
  post(kUndoManagerDidCloseUndoGroupNotification);
}

void UndoManager::setLevelsOfUndo(size_t levels) {
  const auto self = keepAlive();
  levels_ = levels;
  trim(undo_);
  trim(redo_);
}

// Undo and redo

void UndoManager::undo() {
  const auto self = keepAlive();
  refuseWhilePerforming("undo");
  post(kUndoManagerCheckpointNotification);
  if (open_.level() > 1)
    throw UndoException("undo: " + std::to_string(open_.level()) + " undo groups are open");
  perform(State::undoing, open_.level() == 1);
}

void UndoManager::undoNestedGroup() {
  const auto self = keepAlive();
  refuseWhilePerforming("undoNestedGroup");
  post(kUndoManagerCheckpointNotification);
  const bool closesOpenGroup = isEmptyEventGroupOpen();
  if (open_.level() > 0 && !closesOpenGroup && !open_.endsWithInner()) {
    throw UndoException("undoNestedGroup: the open undo group does not end with a closed one");
  }
  perform(State::undoing, closesOpenGroup);
}

void UndoManager::redo() {
  const auto self = keepAlive();
  refuseWhilePerforming("redo");
  post(kUndoManagerCheckpointNotification);
  perform(State::redoing, isEmptyEventGroupOpen());
}

bool UndoManager::canRedo() {
  const auto self = keepAlive();
  if (!isPerforming()) post(kUndoManagerCheckpointNotification);
  return !redo_.empty();
}

UndoManager::State UndoManager::state() const {
  if (isPerforming()) return performing_;
  return open_.level() > 0 ? State::recording : State::idle;
}

void UndoManager::perform(State direction, bool closesOpenGroup) {
  const bool undoes = direction == State::undoing;
  const std::string_view will =
      undoes ? kUndoManagerWillUndoChangeNotification : kUndoManagerWillRedoChangeNotification;
  const std::string_view did =
      undoes ? kUndoManagerDidUndoChangeNotification : kUndoManagerDidRedoChangeNotification;
  bool isAnnounced = false;
  try {
    // What is registered before the group is closed still belongs to it.
    if (closesOpenGroup) closeOutermostGroup(direction);
    performing_ = direction;
    takeGroupToPerform();
    inverse_.name = running_.name;
    if (!running_.actions.empty()) {
      isAnnounced = true;
      post(will);
    }
    moveActions(inverse_.actions, fresh_);
    while (!running_.actions.empty()) performNext();
  } catch (...) {
    finish();
    if (isAnnounced) post(did);
    throw;
  }
  finish();
  if (isAnnounced) post(did);
}

void UndoManager::takeGroupToPerform() {
  runningIsInner_ = isUndoing() && open_.level() > 0;
  if (runningIsInner_) {
    running_ = UndoGroup{open_.name(), open_.takeInner()};
    return;
  }
  std::deque<UndoGroup>& stack = isUndoing() ? undo_ : redo_;
  if (stack.empty()) return;
  running_ = std::move(stack.back());
  stack.pop_back();
}

void UndoManager::performNext() {
  current_ = std::move(running_.actions.back());
  running_.actions.pop_back();
  currentIsRemoved_ = false;
  try {
    if (const std::shared_ptr<Object> target = current_->target()) current_->perform(*target);
  } catch (...) {
    disposal_.dispose(std::move(fresh_));
    fresh_.clear();
    if (!currentIsRemoved_) running_.actions.push_back(std::move(current_));
    disposal_.dispose(std::move(current_));
    throw;
  }
  moveActions(inverse_.actions, fresh_);
  disposal_.dispose(std::move(current_));
}

void UndoManager::finish() {
  const bool undoes = isUndoing();
  UndoGroup rest = std::exchange(running_, UndoGroup());
  UndoGroup inverse = std::exchange(inverse_, UndoGroup());
  innerLevel_ = 0;
  performing_ = State::idle;
  if (runningIsInner_ && !rest.actions.empty()) {
    open_.addInner(std::move(rest.actions));
  } else {
    push(undoes ? undo_ : redo_, std::move(rest));
  }
  if (!undoes && open_.level() > 0 && !inverse.actions.empty()) {
    open_.addInner(std::move(inverse.actions));
  } else {
    push(undoes ? redo_ : undo_, std::move(inverse));
  }
}

// Names

void UndoManager::setActionName(const String& name) {
  const auto self = keepAlive();
  if (!isUndoRegistrationEnabled()) return;
  if (isPerforming()) {
    inverse_.name = name;
    return;
  }
  if (open_.level() == 0 && groupsByEvent_) openOutermostGroup(true);
  if (open_.level() > 0) {
    open_.setName(name);
  } else if (!undo_.empty()) {
    undo_.back().name = name;
  }
}

String UndoManager::undoActionName() const {
  if (isPerforming()) return isUndoing() ? running_.name : inverse_.name;
  if (open_.holdsActions()) return open_.name();
  return undo_.empty() ? String() : undo_.back().name;
}

String UndoManager::redoActionName() const {
  if (isPerforming()) return isRedoing() ? running_.name : inverse_.name;
  return redo_.empty() ? String() : redo_.back().name;
}

String UndoManager::undoMenuTitleForUndoActionName(const String& name) const {
  return menuTitle("Undo", name);
}

String UndoManager::redoMenuTitleForUndoActionName(const String& name) const {
  return menuTitle("Redo", name);
}

String UndoManager::undoMenuItemTitle() const {
  return undoMenuTitleForUndoActionName(undoActionName());
}

String UndoManager::redoMenuItemTitle() const {
  return redoMenuTitleForUndoActionName(redoActionName());
}

// Inspection

std::vector<const UndoAction*> UndoManager::actionsToUndo() const {
  if (open_.holdsActions()) return open_.lastFirst();
  return undo_.empty() ? std::vector<const UndoAction*>() : undo_.back().lastFirst();
}

std::vector<const UndoAction*> UndoManager::actionsToRedo() const {
  return redo_.empty() ? std::vector<const UndoAction*>() : redo_.back().lastFirst();
}

std::string UndoManager::description() const {
  std::string out;
  for (const UndoGroup& group : undo_) describe(out, group.name, group.lastFirst());
  if (open_.holdsActions()) describe(out, open_.name(), actionsToUndo());
  out += out.empty() ? "|" : " |";
  for (auto group = redo_.rbegin(); group != redo_.rend(); ++group)
    describe(out, group->name, group->lastFirst());
  return out;
}

// Stacks and notifications

void UndoManager::push(std::deque<UndoGroup>& stack, UndoGroup group) {
  if (group.actions.empty()) return;
  stack.push_back(std::move(group));
  trim(stack);
}

void UndoManager::trim(std::deque<UndoGroup>& stack) {
  while (levels_ > 0 && stack.size() > levels_) {
    UndoActions oldest = std::move(stack.front().actions);
    stack.pop_front();
    disposal_.dispose(std::move(oldest));
  }
}

void UndoManager::clear(std::deque<UndoGroup>& stack) {
  if (stack.empty()) return;
  UndoActions removed;
  for (UndoGroup& group : stack) moveActions(removed, group.actions);
  stack.clear();
  disposal_.dispose(std::move(removed));
}

void UndoManager::post(std::string_view name) {
  if (isPerforming() && name == kUndoManagerCheckpointNotification) return;
  NotificationCenter::defaultCenter().post(name, this);
}

}  // namespace ns
