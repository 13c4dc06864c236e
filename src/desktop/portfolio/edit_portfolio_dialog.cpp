#include "desktop/portfolio/edit_portfolio_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/look/alert_box.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

EditPortfolioDialog* EditPortfolioDialog::open(QWidget* parent,
                                               std::unique_ptr<EditPortfolioViewController> form) {
  if (form == nullptr) {
    return nullptr;
  }
  auto* dialog = new EditPortfolioDialog(parent, std::move(form));
  static_cast<QDialog*>(dialog)->open();
  return dialog;
}

EditPortfolioDialog::EditPortfolioDialog(QWidget* parent,
                                         std::unique_ptr<EditPortfolioViewController> form)
    : QDialog(parent),
      form_(std::move(form)),
      name_(new QLineEdit),
      currency_(new QComboBox),
      trackCashAccounts_(new QCheckBox(QStringLiteral("&Track cash accounts"))),
      allowNegativeBalances_(new QCheckBox(QStringLiteral("&Allow negative balances"))),
      populateRandomly_(new QCheckBox(QStringLiteral("&Populate randomly"))),
      go_(new QPushButton),
      cancel_(new QPushButton) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  form_->completionHandler =
      [this, completion = std::move(form_->completionHandler)](const PortfolioPointer& made) {
        done(made != nullptr ? Accepted : Rejected);
        if (completion) {
          completion(made);
        }
      };
  form_->presentError = [this](const Error& error) { showError(this, error); };
  form_->load();
  layOut();
  showState();
  name_->selectAll();

  connect(name_, &QLineEdit::textChanged, this, [this] {
    readFields();
    form_->updateGoButton();
    go_->setEnabled(form_->goButton.isEnabled);
  });
  connect(go_, &QPushButton::clicked, this, [this] {
    readFields();
    form_->performAction(EditPortfolioViewController::Sender::goButton);
    // The form stays open where the ledger refuses a setting, which is set back.
    showState();
  });
  connect(cancel_, &QPushButton::clicked, this, &EditPortfolioDialog::reject);
}

void EditPortfolioDialog::reject() {
  form_->performAction(EditPortfolioViewController::Sender::cancelButton);
}

void EditPortfolioDialog::layOut() {
  setWindowTitle(qtText(form_->title));
  auto* heading = new QLabel(qtText(form_->title));
  heading->setFont(theme::font(1.3, QFont::DemiBold));

  name_->setAccessibleName(QStringLiteral("Name"));
  name_->setMinimumWidth(320);
  currency_->setAccessibleName(QStringLiteral("Primary currency"));
  for (const std::string& title : form_->currencyPopUpButton.titles()) {
    currency_->addItem(qtText(title));
  }
  currency_->setMaxVisibleItems(16);
  trackCashAccounts_->setToolTip(
      QStringLiteral("Purchases and sales take their cash from and to an account."));
  allowNegativeBalances_->setToolTip(QStringLiteral("Cash and shares may go below zero."));

  auto* fields = new QFormLayout;
  fields->setSpacing(spacing::narrow);
  fields->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  fields->addRow(QStringLiteral("&Name:"), name_);
  fields->addRow(QStringLiteral("&Currency:"), currency_);
  fields->addRow(QString(), trackCashAccounts_);
  fields->addRow(QString(), allowNegativeBalances_);
  fields->addRow(QString(), populateRandomly_);

  go_->setDefault(true);
  // In the order of the forms for transactions.
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->setSpacing(spacing::narrow);
  buttons->addWidget(cancel_);
  buttons->addWidget(go_);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::section, spacing::section, spacing::section, spacing::wide);
  column->setSpacing(spacing::wide);
  column->setSizeConstraint(QLayout::SetFixedSize);
  column->addWidget(heading);
  column->addLayout(fields);
  column->addLayout(buttons);
  setTabOrder(cancel_, go_);
}

void EditPortfolioDialog::readFields() {
  form_->nameField.text = utf8Text(name_->text());
  form_->currencyPopUpButton.selectedIndex = static_cast<std::size_t>(currency_->currentIndex());
  form_->trackCashAccountsButton.isOn = trackCashAccounts_->isChecked();
  form_->allowNegativeBalancesButton.isOn = allowNegativeBalances_->isChecked();
  form_->populateRandomlyButton.isOn = populateRandomly_->isChecked();
}

void EditPortfolioDialog::showState() {
  name_->setText(qtText(form_->nameField.text));
  currency_->setCurrentIndex(
      static_cast<int>(form_->currencyPopUpButton.selectedIndex.value_or(0)));
  currency_->setEnabled(form_->currencyPopUpButton.isEnabled);
  trackCashAccounts_->setChecked(form_->trackCashAccountsButton.isOn);
  allowNegativeBalances_->setChecked(form_->allowNegativeBalancesButton.isOn);
  populateRandomly_->setChecked(form_->populateRandomlyButton.isOn);
  populateRandomly_->setVisible(!form_->populateRandomlyButton.isHidden);
  go_->setText(qtText(form_->goButton.title));
  go_->setEnabled(form_->goButton.isEnabled);
  cancel_->setText(qtText(form_->cancelButton.title));
}

}  // namespace corvane::desktop
