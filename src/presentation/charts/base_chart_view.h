// What all charts have in common: series, axes, a legend, what the pointer finds, what is
// highlighted, and which part is shown.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/text/styled/attributed_text.h"
#include "presentation/axes/axis_renderers.h"
#include "presentation/charts/chart_data.h"

namespace corvane {

/// A chart without its drawing. A view draws what it finds here whenever changeHandler is called,
/// and tells the chart what pointer and keys do. Whoever fills the chart sets the fields and calls
/// changeHandler once they are complete. Main queue only.
///
/// A data index is the position of a value in whatever list the screen shows; x is its place in the
/// chart. The two conversions lead from one to the other.
class BaseChartView {
 public:
  BaseChartView() { resetConversions(); }
  BaseChartView(const BaseChartView&) = delete;
  BaseChartView& operator=(const BaseChartView&) = delete;
  virtual ~BaseChartView() = default;

  // What is drawn.

  /// The series that the pointer follows; none where there is nothing to follow. Drawn last.
  std::optional<ChartDataSet> interactiveDataSet;
  /// Series that never highlight, in the order in which they are drawn; bands come before lines.
  [[nodiscard]] const std::vector<ChartDataSet>& noninteractiveDataSets() const {
    return noninteractiveDataSets_;
  }
  void setNoninteractiveDataSets(std::vector<ChartDataSet> dataSets);

  /// The value axes; null for one without labels. Both have the same scale.
  std::shared_ptr<AxisRenderer> leftAxisRenderer;
  std::shared_ptr<AxisRenderer> rightAxisRenderer;
  /// Where the value axes begin unless a value is smaller; none leaves it to the values.
  std::optional<double> axisMinimum;
  /// The ends of the x axis; none leaves them to the values. Values beyond them are not drawn.
  std::optional<double> xAxisMinimum;
  std::optional<double> xAxisMaximum;
  /// Labels below the chart, and lines above them.
  std::vector<LimitLine> xAxisLimitLines;
  /// Lines across the chart at values of the left axis, in a view of this width.
  [[nodiscard]] virtual std::vector<LimitLine> leftAxisLimitLines(double viewWidth) const;
  /// Axes, labels and legend; without them there is only a border.
  bool drawsAxes = true;
  /// What the legend says; none for the names of all series.
  std::optional<std::vector<ChartLegendEntry>> legendEntries;
  [[nodiscard]] std::vector<ChartLegendEntry> legend() const;

  // What is said.

  /// In place of a chart without data.
  std::string noDataText;
  /// What the chart shows, in words, for those who cannot see it.
  std::string accessibleText;
  /// What stands at a data index, such as its day, and the heading of such texts in a table.
  std::function<std::string(std::size_t)> keyText;
  std::string keyTitle = "Date";
  /// A value in words; without it the plain number.
  std::function<std::string(double)> valueText;

  /// Data indexes as x values, and back.
  std::function<double(std::size_t)> convertXFromDataIndexToGraph;
  std::function<std::optional<std::size_t>(double)> convertXFromGraphToDataIndex;

  /// The text beside the pointer for the value at an index; without it there is none.
  std::function<AttributedText(std::size_t)> tooltipProvider;

  // What is heard of it.

  /// A click on a value, or on nothing.
  std::function<void(std::optional<std::size_t>)> valueSelectedHandler;
  std::function<void(std::size_t)> valueDoubleClickedHandler;
  /// There is something new to draw.
  std::function<void()> changeHandler = [] {};
  /// What the pointer finds, the highlight or the selection has changed, and nothing else has.
  std::function<void()> highlightChangeHandler = [] {};

  /// Drops the data, what is highlighted and selected, and the zoom.
  virtual void clear();

  [[nodiscard]] virtual bool isEmpty() const;

  // What pointer and keys do. `x` is that of the entry nearest to the pointer.

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
  /// The value at the pointer or the cursor in words; empty without one.
  [[nodiscard]] std::string cursorText() const;

  /// Highlights the value at an index, as for the row of a table that is selected. Stays until it
  /// is changed, whatever the pointer does.
  void highlight(std::optional<std::size_t> dataIndex);
  [[nodiscard]] std::optional<std::size_t> highlightedDataIndex() const {
    return highlightedDataIndex_;
  }

  /// The entry of the interactive series at a data index; null where it has none.
  [[nodiscard]] const ChartEntry* entryAt(std::size_t dataIndex) const;

  /// A span between two entries of the interactive series, by their x; `from` is not after `to`.
  struct Span {
    double from = 0;
    double to = 0;
    friend bool operator==(const Span&, const Span&) = default;
  };
  /// Selects the span between the entries at two x values; none for none.
  void select(std::optional<Span> span);
  [[nodiscard]] std::optional<Span> selection() const { return selection_; }
  /// What changed between the ends of the selection; none without one.
  [[nodiscard]] std::optional<AttributedText> selectionText() const;

  // Which part is shown.

  /// All of the x axis, and the part that is shown.
  [[nodiscard]] Span fullXRange() const;
  [[nodiscard]] Span shownXRange() const;
  [[nodiscard]] bool isZoomed() const { return zoom_.has_value(); }
  /// Shows `factor` times as much as now, with what is at `x` where it is. Never less than a few
  /// entries, never more than there is.
  void zoomBy(double factor, double x);
  void resetZoom();
  /// Moves what is shown as little as it takes to show `x`.
  void scrollTo(double x);

 protected:
  void resetConversions();
  /// The change between two values; the base has only the two values.
  [[nodiscard]] virtual AttributedText changeText(double from, double to) const;

 private:
  [[nodiscard]] std::string textOfValue(double value) const;
  [[nodiscard]] std::string keyTextAt(double x) const;
  [[nodiscard]] const ChartEntry* entryAtX(double x) const;

  std::vector<ChartDataSet> noninteractiveDataSets_;
  std::optional<std::size_t> currentMouseoverDataIndex_;
  std::optional<std::size_t> highlightedDataIndex_;
  std::optional<Span> selection_;
  std::optional<Span> zoom_;
};

}  // namespace corvane
