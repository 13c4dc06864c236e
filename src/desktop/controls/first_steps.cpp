#include "desktop/controls/first_steps.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/look/theme.h"

namespace corvane::desktop {

FirstSteps::FirstSteps(QWidget* parent)
    : QWidget(parent), message_(new QLabel), steps_(new QWidget), row_(new QHBoxLayout(steps_)) {
  message_->setAlignment(Qt::AlignCenter);
  message_->setWordWrap(true);
  message_->setFont(theme::font(1.3));
  message_->setForegroundRole(QPalette::PlaceholderText);
  message_->setMargin(spacing::medium);
  row_->setContentsMargins(0, 0, 0, 0);
  row_->setSpacing(spacing::narrow);
  row_->addStretch(1);
  row_->addStretch(1);
  auto* column = new QVBoxLayout(this);
  column->addStretch(1);
  column->addWidget(message_);
  column->addWidget(steps_);
  column->addStretch(1);
}

void FirstSteps::setMessage(const QString& message) {
  message_->setText(message);
}

void FirstSteps::addStep(QAction* action, const QString& text) {
  auto* button = new QPushButton(text);
  button->setAutoDefault(false);
  button->setToolTip(action->shortcut().toString(QKeySequence::NativeText));
  const auto follow = [action, button] { button->setEnabled(action->isEnabled()); };
  connect(button, &QPushButton::clicked, action, &QAction::trigger);
  connect(action, &QAction::changed, button, follow);
  follow();
  row_->insertWidget(row_->count() - 1, button);
}

void FirstSteps::setStepsVisible(bool areVisible) {
  steps_->setVisible(areVisible);
}

}  // namespace corvane::desktop
