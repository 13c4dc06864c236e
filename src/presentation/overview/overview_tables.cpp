#include "presentation/overview/overview_tables.h"

#include <algorithm>
#include <utility>

#include "core/market/portfolio_asset.h"
#include "core/money/decimal_number_formatter.h"
#include "platform/text/unicode/isolation.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"
#include "reports/trail/overview_trails.h"
#include "reports/trail/returns_trails.h"

namespace corvane {
namespace {

using Overview = PortfoliosOverview;
using SharedOverview = std::shared_ptr<const PortfoliosOverview>;

AttributedText optionalSignedCell(const std::optional<Decimal>& amount, const Currency& currency) {
  return amount ? signedMoneyCell(*amount, currency) : numericCell(std::string(noFigureText));
}

AttributedText inBold(AttributedText cell, bool isBold) {
  return isBold ? AttributedText(cell.plainText(), {.weight = FontWeight::semibold})
                : std::move(cell);
}

AttributedText priceCell(const Overview::HoldingLine& line) {
  if (line.equity == nullptr || !line.price) {
    return line.equity == nullptr ? AttributedText() : numericCell(std::string(noFigureText));
  }
  auto formatter = DecimalNumberFormatter::money(line.currency);
  formatter.maximumFractionDigits = maximumPriceDigits;
  return numericCell(formatter.string(*line.price).value_or(std::string(noFigureText)));
}

AttributedText holdingName(const OverviewHolding& row) {
  if (row.isSum) {
    return inBold(plainCell("All holdings"), true);
  }
  return row.line.equity == nullptr ? PortfolioAsset(row.line.currency).title()
                                    : PortfolioAsset(row.line.equity).title();
}

std::string holderNames(const OverviewHolding& row) {
  std::string names;
  for (const auto& part : row.line.parts) {
    names += (names.empty() ? "" : ", ") + isolatedName(part.portfolio->name);
  }
  return names;
}

/// The portfolios of a row: the one, or all.
std::vector<PortfolioPointer> portfoliosOf(const Overview& overview,
                                           const PortfolioPointer& portfolio) {
  std::vector<PortfolioPointer> portfolios;
  for (const Overview::PortfolioLine& line : overview.portfolios) {
    if (portfolio == nullptr || line.portfolio == portfolio) {
      portfolios.push_back(line.portfolio);
    }
  }
  return portfolios;
}

using PortfoliosTrail = TrailNode (*)(std::span<const PortfolioPointer>, const Currency&);

/// Of a figure that is there; with something left out it is none of the trail's.
TrailMaker figureTrail(PortfoliosTrail trail, const SharedOverview& overview,
                       const PortfolioPointer& portfolio, const Overview::Figures& figures,
                       const std::optional<Decimal>& shown) {
  if (overview == nullptr || figures.isPartial || !shown) {
    return nullptr;
  }
  return [trail, overview, portfolio] {
    const auto portfolios = portfoliosOf(*overview, portfolio);
    return std::optional(trail(portfolios, overview->currency));
  };
}

TrailMaker changeTrail(const OverviewTrails& trails, const PortfolioPointer& portfolio,
                       const std::optional<Decimal>& shown) {
  const auto overview = trails.overview();
  const auto quotes = trails.quotes();
  if (overview == nullptr || quotes == nullptr || !shown || shown->isZero()) {
    return nullptr;
  }
  return [overview, quotes, portfolio] {
    return std::optional(dayChangeTrail(*overview, *quotes, portfolio));
  };
}

using LineTrail = std::function<TrailNode(const Overview&, const OverviewHolding&, QuoteProvider&)>;

TrailMaker holdingTrail(const OverviewTrails& trails, const OverviewHolding& row, LineTrail trail) {
  const auto overview = trails.overview();
  const auto quotes = trails.quotes();
  if (overview == nullptr || quotes == nullptr) {
    return nullptr;
  }
  return [overview, quotes, row, trail = std::move(trail)] {
    return std::optional(trail(*overview, row, *quotes));
  };
}

TrailMaker holdingValueTrail(const OverviewTrails& trails, const OverviewHolding& row) {
  if (!row.line.value) {
    return nullptr;
  }
  if (row.isSum) {
    const auto overview = trails.overview();
    return overview == nullptr ? nullptr
                               : figureTrail(&worthTrail, overview, nullptr, overview->total,
                                             overview->total.value);
  }
  return holdingTrail(trails, row,
                      [](const Overview& overview, const OverviewHolding& each,
                         QuoteProvider& quotes) { return lineTrail(overview, each.line, quotes); });
}

TrailMaker holdingChangeTrail(const OverviewTrails& trails, const OverviewHolding& row) {
  if (row.isSum || !row.line.change) {
    return row.isSum ? changeTrail(trails, nullptr, row.line.change) : nullptr;
  }
  return holdingTrail(
      trails, row,
      [](const Overview& overview, const OverviewHolding& each, QuoteProvider& quotes) {
        return lineChangeTrail(overview, each.line, quotes);
      });
}

bool isOfToday(const EquityInfo& equity, Date now) {
  return YearMonthDay::of(*equity.recentDate, equity.calendar) ==
         YearMonthDay::of(now, equity.calendar);
}

/// " · as of …" where the session of the newest price is over.
std::string asOfText(const EquityInfo& newest, Date now, const UserDefaults& defaults) {
  const bool isOpen = isOfToday(newest, now) && newest.recentTradingPeriod &&
                      newest.recentTradingPeriod->contains(now);
  return isOpen ? ""
                : "as of " +
                      Formatting::equityDateFormatter(newest, defaults).string(*newest.recentDate);
}

ReportFigure changeFigure(const SharedOverview& overview, const OverviewTrails& trails, Date now,
                          const UserDefaults& defaults) {
  const Overview::Figures& total = overview->total;
  const EquityPointer& newest = overview->newest;
  ReportFigure figure{
      .title = newest == nullptr || isOfToday(*newest, now) ? "Change today" : "Latest change",
      .value = optionalSignedCell(total.dayChange, overview->currency),
      .detail = total.dayRate() ? returnRateText(total.dayRate()) : "",
      .hint =
          "The shares held now, from the close before the latest session to the latest price, "
          "at the latest rates. Cash, dividends and the moves of rates do not count.",
      .explain = changeTrail(trails, nullptr, total.dayChange)};
  if (newest != nullptr) {
    const std::string asOf = asOfText(*newest, now, defaults);
    figure.detail += (figure.detail.empty() || asOf.empty() ? "" : ", ") + asOf;
  }
  return figure;
}

ReportFigure returnFigure(const std::shared_ptr<const OverviewHistory>& history) {
  ReportFigure figure{.title = "Return a year",
                      .value = returnRateCell(std::nullopt),
                      .hint =
                          "Time-weighted: what the investments returned on the days of the "
                          "chart, whatever was paid in or out."};
  if (history == nullptr || !history->timeWeighted.total) {
    return figure;
  }
  const TimeWeightedReturn& returns = history->timeWeighted;
  figure.value = returnRateCell(returns.annual());
  figure.detail = "period: " + returnRateText(returns.total);
  if (!returns.annual()) {
    figure.title = "Return";
    figure.value = returnRateCell(returns.total);
    figure.detail =
        std::to_string(returns.daysMeasured()) + (returns.daysMeasured() == 1 ? " day" : " days");
    figure.hint += " Spans of up to 366 days are not stated as a return a year.";
  }
  figure.explain = [history] {
    return timeWeightedTrail(history->sum.days, history->sum.currency);
  };
  return figure;
}

ReportFigure gainFigure(const SharedOverview& overview) {
  const Overview::Figures& total = overview->total;
  const auto gain = total.gain();
  ReportFigure figure{
      .title = "Total gain",
      .value = optionalSignedCell(gain, overview->currency),
      .hint = total.isPartial ? "Something is left out of the value that deposits have paid for."
                              : "Value less net deposits.",
      .explain = figureTrail(&totalGainTrail, overview, nullptr, total, gain)};
  if (gain && *total.netDeposits > Decimal(0)) {
    figure.detail =
        returnRateText(gain->doubleValue() / total.netDeposits->doubleValue()) + " of net deposits";
  }
  return figure;
}

std::string symbolsText(const std::vector<EquityPointer>& equities) {
  std::vector<std::string> symbols;
  for (const EquityPointer& equity : equities) {
    symbols.push_back(equity->symbol);
  }
  return namesPhrase(symbols);
}

}  // namespace

std::string OverviewHolding::key() const {
  return isSum                    ? ""
         : line.equity == nullptr ? "$" + std::string(line.currency.code)
                                  : line.equity->id();
}

std::vector<RecordTable<OverviewPortfolio>::Column> overviewPortfolioColumns(
    const OverviewTrails& trails) {
  using Row = OverviewPortfolio;
  using Figures = Overview::Figures;
  const auto currency = [overview = trails.overview] {
    const auto shown = overview();
    return shown == nullptr ? Currency::cad() : shown->currency;
  };
  using Amount = std::function<std::optional<Decimal>(const Figures&)>;
  const auto trailOf = [trails](PortfoliosTrail trail, Amount amount) {
    return [trails, trail, amount = std::move(amount)](const Row& row) {
      return figureTrail(trail, trails.overview(), row.portfolio, row.figures, amount(row.figures));
    };
  };
  return {
      {{"name", "Portfolio"},
       [](const Row& row) {
         return row.portfolio == nullptr ? inBold(plainCell("All portfolios"), true)
                                         : plainCell(isolatedName(row.portfolio->name));
       }},
      {{"value", "Value", true},
       [currency](const Row& row) { return reportMoneyCell(row.figures.value, currency()); },
       trailOf(&worthTrail, &Figures::value)},
      {{"share", "Share", true}, [](const Row& row) { return plainRateCell(row.share); }},
      {{"change", "Change", true},
       [currency](const Row& row) { return optionalSignedCell(row.figures.dayChange, currency()); },
       [trails](const Row& row) {
         return changeTrail(trails, row.portfolio, row.figures.dayChange);
       }},
      {{"changeRate", "Change %", true},
       [](const Row& row) { return returnRateCell(row.figures.dayRate()); }},
      {{"netDeposits", "Net Deposits", true},
       [currency](const Row& row) { return reportMoneyCell(row.figures.netDeposits, currency()); },
       trailOf(&netDepositsTrail, &Figures::netDeposits)},
      {{"gain", "Gain", true},
       [currency](const Row& row) { return optionalSignedCell(row.figures.gain(), currency()); },
       trailOf(&totalGainTrail, &Figures::gain)}};
}

std::vector<RecordTable<OverviewHolding>::Column> overviewHoldingColumns(
    const OverviewTrails& trails) {
  using Row = OverviewHolding;
  const auto currency = [overview = trails.overview] {
    const auto shown = overview();
    return shown == nullptr ? Currency::cad() : shown->currency;
  };
  const auto ofShares = [currency](const Row& row, const std::optional<Decimal>& amount) {
    return row.isSum || row.line.equity != nullptr ? optionalSignedCell(amount, currency())
                                                   : AttributedText();
  };
  return {{{"symbol", "Symbol"}, &holdingName},
          {{"shares", "Shares or Cash", true},
           [](const Row& row) {
             return row.isSum                    ? AttributedText()
                    : row.line.equity == nullptr ? moneyTextCell(row.line.held, row.line.currency)
                                                 : sharesCell(row.line.held);
           }},
          {{"price", "Price", true},
           [](const Row& row) { return row.isSum ? AttributedText() : priceCell(row.line); }},
          {{"value", "Value", true},
           [currency](const Row& row) { return reportMoneyCell(row.line.value, currency()); },
           [trails](const Row& row) { return holdingValueTrail(trails, row); }},
          {{"share", "Share", true}, [](const Row& row) { return plainRateCell(row.line.share); }},
          {{"change", "Change", true},
           [ofShares](const Row& row) { return ofShares(row, row.line.change); },
           [trails](const Row& row) { return holdingChangeTrail(trails, row); }},
          {{"changeRate", "Change %", true},
           [](const Row& row) {
             return row.isSum || row.line.equity == nullptr ? AttributedText()
                                                            : returnRateCell(row.line.dayRate());
           }},
          {{"gain", "Unrealized Gain", true},
           [ofShares](const Row& row) { return ofShares(row, row.line.gain); }},
          {{"portfolios", "Held By"},
           [](const Row& row) { return plainCell(row.isSum ? "" : holderNames(row)); }}};
}

std::vector<RecordTable<Overview::CurrencyLine>::Column> overviewCurrencyColumns(
    const std::function<Currency()>& currency) {
  using Row = Overview::CurrencyLine;
  return {{{"currency", "Currency"},
           [](const Row& row) { return PortfolioAsset(row.currency).title(); }},
          {{"amount", "Amount", true},
           [](const Row& row) { return reportMoneyCell(row.amount, row.currency); }},
          {{"value", "Value", true},
           [currency](const Row& row) { return reportMoneyCell(row.value, currency()); }},
          {{"share", "Share", true}, [](const Row& row) { return plainRateCell(row.share); }}};
}

std::vector<OverviewPortfolio> portfolioRows(const Overview& overview) {
  std::vector<OverviewPortfolio> rows;
  for (const auto& [portfolio, figures, share] : overview.portfolios) {
    rows.push_back({portfolio, figures, share});
  }
  if (rows.size() > 1) {
    rows.push_back({nullptr, overview.total,
                    overview.total.value && *overview.total.value > Decimal(0)
                        ? std::optional<double>(1)
                        : std::nullopt});
  }
  return rows;
}

std::vector<OverviewHolding> holdingRows(const Overview& overview) {
  std::vector<OverviewHolding> rows;
  std::optional<Decimal> gain = 0;
  bool hasEquities = false;
  for (const Overview::HoldingLine& line : overview.holdings) {
    if (line.equity != nullptr) {
      hasEquities = true;
      gain = gain && line.gain ? std::optional(*gain + *line.gain) : std::nullopt;
    }
    rows.push_back({line});
  }
  if (rows.size() > 1) {
    OverviewHolding sum{.line = {.equity = nullptr, .currency = overview.currency}, .isSum = true};
    sum.line.value = overview.total.value;
    sum.line.change = overview.total.dayChange;
    sum.line.gain = hasEquities ? gain : std::nullopt;
    if (overview.total.value && *overview.total.value > Decimal(0)) {
      sum.line.share = 1;
    }
    rows.push_back(std::move(sum));
  }
  return rows;
}

std::vector<ReportFigure> overviewFigures(const SharedOverview& overview,
                                          const std::shared_ptr<const OverviewHistory>& history,
                                          const OverviewTrails& trails, Date now,
                                          const UserDefaults& defaults) {
  const Overview::Figures& total = overview->total;
  const std::size_t count = overview->portfolios.size();
  ReportFigure value{
      .title = "Total value",
      .value = reportMoneyCell(total.value, overview->currency),
      .detail = count == 1 ? "in one portfolio" : "in " + std::to_string(count) + " portfolios",
      .hint = "Holdings and cash, at the latest prices and rates.",
      .explain = figureTrail(&worthTrail, overview, nullptr, total, total.value)};
  ReportFigure deposits{
      .title = "Net deposits",
      .value = reportMoneyCell(total.netDeposits, overview->currency),
      .hint = "Paid in less taken out, at the latest rates.",
      .explain = figureTrail(&netDepositsTrail, overview, nullptr, {}, total.netDeposits)};
  return {std::move(value), changeFigure(overview, trails, now, defaults), std::move(deposits),
          gainFigure(overview), returnFigure(history)};
}

std::vector<std::string> overviewNotes(const Overview& overview, const OverviewHistory* history) {
  std::vector<std::string> notes;
  if (!overview.ofEarlierSession.empty()) {
    notes.push_back("Not in the change, since the latest price is of an earlier session: " +
                    symbolsText(overview.ofEarlierSession) + ".");
  }
  if (!overview.withoutCloseBefore.empty()) {
    notes.push_back("Not in the change, since the close before is not known: " +
                    symbolsText(overview.withoutCloseBefore) + ".");
  }
  const auto isForeign = [&](const Overview::PortfolioLine& line) {
    return line.portfolio->primaryCurrency() != overview.currency;
  };
  if (std::ranges::any_of(overview.portfolios, isForeign)) {
    notes.emplace_back(
        "Deposits and costs in other currencies stand at the latest rates, not at those of their "
        "days.");
  }
  if (history != nullptr && !history->sum.bridge.dividendsKeptAsCash.isZero()) {
    notes.emplace_back(
        "Dividends that a portfolio without cash accounts has kept are in its value, but not in "
        "the chart.");
  }
  if (history != nullptr && std::ranges::any_of(history->sum.days, &ValuationDay::isAtTradePrice)) {
    notes.emplace_back(
        "Some days of the chart are valued at the price of the last trade, at cost or at the rate "
        "of a row, since the market knew no price up to that day.");
  }
  return notes;
}

}  // namespace corvane
