// What stands where there is nothing yet: a sentence, and what to do about it.
#pragma once

#include <QWidget>

class QAction;
class QHBoxLayout;
class QLabel;

namespace corvane::desktop {

/// A message above buttons that lead on.
class FirstSteps : public QWidget {
  Q_OBJECT

 public:
  explicit FirstSteps(QWidget* parent = nullptr);

  void setMessage(const QString& message);
  /// Adds a button called `text` that does what `action` does, and can be pressed while that can
  /// be. The first one is the one to begin with.
  void addStep(QAction* action, const QString& text);
  void setStepsVisible(bool areVisible);

 private:
  QLabel* message_;
  QWidget* steps_;
  QHBoxLayout* row_;
};

}  // namespace corvane::desktop
