// How a figure came about: a tree whose every inner node can be recomputed from what is below it.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/decimal/decimal.h"
#include "core/money/year_month_day.h"

namespace corvane {

class Portfolio;

struct TrailNode {
  enum class Operation {
    leaf,
    sum,         ///< of all children
    difference,  ///< the first child less the others
    product,     ///< of all children
    quotient,    ///< the first child by the second
    round,       ///< the child to `digits`, half to even
    least,       ///< the least of the children
    solution,    ///< the first child, at which the second one is 0
  };
  /// A row of a ledger, which its name alone would not tell where two portfolios share it.
  struct Row {
    std::weak_ptr<Portfolio> portfolio;  ///< whose ledger it is, never a copy
    std::size_t position = 0;            ///< in the ledger, from 0
  };

  std::string label;
  Decimal value = {};     ///< NaN where it is not known, as without a price; the note says why
  std::string unit = {};  ///< a currency's code, or empty for a plain number
  std::optional<YearMonthDay> day = std::nullopt;
  Operation operation = Operation::leaf;
  int digits = 0;  ///< of a rounding
  std::vector<TrailNode> children = {};
  /// Where a leaf comes from, for people: a row, a quote, a rate, a setting.
  std::string source = {};
  std::string note = {};                  ///< what the reader might stumble over
  std::optional<Row> row = std::nullopt;  ///< that `source` tells of
  /// Of deposits: the same in the primary currency at the rates of their own days.
  std::optional<Decimal> atRatesOfDays = std::nullopt;

  [[nodiscard]] bool isKnown() const { return !value.isNaN(); }
  /// The value that the children give; that of a leaf.
  [[nodiscard]] Decimal recomputed() const;
};

/// Inner nodes, with the values that their children give.
[[nodiscard]] TrailNode sumOf(std::string label, std::string unit, std::vector<TrailNode> parts);
[[nodiscard]] TrailNode differenceOf(std::string label, std::string unit,
                                     std::vector<TrailNode> parts);
[[nodiscard]] TrailNode productOf(std::string label, std::string unit,
                                  std::vector<TrailNode> factors);
[[nodiscard]] TrailNode quotientOf(std::string label, std::string unit, TrailNode dividend,
                                   TrailNode divisor);
/// `exact` rounded to `digits`; itself where it has no more.
[[nodiscard]] TrailNode roundedTo(int digits, std::string label, TrailNode exact);

[[nodiscard]] TrailNode leastOf(std::string label, std::string unit, std::vector<TrailNode> parts);
/// `unknown`, whose value makes `left` 0.
[[nodiscard]] TrailNode solutionOf(std::string label, TrailNode unknown, TrailNode left);
/// `fraction` in percent with two digits, as it stands on the screen.
[[nodiscard]] TrailNode percentOf(std::string label, TrailNode fraction);

/// "sum", "difference", "product", "quotient", "round", "least", "solution", or "" for a leaf.
[[nodiscard]] std::string_view displayName(TrailNode::Operation operation);

}  // namespace corvane
