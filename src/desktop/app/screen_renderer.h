// Draws the screens of a workspace into files, for machines without a display.
#pragma once

#include <QSize>
#include <QString>
#include <array>
#include <filesystem>
#include <functional>
#include <future>
#include <vector>

class QDialog;
class QPixmap;
class QWidget;

namespace corvane::desktop {

class MainWindow;

/// Goes through every screen of a window and writes each to a PNG file.
class ScreenRenderer {
 public:
  static constexpr QSize pictureSize{1280, 800};
  /// A small window and a common one, in which the forms for transactions are shown.
  static constexpr std::array<QSize, 2> formSizes{QSize(1000, 640), QSize(1440, 900)};
  /// Of windows with reports, and with transactions that are looked for.
  static constexpr std::array<QSize, 3> reportSizes{QSize(1000, 640), QSize(1440, 900),
                                                    QSize(2560, 1440)};
  /// How long a screen may wait for its prices.
  static constexpr int deadlineMilliseconds = 60'000;

  /// Files go to `folder`, which is made where it is missing. Throws FileError.
  ScreenRenderer(MainWindow& window, std::filesystem::path folder, QSize size = pictureSize);

  /// Writes all screens in both appearances. `drawn` is told each file while its screen still
  /// shows; the file itself is written beside the drawing of the next, and all are there at the
  /// end. False where a file could not be written or a screen's prices did not arrive in time.
  bool renderAll(const std::function<void(const std::filesystem::path&)>& drawn);
  /// As renderAll(), of a window whose workspace has nothing in it: what it says then, and what a
  /// portfolio without transactions does, for which it makes one.
  bool renderBlank(const std::function<void(const std::filesystem::path&)>& drawn);

  /// Runs the event loop for so long.
  static void waitFor(int milliseconds);
  /// Runs the event loop until `isDone` holds; whether it did before the deadline.
  static bool waitUntil(const std::function<bool()>& isDone);

 private:
  /// The dialog of `window` that is open, in front of others that are; null for none.
  [[nodiscard]] static QDialog* openDialog(const QWidget& window);
  void inBothAppearances(const std::function<void()>& render);
  void renderScreens();
  void renderMenus();
  void renderAlerts();
  void renderChartData();
  void renderFieldSetup();
  void renderWindows();
  void renderPortfolio(std::size_t index);
  void renderCursor(const QString& name);
  void renderReports();
  void renderReportSizes(const QString& name);
  void renderHover(const QString& name);
  void renderDaysOf(const QString& name);
  void renderFinding(const QString& name);
  void renderEquities();
  void renderHistory(const QString& name);
  void renderUnknownEquity();
  void renderScenarios(const QString& name);
  void renderForms();
  void renderStatement();
  /// All forms for transactions in a window of `size`, which the names of their pictures tell.
  void renderTransactionForms(QSize size);
  void renderTransactionModes(const QString& sizeName);
  void renderBulkForm(const QString& sizeName);
  void renderImportFields();
  void renderPopups();
  void renderRandomPortfolio();
  /// Writes the window, and on it the dialog, the menu and the lists that are open.
  void write(const QString& name);
  /// As write(), of what is there at this moment.
  void capture(const QString& name);
  /// Writes a window that stands beside the main one.
  void writeWindow(QWidget& window, const QString& name);
  void save(const QPixmap& picture, const QString& name);
  /// Waits for the file that is being written.
  void finishWriting();

  MainWindow& window_;
  const std::filesystem::path folder_;
  const QSize size_;
  QString appearance_;
  std::function<void(const std::filesystem::path&)> drawn_;
  std::future<bool> writing_;  ///< of the latest picture: whether its file could be written
  bool hasFailed_ = false;
};

}  // namespace corvane::desktop
