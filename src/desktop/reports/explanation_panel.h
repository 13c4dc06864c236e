// The panel beside the tables that says how a figure came about.
#pragma once

#include <QWidget>

#include "platform/async/subscription.h"
#include "presentation/reports/explanation_view_controller.h"

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace corvane::desktop {

/// Shows an ExplanationViewController as an outline with two levels open; hidden while there is
/// nothing to show. Return or a double click opens the row that a line comes from, Escape closes.
/// The controller must outlive this.
class ExplanationPanel : public QWidget {
  Q_OBJECT

 public:
  explicit ExplanationPanel(ExplanationViewController& controller, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override { return {560, 400}; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void showState();
  void fitColumns();
  void addNode(const TrailNode& node, QTreeWidgetItem* parent, int depth);
  void copyText() const;
  void exportCSV();
  void openRowOf(const QTreeWidgetItem* item);

  ExplanationViewController& controller_;
  QLabel* message_;
  QTreeWidget* outline_;
  QPushButton* copy_;
  QPushButton* save_;
  Subscription changes_;
};

}  // namespace corvane::desktop
