// The provider that the application talks to, and the setting that says where its data comes from.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "core/market/quote_provider.h"
#include "marketdata/chain/smart_quote_provider.h"

namespace corvane {

/// Passes everything on to the source with its cache, to the source alone, or to the cache alone,
/// as `dataSource` says at the moment of the call. It answers for every equity that passes through
/// it, so that switching changes no identity.
///
/// Main queue only. Searches and refreshes complete on the main queue where they succeed; all other
/// completions run where the active provider runs them.
class SwitchableQuoteProvider : public QuoteProvider {
 public:
  /// The values are kept in settings and menus.
  enum class DataSource { sourceAndCache = 1, sourceOnly = 2, cacheOnly = 3 };

  /// The case with this value; none for any other number.
  [[nodiscard]] static std::optional<DataSource> dataSourceWithRawValue(int rawValue);

  /// Joins `source` to the cache in the file at `cacheLocation`, or at the default place of a cache
  /// for this source, which is made where it is missing. Throws what opening the cache throws.
  explicit SwitchableQuoteProvider(const std::shared_ptr<QuoteProvider>& source,
                                   std::optional<std::filesystem::path> cacheLocation = {});

  /// Setting it has no effect on fetches that are under way and tells nobody.
  DataSource dataSource = DataSource::sourceAndCache;
  const std::shared_ptr<SmartQuoteProvider> smartQuoteProvider;

  [[nodiscard]] std::string providerName() const override;
  void searchEquities(std::string text, EquitiesCompletion completion) override;
  [[nodiscard]] EquityPointer equityWithId(std::string_view id) override;
  [[nodiscard]] EquityPointer exchangeRateEquity(const Currency& from, const Currency& to) override;
  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override;
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override;
  [[nodiscard]] std::vector<QuoteQuery> sourceQueries(const QuoteQuery& query) const override;
  [[nodiscard]] std::set<QuoteInterval> availableIntervals(const EquityPointer& equity,
                                                           const DateRange& range) const override;
  [[nodiscard]] std::optional<Date> nextRequestDate() const override;

 private:
  [[nodiscard]] QuoteProvider& activeProvider() const;
  EquityPointer adopted(EquityPointer equity);
};

}  // namespace corvane
