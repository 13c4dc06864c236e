// The splits and dividends of an equity as a table.
#pragma once

#include <vector>

#include "core/market/equity_event.h"
#include "core/money/decimal_number_formatter.h"
#include "platform/system/user_defaults.h"
#include "presentation/controls/table_model.h"

namespace corvane {

/// Events that two check boxes let through, newest first. Main queue only.
class EquityEventsTable : public TableModel {
 public:
  /// `defaults` must outlive this.
  explicit EquityEventsTable(const UserDefaults& defaults) : defaults_(defaults) {}

  /// Shows those of `events`, which are in date order, that are let through.
  void setEvents(EquityPointer equity, std::vector<EquityEvent> events);
  void setShowsSplits(bool shows);
  void setShowsDividends(bool shows);
  [[nodiscard]] bool showsSplits() const { return showsSplits_; }
  [[nodiscard]] bool showsDividends() const { return showsDividends_; }

  [[nodiscard]] const std::vector<EquityEvent>& allEquityEvents() const { return allEquityEvents_; }
  [[nodiscard]] const std::vector<EquityEvent>& filteredEquityEvents() const {
    return filteredEquityEvents_;
  }

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return filteredEquityEvents_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;

 private:
  void filter();

  const UserDefaults& defaults_;
  EquityPointer equity_;
  std::vector<EquityEvent> allEquityEvents_;
  std::vector<EquityEvent> filteredEquityEvents_;
  bool showsSplits_ = true;
  bool showsDividends_ = true;
};

}  // namespace corvane
