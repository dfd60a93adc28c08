#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/foundation/Exception.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/String.h"
#include "platform/foundation/UndoAction.h"
#include "platform/foundation/UndoGroup.h"

namespace ns {

/// A call that an undo manager cannot obey in its present state.  The reason begins with the
/// operation's name.
class UndoException : public Exception {
 public:
  using Exception::Exception;
};

/// Records how to take edits back, in groups, and takes them back and forth.
///
///     undoManager->prepareWithInvocationTarget(list).call(&List::insertItem, item, index);
///     list->removeItem(index);                    // the edit that the call above would revert
///     undoManager->setActionName("Delete");
///     undoManager->undo();                        // calls list->insertItem(item, index)
///     undoManager->redo();                        // calls what insertItem registered
///
/// A manager is in one of four states:
///
///   idle       no group is open
///   recording  a group is open; what is registered is added to it
///   undoing    undo() or undoNestedGroup() performs a group; what is registered becomes the
///              redo action for it
///   redoing    redo() performs a group; what is registered becomes an undo action again
///
/// Groups.  undo() and redo() act on whole groups.  A group may hold other groups; only the
/// outermost one counts once it is closed.  With groupsByEvent (as at first) the outermost group
/// opens by itself, at the first registration, beginUndoGrouping() or setActionName() of an
/// event, and ends with endEvent(), which the program calls when it has handled the event, or
/// with undo().  Without groupsByEvent the caller begins and ends every group.  A group in which
/// nothing was registered leaves no trace when it is closed.
///
/// Registering.  Arguments are kept, targets are not: an action whose target is gone is skipped.
/// The actions of a group are performed last-registered first.  Registering while idle or
/// recording discards everything that could have been redone.
///
/// Errors.  An action that throws is taken to have changed nothing: what it registered before is
/// forgotten.  It stays recorded, together with the actions that would have followed it; what
/// the earlier ones of its group registered becomes a group that reverts just them; the
/// exception goes on to the caller of undo() or redo().  So the document can go back to where it
/// was, or the operation be tried again, or the actions be removed.
///
/// Notifications (below) are posted to the default centre with the manager as object.  Observers
/// may use the manager; what they register while it is undoing or redoing is part of the group
/// that it records then.
///
/// The manager is owned by a shared pointer, and stays alive until an operation that is running
/// returns.  Recording and performing an action takes constant time; nothing here recurses over
/// groups or actions, destruction included.
class UndoManager : public Object {
 public:
  enum class State : uint8_t { idle, recording, undoing, redoing };

  template <class T>
  class Invocation;

  UndoManager() = default;
  ~UndoManager() override;

  // Registering

  /// Answers what records the next call on `target` as an undo action:
  ///
  ///     undoManager->prepareWithInvocationTarget(this, "move").call(&View::move, point);
  ///
  /// `label` names the action for description() and UndoAction::label(); a string literal.
  /// Raises InvalidArgumentException for no target, and for one that no shared pointer owns.
  /// For a target that is being destroyed nothing is recorded.
  template <class T>
  [[nodiscard]] Invocation<T> prepareWithInvocationTarget(T* target, const char* label = "");
  template <class T>
  [[nodiscard]] Invocation<T> prepareWithInvocationTarget(const std::shared_ptr<T>& target,
                                                          const char* label = "");

  /// Records the call of a member function with one argument.  As above otherwise.
  template <class T, class C, class R, class Parameter, class Argument>
  void registerUndoWithTarget(T* target, R (C::*method)(Parameter), Argument&& object,
                              const char* label = "");
  template <class T, class C, class R, class Parameter, class Argument>
  void registerUndoWithTarget(const std::shared_ptr<T>& target, R (C::*method)(Parameter),
                              Argument&& object, const char* label = "");

  /// Until the matching enableUndoRegistration() registering does nothing: no action is added,
  /// no group opened, no redo discarded, no name set.  Calls nest.
  void disableUndoRegistration() { ++disabled_; }
  /// Raises UndoException when registration is not disabled.
  void enableUndoRegistration();
  [[nodiscard]] bool isUndoRegistrationEnabled() const { return disabled_ == 0; }

  /// Forgets all that can be undone and redone, what the open groups hold included, and enables
  /// registration however often it was disabled.  Open groups stay open.
  void removeAllActions();
  /// Forgets every action on one target.  The target may be in destruction.  Linear in the
  /// number of recorded actions.
  void removeAllActionsWithTarget(const Object* target);
  /// How many actions were registered since the manager was made.
  [[nodiscard]] uint64_t countRegistered() const { return registered_; }
  /// Forgets the actions on one target that were registered since countRegistered() answered
  /// `count`: for an edit that failed after it had recorded how to take it back.  What their
  /// registration discarded does not come back.  Linear as above.
  void removeActionsWithTargetSince(const Object* target, uint64_t count);

  // Groups

  /// Opens a group inside the open one, or an outermost one.
  void beginUndoGrouping();
  /// Closes the group that beginUndoGrouping() opened last.  Raises UndoException when there is
  /// none; a group opened by groupsByEvent is no such group.
  void endUndoGrouping();
  /// Closes the group that groupsByEvent opened, if there is one.  Raises UndoException when a
  /// group inside it is still open, and while undoing or redoing.
  void endEvent();
  /// The number of open groups, the one that undo or redo records included.
  [[nodiscard]] size_t groupingLevel() const;
  /// Taking groupsByEvent away leaves a group that it has opened open.
  void setGroupsByEvent(bool groupsByEvent) { groupsByEvent_ = groupsByEvent; }
  [[nodiscard]] bool groupsByEvent() const { return groupsByEvent_; }

  /// How many outermost groups can be undone at most; 0 (as at first) for no limit.  The oldest
  /// ones beyond the limit are forgotten, at once and whenever a group is closed.
  void setLevelsOfUndo(size_t levels);
  [[nodiscard]] size_t levelsOfUndo() const { return levels_; }

  // Undo and redo

  /// Closes the outermost group if it is the only one that is open, then takes back the last
  /// group; does nothing when there is none.  Raises UndoException when more groups are open,
  /// and while undoing or redoing.
  void undo();
  /// Takes back the last group that was closed inside the innermost open group; with no group
  /// open (one of groupsByEvent that holds nothing yet is closed first) the same as undo().
  /// Raises UndoException when the open group does not end with a closed one, and while undoing
  /// or redoing.
  void undoNestedGroup();
  /// Performs again what was undone last; does nothing when there is nothing.  Inside an open
  /// group (one of groupsByEvent that holds nothing yet is closed first) it becomes a group of
  /// the open one.  Raises UndoException while undoing or redoing.
  void redo();
  /// Whether undo() has something to perform; the open group counts.
  [[nodiscard]] bool canUndo() const { return open_.holdsActions() || !undo_.empty(); }
  /// Whether redo() has something to perform.  Posts the checkpoint notification first, so that
  /// an observer can register an edit that it has kept back.
  [[nodiscard]] bool canRedo();
  [[nodiscard]] State state() const;
  [[nodiscard]] bool isUndoing() const { return performing_ == State::undoing; }
  [[nodiscard]] bool isRedoing() const { return performing_ == State::redoing; }

  // Names

  /// Names the open outermost group; with none open, opens the event's group, or without
  /// groupsByEvent names the last group.  While undoing or redoing names the group that is being
  /// recorded, which otherwise has the name of the one that is being performed.
  void setActionName(const String& name);
  /// The name of the group that undo() would take back; empty for none and for no name.  While
  /// undoing it is that of the group being performed, while redoing of the one being recorded.
  [[nodiscard]] String undoActionName() const;
  /// The same for redo(): while redoing the name of the group being performed, while undoing of
  /// the one being recorded.
  [[nodiscard]] String redoActionName() const;
  /// "Undo" and the name; a program that speaks other languages overrides both.
  [[nodiscard]] virtual String undoMenuTitleForUndoActionName(const String& name) const;
  [[nodiscard]] virtual String redoMenuTitleForUndoActionName(const String& name) const;
  [[nodiscard]] String undoMenuItemTitle() const;
  [[nodiscard]] String redoMenuItemTitle() const;

  // Inspection

  /// The actions that undo() or redo() would perform now, in that order; valid until the manager
  /// is used.
  [[nodiscard]] std::vector<const UndoAction*> actionsToUndo() const;
  [[nodiscard]] std::vector<const UndoAction*> actionsToRedo() const;
  /// Both stacks as one line, groups in the order of their edits with a bar where the document
  /// is now, actions by label in the order in which they were registered:
  /// `"Type" [insert] "Move" [move move] | "Sort" [sort]`.  What the open group holds stands
  /// last before the bar.  Actions without label show as "?".
  [[nodiscard]] std::string description() const;

 private:
  [[nodiscard]] bool isPerforming() const { return performing_ != State::idle; }
  [[nodiscard]] bool isEmptyEventGroupOpen() const {
    return open_.level() == 1 && open_.isOpenedByEvent() && !open_.holdsActions();
  }
  [[nodiscard]] std::shared_ptr<Object> keepAlive() { return weak_from_this().lock(); }
  /// The weak pointer to an object that may be a target; raises as documented above.
  static std::weak_ptr<Object> weakTarget(Object* target, const char* operation);
  void record(std::unique_ptr<UndoAction> action);
  void remove(const UndoActionsOnTarget& meant);

  void refuseWhilePerforming(const char* operation) const;
  void requireBegunGroup() const;
  void openOutermostGroup(bool byEvent);
  /// The manager is in state `next` from when the group is closed.
  void closeOutermostGroup(State next = State::idle);

  void perform(State direction, bool closesOpenGroup);
  void takeGroupToPerform();
  void performNext();
  void finish();

  void push(std::deque<UndoGroup>& stack, UndoGroup group);
  void trim(std::deque<UndoGroup>& stack);
  void clear(std::deque<UndoGroup>& stack);
  void post(std::string_view name);

  // Closed groups, the next one to be performed last.
  std::deque<UndoGroup> undo_;
  std::deque<UndoGroup> redo_;
  OpenUndoGroup open_;

  // Undo and redo in progress.
  State performing_ = State::idle;
  bool runningIsInner_ = false;          // taken out of the open group
  UndoGroup running_;                    // what is still to be performed
  std::unique_ptr<UndoAction> current_;  // being performed
  bool currentIsRemoved_ = false;
  UndoActions fresh_;      // registered by the current action
  UndoGroup inverse_;      // registered by the ones before it
  size_t innerLevel_ = 0;  // groups that actions have opened

  UndoActionDisposal disposal_;
  uint64_t registered_ = 0;
  size_t levels_ = 0;
  size_t disabled_ = 0;
  bool groupsByEvent_ = true;
};

/// Posted before a group is opened inside another one or closed, before undo and redo, and by
/// canRedo(): the moment to register edits that were kept back.  Not posted while undoing or
/// redoing.
inline constexpr std::string_view kUndoManagerCheckpointNotification =
    "NSUndoManagerCheckpointNotification";
/// Posted after a group was opened, before and after one is closed.  What is registered before
/// belongs to the group.  Where undo() or redo() closes it, the manager is undoing or redoing
/// afterwards.
inline constexpr std::string_view kUndoManagerDidOpenUndoGroupNotification =
    "NSUndoManagerDidOpenUndoGroupNotification";
inline constexpr std::string_view kUndoManagerWillCloseUndoGroupNotification =
    "NSUndoManagerWillCloseUndoGroupNotification";
inline constexpr std::string_view kUndoManagerDidCloseUndoGroupNotification =
    "NSUndoManagerDidCloseUndoGroupNotification";
/// Posted before the first and after the last action of a group is performed; the second of a
/// pair also when an action threw.  The manager is undoing or redoing at the first and no longer
/// at the second.
inline constexpr std::string_view kUndoManagerWillUndoChangeNotification =
    "NSUndoManagerWillUndoChangeNotification";
inline constexpr std::string_view kUndoManagerDidUndoChangeNotification =
    "NSUndoManagerDidUndoChangeNotification";
inline constexpr std::string_view kUndoManagerWillRedoChangeNotification =
    "NSUndoManagerWillRedoChangeNotification";
inline constexpr std::string_view kUndoManagerDidRedoChangeNotification =
    "NSUndoManagerDidRedoChangeNotification";

/// Records one call on a target; see UndoManager::prepareWithInvocationTarget().
template <class T>
class UndoManager::Invocation {
 public:
  /// Records the call of a member function of the target.  Every argument is converted to the
  /// function's parameter type now and kept; the function gets references to, or copies of,
  /// what was kept.  Name an overloaded function with a cast.  Raises UndoException when no
  /// group is open and groupsByEvent is off.
  template <class C, class R, class... Parameters, class... Arguments>
  void call(R (C::*method)(Parameters...), Arguments&&... arguments) const {
    static_assert(std::is_base_of_v<C, T>, "the target has no such member function");
    static_assert(sizeof...(Parameters) == sizeof...(Arguments), "wrong number of arguments");
    record<std::decay_t<Parameters>...>(method, std::forward<Arguments>(arguments)...);
  }

  /// Records the call of anything else that can be called with the target (as T&) and the
  /// arguments, which are kept as copies: a lambda expression, for an edit that is no single
  /// member function.  What a lambda expression captures is kept as it is captured.
  template <class Function, class... Arguments>
  requires(!std::is_member_pointer_v<std::decay_t<Function>>) void call(
      Function&& function, Arguments&&... arguments) const {
    record<std::decay_t<Arguments>...>(std::forward<Function>(function),
                                       std::forward<Arguments>(arguments)...);
  }

 private:
  friend class UndoManager;
  Invocation(UndoManager& manager, T* target, std::weak_ptr<Object> weak, const char* label)
      : manager_(manager), target_(target), weak_(std::move(weak)), label_(label) {}

  template <class... Kept, class Function, class... Arguments>
  void record(Function&& function, Arguments&&... arguments) const {
    using Call = RecordedCall<T, std::decay_t<Function>, Kept...>;
    static_assert((!std::is_pointer_v<Kept> && ...),
                  "arguments are kept: pass a shared pointer or a value");
    static_assert(std::is_invocable_v<std::decay_t<Function>&, T&, Kept&...>,
                  "the function cannot be called with what is kept of the arguments");
    if (!manager_.isUndoRegistrationEnabled() || weak_.expired()) return;
    manager_.record(std::make_unique<Call>(weak_, target_, label_, std::forward<Function>(function),
                                           std::forward<Arguments>(arguments)...));
  }

  UndoManager& manager_;
  T* target_;
  std::weak_ptr<Object> weak_;
  const char* label_;
};

template <class T>
UndoManager::Invocation<T> UndoManager::prepareWithInvocationTarget(T* target, const char* label) {
  return {*this, target, weakTarget(target, "prepareWithInvocationTarget"), label};
}

template <class T>
UndoManager::Invocation<T> UndoManager::prepareWithInvocationTarget(
    const std::shared_ptr<T>& target, const char* label) {
  return prepareWithInvocationTarget(target.get(), label);
}

template <class T, class C, class R, class Parameter, class Argument>
void UndoManager::registerUndoWithTarget(T* target, R (C::*method)(Parameter), Argument&& object,
                                         const char* label) {
  Invocation<T>(*this, target, weakTarget(target, "registerUndoWithTarget"), label)
      .call(method, std::forward<Argument>(object));
}

template <class T, class C, class R, class Parameter, class Argument>
void UndoManager::registerUndoWithTarget(const std::shared_ptr<T>& target,
                                         R (C::*method)(Parameter), Argument&& object,
                                         const char* label) {
  registerUndoWithTarget(target.get(), method, std::forward<Argument>(object), label);
}

}  // namespace ns
