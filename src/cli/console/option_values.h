// Values of options that are more than text.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "cli/console/command_line.h"
#include "core/decimal/decimal.h"
#include "core/market/quote_provider.h"
#include "core/money/currency.h"
#include "core/money/year_month_day.h"

namespace corvane::cli {

/// The day of an option, written as 2024-02-29; none where the option is absent. Throws UsageError
/// for any other text.
[[nodiscard]] std::optional<YearMonthDay> dayOption(const CommandLine& line,
                                                    std::string_view option);

/// The number of an option, which is not below 0; none where the option is absent. Throws
/// UsageError for any other text.
[[nodiscard]] std::optional<Decimal> numberOption(const CommandLine& line, std::string_view option);

/// The number that digits alone make; none for any other text.
[[nodiscard]] std::optional<std::size_t> wholeNumber(std::string_view text);

/// The equity of this symbol: the one that `isKnown` by just this symbol, else that of the symbol
/// in capitals, as the market writes it. Blanks around it do not count. Throws UsageError for what
/// cannot be a symbol.
[[nodiscard]] EquityPointer equityNamed(std::string_view symbol, QuoteProvider& provider,
                                        const std::function<bool(const EquityInfo&)>& isKnown);

/// The currency with this code. Throws UsageError where there is none.
[[nodiscard]] Currency currencyNamed(const std::string& code);

}  // namespace corvane::cli
