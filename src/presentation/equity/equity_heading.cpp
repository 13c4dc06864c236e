#include "presentation/equity/equity_heading.h"

#include "platform/text/formats/relative_date_formatter.h"
#include "presentation/equity/equity_formats.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

std::string sessionSentence(const DateRange& session, Date now, const Calendar& calendar) {
  const RelativeDateFormatter interval{.style = RelativeDateFormatter::Style::numeric,
                                       .context = FormattingContext::middleOfSentence};
  const std::string start = interval.string(session.lower(), now, calendar);
  const std::string end = interval.string(session.upper(), now, calendar);
  if (session.contains(now)) {
    return "Market opened " + start + "; closing " + end + ".";
  }
  return now < session.lower() ? "Market opens " + start + "." : "Market closed " + end + ".";
}

}  // namespace

EquityHeading equityHeading(const EquityPointer& equity, Date now, const UserDefaults& defaults) {
  if (equity == nullptr) {
    return {};
  }
  EquityHeading heading{
      .symbol = equity->symbol, .name = equity->name.value_or(""), .price = "", .summary = {}};
  if (!equity->recentPrice || !equity->recentDate) {
    return heading;
  }
  heading.price = equityPriceFormatter(*equity).string(*equity->recentPrice).value_or("");
  if (equity->previousClosePrice) {
    heading.summary.append("(")
        .append(Formatting::changeText(equity->currency, equity->previousClosePrice,
                                       equity->recentPrice))
        .append(") ");
  }
  heading.summary.append(
      (equity->previousClosePrice ? "as of " : "As of ") +
      Formatting::equityDateFormatter(*equity, defaults).string(*equity->recentDate) + ". ");
  if (equity->recentTradingPeriod) {
    heading.summary.append(sessionSentence(*equity->recentTradingPeriod, now, equity->calendar));
  }
  return heading;
}

}  // namespace corvane
