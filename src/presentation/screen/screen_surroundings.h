// What the logic of a screen needs of the window around it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/async/undo_manager.h"
#include "platform/error.h"
#include "platform/system/user_defaults.h"
#include "platform/time/date.h"
#include "storage/workspace/document_shell.h"

namespace corvane {

/// Services of a window for its screens. A plain value that each screen keeps a copy of; the
/// functions must not keep the screens alive. All are called on the main queue.
struct ScreenSurroundings {
  /// Shows an error on the window; nothing waits for the user.
  std::function<void(const Error&)> presentError = [](const Error&) {};
  /// Shows a message that asks for nothing.
  std::function<void(const std::string&)> presentMessage = [](const std::string&) {};
  /// Shows an alert that warns of a loss; `pressed` is told the position of the button, at most
  /// once.
  std::function<void(const DocumentAlert&, std::function<void(std::size_t)> pressed)> showAlert =
      [](const DocumentAlert&, const std::function<void(std::size_t)>&) {};
  /// Takes the undo steps of the window's document; null for edits that cannot be undone.
  std::shared_ptr<UndoManager> undoManager = nullptr;
  /// Counts a change of the document that cannot be undone.
  std::function<void()> documentDidChange = [] {};
  std::function<Date()> now = &Date::now;
  UserDefaults* defaults = &UserDefaults::standard();  ///< never null
};

}  // namespace corvane
