// A pie as data for whoever draws it.
#pragma once

#include <string>
#include <vector>

#include "platform/text/styled/colour.h"
#include "presentation/controls/table_model.h"

namespace corvane {

struct PieSlice {
  std::string label;
  /// Its share of the pie is that of the sum of all values. Never negative: a debt takes the room
  /// of its amount.
  double value = 0;
  std::string percentText;  ///< its share of the whole; of a debt, with a sign
  Colour colour = Colour::Name::black;
};

/// Slices in the order in which they are drawn, clockwise from the top. As a table, their labels
/// and shares from the largest to the smallest, so that the narrowest can be read as well. Main
/// queue only.
struct PieChartView : TableModel {
  std::vector<PieSlice> slices;
  /// In place of a pie without slices.
  std::string noDataText;

  /// What the pie shows, in words: each label with its share.
  [[nodiscard]] std::string accessibleText() const;

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return slices.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;

  /// The slice at a point of a pie of radius 1 around 0, 0, whose y grows downwards; none beside it
  /// and none where there is nothing to share.
  [[nodiscard]] const PieSlice* sliceAt(double x, double y) const;
};

}  // namespace corvane
