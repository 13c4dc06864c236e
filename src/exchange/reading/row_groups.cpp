#include "exchange/reading/row_groups.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <tuple>

#include "exchange/reading/row_drafts.h"

namespace corvane {
namespace {

using Places = std::vector<std::uint32_t>;

/// Whether these can be parts of one trade.
bool arePartsOfOneTrade(const StatementRows& rows, const Places& chiefs) {
  if (chiefs.size() == 1) {
    return true;
  }
  const RowFigures first = rows.figures(chiefs.front());
  return isTradeKind(first.kind) && std::ranges::all_of(chiefs, [&](std::uint32_t row) {
           const RowFigures figures = rows.figures(row);
           return figures.kind == first.kind && figures.equity == first.equity &&
                  figures.trade == first.trade && figures.tax.isZero() && !figures.equivalent;
         });
}

void mergeOrder(StatementRows& rows, const Places& places, const Places& chiefs) {
  std::map<std::string, CurrencyAmount, std::less<>> legs;
  for (const std::uint32_t row : places) {
    const RowFigures leg = rows.figures(row);
    const auto [sum, isNew] =
        legs.try_emplace(std::string(leg.cash.currency.code), CurrencyAmount{leg.cash.currency, 0});
    sum->second.amount += leg.kind == StatementKind::buy ? -leg.cash.amount : leg.cash.amount;
  }
  std::erase_if(legs, [](const auto& leg) { return leg.second.amount.isZero(); });
  const std::uint32_t chief = chiefs.front();
  if (legs.size() != 1) {
    rows.stop(chief,
              {.verdict = RowVerdict::isNew,
               .reason = "its order has amounts in several currencies, which are recorded one by "
                         "one"});
    return;
  }
  RowFigures whole = rows.figures(chief);
  const CurrencyAmount& sum = legs.begin()->second;
  whole.cash = {sum.currency, whole.kind == StatementKind::buy ? -sum.amount : sum.amount};
  for (const std::uint32_t row : chiefs) {
    whole.shares += row == chief ? Decimal(0) : rows.figures(row).shares;
  }
  rows.setFigures(chief, whole);
  for (const std::uint32_t row : places) {
    if (row != chief) {
      rows.stop(row, {.verdict = RowVerdict::belongs,
                      .reason = "to line " + std::to_string(rows.line(chief))});
    }
  }
}

}  // namespace

void RowGroups::add(std::uint32_t row, std::string_view group) {
  if (!group.empty()) {
    members_.push_back({std::hash<std::string_view>()(group), groups_.add(group), row});
  }
}

void RowGroups::reorder(const std::vector<std::uint32_t>& order) {
  Places places(order.size());
  for (std::uint32_t place = 0; place < order.size(); ++place) {
    places[order[place]] = place;
  }
  for (Member& member : members_) {
    member.row = places[member.row];
  }
}

void RowGroups::merge(StatementRows& rows) {
  std::erase_if(members_, [&](const Member& member) {
    return rows.verdict(member.row) != RowVerdict::isNew;
  });
  const auto key = [&](const Member& member) {
    return std::tuple(member.hash, groups_.text(member.group), member.row);
  };
  std::ranges::sort(members_, {}, key);
  Places places;
  Places chiefs;
  for (std::size_t i = 0; i < members_.size(); ++i) {
    const std::string_view group = groups_.text(members_[i].group);
    const std::uint32_t row = members_[i].row;
    places.push_back(row);
    const StatementKind kind = rows.figures(row).kind;
    if (isTradeKind(kind) || isYieldKind(kind)) {
      chiefs.push_back(row);
    }
    if (i + 1 == members_.size() || groups_.text(members_[i + 1].group) != group) {
      if (places.size() > 1 && !chiefs.empty() && arePartsOfOneTrade(rows, chiefs)) {
        mergeOrder(rows, places, chiefs);
      }
      places.clear();
      chiefs.clear();
    }
  }
}

}  // namespace corvane
