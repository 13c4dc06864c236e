// A pie as data for whoever draws it.
#pragma once

#include <string>
#include <vector>

#include "platform/text/styled/colour.h"

namespace corvane {

struct PieSlice {
  std::string label;
  /// Its share of the pie is that of the sum of all values. Never negative: a debt takes the room
  /// of its amount.
  double value = 0;
  std::string percentText;  ///< its share of the whole; of a debt, with a sign
  Colour colour = Colour::Name::black;
};

/// Slices in the order in which they are drawn. Main queue only.
struct PieChartView {
  std::vector<PieSlice> slices;
  /// In place of a pie without slices.
  std::string noDataText;

  /// What the pie shows, in words: each label with its share.
  [[nodiscard]] std::string accessibleText() const;
};

}  // namespace corvane
