// The data of a chart in a window of its own.
#pragma once

#include <QDialog>

#include "presentation/charts/chart_table.h"

namespace corvane::desktop {

/// A table of what a chart showed when this was opened, to be read, copied and closed.
class ChartDataDialog : public QDialog {
 public:
  /// Opens one over `parent`, which owns it until it is closed.
  static ChartDataDialog* open(QWidget* parent, const BaseChartView& chart, const QString& title);

 private:
  ChartDataDialog(QWidget* parent, const BaseChartView& chart, const QString& title);

  ChartTable table_;
};

}  // namespace corvane::desktop
