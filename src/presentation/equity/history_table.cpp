#include "presentation/equity/history_table.h"

#include <utility>

#include "presentation/equity/equity_formats.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

enum class BarColumn { date, open, high, low, close, change, volume };

constexpr double markStrength = 0.3;

}  // namespace

void HistoryTable::setQuotes(EquityPointer equity, std::vector<Quote> quotes) {
  equity_ = std::move(equity);
  quotes_ = std::move(quotes);
}

const std::vector<TableColumn>& HistoryTable::columns() const {
  static const std::vector<TableColumn> columns = {
      {.identifier = "date", .title = "Date"},
      {.identifier = "open", .title = "Open", .isNumeric = true},
      {.identifier = "high", .title = "High", .isNumeric = true},
      {.identifier = "low", .title = "Low", .isNumeric = true},
      {.identifier = "close", .title = "Close", .isNumeric = true},
      {.identifier = "change", .title = "Change", .isNumeric = true},
      {.identifier = "volume", .title = "Volume", .isNumeric = true}};
  return columns;
}

AttributedText HistoryTable::cell(std::size_t row, std::size_t column) const {
  const Quote& quote = quotes_.at(row);
  switch (static_cast<BarColumn>(column)) {
    case BarColumn::date:
      return AttributedText(Formatting::quoteDateRangeText(quote, *equity_, defaults_) +
                            (quote.isPartial ? " (incomplete)" : ""));
    case BarColumn::open:
      return priceCell(quote.open);
    case BarColumn::high:
      return priceCell(quote.high);
    case BarColumn::low:
      return priceCell(quote.low);
    case BarColumn::close:
      return priceCell(quote.close);
    case BarColumn::change:
      return changeCell(quote);
    case BarColumn::volume:
      return numericCell(quote.volume ? std::to_string(*quote.volume) : "");
  }
  return {};
}

AttributedText HistoryTable::briefCell(std::size_t row, std::size_t column) const {
  if (static_cast<BarColumn>(column) != BarColumn::date) {
    return {};
  }
  const Quote& quote = quotes_.at(row);
  return AttributedText(
      Formatting::briefDateRangeText({quote.fromDate, quote.toDate}, *equity_, defaults_) +
      (quote.isPartial ? " (incomplete)" : ""));
}

std::optional<Colour> HistoryTable::rowBackground(std::size_t row) const {
  if (!isMarked(row)) {
    return std::nullopt;
  }
  return Colour(row % 2 == 0 ? Colour::Name::rowBackground : Colour::Name::alternatingRowBackground)
      .blended(markStrength, Colour::Name::systemBrown);
}

std::string HistoryTable::rowNote(std::size_t row) const {
  return isMarked(row) ? "Came from the network" : "";
}

bool HistoryTable::isMarked(std::size_t row) const {
  return marksFetchedRows_ && !quotes_.at(row).isCached;
}

AttributedText HistoryTable::priceCell(const std::optional<Decimal>& price) const {
  return numericCell(price ? equityPriceFormatter(*equity_).string(*price).value_or("") : "");
}

/// Since the first price of the table.
AttributedText HistoryTable::changeCell(const Quote& quote) const {
  const auto& reference = quotes_.front().open;
  if (!quote.close || !reference) {
    return numericCell("");
  }
  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.minimumFractionDigits = 2;
  percent.maximumFractionDigits = 2;
  percent.positivePrefix = "+";
  return numericCell(percent.string(*quote.close / *reference - 1).value_or(""));
}

}  // namespace corvane
