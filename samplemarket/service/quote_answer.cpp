#include <algorithm>

#include "platform/time/civil_day.h"
#include "samplemarket/prices/chart_bars.h"
#include "samplemarket/prices/wide.h"
#include "samplemarket/service/answer.h"
#include "samplemarket/service/json_text.h"

namespace corvane::samplemarket {

namespace {

std::string_view marketState(const MarketView& view) {
  const Session& today = view.history().sessions()[view.currentSession()];
  const std::int64_t now = view.now();
  if (now >= today.open && now < today.close) {
    return "REGULAR";
  }
  return now >= today.preOpen && now < today.open      ? "PRE"
         : now >= today.close && now < today.postClose ? "POST"
                                                       : "CLOSED";
}

std::string_view typeName(InstrumentKind kind) {
  switch (kind) {
    case InstrumentKind::stock:
      return "Equity";
    case InstrumentKind::fund:
      return "ETF";
    case InstrumentKind::index:
      return "Index";
    case InstrumentKind::currencyPair:
      return "Currency";
  }
  return "";
}

/// `part` / `whole` with six decimals.
JSONValue ratio(std::int64_t part, std::int64_t whole) {
  return decimalValue(static_cast<std::int64_t>(Wide{part} * 1000000 / whole), 6);
}

class QuoteFields {
 public:
  QuoteFields(const MarketView& view, const std::string& symbol) : view_(view) {
    addIdentity(symbol);
    addPrices();
    addRecentYear();
    addShares();
  }

  JSONValue::Object fields;

 private:
  void add(std::string key, JSONValue value) {
    fields.emplace_back(std::move(key), std::move(value));
  }
  void addPrice(std::string key, std::int64_t price) {
    add(std::move(key), decimalValue(price, view_.prices().decimals()));
  }
  void addChange(const std::string& key, std::int64_t reference) {
    addPrice(key, view_.lastPrice() - reference);
    add(key + "Percent", ratio(100 * (view_.lastPrice() - reference), reference));
  }
  void addRange(std::string key, std::int64_t low, std::int64_t high) {
    std::string text;
    appendDecimal(text, low, view_.prices().decimals());
    text += " - ";
    appendDecimal(text, high, view_.prices().decimals());
    add(std::move(key), std::move(text));
  }

  void addIdentity(const std::string& symbol) {
    const DailyHistory& history = view_.history();
    const Instrument& instrument = history.instrument();
    const Exchange& exchange = history.calendar().exchange();
    const Session& current = history.sessions()[view_.currentSession()];
    add("language", "en-US");
    add("region", "US");
    add("quoteType", quoteType(instrument.kind));
    add("typeDisp", typeName(instrument.kind));
    add("quoteSourceName", "Sample market");
    add("triggerable", true);
    add("customPriceAlertConfidence", "HIGH");
    add("currency", instrument.currency);
    add("exchange", exchange.code);
    add("fullExchangeName", exchange.fullName);
    add("market", exchange.market);
    add("marketState", marketState(view_));
    add("exchangeTimezoneName", exchange.timeZoneName);
    add("exchangeTimezoneShortName", exchange.abbreviation(current.gmtOffset));
    add("gmtOffSetMilliseconds", std::int64_t{1000} * current.gmtOffset);
    // The service cuts short names, and gives longer ones only for shares and funds.
    add("shortName", instrument.name.substr(0, instrument.name.find(" &amp;")));
    if (instrument.kind != InstrumentKind::index) {
      add("longName", instrument.name);
    }
    add("symbol", symbol);
    add("tradeable", false);
    add("cryptoTradeable", false);
    add("esgPopulated", false);
    add("sourceInterval", 15);
    add("exchangeDataDelayedBy", 0);
    add("priceHint", 2);
    add("firstTradeDateMilliseconds",
        std::int64_t{1000} * history.sessions()[history.firstSession()].open);
  }

  void addPrices() {
    const std::size_t session = view_.lastSession();
    const PublishedBar today = view_.dayBar(session);
    const std::int64_t before = view_.priceBefore(session);
    addPrice("regularMarketPrice", view_.lastPrice());
    add("regularMarketTime", view_.regularMarketTime());
    addPrice("regularMarketPreviousClose", before);
    addChange("regularMarketChange", before);
    if (today.hasTrades) {
      addPrice("regularMarketOpen", today.open);
      addPrice("regularMarketDayHigh", today.high);
      addPrice("regularMarketDayLow", today.low);
      addRange("regularMarketDayRange", today.low, today.high);
      add("regularMarketVolume", today.volume);
    }
    addPrice("bid", view_.lastPrice());
    addPrice("ask", view_.lastPrice() + PublishedPrices::unitsPerTick);
    add("bidSize", 8);
    add("askSize", 11);
  }

  void addRecentYear() {
    struct {
      std::int64_t high = 0;
      std::int64_t low = 0;
      std::int64_t closes[2] = {};
      std::int64_t volumes[2] = {};
    } sums;
    constexpr std::int64_t averages[2] = {50, 200};
    constexpr std::int64_t volumeAverages[2] = {10, 63};
    std::int64_t count = 0;
    std::int64_t counts[2] = {};
    for (std::size_t session = view_.lastSession() + 1;
         session > view_.history().firstSession() && count < 252; ++count) {
      const PublishedBar bar = view_.dayBar(--session);
      sums.high = std::max(sums.high, bar.hasTrades ? bar.high : 0);
      sums.low = sums.low == 0 ? bar.low : bar.hasTrades ? std::min(sums.low, bar.low) : sums.low;
      for (int i = 0; i < 2; ++i) {
        sums.closes[i] += count < averages[i] ? bar.close : 0;
        counts[i] += count < averages[i] ? 1 : 0;
        sums.volumes[i] += count < volumeAverages[i] ? bar.volume : 0;
      }
    }
    addPrice("fiftyTwoWeekLow", sums.low);
    addChange("fiftyTwoWeekLowChange", sums.low);
    addPrice("fiftyTwoWeekHigh", sums.high);
    addChange("fiftyTwoWeekHighChange", sums.high);
    addRange("fiftyTwoWeekRange", sums.low, sums.high);
    addPrice("fiftyDayAverage", sums.closes[0] / counts[0]);
    addChange("fiftyDayAverageChange", sums.closes[0] / counts[0]);
    addPrice("twoHundredDayAverage", sums.closes[1] / counts[1]);
    addChange("twoHundredDayAverageChange", sums.closes[1] / counts[1]);
    add("averageDailyVolume10Day", sums.volumes[0] / volumeAverages[0]);
    add("averageDailyVolume3Month", sums.volumes[1] / volumeAverages[1]);
  }

  void addShares() {
    const DailyHistory& history = view_.history();
    const std::int64_t atFirst = history.instrument().shares * 1000;
    if (atFirst == 0) {
      return;
    }
    const SplitRatio& shares = view_.prices().sharesAfter(history.firstSession());
    const std::int64_t issued = atFirst * shares.numerator / shares.denominator;
    add("sharesOutstanding", issued);
    const Wide worth = Wide{issued} * view_.lastPrice();
    add("marketCap", static_cast<std::int64_t>(worth / powerOfTenWide(view_.prices().decimals())));
    add("financialCurrency", history.instrument().currency);
    std::int64_t paid = 0;
    for (const Dividend& dividend : history.dividends()) {
      if (dividend.session <= view_.lastSession() && dividend.session + 252 > view_.lastSession()) {
        paid += view_.prices().price(dividend.amount, dividend.session);
      }
    }
    add("trailingAnnualDividendRate", decimalValue(paid, view_.prices().decimals() + 2));
    add("trailingAnnualDividendYield", ratio(paid / 100, view_.lastPrice()));
  }

  static Wide powerOfTenWide(int exponent) {
    Wide result = 1;
    for (int i = 0; i < exponent; ++i) {
      result *= 10;
    }
    return result;
  }

  const MarketView& view_;
};

}  // namespace

std::string_view quoteType(InstrumentKind kind) {
  switch (kind) {
    case InstrumentKind::stock:
      return "EQUITY";
    case InstrumentKind::fund:
      return "ETF";
    case InstrumentKind::index:
      return "INDEX";
    case InstrumentKind::currencyPair:
      return "CURRENCY";
  }
  return "";
}

Answer errorAnswer(int status, std::string_view container, std::string_view code,
                   std::string_view description) {
  JSONValue error = JSONValue::Object{{"code", code}, {"description", description}};
  JSONValue root;
  root.set(container, JSONValue::Object{{"result", JSONValue()}, {"error", std::move(error)}});
  return {.status = status, .body = root.text()};
}

Answer quoteAnswer(MarketData& market, const std::vector<std::string>& symbols, std::int64_t now) {
  JSONValue::Array results;
  for (const std::string& symbol : symbols) {
    if (const auto history = market.history(symbol, now)) {
      results.emplace_back(QuoteFields(MarketView(*history, now), symbol).fields);
    }
  }
  JSONValue root;
  root.set("quoteResponse",
           JSONValue::Object{{"result", std::move(results)}, {"error", JSONValue()}});
  return {.body = root.text()};
}

}  // namespace corvane::samplemarket
