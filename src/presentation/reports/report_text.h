// Figures and days as reports show them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/money/currency.h"
#include "core/money/year_month_day.h"
#include "platform/text/styled/attributed_text.h"
#include "presentation/controls/table_model.h"

namespace corvane {

/// What stands where a number does not apply or cannot be measured; never 0.
inline constexpr std::string_view noFigureText = "—";

/// A figure at the head of a report.
struct ReportFigure {
  std::string title;
  AttributedText value;
  std::string detail = {};       ///< below it, in a smaller font
  std::string hint = {};         ///< what it means, or why there is none
  TrailMaker explain = nullptr;  ///< null where it cannot be explained

  /// The figure in one line, for those who cannot see it.
  [[nodiscard]] std::string accessibleText() const;
};

/// 0.1234 as "+12.34%"; "—" for none.
[[nodiscard]] std::string returnRateText(const std::optional<double>& value);
/// 0.1234 as "12.34%"; "—" for none.
[[nodiscard]] std::string plainRateText(const std::optional<double>& value);
/// A return in the colour of its sign, which it shows as well.
[[nodiscard]] AttributedText returnRateCell(const std::optional<double>& value);
/// A rate that is neither good nor bad.
[[nodiscard]] AttributedText plainRateCell(const std::optional<double>& value);

/// An amount in the currency's own style; "—" for none.
[[nodiscard]] std::string reportMoneyText(const std::optional<Decimal>& amount,
                                          const Currency& currency);
/// As a cell; 0 is a number like any other.
[[nodiscard]] AttributedText reportMoneyCell(const std::optional<Decimal>& amount,
                                             const Currency& currency);
/// An amount in the colour of its sign.
[[nodiscard]] AttributedText signedMoneyCell(const Decimal& amount, const Currency& currency);
[[nodiscard]] AttributedText plainCell(std::string_view text);

/// "A, B, C"; of many names "A, B, C, D, E and 3 more".
[[nodiscard]] std::string namesPhrase(const std::vector<std::string>& names);

/// "Mar 4, 2021"
[[nodiscard]] std::string mediumDayText(const YearMonthDay& day);
/// "Mar 2021"
[[nodiscard]] std::string monthText(const YearMonthDay& day);
/// "Mar"; `month` is 1 to 12.
[[nodiscard]] std::string monthNameText(int month);
/// The head of a column of figures of a month, which is 1 to 12: month1, "Jan".
[[nodiscard]] TableColumn monthHead(int month);
/// The moment at which `day` begins for those texts and for charts, whatever the time zone.
[[nodiscard]] Date chartDate(const YearMonthDay& day);
[[nodiscard]] const Calendar& chartCalendar();

}  // namespace corvane
