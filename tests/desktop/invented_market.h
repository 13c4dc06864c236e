// A market for windows in tests: smooth invented prices, at once and without a network.
#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "support/scripted_quote_provider.h"

namespace corvane::testing {

/// Knows any symbol. Its price starts at 20 to 120, grows by some percent a year and swings; a pair
/// of currencies swings about 1.3. Searches find what was typed.
class InventedMarket : public ScriptedQuoteProvider {
 public:
  InventedMarket()
      : ScriptedQuoteProvider([](const QuoteQuery& query) {
          return ScriptedQuoteProvider::quotes(
              dailyBars(query, [&](const YearMonthDay& day) { return barOf(query.equity, day); }));
        }) {}

  int refreshes = 0;  ///< how often it was asked for recent prices

  [[nodiscard]] std::string providerName() const override { return "InventedMarket"; }

  /// The equity with its name, currency and recent price filled in.
  [[nodiscard]] EquityPointer equityWithId(std::string_view id) override {
    const EquityPointer equity = ScriptedQuoteProvider::equityWithId(id);
    if (!equity->isAuthoritative) {
      equity->isAuthoritative = true;
      equity->name = std::string(id) + " Incorporated";
      equity->exchange = "Toronto";
      equity->currency = Currency::cad();
      const Date now = Date::now();
      const YearMonthDay today = YearMonthDay::of(now, equity->calendar);
      equity->recentPrice = priceOf(equity->id(), today);
      equity->previousClosePrice = priceOf(equity->id(), {today.year, today.month, today.day - 1});
      equity->recentDate = now;
    }
    return equity;
  }

  [[nodiscard]] EquityPointer exchangeRateEquity(const Currency& from,
                                                 const Currency& to) override {
    return equityWithId(std::string(from.code) + std::string(to.code) + "=X");
  }

  void searchEquities(std::string text, EquitiesCompletion completion) override {
    DispatchQueue::main()->async(
        [found = equityWithId(text), completion = std::move(completion)]() mutable {
          completion(std::vector{std::move(found)});
        });
  }

  void refreshEquities(std::vector<EquityPointer> /*equities*/,
                       RefreshCompletion completion) override {
    ++refreshes;
    DispatchQueue::main()->async(
        [completion = std::move(completion)]() mutable { completion(nullptr); });
  }

 private:
  static Decimal priceOf(const std::string& id, const YearMonthDay& day) {
    const double days = day.year * 365.25 + day.month * 30.4 + day.day;
    const auto seed = static_cast<double>(std::hash<std::string>()(id) % 1000) / 1000;
    const bool isPair = id.ends_with("=X");
    const double trend = isPair ? 1.3 : (20 + 100 * seed) * std::exp((days - 736000) / 7000);
    const double swing = 1 + (isPair ? 0.05 : 0.15) * std::sin(days / (60 + 40 * seed)) +
                         0.03 * std::sin(days / 4 + seed);
    const long cents = std::lround(trend * swing * (isPair ? 10000 : 100));
    return Decimal::fromWholeString(std::to_string(cents)).value() / Decimal(isPair ? 10000 : 100);
  }

  static std::optional<Quote> barOf(const EquityPointer& equity, const YearMonthDay& day) {
    const Decimal price = priceOf(equity->id(), day);
    Quote bar;
    bar.open = bar.close = bar.low = bar.high = price;
    return bar;
  }
};

}  // namespace corvane::testing
