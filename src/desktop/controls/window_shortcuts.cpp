#include "desktop/controls/window_shortcuts.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace corvane::desktop {
namespace {

bool editsText(const QKeyEvent& key, const QLineEdit* line) {
  for (const auto standard :
       {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Paste, QKeySequence::SelectAll}) {
    if (key.matches(standard)) {
      return true;
    }
  }
  return line != nullptr && ((key.matches(QKeySequence::Undo) && line->isUndoAvailable()) ||
                             (key.matches(QKeySequence::Redo) && line->isRedoAvailable()));
}

bool isLetterWithControl(const QKeyEvent& key) {
  return key.modifiers().testFlag(Qt::ControlModifier) && key.key() >= Qt::Key_A &&
         key.key() <= Qt::Key_Z;
}

}  // namespace

WindowShortcuts::WindowShortcuts(QWidget& field) : QObject(&field) {
  field.installEventFilter(this);
}

bool WindowShortcuts::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (isLetterWithControl(key) && !editsText(key, qobject_cast<QLineEdit*>(watched))) {
      event->ignore();
      return true;
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace corvane::desktop
