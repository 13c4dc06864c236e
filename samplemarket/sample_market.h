// A market-data service on the loopback interface, about an invented market.
//
// It speaks the protocol of the real service: a page that sets cookies, the crumb, charts, details
// and search. Prices, splits, dividends and rates are a pure function of symbol and time, the same
// on every machine, from January 1990 on; the running day grows with the clock. What is traded is
// listed in prices/instruments.h. Tests can have it fail in the ways that services fail.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error.h"
#include "platform/time/date.h"
#include "samplemarket/service/fault_rule.h"

namespace corvane {

struct SampleMarketOptions {
  int port = 0;  ///< 0 for any free one
  /// Asked at every request, on any thread; the system's clock where there is none.
  std::function<Date()> clock = {};
  /// Of 1000 requests, how many fail at random, each in one of the ways that fit it.
  int faultsPerThousand = 0;
  std::uint64_t faultSeed = 1;
};

class SampleMarketError : public ErrorValue<SampleMarketError> {
 public:
  explicit SampleMarketError(std::string what) : text(std::move(what)) {}

  std::string text;

  [[nodiscard]] std::optional<std::string> description() const override { return text; }
  [[nodiscard]] bool hasSameValues(const SampleMarketError& other) const {
    return text == other.text;
  }
};

/// The service, which serves from construction to destruction, on threads of its own. All
/// operations may be called on any thread.
class SampleMarket {
 public:
  using Fault = SampleMarketFault;
  using FaultRule = SampleMarketFaultRule;
  using Options = SampleMarketOptions;

  /// What was asked and how it was answered.
  struct Request {
    std::string path;                  ///< without the query: "/v8/finance/chart/CASTR"
    std::vector<std::string> symbols;  ///< of a chart or of details
    std::string query;                 ///< "period1=0&period2=86400&interval=1d"
    int status;                        ///< of the answer; 0 for a connection dropped
  };

  /// Throws SampleMarketError where the port cannot be had.
  explicit SampleMarket(Options options = {});
  SampleMarket(const SampleMarket&) = delete;
  SampleMarket& operator=(const SampleMarket&) = delete;
  /// Lets slow answers go, and waits for what is under way.
  ~SampleMarket();

  /// "127.0.0.1", which is both the web host and the API host. They speak plain HTTP.
  [[nodiscard]] std::string host() const;
  [[nodiscard]] int port() const;
  /// "http://127.0.0.1:8080"
  [[nodiscard]] std::string baseURL() const;

  /// Has the requests that `rule` fits fail from now on. Of several rules that fit, the one that
  /// was added first comes first.
  void addFault(FaultRule rule);
  /// Forgets all rules, and lets slow answers go.
  void clearFaults();
  /// Ends the delay of the slow answers that are under way.
  void releaseSlowAnswers();

  /// Makes the crumbs that were handed out worthless; the cookies stay good.
  void expireCrumb();

  /// Splits a listed share: `numerator` new ones for `denominator` old ones (each 1 to 1000), with
  /// the first session that opens at `date` or later. Charts of earlier days are restated once that
  /// session has opened. Throws SampleMarketError where the symbol is not listed or not yet by
  /// `date`.
  void addSplit(std::string_view symbol, Date date, int numerator, int denominator);

  /// How many requests came whose path starts with `pathPrefix` and that ask for `symbol`; an empty
  /// one stands for all. A request for the details of several symbols counts once for each.
  [[nodiscard]] int requestCount(std::string_view pathPrefix = {},
                                 std::string_view symbol = {}) const;

  /// The most recent requests, at most 10,000, in the order in which they were answered.
  [[nodiscard]] std::vector<Request> requests() const;

  /// Waits until at least `count` requests fit as in requestCount(), answered or not. False when
  /// the deadline passes first.
  [[nodiscard]] bool waitForRequests(int count, std::string_view pathPrefix = {},
                                     std::string_view symbol = {},
                                     std::chrono::milliseconds deadline = std::chrono::seconds(20));

 private:
  struct Service;
  std::unique_ptr<Service> service_;
};

}  // namespace corvane
