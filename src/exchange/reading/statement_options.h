// What a statement is read with: what the user has said, and the portfolio that it is read for.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "core/market/equity_info.h"
#include "exchange/profiles/statement_profile.h"
#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"
#include "platform/time/calendar.h"

namespace corvane {

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
  /// The rate of a currency on a day, and where it is from; null where none is looked up.
  struct Rate {
    Decimal rate;
    std::string source;
  };
  std::function<std::optional<Rate>(const Currency& currency, YearMonthDay day)> rateOf;
  /// Told again and again what part of the reading is done, from 0 to 1; may be null. What it
  /// throws ends the reading.
  std::function<void(double fraction)> progress;
};

}  // namespace corvane
