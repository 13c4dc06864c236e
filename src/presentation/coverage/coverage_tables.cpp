#include "presentation/coverage/coverage_tables.h"

#include <algorithm>
#include <numeric>

#include "core/market/portfolio_asset.h"
#include "core/money/decimal_number_formatter.h"
#include "presentation/text/table_text.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

using CoverState = PriceCoverage::State;

std::string countText(int count) {
  return DecimalNumberFormatter().string(Decimal(count)).value_or(std::to_string(count));
}

std::string daysText(int count) {
  return countText(count) + (count == 1 ? " day" : " days");
}

AttributedText dayCountCell(int count) {
  return count == 0 ? AttributedText() : numericCell(countText(count));
}

/// The bar in words: "Mar 4, 2019 – Nov 25, 2026, 3 days missing".
std::string barText(const CoverageLine& line) {
  const auto& stretches = line.coverage.stretches;
  std::string text = mediumDayText(stretches.front().days.first) + " – " +
                     mediumDayText(stretches.back().days.last);
  for (const CoverState state : {CoverState::missing, CoverState::carriedForward,
                                 CoverState::withoutPrice, CoverState::running}) {
    if (const int count = line.daysIn(state); count > 0) {
      std::string name(titleOf(state));
      name.front() = static_cast<char>(name.front() - 'A' + 'a');
      text += ", " + daysText(count) + " " + name;
    }
  }
  return text;
}

/// Part of all: never "100.00%" while a day is missing.
AttributedText coveredCell(const CoverageLine& line) {
  const auto part = line.coveredPart();
  constexpr double almostAll = 0.9999;
  return plainRateCell(part && *part < 1 ? std::optional(std::min(*part, almostAll)) : part);
}

std::string_view meaningOf(CoverState state) {
  switch (state) {
    case CoverState::covered:
      return "the final prices of these days are kept";
    case CoverState::carriedForward:
      return "nothing was traded; the last price before counts";
    case CoverState::withoutPrice:
      return "the market knows no price up to then";
    case CoverState::running:
      return "known, and final with the next session";
    case CoverState::missing:
      return "not kept; “Fetch What Is Missing” asks the market";
  }
  return "";
}

int sumOfDays(const std::vector<CoverageLine>& lines, CoverState state) {
  return std::transform_reduce(lines.begin(), lines.end(), 0, std::plus(),
                               [&](const CoverageLine& line) { return line.daysIn(state); });
}

std::string linesText(std::ptrdiff_t count) {
  return "in " + std::to_string(count) + (count == 1 ? " line" : " lines");
}

ReportFigure daysFigure(std::string title, const std::vector<CoverageLine>& lines, CoverState state,
                        std::string hint) {
  const auto count = std::ranges::count_if(
      lines, [&](const CoverageLine& line) { return line.daysIn(state) > 0; });
  return {.title = std::move(title),
          .value = numericCell(countText(sumOfDays(lines, state))),
          .detail = count == 0 ? "" : linesText(count),
          .hint = std::move(hint)};
}

}  // namespace

int CoverageLine::allDays() const {
  return std::accumulate(days.begin(), days.end(), 0);
}

std::optional<double> CoverageLine::coveredPart() const {
  const int all = allDays();
  return all == 0 ? std::nullopt
                  : std::optional(static_cast<double>(all - daysIn(CoverState::missing)) / all);
}

std::string_view titleOf(PriceCoverage::State state) {
  switch (state) {
    case CoverState::covered:
      return "Covered";
    case CoverState::carriedForward:
      return "Carried forward";
    case CoverState::withoutPrice:
      return "No price yet";
    case CoverState::running:
      return "Not final yet";
    case CoverState::missing:
      return "Missing";
  }
  return "";
}

Colour colourOf(PriceCoverage::State state) {
  switch (state) {
    case CoverState::covered:
      return Colour::Name::systemGreen;
    case CoverState::carriedForward:
      return Colour::Name::systemYellow;
    case CoverState::withoutPrice:
      return Colour::Name::systemGray;
    case CoverState::running:
      return Colour::Name::systemBlue;
    case CoverState::missing:
      return Colour::Name::systemRed;
  }
  return Colour::Name::label;
}

std::vector<RecordTable<CoverageLine>::Column> coverageColumns() {
  using Line = CoverageLine;
  return {
      {{"symbol", "Symbol"},
       [](const Line& line) { return PortfolioAsset(line.coverage.equity).title(); }},
      {{coverageBarColumn, "Days Held"}, [](const Line& line) { return plainCell(barText(line)); }},
      {{"days", "Days", true},
       [](const Line& line) { return numericCell(countText(line.allDays())); }},
      {{"covered", "Known", true}, &coveredCell},
      {{"missing", "Missing", true},
       [](const Line& line) { return dayCountCell(line.daysIn(CoverState::missing)); }},
      {{"carried", "Carried", true},
       [](const Line& line) { return dayCountCell(line.daysIn(CoverState::carriedForward)); }},
      {{"note", "Refused"}, [](const Line& line) {
         return line.coverage.problem ? plainCell("⚠️ " + *line.coverage.problem)
                                      : AttributedText();
       }}};
}

std::vector<RecordTable<PriceCoverage::Stretch>::Column> stretchColumns() {
  using Line = PriceCoverage::Stretch;
  return {{{"state", "State"}, [](const Line& line) { return plainCell(titleOf(line.state)); }},
          {{"from", "From"},
           [](const Line& line) { return plainCell(mediumDayText(line.days.first)); }},
          {{"to", "To"}, [](const Line& line) { return plainCell(mediumDayText(line.days.last)); }},
          {{"days", "Days", true},
           [](const Line& line) {
             return numericCell(countText(daysBetween(line.days.first, line.days.last) + 1));
           }},
          {{"meaning", "What That Means"}, [](const Line& line) {
             return AttributedText(std::string(meaningOf(line.state)),
                                   {.colour = Colour::Name::secondaryLabel});
           }}};
}

std::vector<ReportFigure> coverageFigures(const std::vector<CoverageLine>& lines) {
  if (lines.empty()) {
    return {};
  }
  int all = 0;
  std::ptrdiff_t refused = 0;
  std::ptrdiff_t rates = 0;
  for (const CoverageLine& line : lines) {
    all += line.allDays();
    refused += line.coverage.problem ? 1 : 0;
    rates += line.coverage.isExchangeRate ? 1 : 0;
  }
  CoverageLine sum;
  sum.days.at(static_cast<std::size_t>(CoverState::missing)) =
      sumOfDays(lines, CoverState::missing);
  sum.days.at(static_cast<std::size_t>(CoverState::covered)) =
      all - sum.daysIn(CoverState::missing);
  const auto equities = static_cast<std::ptrdiff_t>(lines.size()) - rates;
  return {
      {.title = "Known",
       .value = coveredCell(sum),
       .detail = "of " + daysText(all) + " in which something was held",
       .hint = "Days whose prices are kept, or of which the market has said that there are none."},
      daysFigure("Missing", lines, CoverState::missing, "Days whose prices are not kept."),
      daysFigure("Carried forward", lines, CoverState::carriedForward,
                 "Days without trading, at the last price before."),
      daysFigure("No price yet", lines, CoverState::withoutPrice,
                 "Days before the first price that the market knows."),
      {.title = "Refused",
       .value = numericCell(std::to_string(refused)),
       .detail = std::to_string(equities) + (equities == 1 ? " equity, " : " equities, ") +
                 std::to_string(rates) + (rates == 1 ? " rate" : " rates"),
       .hint = "Lines of which the market has told no prices; the table says why."}};
}

}  // namespace corvane
