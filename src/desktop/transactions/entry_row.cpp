#include "desktop/transactions/entry_row.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <algorithm>

#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int mostHintWidth = 200;

/// What is wrong is red, and says so: the sign is for those who see no red.
AttributedText hintText(const FieldHint& hint) {
  return hint.isProblem && !hint.text.empty()
             ? AttributedText("⚠ " + hint.text, {.colour = Colour::Name::systemRed})
             : AttributedText(hint.text, {.colour = Colour::Name::secondaryLabel});
}

}  // namespace

EntryRow::EntryRow(QGridLayout& grid, QWidget* field, QWidget* focus, HintSide side)
    : label_(new QLabel), cell_(new QWidget), focus_(focus), hint_(new AttributedLabel) {
  const int row = grid.rowCount();
  label_->setBuddy(focus);
  hint_->setWordWrap(true);
  hint_->setFont(theme::font(theme::figureFactor));
  hint_->setAlignment(side == HintSide::left ? Qt::AlignRight | Qt::AlignVCenter
                                             : Qt::AlignLeft | Qt::AlignVCenter);
  auto* both = new QHBoxLayout(cell_);
  both->setContentsMargins(0, 0, 0, 0);
  both->setSpacing(spacing::narrow);
  both->addWidget(field, 1);
  both->insertWidget(side == HintSide::left ? 0 : 1, hint_);
  grid.addWidget(label_, row, 0, Qt::AlignRight | Qt::AlignVCenter);
  grid.addWidget(cell_, row, 1);
  // Menus and fields of figures and words have one height.
  field->setMinimumHeight(QComboBox().sizeHint().height());
}

void EntryRow::show(std::string_view label, bool isHidden, const FieldHint& hint) {
  label_->setText(qtText(label));
  const QString name = qtText(label.ends_with(':') ? label.substr(0, label.size() - 1) : label);
  focus_->setAccessibleName(name);
  const QString words = qtText(hint.text);
  if (focus_->accessibleDescription() != words) {
    focus_->setAccessibleDescription(words);
  }
  const AttributedText shown = hintText(hint);
  hint_->setAttributedText(shown);
  hint_->setFixedWidth(
      std::min(hint_->fontMetrics().horizontalAdvance(qtText(shown.plainText())) + spacing::tight,
               mostHintWidth));
  hint_->setVisible(!hint.text.empty());
  label_->setVisible(!isHidden);
  cell_->setVisible(!isHidden);
}

void EntryRow::setLabelEnabled(bool isEnabled) {
  label_->setEnabled(isEnabled);
}

}  // namespace corvane::desktop
