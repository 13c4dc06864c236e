// The texts of cells that several tables share.
#pragma once

#include <optional>
#include <string>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"
#include "platform/text/styled/attributed_text.h"

namespace corvane {

/// `text` in the font and on the side of numbers.
[[nodiscard]] AttributedText numericCell(const std::string& text);

/// An amount in the accounting style of its currency; empty where it has no number.
[[nodiscard]] AttributedText moneyTextCell(const std::optional<Decimal>& amount,
                                           const Currency& currency);

/// A number of shares with all its digits; empty where there is none.
[[nodiscard]] AttributedText sharesCell(const std::optional<Decimal>& shares);

}  // namespace corvane
