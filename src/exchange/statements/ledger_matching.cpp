#include "exchange/statements/ledger_matching.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

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

/// The day, equity and shares of a fingerprint, without the amount behind them; empty for
/// transactions without shares.
std::string withoutAmount(const std::string& print) {
  const bool hasShares = print.contains(" trade ");
  return hasShares ? print.substr(0, print.rfind(' ', print.rfind(' ') - 1)) : std::string();
}

/// Finds the rows of one file in one ledger.
class Matching {
 public:
  Matching(Portfolio& portfolio, const Calendar& calendar, const MatchedFile& file,
           const std::vector<RecordedImport>& earlier, const StatementOptions& options)
      : calendar_(calendar), file_(file), options_(options) {
    for (const TransactionPointer& row : portfolio.transactions()) {
      ++held_[fingerprint(row->basic, calendar)];
      if (const EquityPointer* equity = row->basic.equity();
          equity != nullptr && sharesOf(row->basic)) {
        byEquity_[(*equity)->id()].push_back(&row->basic);
      }
    }
    for (const RecordedImport& import : earlier) {
      noteIds(import);
      noteMeeting(import);
    }
  }

  void match(std::vector<StatementRow>& rows) {
    // Rows that are the same to the letter go first, so that none is taken for one that was
    // restated.
    for (const bool isExact : {true, false}) {
      for (StatementRow& row : rows) {
        if (isOpen(row) && takesRecorded(row, isExact)) {
          row.verdict = RowVerdict::present;
          row.reason = "it was recorded from an earlier file";
        }
      }
    }
    for (StatementRow& row : rows) {
      if (isOpen(row)) {
        matchByCount(row);
      }
    }
  }

 private:
  static bool isOpen(const StatementRow& row) {
    return row.verdict == RowVerdict::isNew && !row.transactions.empty();
  }

  void noteIds(const RecordedImport& import) {
    if (import.profile != file_.profile) {
      return;  // another broker's numbers
    }
    for (const RecordedRow& row : import.rows) {
      if (row.id.empty() || row.fingerprints.empty()) {
        continue;
      }
      if (const auto found = held_.find(row.fingerprints.front());
          found != held_.end() && found->second > 0) {
        for (const std::string& print : row.fingerprints) {
          --held_[print];
        }
        recordedById_[row.id].push_back(row.fingerprints.front());
      }
    }
  }

  /// Two files meet on a day with which the one ends and the other begins.
  void noteMeeting(const RecordedImport& import) {
    if (import.sha256 == file_.sha256 || import.firstDay.empty()) {
      return;
    }
    std::string day;
    if (import.lastDay == file_.firstDay) {
      day = file_.firstDay;
    } else if (import.firstDay == file_.lastDay) {
      day = file_.lastDay;
    } else {
      return;
    }
    for (const RecordedRow& row : import.rows) {
      if (row.id.empty() && !row.fingerprints.empty()) {
        meeting_[row.fingerprints.front()] = day;
      }
    }
  }

  bool takesRecorded(const StatementRow& row, bool isExact) {
    const auto recorded = recordedById_.find(row.id);
    if (row.id.empty() || recorded == recordedById_.end()) {
      return false;
    }
    const std::string own = fingerprint(row.transactions.front(), calendar_);
    auto& prints = recorded->second;
    const auto found = std::ranges::find_if(prints, [&](const std::string& print) {
      return isExact ? print == own
                     : !withoutAmount(own).empty() && withoutAmount(print) == withoutAmount(own);
    });
    if (found == prints.end()) {
      return false;
    }
    prints.erase(found);
    return true;
  }

  void matchByCount(StatementRow& row) {
    const std::string print = fingerprint(row.transactions.front(), calendar_);
    int& count = held_[print];
    if (count > 0 && mayBeTwin(row, print)) {
      if (options_.recordsTwins || options_.twins.contains(row.line)) {
        return;
      }
      --count;
      row.verdict = RowVerdict::perhapsPresent;
      row.reason = "an equal one of that day came from an earlier file, which ends or begins there";
      row.remedy = "Say --twins record if it is another one.";
      return;
    }
    if (count > 0) {
      --count;
      row.verdict = RowVerdict::present;
      row.reason = "it is in the ledger";
      // What goes with a sale goes with it, too.
      for (std::size_t i = 1; i < row.transactions.size(); ++i) {
        --held_[fingerprint(row.transactions[i], calendar_)];
      }
    } else if (const EquityPointer* equity = row.transactions.front().equity();
               equity != nullptr && sharesOf(row.transactions.front())) {
      if (const auto others = byEquity_.find((*equity)->id()); others != byEquity_.end()) {
        tellResemblance(row, others->second, calendar_);
      }
    }
  }

  [[nodiscard]] bool mayBeTwin(const StatementRow& row, const std::string& print) const {
    const auto met = meeting_.find(print);
    return row.id.empty() && met != meeting_.end() &&
           met->second == isoDay(row.transactions.front().tradeDate, calendar_);
  }

  const Calendar& calendar_;
  const MatchedFile& file_;
  const StatementOptions& options_;
  std::unordered_map<std::string, int> held_;
  std::unordered_map<std::string, std::vector<const BasicTransaction*>> byEquity_;
  std::unordered_map<std::string, std::vector<std::string>> recordedById_;
  std::unordered_map<std::string, std::string> meeting_;  ///< days by fingerprint
};

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

std::string isoDay(Date date, const Calendar& calendar) {
  const YearMonthDay day = YearMonthDay::of(date, calendar);
  const auto padded = [](int number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
  };
  return padded(day.year, 4) + "-" + padded(day.month, 2) + "-" + padded(day.day, 2);
}

void findDays(MatchedFile& file, const std::vector<StatementRow>& rows, const Calendar& calendar) {
  std::optional<Date> first;
  std::optional<Date> last;
  for (const StatementRow& row : rows) {
    for (const BasicTransaction& transaction : row.transactions) {
      first = std::min(first.value_or(transaction.tradeDate), transaction.tradeDate);
      last = std::max(last.value_or(transaction.tradeDate), transaction.tradeDate);
    }
  }
  file.firstDay = first ? isoDay(*first, calendar) : "";
  file.lastDay = last ? isoDay(*last, calendar) : "";
}

void matchWithLedger(std::vector<StatementRow>& rows, Portfolio& portfolio,
                     const Calendar& calendar, const MatchedFile& file,
                     const std::vector<RecordedImport>& earlier, const StatementOptions& options) {
  Matching(portfolio, calendar, file, earlier, options).match(rows);
}

std::vector<TransactionPointer> rowsLeftOf(const RecordedImport& import, Portfolio& portfolio,
                                           const Calendar& calendar) {
  std::unordered_map<std::string, int> wanted;
  for (const RecordedRow& row : import.rows) {
    for (const std::string& print : row.fingerprints) {
      ++wanted[print];
    }
  }
  std::vector<TransactionPointer> left;
  for (const TransactionPointer& row : portfolio.transactions()) {
    const auto found = wanted.find(fingerprint(row->basic, calendar));
    if (found != wanted.end() && found->second > 0) {
      --found->second;
      left.push_back(row);
    }
  }
  return left;
}

}  // namespace corvane
