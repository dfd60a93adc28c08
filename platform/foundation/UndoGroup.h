#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/String.h"
#include "platform/foundation/UndoAction.h"

namespace ns {

// The parts that an undo manager is made of; nothing else needs them.

/// Actions in the order in which they were registered.
using UndoActions = std::vector<std::unique_ptr<UndoAction>>;

/// Moves all actions of one list to the end of another.
void moveActions(UndoActions& to, UndoActions& from);
/// Which actions are meant: those on a target that were registered after the one of a number.
struct UndoActionsOnTarget {
  const Object* target;
  uint64_t after = 0;
  [[nodiscard]] bool include(const UndoAction& action) const {
    return action.hasTarget(target) && action.number() > after;
  }
};
/// Takes these out of a list.  Destroys none.
void takeActions(const UndoActionsOnTarget& meant, UndoActions& list, UndoActions& taken);

/// A closed group.
struct UndoGroup {
  String name;
  UndoActions actions;

  /// Actions in the order in which they are to be performed.
  [[nodiscard]] std::vector<const UndoAction*> lastFirst() const;
};

/// The group that is being recorded, with the groups inside it.
class OpenUndoGroup {
 public:
  /// How many groups are open, the outermost one included; 0 for none.
  [[nodiscard]] size_t level() const { return level_; }
  [[nodiscard]] bool isOpenedByEvent() const { return isOpenedByEvent_; }
  [[nodiscard]] bool holdsActions() const { return level_ > 0 && steps_.size() >= level_; }
  /// Whether the last thing in the innermost open group is a group.
  [[nodiscard]] bool endsWithInner() const {
    return !steps_.empty() && steps_.back().kind == Step::Kind::end;
  }
  [[nodiscard]] const String& name() const { return name_; }
  void setName(const String& name) { name_ = name; }

  void open(bool byEvent);
  void add(std::unique_ptr<UndoAction> action);
  void openInner();
  /// Closes the innermost group, which is not the outermost one.
  void closeInner();
  /// Closes the outermost group and answers what it held; the groups inside it are no more.
  UndoGroup close();

  /// Adds a closed group to the innermost open one.
  void addInner(UndoActions actions);
  /// Takes out the group that endsWithInner() tells of.
  UndoActions takeInner();
  /// Takes out everything that was recorded, names included; groups stay open.
  void takeAll(UndoActions& taken);
  void take(const UndoActionsOnTarget& meant, UndoActions& taken);
  [[nodiscard]] std::vector<const UndoAction*> lastFirst() const;

 private:
  /// An action, or where a group inside the outermost one begins or ends.
  struct Step {
    enum class Kind : uint8_t { action, begin, end };
    Kind kind;
    std::unique_ptr<UndoAction> action;
  };

  size_t level_ = 0;
  bool isOpenedByEvent_ = false;
  String name_;
  std::vector<Step> steps_;
};

/// Destroys actions one after the other.
///
/// Destroying an action may release a target that then removes its own actions, and so on;
/// they queue up here instead of nesting.
class UndoActionDisposal {
 public:
  void dispose(UndoActions actions);
  void dispose(std::unique_ptr<UndoAction> action);

 private:
  void run();

  UndoActions waiting_;
  bool isRunning_ = false;
};

}  // namespace ns
