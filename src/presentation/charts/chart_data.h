// What a chart is made of, as data for whoever draws it. Binary floating point is good enough here:
// nothing is computed from it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/text/styled/colour.h"

namespace corvane {

struct ChartEntry {
  double x = 0;
  double y = 0;
  friend bool operator==(const ChartEntry&, const ChartEntry&) = default;
};

/// A line through points, in ascending x, with nothing drawn on the points.
struct ChartDataSet {
  std::string label;  ///< its name in the legend
  std::vector<ChartEntry> entries = {};
  Colour colour = Colour::Name::black;
  double lineWidth = 1;
  /// Of the area between the line and 0; none for a line alone.
  std::optional<Colour> fill = std::nullopt;
  /// Whether the pointer highlights its points.
  bool isHighlightEnabled = true;
};

/// A vertical bar from `low` to `high`.
struct CandleEntry {
  double x = 0;
  double low = 0;
  double high = 0;
  friend bool operator==(const CandleEntry&, const CandleEntry&) = default;
};

struct CandleDataSet {
  std::string label;
  std::vector<CandleEntry> entries = {};
  Colour colour = Colour::Name::black;
  bool isHighlightEnabled = true;
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
