#include "presentation/reports/explanation_view_controller.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/money/decimal_number_formatter.h"
#include "platform/error.h"
#include "presentation/reports/report_text.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

std::string numberText(const Decimal& number, const std::string& unit) {
  const std::string text = DecimalNumberFormatter().string(number).value_or(noFigureText.data());
  return unit.empty() ? text : text + " " + unit;
}

/// Whether a node has another amount at the rates of its days than in `unit` at those of today.
bool tellsOtherRates(const TrailNode& node, const std::string& unit) {
  return (node.atRatesOfDays && (node.unit != unit || node.value != *node.atRatesOfDays)) ||
         std::ranges::any_of(node.children,
                             [&](const TrailNode& child) { return tellsOtherRates(child, unit); });
}

void writeTrailText(const TrailNode& node, const TrailNode& trail, std::size_t depth,
                    std::string& out) {
  out +=
      std::string(2 * depth, ' ') + node.label + ": " + ExplanationViewController::valueText(node);
  const std::string operation = ExplanationViewController::operationText(node);
  const std::string ofDays = ExplanationViewController::ratesOfDaysText(node, trail);
  const std::string source = ExplanationViewController::sourceText(node);
  out += (operation.empty() ? "" : " (" + operation + ")") +
         (ofDays.empty() ? "" : ", at the rates of their days " + ofDays) +
         (source.empty() ? "" : ", " + source) + "\n";
  for (const TrailNode& child : node.children) {
    writeTrailText(child, trail, depth + 1, out);
  }
}

void writeTrailCSV(const TrailNode& node, int depth, bool tellsRates, std::string& out) {
  std::vector<std::string> cells = {std::to_string(depth),
                                    node.label,
                                    std::string(displayName(node.operation)),
                                    node.isKnown() ? node.value.description() : "",
                                    node.unit,
                                    node.day ? isoText(*node.day) : std::string(),
                                    node.source,
                                    node.note};
  if (tellsRates) {
    cells.push_back(node.atRatesOfDays ? node.atRatesOfDays->description() : "");
  }
  bool isFirst = true;
  for (const std::string& cell : cells) {
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
    writeTrailCSV(child, depth + 1, tellsRates, out);
  }
}

}  // namespace

void ExplanationViewController::explain(const TrailMaker& maker, const TrailFetch& fetch) {
  awaiting_.reset();
  isCompleted_ = false;
  make(maker);
  isOpen_ = true;
  changeHandler();
  if (fetch == nullptr || !trail_) {
    return;
  }
  awaiting_ = std::make_shared<const TrailMaker>(maker);
  fetch([this, asked = std::weak_ptr(awaiting_)] {
    if (const auto again = asked.lock()) {
      awaiting_.reset();
      isCompleted_ = true;
      make(*again);
      changeHandler();
    }
  });
}

void ExplanationViewController::make(const TrailMaker& maker) {
  trail_.reset();
  rows_.clear();
  message_.clear();
  try {
    trail_ = maker == nullptr ? std::nullopt : maker();
    if (trail_) {
      rememberRows(*trail_);
    } else {
      message_ = "There is nothing to tell about this number.";
    }
  } catch (const Error& error) {
    message_ = error.description().value_or("This number cannot be explained.");
  }
}

void ExplanationViewController::close() {
  awaiting_.reset();
  isOpen_ = false;
  trail_.reset();
  message_.clear();
  changeHandler();
}

std::string ExplanationViewController::valueText(const TrailNode& node) {
  if (!node.isKnown()) {
    return "⚠️";
  }
  return numberText(node.value, node.unit);
}

std::string ExplanationViewController::ratesOfDaysText(const TrailNode& node,
                                                       const TrailNode& trail) {
  return node.atRatesOfDays ? numberText(*node.atRatesOfDays, trail.unit) : "";
}

bool ExplanationViewController::tellsRatesOfDays(const TrailNode& trail) {
  return tellsOtherRates(trail, trail.unit);
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
  const PortfolioPointer portfolio = node.row ? node.row->portfolio.lock() : nullptr;
  const auto known = rows_.find({portfolio.get(), node.row ? node.row->position : 0});
  if (portfolio == nullptr || known == rows_.end()) {
    return;
  }
  const auto& ledger = portfolio->transactions();
  const auto found = std::ranges::find(ledger, known->second.lock());
  if (found != ledger.end()) {
    openRowHandler(portfolio, static_cast<std::size_t>(found - ledger.begin()));
  }
}

void ExplanationViewController::rememberRows(const TrailNode& node) {
  if (node.row) {
    const PortfolioPointer portfolio = node.row->portfolio.lock();
    if (portfolio != nullptr && node.row->position < portfolio->transactions().size()) {
      rows_[{portfolio.get(), node.row->position}] = portfolio->transactions()[node.row->position];
    }
  }
  for (const TrailNode& child : node.children) {
    rememberRows(child);
  }
}

std::string ExplanationViewController::text() const {
  std::string out;
  if (trail_) {
    writeTrailText(*trail_, *trail_, 0, out);
  }
  return out;
}

std::string ExplanationViewController::csv() const {
  const bool tellsRates = trail_ && tellsRatesOfDays(*trail_);
  std::string out =
      "\"depth\",\"label\",\"operation\",\"value\",\"unit\",\"day\",\"source\",\"note\"";
  out += tellsRates ? ",\"atRatesOfDays\"\r\n" : "\r\n";
  if (trail_) {
    writeTrailCSV(*trail_, 0, tellsRates, out);
  }
  return out;
}

}  // namespace corvane
