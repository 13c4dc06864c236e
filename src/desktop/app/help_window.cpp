#include "desktop/app/help_window.h"

#include <QAction>
#include <QDesktopServices>
#include <QEvent>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QTextBrowser>
#include <QToolBar>
#include <QUrl>

#include "desktop/look/alert_box.h"
#include "desktop/look/front_window.h"
#include "desktop/look/line_icon.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

namespace {

/// Tells a page without the pictures that are not there: those of the user guide are drawn only
/// when the program is built to be installed.
class PageBrowser final : public QTextBrowser {
 public:
  QVariant loadResource(int type, const QUrl& name) override {
    const QUrl full = source().resolved(name);
    if (type == QTextDocument::ImageResource && full.isLocalFile() &&
        !QFileInfo::exists(full.toLocalFile())) {
      // A line of nothing, however wide the page wants it. Without it there is a sign in that size.
      QImage nothing(QSize(2000, 1), QImage::Format_ARGB32_Premultiplied);
      nothing.fill(Qt::transparent);
      return nothing;
    }
    return QTextBrowser::loadResource(type, name);
  }
};

}  // namespace

HelpWindow::HelpWindow(QWidget* parent)
    : QMainWindow(parent), browser_(new PageBrowser), subtitle_(new QLabel) {
  setWindowTitle(QStringLiteral("Corvane Help"));
  setCentralWidget(browser_);
  resize(780, 680);
  browser_->setFrameShape(QFrame::NoFrame);
  browser_->setOpenLinks(false);
  browser_->setAccessibleName(QStringLiteral("Page"));
  browser_->document()->setDocumentMargin(spacing::section);

  QToolBar* bar = addToolBar(QStringLiteral("Navigation"));
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  bar->setIconSize(QSize(18, 18));
  QAction* back = bar->addAction(QStringLiteral("Back"), browser_, &QTextBrowser::backward);
  back->setShortcut(QKeySequence::Back);
  QAction* forward = bar->addAction(QStringLiteral("Forward"), browser_, &QTextBrowser::forward);
  forward->setShortcut(QKeySequence::Forward);
  back_ = back;
  forward_ = forward;
  showIcons();
  back->setEnabled(false);
  forward->setEnabled(false);
  subtitle_->setForegroundRole(QPalette::PlaceholderText);
  subtitle_->setContentsMargins(spacing::medium, 0, spacing::medium, 0);
  bar->addWidget(subtitle_);
  connect(browser_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::anchorClicked, this, &HelpWindow::follow);
  connect(browser_, &QTextBrowser::sourceChanged, this, &HelpWindow::showTitle);
  auto* close = new QAction(this);
  close->setShortcuts({QKeySequence(QKeySequence::Close), QKeySequence(Qt::Key_Escape)});
  connect(close, &QAction::triggered, this, &QWidget::close);
  addAction(close);
}

/// In the ink of the appearance that is applied now.
void HelpWindow::showIcons() {
  back_->setIcon(lineIcon(LineIcon::back));
  forward_->setIcon(lineIcon(LineIcon::forward));
}

void HelpWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && forward_ != nullptr) {
    showIcons();
  }
}

bool HelpWindow::canShow(const std::filesystem::path& file) {
  const auto ending = file.extension();
  return ending == ".html" || ending == ".htm";
}

void HelpWindow::follow(const QUrl& link) {
  const QUrl full = browser_->source().resolved(link);
  const bool isPage = (full.isLocalFile() && canShow(filePath(full.toLocalFile()))) ||
                      full.scheme() == QLatin1String("about");
  if (isPage) {
    browser_->setSource(full);
  } else if (!QDesktopServices::openUrl(full)) {
    showAlert(this, AlertKind::message,
              QStringLiteral("There is no program on this computer that opens this address."),
              full.toDisplayString(), {QStringLiteral("OK")});
  }
}

void HelpWindow::showTitle() {
  const QString title = browser_->documentTitle();
  subtitle_->setText(title);
  setWindowTitle(title.isEmpty() ? QStringLiteral("Corvane Help")
                                 : title + QStringLiteral(" — Corvane Help"));
}

void HelpWindow::showPage(const std::filesystem::path& file) {
  browser_->setSource(QUrl::fromLocalFile(qtPath(file)));
  bringToFront(*this);
}

}  // namespace corvane::desktop
