// The sheet that changes several transactions at once.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <memory>

#include "presentation/transactions/edit_bulk_transactions_view_controller.h"

class QCheckBox;
class QGridLayout;
class QLabel;
class QLineEdit;

namespace corvane::desktop {

class DateEntryView;
class EntryButtons;
class EquityComboBoxView;

/// Shows an EditBulkTransactionsViewController, which decides everything.
class EditBulkTransactionsDialog : public QDialog {
  Q_OBJECT

 public:
  /// Says whether the revision was taken; where it was not, the user has been told why.
  using Revise = std::function<bool(const BulkRevision&)>;

  /// Opens `form`, which is ready to be loaded, on `parent`, and returns. Null where there is none
  /// or nothing to change.
  static EditBulkTransactionsDialog* open(QWidget* parent,
                                          std::unique_ptr<EditBulkTransactionsViewController> form,
                                          Revise revise);
  ~EditBulkTransactionsDialog() override;

  [[nodiscard]] EditBulkTransactionsViewController& form() { return *form_; }
  /// Closing the window by other means is a click on Cancel.
  void reject() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  using Form = EditBulkTransactionsViewController;
  struct DateRow {
    DateEntryView* picker = nullptr;
    QLabel* multipleValues = nullptr;
  };

  EditBulkTransactionsDialog(QWidget* parent, std::unique_ptr<Form> form, Revise revise);
  void layOut();
  void addDate(QGridLayout& grid, std::size_t index);
  void addBox(QGridLayout& grid, std::size_t index, QWidget* field);
  void showState();

  std::unique_ptr<Form> form_;
  Revise revise_;
  QLabel* summary_;
  std::array<QCheckBox*, 4> boxes_{};
  std::array<DateRow, 2> dates_{};
  EquityComboBoxView* equity_;
  QLineEdit* note_;
  QLabel* words_;
  EntryButtons* buttons_;
  bool isShowing_ = false;
};

}  // namespace corvane::desktop
