#include "reports/trail/row_source.h"

#include <utility>

#include "reports/inquiry/frozen_ledger.h"

namespace corvane {

std::string rowText(const Portfolio& portfolio, std::size_t position) {
  return "row " + std::to_string(position + 1) + " of “" + portfolio.name + "”";
}

TrailNode fromRow(TrailNode leaf, Portfolio& portfolio, std::size_t position) {
  leaf.source = rowText(portfolio, position);
  const auto* frozen = dynamic_cast<const FrozenPortfolio*>(&portfolio);
  leaf.row = TrailNode::Row{
      frozen != nullptr ? frozen->original : portfolio.transactions()[position]->portfolio,
      position};
  return leaf;
}

}  // namespace corvane
