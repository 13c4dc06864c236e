#include "presentation/reports/explanation_view_controller.h"

#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "platform/error.h"
#include "presentation/reports/report_text.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

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
        node.isKnown() ? node.value.description() : "", node.unit,
        node.day ? isoText(*node.day) : std::string(), node.source, node.note}) {
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
  if (!node.isKnown()) {
    return "⚠️";
  }
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
  return node.row && !node.row->portfolio.expired();
}

void ExplanationViewController::openRow(const TrailNode& node) {
  if (!node.row) {
    return;
  }
  if (const PortfolioPointer portfolio = node.row->portfolio.lock()) {
    openRowHandler(portfolio, node.row->position);
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
