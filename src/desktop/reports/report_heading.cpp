#include "desktop/reports/report_heading.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

#include "desktop/look/theme.h"

namespace corvane::desktop {

ReportHeading::ReportHeading(QWidget* busy, QWidget* parent)
    : QWidget(parent),
      title_(new QLabel),
      busy_(busy),
      choices_(new QHBoxLayout),
      lines_(new QBoxLayout(QBoxLayout::LeftToRight, this)) {
  title_->setFont(theme::font(1, QFont::DemiBold));
  title_->setWordWrap(true);
  auto* titleLine = new QHBoxLayout;
  titleLine->addWidget(title_, 1);
  titleLine->addWidget(busy_);
  for (QBoxLayout* layout :
       {static_cast<QBoxLayout*>(titleLine), static_cast<QBoxLayout*>(choices_), lines_}) {
    layout->setSpacing(spacing::narrow);
  }
  lines_->setContentsMargins(0, 0, 0, 0);
  lines_->addLayout(titleLine, 1);
  lines_->addLayout(choices_);
}

void ReportHeading::setTitle(const QString& title) {
  title_->setText(title);
}

bool ReportHeading::event(QEvent* event) {
  if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) {
    breakLine();
  }
  return QWidget::event(event);
}

void ReportHeading::breakLine() {
  const int needed = title_->fontMetrics().horizontalAdvance(title_->text()) +
                     busy_->sizeHint().boundedTo(busy_->maximumSize()).width() +
                     choices_->sizeHint().width() + 2 * lines_->spacing();
  const bool fits = needed <= width();
  if (fits != (lines_->direction() == QBoxLayout::LeftToRight)) {
    lines_->setDirection(fits ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    lines_->setAlignment(choices_, fits ? Qt::Alignment() : Qt::AlignLeft);
  }
}

}  // namespace corvane::desktop
