// What a workspace keeps about taxes: when its tax year starts, whose rules hold, and to whom each
// portfolio belongs.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "core/money/year_month_day.h"
#include "platform/data/json.h"

namespace corvane {

/// What a portfolio is to its owner's tax return.
enum class TaxRole {
  taxable,     ///< the user's own
  registered,  ///< of the user, not taxed; its shares count and what it is given is lost
  affiliated,  ///< of somebody close, who is taxed for himself
  notMine,     ///< plays no part
};

/// The role that the user has given to a portfolio.
struct PortfolioTaxRole {
  TaxRole role = TaxRole::taxable;
  std::string person = {};  ///< of an affiliated portfolio, whose it is
  bool isRegistered =
      false;  ///< an affiliated portfolio that is a registered account of its person

  friend bool operator==(const PortfolioTaxRole&, const PortfolioTaxRole&) = default;
};

/// "taxable", "registered", "affiliated", "notMine": the words of files and of the console.
[[nodiscard]] std::string_view wordFor(TaxRole role);
[[nodiscard]] std::optional<TaxRole> taxRoleNamed(std::string_view word);

/// What the name of a portfolio suggests: a registered account where one of its words is RRSP,
/// TFSA, RESP, FHSA, LIRA, RRIF, REER or CELI. A question to ask, never an answer: nothing is set
/// by it.
[[nodiscard]] std::optional<PortfolioTaxRole> proposedTaxRole(std::string_view portfolioName);

enum class TaxCountry {
  none,           ///< an average cost for each person, and nothing denied
  canada,         ///< the same, and superficial losses are denied
  unitedKingdom,  ///< the same day's purchases, then those of the next 30 days, then the pool
};

/// "none", "canada", "unitedKingdom"
[[nodiscard]] std::string_view wordFor(TaxCountry country);
[[nodiscard]] std::optional<TaxCountry> taxCountryNamed(std::string_view word);

/// The settings of a workspace.
struct TaxSettings {
  int startMonth = 1;  ///< the tax year's first day, one that every year has
  int startDay = 1;
  TaxCountry country = TaxCountry::canada;
  bool byTradeDate = false;  ///< what counts is the day of the trade; else that of settlement

  /// The first day of the tax year that starts in `year`, and the last one.
  [[nodiscard]] YearMonthDay firstDay(int year) const { return {year, startMonth, startDay}; }
  [[nodiscard]] YearMonthDay lastDay(int year) const;
  /// The year in which the tax year that holds `day` starts.
  [[nodiscard]] int yearOf(const YearMonthDay& day) const;

  friend bool operator==(const TaxSettings&, const TaxSettings&) = default;
};

/// Whether `month` and `day` name a day that every year has.
[[nodiscard]] bool isDayOfEveryYear(int month, int day);
/// The month and the day of "04-06"; none for other texts and for 02-29.
[[nodiscard]] std::optional<std::pair<int, int>> dayOfEveryYear(std::string_view text);

/// {"yearStart":"04-06","country":"canada","countedOn":"trade"}. Words that are not known, as from
/// a newer program, count as absent.
[[nodiscard]] JSONValue json(const TaxSettings& settings);
[[nodiscard]] TaxSettings taxSettings(const JSONValue& value);

/// {"role":"affiliated","person":"Kim","registered":true}; none for a word that is not known.
[[nodiscard]] JSONValue json(const PortfolioTaxRole& role);
[[nodiscard]] std::optional<PortfolioTaxRole> portfolioTaxRole(const JSONValue& value);

}  // namespace corvane
