#include "presentation/equity/equity_formats.h"

#include "core/market/quote_provider.h"
#include "platform/text/formats/date_formatter.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

constexpr int finestPriceDigits = 5;

std::string userDateAndTime(Date date) {
  return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                       .timeStyle = DateFormatter::Style::shortStyle}
      .string(date);
}

}  // namespace

DecimalNumberFormatter equityPriceFormatter(const EquityInfo& equity) {
  auto formatter = DecimalNumberFormatter::money(equity.currency);
  formatter.maximumFractionDigits = finestPriceDigits;
  return formatter;
}

bool prefersLocalTimeZone(const UserDefaults& defaults) {
  return defaults.boolean("preferLocalTimeZone").value_or(false);
}

TimeZone shownTimeZone(const EquityInfo& equity, const UserDefaults& defaults) {
  return prefersLocalTimeZone(defaults) ? TimeZone::current() : equity.calendar.timeZone();
}

void showInChart(QuoteChartView& chart, const std::vector<Quote>& quotes, const QuoteQuery& query,
                 const UserDefaults& defaults) {
  chart.currency = query.equity->currency;
  chart.prefersLocalTimeZone = prefersLocalTimeZone(defaults);
  chart.reset();
  chart.setQuotes(quotes, query);
  if (quotes.empty()) {
    return;
  }
  const auto price =
      [formatter = equityPriceFormatter(*query.equity)](const std::optional<Decimal>& value) {
        return value ? formatter.string(*value).value_or("") : "no price";
      };
  chart.accessibleText = query.equity->symbol + ", " +
                         Formatting::dateRangeText({quotes.front().fromDate, quotes.back().toDate},
                                                   *query.equity, defaults) +
                         ": from " + price(quotes.front().open) + " to " +
                         price(quotes.back().close) + ".";
  chart.changeHandler();
}

bool isOfUnknownEquity(const Error& error) {
  const auto* failure = dynamic_cast<const QuoteProviderError*>(&error);
  const auto* mismatch = failure == nullptr
                             ? nullptr
                             : std::get_if<QuoteProviderError::CurrencyMismatch>(&failure->which());
  return mismatch != nullptr && Currency::noCurrency().code == mismatch->expected.c_str();
}

std::string marketStatusText(const MarketInquiry& inquiry, std::optional<Date> newest) {
  if (inquiry.failure() != nullptr) {
    std::string text;
    if (inquiry.pauseEnd()) {
      return "The quote service asks for a pause. Asking again at " +
             userDateAndTime(*inquiry.pauseEnd()) + ".";
    }
    if (MarketInquiry::isForWantOfNetwork(*inquiry.failure())) {
      text = newest ? "The market cannot be reached. Prices from the cache, up to " +
                          userDateAndTime(*newest) + "."
                    : "The market cannot be reached, and the cache has no prices for this.";
    } else {
      text = inquiry.failure()->description().value_or("Prices could not be fetched.");
    }
    return text + (inquiry.isTryingAgain() ? " Asking again by itself." : "");
  }
  if (inquiry.isWaiting()) {
    return "Fetching prices…";
  }
  return inquiry.answeredAt() ? "As of " + userDateAndTime(*inquiry.answeredAt()) + "." : "";
}

}  // namespace corvane
