#include "exchange/statements/row_texts.h"

#include <utility>

namespace corvane {

RowTexts::RowTexts(const StatementTable& table, const StatementCells& row)
    : table_(&table), row_(&row) {
  for (const TextRule& rule : table.layout().text) {
    if (auto found = rule.pattern.match(cell(rule.column))) {
      captures_.merge(*found);
    }
  }
  findKind();
}

void RowTexts::findKind() {
  const StatementTable::KindMatch& match = table_->kindOf(text("type"));
  kind_ = match.kind;
  rule_ = match.rule;
  if (rule_ != nullptr) {
    why_ = rule_->why;
    for (const auto& [name, value] : match.captures) {
      captures_.insert_or_assign(name, value);
    }
  }
}

std::string RowTexts::cell(std::string_view column) const {
  const auto place = table_->column(column);
  return place && *place < row_->cells.size() ? row_->cells[*place] : std::string();
}

const std::vector<FieldSource>* RowTexts::sourcesOf(std::string_view field) const {
  if (rule_ != nullptr) {
    if (const auto own = rule_->fields.find(field); own != rule_->fields.end()) {
      return &own->second;
    }
  }
  const auto& fields = table_->layout().fields;
  const auto found = fields.find(field);
  return found == fields.end() ? nullptr : &found->second;
}

std::string RowTexts::textOf(const FieldSource& source, std::string_view field) const {
  if (source.column.empty()) {
    return source.constant;
  }
  std::string text = cell(source.column);
  if (!source.pattern) {
    return text;
  }
  const auto found = source.pattern->match(text);
  return found && found->contains(field) ? found->find(field)->second : std::string();
}

std::string RowTexts::text(std::string_view field) const {
  const bool isOverridden = rule_ != nullptr && rule_->fields.contains(field);
  if (const auto captured = captures_.find(field); captured != captures_.end() && !isOverridden) {
    return captured->second;
  }
  const auto* sources = sourcesOf(field);
  if (sources == nullptr) {
    return "";
  }
  const bool joins = field == "type" || field == "note" || field == "group";
  std::string joined;
  for (const FieldSource& source : *sources) {
    const std::string text = textOf(source, field);
    if (!joins && !text.empty()) {
      return text;
    }
    if (!text.empty()) {
      joined += (joined.empty() ? "" : " / ") + text;
    }
  }
  return joined;
}

std::string RowTexts::columnOf(std::string_view field) const {
  const auto* sources = sourcesOf(field);
  if (sources != nullptr) {
    for (const FieldSource& source : *sources) {
      if (!source.column.empty() && (sources->size() == 1 || !textOf(source, field).empty())) {
        return source.column;
      }
    }
    if (!sources->empty() && !sources->front().column.empty()) {
      return sources->front().column;
    }
  }
  return std::string(field);
}

RowTexts::Scale RowTexts::scaleOf(std::string_view field) const {
  const auto* sources = sourcesOf(field);
  if (sources == nullptr || captures_.contains(field)) {
    return {};
  }
  for (const FieldSource& source : *sources) {
    if (!textOf(source, field).empty()) {
      return {source.times, source.over.empty() ? std::string() : cell(source.over)};
    }
  }
  return {};
}

}  // namespace corvane
