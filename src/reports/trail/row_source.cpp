#include "reports/trail/row_source.h"

#include <utility>

#include "reports/inquiry/frozen_ledger.h"

namespace corvane {

namespace {

std::string placeOfRow(const std::string& name, std::size_t position) {
  return "row " + std::to_string(position + 1) + " of “" + name + "”";
}

}  // namespace

std::string rowText(const Portfolio& portfolio, std::size_t position) {
  return placeOfRow(portfolio.name, position);
}

TrailNode fromRow(TrailNode leaf, const std::string& name, TrailNode::Row row) {
  leaf.source = placeOfRow(name, row.position);
  leaf.row = std::move(row);
  return leaf;
}

TrailNode fromRow(TrailNode leaf, Portfolio& portfolio, std::size_t position) {
  const auto* frozen = dynamic_cast<const FrozenPortfolio*>(&portfolio);
  return fromRow(
      std::move(leaf), portfolio.name,
      {frozen != nullptr ? frozen->original : portfolio.transactions()[position]->portfolio,
       position});
}

TrailNode ofOlderLedger(std::string label, const Decimal& value, std::string unit) {
  return {
      .label = std::move(label),
      .value = value,
      .unit = std::move(unit),
      .note = "the ledger has changed since this was worked out, and its rows no longer give it"};
}

}  // namespace corvane
