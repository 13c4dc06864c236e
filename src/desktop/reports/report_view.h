// What the views of the reports share that are a tab of a portfolio and a page of a workspace
// alike.
#pragma once

#include <QStringList>
#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/reports/report_view_controller.h"

class QComboBox;
class QHBoxLayout;
class QLabel;
class QProgressBar;

namespace corvane::desktop {

class FiguresRow;
class ReportHeading;
class ReportPage;
class ReportWarningBar;

/// A heading with a currency to choose, the bar for what is missing, and below them a page that
/// scrolls and begins with the figures.
class ReportView : public QWidget {
  Q_OBJECT

 public:
  ~ReportView() override;

 protected:
  /// `work` is what the bar for work under way is called.
  ReportView(std::shared_ptr<ReportViewController> report, const QString& work, QWidget* parent);

  /// What can be chosen in the heading, the currency last.
  [[nodiscard]] QHBoxLayout& heading();
  [[nodiscard]] ReportPage& page() { return *page_; }
  [[nodiscard]] ReportWarningBar& warning() { return *warning_; }
  /// Adds the place for the notes to the page.
  void addNotes();
  /// Puts what the user chooses between in front of the currency.
  void addChoice(QWidget* choice);
  /// Has a table's figures, and others, explained.
  void explain(const TrailMaker& trail) { report_->explainHandler(trail); }

  /// Shows what has changed; an override shows its own parts as well. To be called once by the
  /// constructor of the view.
  virtual void showState();

 private:
  void addHeading();
  void showCurrencies();

  std::shared_ptr<ReportViewController> report_;
  QComboBox* currency_;
  QStringList shownCurrencies_;
  QProgressBar* busy_;
  ReportHeading* heading_;
  ReportWarningBar* warning_;
  ReportPage* page_;
  FiguresRow* figures_;
  QLabel* notes_ = nullptr;
  Subscription changes_;
};

}  // namespace corvane::desktop
