// The sheet for one transaction.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <vector>

#include "presentation/transactions/edit_transaction_view_controller.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace corvane::desktop {

class DateEntryView;
class EntryButtons;
class EntryRow;
class EquityComboBoxView;
class NumberEntryView;
class PreviewPanel;

/// Shows an EditTransactionViewController, which decides everything. Return records the entry,
/// Shift+Return records it and goes on with the next one, Escape cancels.
class EditTransactionDialog : public QDialog {
  Q_OBJECT

 public:
  /// Says whether the entry was taken; where it was not, the user has been told why.
  using Place = std::function<bool(const EditTransactionViewController::Placement&)>;

  /// Opens `form`, which is ready to be loaded, on `parent`, and returns. Null where there is none.
  static EditTransactionDialog* open(QWidget* parent,
                                     std::unique_ptr<EditTransactionViewController> form,
                                     Place place);
  ~EditTransactionDialog() override;

  [[nodiscard]] EditTransactionViewController& form() { return *form_; }
  /// Closing the window by other means is a click on Cancel.
  void reject() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  EditTransactionDialog(QWidget* parent, std::unique_ptr<EditTransactionViewController> form,
                        Place place);
  void finish(const std::optional<EditTransactionViewController::Placement>& placement);
  void layOut();
  void addModeMenu(QGridLayout& grid);
  void addFields(QGridLayout& grid);
  QLabel* addSection(QGridLayout& grid);
  NumberEntryView* addNumber(QGridLayout& grid, NumberEntry& entry);
  QWidget* makeNote();
  void connectButtons();
  void press(EditTransactionViewController::Sender sender);
  void showState();
  void showMenus();
  void startWithFirstField();

  std::unique_ptr<EditTransactionViewController> form_;
  Place place_;
  QLabel* heading_;
  QPushButton* mode_;
  std::vector<QAction*> modeActions_;
  DateEntryView* transactionDate_ = nullptr;
  DateEntryView* settlementDate_ = nullptr;
  QLabel* detailSection_ = nullptr;
  EquityComboBoxView* equitySearch_;
  QComboBox* heldEquity_;
  QComboBox* currency_;
  QLabel* equivalentSection_ = nullptr;
  std::vector<NumberEntryView*> numbers_;
  std::vector<std::unique_ptr<EntryRow>> rows_;
  EntryRow* transactionDateRow_ = nullptr;
  EntryRow* settlementDateRow_ = nullptr;
  EntryRow* equitySearchRow_ = nullptr;
  EntryRow* heldEquityRow_ = nullptr;
  EntryRow* currencyRow_ = nullptr;
  QToolButton* noteToggle_;
  QPlainTextEdit* note_;
  PreviewPanel* preview_;
  QPushButton* round_;
  QPushButton* insertAnother_;
  EntryButtons* buttons_;
  PopUpButton<EquityPointer> shownEquities_;
  PopUpButton<Currency> shownCurrencies_;
  bool isShowing_ = false;
};

}  // namespace corvane::desktop
