#include "exchange/statements/ledger_matching.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
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

/// Where `own` resembles one of `others`, what is to be said of it; empty where it does not.
std::string resemblance(const BasicTransaction& own,
                        const std::vector<const BasicTransaction*>& others,
                        const Calendar& calendar) {
  constexpr double days = 3 * 86400.0;
  for (const BasicTransaction* other : others) {
    if (sharesOf(*other) == sharesOf(own) &&
        std::abs(other->tradeDate.timeIntervalSince(own.tradeDate)) <= days) {
      return "resembles the transaction of " +
             spelledDay(YearMonthDay::of(other->tradeDate, calendar));
    }
  }
  return "";
}

/// The day, equity and shares of a fingerprint, without the amount behind them; empty for
/// transactions without shares.
std::string withoutAmount(const std::string& print) {
  const bool hasShares = print.contains(" trade ");
  return hasShares ? print.substr(0, print.rfind(' ', print.rfind(' ') - 1)) : std::string();
}

/// The transactions of a ledger by their fingerprints, which are made anew where two are compared:
/// held is a number for each.
class HeldPrints {
 public:
  HeldPrints(const std::vector<TransactionPointer>& ledger, const Calendar& calendar)
      : ledger_(ledger), calendar_(calendar) {
    entries_.reserve(ledger.size());
    for (std::uint32_t row = 0; row < ledger.size(); ++row) {
      entries_.push_back({hashOf(fingerprint(ledger[row]->basic, calendar)), row, 1});
    }
    std::ranges::sort(entries_, {},
                      [](const Entry& entry) { return std::pair(entry.hash, entry.row); });
    countEqual();
  }

  /// How many of the transactions with the fingerprint `print` nobody has taken; null for none.
  [[nodiscard]] int* countOf(const std::string& print) {
    const std::uint64_t hash = hashOf(print);
    for (auto entry = std::ranges::lower_bound(entries_, hash, {}, &Entry::hash);
         entry != entries_.end() && entry->hash == hash; ++entry) {
      if (printOf(*entry) == print) {
        return &entry->count;
      }
    }
    return nullptr;
  }
  [[nodiscard]] bool has(const std::string& print) {
    const int* count = countOf(print);
    return count != nullptr && *count > 0;
  }
  void take(const std::string& print) {
    if (int* count = countOf(print)) {
      --*count;
    }
  }
  [[nodiscard]] bool empty() const { return entries_.empty(); }

 private:
  struct Entry {
    std::uint64_t hash;
    std::uint32_t row;  ///< of the ledger, the first of equal ones
    int count;
  };

  static std::uint64_t hashOf(std::string_view print) {
    return std::hash<std::string_view>()(print);
  }
  [[nodiscard]] std::string printOf(const Entry& entry) const {
    return fingerprint(ledger_[entry.row]->basic, calendar_);
  }

  /// Makes one entry of those that are equal.
  void countEqual() {
    std::size_t kept = 0;
    for (std::size_t begin = 0; begin < entries_.size();) {
      std::size_t end = begin + 1;
      while (end < entries_.size() && entries_[end].hash == entries_[begin].hash) {
        ++end;
      }
      std::vector<std::pair<std::string, Entry>> different;
      for (std::size_t i = begin; i < end; ++i) {
        std::string print = end == begin + 1 ? std::string() : printOf(entries_[i]);
        const auto same = std::ranges::find(
            different, print, [](const auto& entry) { return std::string_view(entry.first); });
        if (same == different.end()) {
          different.emplace_back(std::move(print), entries_[i]);
        } else {
          ++same->second.count;
        }
      }
      for (const auto& [print, entry] : different) {
        entries_[kept++] = entry;
      }
      begin = end;
    }
    entries_.resize(kept);
  }

  const std::vector<TransactionPointer>& ledger_;
  const Calendar& calendar_;
  std::vector<Entry> entries_;
};

/// Finds the rows of one file in one ledger.
class Matching {
 public:
  Matching(Portfolio& portfolio, const Calendar& calendar, const MatchedFile& file,
           const std::vector<RecordedImport>& earlier, const StatementOptions& options)
      : calendar_(calendar),
        file_(file),
        options_(options),
        held_(portfolio.transactions(), calendar) {
    for (const TransactionPointer& row : portfolio.transactions()) {
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

  void match(StatementRows& rows) {
    if (held_.empty()) {
      return;
    }
    // Rows that are the same to the letter go first, so that none is taken for one that was
    // restated.
    for (const bool isExact : {true, false}) {
      for (std::size_t row = 0; row < rows.size() && !recordedById_.empty(); ++row) {
        if (isOpen(rows, row) && takesRecorded(rows, row, isExact)) {
          rows.stop(row, {.verdict = RowVerdict::present,
                          .reason = "it was recorded from an earlier file"});
        }
      }
    }
    for (std::size_t row = 0; row < rows.size(); ++row) {
      if (isOpen(rows, row)) {
        matchByCount(rows, row);
      }
    }
  }

 private:
  /// Equal rows that files have brought that meet this one.
  struct Met {
    std::string day;
    int count = 0;
  };

  static bool isOpen(const StatementRows& rows, std::size_t row) {
    const RowVerdict verdict = rows.verdict(row);
    return (verdict == RowVerdict::isNew || verdict == RowVerdict::asks) &&
           rows.transactionCount(row) > 0;
  }

  void noteIds(const RecordedImport& import) {
    if (import.profile != file_.profile) {
      return;  // another broker's numbers
    }
    for (const RecordedRow& row : import.rows) {
      if (row.id.empty() || row.fingerprints.empty()) {
        continue;
      }
      if (held_.has(row.fingerprints.front())) {
        for (const std::string& print : row.fingerprints) {
          held_.take(print);
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
        Met& met = meeting_[row.fingerprints.front()];
        met.day = day;
        ++met.count;
      }
    }
  }

  bool takesRecorded(const StatementRows& rows, std::size_t row, bool isExact) {
    if (rows.id(row).empty()) {
      return false;
    }
    const auto recorded = recordedById_.find(std::string(rows.id(row)));
    if (recorded == recordedById_.end()) {
      return false;
    }
    const std::string own = fingerprint(rows.transactions(row).front(), calendar_);
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

  void matchByCount(StatementRows& rows, std::size_t row) {
    const std::vector<BasicTransaction> transactions = rows.transactions(row);
    const BasicTransaction& first = transactions.front();
    const std::string print = fingerprint(first, calendar_);
    int* count = held_.countOf(print);
    if (count != nullptr && *count > 0) {
      if (mayBeTwin(rows, row, print, *count)) {
        if (options_.recordsTwins || options_.twins.contains(rows.line(row))) {
          return;
        }
        --*count;
        rows.stop(row, {.verdict = RowVerdict::perhapsPresent,
                        .reason = "an equal one of that day came from an earlier file, which ends "
                                  "or begins there",
                        .remedy = "Say --twins record if it is another one."});
        return;
      }
      --*count;
      rows.stop(row, {.verdict = RowVerdict::present, .reason = "it is in the ledger"});
      // What goes with a sale goes with it, too.
      for (std::size_t i = 1; i < transactions.size(); ++i) {
        held_.take(fingerprint(transactions[i], calendar_));
      }
      return;
    }
    const EquityPointer* equity = first.equity();
    if (equity == nullptr || !sharesOf(first) || rows.verdict(row) != RowVerdict::isNew) {
      return;
    }
    if (const auto others = byEquity_.find((*equity)->id()); others != byEquity_.end()) {
      std::string reason = resemblance(first, others->second, calendar_);
      if (!reason.empty()) {
        rows.stop(row, {.verdict = RowVerdict::isNew, .reason = std::move(reason)});
      }
    }
  }

  /// Whether nothing but what the other file has brought is left of the `count` equal ones. What
  /// the ledger has beyond that came from this file before, or was entered.
  [[nodiscard]] bool mayBeTwin(const StatementRows& rows, std::size_t row, const std::string& print,
                               int count) const {
    const auto met = meeting_.find(print);
    return rows.id(row).empty() && met != meeting_.end() && count <= met->second.count &&
           met->second.day == isoDay(rows.figures(row).trade);
  }

  const Calendar& calendar_;
  const MatchedFile& file_;
  const StatementOptions& options_;
  HeldPrints held_;
  std::unordered_map<std::string, std::vector<const BasicTransaction*>> byEquity_;
  std::unordered_map<std::string, std::vector<std::string>> recordedById_;
  std::unordered_map<std::string, Met> meeting_;  ///< by fingerprint
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
  return isoDay(YearMonthDay::of(date, calendar));
}

std::string isoDay(const YearMonthDay& day) {
  const auto padded = [](int number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
  };
  return padded(day.year, 4) + "-" + padded(day.month, 2) + "-" + padded(day.day, 2);
}

void findDays(MatchedFile& file, const StatementRows& rows) {
  std::optional<std::size_t> first;
  std::optional<std::size_t> last;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    // What a split that is new comes to is only known once the file is matched.
    if (rows.transactionCount(row) > 0 || rows.verdict(row) == RowVerdict::isNew) {
      first = first && rows.tradeDay(*first) <= rows.tradeDay(row) ? first : row;
      last = last && rows.tradeDay(*last) >= rows.tradeDay(row) ? last : row;
    }
  }
  file.firstDay = first ? isoDay(rows.figures(*first).trade) : "";
  file.lastDay = last ? isoDay(rows.figures(*last).trade) : "";
}

void matchWithLedger(StatementRows& rows, Portfolio& portfolio, const Calendar& calendar,
                     const MatchedFile& file, const std::vector<RecordedImport>& earlier,
                     const StatementOptions& options) {
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
  // From the end, since an import records behind what is there: of equal rows the earlier ones,
  // which may have been entered with a note, are not its own.
  std::vector<TransactionPointer> left;
  const auto& ledger = portfolio.transactions();
  for (auto row = ledger.rbegin(); row != ledger.rend(); ++row) {
    const auto found = wanted.find(fingerprint((*row)->basic, calendar));
    if (found != wanted.end() && found->second > 0) {
      --found->second;
      left.push_back(*row);
    }
  }
  std::ranges::reverse(left);
  return left;
}

}  // namespace corvane
