// Asks in which time zone the days of a workspace stand.
#pragma once

#include <QFrame>
#include <functional>

#include "storage/workspace/workspace_document.h"

class QLabel;
class QPushButton;

namespace corvane::desktop {

/// A bar above the screens, hidden while nobody doubts the days. What the user decides is done in
/// the document.
class TimeZoneBar : public QFrame {
  Q_OBJECT

 public:
  /// `document` outlives this. `chooseZone` lets the user choose where nobody knows the zone in
  /// which the days were written.
  TimeZoneBar(WorkspaceDocument& document, std::function<void()> chooseZone,
              QWidget* parent = nullptr);

  /// To be called with every model that the window gets, and when the user has decided.
  void showDoubt();

  /// Whether the days are doubtful. Then the user is told that no statement is imported before he
  /// has decided.
  [[nodiscard]] bool refusesImport();

 private:
  void useWritten();

  WorkspaceDocument& document_;
  std::function<void()> chooseZone_;
  QLabel* message_;
  QPushButton* use_;
  QPushButton* keep_;
};

}  // namespace corvane::desktop
