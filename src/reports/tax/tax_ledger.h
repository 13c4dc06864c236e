// The rows of portfolios as taxes see them: by equity, over all portfolios of all who count.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/tax/tax_settings.h"
#include "ledger/portfolio/portfolio.h"
#include "reports/inquiry/cancellation.h"
#include "reports/tax/tax_walk.h"

namespace corvane {

struct TaxedPortfolio {
  PortfolioPointer portfolio;
  TaxRole role = TaxRole::taxable;
  std::string person = {};    ///< of an affiliated portfolio, whose it is
  bool isRegistered = false;  ///< an affiliated portfolio that is a registered account
};

/// `portfolios` with the roles that `roleOf` tells of each; whose role is not known is taxable.
[[nodiscard]] std::vector<TaxedPortfolio> taxedPortfolios(
    std::span<const PortfolioPointer> portfolios,
    const std::function<std::optional<PortfolioTaxRole>(const PortfolioPointer&)>& roleOf);

struct TaxYearQuestion {
  YearMonthDay first;
  YearMonthDay last;
  YearMonthDay today;
  std::string person = {};   ///< whose year it is; empty for the user
  bool byTradeDate = false;  ///< else by settlement
  TaxCountry country = TaxCountry::canada;
  Cancellation cancellation = {};
};

/// The question about the year that starts in `year`, as `settings` have it.
[[nodiscard]] TaxYearQuestion taxYearQuestion(const TaxSettings& settings, int year,
                                              const YearMonthDay& today);

/// Where a line of the report stands in a ledger.
struct TaxRowPlace {
  PortfolioPointer portfolio;
  std::size_t position = 0;  ///< in the ledger, from 0
  EquityPointer equity;      ///< null for cash adjustments
  YearMonthDay settlement;
  YearMonthDay trade;

  [[nodiscard]] const PortfolioTransaction& row() const {
    return *portfolio->transactions()[position];
  }
};

/// The rows of one equity in portfolios of one primary currency, ascending by day.
struct TaxedEquity {
  EquityPointer equity;
  Currency currency;
  std::vector<TaxRow> rows;
  std::vector<TaxRowPlace> places;  ///< of each row
};

struct TaxLedger {
  std::vector<TaxHolder> holders;  ///< a taxable one for each person, the user without a name
  std::vector<TaxedEquity> equities;

  /// The line of the equity in portfolios of that primary currency, or null.
  [[nodiscard]] const TaxedEquity* find(const EquityPointer& equity,
                                        const Currency& currency) const;
};

/// The text that begins the notes of rows which book a denied loss into a cost base.
inline constexpr std::string_view deniedLossNote = "Denied loss";

/// The rows up to 30 days after the question's last day; of `equity` alone where it is not null. A
/// row that books a denied loss is left out where losses are denied, since the walk adds them
/// itself. On the main queue, or on any thread for frozen ledgers.
[[nodiscard]] TaxLedger taxLedger(std::span<const TaxedPortfolio> portfolios,
                                  const TaxYearQuestion& question, const Calendar& calendar,
                                  const EquityPointer& equity = nullptr);

/// What walkTaxes() is to go by for `line`.
[[nodiscard]] TaxRules taxRules(const TaxedEquity& line, const TaxYearQuestion& question);

/// Whether `holder` is who the question asks about.
[[nodiscard]] bool isSubject(const TaxHolder& holder, const TaxYearQuestion& question);

}  // namespace corvane
