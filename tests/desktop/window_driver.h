// What a test does in a window as a user would: finds controls by their names and presses them.
#pragma once

#include <gtest/gtest.h>

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace corvane::testing {

inline QAction* actionIn(const QMenu& menu, const QString& text) {
  for (QAction* action : menu.actions()) {
    if (action->text().remove(QLatin1Char('&')).startsWith(text)) {
      return action;
    }
    if (action->menu() != nullptr) {
      if (QAction* found = actionIn(*action->menu(), text)) {
        return found;
      }
    }
  }
  return nullptr;
}

/// The menu item of `window` whose text starts with `text`; its menu is about to be shown.
inline QAction* menuItem(const QMainWindow& window, const QString& text) {
  for (QAction* top : window.menuBar()->actions()) {
    emit top->menu()->aboutToShow();
    if (QAction* found = actionIn(*top->menu(), text)) {
      return found;
    }
  }
  ADD_FAILURE() << "no menu item " << text.toStdString();
  return nullptr;
}

/// The dialog of this class that is open on `window`; null for none.
template <typename Dialog>
Dialog* openDialog(const QWidget& window) {
  for (Dialog* dialog : window.findChildren<Dialog*>()) {
    if (dialog->isVisible()) {
      return dialog;
    }
  }
  return nullptr;
}

template <typename Widget>
Widget* named(const QWidget& window, const QString& accessibleName) {
  for (Widget* widget : window.findChildren<Widget*>()) {
    if (widget->accessibleName() == accessibleName) {
      return widget;
    }
  }
  ADD_FAILURE() << "nothing is called " << accessibleName.toStdString();
  return nullptr;
}

inline QPushButton* buttonWith(const QWidget& window, const QString& text) {
  for (QPushButton* button : window.findChildren<QPushButton*>()) {
    if (button->text().remove(QLatin1Char('&')) == text) {
      return button;
    }
  }
  ADD_FAILURE() << "no button " << text.toStdString();
  return nullptr;
}

/// Switches a check box or radio button as an assistive technology does, which is without a click.
inline void toggleByAccessibility(QAbstractButton& button) {
  auto* accessible = QAccessible::queryAccessibleInterface(&button);
  ASSERT_NE(accessible, nullptr);
  ASSERT_NE(accessible->actionInterface(), nullptr);
  accessible->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
}

/// Presses `text` on the next alert that runs an event loop of its own.
inline void answerNextAlert(const QString& text) {
  QTimer::singleShot(0, qApp, [text] {
    auto* alert = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(alert, nullptr);
    buttonWith(*alert, text)->click();
  });
}

}  // namespace corvane::testing
