#include "presentation/text/table_text.h"

#include "core/money/decimal_number_formatter.h"

namespace corvane {

AttributedText numericCell(const std::string& text) {
  AttributedText cell(text, {.isMonospaced = true});
  cell.alignment = TextAlignment::right;
  return cell;
}

AttributedText moneyTextCell(const std::optional<Decimal>& amount, const Currency& currency) {
  return numericCell(amount && !amount->isNaN()
                         ? DecimalNumberFormatter::money(currency).string(*amount).value_or("")
                         : "");
}

AttributedText sharesCell(const std::optional<Decimal>& shares) {
  return numericCell(
      shares && !shares->isNaN() ? DecimalNumberFormatter().string(*shares).value_or("") : "");
}

}  // namespace corvane
