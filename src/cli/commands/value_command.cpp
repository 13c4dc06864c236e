#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/console/listing.h"
#include "cli/console/price_source.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

std::vector<Listing::Field> valueFields() {
  using enum Listing::Kind;
  return {{"portfolio", "Portfolio"},
          {"currency", "Currency"},
          {"netDeposited", "Deposited", number},
          {"value", "Value", number},
          {"gain", "Gain", number}};
}

void writeValues(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
  const PriceSource prices(line);
  const WorkspaceFile workspace(line.word(0), console, prices.provider());
  const PortfolioManager& manager = *workspace.manager();
  refreshHoldings(manager, *prices.provider(), console);

  Listing values(valueFields());
  bool isComplete = true;
  for (const PortfolioPointer& portfolio : manager.portfolios()) {
    try {
      const PortfolioValuation worth = manager.valuation(portfolio);
      const auto money = [&](const Decimal& amount) { return moneyText(amount, worth.currency); };
      values.add({portfolio->name, std::string(worth.currency.code), money(worth.netDeposited),
                  money(worth.currentValue), money(worth.currentValue - worth.netDeposited)});
    } catch (const Error& error) {
      isComplete = false;
      console.warn(portfolio->name + ": " + error.description().value_or(""));
    }
  }
  values.write(format, console.out);
  if (!isComplete) {
    throw Failed(exitCode::failure);
  }
}

}  // namespace

Command valueCommand() {
  return {.name = "value",
          .summary = "Shows what each portfolio is worth at the latest prices.",
          .words = {"WORKSPACE"},
          .options = joined(priceSourceOptions(), listingOptions()),
          .explanation =
              "Amounts are in the portfolio's own currency. A portfolio for which a price "
              "or a rate is\nmissing is left out, and the exit code is then 1.\n",
          .listings = {{"", valueFields()}},
          .run = &writeValues};
}

}  // namespace corvane::cli
