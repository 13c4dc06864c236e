// What a screen reader gets of a window, looked through for controls that it could not name.
#pragma once

#include <QAccessible>
#include <QApplication>
#include <QMetaEnum>
#include <QWidget>
#include <algorithm>
#include <set>
#include <string>

namespace corvane::testing {

/// Whether somebody who hears the program comes to `control` and has to be told what it is.
inline bool needsName(const QAccessibleInterface& control) {
  switch (control.role()) {
    case QAccessible::PushButton:
    case QAccessible::ButtonMenu:
    case QAccessible::ButtonDropDown:
    case QAccessible::CheckBox:
    case QAccessible::RadioButton:
    case QAccessible::ComboBox:
    case QAccessible::EditableText:
    case QAccessible::SpinBox:
    case QAccessible::Slider:
    case QAccessible::List:
    case QAccessible::ListItem:
    case QAccessible::Table:
    case QAccessible::Tree:
    case QAccessible::ColumnHeader:
    case QAccessible::PageTab:
    case QAccessible::MenuItem:
    case QAccessible::Chart:
    case QAccessible::ProgressBar:
    case QAccessible::Dialog:
    case QAccessible::Window:
      return true;
    default:
      // A cell may be empty, and of an empty label nothing is heard; whatever else takes the
      // keyboard may not.
      return control.role() != QAccessible::Cell && control.role() != QAccessible::TreeItem &&
             (control.role() != QAccessible::StaticText ||
              !control.text(QAccessible::Name).isEmpty()) &&
             control.state().focusable;
  }
}

/// What `control` is called. A box with a choice gives its value for a name, and its name only
/// through the label that belongs to it.
inline QString nameOf(const QAccessibleInterface& control) {
  if (control.role() != QAccessible::ComboBox) {
    return control.text(QAccessible::Name);
  }
  for (const auto& [label, relation] : control.relations(QAccessible::Label)) {
    if (const QString name = label->text(QAccessible::Name); !name.isEmpty()) {
      return name;
    }
  }
  return {};
}

inline bool hasLetters(const QString& name) {
  return std::any_of(name.begin(), name.end(), [](QChar c) { return c.isLetterOrNumber(); });
}

/// Gathers the controls of one or more windows that have no name.
class AccessibilityWalk {
 public:
  /// What was found, each as its role, its class and where it is; empty where all is well.
  std::set<std::string> unnamed;
  int controlCount = 0;

  void walk(QWidget& window) {
    walk(QAccessible::queryAccessibleInterface(&window), window.windowTitle(), 0);
  }

  /// All windows that are shown, sheets and menus among them.
  void walkAllWindows() {
    for (QWidget* top : QApplication::topLevelWidgets()) {
      if (top->isVisible()) {
        walk(*top);
      }
    }
  }

 private:
  static constexpr int mostRowsOfTable = 60;

  void walk(QAccessibleInterface* control, const QString& path, int depth) {
    if (control == nullptr || !control->isValid() || control->state().invisible || depth > 40) {
      return;
    }
    const QString name = nameOf(*control);
    const bool isPart = isPartOfNamedField(*control);
    if (needsName(*control) && !isPart) {
      ++controlCount;
      if (!hasLetters(name) && !isSeparator(*control)) {
        unnamed.insert((path + " › " + described(*control)).toStdString());
      }
    }
    const QString here = hasLetters(name) ? path + " › " + name.left(40) : path;
    // The cells of a table are as many as the ledger is long, and all made alike.
    const int count = control->childCount();
    for (int i = 0; i < std::min(count, cap(*control)); ++i) {
      walk(control->child(i), here, depth + 1);
    }
  }

  static int cap(const QAccessibleInterface& control) {
    const bool isLong = control.role() == QAccessible::Table ||
                        control.role() == QAccessible::Tree || control.role() == QAccessible::List;
    return isLong ? mostRowsOfTable : 10'000;
  }

  /// The text inside of a field for numbers or of a menu, which is read as the field.
  static bool isPartOfNamedField(const QAccessibleInterface& control) {
    const QAccessibleInterface* parent = control.parent();
    return parent != nullptr &&
           (parent->role() == QAccessible::SpinBox || parent->role() == QAccessible::ComboBox) &&
           hasLetters(nameOf(*parent));
  }

  static bool isSeparator(const QAccessibleInterface& control) {
    return control.role() == QAccessible::Separator;
  }

  static QString described(const QAccessibleInterface& control) {
    const QObject* object = control.object();
    const char* role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(control.role());
    return QStringLiteral("%1 (%2 %3)")
        .arg(QString::fromLatin1(role != nullptr ? role : "?"),
             object == nullptr ? QStringLiteral("no object")
                               : QString::fromLatin1(object->metaObject()->className()),
             object == nullptr ? QString() : object->objectName());
  }
};

}  // namespace corvane::testing
