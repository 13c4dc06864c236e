// Where everything of a chart stands in a view of a certain size: ranges, labels without
// collisions, and what is under the pointer. No window is needed for it.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "presentation/charts/base_chart_view.h"

namespace corvane {

/// A chart laid out. Made anew when the chart or the size changes, which takes time linear in the
/// number of entries; what the pointer asks takes logarithmic time. Keeps a reference to the chart,
/// which must neither change nor go while this is in use. Distances are in device-independent
/// pixels from the top left corner of the view. Main queue only.
class ChartLayout {
 public:
  /// What the chart is drawn on.
  struct Surface {
    double width = 0;
    double height = 0;
    double lineHeight = 0;  ///< of a label
    std::function<double(std::string_view)> textWidth;
  };
  struct Box {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    [[nodiscard]] double width() const { return right - left; }
    [[nodiscard]] double height() const { return bottom - top; }
    [[nodiscard]] bool contains(double x, double y) const {
      return left <= x && x <= right && top <= y && y <= bottom;
    }
  };
  struct ValueRange {
    double lower = 0;
    double upper = 1;
  };
  /// A label of a value axis.
  struct Tick {
    double value = 0;
    std::string label;
  };
  /// A text whose top left corner is at `x`, `y`. No two overlap.
  struct Label {
    std::string text;
    double x = 0;
    double y = 0;
    double width = 0;
  };
  struct LegendLabel {
    ChartLegendEntry entry;
    double x = 0;  ///< of the mark, behind which the label stands
    double y = 0;
    double width = 0;  ///< of mark and label together
  };
  static constexpr double legendMarkWidth = 20;

  ChartLayout(const BaseChartView& chart, const Surface& surface);

  [[nodiscard]] const Box& plotArea() const { return plotArea_; }
  [[nodiscard]] const ValueRange& xRange() const { return xRange_; }
  [[nodiscard]] const ValueRange& yRange() const { return yRange_; }
  [[nodiscard]] const std::vector<Tick>& leftTicks() const { return leftTicks_; }
  [[nodiscard]] const std::vector<Tick>& rightTicks() const { return rightTicks_; }
  [[nodiscard]] const std::vector<Label>& dateLabels() const { return dateLabels_; }
  /// The names of the bands that are high enough for a name, at their right end.
  [[nodiscard]] const std::vector<Label>& bandLabels() const { return bandLabels_; }
  /// The legend, row by row below the plot, as many entries as there is room for; the last one says
  /// how many are left out.
  [[nodiscard]] const std::vector<LegendLabel>& legend() const { return legend_; }

  [[nodiscard]] double xPixel(double x) const;
  [[nodiscard]] double yPixel(double y) const;
  [[nodiscard]] double xAt(double pixel) const;

  /// The entries of `dataSet` that are shown, with those just beyond the edges; of several in one
  /// column of pixels those that can be told apart.
  [[nodiscard]] std::vector<ChartEntry> shownEntries(const ChartDataSet& dataSet) const;
  /// The position in `dataSet` of the first of them.
  [[nodiscard]] std::size_t firstShownEntry(const ChartDataSet& dataSet) const;

  /// The position in the interactive series of the entry nearest to a point: of bars and lines by
  /// the distance across, of circles by that in the plane. None beyond the plot.
  [[nodiscard]] std::optional<std::size_t> nearestEntry(double x, double y) const;

  enum class Step { back, forward, tenthBack, tenthForward, first, last };
  /// The position to which a key leads from `present`. Without a present one, the first key leads
  /// to the end that it comes from.
  [[nodiscard]] std::optional<std::size_t> nextEntry(std::optional<std::size_t> present,
                                                     Step step) const;

 private:
  void chooseRanges(const Surface& surface);
  void placeLegend(const Surface& surface);
  void placePlot(const Surface& surface);
  void chooseTicks(const Surface& surface);
  void leaveRoomForCircles();
  void placeDates(const Surface& surface);
  void placeBandLabels(const Surface& surface);

  const BaseChartView& chart_;
  Box plotArea_;
  ValueRange xRange_;
  ValueRange yRange_;
  std::vector<Tick> leftTicks_;
  std::vector<Tick> rightTicks_;
  std::vector<Label> dateLabels_;
  std::vector<Label> bandLabels_;
  std::vector<LegendLabel> legend_;
};

/// Where a panel of `width` by `height` stands beside the pointer at `x`, `y`: to the right and
/// below by `BaseChartView::tooltipOffset`, on the other side where it would leave `screen`.
[[nodiscard]] ChartLayout::Box tooltipPlace(double x, double y, double width, double height,
                                            const ChartLayout::Box& screen);

}  // namespace corvane
