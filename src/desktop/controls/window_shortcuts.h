// Keys that a field would take from the window that it is in.
#pragma once

#include <QObject>

class QWidget;

namespace corvane::desktop {

/// Leaves the commands of the window to the window while a field for text has the keyboard.
///
/// Under X11 such a field edits with keys that are commands elsewhere, Control and E among them,
/// which goes to the end of the line. It keeps those for the clipboard and for selecting all, and
/// those for undo and redo while it has something to take back.
class WindowShortcuts : public QObject {
 public:
  /// For `field`, a line edit or a spin box, to which this belongs from then on.
  explicit WindowShortcuts(QWidget& field);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace corvane::desktop
