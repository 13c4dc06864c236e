#include "presentation/source/source_rows.h"

#include <initializer_list>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/text/unicode/isolation.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

std::string joinedParts(std::initializer_list<std::string> parts) {
  std::string text;
  for (const std::string& part : parts) {
    if (!part.empty()) {
      text += (text.empty() ? "" : ", ") + part;
    }
  }
  return text;
}

}  // namespace

std::string EquitySourceRow::accessibleText() const {
  return joinedParts({symbol, isolatedName(name), price, change.plainText(), problem});
}

EquitySourceRow equitySourceRow(const EquityPointer& equity,
                                std::shared_ptr<const QuoteChartView> thumbnail) {
  EquitySourceRow row{.equity = equity,
                      .symbol = equity->symbol,
                      .name = equity->name.value_or(""),
                      .price = "",
                      .change = {},
                      .thumbnail = std::move(thumbnail),
                      .problem = equity->refreshProblem.value_or("")};
  if (equity->recentPrice) {
    auto formatter = DecimalNumberFormatter::money(equity->currency);
    formatter.maximumFractionDigits = maximumPriceDigits;
    row.price = formatter.string(*equity->recentPrice).value_or("");
    if (equity->previousClosePrice) {
      row.change =
          Formatting::changeText(equity->currency, equity->previousClosePrice, equity->recentPrice);
    }
  }
  return row;
}

std::string PortfolioSourceRow::accessibleText() const {
  return joinedParts({isolatedName(name),
                      value == "⚠️" ? "Current portfolio value is indeterminate" : value,
                      gain.plainText()});
}

PortfolioSourceRow portfolioSourceRow(const PortfolioPointer& portfolio) {
  PortfolioSourceRow row{
      .portfolio = portfolio, .name = portfolio->name, .value = "⚠️", .gain = {}};
  try {
    if (const auto manager = portfolio->manager.lock()) {
      const PortfolioValuation valuation = manager->valuation(portfolio);
      row.value = Formatting::currentValueText(valuation);
      row.gain = Formatting::gainText(valuation);
    }
  } catch (const Error&) {
    // A price or a rate is not known, which the sign in the row says.
  }
  return row;
}

}  // namespace corvane
