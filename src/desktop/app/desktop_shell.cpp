#include "desktop/app/desktop_shell.h"

#include <QApplication>
#include <QDesktopServices>
#include <QUrl>

#include "desktop/look/alert_box.h"
#include "desktop/look/front_window.h"
#include "desktop/look/qt_text.h"

namespace corvane::desktop {

void DesktopShell::applyMenuState(const ApplicationMenuState& state) {
  menuState_ = state;
  menuStateChanged();
}

void DesktopShell::runAlert(const std::string& messageText, const std::string& informativeText) {
  (void)ask(QApplication::activeWindow(), AlertKind::warning, qtText(messageText),
            qtText(informativeText), {QStringLiteral("OK")});
}

void DesktopShell::presentError(const Error& error) {
  showError(QApplication::activeWindow(), error);
}

/// The program's own pages are shown by the program, where there is a way back and where no browser
/// is needed; what else there is, the system opens.
void DesktopShell::openExternally(const std::filesystem::path& file) {
  if (HelpWindow::canShow(file) || !QDesktopServices::openUrl(QUrl::fromLocalFile(qtPath(file)))) {
    showWebDocument(file, 0);
  }
}

void DesktopShell::showWebDocument(const std::filesystem::path& file, double /*timeoutSeconds*/) {
  if (help_ == nullptr) {
    help_ = std::make_unique<HelpWindow>();
  }
  help_->showPage(file);
}

void DesktopShell::showNetworkActivityWindow(bool inFront) {
  if (activity_ == nullptr) {
    activity_ = std::make_unique<NetworkActivityWindow>();
  }
  activity_->setAttribute(Qt::WA_ShowWithoutActivating, !inFront);
  if (inFront) {
    bringToFront(*activity_);
  } else {
    activity_->show();
    activity_->lower();
  }
}

void DesktopShell::closeNetworkActivityWindow() {
  if (activity_ != nullptr) {
    activity_->close();
  }
}

bool DesktopShell::isNetworkActivityWindowVisible() const {
  return activity_ != nullptr && activity_->isVisible();
}

void DesktopShell::clearActivity() {
  if (activity_ != nullptr) {
    activity_->controller().clearActivity();
  }
}

void DesktopShell::closeWindows() {
  help_.reset();
  activity_.reset();
}

}  // namespace corvane::desktop
