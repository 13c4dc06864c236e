#include "exchange/imports/strict_import.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "exchange/imports/transactions_import_error.h"
#include "exchange/imports/transactions_schema.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane {
namespace {

/// What comes first in the short dates of the user's locale.
std::optional<DayOrder> orderOfShortDates() {
  const DateFormatter formatter{.dateStyle = DateFormatter::Style::shortStyle,
                                .timeZone = TimeZone::withSecondsFromGMT(0).value()};
  constexpr double on25November2003 = 1069718400;
  const std::string text = formatter.string(Date::since1970(on25November2003));
  const std::size_t year = text.find("03");
  const std::size_t month = text.find("11");
  const std::size_t day = text.find("25");
  if (year == text.npos || month == text.npos || day == text.npos) {
    return std::nullopt;
  }
  if (year < month) {
    return DayOrder::ymd;
  }
  return day < month ? DayOrder::dmy : DayOrder::mdy;
}

class StrictReader {
 public:
  StrictReader(const ImportedCells& cells, const StrictImportSurroundings& surroundings)
      : cells_(cells), surroundings_(surroundings), rowSurroundings_(surroundings.rows) {
    rowSurroundings_.strictNumber = [this](std::string_view field, const std::string& text) {
      return numberIn(field, text);
    };
    rowSurroundings_.isOwnExport = surroundings.options.isOwnExport;
    rowSurroundings_.strictCurrency = [this](const std::string& text) { return currencyIn(text); };
    for (std::size_t field = 0; field < transactionsSchema.size(); ++field) {
      columns_[field] = cells.column(transactionsSchema[field].rawValue);
      if (columns_[field]) {
        const auto value = values_.emplace(transactionsSchema[field].rawValue, "").first;
        places_.emplace_back(*columns_[field], &value->second);
      }
    }
  }

  StrictImport read() {
    learn();
    StrictImport result;
    result.rows.reserve(cells_.rowCount());
    result.lines.reserve(cells_.rowCount());
    result.positions.reserve(cells_.rowCount());
    result.times.reserve(cells_.rowCount());
    for (row_ = 0; row_ < cells_.rowCount(); ++row_) {
      if (!isEmpty(row_)) {
        readRow(result);
      }
    }
    return result;
  }

 private:
  [[nodiscard]] std::string_view cell(std::string_view field) const {
    return trimmedCell(cells_.cell(row_, field).value_or(std::string_view()));
  }
  [[nodiscard]] std::string titleOf(std::string_view field) const {
    const std::string title = cells_.columnTitle(field);
    return title.empty() ? std::string(field) : title;
  }
  [[noreturn]] void fail(std::string_view field, std::string reason) const {
    throw StatementError(cells_.line(row_), field.empty() ? "" : titleOf(field), std::move(reason));
  }
  [[nodiscard]] bool isEmpty(std::size_t row) const {
    return std::ranges::all_of(columns_, [&](const std::optional<std::size_t>& column) {
      return !column || trimmedCell(cells_.text(row, *column)).empty();
    });
  }

  void learn() {
    DayOrderRecognition days;
    DecimalMarkRecognition marks;
    const std::string tradeTitle = titleOf("tradeDate");
    const std::string settlementTitle = titleOf("settlementDate");
    struct NumberColumn {
      std::size_t column;
      std::string title;
    };
    std::vector<NumberColumn> columns;
    for (const TransactionsSchemaField& field : transactionsSchema) {
      if (const auto column = field.isNumber ? cells_.column(field.rawValue) : std::nullopt) {
        columns.push_back({*column, titleOf(field.rawValue)});
      }
    }
    for (row_ = 0; row_ < cells_.rowCount(); ++row_) {
      const std::uint32_t line = cells_.line(row_);
      if (!surroundings_.dateIn) {
        days.add(line, tradeTitle, cell("tradeDate"), settlementTitle, cell("settlementDate"));
      }
      for (const auto& [column, title] : columns) {
        marks.add(line, title, trimmedCell(cells_.text(row_, column)));
      }
    }
    const StrictImportOptions& options = surroundings_.options;
    mark_ = options.decimal                              ? *options.decimal
            : options.isOwnExport && marks.isUndecided() ? ownMark()
                                                         : marks.mark();
    order_ = surroundings_.dateIn ? DayOrder::ymd : orderOf(days);
  }

  [[nodiscard]] DecimalMark ownMark() const {
    const auto text = DecimalNumberFormatter().string(Decimal(3) / 2);
    return text && text->contains(',') ? DecimalMark::comma : DecimalMark::point;
  }

  [[nodiscard]] DayOrder orderOf(const DayOrderRecognition& days) const {
    const YearMonthDay today = YearMonthDay::of(Date::now(), surroundings_.calendar);
    const StrictImportOptions& options = surroundings_.options;
    const auto own = options.isOwnExport && !options.days ? orderOfShortDates() : std::nullopt;
    try {
      return days.verdict(today, options.days).order;
    } catch (const StatementError&) {
      if (!own) {
        throw;
      }
    }
    return days.verdict(today, own).order;
  }

  void readRow(StrictImport& result) {
    auto trade = dateIn("tradeDate");
    auto settlement = dateIn("settlementDate");
    trade = trade ? trade : settlement;
    settlement = settlement ? settlement : trade;
    if (!trade) {
      fail(cells_.cell(row_, "tradeDate") ? "tradeDate" : "settlementDate", "the cell is empty.");
    }
    for (const auto& [column, text] : places_) {
      *text = cells_.text(row_, column);
    }
    if (const auto type = values_.find("type"); type != values_.end()) {
      type->second = trimmedCell(type->second);
    }
    const ImportRow row(values_, rowSurroundings_);
    auto kind = kindOf(row);
    auto note = notes_.note(row.note(kind));
    result.rows.push_back({std::move(kind), *trade, *settlement, std::move(note)});
    result.lines.push_back(cells_.line(row_));
    result.positions.push_back(row_);
    result.times.push_back(time_);
  }

  [[nodiscard]] BasicTransaction::Kind kindOf(const ImportRow& row) const {
    try {
      BasicTransaction::Kind kind = row.kind();
      if (auto* yield = std::get_if<BasicTransaction::Yield>(&kind)) {
        // Brokers that know no number of shares write 0; the ledger knows how many are held.
        if (yield->netShares && yield->netShares->isZero()) {
          yield->netShares.reset();
        }
      }
      return kind;
    } catch (const TransactionsImportError& error) {
      fail("", error.description().value_or(""));
    }
  }

  [[nodiscard]] std::optional<Date> dateIn(std::string_view field) {
    const std::string_view text = cell(field);
    if (field == "tradeDate") {
      time_.reset();
    }
    if (text.empty()) {
      return std::nullopt;
    }
    if (surroundings_.dateIn) {
      const auto date = surroundings_.dateIn(text);
      if (!date) {
        fail(field, "“" + std::string(text) + "” is not a day.");
      }
      return date;
    }
    LastDay& last = field == "tradeDate" ? lastTrade_ : lastSettlement_;
    if (last.text != text) {
      const auto parsed = DayCell::read(text);
      const auto day = parsed ? parsed->day(order_) : std::nullopt;
      if (!day) {
        fail(field, "“" + std::string(text) + "” is not a day.");
      }
      last = {std::string(text), day->startIn(surroundings_.calendar), parsed->time()};
    }
    time_ = field == "tradeDate" || !time_ ? last.time : time_;
    return last.date;
  }

  [[nodiscard]] std::optional<Decimal> numberIn(std::string_view field,
                                                const std::string& text) const {
    if (trimmedCell(text).empty()) {
      if (field == "cashAmount" || field == "numberOfShares") {
        // A yield may leave its shares out, and asks for them only where the cell holds something.
        fail(field, "the cell is empty.");
      }
      return std::nullopt;
    }
    const auto number = NumberCell::read(text);
    const auto value = number ? number->value(mark_) : std::nullopt;
    if (!value) {
      const auto own = surroundings_.options.isOwnExport
                           ? surroundings_.rows.numberFormatter.decimalFromString(text)
                           : std::nullopt;
      if (!own) {
        fail(field, "“" + std::string(trimmedCell(text)) + "” is not a number.");
      }
      return own;
    }
    if (field == "cashAmount" && !number->currencyCode().empty() &&
        number->currencyCode() != currencyOfRow()) {
      fail(field, "“" + std::string(trimmedCell(text)) + "” is in " + number->currencyCode() +
                      ", but the row is in " + currencyOfRow() + ".");
    }
    return value;
  }

  [[nodiscard]] std::string currencyOfRow() const {
    const std::string_view named = firstWord(cell("cashCurrency"));
    if (Currency::byCode().contains(named)) {
      return std::string(named);
    }
    return surroundings_.rows.defaultCurrencyCode.value_or(
        std::string(surroundings_.rows.primaryCurrency.code));
  }

  [[nodiscard]] std::optional<Currency> currencyIn(const std::string& text) const {
    const std::string_view code = trimmedCell(text);
    if (code.empty()) {
      return std::nullopt;
    }
    const auto found = Currency::byCode().find(code);
    if (found == Currency::byCode().end()) {
      fail("cashCurrency", "“" + std::string(code) + "” is not the code of a currency.");
    }
    return found->second;
  }

  struct LastDay {
    std::string text;
    std::optional<Date> date;
    std::optional<std::int64_t> time;
  };

  const ImportedCells& cells_;
  const StrictImportSurroundings& surroundings_;
  ImportSurroundings rowSurroundings_;
  DecimalMark mark_ = DecimalMark::point;
  DayOrder order_ = DayOrder::ymd;
  std::array<std::optional<std::size_t>, transactionsSchema.size()> columns_;
  /// The cells of a row, in one map for all rows: its texts keep their room.
  ImportBroker::ValuesByField values_;
  std::vector<std::pair<std::size_t, std::string*>> places_;  ///< of values_, by column
  std::size_t row_ = 0;
  std::optional<std::int64_t> time_;
  LastDay lastTrade_;
  LastDay lastSettlement_;
  NoteReader notes_;
};

}  // namespace

std::vector<std::size_t> StrictImport::orderOfTime() const {
  std::vector<std::size_t> order(rows.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const bool falls = std::ranges::is_sorted(
      rows, [](const auto& left, const auto& right) { return left.tradeDate > right.tradeDate; });
  if (falls) {
    std::ranges::reverse(order);
  }
  const bool haveTimes =
      std::ranges::all_of(times, [](const auto& time) { return time.has_value(); });
  std::ranges::stable_sort(order, [&](std::size_t left, std::size_t right) {
    const auto& first = rows[left];
    const auto& second = rows[right];
    if (first.settlementDate != second.settlementDate) {
      return first.settlementDate < second.settlementDate;
    }
    if (first.tradeDate != second.tradeDate) {
      return first.tradeDate < second.tradeDate;
    }
    return haveTimes && times[left] < times[right];
  });
  return order;
}

StrictImport StrictImport::inOrderOfTime() const {
  StrictImport sorted;
  for (const std::size_t place : orderOfTime()) {
    sorted.rows.push_back(rows[place]);
    sorted.lines.push_back(lines[place]);
    sorted.positions.push_back(positions[place]);
    sorted.times.push_back(times[place]);
  }
  return sorted;
}

StrictImport readStrictly(const ImportedCells& cells,
                          const StrictImportSurroundings& surroundings) {
  return StrictReader(cells, surroundings).read();
}

bool hasOwnHeadings(const ImportedCells& cells) {
  if (cells.rowCount() == 0 || !cells.cell(0, "type") || !cells.cell(0, "tradeDate")) {
    return false;
  }
  return std::ranges::all_of(transactionsSchema, [&](const TransactionsSchemaField& field) {
    return !cells.cell(0, field.rawValue) ||
           cells.columnTitle(field.rawValue) == field.exportedTitle;
  });
}

}  // namespace corvane
