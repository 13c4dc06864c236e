#include "presentation/charts/pie_chart_view.h"

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

}  // namespace corvane
