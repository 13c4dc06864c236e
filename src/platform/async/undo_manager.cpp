#include "platform/async/undo_manager.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <ranges>
#include <utility>

namespace corvane {

bool UndoManager::undo() {
  return perform(undoSteps_, Mode::undoing);
}

bool UndoManager::redo() {
  return perform(redoSteps_, Mode::redoing);
}

bool UndoManager::perform(std::vector<Step>& from, Mode mode) {
  if (mode_ != Mode::idle || groupingLevel_ > 0 || from.empty()) {
    return false;
  }
  Step step = std::move(from.back());
  from.pop_back();

  // What the handlers register is gathered in one group, which carries the step's name over.
  mode_ = mode;
  beginUndoGrouping();
  group_.name = step.name;
  struct End {
    UndoManager& manager;
    ~End() {
      manager.groupingLevel_ = 1;
      manager.endUndoGrouping();
      manager.mode_ = Mode::idle;
    }
  };
  {
    const End end{*this};
    for (Action& action : step.actions | std::views::reverse) {
      action.perform();
    }
  }
  tell(mode == Mode::undoing ? Change::undone : Change::redone);
  return true;
}

void UndoManager::add(Action action) {
  if (groupingLevel_ > 0) {
    group_.actions.push_back(std::move(action));
    return;
  }
  Step step;
  step.actions.push_back(std::move(action));
  push(std::move(step));
}

void UndoManager::push(Step step) {
  auto& steps = mode_ == Mode::undoing ? redoSteps_ : undoSteps_;
  if (mode_ == Mode::idle) {
    redoSteps_.clear();
  }
  steps.push_back(std::move(step));
  if (mode_ == Mode::idle) {
    tell(Change::registered);
  }
}

void UndoManager::setActionName(std::string name) {
  if (groupingLevel_ > 0) {
    group_.name = std::move(name);
  } else if (canUndo()) {
    undoSteps_.back().name = std::move(name);
  }
}

std::string UndoManager::undoActionName() const {
  return canUndo() ? undoSteps_.back().name : "";
}

std::string UndoManager::redoActionName() const {
  return canRedo() ? redoSteps_.back().name : "";
}

void UndoManager::beginUndoGrouping() {
  if (groupingLevel_++ == 0) {
    group_ = {};
  }
}

void UndoManager::endUndoGrouping() {
  assert(groupingLevel_ > 0 && "an undo group is ended that was never begun");
  if (--groupingLevel_ == 0 && !group_.actions.empty()) {
    push(std::exchange(group_, {}));
  }
}

void UndoManager::removeAllActions() {
  undoSteps_.clear();
  redoSteps_.clear();
  group_ = {};
}

void UndoManager::removeAllActions(const std::shared_ptr<const void>& target) {
  const auto isOfTarget = [&](const Action& action) {
    return !action.target.owner_before(target) && !target.owner_before(action.target);
  };
  for (auto* steps : {&undoSteps_, &redoSteps_}) {
    for (Step& step : *steps) {
      std::erase_if(step.actions, isOfTarget);
    }
    std::erase_if(*steps, [](const Step& step) { return step.actions.empty(); });
  }
  std::erase_if(group_.actions, isOfTarget);
}

Subscription UndoManager::addObserver(Observer observer) {
  auto kept = std::make_shared<const Observer>(std::move(observer));
  std::erase_if(observers_, [](const auto& known) { return known.expired(); });
  observers_.push_back(kept);
  return Subscription(std::move(kept));
}

void UndoManager::tell(Change change) {
  // An observer may end itself or begin another while it is told.
  const auto told = observers_;
  for (const auto& weakObserver : told) {
    if (const auto observer = weakObserver.lock()) {
      (*observer)(change);
    }
  }
}

}  // namespace corvane
