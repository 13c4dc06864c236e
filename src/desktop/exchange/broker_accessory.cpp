#include "desktop/exchange/broker_accessory.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QRadioButton>
#include <QWidget>

#include "desktop/look/check_mark.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "exchange/exports/portfolio_exporter_accessory_view_controller.h"
#include "exchange/imports/portfolio_transactions_importer_accessory_view_controller.h"

namespace corvane::desktop {
namespace {

using Controller = PortfolioTransactionsImporterAccessoryViewController;

/// How dates are read, and the currency of rows that name none.
class TransactionsAccessory : public QWidget {
 public:
  explicit TransactionsAccessory(std::shared_ptr<Controller> controller)
      : controller_(std::move(controller)),
        automatic_(new QRadioButton(QStringLiteral("A&utomatic"))),
        custom_(new QRadioButton(QStringLiteral("&Format:"))),
        format_(new QLineEdit),
        currency_(new QComboBox) {
    format_->setAccessibleName(QStringLiteral("Date format"));
    format_->setFont(theme::monospacedFont());
    currency_->setAccessibleName(QStringLiteral("Default currency"));
    currency_->setMaxVisibleItems(16);
    for (const std::string& title : controller_->defaultCurrencyPopUpButton.titles()) {
      currency_->addItem(qtText(title));
    }
    auto* dates = new QHBoxLayout;
    dates->setSpacing(spacing::narrow);
    dates->addWidget(automatic_);
    dates->addWidget(custom_);
    dates->addWidget(format_, 1);
    auto* form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->addRow(QStringLiteral("Dates:"), dates);
    form->addRow(QStringLiteral("&Currency where none is named:"), currency_);

    whenChosen(*automatic_, this, [this] { controller_->chooseAutomaticDateFormat(); });
    whenChosen(*custom_, this, [this] { controller_->chooseCustomDateFormat(); });
    connect(format_, &QLineEdit::textEdited, this,
            [this](const QString& text) { controller_->setDateFormatString(utf8Text(text)); });
    connect(currency_, &QComboBox::activated, this, [this](int index) {
      controller_->selectDefaultCurrency(static_cast<std::size_t>(index));
    });
    changes_ = subscribe(controller_->viewDidUpdate, [this] { update(); });
    update();
  }

 private:
  void update() {
    showChecked(*automatic_, controller_->dateFormatAutomaticButton.isOn);
    showChecked(*custom_, controller_->dateFormatCustomButton.isOn);
    if (const QString text = qtText(controller_->dateFormatCustomTextField.text);
        format_->text() != text) {
      format_->setText(text);
    }
    format_->setEnabled(controller_->dateFormatCustomTextField.isEnabled);
    currency_->setCurrentIndex(
        static_cast<int>(controller_->defaultCurrencyPopUpButton.selectedIndex.value_or(0)));
  }

  std::shared_ptr<Controller> controller_;
  QRadioButton* automatic_;
  QRadioButton* custom_;
  QLineEdit* format_;
  QComboBox* currency_;
  Subscription changes_;
};

/// How dates and amounts are written.
class ExporterAccessory : public QWidget {
 public:
  using Settings = PortfolioExporterAccessoryViewController;

  explicit ExporterAccessory(std::shared_ptr<Settings> controller)
      : controller_(std::move(controller)),
        standard_(new QRadioButton(QStringLiteral("&Standard"))),
        custom_(new QRadioButton(QStringLiteral("&Format:"))),
        format_(new QLineEdit),
        accounting_(new QCheckBox(QStringLiteral("&Accounting style"))),
        thousands_(new QCheckBox(QStringLiteral("T&housands separators"))),
        symbol_(new QCheckBox(QStringLiteral("Currency s&ymbol"))) {
    format_->setAccessibleName(QStringLiteral("Date format"));
    format_->setFont(theme::monospacedFont());
    auto* dates = new QHBoxLayout;
    dates->setSpacing(spacing::narrow);
    dates->addWidget(standard_);
    dates->addWidget(custom_);
    dates->addWidget(format_, 1);
    auto* amounts = new QHBoxLayout;
    amounts->setSpacing(spacing::medium);
    amounts->addWidget(accounting_);
    amounts->addWidget(thousands_);
    amounts->addWidget(symbol_);
    amounts->addStretch(1);
    auto* form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->addRow(QStringLiteral("Dates:"), dates);
    form->addRow(QStringLiteral("Amounts:"), amounts);

    whenChosen(*standard_, this, [this] { controller_->chooseDefaultDateFormat(); });
    whenChosen(*custom_, this, [this] { controller_->chooseCustomDateFormat(); });
    connect(format_, &QLineEdit::textEdited, this,
            [this](const QString& text) { controller_->setDateFormatString(utf8Text(text)); });
    connect(accounting_, &QCheckBox::toggled, this,
            [this](bool isOn) { controller_->setAccountingStyle(isOn); });
    connect(thousands_, &QCheckBox::toggled, this,
            [this](bool isOn) { controller_->setThousandSeparator(isOn); });
    connect(symbol_, &QCheckBox::toggled, this,
            [this](bool isOn) { controller_->setCurrencySymbol(isOn); });
    changes_ = subscribe(controller_->viewDidUpdate, [this] { update(); });
    update();
  }

 private:
  void update() {
    showChecked(*standard_, controller_->dateFormatDefaultButton.isOn);
    showChecked(*custom_, controller_->dateFormatCustomButton.isOn);
    if (const QString text = qtText(controller_->dateFormatCustomTextField.text);
        format_->text() != text) {
      format_->setText(text);
    }
    format_->setEnabled(controller_->dateFormatCustomTextField.isEnabled);
    showChecked(*accounting_, controller_->accountingStyleCheckboxButton.isOn);
    showChecked(*thousands_, controller_->thousandSeparatorCheckboxButton.isOn);
    showChecked(*symbol_, controller_->currencySymbolCheckboxButton.isOn);
  }

  std::shared_ptr<Settings> controller_;
  QRadioButton* standard_;
  QRadioButton* custom_;
  QLineEdit* format_;
  QCheckBox* accounting_;
  QCheckBox* thousands_;
  QCheckBox* symbol_;
  Subscription changes_;
};

}  // namespace

QWidget* makeAccessory(const std::shared_ptr<AccessoryConfigurationViewController>& controller) {
  if (auto transactions = std::dynamic_pointer_cast<Controller>(controller)) {
    return new TransactionsAccessory(std::move(transactions));
  }
  if (auto exporter =
          std::dynamic_pointer_cast<PortfolioExporterAccessoryViewController>(controller)) {
    return new ExporterAccessory(std::move(exporter));
  }
  return nullptr;
}

}  // namespace corvane::desktop
