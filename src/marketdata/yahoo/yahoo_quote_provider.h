// The provider that talks to the network.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/market/quote_provider.h"
#include "marketdata/yahoo/wire/yahoo_service.h"

namespace corvane {

class YahooSession;

/// Finds equities, reads their details and fetches bars and events from the market-data service.
/// The id of an equity is the service's symbol. Bars always come as adjusted for splits, and each
/// result says which part of it is final.
///
/// Main queue only, and the main queue must be pumped: answers are read on a background queue, the
/// fields of equities change on the main queue, and a completion runs after that. Completions of
/// searches and refreshes run on the main queue, those of fetches on a background queue. Errors
/// are YahooProviderError, QuoteProviderError, URLError for the transport, and JSONError for an
/// answer of another form than agreed.
///
/// Construction starts to ask the service for access, which only refreshes need (and searches,
/// which refresh what they find). It is asked for again after a refusal, until it is given; a
/// refresh that waits for it too long fails. When the provider goes, what is under way ends with
/// URLError::Code::cancelled, but for searches, whose completions are dropped.
class YahooQuoteProvider : public QuoteProvider {
 public:
  explicit YahooQuoteProvider(YahooService service = {});
  ~YahooQuoteProvider() override;

  /// "YahooFinance"
  [[nodiscard]] std::string providerName() const override;

  /// Shares, funds and currency pairs that fit `text`; those whose details cannot be read are left
  /// out.
  void searchEquities(std::string text, EquitiesCompletion completion) override;

  /// As the base, with the first trade that charts of this run have told.
  [[nodiscard]] EquityPointer equityWithId(std::string_view id) override;

  /// A pair with the neutral currency is none: nothing of it is asked for, and a fetch answers
  /// QuoteProviderError::NotAvailable.
  [[nodiscard]] EquityPointer exchangeRateEquity(const Currency& from, const Currency& to) override;
  /// The service's name of a pair, under which the cache keeps it too.
  [[nodiscard]] static std::string pairId(const Currency& from, const Currency& to);

  /// Reads the details of all `equities`, whose ids are distinct, with one request. The first
  /// failure ends it: equities before it are changed, the one that failed and those after it are
  /// not. Equities that the service does not know stay as they are.
  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override;

  /// Where the service says that it has nothing of a range, as of one before the first trade, that
  /// is an answer: nothing happened in it as far as it is past. Nothing before 1900 is asked for.
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override;

  /// The service gives bars of a minute for seven days at a time.
  [[nodiscard]] std::vector<QuoteQuery> sourceQueries(const QuoteQuery& query) const override;

  [[nodiscard]] std::set<QuoteInterval> availableIntervals(const EquityPointer& equity,
                                                           const DateRange& range) const override;

  [[nodiscard]] std::optional<Date> nextRequestDate() const override;

  /// The bar lengths that the service has at `now` for a range that starts at `start`: the older
  /// the start, the fewer of the short ones.
  [[nodiscard]] static std::set<QuoteInterval> intervalsServed(const Calendar& calendar, Date start,
                                                               Date now);

  struct ChartOrder;

 private:
  void fetchChart(const EquityPointer& equity, const ChartOrder& order, QuoteCompletion completion);

  /// By id; main queue only.
  using FirstTrades = std::unordered_map<std::string, Date>;

  std::shared_ptr<YahooSession> session_;
  /// An equity that the cache has filled lacks its first trade. It lasts for the run, also where
  /// the equity is let go in between.
  std::shared_ptr<FirstTrades> firstTrades_ = std::make_shared<FirstTrades>();
};

}  // namespace corvane
