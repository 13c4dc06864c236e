#include "exchange/statements/ledger_matching.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "exchange/strict/day_order.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

std::string dayKey(Date date, const Calendar& calendar) {
  const YearMonthDay day = YearMonthDay::of(date, calendar);
  return std::to_string(day.year) + "-" + std::to_string(day.month) + "-" + std::to_string(day.day);
}

std::string moneyKey(const CurrencyAmount& money) {
  return money.amount.description() + " " + std::string(money.currency.code);
}

std::optional<Decimal> sharesOf(const BasicTransaction& transaction) {
  if (const auto* trade = std::get_if<BasicTransaction::Trade>(&transaction.kind)) {
    return trade->sharesAdded;
  }
  const auto* journaled = std::get_if<BasicTransaction::JournaledShares>(&transaction.kind);
  return journaled == nullptr ? std::nullopt : std::optional(journaled->sharesAdded);
}

void tellResemblance(StatementRow& row, const std::vector<const BasicTransaction*>& others,
                     const Calendar& calendar) {
  constexpr double days = 3 * 86400.0;
  const BasicTransaction& own = row.transactions.front();
  for (const BasicTransaction* other : others) {
    if (sharesOf(*other) == sharesOf(own) &&
        std::abs(other->tradeDate.timeIntervalSince(own.tradeDate)) <= days) {
      row.reason = "resembles the transaction of " +
                   spelledDay(YearMonthDay::of(other->tradeDate, calendar));
      return;
    }
  }
}

}  // namespace

std::string fingerprint(const BasicTransaction& transaction, const Calendar& calendar) {
  const std::string what = std::visit(
      Overloaded{[](const BasicTransaction::Trade& trade) {
                   return "trade " + trade.equity->id() + " " + trade.sharesAdded.description() +
                          " " + moneyKey(trade.cashDisposed);
                 },
                 [](const BasicTransaction::Split& split) {
                   return "split " + split.equity->id() + " " +
                          (split.netShares - split.priorShares).description();
                 },
                 [](const BasicTransaction::JournaledShares& journaled) {
                   return "journal " + journaled.equity->id() + " " +
                          journaled.sharesAdded.description();
                 },
                 [](const BasicTransaction::Yield& yield) {
                   return std::string(displayName(yield.type)) + " " + yield.equity->id() + " " +
                          moneyKey(yield.netAmount);
                 },
                 [](const BasicTransaction::Transfer& transfer) {
                   return "transfer " + moneyKey(transfer.amount);
                 },
                 [](const BasicTransaction::CashAdjustment& adjustment) {
                   return "adjust " + moneyKey(adjustment.amount);
                 }},
      transaction.kind);
  return dayKey(transaction.tradeDate, calendar) + " " +
         dayKey(transaction.settlementDate, calendar) + " " + what;
}

void matchWithLedger(std::vector<StatementRow>& rows, Portfolio& portfolio,
                     const Calendar& calendar,
                     const std::map<std::string, std::string, std::less<>>& fingerprintsById) {
  std::unordered_map<std::string, int> held;
  std::unordered_map<std::string, std::vector<const BasicTransaction*>> byEquity;
  for (const TransactionPointer& row : portfolio.transactions()) {
    ++held[fingerprint(row->basic, calendar)];
    if (const EquityPointer* equity = row->basic.equity();
        equity != nullptr && sharesOf(row->basic)) {
      byEquity[(*equity)->id()].push_back(&row->basic);
    }
  }
  std::unordered_set<std::string> accountedFor;
  for (const auto& [id, recorded] : fingerprintsById) {
    if (const auto found = held.find(recorded); found != held.end() && found->second > 0) {
      --found->second;
      accountedFor.insert(id);
    }
  }
  for (StatementRow& row : rows) {
    if (row.verdict != RowVerdict::isNew || row.transactions.empty()) {
      continue;
    }
    if (accountedFor.contains(row.id)) {
      row.verdict = RowVerdict::present;
      row.reason = "it was recorded from an earlier file";
      continue;
    }
    auto& count = held[fingerprint(row.transactions.front(), calendar)];
    if (count > 0) {
      --count;
      row.verdict = RowVerdict::present;
      row.reason = "it is in the ledger";
      // What goes with a sale goes with it, too.
      for (std::size_t i = 1; i < row.transactions.size(); ++i) {
        --held[fingerprint(row.transactions[i], calendar)];
      }
    } else if (const EquityPointer* equity = row.transactions.front().equity();
               equity != nullptr && sharesOf(row.transactions.front())) {
      if (const auto others = byEquity.find((*equity)->id()); others != byEquity.end()) {
        tellResemblance(row, others->second, calendar);
      }
    }
  }
}

}  // namespace corvane
