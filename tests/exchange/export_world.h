// A ledger in three currencies with a row of every kind, and the cells that an exporter gives.
#pragma once

#include <stdlib.h>

#include <map>
#include <string>
#include <vector>

#include "exchange/brokers/import_export_broker.h"
#include "support/ledger_builder.h"

namespace corvane::testing {

/// The texts of one locale, whatever that of the machine.
class InLocale {
 public:
  explicit InLocale(const char* identifier) { setenv("LC_ALL", identifier, 1); }
  InLocale(const InLocale&) = delete;
  InLocale& operator=(const InLocale&) = delete;
  ~InLocale() { unsetenv("LC_ALL"); }
};

/// Noon of a day of 2021 where the user is.
inline Date localDay(int month, int dayOfMonth) {
  return Calendar::current()
      .date({{CalendarUnit::year, 2021},
             {CalendarUnit::month, month},
             {CalendarUnit::day, dayOfMonth},
             {CalendarUnit::hour, 12}})
      .value();
}

class ExportWorld : public Ledger {
 public:
  ExportWorld() {
    manager->calendar = Calendar::current();
    portfolio->name = "Savings";
    on(localDay(3, 1));
    yen = Currency::byCode().find("JPY")->second;
    abc->symbol = "ABC";
    abc->name = "Alphabet Soup, \"Inc.\"";
  }

  Currency yen;

  BasicTransaction usd(BasicTransaction transaction, const std::string& amount,
                       const std::string& equivalent) {
    if (auto* trade = std::get_if<BasicTransaction::Trade>(&transaction.kind)) {
      trade->equity = xyz;
      trade->cashDisposed = {Currency::usd(), dec(amount)};
      trade->equivalentCashDisposed = dec(equivalent);
    }
    return transaction;
  }

  /// One of each kind, and money in three currencies.
  std::vector<BasicTransaction> everyKind() {
    using enum BasicTransaction::YieldType;
    std::vector<BasicTransaction> all = {
        deposit("100000.5"),
        make(BasicTransaction::Transfer{{Currency::usd(), dec("5000")}}),
        make(BasicTransaction::Transfer{{yen, dec("1000000")}}),
        buy("100", "12345.60"),
        usd(buy("10.5", "1000"), "1000.10", "1300.13"),
        make(BasicTransaction::Trade{abc, {yen, dec("50000")}, dec("600.25"), dec("5")}),
        sell("10", "1234.50"),
        split("95", "190"),
        split("190", "95"),
        journal("5", dec("400")),
        journal("-20"),
        yield(dividend, "80.40", dec("80")),
        yield(capitalGainsDividend, "7"),
        yield(reinvestedDistribution, "120.01"),
        yield(returnOfCapital, "33.33"),
        make(BasicTransaction::Yield{
            dividend, xyz, std::nullopt, {Currency::usd(), dec("12.34")}, dec("16.04")}),
        adjustment("-4.95"),
        adjustment("1.25"),
        withdrawal("1000"),
        make(BasicTransaction::Transfer{{yen, dec("-1000")}}),
    };
    all[3].note = "first, \"cheap\"\r\nbuy";
    all[3].tradeDate = all[3].tradeDate - 2 * 86400;
    all[16].note = "fee";
    return all;
  }
};

/// The cells of a row by field, without the empty ones.
inline std::map<std::string, std::string> cellsOf(ExportBroker& broker, int row) {
  std::map<std::string, std::string> cells;
  for (const std::string& field : broker.allFields()) {
    if (const auto text = broker.exportValue(row, field)) {
      cells.emplace(field, *text);
    }
  }
  return cells;
}

}  // namespace corvane::testing
