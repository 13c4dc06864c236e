#include "presentation/equity/equity_events_table.h"

#include <algorithm>
#include <utility>

#include "platform/overloaded.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

enum class EventColumn { date, event, amount };

std::string dividendText(const Decimal& amount, const Currency& currency) {
  return DecimalNumberFormatter::money(currency).string(amount).value_or("");
}

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
  static const std::vector<TableColumn> columns = {
      {.identifier = "date", .title = "Date"},
      {.identifier = "event", .title = "Event"},
      {.identifier = "amount", .title = "Amount", .isNumeric = true}};
  return columns;
}

AttributedText EquityEventsTable::cell(std::size_t row, std::size_t column) const {
  const EquityEvent& event = filteredEquityEvents_.at(row);
  switch (static_cast<EventColumn>(column)) {
    case EventColumn::date: {
      DateFormatter formatter = Formatting::equityDateFormatter(*equity_, defaults_);
      formatter.dateStyle = DateFormatter::Style::mediumStyle;
      formatter.timeStyle = DateFormatter::Style::none;
      return AttributedText(formatter.string(event.date));
    }
    case EventColumn::event:
      return AttributedText(std::holds_alternative<EquityEvent::Split>(event.kind) ? "Split"
                                                                                   : "Dividend");
    case EventColumn::amount:
      return numericCell(
          std::visit(Overloaded{[](const EquityEvent::Split& split) {
                                  return std::to_string(split.ratio.numerator) + ":" +
                                         std::to_string(split.ratio.denominator);
                                },
                                [&](const EquityEvent::Dividend& dividend) {
                                  return dividendText(dividend.amount, equity_->currency);
                                }},
                     event.kind));
  }
  return {};
}

}  // namespace corvane
