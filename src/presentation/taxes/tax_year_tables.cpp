#include "presentation/taxes/tax_year_tables.h"

#include <map>
#include <utility>

#include "core/market/portfolio_asset.h"
#include "presentation/taxes/tax_year_sums.h"
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

bool isIncome(TransactionType kind) {
  return kind != TransactionType::returnOfCapital;
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
    if (line.equivalent.currency == currency && isIncome(line.kind)) {
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

// What the lines of the totals are sums of.
Decimal gainOf(const TaxYear::Disposal& line) {
  return line.tax.gain < 0 ? Decimal(0) : line.tax.gain;
}
Decimal lossOf(const TaxYear::Disposal& line) {
  return line.tax.gain < 0 ? -line.tax.gain : Decimal(0);
}
Decimal deniedOf(const TaxYear::Disposal& line) {
  return line.tax.superficial.denied;
}
Decimal taxGainOf(const TaxYear::Disposal& line) {
  return line.tax.taxGain;
}

void addFigures(const CurrencyFigures& sums, bool namesCurrency,
                const std::shared_ptr<const TaxYear>& year, std::vector<ReportFigure>& figures) {
  const TaxYear::Totals& totals = sums.totals;
  const Currency& currency = totals.currency;
  const auto ofDisposals = [&](const char* label, auto amountOf) -> TrailMaker {
    return [year, label, currency, amountOf] {
      return std::optional(disposalsTrail(label, *year, nullptr, currency, amountOf));
    };
  };
  const std::string in = namesCurrency ? ", " + std::string(currency.code) : "";
  figures.push_back({.title = "Net gain" + in,
                     .value = signedMoneyCell(totals.net(), currency),
                     .detail = "gains " + reportMoneyText(totals.gains, currency) + ", losses " +
                               reportMoneyText(totals.losses, currency),
                     .hint = "Gains less losses, with what is denied added back.",
                     .explain = ofDisposals("Net gain", &taxGainOf)});
  figures.push_back({.title = "Denied losses" + in,
                     .value = reportMoneyCell(totals.denied, currency),
                     .detail = "superficial-loss hint",
                     .hint = "Practice of the tax office, and not law.",
                     .explain = ofDisposals("Denied losses", &deniedOf)});
  figures.push_back({.title = "Income" + in,
                     .value = reportMoneyCell(sums.income, currency),
                     .detail = "without returns of capital",
                     .hint = "Net of what was withheld, at the equivalents that were entered.",
                     .explain = [year, currency] {
                       return std::optional(taxIncomeTrail("Income", *year, currency, &isIncome));
                     }});
  if (!sums.deemed.isZero()) {
    figures.push_back(
        {.title = "Deemed gains" + in,
         .value = signedMoneyCell(sums.deemed, currency),
         .detail = "see “To check”",
         .hint = "Returns of capital beyond the cost base.",
         .explain = [year, currency] { return std::optional(deemedGainsTrail(*year, currency)); }});
  }
}

}  // namespace

std::vector<RecordTable<TaxYear::Disposal>::Column> disposalColumns(const DisposalTrails& trails) {
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
    const std::string_view identifier = column.head.identifier;
    if (identifier == "taxGain" || identifier == "denied") {
      column.trail = trails.taxGain;
    } else if (identifier == "ledgerGain") {
      column.trail = trails.ledgerGain;
    } else if (identifier == "costBase") {
      column.trail = trails.costBase;
    }
  }
  return columns;
}

std::vector<RecordTable<TaxYear::Totals>::Column> taxTotalsColumns(const ShownTaxYear& year) {
  using Line = TaxYear::Totals;
  // A sum over `part` of each disposal.
  const auto trailOf = [year](std::string_view title, const TaxAmountOf& part) {
    return [year, title, part](const Line& line) -> TrailMaker {
      return [shown = year(), title, part, equity = line.equity, currency = line.currency] {
        const std::string label =
            std::string(title) + (equity == nullptr ? "" : " of " + equity->symbol);
        return std::optional(disposalsTrail(label, *shown, equity, currency, part));
      };
    };
  };
  const auto money = [&](std::string_view identifier, std::string_view title, auto amountOf,
                         const TaxAmountOf& part) {
    return RecordTable<Line>::Column{
        {identifier, title, true},
        [amountOf](const Line& line) { return reportMoneyCell(amountOf(line), line.currency); },
        trailOf(title, part)};
  };
  return {
      {{"symbol", "Symbol"},
       [](const Line& line) {
         return line.equity == nullptr ? AttributedText("Total", {.weight = FontWeight::semibold})
                                       : plainCell(line.equity->symbol);
       }},
      {{"currency", "Currency"}, [](const Line& line) { return plainCell(line.currency.code); }},
      money(
          "proceeds", "Proceeds", [](const Line& line) { return line.proceeds; },
          [](const TaxYear::Disposal& sale) { return sale.equivalent; }),
      money(
          "costBase", "Cost Base", [](const Line& line) { return line.costBase; },
          [](const TaxYear::Disposal& sale) { return sale.equivalent - sale.tax.gain; }),
      money(
          "gains", "Gains", [](const Line& line) { return line.gains; }, &gainOf),
      money(
          "losses", "Losses", [](const Line& line) { return line.losses; }, &lossOf),
      money(
          "denied", "Denied", [](const Line& line) { return line.denied; }, &deniedOf),
      {{"net", "Net", true},
       [](const Line& line) { return signedMoneyCell(line.net(), line.currency); },
       trailOf("Net", &taxGainOf)}};
}

std::vector<RecordTable<TaxIncomeLine>::Column> taxIncomeColumns(const ShownTaxYear& year) {
  using Line = TaxIncomeLine;
  const auto trailOf = [year](const Line& line, bool atEquivalents) -> TrailMaker {
    return [shown = year(), line, atEquivalents] {
      if (line.place) {
        return std::optional(taxIncomeLineTrail(shown->income.at(*line.place), atEquivalents));
      }
      const Currency& currency = line.amount.currency;
      return std::optional(line.equivalent
                               ? taxIncomeTrail(line.kind, *shown, currency,
                                                [&](TransactionType each) {
                                                  return taxKindTitle(each) == line.kind;
                                                })
                               : taxAdjustmentsTrail(*shown, currency));
    };
  };
  return {
      {{"symbol", "Symbol"},
       [](const Line& line) {
         return line.equity == nullptr ? AttributedText("Total", {.weight = FontWeight::semibold})
                                       : plainCell(line.equity->symbol);
       }},
      {{"kind", "Kind"}, [](const Line& line) { return plainCell(line.kind); }},
      {{"amount", "Amount", true},
       [](const Line& line) { return reportMoneyCell(line.amount.amount, line.amount.currency); },
       [trailOf](const Line& line) { return trailOf(line, false); }},
      {{"equivalent", "In Primary", true},
       [](const Line& line) {
         return line.equivalent
                    ? reportMoneyCell(line.equivalent->amount, line.equivalent->currency)
                    : AttributedText();
       },
       [trailOf](const Line& line) {
         return line.equivalent ? trailOf(line, true) : TrailMaker();
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

std::vector<RecordTable<TaxYear::CostAtEnd>::Column> costAtEndColumns(
    const std::function<TrailMaker(const TaxYear::CostAtEnd&)>& trail) {
  using Line = TaxYear::CostAtEnd;
  return {
      {{"symbol", "Symbol"}, [](const Line& line) { return PortfolioAsset(line.equity).title(); }},
      {{"shares", "Shares", true}, [](const Line& line) { return sharesCell(line.pool.shares); }},
      {{"costBase", "Cost Base", true},
       [](const Line& line) { return reportMoneyCell(line.pool.cost, line.currency); },
       trail}};
}

std::vector<TaxYear::Totals> taxTotals(const TaxYear& year, const Currency& currency) {
  return year.totals.empty() ? std::vector{noTotals(currency)} : year.totals;
}

std::vector<TaxIncomeLine> taxIncomeLines(const TaxYear& year) {
  std::vector<TaxIncomeLine> lines;
  std::map<std::pair<std::string, std::string>, CurrencyAmount> sums;
  for (const TaxYear::Income& line : year.income) {
    const std::string kind = taxKindTitle(line.kind);
    lines.push_back({line.equity, kind, line.amount, line.equivalent, lines.size()});
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

std::vector<ReportFigure> taxFigures(const std::shared_ptr<const TaxYear>& year,
                                     const std::vector<Currency>& currencies) {
  std::vector<CurrencyFigures> found;
  for (const Currency& currency : currencies) {
    CurrencyFigures figures = figuresIn(*year, currency);
    if (!figures.isEmpty()) {
      found.push_back(std::move(figures));
    }
  }
  if (found.empty()) {
    found.push_back(figuresIn(*year, currencies.empty() ? Currency::cad() : currencies.front()));
  }
  std::vector<ReportFigure> figures;
  for (const CurrencyFigures& each : found) {
    addFigures(each, found.size() > 1, year, figures);
  }
  return figures;
}

}  // namespace corvane
