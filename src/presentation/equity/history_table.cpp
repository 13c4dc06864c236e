#include "presentation/equity/history_table.h"

#include <array>
#include <utility>

#include "presentation/equity/equity_formats.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

struct BarRow {
  const Quote& quote;
  const Quote& first;  ///< of the table
  const EquityInfo& equity;
  const UserDefaults& defaults;
};

AttributedText barDateCell(const BarRow& row) {
  return AttributedText(Formatting::quoteDateRangeText(row.quote, row.equity, row.defaults) +
                        (row.quote.isPartial ? " (incomplete)" : ""));
}

template <std::optional<Decimal> Quote::*price>
AttributedText priceCell(const BarRow& row) {
  const auto& shown = row.quote.*price;
  return numericCell(shown ? equityPriceFormatter(row.equity).string(*shown).value_or("") : "");
}

/// Since the first price of the table.
AttributedText changeCell(const BarRow& row) {
  const auto& reference = row.first.open;
  if (!row.quote.close || !reference) {
    return numericCell("");
  }
  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.minimumFractionDigits = 2;
  percent.maximumFractionDigits = 2;
  percent.positivePrefix = "+";
  return numericCell(percent.string(*row.quote.close / *reference - 1).value_or(""));
}

constexpr std::array<ColumnOf<BarRow>, 7> barColumns = {{
    {{"date", "Date"}, barDateCell},
    {{"open", "Open", true}, priceCell<&Quote::open>},
    {{"high", "High", true}, priceCell<&Quote::high>},
    {{"low", "Low", true}, priceCell<&Quote::low>},
    {{"close", "Close", true}, priceCell<&Quote::close>},
    {{"change", "Change", true}, changeCell},
    {{"volume", "Volume", true},
     [](const BarRow& row) {
       return numericCell(row.quote.volume ? std::to_string(*row.quote.volume) : "");
     }},
}};

constexpr double markStrength = 0.3;

}  // namespace

void HistoryTable::setQuotes(EquityPointer equity, std::vector<Quote> quotes) {
  equity_ = std::move(equity);
  quotes_ = std::move(quotes);
}

const std::vector<TableColumn>& HistoryTable::columns() const {
  static const std::vector<TableColumn> columns = columnsOf(barColumns);
  return columns;
}

AttributedText HistoryTable::cell(std::size_t row, std::size_t column) const {
  return barColumns.at(column).cell({quotes_.at(row), quotes_.front(), *equity_, defaults_});
}

AttributedText HistoryTable::briefCell(std::size_t row, std::size_t column) const {
  if (barColumns.at(column).column.identifier != "date") {
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

}  // namespace corvane
