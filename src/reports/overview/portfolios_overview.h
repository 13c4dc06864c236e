// What all portfolios of a workspace are worth at the latest prices, and what the latest session
// has done to them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "core/market/quote_provider.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// Equities without a latest price, and currencies without a latest rate.
struct UnpricedAssets {
  EquitySet equities = {};
  std::unordered_set<Currency> currencies = {};

  [[nodiscard]] bool isEmpty() const { return equities.empty() && currencies.empty(); }
  void add(const UnpricedAssets& others);
  /// Symbols and codes, in their order.
  [[nodiscard]] std::vector<std::string> names() const;
};

/// All portfolios together, at the latest prices and the latest rates: figures of the balances that
/// ledgers end with, as the heading of each portfolio has them. Money is in `currency` unless it
/// says otherwise.
struct PortfoliosOverview {
  /// A latest price counts for the day's change where it was paid less than this before the newest
  /// of them. Exchanges around the world take their turns within it, and what was last traded the
  /// day before, at the same time of day, is outside of it.
  static constexpr double sessionSeconds = 16 * 3600;

  /// Of one portfolio, or of all of them.
  struct Figures {
    std::optional<Decimal> value;        ///< none where a price or rate is missing
    std::optional<Decimal> netDeposits;  ///< at the latest rates; none where one is missing
    /// What the latest session has done: shares held now × (latest price − close before it) at the
    /// latest rates. Shares count as if they had been held since that close, also those bought or
    /// sold since. Cash, dividends and what rates did meanwhile do not count, nor does an equity
    /// whose latest price is of an earlier session or whose close before is not known. None where
    /// equities are held and none of them counts.
    std::optional<Decimal> dayChange;
    /// Something is left out of the value, so that deposits do not compare with it.
    bool isPartial = false;

    /// Value less net deposits; none where something is left out.
    [[nodiscard]] std::optional<Decimal> gain() const;
    /// The change by the value before it; none where that is not above 0.
    [[nodiscard]] std::optional<double> dayRate() const;
  };

  struct PortfolioLine {
    PortfolioPointer portfolio;
    Figures figures;
    std::optional<double> share;  ///< of the total value
  };

  /// An equity, or the cash in one currency.
  struct HoldingLine {
    struct Part {
      PortfolioPointer portfolio;
      Decimal held;
    };

    EquityPointer equity;               ///< null for cash
    Currency currency;                  ///< of the price, or of the cash
    Decimal held = {};                  ///< shares, or cash in its own currency
    std::optional<Decimal> price = {};  ///< in `currency` of this line; none for cash
    std::optional<Decimal> value = {};  ///< none where price or rate is missing
    std::optional<double> share = {};   ///< of the total value
    /// In `currency` of this line; none where the price does not count for the day's change.
    std::optional<Decimal> closeBefore = {};
    std::optional<Decimal> change = {};  ///< of the day; none where it does not count, and for cash
    /// Value less cost base, which each portfolio has in its own currency: at the latest rates, so
    /// that of a portfolio in another currency it is that portfolio's gain, converted. None for
    /// cash.
    std::optional<Decimal> gain = {};
    std::vector<Part> parts = {};  ///< in the order of the portfolios

    /// By how much the price has moved; none without a change.
    [[nodiscard]] std::optional<double> dayRate() const;
  };

  /// All that is held in one currency.
  struct CurrencyLine {
    Currency currency;
    std::optional<Decimal> amount;  ///< in that currency; none where a price is missing
    std::optional<Decimal> value;
    std::optional<double> share;  ///< of the total value
  };

  Currency currency;
  Figures total = {};
  std::vector<PortfolioLine> portfolios = {};
  /// Equities from the most valuable one down, then cash in the same way; what has no value stands
  /// last of each. None of nothing.
  std::vector<HoldingLine> holdings = {};
  std::vector<CurrencyLine> currencies = {};  ///< from the most valuable one down

  UnpricedAssets missing = {};  ///< without which there are no totals
  /// Priced equities that are not in the day's change, by symbol.
  std::vector<EquityPointer> ofEarlierSession = {};
  std::vector<EquityPointer> withoutCloseBefore = {};
  /// The equity held whose latest price is the newest; null where none has one with a time.
  EquityPointer newest = nullptr;
};

/// The overview of `portfolios` in `currency`. What is in `leftOut` counts as not held, but for its
/// line. Reads no rows but the balances they have come to. Main queue only.
[[nodiscard]] PortfoliosOverview portfoliosOverview(std::span<const PortfolioPointer> portfolios,
                                                    const Currency& currency, QuoteProvider& quotes,
                                                    const UnpricedAssets& leftOut = {});

/// The exchange rates that the overview needs. Whoever refreshes them has to hold them as long as
/// they are needed. Main queue only.
[[nodiscard]] EquitySet ratesOfOverview(std::span<const PortfolioPointer> portfolios,
                                        const Currency& currency, QuoteProvider& quotes);

}  // namespace corvane
