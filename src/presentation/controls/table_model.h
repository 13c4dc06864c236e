// A table as a screen fills it.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text/styled/attributed_text.h"
#include "platform/text/styled/colour.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// A column of a table.
struct TableColumn {
  std::string_view identifier;  ///< the key of the column, which also a stored layout may use
  std::string_view title;       ///< its heading
  bool isNumeric = false;       ///< right-aligned, digits of one width
  bool isHidden = false;
};

/// A column of a table with what stands in it, for rows that are told by a `Row`.
template <typename Row>
struct ColumnOf {
  TableColumn column;
  AttributedText (*cell)(const Row&);
};

/// The columns alone, for TableModel::columns().
template <typename Row, std::size_t count>
[[nodiscard]] std::vector<TableColumn> columnsOf(const std::array<ColumnOf<Row>, count>& table) {
  std::vector<TableColumn> columns;
  for (const ColumnOf<Row>& each : table) {
    columns.push_back(each.column);
  }
  return columns;
}

/// Makes the trail of a figure when it is asked for; none where there is nothing to tell, and what
/// stands in the way is thrown as an Error. Main queue only.
using TrailMaker = std::function<std::optional<TrailNode>()>;

/// Rows and columns of text, made when they are asked for: a view asks for the cells that it shows,
/// so that a table opens at once however many rows it has. Main queue only.
class TableModel {
 public:
  virtual ~TableModel() = default;

  /// In the order of display. Their number never changes.
  [[nodiscard]] virtual const std::vector<TableColumn>& columns() const = 0;
  [[nodiscard]] virtual std::size_t numberOfRows() const = 0;
  /// The text of the cell in `row` and columns()[column]; empty where nothing is known.
  [[nodiscard]] virtual AttributedText cell(std::size_t row, std::size_t column) const = 0;
  /// A shorter form of a cell for where the whole has no room; empty where there is none.
  [[nodiscard]] virtual AttributedText briefCell(std::size_t /*row*/,
                                                 std::size_t /*column*/) const {
    return {};
  }
  /// The background of a row that stands out; none for that of its place.
  [[nodiscard]] virtual std::optional<Colour> rowBackground(std::size_t /*row*/) const {
    return std::nullopt;
  }
  /// What a background of its own says, in words; empty without one.
  [[nodiscard]] virtual std::string rowNote(std::size_t /*row*/) const { return {}; }
  /// How the figure in a cell came about; null where it cannot be told.
  [[nodiscard]] virtual TrailMaker trailOf(std::size_t /*row*/, std::size_t /*column*/) const {
    return nullptr;
  }
};

}  // namespace corvane
