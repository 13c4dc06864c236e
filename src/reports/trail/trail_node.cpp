#include "reports/trail/trail_node.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

TrailNode innerNode(TrailNode::Operation operation, std::string label, std::string unit,
                    std::vector<TrailNode> children, int digits = 0) {
  TrailNode node{.label = std::move(label),
                 .unit = std::move(unit),
                 .operation = operation,
                 .digits = digits,
                 .children = std::move(children)};
  node.value = node.recomputed();
  return node;
}

/// The nodes moved into one list; an initializer list would copy all that is below them.
template <typename... Nodes>
std::vector<TrailNode> listOf(Nodes... nodes) {
  std::vector<TrailNode> list;
  list.reserve(sizeof...(nodes));
  (list.push_back(std::move(nodes)), ...);
  return list;
}

}  // namespace

Decimal TrailNode::recomputed() const {
  if (operation == Operation::leaf) {
    return value;
  }
  if (operation == Operation::round) {
    return rounded(children.front().value, digits, RoundingMode::bankers);
  }
  if (operation == Operation::solution) {
    return children.back().value.isZero() ? children.front().value : Decimal::nan();
  }
  if (operation == Operation::least) {
    return std::ranges::min_element(children, {}, &TrailNode::value)->value;
  }
  Decimal result = operation == Operation::product ? 1 : 0;
  bool isFirst = true;
  for (const TrailNode& child : children) {
    if (std::exchange(isFirst, false) &&
        (operation == Operation::difference || operation == Operation::quotient)) {
      result = child.value;
    } else if (operation == Operation::sum) {
      result += child.value;
    } else if (operation == Operation::difference) {
      result -= child.value;
    } else if (operation == Operation::product) {
      result = result * child.value;
    } else {
      result = result / child.value;
    }
  }
  return result;
}

TrailNode sumOf(std::string label, std::string unit, std::vector<TrailNode> parts) {
  return innerNode(TrailNode::Operation::sum, std::move(label), std::move(unit), std::move(parts));
}

TrailNode differenceOf(std::string label, std::string unit, std::vector<TrailNode> parts) {
  return innerNode(TrailNode::Operation::difference, std::move(label), std::move(unit),
                   std::move(parts));
}

TrailNode productOf(std::string label, std::string unit, std::vector<TrailNode> factors) {
  return innerNode(TrailNode::Operation::product, std::move(label), std::move(unit),
                   std::move(factors));
}

TrailNode quotientOf(std::string label, std::string unit, TrailNode dividend, TrailNode divisor) {
  return innerNode(TrailNode::Operation::quotient, std::move(label), std::move(unit),
                   listOf(std::move(dividend), std::move(divisor)));
}

TrailNode roundedTo(int digits, std::string label, TrailNode exact) {
  if (rounded(exact.value, digits, RoundingMode::bankers) == exact.value) {
    exact.label = std::move(label);
    return exact;
  }
  std::string unit = exact.unit;
  TrailNode node = innerNode(TrailNode::Operation::round, std::move(label), std::move(unit),
                             listOf(std::move(exact)), digits);
  node.note = "rounded half to even, " + std::to_string(digits) + " digits";
  return node;
}

TrailNode leastOf(std::string label, std::string unit, std::vector<TrailNode> parts) {
  return innerNode(TrailNode::Operation::least, std::move(label), std::move(unit),
                   std::move(parts));
}

TrailNode solutionOf(std::string label, TrailNode unknown, TrailNode left) {
  std::string unit = unknown.unit;
  return innerNode(TrailNode::Operation::solution, std::move(label), std::move(unit),
                   listOf(std::move(unknown), std::move(left)));
}

TrailNode percentOf(std::string label, TrailNode fraction) {
  constexpr int digits = 2;
  TrailNode hundred{.label = "Percent of a whole", .value = 100};
  return roundedTo(digits, std::move(label),
                   productOf("In percent", "%", listOf(std::move(fraction), std::move(hundred))));
}

std::string_view displayName(TrailNode::Operation operation) {
  switch (operation) {
    case TrailNode::Operation::leaf:
      return "";
    case TrailNode::Operation::sum:
      return "sum";
    case TrailNode::Operation::difference:
      return "difference";
    case TrailNode::Operation::product:
      return "product";
    case TrailNode::Operation::quotient:
      return "quotient";
    case TrailNode::Operation::round:
      return "round";
    case TrailNode::Operation::least:
      return "least";
    case TrailNode::Operation::solution:
      return "solution";
  }
  __builtin_unreachable();
}

}  // namespace corvane
