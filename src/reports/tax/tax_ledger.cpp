#include "reports/tax/tax_ledger.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_map>
#include <variant>

#include "ledger/transaction/transaction_effect.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

constexpr int daysOfWindow = 30;

/// Whether the row books a loss that was denied into the cost base of a buyer.
bool booksDeniedLoss(const BasicTransaction& basic) {
  const auto* journaled = std::get_if<BasicTransaction::JournaledShares>(&basic.kind);
  return journaled != nullptr && journaled->sharesAdded.isZero() && basic.note &&
         basic.note->starts_with(deniedLossNote);
}

std::optional<TaxRow> taxRowOf(const TransactionEffect& effect) {
  TaxRow row;
  row.shares = effect.sharesAdded;
  row.amount = effect.costAdded;
  switch (effect.type) {
    case TransactionType::trade:
      row.kind = effect.isSale() ? TaxRow::Kind::sale : TaxRow::Kind::purchase;
      row.shares = abs(effect.sharesAdded);
      row.amount = effect.isSale() ? effect.equivalentAmount.value_or(0)
                                   : -effect.equivalentAmount.value_or(0);
      return row;
    case TransactionType::split:
      row.kind = TaxRow::Kind::split;
      row.shares = 0;
      row.splitFrom = effect.declaredShares.value_or(0);
      row.splitInto = effect.splitInto.value_or(0);
      return row;
    case TransactionType::journaledShares:
      row.kind = TaxRow::Kind::journaled;
      return row;
    case TransactionType::reinvestedDistribution:
      row.kind = TaxRow::Kind::reinvestedDistribution;
      return row;
    case TransactionType::returnOfCapital:
      row.kind = TaxRow::Kind::returnOfCapital;
      row.amount = -effect.costAdded;
      return row;
    case TransactionType::dividend:
    case TransactionType::capitalGainsDividend:
    case TransactionType::transfer:
    case TransactionType::cashAdjustment:
      return std::nullopt;
  }
  __builtin_unreachable();
}

void sortByDay(TaxedEquity& line) {
  if (std::ranges::is_sorted(line.rows, {}, &TaxRow::day)) {
    return;
  }
  std::vector<std::size_t> order(line.rows.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return line.rows[i].day; });
  TaxedEquity sorted{line.equity, line.currency, {}, {}};
  for (const std::size_t i : order) {
    sorted.rows.push_back(line.rows[i]);
    sorted.places.push_back(std::move(line.places[i]));
  }
  line = std::move(sorted);
}

/// The days of dates that hardly go back, of which the last one is mostly asked for again.
struct DayFinder {
  const Calendar& calendar;
  Date start = Date::distantFuture();
  Date end = Date::distantFuture();
  YearMonthDay day = {};

  YearMonthDay of(Date date) {
    if (date < start || end <= date) {
      day = YearMonthDay::of(date, calendar);
      start = day.startIn(calendar);
      end = daysAfter(day, 1).startIn(calendar);
    }
    return day;
  }
};

class TaxLedgerReader {
 public:
  TaxLedgerReader(const TaxYearQuestion& question, const Calendar& calendar,
                  const EquityPointer& equity)
      : question_(question), calendar_(calendar), equity_(equity) {}

  void read(const TaxedPortfolio& taxed, std::size_t number) {
    const std::size_t holder = holderOf(taxed);
    const Currency& primary = taxed.portfolio->primaryCurrency();
    const YearMonthDay last = daysAfter(question_.last, daysOfWindow);
    const Date end = daysAfter(last, 1).startIn(calendar_);
    std::unordered_map<const EquityInfo*, std::size_t> lines;
    const auto& rows = taxed.portfolio->transactions();
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const BasicTransaction& basic = rows[i]->basic;
      if (!question_.byTradeDate && end <= basic.settlementDate) {
        break;
      }
      const EquityPointer* equity = basic.equity();
      if (equity == nullptr || (equity_ != nullptr && !(**equity == *equity_)) ||
          (question_.country == TaxCountry::canada && booksDeniedLoss(basic))) {
        continue;
      }
      auto row = taxRowOf(transactionEffect(basic.kind));
      if (!row) {
        continue;
      }
      TaxRowPlace place{taxed.portfolio, i, *equity, settlement_.of(basic.settlementDate),
                        trade_.of(basic.tradeDate)};
      row->day = question_.byTradeDate ? place.trade : place.settlement;
      if (last < row->day) {
        continue;
      }
      row->holder = holder;
      row->portfolio = number;
      const auto [known, isNew] = lines.try_emplace(equity->get());
      if (isNew) {
        known->second = lineOf(*equity, primary);
      }
      TaxedEquity& line = ledger_.equities[known->second];
      line.rows.push_back(*row);
      line.places.push_back(std::move(place));
    }
  }

  TaxLedger take() {
    std::ranges::for_each(ledger_.equities, sortByDay);
    return std::move(ledger_);
  }

 private:
  std::size_t holderOf(const TaxedPortfolio& taxed) {
    const bool isTaxable = taxed.role != TaxRole::registered && !taxed.isRegistered;
    const TaxHolder holder{isTaxable ? taxed.person : taxed.portfolio->name, isTaxable};
    const auto known = std::ranges::find_if(ledger_.holders, [&](const TaxHolder& other) {
      return isTaxable && other.isTaxable && other.name == holder.name;
    });
    const auto place = known - ledger_.holders.begin();
    if (known == ledger_.holders.end()) {
      ledger_.holders.push_back(holder);
    }
    return static_cast<std::size_t>(place);
  }

  std::size_t lineOf(const EquityPointer& equity, const Currency& currency) {
    auto& place = places_[std::string(currency.code)];
    const auto [found, isNew] = place.try_emplace(equity, ledger_.equities.size());
    if (isNew) {
      ledger_.equities.push_back({equity, currency, {}, {}});
    }
    return found->second;
  }

  const TaxYearQuestion& question_;
  const Calendar& calendar_;
  const EquityPointer& equity_;
  std::map<std::string, EquityMap<std::size_t>> places_;
  DayFinder settlement_{calendar_};
  DayFinder trade_{calendar_};
  TaxLedger ledger_;
};

}  // namespace

std::vector<TaxedPortfolio> taxedPortfolios(
    std::span<const PortfolioPointer> portfolios,
    const std::function<std::optional<PortfolioTaxRole>(const PortfolioPointer&)>& roleOf) {
  std::vector<TaxedPortfolio> taxed;
  for (const PortfolioPointer& portfolio : portfolios) {
    const PortfolioTaxRole role = roleOf(portfolio).value_or(PortfolioTaxRole());
    const bool isAffiliated = role.role == TaxRole::affiliated;
    taxed.push_back({portfolio, role.role, isAffiliated ? role.person : std::string(),
                     isAffiliated && role.isRegistered});
  }
  return taxed;
}

TaxYearQuestion taxYearQuestion(const TaxSettings& settings, int year, const YearMonthDay& today) {
  TaxYearQuestion question{settings.firstDay(year), settings.lastDay(year), today};
  question.byTradeDate = settings.byTradeDate;
  question.country = settings.country;
  return question;
}

const TaxedEquity* TaxLedger::find(const EquityPointer& equity, const Currency& currency) const {
  const auto found = std::ranges::find_if(equities, [&](const TaxedEquity& line) {
    return *line.equity == *equity && line.currency == currency;
  });
  return found == equities.end() ? nullptr : &*found;
}

TaxLedger taxLedger(std::span<const TaxedPortfolio> portfolios, const TaxYearQuestion& question,
                    const Calendar& calendar, const EquityPointer& equity) {
  TaxLedgerReader reader(question, calendar, equity);
  for (std::size_t i = 0; i < portfolios.size(); ++i) {
    if (portfolios[i].role != TaxRole::notMine) {
      reader.read(portfolios[i], i);
    }
  }
  return reader.take();
}

TaxRules taxRules(const TaxedEquity& line, const TaxYearQuestion& question) {
  return {line.currency, question.country, question.today};
}

bool isSubject(const TaxHolder& holder, const TaxYearQuestion& question) {
  return holder.isTaxable && holder.name == question.person;
}

}  // namespace corvane
