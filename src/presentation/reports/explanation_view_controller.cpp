#include "presentation/reports/explanation_view_controller.h"

#include <string_view>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "platform/error.h"
#include "presentation/reports/report_text.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

struct NamedRow {
  std::string portfolio;
  std::size_t position;
};

/// The row that a source such as "row 3 of “Savings”" names.
std::optional<NamedRow> rowOfSource(std::string_view source) {
  constexpr std::string_view start = "row ";
  constexpr std::string_view middle = " of “";
  constexpr std::string_view end = "”";
  const std::size_t at = source.find(middle);
  if (!source.starts_with(start) || at == std::string_view::npos || !source.ends_with(end)) {
    return std::nullopt;
  }
  std::size_t number = 0;
  for (const char c : source.substr(start.size(), at - start.size())) {
    if (c < '0' || c > '9') {
      return std::nullopt;
    }
    number = number * 10 + static_cast<std::size_t>(c - '0');
  }
  if (number == 0) {
    return std::nullopt;
  }
  const std::size_t name = at + middle.size();
  return NamedRow{std::string(source.substr(name, source.size() - end.size() - name)), number - 1};
}

void writeTrailText(const TrailNode& node, std::size_t depth, std::string& out) {
  out +=
      std::string(2 * depth, ' ') + node.label + ": " + ExplanationViewController::valueText(node);
  const std::string operation = ExplanationViewController::operationText(node);
  const std::string source = ExplanationViewController::sourceText(node);
  out += (operation.empty() ? "" : " (" + operation + ")") + (source.empty() ? "" : ", " + source) +
         "\n";
  for (const TrailNode& child : node.children) {
    writeTrailText(child, depth + 1, out);
  }
}

void writeTrailCSV(const TrailNode& node, int depth, std::string& out) {
  bool isFirst = true;
  for (const std::string& cell :
       {std::to_string(depth), node.label, std::string(displayName(node.operation)),
        node.value.description(), node.unit, node.day ? isoText(*node.day) : std::string(),
        node.source, node.note}) {
    out += isFirst ? "\"" : ",\"";
    isFirst = false;
    for (const char c : cell) {
      out += c;
      if (c == '"') {
        out += c;
      }
    }
    out += '"';
  }
  out += "\r\n";
  for (const TrailNode& child : node.children) {
    writeTrailCSV(child, depth + 1, out);
  }
}

}  // namespace

void ExplanationViewController::explain(const TrailMaker& maker) {
  trail_.reset();
  message_.clear();
  try {
    trail_ = maker == nullptr ? std::nullopt : maker();
    if (!trail_) {
      message_ = "There is nothing to tell about this number.";
    }
  } catch (const Error& error) {
    message_ = error.description().value_or("This number cannot be explained.");
  }
  isOpen_ = true;
  changeHandler();
}

void ExplanationViewController::close() {
  isOpen_ = false;
  trail_.reset();
  message_.clear();
  changeHandler();
}

std::string ExplanationViewController::valueText(const TrailNode& node) {
  std::string number = DecimalNumberFormatter().string(node.value).value_or(noFigureText.data());
  return node.unit.empty() ? number : number + " " + node.unit;
}

std::string ExplanationViewController::sourceText(const TrailNode& node) {
  std::string text = node.day ? mediumDayText(*node.day) : "";
  for (const std::string* part : {&node.source, &node.note}) {
    text += (text.empty() || part->empty() ? "" : ", ") + *part;
  }
  return text;
}

std::string ExplanationViewController::operationText(const TrailNode& node) {
  switch (node.operation) {
    case TrailNode::Operation::leaf:
      return "";
    case TrailNode::Operation::sum:
      return "sum of these";
    case TrailNode::Operation::difference:
      return "the first less the others";
    case TrailNode::Operation::product:
      return "product of these";
    case TrailNode::Operation::quotient:
      return "the first by the second";
    case TrailNode::Operation::round:
      return "rounded to " + std::to_string(node.digits) + " digits, half to even";
    case TrailNode::Operation::least:
      return "the least of these";
    case TrailNode::Operation::solution:
      return "the first makes the second 0";
  }
  return "";
}

bool ExplanationViewController::hasRow(const TrailNode& node) {
  return rowOfSource(node.source).has_value();
}

void ExplanationViewController::openRow(const TrailNode& node) {
  if (const auto row = rowOfSource(node.source)) {
    openRowHandler(row->portfolio, row->position);
  }
}

std::string ExplanationViewController::text() const {
  std::string out;
  if (trail_) {
    writeTrailText(*trail_, 0, out);
  }
  return out;
}

std::string ExplanationViewController::csv() const {
  std::string out =
      "\"depth\",\"label\",\"operation\",\"value\",\"unit\",\"day\",\"source\",\"note\"\r\n";
  if (trail_) {
    writeTrailCSV(*trail_, 0, out);
  }
  return out;
}

}  // namespace corvane
