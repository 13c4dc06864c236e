// A small world for tests of the ledger: a manager with a portfolio, some equities, and short words
// for what happens in it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/async/notification_center.h"
#include "platform/async/undo_manager.h"
#include "support/decimals.h"

namespace corvane::testing {

/// Noon of a day in Toronto.
inline Date day(int year, int month, int dayOfMonth) {
  return Calendar(*TimeZone::withIdentifier("America/Toronto"))
      .date({{CalendarUnit::year, year},
             {CalendarUnit::month, month},
             {CalendarUnit::day, dayOfMonth},
             {CalendarUnit::hour, 12}})
      .value();
}

/// Everything that an edit may change and a refused edit must leave alone.
struct LedgerState {
  struct Row {
    TransactionPointer row;
    BasicTransaction basic;
    std::optional<Decimal> cashNet, sharesNet, costBasePrior;
    bool operator==(const Row&) const = default;
  };
  std::vector<Row> rows;
  std::map<int, PortfolioSnapshot> years;
  bool operator==(const LedgerState&) const = default;

  friend std::ostream& operator<<(std::ostream& out, const LedgerState& state) {
    for (const Row& row : state.rows) {
      out << "\n  " << row.row.get() << " " << row.basic;
      for (const auto& figure : {row.cashNet, row.sharesNet, row.costBasePrior}) {
        out << " " << (figure ? figure->description() : "-");
      }
    }
    for (const auto& [year, snapshot] : state.years) {
      out << "\n  " << year << ":";
      for (const auto& [currency, cash] : snapshot.currencySnapshots) {
        out << " " << std::string_view(currency.code) << " " << cash.cashOnHand << "/"
            << cash.netCashDeposited;
      }
      for (const auto& [equity, holding] : snapshot.equitySnapshots) {
        out << " " << equity->id() << " " << holding.sharesHeld << "/" << holding.costBase << "/"
            << holding.cumulativeCapitalGain;
      }
    }
    return out;
  }

  static LedgerState of(const PortfolioPointer& portfolio) {
    LedgerState state;
    for (const auto& row : portfolio->transactions()) {
      state.rows.push_back({row, row->basic, row->cashNet, row->sharesNet, row->costBasePrior});
    }
    state.years = portfolio->snapshotsByYear;
    return state;
  }
};

/// A portfolio in Canadian dollars. Transactions are built with today()'s date, which goes on by a
/// day with each, or with the date set by on().
class Ledger {
 public:
  Ledger() {
    manager->calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
    portfolio = manager->createPortfolio(Currency::cad());
    abc->currency = Currency::cad();
    xyz->currency = Currency::usd();
  }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  std::shared_ptr<PortfolioManager> manager = std::make_shared<PortfolioManager>(provider);
  std::shared_ptr<UndoManager> undo = std::make_shared<UndoManager>();
  PortfolioPointer portfolio;
  EquityPointer abc = provider->equityWithId("ABC");
  EquityPointer xyz = provider->equityWithId("XYZ");

  Ledger& on(Date date) {
    next_ = date;
    return *this;
  }

  BasicTransaction make(BasicTransaction::Kind kind) {
    const Date date = next_;
    next_ = next_ + 86400;
    return {std::move(kind), date, date, std::nullopt};
  }
  static CurrencyAmount cad(const std::string& amount) { return {Currency::cad(), dec(amount)}; }
  BasicTransaction deposit(const std::string& amount) {
    return make(BasicTransaction::Transfer{cad(amount)});
  }
  BasicTransaction withdrawal(const std::string& amount) { return deposit("-" + amount); }
  BasicTransaction adjustment(const std::string& amount) {
    return make(BasicTransaction::CashAdjustment{cad(amount)});
  }
  BasicTransaction buy(const std::string& shares, const std::string& cost) {
    return make(BasicTransaction::Trade{abc, cad(cost), dec(cost), dec(shares)});
  }
  BasicTransaction sell(const std::string& shares, const std::string& proceeds) {
    return buy("-" + shares, "-" + proceeds);
  }
  BasicTransaction split(const std::string& from, const std::string& to) {
    return make(BasicTransaction::Split{abc, dec(from), dec(to)});
  }
  BasicTransaction journal(const std::string& shares, std::optional<Decimal> costBase = {}) {
    return make(BasicTransaction::JournaledShares{abc, dec(shares), costBase});
  }
  BasicTransaction yield(BasicTransaction::YieldType type, const std::string& amount,
                         std::optional<Decimal> shares = {}) {
    return make(BasicTransaction::Yield{type, abc, shares, cad(amount), dec(amount)});
  }

  std::vector<TransactionPointer> record(std::vector<BasicTransaction> basics) {
    return manager->recordTransactions(std::move(basics), portfolio, undo);
  }
  [[nodiscard]] const std::vector<TransactionPointer>& rows() const {
    return portfolio->transactions();
  }
  [[nodiscard]] LedgerState state() const { return LedgerState::of(portfolio); }
  [[nodiscard]] PortfolioSnapshot finalSnapshot() const {
    return manager->snapshotBefore(rows().size(), portfolio);
  }

 private:
  Date next_ = day(2021, 3, 1);
};

/// The error of type `E` that `statement` throws. Fails the test where it throws none.
template <typename E = PortfolioManagerError, typename Statement>
std::optional<E> errorOf(Statement&& statement) {
  try {
    statement();
  } catch (const E& error) {
    return error;
  }
  ADD_FAILURE() << "nothing was refused";
  return std::nullopt;
}

/// What the last edit of a portfolio announced.
class LastChanges {
 public:
  LastChanges()
      : token_(NotificationCenter::defaultCenter().addObserver(
            PortfolioManager::didChangePortfolio, nullptr, [this](const auto& change) {
              ++count;
              changes = change.transactionChanges;
            })) {}

  int count = 0;
  std::optional<TransactionChanges> changes;

 private:
  Subscription token_;
};

}  // namespace corvane::testing
