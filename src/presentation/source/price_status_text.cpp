#include "presentation/source/price_status_text.h"

#include <algorithm>
#include <optional>

#include "core/money/year_month_day.h"
#include "marketdata/chain/refusal_text.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane {
namespace {

/// The user's clock, with the day where it is not today.
std::string clockText(Date date, Date now, bool showsSeconds) {
  const Calendar calendar(TimeZone::current());
  const bool isToday = YearMonthDay::of(date, calendar) == YearMonthDay::of(now, calendar);
  return DateFormatter{
      .dateStyle = isToday ? DateFormatter::Style::none : DateFormatter::Style::mediumStyle,
      .timeStyle =
          showsSeconds ? DateFormatter::Style::mediumStyle : DateFormatter::Style::shortStyle}
      .string(date);
}

/// When the latest of the prices was paid.
std::optional<Date> newestPrice(const EquitySet& equities) {
  std::optional<Date> newest;
  for (const EquityPointer& equity : equities) {
    if (equity->recentPrice && equity->recentDate && (!newest || *newest < *equity->recentDate)) {
      newest = equity->recentDate;
    }
  }
  return newest;
}

/// Why equities have no price: the first reason in the order of symbols, and how many more.
std::string problemText(const EquitySet& equities) {
  std::vector<EquityPointer> faulty;
  std::ranges::copy_if(equities, std::back_inserter(faulty), [](const EquityPointer& equity) {
    return equity->refreshProblem.has_value();
  });
  if (faulty.empty()) {
    return "";
  }
  std::ranges::sort(faulty, {}, &EquityInfo::symbol);
  std::string text = " " + *faulty.front()->refreshProblem;
  if (faulty.size() > 1) {
    text += " " + std::to_string(faulty.size() - 1) + " more without a price.";
  }
  return text;
}

}  // namespace

std::string priceStatusText(const WatchlistManager::Status& status, const EquitySet& equities,
                            Date now) {
  if (equities.empty()) {
    return "";
  }
  std::string text;
  if (status.failure != nullptr) {
    // What is on the screen is what earlier refreshes or the cache have told.
    const auto newest = newestPrice(equities);
    text = newest ? "Latest price of " + clockText(*newest, now, false) + "." : "No prices yet.";
    text += " Refresh failed" +
            (status.failedAt ? " at " + clockText(*status.failedAt, now, false) : "") + ": " +
            refusalText(*status.failure, "an equity");
  } else if (status.refreshedAt) {
    text = "Prices refreshed at " + clockText(*status.refreshedAt, now, false) + ".";
  }
  text += problemText(equities);
  if (status.isRefreshing) {
    text += text.empty() ? "Refreshing prices…" : " Refreshing…";
  } else if (status.nextAt) {
    text += (text.empty() ? "Next refresh at " : " Next at ") +
            clockText(*status.nextAt, now, true) + ".";
  }
  return text;
}

}  // namespace corvane
