// What a chart is made of, as data for whoever draws it. Binary floating point is good enough here:
// nothing is computed from it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/text/styled/colour.h"

namespace corvane {

/// A value, and where a bar, a candle or a filled band below it begins.
struct ChartEntry {
  double x = 0;
  double y = 0;
  double base = 0;
  friend bool operator==(const ChartEntry&, const ChartEntry&) = default;
};

/// A series of a chart, in ascending x. Black stands for ink: it is drawn in the colour of labels,
/// so that it is seen on a dark ground as well.
struct ChartDataSet {
  enum class Shape {
    line,     ///< through the values, with nothing drawn on them
    candles,  ///< a thin bar from `base` to the value
    bars,     ///< a bar from `base` to the value, `barWidth` wide
    circles   ///< a circle of `circleRadius` at each value, without a line
  };

  std::string label;  ///< its name in the legend
  std::vector<ChartEntry> entries = {};
  Colour colour = Colour::Name::label;
  double lineWidth = 1;
  /// Of the band between the line and the `base` of its entries; none for a line alone.
  std::optional<Colour> fill = std::nullopt;
  /// Whether the pointer highlights its points.
  bool isHighlightEnabled = true;
  Shape shape = Shape::line;
  /// The colour of each bar or circle; empty where all have that of the series.
  std::vector<Colour> entryColours = {};
  /// A letter or a sign in each circle, so that no colour need be recognised; may be empty.
  std::vector<std::string> entrySigns = {};
  double barWidth = 0.85;   ///< on the x axis
  double circleRadius = 8;  ///< in device-independent pixels
  bool isDashed = false;    ///< tells a line from another without its colour
};

/// An entry of the legend.
struct ChartLegendEntry {
  enum class Mark { line, dashedLine, area, circle };

  std::string label;
  Colour colour = Colour::Name::label;
  Mark mark = Mark::line;
  friend bool operator==(const ChartLegendEntry&, const ChartLegendEntry&) = default;
};

/// A line across the chart at a value of one axis.
struct LimitLine {
  double value = 0;
  std::string label = "";  ///< light grey, in the font size of labels; may be empty
  double lineWidth = 0.5;
  /// The lengths of a dash and of the gap behind it.
  double dash = 1;
  double gap = 2;
  Colour colour = Colour::Name::lightGray;  ///< of the line
  friend bool operator==(const LimitLine& left, const LimitLine& right) = default;
};

}  // namespace corvane
