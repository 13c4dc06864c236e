#include "exchange/reading/row_texts.h"

namespace corvane {
namespace {

std::size_t placeOfField(RowField field) {
  return static_cast<std::size_t>(field);
}

}  // namespace

void RowTexts::goTo(std::size_t index) {
  cells_.goTo(index);
  const StatementTable& table = cells_.table();
  plan_ = &table.plan();
  isCaptured_.reset();
  for (const TextRule& rule : table.layout().text) {
    if (const auto found = rule.pattern.match(cell(table.column(rule.column)))) {
      capture(*found, false);
    }
  }
  match_ = &table.kindOf(text(RowField::type));
  plan_ = match_->plan;
  capture(match_->captures, true);
}

void RowTexts::capture(const TextPattern::Captures& found, bool replaces) {
  for (const auto& [name, value] : found) {
    const auto field = rowFieldWithRawValue(name);
    if (field && (replaces || !isCaptured_[placeOfField(*field)])) {
      captures_[placeOfField(*field)] = value;
      isCaptured_.set(placeOfField(*field));
    }
  }
}

std::string_view RowTexts::cell(std::optional<std::size_t> column) const {
  return column && *column < cells_.cells().size() ? cells_.cells()[*column] : std::string_view();
}

const std::vector<RowTexts::Source>& RowTexts::sourcesOf(RowField field) const {
  return plan_->sources[placeOfField(field)];
}

std::string_view RowTexts::textOf(const Source& source, RowField field) const {
  if (source.told->column.empty()) {
    return source.told->constant;
  }
  const std::string_view text = cell(source.column);
  if (!source.told->pattern) {
    return text;
  }
  const auto found = source.told->pattern->match(text);
  const auto value = found ? found->find(rawValue(field)) : TextPattern::Captures::const_iterator();
  if (!found || value == found->end()) {
    return {};
  }
  std::string& made = made_[placeOfField(field)];
  made = value->second;
  return made;
}

std::string_view RowTexts::text(RowField field) const {
  const std::size_t place = placeOfField(field);
  if (isCaptured_[place] && !plan_->isOwn[place]) {
    return captures_[place];
  }
  const auto& sources = sourcesOf(field);
  const bool joins = field == RowField::type || field == RowField::note || field == RowField::group;
  if (!joins || sources.size() == 1) {
    for (const Source& source : sources) {
      if (const std::string_view text = textOf(source, field); !text.empty()) {
        return text;
      }
    }
    return {};
  }
  std::string joined;
  for (const Source& source : sources) {
    if (const std::string_view text = textOf(source, field); !text.empty()) {
      joined += joined.empty() ? "" : " / ";
      joined += text;
    }
  }
  // Whoever has asked before looks at the same text.
  if (made_[place] != joined) {
    made_[place] = std::move(joined);
  }
  return made_[place];
}

std::string RowTexts::columnOf(RowField field) const {
  const auto& sources = sourcesOf(field);
  for (const Source& source : sources) {
    if (!source.told->column.empty() && (sources.size() == 1 || !textOf(source, field).empty())) {
      return source.told->column;
    }
  }
  const bool isNamed = !sources.empty() && !sources.front().told->column.empty();
  return isNamed ? sources.front().told->column : std::string(rawValue(field));
}

RowTexts::Scale RowTexts::scaleOf(RowField field) const {
  if (isCaptured_[placeOfField(field)]) {
    return {};
  }
  for (const Source& source : sourcesOf(field)) {
    if (!textOf(source, field).empty()) {
      return {source.told->times, cell(source.divisor)};
    }
  }
  return {};
}

}  // namespace corvane
