#include "cli/console/price_source.h"

#include <chrono>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "core/market/price_adjuster.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/refusal_text.h"
#include "marketdata/chain/stored_prices.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/file_manager.h"
#include "platform/system/terminal.h"
#include "platform/system/user_defaults.h"

namespace corvane::cli {
namespace {

/// The cache of the service's client, which the desktop program uses too.
constexpr std::string_view cacheName = "YahooQuoteProviderCache.sqlite3";

std::shared_ptr<QuoteProvider> clientOf(const SampleMarket& market) {
  YahooService service;
  service.scheme = "http";
  service.apiHost = market.host();
  service.webHost = market.host();
  service.port = market.port();
  return std::make_shared<YahooQuoteProvider>(std::move(service));
}

using DataSource = SwitchableQuoteProvider::DataSource;

/// A chain that, while the cache has to do, tells all that the cache can tell, and fails where that
/// is nothing: a report without prices must not look like one with them.
class ConsoleChain : public SwitchableQuoteProvider {
 public:
  using SwitchableQuoteProvider::SwitchableQuoteProvider;

  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override {
    if (dataSource != DataSource::cacheOnly) {
      SwitchableQuoteProvider::fetchQuotes(std::move(query), std::move(adjuster),
                                           std::move(completion));
      return;
    }
    const bool isKnown = isCovered(query);
    auto take = [symbol = query.equity->symbol, isKnown,
                 completion = std::move(completion)](Result<QuoteFetchResult> stored) mutable {
      if (!isKnown && stored && stored->quotes && stored->quotes->empty()) {
        stored = failure(QuoteProviderError(QuoteProviderError::DataInconsistency{
            "The cache has none of " + symbol + " in these days."}));
      }
      completion(std::move(stored));
    };
    fetchStoredPrices(smartQuoteProvider->cacheProvider, query, std::move(take));
  }

 private:
  [[nodiscard]] bool isCovered(const QuoteQuery& query) const {
    try {
      return smartQuoteProvider->cacheProvider->coveragePlan(query).missingQueries.empty();
    } catch (const Error&) {
      return false;
    }
  }
};

/// Says on a terminal that the program waits for prices, once that takes long. The line is gone at
/// the end.
class WaitNotice {
 public:
  WaitNotice() = default;
  WaitNotice(const WaitNotice&) = delete;
  WaitNotice& operator=(const WaitNotice&) = delete;
  ~WaitNotice() {
    if (isShown_) {
      std::cerr << '\r' << std::string(text.size(), ' ') << '\r' << std::flush;
    }
  }

  void look() {
    if (!isShown_ && Clock::now() - start_ > patience && terminal::isErrorStreamShown()) {
      std::cerr << text << std::flush;
      isShown_ = true;
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  static constexpr std::string_view text = "Waiting for the quote service... (Ctrl+C gives up)";
  static constexpr std::chrono::seconds patience{2};
  const Clock::time_point start_ = Clock::now();
  bool isShown_ = false;
};

}  // namespace

std::vector<Option> priceSourceOptions() {
  return {{"--offline", "", "takes prices from the cache alone"},
          {"--sample-market", "", "takes prices from the invented market"}};
}

PriceSource::PriceSource(const CommandLine& line, Need need) {
  const bool isOffline = line.has("--offline") || need == Need::names;
  if (line.has("--offline") && line.has("--sample-market")) {
    throw UsageError("--offline and --sample-market exclude each other.");
  }
  std::shared_ptr<ConsoleChain> chain;
  if (line.has("--sample-market")) {
    market_ = std::make_unique<SampleMarket>();
    // Invented prices must never get among the real ones.
    temporaryFolder_ = files::makePrivateDirectory(files::temporaryDirectory());
    chain = std::make_shared<ConsoleChain>(clientOf(*market_), temporaryFolder_ / cacheName);
  } else {
    const auto source =
        isOffline
            ? makeOfflineProvider()
            : std::make_shared<YahooQuoteProvider>(YahooService::named(UserDefaults::standard()));
    chain = std::make_shared<ConsoleChain>(source, files::cachesDirectory() / cacheName);
    if (isOffline) {
      chain->dataSource = DataSource::cacheOnly;
    }
  }
  provider_ = std::move(chain);
}

bool PriceSource::isCacheOnly() const {
  return static_cast<const ConsoleChain&>(*provider_).dataSource == DataSource::cacheOnly;
}

PriceSource::~PriceSource() {
  provider_.reset();
  if (!temporaryFolder_.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(temporaryFolder_, ignored);
  }
}

bool refreshEquities(QuoteProvider& provider, const std::vector<EquityPointer>& equities,
                     const Console& console) {
  if (equities.empty()) {
    return true;
  }
  // Providers answer on a queue of their choice, and perhaps when nobody waits any more.
  const auto outcome = std::make_shared<std::optional<ErrorPointer>>();
  provider.refreshEquities(equities, [outcome](ErrorPointer error) {
    DispatchQueue::main()->async([outcome, error = std::move(error)] { *outcome = error; });
  });
  waitFor([&] { return outcome->has_value(); });
  const ErrorPointer& error = **outcome;
  auto* chain = dynamic_cast<SwitchableQuoteProvider*>(&provider);
  if (error != nullptr && isForWantOfNetwork(*error) && chain != nullptr) {
    console.warn("The market cannot be reached. Prices are those of the cache.");
    chain->dataSource = DataSource::cacheOnly;
  } else if (error != nullptr) {
    console.warn("The latest prices could not be fetched. " + refusalText(*error, "an equity"));
  }
  for (const EquityPointer& equity : equities) {
    if (equity->refreshProblem) {
      console.warn(*equity->refreshProblem);
    }
  }
  return error == nullptr;
}

void waitFor(const std::function<bool()>& isDone) {
  WaitNotice notice;
  const auto look = [&] {
    notice.look();
    return isDone();
  };
  pumpUntil(look, [] { throw Failed(exitCode::interrupted); });
}

}  // namespace corvane::cli
