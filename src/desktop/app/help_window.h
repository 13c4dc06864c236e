// The window for the program's own pages.
#pragma once

#include <QMainWindow>
#include <filesystem>

class QTextBrowser;

namespace corvane::desktop {

/// Shows a page, with the way back and forward between pages. Links that lead out of the program's
/// files are opened by the system. The title stands in the title bar.
class HelpWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit HelpWindow(QWidget* parent = nullptr);

  void showPage(const std::filesystem::path& file);

 private:
  QTextBrowser* browser_;
};

}  // namespace corvane::desktop
