#include "desktop/workspace/time_zone_bar.h"

#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <utility>

#include "desktop/controls/flow_row.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

TimeZoneBar::TimeZoneBar(WorkspaceDocument& document, std::function<void()> chooseZone,
                         QWidget* parent)
    : QFrame(parent),
      document_(document),
      chooseZone_(std::move(chooseZone)),
      message_(new QLabel),
      use_(new QPushButton),
      keep_(new QPushButton) {
  setFrameShape(QFrame::StyledPanel);
  message_->setWordWrap(true);
  message_->setTextFormat(Qt::PlainText);
  message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* buttons = new FlowRow;
  buttons->setSpacing(spacing::narrow);
  for (QPushButton* button : {use_, keep_}) {
    button->setAutoDefault(false);
    buttons->addWidget(button);
  }
  use_->setToolTip(
      QStringLiteral("The days are those of this zone wherever you open the workspace"));
  keep_->setToolTip(QStringLiteral("The days are right as you see them now"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::wide, spacing::narrow, spacing::wide, spacing::narrow);
  column->setSpacing(spacing::narrow);
  column->addWidget(message_);
  column->addLayout(buttons);
  connect(use_, &QPushButton::clicked, this, &TimeZoneBar::useWritten);
  connect(keep_, &QPushButton::clicked, this, [this] { document_.usePresentTimeZone(); });
  hide();
}

void TimeZoneBar::showDoubt() {
  const auto& doubt = document_.model()->datesDoubt;
  setVisible(doubt.has_value());
  if (doubt) {
    message_->setText(qtText(doubt->description()));
    use_->setText(doubt->written ? QStringLiteral("Use ") + qtText(doubt->written->identifier())
                                 : QStringLiteral("Use Another Time Zone…"));
    keep_->setText(QStringLiteral("Keep ") + qtText(doubt->shown.identifier()));
  }
}

bool TimeZoneBar::refusesImport() {
  const auto& doubt = document_.model()->datesDoubt;
  if (!doubt) {
    return false;
  }
  showAlert(
      this, AlertKind::message, qtText(doubt->description()),
      QStringLiteral("Nothing is imported before you have decided in the bar above, since rows "
                     "that are there already would be recorded again."),
      {QStringLiteral("OK")});
  return true;
}

void TimeZoneBar::useWritten() {
  // A copy, since the doubt goes with the decision.
  if (const auto written = document_.model()->datesDoubt->written) {
    document_.useDatesTimeZone(*written);
  } else {
    chooseZone_();
  }
}

}  // namespace corvane::desktop
