#include "desktop/workspace/dates_time_zone_dialog.h"

#include <QComboBox>
#include <QCompleter>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <utility>

#include "desktop/look/check_mark.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int lettersOfSheet = 60;

QLabel* makeText() {
  auto* text = new QLabel;
  text->setWordWrap(true);
  text->setTextFormat(Qt::PlainText);
  text->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return text;
}

}  // namespace

DatesTimeZoneDialog::DatesTimeZoneDialog(std::unique_ptr<DatesTimeZoneForm> form, QWidget* parent)
    : QDialog(parent),
      form_(std::move(form)),
      present_(new QRadioButton),
      fixed_(new QRadioButton),
      zone_(new QComboBox),
      effect_(makeText()),
      go_(new QPushButton) {
  setWindowTitle(QStringLiteral("Time Zone of Days"));
  setWindowModality(Qt::WindowModal);
  setAttribute(Qt::WA_DeleteOnClose);
  layOut();
  showState();
  whenChosen(*present_, this, [this] {
    form_->choosePresent();
    showState();
  });
  whenChosen(*fixed_, this, [this] {
    form_->chooseFixed();
    showState();
    zone_->setFocus();
  });
  connect(zone_, &QComboBox::editTextChanged, this, [this](const QString& text) {
    form_->typeZone(utf8Text(text.trimmed()));
    showState();
  });
}

void DatesTimeZoneDialog::accept() {
  if (form_->goButton.isEnabled) {
    form_->apply();
    QDialog::accept();
  }
}

void DatesTimeZoneDialog::layOut() {
  auto* heading = new QLabel(windowTitle());
  heading->setFont(theme::font(1.3, QFont::DemiBold));
  auto* state = makeText();
  state->setText(qtText(form_->stateLabel.text));

  present_->setText(qtText(form_->presentButton.title));
  fixed_->setText(qtText(form_->fixedButton.title));
  zone_->setEditable(true);
  zone_->setInsertPolicy(QComboBox::NoInsert);
  zone_->setAccessibleName(QStringLiteral("Time zone"));
  zone_->setMaxVisibleItems(16);
  for (const std::string& name : DatesTimeZoneForm::zones()) {
    zone_->addItem(qtText(name));
  }
  // Who types "Kolkata" finds it below "Asia".
  zone_->completer()->setCompletionMode(QCompleter::PopupCompletion);
  zone_->completer()->setFilterMode(Qt::MatchContains);
  zone_->completer()->setCaseSensitivity(Qt::CaseInsensitive);
  zone_->lineEdit()->setPlaceholderText(qtText(form_->zoneField.placeholder));
  zone_->setCurrentIndex(-1);
  zone_->setEditText(qtText(form_->zoneField.text));
  auto* zone = new QHBoxLayout;
  zone->setContentsMargins(
      fixed_->style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth) + spacing::narrow, 0, 0, 0);
  zone->addWidget(zone_, 1);

  auto* note = makeText();
  note->setText(
      QStringLiteral("Transactions are not changed by it, and you can choose again at "
                     "any time. The choice is saved with the workspace."));
  note->setFont(theme::font(0.92));
  note->setForegroundRole(QPalette::PlaceholderText);

  auto* cancel = new QPushButton(QStringLiteral("Cancel"));
  go_->setText(qtText(form_->goButton.title));
  go_->setDefault(true);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  connect(go_, &QPushButton::clicked, this, &QDialog::accept);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->setSpacing(spacing::narrow);
  buttons->addWidget(cancel);
  buttons->addWidget(go_);

  auto* content = new QWidget;
  content->setFixedWidth(theme::widthOfLetters(lettersOfSheet));
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(spacing::narrow);
  column->addWidget(heading);
  column->addWidget(state);
  column->addSpacing(spacing::narrow);
  column->addWidget(present_);
  column->addWidget(fixed_);
  column->addLayout(zone);
  // Room for two lines, so that nothing jumps.
  effect_->setMinimumHeight(2 * QFontMetrics(effect_->font()).lineSpacing());
  effect_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  column->addSpacing(spacing::narrow);
  column->addWidget(effect_);
  column->addWidget(note);
  column->addLayout(buttons);
  auto* sheet = new QVBoxLayout(this);
  sheet->setContentsMargins(spacing::section, spacing::section, spacing::section, spacing::wide);
  sheet->addWidget(content);
  sheet->setSizeConstraint(QLayout::SetFixedSize);
}

void DatesTimeZoneDialog::showState() {
  showChecked(*present_, form_->presentButton.isOn);
  showChecked(*fixed_, form_->fixedButton.isOn);
  effect_->setText(form_->zoneField.error.empty() || form_->presentButton.isOn
                       ? qtText(form_->effectLabel.text)
                       : QStringLiteral("⚠ ") + qtText(form_->zoneField.error));
  zone_->setAccessibleDescription(effect_->text());
  go_->setEnabled(form_->goButton.isEnabled);
}

}  // namespace corvane::desktop
