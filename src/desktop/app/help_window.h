// The window for the program's own pages.
#pragma once

#include <QMainWindow>
#include <filesystem>

class QAction;
class QLabel;
class QTextBrowser;
class QUrl;

namespace corvane::desktop {

/// Shows a page, with the way back and forward between pages. Links that lead out of the program's
/// pages are opened by the system. The title of the page stands below that of the window.
class HelpWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit HelpWindow(QWidget* parent = nullptr);

  /// Whether `file` is a page.
  [[nodiscard]] static bool canShow(const std::filesystem::path& file);
  void showPage(const std::filesystem::path& file);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void showIcons();
  void follow(const QUrl& link);
  void showTitle();

  QTextBrowser* browser_;
  QLabel* subtitle_;
  QAction* back_ = nullptr;
  QAction* forward_ = nullptr;
};

}  // namespace corvane::desktop
