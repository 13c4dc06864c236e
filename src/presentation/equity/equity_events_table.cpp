#include "presentation/equity/equity_events_table.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/overloaded.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

struct EventRow {
  const EquityEvent& event;
  const EquityInfo& equity;
  const UserDefaults& defaults;
};

AttributedText eventDateCell(const EventRow& row) {
  DateFormatter formatter = Formatting::equityDateFormatter(row.equity, row.defaults);
  formatter.dateStyle = DateFormatter::Style::mediumStyle;
  formatter.timeStyle = DateFormatter::Style::none;
  return AttributedText(formatter.string(row.event.date));
}

AttributedText eventNameCell(const EventRow& row) {
  return AttributedText(std::holds_alternative<EquityEvent::Split>(row.event.kind) ? "Split"
                                                                                   : "Dividend");
}

AttributedText eventAmountCell(const EventRow& row) {
  return numericCell(std::visit(Overloaded{[](const EquityEvent::Split& split) {
                                             return std::to_string(split.ratio.numerator) + ":" +
                                                    std::to_string(split.ratio.denominator);
                                           },
                                           [&](const EquityEvent::Dividend& dividend) {
                                             return DecimalNumberFormatter::money(
                                                        row.equity.currency)
                                                 .string(dividend.amount)
                                                 .value_or("");
                                           }},
                                row.event.kind));
}

constexpr std::array<ColumnOf<EventRow>, 3> eventColumns = {{
    {{"date", "Date"}, eventDateCell},
    {{"event", "Event"}, eventNameCell},
    {{"amount", "Amount", true}, eventAmountCell},
}};

}  // namespace

void EquityEventsTable::setEvents(EquityPointer equity, std::vector<EquityEvent> events) {
  equity_ = std::move(equity);
  allEquityEvents_ = std::move(events);
  filter();
}

void EquityEventsTable::setShowsSplits(bool shows) {
  showsSplits_ = shows;
  filter();
}

void EquityEventsTable::setShowsDividends(bool shows) {
  showsDividends_ = shows;
  filter();
}

void EquityEventsTable::filter() {
  filteredEquityEvents_.clear();
  std::copy_if(allEquityEvents_.rbegin(), allEquityEvents_.rend(),
               std::back_inserter(filteredEquityEvents_), [&](const EquityEvent& event) {
                 return std::holds_alternative<EquityEvent::Split>(event.kind) ? showsSplits_
                                                                               : showsDividends_;
               });
}

const std::vector<TableColumn>& EquityEventsTable::columns() const {
  static const std::vector<TableColumn> columns = columnsOf(eventColumns);
  return columns;
}

AttributedText EquityEventsTable::cell(std::size_t row, std::size_t column) const {
  return eventColumns.at(column).cell({filteredEquityEvents_.at(row), *equity_, defaults_});
}

}  // namespace corvane
