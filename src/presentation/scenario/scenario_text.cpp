#include "presentation/scenario/scenario_text.h"

#include "presentation/text/table_text.h"

namespace corvane {

std::optional<std::string> returnText(const Decimal& rate) {
  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.positivePrefix = "+";
  percent.minimumFractionDigits = 2;
  percent.maximumFractionDigits = 2;
  return percent.string(rate);
}

AttributedText scenarioMoneyCell(const Decimal& amount,
                                 const std::optional<DecimalNumberFormatter>& formatter) {
  const auto text = formatter ? formatter->string(amount) : std::nullopt;
  return numericCell(text.value_or(std::string(absentValue)));
}

AttributedText scenarioReturnCell(const Decimal& rate) {
  return numericCell(returnText(rate).value_or(std::string(absentValue)));
}

ScenarioEventLook scenarioEventLook(ScenarioPortfolio::Transaction::EventType type) {
  switch (type) {
    using enum ScenarioPortfolio::Transaction::EventType;
    case open:
      return {"Open", Colour::Name::label, "O"};
    case close:
      return {"Close", Colour::Name::label, "C"};
    case buy:
      return {"Buy", Colour::Name::systemBlue, "B"};
    case sell:
      return {"Sell", Colour::Name::systemGreen, "S"};
    case stopLossBuy:
      return {"Buy Stop", Colour::Name::systemPurple, "B!"};
    case stopLossSell:
      return {"Sell Stop", Colour::Name::systemYellow, "S!"};
  }
  return {"", Colour::Name::label, ""};
}

}  // namespace corvane
