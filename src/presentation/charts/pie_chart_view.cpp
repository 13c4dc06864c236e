#include "presentation/charts/pie_chart_view.h"

#include <cmath>
#include <numbers>

namespace corvane {

std::string PieChartView::accessibleText() const {
  if (slices.empty()) {
    return noDataText;
  }
  std::string text;
  // The largest share, drawn last, is what a listener wants to hear first.
  for (auto slice = slices.rbegin(); slice != slices.rend(); ++slice) {
    text += (text.empty() ? "" : ", ") + slice->label + " " + slice->percentText;
  }
  return text;
}

const std::vector<TableColumn>& PieChartView::columns() const {
  static const std::vector<TableColumn> columns = {
      {.identifier = "label", .title = "Holding"},
      {.identifier = "share", .title = "Share", .isNumeric = true}};
  return columns;
}

AttributedText PieChartView::cell(std::size_t row, std::size_t column) const {
  const PieSlice& slice = slices.at(slices.size() - 1 - row);
  if (column == 0) {
    return AttributedText("● ", {.colour = slice.colour}).append(slice.label);
  }
  AttributedText text(slice.percentText, {.isMonospaced = true});
  text.alignment = TextAlignment::right;
  return text;
}

const PieSlice* PieChartView::sliceAt(double x, double y) const {
  double whole = 0;
  for (const PieSlice& slice : slices) {
    whole += slice.value;
  }
  if (whole <= 0 || std::hypot(x, y) > 1) {
    return nullptr;
  }
  const double turn = std::atan2(x, -y) / (2 * std::numbers::pi);
  double left = (turn < 0 ? turn + 1 : turn) * whole;
  for (const PieSlice& slice : slices) {
    if (left < slice.value) {
      return &slice;
    }
    left -= slice.value;
  }
  return &slices.back();
}

}  // namespace corvane
