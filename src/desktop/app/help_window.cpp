#include "desktop/app/help_window.h"

#include <QAction>
#include <QDesktopServices>
#include <QTextBrowser>
#include <QToolBar>
#include <QUrl>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

HelpWindow::HelpWindow(QWidget* parent) : QMainWindow(parent), browser_(new QTextBrowser) {
  setCentralWidget(browser_);
  resize(640, 560);
  browser_->setFrameShape(QFrame::NoFrame);
  browser_->setOpenLinks(false);
  browser_->setAccessibleName(QStringLiteral("Page"));
  browser_->document()->setDocumentMargin(spacing::section);

  QToolBar* bar = addToolBar(QStringLiteral("Navigation"));
  bar->setMovable(false);
  QAction* back = bar->addAction(QStringLiteral("Back"), browser_, &QTextBrowser::backward);
  back->setShortcut(QKeySequence::Back);
  QAction* forward = bar->addAction(QStringLiteral("Forward"), browser_, &QTextBrowser::forward);
  forward->setShortcut(QKeySequence::Forward);
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(browser_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) {
    const QUrl full = browser_->source().resolved(link);
    if (full.scheme() == QLatin1String("file") || full.scheme() == QLatin1String("about")) {
      browser_->setSource(full);
    } else {
      QDesktopServices::openUrl(full);
    }
  });
  connect(browser_, &QTextBrowser::sourceChanged, this, [this] {
    const QString title = browser_->documentTitle();
    setWindowTitle(title.isEmpty() ? QStringLiteral("Corvane")
                                   : title + QStringLiteral(" — Corvane"));
  });
  auto* close = new QAction(this);
  close->setShortcuts({QKeySequence(QKeySequence::Close), QKeySequence(Qt::Key_Escape)});
  connect(close, &QAction::triggered, this, &QWidget::close);
  addAction(close);
}

void HelpWindow::showPage(const std::filesystem::path& file) {
  browser_->setSource(QUrl::fromLocalFile(qtPath(file)));
  show();
  raise();
  activateWindow();
}

}  // namespace corvane::desktop
