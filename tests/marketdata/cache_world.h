// A quote cache with one equity, and short ways to write what is asked of it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "marketdata/cache/cache_quote_provider.h"
#include "support/decimals.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

using enum QuoteQuery::PriceAdjustment;

inline Date at(double seconds) {
  return Date::since1970(seconds);
}

inline DateRange range(double from, double to) {
  return {at(from), at(to)};
}

inline QuoteQuery::Subject daily(PriceAdjustment prices) {
  return QuoteQuery::Quotes{QuoteInterval::oneDay, prices};
}

inline QuoteQuery::Subject minutely(PriceAdjustment prices) {
  return QuoteQuery::Quotes{QuoteInterval::oneMinute, prices};
}

inline QuoteQuery::Subject events(PriceAdjustment prices) {
  return QuoteQuery::EventsOnly{prices};
}

inline Quote bar(double from, double to, const std::string& close = "1") {
  Quote made;
  made.fromDate = at(from);
  made.toDate = at(to);
  made.close = dec(close);
  return made;
}

inline EquityEvent dividend(double when, const std::string& amount,
                            PriceAdjustment prices = marketNominal) {
  return {at(when), EquityEvent::Dividend{dec(amount)}, prices};
}

inline EquityEvent split(double when, std::int64_t numerator, std::int64_t denominator,
                         PriceAdjustment prices = marketNominal) {
  return {at(when), EquityEvent::Split{{.numerator = numerator, .denominator = denominator}},
          prices};
}

inline QuoteFetchResult answer(DateRange durable, std::optional<std::vector<Quote>> quotes,
                               std::optional<std::vector<EquityEvent>> found = std::nullopt) {
  return {.quotes = std::move(quotes),
          .prices = std::nullopt,
          .events = std::move(found),
          .durableDateRange = durable};
}

/// The error that `action` throws, if it does.
template <typename Action>
ErrorPointer errorOf(Action action) {
  try {
    action();
  } catch (const Error& error) {
    return error.copy();
  }
  return nullptr;
}

/// Whether an error is an inconsistency that is described so.
MATCHER_P(IsInconsistency, text, "") {
  return arg != nullptr &&
         *arg == QuoteProviderError(QuoteProviderError::DataInconsistency{std::string(text)});
}

class CacheWorld {
 public:
  explicit CacheWorld(std::optional<std::filesystem::path> location = std::nullopt)
      : file(location.value_or(folder / "cache.sqlite3")) {
    open();
    equity = cache->equityWithId("ABC");
  }

  /// Closes the cache, if one is open, and opens its file.
  void open() {
    cache.reset();
    cache = std::make_shared<CacheQuoteProvider>(file);
  }

  [[nodiscard]] QuoteQuery query(DateRange dates, QuoteQuery::Subject subject) const {
    return {equity, dates, subject};
  }
  void store(const QuoteQuery::Subject& subject, const QuoteFetchResult& result) const {
    cache->storeFetchResult(result, query(result.durableDateRange, subject));
  }
  /// Records that nothing happened in a range.
  void cover(const QuoteQuery::Subject& subject, DateRange dates) const {
    store(subject, answer(dates, std::vector<Quote>()));
  }
  [[nodiscard]] CoveragePlan plan(DateRange dates, QuoteQuery::Subject subject) const {
    return cache->coveragePlan(query(dates, subject));
  }
  [[nodiscard]] QuoteFetchResult read(DateRange dates, QuoteQuery::Subject subject) const {
    return cache->readQuery(query(dates, subject));
  }

  /// Lets another connection change the file.
  void tamper(const std::string& script) const {
    SQLiteDatabase(file, SQLiteDatabase::Mode::readWrite).executeScript(script);
  }
  /// All rows of a query as text: columns parted by "|", rows by blanks.
  [[nodiscard]] std::string rows(const std::string& sql) const {
    SQLiteDatabase other(file, SQLiteDatabase::Mode::readOnly);
    std::string text;
    SQLiteStatement row = other.query(sql);
    while (row.step()) {
      text += text.empty() ? "" : " ";
      for (int column = 0; column < row.columnCount(); ++column) {
        text += (column == 0 ? "" : "|") + valueOf(row, column);
      }
    }
    return text;
  }
  /// All that the file says about bars, events and coverage.
  [[nodiscard]] std::string contents() const {
    return rows("SELECT * FROM quotes ORDER BY id") + " / " +
           rows("SELECT * FROM events ORDER BY id") + " / " +
           rows("SELECT * FROM coverage ORDER BY id");
  }

  TemporaryFolder folder;
  std::filesystem::path file;
  std::shared_ptr<CacheQuoteProvider> cache;
  EquityPointer equity;

 private:
  static std::string valueOf(const SQLiteStatement& row, int column) {
    switch (row.type(column)) {
      case SQLiteStatement::Type::null:
        return "-";
      case SQLiteStatement::Type::integer:
        return std::to_string(*row.integer(column));
      case SQLiteStatement::Type::real:
        return Decimal::fromDouble(*row.real(column)).description();
      default:
        return std::string(*row.text(column));
    }
  }
};

}  // namespace corvane::testing
