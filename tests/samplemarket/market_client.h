// A client of the sample market that speaks its protocol over a real socket.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/decimal/decimal.h"
#include "platform/data/json.h"
#include "platform/net/url_components.h"
#include "platform/net/url_session.h"
#include "platform/time/calendar.h"
#include "samplemarket/sample_market.h"
#include "support/deadline.h"

namespace corvane::testing {

/// A moment by the clocks of a time zone.
inline Date at(const std::string& zone, int year, int month, int day, int hour = 0, int minute = 0,
               int second = 0) {
  return Calendar(TimeZone::withIdentifier(zone).value())
      .date({{CalendarUnit::year, year},
             {CalendarUnit::month, month},
             {CalendarUnit::day, day},
             {CalendarUnit::hour, hour},
             {CalendarUnit::minute, minute},
             {CalendarUnit::second, second}})
      .value();
}

/// A clock that a test sets while the market reads it.
class TestClock {
 public:
  explicit TestClock(Date now) : seconds_(std::make_shared<std::atomic<double>>()) { set(now); }

  void set(Date now) { *seconds_ = now.timeIntervalSince1970(); }
  [[nodiscard]] Date now() const { return Date::since1970(*seconds_); }

  /// What a market's options take.
  [[nodiscard]] std::function<Date()> reader() const {
    return [seconds = seconds_] { return Date::since1970(*seconds); };
  }

 private:
  std::shared_ptr<std::atomic<double>> seconds_;
};

/// The bars and events of a chart answer.
struct Chart {
  struct Bar {
    Date time = {};
    std::optional<Decimal> open = {};
    std::optional<Decimal> high = {};
    std::optional<Decimal> low = {};
    std::optional<Decimal> close = {};
    std::optional<Decimal> volume = {};
    std::optional<Decimal> adjustedClose = {};

    friend bool operator==(const Bar&, const Bar&) = default;
  };

  JSONValue meta;
  std::vector<Bar> bars;
  JSONValue events;

  /// The bar of `bars` in [`from`, `to`) as one; its time is `from`.
  [[nodiscard]] Bar together(Date from, Date to) const {
    Bar all{.time = from};
    for (const Bar& bar : bars) {
      if (bar.time < from || bar.time >= to || !bar.close) {
        continue;
      }
      all.open = all.open ? all.open : bar.open;
      all.high = all.high ? std::max(*all.high, *bar.high) : bar.high;
      all.low = all.low ? std::min(*all.low, *bar.low) : bar.low;
      all.close = bar.close;
      all.volume = all.volume.value_or(0) + *bar.volume;
    }
    return all;
  }
};

/// Whether two bars tell the same prices and the same volume.
inline bool agree(const Chart::Bar& left, const Chart::Bar& right) {
  return left.open == right.open && left.high == right.high && left.low == right.low &&
         left.close == right.close && left.volume == right.volume;
}

inline std::ostream& operator<<(std::ostream& out, const Chart::Bar& bar) {
  const auto text = [](const std::optional<Decimal>& value) {
    return value ? value->description() : "null";
  };
  return out << bar.time.description() << " open " << text(bar.open) << " high " << text(bar.high)
             << " low " << text(bar.low) << " close " << text(bar.close) << " volume "
             << text(bar.volume);
}

inline Decimal decimalOf(const JSONValue& value) {
  return Decimal::fromWholeString(value.number().text()).value();
}

inline Date dateOf(const JSONValue& value) {
  return Date::since1970(std::stod(value.number().text()));
}

class MarketClient {
 public:
  using Items = std::vector<URLComponents::QueryItem>;

  explicit MarketClient(const SampleMarket& market)
      : port_(market.port()), session_(DispatchQueue::serial("market-client")) {}

  /// Starts a request; the future never stays empty for longer than the request's timeout.
  std::future<Result<HTTPResponse>> start(const std::string& path, Items items = {}) {
    const URLComponents url{.scheme = "http",
                            .host = "127.0.0.1",
                            .port = port_,
                            .path = path,
                            .queryItems = std::move(items)};
    auto promise = std::make_shared<std::promise<Result<HTTPResponse>>>();
    session_.send({.url = url.string().value()},
                  [promise](auto result) { promise->set_value(std::move(result)); });
    return promise->get_future();
  }
  Result<HTTPResponse> get(const std::string& path, Items items = {}) {
    auto answer = start(path, std::move(items));
    if (answer.wait_for(deadline) != std::future_status::ready) {
      ADD_FAILURE() << "no answer came";
      std::abort();
    }
    return answer.get();
  }

  static Items chartItems(Date from, Date to, const std::string& interval,
                          bool withPrePost = true) {
    const auto seconds = [](Date date) {
      return std::to_string(static_cast<long long>(date.timeIntervalSince1970()));
    };
    return {{"period1", seconds(from)},
            {"period2", seconds(to)},
            {"interval", interval},
            {"includePrePost", withPrePost ? "true" : "false"},
            {"events", "split|div"}};
  }
  Result<HTTPResponse> getChart(const std::string& symbol, Date from, Date to,
                                const std::string& interval, bool withPrePost = true) {
    return get("/v8/finance/chart/" + symbol, chartItems(from, to, interval, withPrePost));
  }
  Chart chart(const std::string& symbol, Date from, Date to, const std::string& interval,
              bool withPrePost = false) {
    return chartIn(getChart(symbol, from, to, interval, withPrePost).value().body);
  }

  static Chart chartIn(const std::string& body) {
    const JSONValue answer = JSONValue::parse(body);
    const JSONValue& result = answer.at("chart").at("result").array().at(0);
    Chart chart{.meta = result.at("meta"), .bars = {}, .events = {}};
    if (const JSONValue* events = result.find("events")) {
      chart.events = *events;
    }
    const JSONValue* times = result.find("timestamp");
    if (times == nullptr) {
      return chart;
    }
    for (const JSONValue& time : times->array()) {
      chart.bars.push_back({.time = dateOf(time)});
    }
    const JSONValue& indicators = result.at("indicators");
    const JSONValue& series = indicators.at("quote").array().at(0);
    fill(chart.bars, series.at("open"), &Chart::Bar::open);
    fill(chart.bars, series.at("high"), &Chart::Bar::high);
    fill(chart.bars, series.at("low"), &Chart::Bar::low);
    fill(chart.bars, series.at("close"), &Chart::Bar::close);
    fill(chart.bars, series.at("volume"), &Chart::Bar::volume);
    if (const JSONValue* adjusted = indicators.find("adjclose")) {
      fill(chart.bars, adjusted->array().at(0).at("adjclose"), &Chart::Bar::adjustedClose);
    }
    return chart;
  }

  /// Fetches the cookies, and the crumb that goes with them.
  std::string crumb() {
    (void)get("/ ");
    return get("/v1/test/getcrumb").value().body;
  }
  Result<HTTPResponse> getDetails(const std::string& symbols, const std::string& crumb) {
    return get("/v7/finance/quote", {{"crumb", crumb}, {"symbols", symbols}});
  }

  URLSession& session() { return session_; }

 private:
  static void fill(std::vector<Chart::Bar>& bars, const JSONValue& values,
                   std::optional<Decimal> Chart::Bar::*field) {
    ASSERT_EQ(values.array().size(), bars.size());
    for (std::size_t i = 0; i < bars.size(); ++i) {
      if (const JSONValue& value = values.array()[i]; !value.isNull()) {
        bars[i].*field = decimalOf(value);
      }
    }
  }

  int port_;
  URLSession session_;
};

}  // namespace corvane::testing
