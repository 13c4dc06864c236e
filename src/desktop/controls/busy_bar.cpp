#include "desktop/controls/busy_bar.h"

#include <QProgressBar>

namespace corvane::desktop {

QProgressBar* makeBusyBar(const QString& accessibleName) {
  auto* bar = new QProgressBar;
  bar->setRange(0, 0);
  bar->setTextVisible(false);
  bar->setFixedSize(72, 6);
  bar->setAccessibleName(accessibleName);
  QSizePolicy policy = bar->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  bar->setSizePolicy(policy);
  bar->hide();
  return bar;
}

}  // namespace corvane::desktop
