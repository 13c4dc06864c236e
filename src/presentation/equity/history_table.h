// The price bars of an equity as a table.
#pragma once

#include <vector>

#include "core/market/quote.h"
#include "core/market/quote_query.h"
#include "platform/system/user_defaults.h"
#include "platform/text/styled/colour.h"
#include "presentation/controls/table_model.h"

namespace corvane {

/// One row for each bar, the oldest first. Main queue only.
class HistoryTable : public TableModel {
 public:
  /// `defaults` must outlive this.
  explicit HistoryTable(const UserDefaults& defaults) : defaults_(defaults) {}

  void setQuotes(EquityPointer equity, std::vector<Quote> quotes);
  [[nodiscard]] const std::vector<Quote>& quotes() const { return quotes_; }

  /// Whether bars that came from the network stand out.
  void setMarksFetchedRows(bool marks) { marksFetchedRows_ = marks; }

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return quotes_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] AttributedText briefCell(std::size_t row, std::size_t column) const override;
  [[nodiscard]] std::optional<Colour> rowBackground(std::size_t row) const override;
  [[nodiscard]] std::string rowNote(std::size_t row) const override;

 private:
  [[nodiscard]] bool isMarked(std::size_t row) const;

  const UserDefaults& defaults_;
  EquityPointer equity_;
  std::vector<Quote> quotes_;
  bool marksFetchedRows_ = false;
};

}  // namespace corvane
