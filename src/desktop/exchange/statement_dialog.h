// The window in which a statement is looked at before its rows are recorded.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <vector>

#include "ledger/transaction/basic_transaction.h"
#include "presentation/portfolio/statement_preview_controller.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QScrollArea;
class QTableView;

namespace corvane::desktop {

class StatementRowsModel;
class StatementRowsFilter;

/// Shows a StatementPreviewController.
class StatementDialog : public QDialog {
  Q_OBJECT

 public:
  /// `imported` is told what has been recorded.
  StatementDialog(std::unique_ptr<StatementPreviewController> preview,
                  std::function<void(const std::vector<BasicTransaction>&)> imported,
                  QWidget* parent);
  ~StatementDialog() override;

 private:
  void layOut();
  /// What the table shows, and how days and numbers are read.
  QHBoxLayout* makeChoices();
  /// Which layout, which account, and where rates are from.
  QHBoxLayout* makeSources();
  void fillFilter();
  void showAccounts();
  void chooseRatesFile();
  void showState();
  void showQuestions();
  void fitQuestions();
  void giveAnswers();
  void importRows();
  std::vector<BasicTransaction> record();

  std::unique_ptr<StatementPreviewController> preview_;
  std::function<void(const std::vector<BasicTransaction>&)> imported_;
  QLabel* summary_;
  QLabel* questionsTitle_;
  QFormLayout* questions_;
  QScrollArea* questionArea_;
  std::vector<QComboBox*> answers_;
  std::vector<StatementPreviewController::Question> shownQuestions_;
  QPushButton* answer_;
  QComboBox* filter_;
  QComboBox* days_;
  QComboBox* decimal_;
  QComboBox* layout_;
  QComboBox* account_;
  QLabel* accountLabel_;
  QCheckBox* marketRates_;
  QPushButton* ratesFile_;
  QTableView* table_;
  StatementRowsModel* rows_;
  StatementRowsFilter* filtered_;
  QPushButton* import_;
};

}  // namespace corvane::desktop
