// The window with the log of requests to the market-data service.
#pragma once

#include <QMainWindow>

#include "presentation/frame/network_activity_view_controller.h"

class QComboBox;
class QPlainTextEdit;

namespace corvane::desktop {

/// Shows a NetworkActivityViewController: one request at a time, with what was asked and answered.
class NetworkActivityWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit NetworkActivityWindow(QWidget* parent = nullptr);

  [[nodiscard]] NetworkActivityViewController& controller() { return controller_; }

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void update();

  NetworkActivityViewController controller_;
  QComboBox* entries_;
  QPlainTextEdit* request_;
  QPlainTextEdit* response_;
};

}  // namespace corvane::desktop
