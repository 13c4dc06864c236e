// Exchange rates for the rows of a statement that tell none: from a file, or from the market.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "exchange/reading/statement_options.h"

namespace corvane {

/// What one unit of other currencies is worth in that of a portfolio, day by day. A file of rates
/// goes before the market. Main queue only.
class StatementRates {
 public:
  StatementRates(Currency primary, Calendar calendar);

  /// The rate of `day`, or of the last day before it within a week. What is not known is noted.
  [[nodiscard]] std::optional<StatementSurroundings::Rate> rate(const Currency& currency,
                                                                const YearMonthDay& day);
  /// Whether rates were asked for that are not known.
  [[nodiscard]] bool areMissing() const { return !missing_.empty(); }

  /// Takes the rates of a delimited file whose columns are day, code of the currency and rate, with
  /// or without a heading. `name` is what messages and sources call it. Throws StatementError,
  /// TextEncodingError and CSVParseError; then nothing of it is taken.
  void readFile(const std::string& bytes, const std::string& name);

  /// Asks `provider` for the daily closes of what is missing, with one query for each currency.
  /// `completion` runs once, later, on the main queue, and is told a sentence for each that could
  /// not be had.
  using Completion = std::move_only_function<void(std::vector<std::string> problems)>;
  void fetch(const std::shared_ptr<QuoteProvider>& provider, Completion completion);

  /// Takes back what the market has told. Answers that are under way are not taken any more.
  void forgetMarket();

 private:
  struct Known {
    Decimal rate;
    std::string source;
  };
  using Days = std::map<YearMonthDay, Known>;
  using Rates = std::map<std::string, Days, std::less<>>;
  struct Need {
    Currency currency;
    YearMonthDay first;
    YearMonthDay last;
  };

  [[nodiscard]] const std::pair<const YearMonthDay, Known>* find(const Rates& rates,
                                                                 std::string_view code,
                                                                 const YearMonthDay& day) const;
  static void take(Rates& rates, const std::string& code, const std::vector<Quote>& bars,
                   const Calendar& calendar);

  Currency primary_;
  Calendar calendar_;
  Rates file_;
  std::shared_ptr<Rates> market_ = std::make_shared<Rates>();  ///< answers may come when it is gone
  std::map<std::string, Need, std::less<>> missing_;
};

}  // namespace corvane
