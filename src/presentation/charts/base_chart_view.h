// What all charts have in common: a text for when there is nothing to draw, and what the pointer
// finds.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/text/styled/attributed_text.h"
#include "presentation/charts/chart_data.h"

namespace corvane {

/// A chart of lines without its drawing. A view draws what it finds here whenever changeHandler is
/// called, and tells the chart what the pointer does. Main queue only.
class BaseChartView {
 public:
  virtual ~BaseChartView() = default;

  /// The series that the pointer follows; none where there is nothing to follow.
  std::optional<ChartDataSet> interactiveDataSet;

  /// Series that never highlight.
  [[nodiscard]] const std::vector<ChartDataSet>& noninteractiveDataSets() const {
    return noninteractiveDataSets_;
  }
  void setNoninteractiveDataSets(std::vector<ChartDataSet> dataSets);

  /// In place of a chart without data.
  std::string noDataText;
  /// What the chart shows, in words, for those who cannot see it.
  std::string accessibleText;

  /// Data indexes as x values, and back.
  std::function<double(std::size_t)> convertXFromDataIndexToGraph;
  std::function<std::optional<std::size_t>(double)> convertXFromGraphToDataIndex;

  /// The text beside the pointer for the value at an index; without it there is none.
  std::function<AttributedText(std::size_t)> tooltipProvider;
  /// A click on a value, or on nothing.
  std::function<void(std::optional<std::size_t>)> valueSelectedHandler;
  std::function<void(std::size_t)> valueDoubleClickedHandler;
  std::function<void()> changeHandler = [] {};

  BaseChartView() { resetConversions(); }

  /// Drops the data and what is highlighted.
  virtual void clear();

  [[nodiscard]] virtual bool isEmpty() const { return !interactiveDataSet; }

  // What the pointer does. `x` is that of the highlighted value nearest to it.

  void pointerMovedTo(std::optional<double> x);
  void pointerLeft() { pointerMovedTo(std::nullopt); }
  void clicked(std::optional<double> x);
  void doubleClicked(double x);

  [[nodiscard]] std::optional<std::size_t> currentMouseoverDataIndex() const {
    return currentMouseoverDataIndex_;
  }
  /// What the panel beside the pointer shows, its top left corner `tooltipOffset` to the right of
  /// the pointer and below it; none for no panel.
  [[nodiscard]] std::optional<AttributedText> tooltip() const;
  static constexpr double tooltipOffset = 15;
  static constexpr double tooltipInset = 8;

 protected:
  void resetConversions();

 private:
  std::vector<ChartDataSet> noninteractiveDataSets_;
  std::optional<std::size_t> currentMouseoverDataIndex_;
};

}  // namespace corvane
