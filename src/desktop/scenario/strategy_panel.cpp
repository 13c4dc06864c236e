#include "desktop/scenario/strategy_panel.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/look/attributed_text_view.h"
#include "desktop/look/check_mark.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int leastFieldWidth = 88;

QLabel* heading(const QString& text) {
  auto* label = new QLabel(text);
  label->setFont(theme::font(1, QFont::DemiBold));
  label->setContentsMargins(0, spacing::narrow, 0, 0);
  return label;
}

}  // namespace

StrategyPanel::StrategyPanel(ScenarioStrategyViewController& controller, QWidget* parent)
    : QWidget(parent), controller_(controller) {
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(spacing::narrow);
  grid->setVerticalSpacing(spacing::tight);
  grid->setColumnStretch(1, 1);
  addField(*grid, controller_.initialInvestmentField, QStringLiteral("Initial investment"));
  grid->addWidget(heading(QStringLiteral("Targets")), grid->rowCount(), 0, 1, 2);
  addField(*grid, controller_.strategyBuySpreadField, QStringLiteral("Buy when down by"));
  addField(*grid, controller_.strategyBuyMaxField, QStringLiteral("Spend at most"));
  addCheckBox(*grid, controller_.strategyBuyMaxCheckbox, QStringLiteral("No limit for purchases"));
  addField(*grid, controller_.strategySellSpreadField, QStringLiteral("Sell when up by"));
  addField(*grid, controller_.strategySellSliceField, QStringLiteral("Part to sell"));
  addCheckBox(*grid, controller_.strategySellSliceCheckbox, QStringLiteral("Sell all shares"));

  auto* stopLoss =
      addCheckBox(*grid, controller_.isStopLossActiveCheckbox, QStringLiteral("Stop loss"));
  stopLoss->setFont(theme::font(1, QFont::DemiBold));
  stopLoss->setContentsMargins(0, spacing::narrow, 0, 0);
  addField(*grid, controller_.stopLossSellSpreadField,
           QStringLiteral("Stop loss: sell when down by"));
  addField(*grid, controller_.stopLossSellSliceField, QStringLiteral("Stop loss: part to sell"));
  addCheckBox(*grid, controller_.stopLossSellSliceCheckbox,
              QStringLiteral("Stop loss: sell all shares"));
  addField(*grid, controller_.stopLossBuySpreadField, QStringLiteral("Stop loss: buy when up by"));
  addField(*grid, controller_.stopLossBuyMaxField, QStringLiteral("Stop loss: spend at most"));
  addCheckBox(*grid, controller_.stopLossBuyMaxCheckbox,
              QStringLiteral("Stop loss: no limit for purchases"));

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, spacing::narrow, spacing::narrow, spacing::narrow);
  column->addLayout(grid);
  column->addStretch(1);
  changes_ = subscribe(controller_.changeHandler, [this] { update(); });
  update();
}

void StrategyPanel::addField(QGridLayout& grid, NumberEntry& entry, const QString& accessibleName) {
  auto* label = new QLabel(qtText(entry.label));
  auto* field = new QLineEdit;
  auto* problem = new AttributedLabel;
  field->setAlignment(Qt::AlignRight);
  field->setFont(theme::monospacedFont());
  field->setMinimumWidth(
      std::max(leastFieldWidth,
               QFontMetrics(field->font()).horizontalAdvance(QStringLiteral("CA$10,000.00")) +
                   2 * spacing::narrow));
  field->setAccessibleName(accessibleName);
  label->setBuddy(field);
  problem->setWordWrap(true);
  const int row = grid.rowCount();
  grid.addWidget(label, row, 0, Qt::AlignLeft | Qt::AlignVCenter);
  grid.addWidget(field, row, 1);
  grid.addWidget(problem, row + 1, 0, 1, 2);

  connect(field, &QLineEdit::textChanged, this,
          [this, &entry](const QString& text) { controller_.typeInto(entry, utf8Text(text)); });
  connect(field, &QLineEdit::editingFinished, this,
          [this, &entry] { controller_.endEditing(entry); });
  updates_.emplace_back([this, &entry, label, field, problem] {
    const FieldHint hint = entry.hint();
    // A number of more than a hundred digits says less than its meaning.
    const QString shown = controller_.isUnlimited(entry) && !entry.isEnabled
                              ? QStringLiteral("No limit")
                              : qtText(entry.text());
    if (field->text() != shown) {
      const QSignalBlocker block(field);
      field->setText(shown);
    }
    field->setEnabled(entry.isEnabled);
    label->setEnabled(entry.isEnabled);
    if (field->accessibleDescription() != qtText(hint.text)) {
      field->setAccessibleDescription(qtText(hint.text));
    }
    problem->setAttributedText(
        AttributedText("⚠ " + hint.text, {.colour = Colour::Name::systemRed}));
    problem->setVisible(hint.isProblem);
  });
}

QCheckBox* StrategyPanel::addCheckBox(QGridLayout& grid, CheckBox& box,
                                      const QString& accessibleName) {
  auto* control = new QCheckBox(qtText(box.title));
  control->setAccessibleName(accessibleName);
  const bool isHeading = &box == &controller_.isStopLossActiveCheckbox;
  grid.addWidget(control, grid.rowCount(), isHeading ? 0 : 1, 1, isHeading ? 2 : 1);
  connect(control, &QCheckBox::toggled, this,
          [this, &box](bool isOn) { controller_.toggle(box, isOn); });
  updates_.emplace_back([&box, control] {
    showChecked(*control, box.isOn);
    control->setEnabled(box.isEnabled);
  });
  return control;
}

void StrategyPanel::update() {
  for (const auto& updateControl : updates_) {
    updateControl();
  }
}

}  // namespace corvane::desktop
