// Quotes for simulated traders, with little to write.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "scenario/scenario_analyzer.h"
#include "support/decimals.h"

namespace corvane::testing {

/// An equity of New York in US dollars and the quotes of its sessions.
class Market {
 public:
  Market() {
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/New_York"));
    equity->currency = Currency::usd();
  }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  EquityPointer equity = provider->equityWithId("ABC");
  std::vector<Quote> quotes;

  /// Opens the next session. The first is that of 2023-01-03.
  Market& nextDay() {
    next_ = *equity->calendar.date({{CalendarUnit::year, 2023},
                                    {CalendarUnit::month, 1},
                                    {CalendarUnit::day, 3 + days_++},
                                    {CalendarUnit::hour, 10}});
    return *this;
  }
  /// A quote of the next minute of the session; "" for a price that is missing.
  Market& quote(const std::string& low, const std::string& high, const std::string& close) {
    if (days_ == 0) {
      nextDay();
    }
    Quote made;
    made.fromDate = next_;
    made.toDate = next_ = next_ + 60;
    made.low = Decimal::fromWholeString(low);
    made.high = Decimal::fromWholeString(high);
    made.close = Decimal::fromWholeString(close);
    quotes.push_back(made);
    return *this;
  }

  [[nodiscard]] ScenarioAnalyzer analyzer() const {
    return {equity, quotes, tradingDayNumbers(quotes, *equity)};
  }
  [[nodiscard]] ScenarioAnalyzer::Analysis analyze(const InvestmentStrategy& strategy,
                                                   const Decimal& initialInvestment = 1000) const {
    return analyzer().analyze(std::nullopt, strategy, initialInvestment);
  }

 private:
  int days_ = 0;
  Date next_;
};

/// Shares of a row that trades, else 0.
inline Decimal sharesAdded(const PortfolioTransaction& row) {
  const auto* trade = std::get_if<BasicTransaction::Trade>(&row.basic.kind);
  return trade == nullptr ? Decimal() : trade->sharesAdded;
}

/// "open 0 10 0 1000": event, shares added, reference price, shares held, cash after each row.
inline std::vector<std::string> rowsOf(const ScenarioAnalyzer::Analysis& analysis) {
  static constexpr const char* names[] = {"open", "close",       "buy",
                                          "sell", "stopLossBuy", "stopLossSell"};
  std::vector<std::string> lines;
  for (const auto& row : analysis.portfolio->transactions()) {
    const auto& made = dynamic_cast<const ScenarioPortfolio::Transaction&>(*row);
    std::string line = names[static_cast<int>(made.eventType.value())];
    for (const Decimal& figure : {sharesAdded(made), made.mostRecentSharePrice,
                                  made.runningNetShares, made.cashNet.value()}) {
      line += " " + figure.description();
    }
    lines.push_back(line);
  }
  return lines;
}

}  // namespace corvane::testing
