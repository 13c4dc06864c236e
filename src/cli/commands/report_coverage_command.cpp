#include <algorithm>
#include <memory>
#include <optional>
#include <ranges>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/console/listing.h"
#include "cli/console/price_source.h"
#include "cli/console/progress_bar.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "reports/coverage/price_coverage.h"
#include "reports/series/report_days.h"

namespace corvane::cli {
namespace {

std::string_view noteOnCoverage(PriceCoverage::State state) {
  switch (state) {
    case PriceCoverage::State::covered:
      return "";
    case PriceCoverage::State::carriedForward:
      return "no trading; the last price before counts";
    case PriceCoverage::State::withoutPrice:
      return "no price up to then";
    case PriceCoverage::State::running:
      return "final with the next session";
    case PriceCoverage::State::missing:
      return "not in the cache";
  }
  return "";
}

/// The coverage of the portfolios that a command names, before and after their prices are fetched.
class CoverageReport {
 public:
  CoverageReport(const CommandLine& line, const Console& console)
      : console_(console),
        prices_(line, line.has("--fetch") ? PriceSource::Need::prices : PriceSource::Need::names),
        workspace_(line.word(0), console, prices_.provider()),
        portfolios_(portfoliosOf(line, workspace_)) {}

  [[nodiscard]] std::vector<PriceCoverage> coverages(bool isRefreshed) const {
    const auto chain = std::dynamic_pointer_cast<SwitchableQuoteProvider>(prices_.provider());
    const Calendar& calendar = workspace_.manager()->calendar;
    return priceCoverage(portfolios_, {.cache = *chain->smartQuoteProvider->cacheProvider,
                                       .quotes = *prices_.provider(),
                                       .calendar = calendar,
                                       .today = YearMonthDay::of(Date::now(), calendar),
                                       .isRefreshed = isRefreshed});
  }

  /// Fetches what is missing; the coverage then, with what was refused and why.
  [[nodiscard]] std::vector<PriceCoverage> fetched() const {
    QuoteProvider& quotes = *prices_.provider();
    bool isRefreshed = refreshEquities(quotes, equitiesOf(portfolios_), console_);
    std::vector<EquityPointer> rates;
    const std::vector<PriceCoverage> before = coverages(isRefreshed);
    for (const PriceCoverage& each : before) {
      if (each.isExchangeRate) {
        rates.push_back(each.equity);
      }
    }
    isRefreshed = refreshEquities(quotes, rates, console_) && isRefreshed;
    const auto refused = std::make_shared<std::optional<EquityMap<std::string>>>();
    {
      const auto bar = std::make_shared<ProgressBar>(console_.err, "Fetching prices");
      fetchMissingPrices(
          prices_.provider(), before, [bar](double fraction) { bar->show(fraction); },
          [refused](EquityMap<std::string> why) { *refused = std::move(why); });
      waitFor([&] { return refused->has_value(); });
    }
    std::vector<PriceCoverage> after = coverages(isRefreshed);
    for (PriceCoverage& each : after) {
      const auto why = (*refused)->find(each.equity);
      if (!each.problem && why != (*refused)->end()) {
        each.problem = why->second;
      }
    }
    return after;
  }

 private:
  const Console& console_;
  PriceSource prices_;
  WorkspaceFile workspace_;
  std::vector<PortfolioPointer> portfolios_;
};

std::vector<Listing::Field> coverageFields() {
  using enum Listing::Kind;
  return {{"symbol", "Symbol"}, {"kind", "Kind"},         {"state", "State"}, {"from", "From"},
          {"to", "To"},         {"days", "Days", number}, {"note", "Note"}};
}

Listing coverageListing(const std::vector<PriceCoverage>& coverages) {
  Listing listing(coverageFields());
  for (const PriceCoverage& each : coverages) {
    const std::string kind = each.isExchangeRate ? "rate" : "equity";
    for (const auto& [days, state] : each.stretches) {
      listing.add({each.equity->symbol, kind, std::string(rawValue(state)), isoText(days.first),
                   isoText(days.last), std::to_string(daysBetween(days.first, days.last) + 1),
                   std::string(noteOnCoverage(state))});
    }
    if (each.problem) {
      listing.add({each.equity->symbol, kind, "refused", "", "", "", *each.problem});
    }
  }
  return listing;
}

void writeCoverage(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
  const bool fetches = line.has("--fetch");
  if (fetches && line.has("--offline")) {
    throw UsageError("--fetch and --offline exclude each other.");
  }
  const CoverageReport report(line, console);
  const std::vector<PriceCoverage> coverages = fetches ? report.fetched() : report.coverages(false);
  if (coverages.empty() && format == ListingFormat::table) {
    console.out << "Nothing has been held.\n";
    return;
  }
  coverageListing(coverages).write(format, console.out);
  const auto isIncomplete = [](const PriceCoverage& each) {
    return each.hasMissingDays() || each.problem;
  };
  if (fetches && std::ranges::any_of(coverages, isIncomplete)) {
    std::string symbols;
    for (const PriceCoverage& each : coverages | std::views::filter(isIncomplete)) {
      symbols += (symbols.empty() ? "" : ", ") + each.equity->symbol;
    }
    console.warn("Prices are still missing of " + symbols + ".");
    throw Failed(exitCode::failure);
  }
}

}  // namespace

Command coverageCommand() {
  return {.name = "coverage",
          .summary = "Shows for which days the cache has prices of what was held.",
          .words = {"WORKSPACE"},
          .options = joined({{"--portfolio", "NAME", "the portfolio; else all of them"},
                             {"--fetch", "", "fetches what is missing first"}},
                            listingOptions(), priceSourceOptions()),
          .explanation =
              "A line for each stretch of days of an equity or of an exchange rate. Nobody is "
              "asked for prices\nunless --fetch is there. The states:\n"
              "  covered  the final prices of these days are in the cache\n"
              "  carried  nothing was traded; the last price before counts\n"
              "  none     there is no price up to then\n"
              "  running  from the latest session on, whose bar is final with the next one\n"
              "  missing  not in the cache; --fetch asks for it\n"
              "  refused  the market has told no prices, for the reason in the note\n"
              "With --fetch the exit code is 1 where something is still missing.\n",
          .listings = {{"", coverageFields()}},
          .run = &writeCoverage};
}

}  // namespace corvane::cli
