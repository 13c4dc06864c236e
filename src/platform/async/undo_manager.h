// Undo and redo of a document's edits.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/async/subscription.h"

namespace corvane {

/// Two stacks of steps. What an edit registers can be undone; what is registered while a step is
/// being undone becomes its redo, and the other way round, so that an edit which undoes itself by
/// another registered edit can be redone without further ado.
///
/// Every registration outside a group is a step of its own. A new step that is no redo drops all
/// steps that could have been redone. Main queue only.
class UndoManager {
 public:
  enum class Change { registered, undone, redone };
  using Observer = std::function<void(Change)>;

  UndoManager() = default;
  UndoManager(const UndoManager&) = delete;
  UndoManager& operator=(const UndoManager&) = delete;

  /// Lets undo() call `handler(target)`, once. The target is held weakly: when it is gone, its part
  /// of the step does nothing.
  template <typename Target, typename Handler>
  void registerUndo(const std::shared_ptr<Target>& target, Handler handler) {
    add({target,
         [weakTarget = std::weak_ptr<Target>(target), handler = std::move(handler)]() mutable {
           if (const auto living = weakTarget.lock()) {
             handler(*living);
           }
         }});
  }

  /// Undoes the latest step; false where there is none, where a group is open, and inside another
  /// undo or redo, where nothing happens. What a handler throws goes on to the caller; the step is
  /// gone then, and what it had registered for its redo stays.
  bool undo();
  bool redo();

  [[nodiscard]] bool canUndo() const { return !undoSteps_.empty(); }
  [[nodiscard]] bool canRedo() const { return !redoSteps_.empty(); }
  [[nodiscard]] bool isUndoing() const { return mode_ == Mode::undoing; }

  /// Names the open group, or else the step that was registered last. The name stays with the edit
  /// through undo and redo.
  void setActionName(std::string name);
  /// The name of what undo() or redo() would do; empty where it has none.
  [[nodiscard]] std::string undoActionName() const;
  [[nodiscard]] std::string redoActionName() const;

  /// Whatever is registered until the matching end becomes one step, undone in reverse order.
  /// Groups may be nested; the outermost makes the step. An empty group makes none.
  void beginUndoGrouping();
  void endUndoGrouping();

  void removeAllActions();
  /// Takes the registrations of one target out of all steps.
  void removeAllActions(const std::shared_ptr<const void>& target);

  /// Tells of every step that is added, undone or redone, after it has happened.
  [[nodiscard]] Subscription addObserver(Observer observer);

 private:
  enum class Mode { idle, undoing, redoing };
  struct Action {
    std::weak_ptr<const void> target;
    std::move_only_function<void()> perform;
  };
  struct Step {
    std::string name;
    std::vector<Action> actions;
  };

  void add(Action action);
  void push(Step step);
  bool perform(std::vector<Step>& from, Mode mode);
  void tell(Change change);

  std::vector<Step> undoSteps_;
  std::vector<Step> redoSteps_;
  Step group_;
  int groupingLevel_ = 0;
  Mode mode_ = Mode::idle;
  std::vector<std::weak_ptr<const Observer>> observers_;
};

}  // namespace corvane
