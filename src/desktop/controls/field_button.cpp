#include "desktop/controls/field_button.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

namespace corvane::desktop {
namespace {

/// Text begins where that of a menu of choices does, and a cursor in front of it is off the frame.
constexpr int textInset = 2;

}  // namespace

void putIntoField(QWidget& box, QLineEdit& field, std::initializer_list<QToolButton*> buttons) {
  auto* cell = new QGridLayout(&box);
  cell->setContentsMargins(0, 0, 0, 0);
  cell->addWidget(&field, 0, 0);
  auto* row = new QHBoxLayout;
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  int width = 0;
  for (QToolButton* button : buttons) {
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setCursor(Qt::ArrowCursor);
    row->addWidget(button);
    width += button->sizeHint().width();
  }
  field.setTextMargins(textInset, 0, width, 0);
  cell->addLayout(row, 0, 0, Qt::AlignRight | Qt::AlignVCenter);
}

}  // namespace corvane::desktop
