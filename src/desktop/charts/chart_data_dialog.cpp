#include "desktop/charts/chart_data_dialog.h"

#include <QDialogButtonBox>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/controls/table_view.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int leastWidth = 480;
constexpr int mostWidth = 1000;
constexpr int usualHeight = 520;

}  // namespace

ChartDataDialog* ChartDataDialog::open(QWidget* parent, const BaseChartView& chart,
                                       const QString& title) {
  auto* dialog = new ChartDataDialog(parent, chart, title);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->QDialog::open();
  return dialog;
}

ChartDataDialog::ChartDataDialog(QWidget* parent, const BaseChartView& chart, const QString& title)
    : QDialog(parent), table_(chart) {
  setWindowTitle(title);
  auto* view = new TableView(title);
  view->setTable(new TableModelAdapter(table_, this), table_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::medium);
  column->addWidget(view, 1);
  column->addWidget(buttons);
  resize(std::clamp(view->neededWidth() + 2 * spacing::wide, leastWidth, mostWidth), usualHeight);
  view->setFocus();
}

}  // namespace corvane::desktop
