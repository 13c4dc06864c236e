// All that the rest of the system sees of market data: one base class for every source of equities,
// prices and events.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "core/market/equity_info.h"
#include "core/market/quote_fetch_result.h"
#include "core/market/quote_query.h"
#include "platform/error.h"

namespace corvane {

class PriceAdjuster;

/// The equities that a provider has made, one object for each id. It holds them weakly: an entry
/// ends with the last reference that somebody else holds. Main queue only.
class EquityTable {
 public:
  /// The living equity with this id, or null.
  [[nodiscard]] EquityPointer find(std::string_view id) const;
  void insert(const EquityPointer& equity);

 private:
  struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  std::unordered_map<std::string, std::weak_ptr<EquityInfo>, TextHash, std::equal_to<>> equities_;
  std::size_t sweepAt_ = 64;
};

/// A source of equities, prices and events. The base class knows only the equities that it is asked
/// for, finds nothing, and answers every fetch with QuoteProviderError::NotAvailable.
///
/// Main queue only. Completions run exactly once, never before the call returns; those of the base
/// class run on the main queue, those of other providers on a queue of their choice.
class QuoteProvider : public std::enable_shared_from_this<QuoteProvider> {
 public:
  using EquitiesCompletion = std::move_only_function<void(Result<std::vector<EquityPointer>>)>;
  using RefreshCompletion = std::move_only_function<void(ErrorPointer)>;  ///< null for success
  using QuoteCompletion = std::move_only_function<void(Result<QuoteFetchResult>)>;

  QuoteProvider();
  QuoteProvider(const QuoteProvider&) = delete;
  QuoteProvider& operator=(const QuoteProvider&) = delete;
  virtual ~QuoteProvider();

  [[nodiscard]] virtual std::string providerName() const;

  /// Looks for equities by a text that the user typed.
  virtual void searchEquities(std::string text, EquitiesCompletion completion);

  /// The equity with this id: the same object as long as anybody holds it.
  [[nodiscard]] virtual EquityPointer equityWithId(std::string_view id);

  /// The pair whose price is the units of `to` that one unit of `from` buys.
  [[nodiscard]] virtual EquityPointer exchangeRateEquity(const Currency& from, const Currency& to);

  /// Brings the recent prices and the other fields of `equities` up to date.
  virtual void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion);

  /// Asks for the bars or events that `query` describes, converted by `adjuster` to the prices that
  /// it names. The completion gets an error where this provider cannot answer, never other data.
  virtual void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                           QuoteCompletion completion);

  /// The queries that a source would really send to answer `query`.
  [[nodiscard]] virtual std::vector<QuoteQuery> sourceQueries(const QuoteQuery& query) const;

  /// The bar lengths that can be had for `equity` in `range`.
  [[nodiscard]] virtual std::set<QuoteInterval> availableIntervals(const EquityPointer& equity,
                                                                   const DateRange& range) const;

  /// When the source will be asked again, where it has asked for a pause; none otherwise.
  [[nodiscard]] virtual std::optional<Date> nextRequestDate() const;

  /// The table of this provider's equities. A provider that joins others gives them its own, so
  /// that all of them hand out the same objects.
  [[nodiscard]] const std::shared_ptr<EquityTable>& equitiesById() const { return equitiesById_; }
  void setEquitiesById(std::shared_ptr<EquityTable> table);

 private:
  std::shared_ptr<EquityTable> equitiesById_;
};

/// The cases of QuoteProviderError.
struct QuoteProviderErrorCases {
  struct DataInconsistency {
    std::optional<std::string> description;
    friend bool operator==(const DataInconsistency&, const DataInconsistency&) = default;
  };
  struct CurrencyMismatch {
    std::string expected;
    std::string received;
    friend bool operator==(const CurrencyMismatch&, const CurrencyMismatch&) = default;
  };
  struct UnsupportedCurrency {
    std::string code;
    friend bool operator==(const UnsupportedCurrency&, const UnsupportedCurrency&) = default;
  };
  struct UnrecognizedTimeZone {
    std::string name;
    friend bool operator==(const UnrecognizedTimeZone&, const UnrecognizedTimeZone&) = default;
  };
  struct UnsupportedPriceAdjustment {
    PriceAdjustment from;
    PriceAdjustment to;
    friend bool operator==(const UnsupportedPriceAdjustment&,
                           const UnsupportedPriceAdjustment&) = default;
  };
  struct NotAvailable {
    friend bool operator==(NotAvailable, NotAvailable) = default;
  };
  struct QueryNotSatisfied {
    friend bool operator==(QueryNotSatisfied, QueryNotSatisfied) = default;
  };
  using Case =
      std::variant<DataInconsistency, CurrencyMismatch, UnsupportedCurrency, UnrecognizedTimeZone,
                   UnsupportedPriceAdjustment, NotAvailable, QueryNotSatisfied>;
};

/// Why a provider or a price conversion could not answer.
class QuoteProviderError : public VariantError<QuoteProviderError, QuoteProviderErrorCases> {
 public:
  using VariantError::VariantError;

  [[nodiscard]] std::optional<std::string> description() const override;
};

}  // namespace corvane
