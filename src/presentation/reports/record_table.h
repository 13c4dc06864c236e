// A table whose rows are records of one type.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "presentation/controls/table_model.h"

namespace corvane {

/// A column, and how it shows a record. Without `makesTrail` its figures cannot be explained.
template <typename Record>
struct RecordColumn {
  using Cell = std::function<AttributedText(const Record&)>;
  using Trail = std::function<TrailMaker(const Record&)>;

  RecordColumn(TableColumn heading, Cell makesCell, Trail makesTrail = Trail())
      : head(heading), cell(std::move(makesCell)), trail(std::move(makesTrail)) {}

  TableColumn head;
  Cell cell;
  Trail trail;
};

/// Columns that say how a record is shown; cells are made when they are asked for. Main queue only.
template <typename Record>
class RecordTable : public TableModel {
 public:
  using Column = RecordColumn<Record>;

  explicit RecordTable(std::vector<Column> columns) {
    for (Column& column : columns) {
      heads_.push_back(column.head);
      cells_.push_back(std::move(column.cell));
      trails_.push_back(std::move(column.trail));
    }
  }

  /// Called when there are other records.
  std::function<void()> changeHandler = [] {};

  void setRecords(std::vector<Record> records) {
    records_ = std::move(records);
    changeHandler();
  }
  [[nodiscard]] const std::vector<Record>& records() const { return records_; }

  [[nodiscard]] const std::vector<TableColumn>& columns() const override { return heads_; }
  [[nodiscard]] std::size_t numberOfRows() const override { return records_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override {
    return cells_.at(column)(records_.at(row));
  }
  [[nodiscard]] TrailMaker trailOf(std::size_t row, std::size_t column) const override {
    return trails_.at(column) == nullptr ? nullptr : trails_[column](records_.at(row));
  }

 private:
  std::vector<TableColumn> heads_;
  std::vector<std::function<AttributedText(const Record&)>> cells_;
  std::vector<std::function<TrailMaker(const Record&)>> trails_;
  std::vector<Record> records_;
};

}  // namespace corvane
