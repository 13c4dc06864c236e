#include "exchange/statements/statement_rates.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/market/price_adjuster.h"
#include "exchange/csv/csv_parser.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"
#include "exchange/strict/statement_text.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace {

constexpr int longestGap = 7;  // days without a rate, over holidays

/// A row of a file of rates.
struct RateLine {
  std::uint32_t line = 0;
  std::array<std::string, 3> cells;  ///< day, currency, rate
};

std::vector<RateLine> rateLines(std::string_view text) {
  std::vector<RateLine> lines;
  bool isFirst = true;
  parseRows(text, CSVDelimiter::guessed(text), 0, std::nullopt, [&](const CSVRow& row) {
    RateLine line{.line = row.line(), .cells = {}};
    std::size_t place = 0;
    for (const std::string_view cell : row) {
      if (place < line.cells.size()) {
        line.cells[place] = std::string(trimmedCell(cell));
      }
      ++place;
    }
    const bool isHeading = std::exchange(isFirst, false) && !DayCell::read(line.cells[0]);
    if (!isHeading && !std::ranges::all_of(line.cells, &std::string::empty)) {
      lines.push_back(std::move(line));
    }
  });
  return lines;
}

}  // namespace

StatementRates::StatementRates(Currency primary, Calendar calendar)
    : primary_(std::move(primary)), calendar_(std::move(calendar)) {}

const std::pair<const YearMonthDay, StatementRates::Known>* StatementRates::find(
    const Rates& rates, std::string_view code, const YearMonthDay& day) const {
  const auto days = rates.find(code);
  if (days == rates.end()) {
    return nullptr;
  }
  auto after = days->second.upper_bound(day);
  const auto earliest =
      YearMonthDay::normalised(day.year, day.month, day.day - longestGap, calendar_);
  if (after == days->second.begin() || (--after)->first < earliest) {
    return nullptr;
  }
  return &*after;
}

std::optional<StatementSurroundings::Rate> StatementRates::rate(const Currency& currency,
                                                                const YearMonthDay& day) {
  const std::string code(currency.code);
  const auto* found = find(file_, code, day);
  found = found == nullptr ? find(*market_, code, day) : found;
  if (found != nullptr) {
    return StatementSurroundings::Rate{found->second.rate,
                                       found->second.source + " of " + spelledDay(found->first)};
  }
  const auto [entry, isNew] = missing_.try_emplace(code, Need{currency, day, day});
  entry->second.first = std::min(entry->second.first, day);
  entry->second.last = std::max(entry->second.last, day);
  return std::nullopt;
}

void StatementRates::readFile(const std::string& bytes, const std::string& name) {
  Rates read;
  try {
    const std::vector<RateLine> lines = rateLines(decodedStatement(bytes).text);
    DayOrderRecognition days;
    DecimalMarkRecognition marks;
    for (const RateLine& line : lines) {
      days.add(line.line, "day", line.cells[0]);
      marks.add(line.line, "rate", line.cells[2]);
    }
    if (lines.empty()) {
      throw StatementError(0, "", "there are no rates in it.");
    }
    const DayOrder order =
        days.verdict(YearMonthDay::of(Date::now(), calendar_), std::nullopt).order;
    const DecimalMark mark = marks.mark();
    for (const RateLine& line : lines) {
      const auto& [day, code, rate] = line.cells;
      const auto number = NumberCell::read(rate);
      const auto value = number ? number->value(mark) : std::nullopt;
      if (!value || !(*value > 0)) {
        throw StatementError(line.line, "rate", "“" + rate + "” is not a rate.");
      }
      if (!Currency::byCode().contains(code)) {
        throw StatementError(line.line, "currency",
                             "“" + code + "” is not the code of a currency.");
      }
      const auto cell = DayCell::read(day);
      const auto named = cell ? cell->day(order) : std::nullopt;
      if (!named) {
        throw StatementError(line.line, "day", "“" + day + "” is not a day.");
      }
      read[code].insert_or_assign(*named, Known{*value, name});
    }
  } catch (const StatementError& error) {
    throw StatementError(0, "", "“" + name + "”: " + error.withoutRemedy());
  }
  for (auto& [code, days] : read) {
    for (auto& [day, known] : days) {
      file_[code].insert_or_assign(day, std::move(known));
    }
  }
  missing_.clear();
}

void StatementRates::forgetMarket() {
  market_ = std::make_shared<Rates>();
  missing_.clear();
}

void StatementRates::take(Rates& rates, const std::string& code, const std::vector<Quote>& bars,
                          const Calendar& calendar) {
  for (const Quote& bar : bars) {
    if (bar.close && *bar.close > 0) {
      // A day of currencies starts at midnight of another place: its middle tells which it is.
      const Date middle = bar.fromDate + bar.toDate.timeIntervalSince(bar.fromDate) / 2;
      rates[code].insert_or_assign(YearMonthDay::of(middle, calendar),
                                   Known{*bar.close, "market close"});
    }
  }
}

void StatementRates::fetch(const std::shared_ptr<QuoteProvider>& provider, Completion completion) {
  struct Gathering {
    std::size_t open = 0;
    std::vector<std::string> problems;
    Completion completion;
  };
  const auto gathering = std::make_shared<Gathering>();
  gathering->completion = std::move(completion);
  const auto needs = std::exchange(missing_, {});
  gathering->open = needs.size();
  if (needs.empty()) {
    DispatchQueue::main()->async([gathering] { gathering->completion({}); });
    return;
  }
  for (const auto& [code, need] : needs) {
    const auto& [year, month, day] = need.first;
    const DateRange range(
        YearMonthDay::normalised(year, month, day - longestGap, calendar_).startIn(calendar_),
        YearMonthDay::normalised(need.last.year, need.last.month, need.last.day + 1, calendar_)
            .startIn(calendar_));
    provider->fetchQuotes(
        {provider->exchangeRateEquity(need.currency, primary_), range,
         QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}},
        std::make_shared<PriceAdjuster>(provider),
        [gathering, code, market = market_, calendar = calendar_](Result<QuoteFetchResult> answer) {
          DispatchQueue::main()->async(
              [gathering, code, market, calendar, answer = std::move(answer)]() mutable {
                if (!answer) {
                  gathering->problems.push_back("No rates of " + code + ". " +
                                                answer.error()->description().value_or(""));
                } else if (answer->quotes) {
                  take(*market, code, *answer->quotes, calendar);
                }
                if (--gathering->open == 0) {
                  gathering->completion(std::move(gathering->problems));
                }
              });
        });
  }
}

}  // namespace corvane
