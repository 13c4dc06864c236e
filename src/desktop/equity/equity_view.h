// The screen of an equity.
#pragma once

#include <QWidget>
#include <memory>

#include "platform/async/subscription.h"
#include "presentation/equity/equity_view_controller.h"

class QLabel;
class QPushButton;
class QTabWidget;

namespace corvane::desktop {

class AttributedLabel;

/// Shows an EquityViewController: the heading, and its tabs in the controller's order.
class EquityView : public QWidget {
  Q_OBJECT

 public:
  explicit EquityView(std::shared_ptr<EquityViewController> controller, QWidget* parent = nullptr);

  [[nodiscard]] QTabWidget& tabs() { return *tabs_; }
  /// Shows `tab`, which this owns from now on, behind the others; to be called in the order in
  /// which the controller has been given its tabs.
  void addTab(QWidget* tab, const QString& title);

 private:
  QWidget* makeHeading();
  void update();

  std::shared_ptr<EquityViewController> controller_;
  QLabel* symbol_;
  QLabel* name_;
  QLabel* price_;
  AttributedLabel* summary_;
  QPushButton* watch_;
  QTabWidget* tabs_;
  Subscription changes_;
};

}  // namespace corvane::desktop
