#include "presentation/charts/base_chart_view.h"

#include <utility>

namespace corvane {

void BaseChartView::setNoninteractiveDataSets(std::vector<ChartDataSet> dataSets) {
  noninteractiveDataSets_ = std::move(dataSets);
  for (ChartDataSet& dataSet : noninteractiveDataSets_) {
    dataSet.isHighlightEnabled = false;
  }
}

void BaseChartView::clear() {
  currentMouseoverDataIndex_.reset();
  interactiveDataSet.reset();
  noninteractiveDataSets_.clear();
  accessibleText.clear();
  changeHandler();
}

void BaseChartView::pointerMovedTo(std::optional<double> x) {
  currentMouseoverDataIndex_ = x ? convertXFromGraphToDataIndex(*x) : std::nullopt;
}

void BaseChartView::clicked(std::optional<double> x) {
  if (valueSelectedHandler) {
    valueSelectedHandler(x ? convertXFromGraphToDataIndex(*x) : std::nullopt);
  }
}

void BaseChartView::doubleClicked(double x) {
  const auto index = convertXFromGraphToDataIndex(x);
  if (valueDoubleClickedHandler && index) {
    valueDoubleClickedHandler(*index);
  }
}

std::optional<AttributedText> BaseChartView::tooltip() const {
  if (!tooltipProvider || !currentMouseoverDataIndex_) {
    return std::nullopt;
  }
  return tooltipProvider(*currentMouseoverDataIndex_);
}

void BaseChartView::resetConversions() {
  convertXFromDataIndexToGraph = [](std::size_t index) { return static_cast<double>(index); };
  convertXFromGraphToDataIndex = [](double x) -> std::optional<std::size_t> {
    return x < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(x));
  };
}

}  // namespace corvane
