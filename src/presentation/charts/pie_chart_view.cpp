#include "presentation/charts/pie_chart_view.h"

#include <array>
#include <cmath>
#include <numbers>

#include "platform/text/unicode/isolation.h"

namespace corvane {
namespace {

AttributedText sliceLabelCell(const PieSlice& slice) {
  return AttributedText("● ", {.colour = slice.colour}).append(slice.label);
}

AttributedText sliceShareCell(const PieSlice& slice) {
  AttributedText text(slice.percentText, {.isMonospaced = true});
  text.alignment = TextAlignment::right;
  return text;
}

constexpr std::array<ColumnOf<PieSlice>, 2> sliceColumns = {{
    {{"label", "Holding"}, sliceLabelCell},
    {{"share", "Share", true}, sliceShareCell},
}};

}  // namespace

std::string PieChartView::accessibleText() const {
  if (slices.empty()) {
    return noDataText;
  }
  std::string text;
  // The largest share, drawn last, is what a listener wants to hear first.
  for (auto slice = slices.rbegin(); slice != slices.rend(); ++slice) {
    text += (text.empty() ? "" : ", ") + isolatedName(slice->label) + " " + slice->percentText;
  }
  return text;
}

const std::vector<TableColumn>& PieChartView::columns() const {
  static const std::vector<TableColumn> columns = columnsOf(sliceColumns);
  return columns;
}

AttributedText PieChartView::cell(std::size_t row, std::size_t column) const {
  return sliceColumns.at(column).cell(slices.at(slices.size() - 1 - row));
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
