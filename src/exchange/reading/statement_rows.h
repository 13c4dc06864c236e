// All rows of a statement, packed so that millions of them can be held.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/money/currency_amount.h"
#include "core/money/year_month_day.h"
#include "exchange/csv/csv_row.h"
#include "exchange/pools/packed_decimals.h"
#include "exchange/pools/text_pool.h"
#include "exchange/profiles/statement_profile.h"
#include "exchange/reading/statement_row.h"
#include "platform/time/calendar.h"

namespace corvane {

/// The figures of a row on its way to a transaction.
struct RowFigures {
  StatementKind kind = StatementKind::ignore;
  YearMonthDay trade;  ///< all fields 0 where it is not known
  YearMonthDay settlement;
  EquityPointer equity;
  Decimal shares;
  std::optional<Decimal> sharesAfter;
  CurrencyAmount cash{Currency::noCurrency(), 0};  ///< positive for a purchase
  Decimal tax;
  std::optional<Decimal> equivalent;  ///< of the cash, in the portfolio's currency
  std::optional<Decimal> rate;
  std::optional<Decimal> cost;
};

/// Why a row is not new, or what else is to be said of it.
struct RowStop {
  RowVerdict verdict = RowVerdict::leftOut;
  std::string reason;
  std::string remedy = {};
  std::optional<RowQuestion> question = {};
};

/// A row before it is packed.
struct RowDraft {
  std::uint32_t line = 0;
  std::optional<RowStop> stop;   ///< none for a row that is new
  std::string_view unknownWord;  ///< in place of the kind
  std::string_view id;
  std::string_view note;
  std::string symbol;
  std::optional<std::int64_t> time;
  RowFigures figures;
};

/// A list of rows in 64 bytes each; beside it stand their texts, those that rows share once, and
/// what only few rows have. A row is made on the way as a StatementRow, so what is asked of many of
/// them is asked for by itself. What it hands out as a view is good as long as the list. Any
/// thread, one at a time.
class StatementRows {
 public:
  /// `calendar` tells at which moment a day starts.
  explicit StatementRows(Calendar calendar = Calendar()) : calendar_(std::move(calendar)) {}

  [[nodiscard]] std::size_t size() const { return records_.size(); }
  [[nodiscard]] bool empty() const { return records_.empty(); }
  [[nodiscard]] StatementRow operator[](std::size_t row) const;
  [[nodiscard]] IndexIterator<StatementRows> begin() const { return {this, 0}; }
  [[nodiscard]] IndexIterator<StatementRows> end() const { return {this, size()}; }

  [[nodiscard]] std::uint32_t line(std::size_t row) const { return records_[row].line; }
  [[nodiscard]] RowVerdict verdict(std::size_t row) const { return records_[row].verdict; }
  [[nodiscard]] std::size_t count(RowVerdict verdict) const;
  [[nodiscard]] std::string_view reason(std::size_t row) const;
  [[nodiscard]] std::string_view symbol(std::size_t row) const;
  [[nodiscard]] std::string_view id(std::size_t row) const;
  [[nodiscard]] std::string_view kind(std::size_t row) const;
  [[nodiscard]] std::string_view rate(std::size_t row) const;
  [[nodiscard]] std::string_view remedy(std::size_t row) const;
  /// Null where the row asks nothing.
  [[nodiscard]] const RowQuestion* question(std::size_t row) const;
  [[nodiscard]] std::optional<std::int64_t> time(std::size_t row) const;
  /// The number of transactions that come of the row: 0, 1 or 2.
  [[nodiscard]] std::size_t transactionCount(std::size_t row) const;
  [[nodiscard]] std::vector<BasicTransaction> transactions(std::size_t row) const;
  /// The days of the trade and of settlement, counted from 1970; unknownDay where not known.
  [[nodiscard]] std::int32_t tradeDay(std::size_t row) const { return records_[row].trade; }
  [[nodiscard]] std::int32_t settlementDay(std::size_t row) const {
    return records_[row].settlement;
  }
  static constexpr std::int32_t unknownDay = INT32_MIN;

  /// The rows in the order of the lines of the file.
  [[nodiscard]] std::vector<std::uint32_t> byLine() const;

  // Filling it.

  void reserve(std::size_t rows) { records_.reserve(rows); }
  void add(const RowDraft& draft);
  /// A row of which nothing but its line is of use.
  void addApart(std::uint32_t line, RowVerdict verdict, std::string_view reason);
  /// Appends rows that were added with addApart.
  void appendApart(const StatementRows& others);

  void stop(std::size_t row, const RowStop& stop);
  void setRemedy(std::size_t row, std::string_view remedy);
  [[nodiscard]] RowFigures figures(std::size_t row) const;
  void setFigures(std::size_t row, const RowFigures& figures);
  /// Says that `figures` are what is recorded: the equivalent has the sign of the cash, and the
  /// cost and the shares are those of the transaction.
  void finish(std::size_t row, const RowFigures& figures, std::string_view rate);

  /// Brings the rows into `order`, which names each of them once.
  void reorder(const std::vector<std::uint32_t>& order);
  void reverse();

 private:
  static constexpr std::int64_t unknownTime = INT64_MIN;
  static constexpr std::uint32_t nothing = 0;  ///< of places in lists, which count from 1

  struct Record {
    std::uint32_t line = 0;
    TextPool::Key reason = TextPool::empty;
    TextPool::Key symbol = TextPool::empty;
    TextPool::Key id = TextPool::empty;
    TextPool::Key note = TextPool::empty;
    std::uint32_t equity = nothing;
    std::uint32_t extra = nothing;
    std::int32_t trade = unknownDay;
    std::int32_t settlement = unknownDay;
    std::uint16_t currency = nothing;
    RowVerdict verdict = RowVerdict::isNew;
    std::uint8_t kind = unknownKind;  ///< and whether the row is finished, in the top bit
    std::int64_t time = unknownTime;
    PackedDecimals::Word cash = PackedDecimals::none;
    PackedDecimals::Word shares = PackedDecimals::none;
  };
  static constexpr std::uint8_t unknownKind = 0x7F;
  static constexpr std::uint8_t finishedBit = 0x80;
  static_assert(sizeof(Record) == 64);

  /// What few rows have.
  struct Extra {
    PackedDecimals::Word sharesAfter = PackedDecimals::none;
    PackedDecimals::Word tax = PackedDecimals::none;
    PackedDecimals::Word equivalent = PackedDecimals::none;
    PackedDecimals::Word rate = PackedDecimals::none;
    PackedDecimals::Word cost = PackedDecimals::none;
    TextPool::Key remedy = TextPool::empty;
    TextPool::Key rateText = TextPool::empty;
    TextPool::Key unknownWord = TextPool::empty;
    std::uint32_t question = nothing;
  };

  [[nodiscard]] Extra& extraOf(Record& record);
  [[nodiscard]] const Extra* extraOf(const Record& record) const;
  void pack(Record& record, const RowFigures& figures);
  [[nodiscard]] std::uint32_t placeOf(const EquityPointer& equity);
  [[nodiscard]] std::uint16_t placeOf(const Currency& currency);
  [[nodiscard]] std::uint32_t placeOf(const RowQuestion& question);
  [[nodiscard]] Date dateOf(std::int32_t day) const;
  [[nodiscard]] BasicTransaction::Kind transactionKind(const RowFigures& figures) const;

  Calendar calendar_;
  std::vector<Record> records_;
  std::vector<Extra> extras_;
  TextPool texts_;
  PackedDecimals numbers_;
  std::vector<EquityPointer> equities_;
  std::unordered_map<EquityPointer, std::uint32_t> equityPlaces_;
  std::vector<Currency> currencies_;
  std::vector<RowQuestion> questions_;
  std::unordered_map<std::string, std::uint32_t> questionPlaces_;
};

}  // namespace corvane
