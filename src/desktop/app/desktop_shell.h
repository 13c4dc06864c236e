// What the desktop is to the application controller: alerts and the windows of no document.
#pragma once

#include <functional>
#include <memory>

#include "desktop/app/help_window.h"
#include "desktop/app/network_activity_window.h"
#include "storage/application/application_shell.h"

namespace corvane::desktop {

/// Main queue only.
class DesktopShell : public ApplicationShell {
 public:
  /// Called with the state that the menus of all windows are to show.
  std::function<void()> menuStateChanged = [] {};

  [[nodiscard]] const ApplicationMenuState& menuState() const { return menuState_; }

  void applyMenuState(const ApplicationMenuState& state) override;
  void runAlert(const std::string& messageText, const std::string& informativeText) override;
  void presentError(const Error& error) override;
  /// Where the system has no program for `file`, the program shows it itself.
  void openExternally(const std::filesystem::path& file) override;
  /// A page of the program's own is there at once, so nothing times out.
  void showWebDocument(const std::filesystem::path& file, double timeoutSeconds) override;
  void showNetworkActivityWindow(bool inFront) override;
  void closeNetworkActivityWindow() override;
  [[nodiscard]] bool isNetworkActivityWindowVisible() const override;
  void clearActivity() override;

  /// Closes the windows, so that the program can end.
  void closeWindows();

 private:
  ApplicationMenuState menuState_;
  std::unique_ptr<HelpWindow> help_;
  std::unique_ptr<NetworkActivityWindow> activity_;
};

}  // namespace corvane::desktop
