// A statement's rows as they would be recorded, each with what becomes of it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/profiles/statement_profile.h"
#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"
#include "ledger/transaction/basic_transaction.h"
#include "platform/time/calendar.h"

namespace corvane {

/// What becomes of a row.
enum class RowVerdict {
  isNew,
  present,         ///< already in the ledger
  perhapsPresent,  ///< it, or one like it: left out unless the user says otherwise
  leftOut,
  belongs,  ///< to another line, with which it is one transaction
  asks,     ///< something that only the user knows
  refused,  ///< no transaction comes of it
  ledgerRefuses
};

/// "new", "already there" and so on.
[[nodiscard]] std::string_view displayName(RowVerdict verdict);

/// What only the user knows of a row.
struct RowQuestion {
  enum class About { symbol, currency, rate, kind };
  About about = About::symbol;
  /// What the file calls it: the ISIN or name of an equity, the code of a currency, the word for
  /// the kind.
  std::string subject;
  std::string name;      ///< of the equity, where the subject is its ISIN
  std::string currency;  ///< of the row, where it is told
  std::string proposal;  ///< an answer that may be right; empty for none
  friend bool operator==(const RowQuestion&, const RowQuestion&) = default;
};

struct StatementRow {
  std::uint32_t line = 0;  ///< of the file, from 1
  RowVerdict verdict = RowVerdict::isNew;
  std::string reason;                   ///< of every verdict but isNew
  std::string remedy;                   ///< a sentence of what to say on the console
  std::optional<RowQuestion> question;  ///< whose answer would help
  std::string kind;                     ///< in the words of layouts
  std::string symbol;                   ///< or what stands in its place
  /// What is recorded: one transaction, or a sale and the tax that was withheld. None where nothing
  /// can be made of the row.
  std::vector<BasicTransaction> transactions;
  std::string rate;                  ///< of a foreign row, and where it is from
  std::optional<std::int64_t> time;  ///< nanoseconds of the day
  std::string id;                    ///< the broker's number of the row
};

/// What the user has said about earlier files, by the name of their layout.
struct RememberedAnswers {
  std::map<std::string, std::string, std::less<>> currencies;  ///< codes
  std::map<std::string, std::set<std::string>, std::less<>> accounts;
  std::set<std::string, std::less<>> marketRates;  ///< layouts for which the market may be asked
};

/// What the user has said about a file.
struct StatementOptions {
  std::optional<std::string> profile;  ///< the id of a layout
  std::optional<DayOrder> days;
  std::optional<DecimalMark> decimal;
  std::optional<std::string> currencyCode;  ///< of the account, where no column tells it
  /// Symbols by ISIN, name or the broker's own symbol, folded.
  std::map<std::string, std::string, std::less<>> symbols;
  /// What words of the type's columns mean that the layout does not know; case does not count.
  std::map<std::string, StatementKind, std::less<>> kinds;
  std::set<std::string> accounts;    ///< whose rows are read; empty for all
  std::set<std::uint32_t> leaveOut;  ///< lines
  /// Lines that are recorded although the ledger may have them, and whether all such lines are.
  std::set<std::uint32_t> twins;
  bool recordsTwins = false;
  /// Whether the user lets the market tell missing rates; of no use to the reading itself.
  bool takesMarketRates = false;
  RememberedAnswers remembered;  ///< where nothing else is said
};

/// The portfolio that a statement is read for.
struct StatementSurroundings {
  Currency primaryCurrency;
  Calendar calendar;
  YearMonthDay today;
  std::function<EquityPointer(std::string_view symbol)> equityFor;
  /// The shares of an equity that are held after a day, without the file; null for none.
  std::function<Decimal(const EquityPointer& equity, Date day)> heldAfter;
  /// The rate of a currency on a day, and where it is from; null where none is looked up.
  struct Rate {
    Decimal rate;
    std::string source;
  };
  std::function<std::optional<Rate>(const Currency& currency, YearMonthDay day)> rateOf;
};

}  // namespace corvane
