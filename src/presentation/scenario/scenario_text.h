// The words and looks that the two scenario screens share.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/decimal/decimal.h"
#include "core/money/decimal_number_formatter.h"
#include "platform/text/styled/attributed_text.h"
#include "platform/text/styled/colour.h"
#include "scenario/scenario_portfolio.h"

namespace corvane {

/// A return, 0.05 for 5%, with its sign and two digits: "+5.00%". None where it is no number.
[[nodiscard]] std::optional<std::string> returnText(const Decimal& rate);

/// What stands in a cell that has no value.
inline constexpr std::string_view absentValue = "—";

/// An amount of money in a table; absent without a formatter.
[[nodiscard]] AttributedText scenarioMoneyCell(
    const Decimal& amount, const std::optional<DecimalNumberFormatter>& formatter);
/// A return in a table; absent where it is no number.
[[nodiscard]] AttributedText scenarioReturnCell(const Decimal& rate);

/// How a row of a simulated ledger is told apart from others.
struct ScenarioEventLook {
  std::string_view label;
  Colour colour;
  std::string_view sign;  ///< in the circle of a chart, for those who do not tell the colours apart
};

/// The ends of a run have the colour of labels, which is seen on light and dark.
[[nodiscard]] ScenarioEventLook scenarioEventLook(ScenarioPortfolio::Transaction::EventType type);

}  // namespace corvane
