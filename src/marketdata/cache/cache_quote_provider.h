// What sources of market data have delivered, kept in one database file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "core/market/quote_provider.h"
#include "marketdata/cache/cache_checkpoint.h"
#include "marketdata/cache/coverage_plan.h"
#include "platform/data/sqlite.h"

namespace corvane {

/// Equities, bars and events, and a record of the ranges for which the file holds the final answer.
/// That record is apart from the data, so that a range without trading is told from one that was
/// never asked for. Nothing expires: what is covered stays so until it is cleared.
///
/// As a provider it answers from the file alone, and only on the price basis asked for: there is no
/// conversion and no search by name. What joins it with a source plans a query first, reads what is
/// there, and stores what was fetched.
///
/// Main queue only, or rather the thread that made it: the file has no lock within the program.
/// What fails throws SQLiteError, or QuoteProviderError where the file or the data to be stored are
/// inconsistent. A store that fails leaves the file as it was, but for the equity's own row.
class CacheQuoteProvider : public QuoteProvider {
 public:
  /// Opens the file at `location`, or makes it. The file of an older version is emptied; that of a
  /// newer one is used as it is. Throws SQLiteError, also for a file that is no such database.
  explicit CacheQuoteProvider(const std::filesystem::path& location);
  ~CacheQuoteProvider() override;

  /// Where the cache of `source` has its place: in the user's folder for caches, under the name of
  /// the source's class. Throws FileError.
  [[nodiscard]] static std::filesystem::path defaultLocation(const QuoteProvider& source);

  /// As the base, with the fields of the equity's row where the equity is not authoritative yet.
  /// What fails goes to the log.
  [[nodiscard]] EquityPointer equityWithId(std::string_view id) override;
  /// Finds the equity whose id is `text`, if its row is there.
  void searchEquities(std::string text, EquitiesCompletion completion) override;
  /// Reads the rows of `equities` again, up to the first that fails; those that have none yet are
  /// passed over.
  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override;
  /// Reads at once what readQuery() gives; the completion runs on a background queue.
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override;
  /// The bar lengths for which all of `range` is covered on some price basis.
  [[nodiscard]] std::set<QuoteInterval> availableIntervals(const EquityPointer& equity,
                                                           const DateRange& range) const override;

  /// Fills `equity` from the row of the table of equities on which `row` stands, and makes it
  /// authoritative. A row that cannot be used leaves it as it was.
  virtual void loadEquityRow(EquityInfo& equity, const SQLiteStatement& row);

  /// What is stored for `query` on the price basis that it names; whether the range is covered is
  /// for the plan to say. An equity without a row has nothing stored. Snapshots of the current
  /// period and events without adjustment are refused: the plan says what to read instead.
  [[nodiscard]] virtual QuoteFetchResult readQuery(const QuoteQuery& query) const;

  /// Writes the row of `equity` and makes it authoritative.
  virtual void storeEquity(const EquityPointer& equity);

  /// Keeps the durable part of `result`, which answers `query`: all that was stored of the range
  /// and basis is replaced, and the range recorded as covered. An empty list counts as an answer,
  /// an absent one does not. An empty durable range stores nothing.
  ///
  /// Bars that reach out of the durable range are left out. Dates of ranges and bars must be whole
  /// seconds, events on the basis of the query. A dividend is kept exactly up to 18 digits.
  virtual void storeFetchResult(const QuoteFetchResult& result, const QuoteQuery& query);

  /// Keeps the equity's recent price as a bar of the minute before it, on the basis of snapshots.
  virtual void storeSnapshotQuote(const EquityPointer& equity);

  /// What of `query` is here. An equity without a row, and an empty range, give the query itself as
  /// missing.
  [[nodiscard]] virtual CoveragePlan coveragePlan(const QuoteQuery& query) const;

  /// The end of the first stretch of time whose events are covered without a hole; none where no
  /// events are.
  [[nodiscard]] virtual std::optional<Date> latestEventDate(const EquityPointer& equity) const;

  /// Records `range` as covered, as one with what it overlaps or touches. The codes are those of
  /// the file. An empty range records nothing.
  virtual void recordCoverage(std::int64_t equityRowId, std::int64_t intervalCode,
                              std::int64_t priceCode, const DateRange& range);

  /// Forgets the bars of `equity` and all that is covered of it, events too, so that everything is
  /// fetched anew.
  virtual void clearCachedData(const EquityPointer& equity);

  /// Runs `work` with one commit at its end, or none where it throws.
  void atOnce(const std::function<void()>& work);

  /// Forgets everything, all equities and their events too.
  void empty();

 private:
  /// The file, for the thread that made this object.
  [[nodiscard]] SQLiteDatabase& database() const;
  [[nodiscard]] std::optional<std::int64_t> rowIdOf(const EquityInfo& equity) const;
  /// Changes when another program has written to the file.
  [[nodiscard]] std::int64_t dataVersion() const;
  /// Another program may have emptied the file, and rows have other ids then.
  void findRowsAgain() const;

  /// Reading changes the handle only.
  mutable SQLiteDatabase database_;
  CacheCheckpoint checkpoint_;
  const std::thread::id thread_ = std::this_thread::get_id();
  /// Rows of the table of equities that have been read or written. Others may be there.
  mutable std::map<std::string, std::int64_t, std::less<>> equityRowIdsById_;
  mutable std::int64_t dataVersion_ = 0;
};

}  // namespace corvane
