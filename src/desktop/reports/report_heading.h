// The line above a report: what it is about, and what can be chosen.
#pragma once

#include <QWidget>

class QBoxLayout;
class QHBoxLayout;
class QLabel;

namespace corvane::desktop {

/// A title with choices at its right, or below it where the title would have to wrap for them.
class ReportHeading : public QWidget {
  Q_OBJECT

 public:
  /// `busy` stands beside the title, and belongs to this from now on.
  explicit ReportHeading(QWidget* busy, QWidget* parent = nullptr);

  void setTitle(const QString& title);
  /// From left to right.
  [[nodiscard]] QHBoxLayout& choices() { return *choices_; }

 protected:
  bool event(QEvent* event) override;

 private:
  void breakLine();

  QLabel* title_;
  QWidget* busy_;
  QHBoxLayout* choices_;
  QBoxLayout* lines_;
};

}  // namespace corvane::desktop
