// A ledger with prices for tests of reports.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "reports/series/market_history.h"
#include "support/ledger_builder.h"

namespace corvane::testing {

/// The ledger of the tests, where days are of March 2021 unless a month is named, and the prices
/// that a test gives it.
class ReportWorld : public Ledger {
 public:
  MarketHistory market;
  const Calendar calendar{*TimeZone::withIdentifier("America/Toronto")};

  ReportWorld() {
    for (const auto& equity : {abc, xyz}) {
      equity->calendar = calendar;
    }
  }

  static YearMonthDay march(int dayOfMonth) { return {2021, 3, dayOfMonth}; }

  void quote(const EquityPointer& equity, std::vector<std::pair<int, std::string>> closes) {
    market.prices[equity] = lineOf(closes);
  }
  void rate(std::vector<std::pair<int, std::string>> closes) {
    market.rates[{Currency::usd(), Currency::cad()}] = lineOf(closes);
  }

  BasicTransaction buyOf(const EquityPointer& equity, const std::string& shares,
                         const std::string& cost, const std::string& equivalent) {
    return make(BasicTransaction::Trade{
        equity, {equity->currency, dec(cost)}, dec(equivalent), dec(shares)});
  }

 private:
  static PriceLine lineOf(const std::vector<std::pair<int, std::string>>& closes) {
    PriceLine line;
    for (const auto& [dayOfMonth, price] : closes) {
      line.closes.push_back({march(dayOfMonth), dec(price)});
    }
    return line;
  }
};

}  // namespace corvane::testing
