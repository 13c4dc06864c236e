#include "exchange/reading/statement_table.h"

#include <algorithm>

#include "exchange/strict/cell_text.h"

namespace corvane {
namespace {

constexpr std::array<std::string_view, rowFieldCount> rowFieldNames = {
    "date", "time",         "settle",       "type",  "note",   "group",    "symbol", "isin",
    "name", "shares",       "shares-after", "price", "amount", "currency", "fee",    "tax",
    "rate", "inverse-rate", "equivalent",   "cost",  "id",     "account"};

}  // namespace

std::string_view rawValue(RowField field) {
  return rowFieldNames[static_cast<std::size_t>(field)];
}

std::optional<RowField> rowFieldWithRawValue(std::string_view rawValue) {
  const auto* found = std::ranges::find(rowFieldNames, rawValue);
  return found == rowFieldNames.end()
             ? std::nullopt
             : std::optional(static_cast<RowField>(found - rowFieldNames.begin()));
}

StatementTable::StatementTable(const StatementTableLayout& layout,
                               const std::vector<std::string>& heading)
    : layout_(&layout), width_(std::max(heading.size(), layout.heading.size())) {
  for (std::size_t i = 0; i < heading.size(); ++i) {
    columns_.emplace(foldedText(heading[i]), i);
    columns_.emplace("#" + std::to_string(i + 1), i);
  }
  for (std::size_t i = heading.size(); i < width_; ++i) {
    columns_.emplace("#" + std::to_string(i + 1), i);
  }
  // As the layout writes them, so that a look-up need not fold.
  for (const std::string& name : layout.usedColumns()) {
    if (const auto found = columns_.find(foldedText(name)); found != columns_.end()) {
      columns_.emplace(name, found->second);
    }
  }
  auto& all = *plans_.emplace_back(std::make_unique<Plan>());
  for (const auto& [name, sources] : layout.fields) {
    if (const auto field = rowFieldWithRawValue(name)) {
      all.sources[static_cast<std::size_t>(*field)] = placed(sources);
    }
  }
  for (const KindRule& rule : layout.kinds) {
    auto& own = *plans_.emplace_back(std::make_unique<Plan>(plan()));
    for (const auto& [name, sources] : rule.fields) {
      if (const auto field = rowFieldWithRawValue(name)) {
        own.sources[static_cast<std::size_t>(*field)] = placed(sources);
        own.isOwn.set(static_cast<std::size_t>(*field));
      }
    }
  }
}

std::vector<StatementTable::Source> StatementTable::placed(
    const std::vector<FieldSource>& sources) const {
  std::vector<Source> all;
  for (const FieldSource& source : sources) {
    all.push_back({&source, source.column.empty() ? std::nullopt : column(source.column),
                   source.over.empty() ? std::nullopt : column(source.over)});
  }
  return all;
}

std::optional<std::size_t> StatementTable::column(std::string_view name) const {
  const auto found = columns_.find(name);
  return found == columns_.end() ? std::nullopt : std::optional(found->second);
}

const StatementTable::KindMatch& StatementTable::kindOf(std::string_view type) const {
  constexpr std::size_t mostRemembered = 4096;
  if (const auto known = kinds_.find(type); known != kinds_.end()) {
    return known->second;
  }
  if (kinds_.size() < mostRemembered) {
    return kinds_.emplace(type, matchOf(type)).first->second;
  }
  unkept_ = matchOf(type);
  return unkept_;
}

}  // namespace corvane
