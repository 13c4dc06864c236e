#include "desktop/reports/tax_roles_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <array>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

struct RoleChoice {
  TaxRole role;
  const char* title;
};
constexpr std::array<RoleChoice, 4> roleChoices = {{{TaxRole::taxable, "Mine, taxable"},
                                                    {TaxRole::registered, "Mine, registered"},
                                                    {TaxRole::affiliated, "Somebody close"},
                                                    {TaxRole::notMine, "Not mine"}}};

struct CountryChoice {
  TaxCountry country;
  const char* title;
};
constexpr std::array<CountryChoice, 3> countryChoices = {
    {{TaxCountry::canada, "Canada: average cost, superficial losses denied"},
     {TaxCountry::unitedKingdom, "United Kingdom: same day, next 30 days, pool"},
     {TaxCountry::none, "None: average cost, nothing denied"}}};

}  // namespace

void TaxRolesDialog::open(QWidget* parent, std::unique_ptr<TaxRolesForm> form) {
  auto* dialog = new TaxRolesDialog(std::move(form), parent);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowModality(Qt::WindowModal);
  dialog->QDialog::open();
}

TaxRolesDialog::TaxRolesDialog(std::unique_ptr<TaxRolesForm> form, QWidget* parent)
    : QDialog(parent), form_(std::move(form)), problem_(new QLabel) {
  setWindowTitle(QStringLiteral("Roles and Rules"));
  setMinimumWidth(560);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  apply_ = buttons->addButton(QStringLiteral("Apply"), QDialogButtonBox::AcceptRole);
  apply_->setDefault(true);
  problem_->setWordWrap(true);
  auto* column = new QVBoxLayout(this);
  column->setSpacing(spacing::medium);
  addRules(*column);
  addPortfolios(*column);
  column->addWidget(problem_);
  column->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &TaxRolesDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  showProblem();
}

void TaxRolesDialog::addRules(QVBoxLayout& column) {
  auto* start = new QLineEdit(qtText(form_->yearStart));
  start->setPlaceholderText(QStringLiteral("01-01"));
  start->setToolTip(QStringLiteral("Month and day, such as 04-06 for 6 April"));
  auto* country = new QComboBox;
  for (const CountryChoice& choice : countryChoices) {
    country->addItem(QString::fromLatin1(choice.title));
    if (choice.country == form_->settings.country) {
      country->setCurrentIndex(country->count() - 1);
    }
  }
  auto* counted = new QComboBox;
  counted->addItems({QStringLiteral("Settlement date"), QStringLiteral("Trade date")});
  counted->setCurrentIndex(form_->settings.byTradeDate ? 1 : 0);
  auto* rules = new QFormLayout;
  rules->addRow(QStringLiteral("The year &starts on (MM-DD):"), start);
  rules->addRow(QStringLiteral("&Rules of:"), country);
  rules->addRow(QStringLiteral("&Counted on:"), counted);
  column.addLayout(rules);
  connect(start, &QLineEdit::textChanged, this, [this](const QString& text) {
    form_->yearStart = utf8Text(text.trimmed());
    showProblem();
  });
  connect(country, &QComboBox::currentIndexChanged, this, [this](int index) {
    form_->settings.country = countryChoices.at(static_cast<std::size_t>(index)).country;
  });
  connect(counted, &QComboBox::currentIndexChanged, this,
          [this](int index) { form_->settings.byTradeDate = index == 1; });
}

void TaxRolesDialog::addPortfolios(QVBoxLayout& column) {
  auto* content = new QWidget;
  auto* grid = new QGridLayout(content);
  grid->setContentsMargins(0, 0, 0, 0);
  for (std::size_t i = 0; i < form_->lines.size(); ++i) {
    const TaxRolesForm::Line& line = form_->lines[i];
    const QString name = qtText(line.portfolio->name);
    auto* label = new QLabel(name);
    auto* role = new QComboBox;
    role->setAccessibleName(QStringLiteral("Role of ") + name);
    auto* person = new QLineEdit(qtText(line.role.person));
    person->setPlaceholderText(QStringLiteral("Whose"));
    person->setAccessibleName(QStringLiteral("Person of ") + name);
    auto* isRegistered = new QCheckBox(QStringLiteral("registered"));
    isRegistered->setAccessibleName(name + QStringLiteral(" is a registered account"));
    isRegistered->setChecked(line.role.isRegistered);
    for (const RoleChoice& choice : roleChoices) {
      role->addItem(QString::fromLatin1(choice.title));
      if (choice.role == line.role.role) {
        role->setCurrentIndex(role->count() - 1);
      }
    }
    auto* proposal = new QLabel(qtText(line.proposal));
    proposal->setForegroundRole(QPalette::PlaceholderText);
    const auto enable = [person, isRegistered](TaxRole chosen) {
      person->setEnabled(chosen == TaxRole::affiliated);
      isRegistered->setEnabled(chosen == TaxRole::affiliated);
    };
    enable(line.role.role);
    int place = 0;
    for (QWidget* widget :
         std::initializer_list<QWidget*>{label, role, person, isRegistered, proposal}) {
      grid->addWidget(widget, static_cast<int>(i), place++);
    }
    connect(role, &QComboBox::currentIndexChanged, this, [this, i, enable](int index) {
      form_->lines[i].role.role = roleChoices.at(static_cast<std::size_t>(index)).role;
      enable(form_->lines[i].role.role);
      showProblem();
    });
    connect(person, &QLineEdit::textChanged, this, [this, i](const QString& text) {
      form_->lines[i].role.person = utf8Text(text.trimmed());
      showProblem();
    });
    connect(isRegistered, &QCheckBox::toggled, this,
            [this, i](bool isOn) { form_->lines[i].role.isRegistered = isOn; });
  }
  grid->setColumnStretch(2, 1);
  grid->setRowStretch(static_cast<int>(form_->lines.size()), 1);
  auto* scroll = new QScrollArea;
  scroll->setWidget(content);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setFocusPolicy(Qt::NoFocus);
  column.addWidget(scroll, 1);
}

void TaxRolesDialog::showProblem() {
  const std::string problem = form_->problem();
  problem_->setText(qtText(problem));
  problem_->setVisible(!problem.empty());
  apply_->setEnabled(problem.empty());
  apply_->setAccessibleDescription(qtText(problem));
}

void TaxRolesDialog::accept() {
  if (form_->problem().empty()) {
    form_->apply();
    QDialog::accept();
  }
}

}  // namespace corvane::desktop
