#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/time/civil_day.h"
#include "samplemarket/prices/chart_bars.h"
#include "samplemarket/service/answer.h"
#include "samplemarket/service/json_text.h"

namespace corvane::samplemarket {

namespace {

constexpr std::string_view container = "chart";

struct TimeRange {
  std::int64_t from;
  std::int64_t to;
};

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isRead = error == std::errc() && end == text.data() + text.size();
  return isRead ? std::optional(value) : std::nullopt;
}

TimeRange lastTradingDay(const MarketView& view) {
  const auto& sessions = view.history().sessions();
  const Session& today = sessions[view.currentSession()];
  const Session& session = today.preOpen <= view.now() ? today : sessions[view.lastSession()];
  return {session.preOpen, std::max(session.postClose, session.close)};
}

JSONValue period(const MarketView& view, const Session& session, std::int64_t start,
                 std::int64_t end) {
  return JSONValue::Object{
      {"timezone", view.history().calendar().exchange().abbreviation(session.gmtOffset)},
      {"start", start},
      {"end", end},
      {"gmtoffset", session.gmtOffset}};
}

JSONValue periods(const MarketView& view, const Session& session) {
  return JSONValue::Object{{"pre", period(view, session, session.preOpen, session.open)},
                           {"regular", period(view, session, session.open, session.close)},
                           {"post", period(view, session, session.close, session.postClose)}};
}

JSONValue tradingPeriods(const MarketView& view, const TimeRange& range) {
  JSONValue::Array pre;
  JSONValue::Array regular;
  JSONValue::Array post;
  const SessionSpan span = sessionsTouched(view, range.from, range.to);
  for (std::size_t i = span.first; i < span.end; ++i) {
    const Session& session = view.history().sessions()[i];
    pre.push_back(JSONValue::Array{period(view, session, session.preOpen, session.open)});
    regular.push_back(JSONValue::Array{period(view, session, session.open, session.close)});
    post.push_back(JSONValue::Array{period(view, session, session.close, session.postClose)});
  }
  return JSONValue::Object{
      {"pre", std::move(pre)}, {"regular", std::move(regular)}, {"post", std::move(post)}};
}

JSONValue meta(const MarketView& view, const std::string& symbol, const ChartInterval& interval,
               const TimeRange& range) {
  const DailyHistory& history = view.history();
  const Instrument& instrument = history.instrument();
  const Exchange& exchange = history.calendar().exchange();
  const Session& current = history.sessions()[view.currentSession()];
  const int decimals = view.prices().decimals();
  const std::size_t first = std::clamp(history.calendar().firstOpeningFrom(range.from),
                                       history.firstSession(), view.lastSession());
  const JSONValue before = decimalValue(view.priceBefore(first), decimals);
  const bool isIntraday = interval.kind == ChartInterval::Kind::minutes;
  JSONValue::Object fields = {{"currency", instrument.currency},
                              {"symbol", symbol},
                              {"exchangeName", exchange.code},
                              {"fullExchangeName", exchange.fullName},
                              {"instrumentType", quoteType(instrument.kind)},
                              {"firstTradeDate", history.sessions()[history.firstSession()].open},
                              {"regularMarketTime", view.regularMarketTime()},
                              {"hasPrePostMarketData", current.preOpen < current.open},
                              {"gmtoffset", current.gmtOffset},
                              {"timezone", exchange.abbreviation(current.gmtOffset)},
                              {"exchangeTimezoneName", exchange.timeZoneName},
                              {"regularMarketPrice", decimalValue(view.lastPrice(), decimals)},
                              {"chartPreviousClose", before},
                              {"priceHint", 2}};
  if (isIntraday) {
    fields.emplace_back("previousClose", before);
    fields.emplace_back("scale", 3);
  }
  fields.emplace_back("currentTradingPeriod", periods(view, current));
  if (isIntraday) {
    fields.emplace_back("tradingPeriods", tradingPeriods(view, range));
  }
  fields.emplace_back("dataGranularity", interval.text);
  fields.emplace_back("range", "");
  fields.emplace_back("validRanges", JSONValue::Array{"1d", "5d", "1mo", "3mo", "6mo", "1y", "2y",
                                                      "5y", "10y", "ytd", "max"});
  return fields;
}

/// The time that is told for what happens at the opening of `session`, `open`: as the real service
/// does, the start of its bar where bars are longer than a day.
std::int64_t toldTime(std::size_t session, std::int64_t open, const std::vector<ChartBar>& bars) {
  const auto bar = std::ranges::lower_bound(bars, session, {}, &ChartBar::lastSession);
  // The running bar is told with the time of the last price, which is later.
  return bar == bars.end() ? open : std::min(bar->time, open);
}

JSONValue events(const MarketView& view, const ChartRequest& request, const ChartInterval& interval,
                 const TimeRange& range, const std::vector<ChartBar>& bars) {
  const DailyHistory& history = view.history();
  const std::string& wanted = request.events;
  const bool isLongerThanADay =
      interval.kind != ChartInterval::Kind::minutes && interval.kind != ChartInterval::Kind::day;
  const auto timeWithin = [&](std::size_t session) -> std::optional<std::int64_t> {
    const std::int64_t time = history.sessions()[session].open;
    const bool isWithin = time >= range.from && time < range.to && session <= view.lastSession();
    if (!isWithin) {
      return std::nullopt;
    }
    return isLongerThanADay ? toldTime(session, time, bars) : time;
  };
  JSONValue result;
  JSONValue::Object dividends;
  for (const Dividend& dividend : history.dividends()) {
    const auto time = timeWithin(dividend.session);
    if (time && wanted.find("div") != std::string::npos) {
      const std::int64_t amount = view.prices().price(dividend.amount, dividend.session);
      const std::string key = std::to_string(*time);
      if (!dividends.empty() && dividends.back().first == key) {
        dividends.pop_back();  // a bar has no place for two
      }
      dividends.emplace_back(
          key, JSONValue::Object{{"amount", decimalValue(amount, view.prices().decimals() + 2)},
                                 {"date", *time}});
    }
  }
  JSONValue::Object splits;
  for (const Split& split : history.splits()) {
    const auto time = timeWithin(split.session);
    if (time && wanted.find("split") != std::string::npos) {
      splits.emplace_back(
          std::to_string(*time),
          JSONValue::Object{{"date", *time},
                            {"numerator", split.ratio.numerator},
                            {"denominator", split.ratio.denominator},
                            {"splitRatio", std::to_string(split.ratio.numerator) + ":" +
                                               std::to_string(split.ratio.denominator)}});
    }
  }
  if (!dividends.empty()) {
    result.set("dividends", std::move(dividends));
  }
  if (!splits.empty()) {
    result.set("splits", std::move(splits));
  }
  return result;
}

/// Appends the list `"key":[…]` of what `append` writes for each bar.
template <typename Append>
void appendList(std::string& text, std::string_view key, const std::vector<ChartBar>& bars,
                Append append) {
  text += '"';
  text += key;
  text += "\":[";
  for (const ChartBar& bar : bars) {
    append(bar);
    text += ',';
  }
  if (!bars.empty()) {
    text.pop_back();
  }
  text += ']';
}

void appendSeries(std::string& text, const std::vector<ChartBar>& bars, const MarketView& view,
                  bool isIntraday) {
  if (bars.empty()) {
    text += isIntraday ? R"("indicators":{"quote":[{}]})"
                       : R"("indicators":{"quote":[{}],"adjclose":[{}]})";
    return;
  }
  const int decimals = view.prices().decimals();
  const auto appendPrices = [&](std::string_view key, auto price) {
    appendList(text, key, bars, [&](const ChartBar& bar) {
      if (bar.hasTrades) {
        appendDecimal(text, price(bar), decimals);
      } else {
        text += "null";
      }
    });
  };
  appendList(text, "timestamp", bars,
             [&](const ChartBar& bar) { text += std::to_string(bar.time); });
  text += R"(,"indicators":{"quote":[{)";
  appendPrices("open", [](const ChartBar& bar) { return bar.open; });
  text += ',';
  appendPrices("high", [](const ChartBar& bar) { return bar.high; });
  text += ',';
  appendPrices("low", [](const ChartBar& bar) { return bar.low; });
  text += ',';
  appendPrices("close", [](const ChartBar& bar) { return bar.close; });
  text += ',';
  appendList(text, "volume", bars, [&](const ChartBar& bar) {
    text += bar.hasTrades ? std::to_string(bar.volume) : "null";
  });
  text += "}]";
  if (!isIntraday) {
    text += R"(,"adjclose":[{)";
    appendPrices("adjclose", [&](const ChartBar& bar) {
      return view.prices().dividendAdjusted(bar.close, bar.lastSession);
    });
    text += "}]";
  }
  text += '}';
}

Answer unprocessable(std::string_view description) {
  return errorAnswer(422, container, "Unprocessable Entity", description);
}

/// Why the service doesn't serve `interval` over `range`; none where it does.
std::optional<Answer> refusal(const ChartInterval& interval, const TimeRange& range,
                              std::int64_t now) {
  // A client that asks for what is just old enough may be some hours late.
  constexpr std::int64_t leeway = secondsPerDay / 4;
  const auto isLonger = [&](std::int64_t seconds, int days) {
    return days > 0 && seconds > days * secondsPerDay + leeway;
  };
  if (isLonger(now - range.from, interval.greatestAgeInDays)) {
    return unprocessable("Bars of " + std::string(interval.text) + " reach back " +
                         std::to_string(interval.greatestAgeInDays) + " days only");
  }
  if (isLonger(range.to - range.from, interval.longestRangeInDays)) {
    return unprocessable("Bars of " + std::string(interval.text) + " are served for " +
                         std::to_string(interval.longestRangeInDays) + " days at a time");
  }
  return std::nullopt;
}

}  // namespace

Answer chartAnswer(MarketData& market, const ChartRequest& request, std::int64_t now,
                   bool omitsBars) {
  const auto history = market.history(request.symbol, now);
  if (!history) {
    return errorAnswer(404, container, "Not Found",
                       "There is no data for the symbol " + request.symbol);
  }
  const auto interval = ChartInterval::named(request.interval.empty() ? "1d" : request.interval);
  if (!interval) {
    return unprocessable("The interval " + request.interval + " is not served");
  }
  const MarketView view(*history, now);
  const auto from = wholeNumber(request.period1.empty() ? "-1" : request.period1);
  const auto to = wholeNumber(request.period2.empty() ? "-1" : request.period2);
  if (!from || !to) {
    return errorAnswer(400, container, "Bad Request", "period1 and period2 are seconds since 1970");
  }
  const TimeRange range = *from == -1 && *to == -1 ? lastTradingDay(view) : TimeRange{*from, *to};
  if (range.from > range.to) {
    return errorAnswer(400, container, "Bad Request", "period1 is later than period2");
  }
  if (auto refused = refusal(*interval, range, now)) {
    return *std::move(refused);
  }
  std::vector<ChartBar> bars =
      chartBars(view, *interval, range.from, range.to, request.includesPrePost);
  for (std::size_t i = 0; omitsBars && i < bars.size(); i += 2) {
    bars[i].hasTrades = false;
  }
  std::string body =
      R"({"chart":{"result":[{"meta":)" + meta(view, request.symbol, *interval, range).text() + ',';
  if (const JSONValue told = events(view, request, *interval, range, bars); !told.isNull()) {
    body += "\"events\":" + told.text() + ',';
  }
  appendSeries(body, bars, view, interval->kind == ChartInterval::Kind::minutes);
  body += R"(}],"error":null}})";
  return {.body = std::move(body)};
}

}  // namespace corvane::samplemarket
