#include "presentation/taxes/tax_year_tables.h"

#include <map>
#include <utility>

#include "core/market/portfolio_asset.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

const Currency& primaryOf(const TaxRowPlace& place) {
  return place.portfolio->primaryCurrency();
}

std::string taxKindTitle(TransactionType kind) {
  if (kind == TransactionType::dividend) {
    return "Dividend";
  }
  if (kind == TransactionType::capitalGainsDividend) {
    return "Capital gains dividend";
  }
  return kind == TransactionType::reinvestedDistribution ? "Reinvested distribution"
                                                         : "Return of capital";
}

TaxYear::Totals noTotals(const Currency& currency) {
  TaxYear::Totals totals{};
  totals.currency = currency;
  return totals;
}

/// What a year has brought in one primary currency.
struct CurrencyFigures {
  TaxYear::Totals totals;
  Decimal income;
  Decimal deemed;

  [[nodiscard]] bool isEmpty() const {
    return totals.proceeds.isZero() && income.isZero() && deemed.isZero();
  }
};

CurrencyFigures figuresIn(const TaxYear& year, const Currency& currency) {
  CurrencyFigures figures{.totals = noTotals(currency), .income = 0, .deemed = 0};
  for (const TaxYear::Totals& line : year.totals) {
    if (line.equity == nullptr && line.currency == currency) {
      figures.totals = line;
    }
  }
  for (const TaxYear::Income& line : year.income) {
    if (line.equivalent.currency == currency && line.kind != TransactionType::returnOfCapital) {
      figures.income += line.equivalent.amount;
    }
  }
  for (const TaxYear::DeemedGain& line : year.deemedGains) {
    if (primaryOf(line.place) == currency) {
      figures.deemed += line.amount;
    }
  }
  return figures;
}

void addFigures(const CurrencyFigures& sums, bool namesCurrency,
                std::vector<ReportFigure>& figures) {
  const TaxYear::Totals& totals = sums.totals;
  const Currency& currency = totals.currency;
  const std::string in = namesCurrency ? ", " + std::string(currency.code) : "";
  figures.push_back({.title = "Net gain" + in,
                     .value = signedMoneyCell(totals.net(), currency),
                     .detail = "gains " + reportMoneyText(totals.gains, currency) + ", losses " +
                               reportMoneyText(totals.losses, currency),
                     .hint = "Gains less losses, with what is denied added back."});
  figures.push_back({.title = "Denied losses" + in,
                     .value = reportMoneyCell(totals.denied, currency),
                     .detail = "superficial-loss hint",
                     .hint = "Practice of the tax office, and not law."});
  figures.push_back({.title = "Income" + in,
                     .value = reportMoneyCell(sums.income, currency),
                     .detail = "without returns of capital",
                     .hint = "Net of what was withheld, at the equivalents that were entered."});
  if (!sums.deemed.isZero()) {
    figures.push_back({.title = "Deemed gains" + in,
                       .value = signedMoneyCell(sums.deemed, currency),
                       .detail = "see “To check”",
                       .hint = "Returns of capital beyond the cost base."});
  }
}

}  // namespace

std::vector<RecordTable<TaxYear::Disposal>::Column> disposalColumns(
    const std::function<TrailMaker(const TaxYear::Disposal&)>& trail) {
  using Line = TaxYear::Disposal;
  const auto money = [](std::string_view identifier, std::string_view title, auto amountOf) {
    return RecordTable<Line>::Column{{identifier, title, true}, [amountOf](const Line& line) {
                                       return reportMoneyCell(amountOf(line),
                                                              primaryOf(line.place));
                                     }};
  };
  constexpr int shownRateDigits = 6;
  std::vector<RecordTable<Line>::Column> columns = {
      {{"settlement", "Settlement"},
       [](const Line& line) { return plainCell(mediumDayText(line.place.settlement)); }},
      {{"trade", "Trade Date"},
       [](const Line& line) { return plainCell(mediumDayText(line.place.trade)); }},
      {{"portfolio", "Portfolio"},
       [](const Line& line) { return plainCell(line.place.portfolio->name); }},
      {{"symbol", "Symbol"}, [](const Line& line) { return plainCell(line.place.equity->symbol); }},
      {{"shares", "Shares", true}, [](const Line& line) { return sharesCell(line.shares); }},
      {{"proceeds", "Proceeds", true},
       [](const Line& line) {
         return reportMoneyCell(line.proceeds.amount, line.proceeds.currency);
       }},
      {{"rate", "Rate", true},
       [](const Line& line) {
         return sharesCell(rounded(line.rate, shownRateDigits, RoundingMode::bankers));
       }},
      money("equivalent", "In Primary", [](const Line& line) { return line.equivalent; }),
      money("costBase", "Cost Base", [](const Line& line) { return line.tax.costDisposed; }),
      money("ledgerGain", "Ledger Gain", [](const Line& line) { return line.ledgerGain; }),
      money("denied", "Denied", [](const Line& line) { return line.tax.superficial.denied; }),
      {{"addedTo", "Added To"}, [](const Line& line) { return plainCell(line.addedTo); }},
      {{"taxGain", "Tax Gain", true},
       [](const Line& line) { return signedMoneyCell(line.tax.taxGain, primaryOf(line.place)); }},
      {{"note", "Note"}, [](const Line& line) {
         return AttributedText(line.note, {.colour = Colour::Name::secondaryLabel});
       }}};
  for (auto& column : columns) {
    if (column.head.identifier == "taxGain" || column.head.identifier == "denied") {
      column.trail = trail;
    }
  }
  return columns;
}

std::vector<RecordTable<TaxYear::Totals>::Column> taxTotalsColumns() {
  using Line = TaxYear::Totals;
  const auto money = [](std::string_view identifier, std::string_view title, auto amountOf) {
    return RecordTable<Line>::Column{{identifier, title, true}, [amountOf](const Line& line) {
                                       return reportMoneyCell(amountOf(line), line.currency);
                                     }};
  };
  return {
      {{"symbol", "Symbol"},
       [](const Line& line) {
         return line.equity == nullptr ? AttributedText("Total", {.weight = FontWeight::semibold})
                                       : plainCell(line.equity->symbol);
       }},
      {{"currency", "Currency"}, [](const Line& line) { return plainCell(line.currency.code); }},
      money("proceeds", "Proceeds", [](const Line& line) { return line.proceeds; }),
      money("costBase", "Cost Base", [](const Line& line) { return line.costBase; }),
      money("gains", "Gains", [](const Line& line) { return line.gains; }),
      money("losses", "Losses", [](const Line& line) { return line.losses; }),
      money("denied", "Denied", [](const Line& line) { return line.denied; }),
      {{"net", "Net", true},
       [](const Line& line) { return signedMoneyCell(line.net(), line.currency); }}};
}

std::vector<RecordTable<TaxIncomeLine>::Column> taxIncomeColumns() {
  using Line = TaxIncomeLine;
  return {
      {{"symbol", "Symbol"},
       [](const Line& line) {
         return line.equity == nullptr ? AttributedText("Total", {.weight = FontWeight::semibold})
                                       : plainCell(line.equity->symbol);
       }},
      {{"kind", "Kind"}, [](const Line& line) { return plainCell(line.kind); }},
      {{"amount", "Amount", true},
       [](const Line& line) { return reportMoneyCell(line.amount.amount, line.amount.currency); }},
      {{"equivalent", "In Primary", true}, [](const Line& line) {
         return line.equivalent
                    ? reportMoneyCell(line.equivalent->amount, line.equivalent->currency)
                    : AttributedText();
       }}};
}

std::vector<RecordTable<TaxCheckLine>::Column> taxCheckColumns() {
  using Line = TaxCheckLine;
  return {{{"settlement", "Settlement"},
           [](const Line& line) { return plainCell(mediumDayText(line.place.settlement)); }},
          {{"portfolio", "Portfolio"},
           [](const Line& line) { return plainCell(line.place.portfolio->name); }},
          {{"symbol", "Symbol"},
           [](const Line& line) {
             return plainCell(line.place.equity == nullptr ? "" : line.place.equity->symbol);
           }},
          {{"reason", "To Check"}, [](const Line& line) { return plainCell(line.reason); }}};
}

std::vector<RecordTable<TaxYear::CostAtEnd>::Column> costAtEndColumns() {
  using Line = TaxYear::CostAtEnd;
  return {
      {{"symbol", "Symbol"}, [](const Line& line) { return PortfolioAsset(line.equity).title(); }},
      {{"shares", "Shares", true}, [](const Line& line) { return sharesCell(line.pool.shares); }},
      {{"costBase", "Cost Base", true},
       [](const Line& line) { return reportMoneyCell(line.pool.cost, line.currency); }}};
}

std::vector<TaxYear::Totals> taxTotals(const TaxYear& year, const Currency& currency) {
  return year.totals.empty() ? std::vector{noTotals(currency)} : year.totals;
}

std::vector<TaxIncomeLine> taxIncomeLines(const TaxYear& year) {
  std::vector<TaxIncomeLine> lines;
  std::map<std::pair<std::string, std::string>, CurrencyAmount> sums;
  for (const TaxYear::Income& line : year.income) {
    const std::string kind = taxKindTitle(line.kind);
    lines.push_back({line.equity, kind, line.amount, line.equivalent});
    const Currency& primary = line.equivalent.currency;
    sums.try_emplace({kind, std::string(primary.code)}, CurrencyAmount{primary, 0})
        .first->second.amount += line.equivalent.amount;
  }
  for (const auto& [key, sum] : sums) {
    lines.push_back({nullptr, key.first, sum, sum});
  }
  for (const CurrencyAmount& adjustment : year.adjustments) {
    lines.push_back({nullptr, "Interest, fees and adjustments", adjustment, std::nullopt});
  }
  return lines;
}

std::vector<TaxCheckLine> taxCheckLines(const TaxYear& year) {
  std::vector<TaxCheckLine> lines;
  for (const TaxYear::DeemedGain& deemed : year.deemedGains) {
    lines.push_back({deemed.place, "Deemed gain of " +
                                       reportMoneyText(deemed.amount, primaryOf(deemed.place)) +
                                       ": the return of capital was more than the cost base."});
  }
  for (const TaxYear::ToCheck& check : year.toCheck) {
    lines.push_back({check.place, check.reason});
  }
  return lines;
}

std::vector<ReportFigure> taxFigures(const TaxYear& year, const std::vector<Currency>& currencies) {
  std::vector<CurrencyFigures> found;
  for (const Currency& currency : currencies) {
    CurrencyFigures figures = figuresIn(year, currency);
    if (!figures.isEmpty()) {
      found.push_back(std::move(figures));
    }
  }
  if (found.empty()) {
    found.push_back(figuresIn(year, currencies.empty() ? Currency::cad() : currencies.front()));
  }
  std::vector<ReportFigure> figures;
  for (const CurrencyFigures& each : found) {
    addFigures(each, found.size() > 1, figures);
  }
  return figures;
}

}  // namespace corvane
