#include "desktop/transactions/entry_row.h"

#include <QGridLayout>
#include <QLabel>

#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int hintWidth = 200;

/// What is wrong is red, and says so: the sign is for those who see no red.
AttributedText hintText(const FieldHint& hint) {
  return hint.isProblem && !hint.text.empty()
             ? AttributedText("⚠ " + hint.text, {.colour = Colour::Name::systemRed})
             : AttributedText(hint.text, {.colour = Colour::Name::secondaryLabel});
}

}  // namespace

EntryRow::EntryRow(QGridLayout& grid, QWidget* field, QWidget* focus)
    : label_(new QLabel), field_(field), focus_(focus), hint_(new AttributedLabel) {
  const int row = grid.rowCount();
  label_->setBuddy(focus);
  hint_->setWordWrap(true);
  hint_->setMinimumWidth(hintWidth);
  hint_->setFont(theme::font(theme::figureFactor));
  grid.addWidget(label_, row, 0, Qt::AlignRight | Qt::AlignVCenter);
  grid.addWidget(field, row, 1);
  grid.addWidget(hint_, row, 2, Qt::AlignVCenter);
}

void EntryRow::show(std::string_view label, bool isHidden, const FieldHint& hint) {
  label_->setText(qtText(label));
  const QString name = qtText(label.ends_with(':') ? label.substr(0, label.size() - 1) : label);
  focus_->setAccessibleName(name);
  const QString words = qtText(hint.text);
  if (focus_->accessibleDescription() != words) {
    focus_->setAccessibleDescription(words);
  }
  hint_->setAttributedText(hintText(hint));
  hint_->setVisible(!isHidden);
  label_->setVisible(!isHidden);
  field_->setVisible(!isHidden);
}

void EntryRow::setLabelEnabled(bool isEnabled) {
  label_->setEnabled(isEnabled);
}

}  // namespace corvane::desktop
