#include "presentation/transactions/transaction_finder.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "core/money/decimal_number_formatter.h"
#include "core/money/year_month_day.h"
#include "exchange/exports/portfolio_transactions_exporter.h"
#include "platform/text/formats/date_formatter.h"
#include "platform/text/unicode/folding.h"
#include "presentation/transactions/transaction_text.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

constexpr char lineBreak = '\n';  // which no word has
constexpr std::string_view digits = "0123456789";

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != text.npos;
}

/// The words of folded text, which has one kind of blank.
std::vector<std::string_view> wordsIn(std::string_view folded) {
  std::vector<std::string_view> words;
  constexpr std::string_view blanks = " \t\n\r\f\v";
  for (std::size_t start = folded.find_first_not_of(blanks); start != folded.npos;) {
    const std::size_t end = std::min(folded.find_first_of(blanks, start), folded.size());
    words.push_back(folded.substr(start, end - start));
    start = folded.find_first_not_of(blanks, end);
  }
  return words;
}

/// What stands beside the digits of an amount of `currency`, folded.
std::string symbolOf(const Currency& currency) {
  const std::string amount =
      foldedForSearch(DecimalNumberFormatter::money(currency).string(Decimal(1)).value_or(""));
  std::string symbol;
  for (const std::string_view part : wordsIn(amount)) {
    const std::size_t first = part.find_first_of(digits);
    const std::size_t last = part.find_last_of(digits);
    symbol += first == part.npos ? part : part.substr(0, first);
    symbol += last == part.npos ? "" : part.substr(last + 1);
  }
  return symbol;
}

/// Takes off what stands in front of a number for its sign.
void takeSign(std::string_view& text, bool& isNegative) {
  while (!text.empty() && (text.front() == '-' || text.front() == '+' || text.front() == '(')) {
    isNegative |= text.front() != '+';
    text.remove_prefix(1);
  }
}

std::string fullDateText(const YearMonthDay& day, Date date, const Calendar& calendar) {
  const DateFormatter month{.format = "LLLL", .timeZone = calendar.timeZone()};
  return transactionDateText(date, calendar) + lineBreak + month.string(date) + lineBreak +
         isoText(day);
}

/// The digits that a column shows of a number, with a point and without grouping.
void appendPlain(const TransactionFigure& figure, std::string& line) {
  const std::string number =
      (figure.maximumDigits ? rounded(figure.value, *figure.maximumDigits, RoundingMode::bankers)
                            : figure.value)
          .description();
  const std::size_t point = number.find('.');
  const std::size_t shown = point == number.npos ? 0 : number.size() - point - 1;
  const auto least = static_cast<std::size_t>(figure.minimumDigits);
  line += number;
  if (shown < least) {
    line += point == number.npos ? "." : "";
    line.append(least - shown, '0');
  }
  line += lineBreak;
}

}  // namespace

/// Folds what the rows have in common once.
class TransactionFinder::TextGatherer {
 public:
  TextGatherer(std::vector<std::string>& texts, const Calendar& calendar)
      : texts_(texts), calendar_(calendar) {
    texts_.emplace_back();  // of what a row does not have
  }

  [[nodiscard]] TextsOfRow textsOf(const BasicTransaction& row) {
    const Currency* currency = row.currency();
    const EquityPointer* equity = row.equity();
    return {equity == nullptr ? nameOf(row, currency) : nameOf(row, equity->get()),
            currency == nullptr ? 0 : textOf(*currency),
            kindOf(row),
            dayOf(row.tradeDate),
            dayOf(row.settlementDate),
            row.note ? noteOf(*row.note) : 0};
  }

  /// The symbols of the currencies that were met.
  [[nodiscard]] const std::vector<std::string>& symbols() const { return symbols_; }

  std::uint32_t textOf(const Currency& currency) {
    return once(currencies_, std::string(currency.code), [&] {
      const std::string symbol = symbolOf(currency);
      if (!symbol.empty()) {
        symbols_.push_back(symbol);
      }
      return std::string(currency.code) + lineBreak + symbol;
    });
  }

 private:
  template <typename Key, typename Make>
  std::uint32_t once(std::unordered_map<Key, std::uint32_t>& known, const Key& key, Make make) {
    const auto [found, isNew] = known.try_emplace(key, 0);
    if (isNew) {
      found->second = static_cast<std::uint32_t>(texts_.size());
      texts_.push_back(foldedForSearch(make()));
    }
    return found->second;
  }

  /// `named` is the equity or the currency; the latter lives as long as its row.
  std::uint32_t nameOf(const BasicTransaction& row, const Currency* named) {
    return named == nullptr ? 0 : once(cash_, std::string(named->code), [&] {
      return transactionName(row).plainText();
    });
  }
  std::uint32_t nameOf(const BasicTransaction& row, const EquityInfo* named) {
    return once(equities_, named, [&] { return transactionName(row).plainText(); });
  }

  std::uint32_t kindOf(const BasicTransaction& row) {
    std::string description = transactionDescription(row);
    return once(kinds_, description,
                [&] { return description + lineBreak + std::string(exportedWord(row.kind)); });
  }

  std::uint32_t dayOf(Date date) {
    if (date != lastDate_) {
      const auto day = YearMonthDay::of(date, calendar_);
      constexpr int daysOfMonth = 32;
      constexpr int monthsOfYear = 16;
      lastDate_ = date;
      lastDay_ = once(days_, (day.year * monthsOfYear + day.month) * daysOfMonth + day.day,
                      [&] { return fullDateText(day, date, calendar_); });
    }
    return lastDay_;
  }

  std::uint32_t noteOf(const std::string& note) {
    return once(notes_, note, [&] { return note; });
  }

  std::vector<std::string>& texts_;
  const Calendar& calendar_;
  std::vector<std::string> symbols_;
  std::unordered_map<const EquityInfo*, std::uint32_t> equities_;
  std::unordered_map<std::string, std::uint32_t> cash_;
  std::unordered_map<std::string, std::uint32_t> currencies_;
  std::unordered_map<std::string, std::uint32_t> kinds_;
  std::unordered_map<int, std::uint32_t> days_;
  std::unordered_map<std::string, std::uint32_t> notes_;
  std::optional<Date> lastDate_;
  std::uint32_t lastDay_ = 0;
};

TransactionFinder::Separators TransactionFinder::separatorsOf(const NumberFormatter& formatter) {
  return {foldedForSearch(formatter.groupingSeparator()),
          foldedForSearch(formatter.decimalSeparator())};
}

TransactionFinder::TransactionFinder(std::span<const TransactionPointer> rows,
                                     const Currency& primary, const Calendar& calendar,
                                     bool showsCash)
    : rows_(rows),
      primary_(primary),
      showsCash_(showsCash),
      separators_{separatorsOf(DecimalNumberFormatter()),
                  separatorsOf(DecimalNumberFormatter::money(primary))},
      places_(rows.size()) {
  TextGatherer gatherer(texts_, calendar);
  gatherer.textOf(primary_);
  textsOfRows_.reserve(rows_.size());
  for (const TransactionPointer& row : rows_) {
    textsOfRows_.push_back(gatherer.textsOf(row->basic));
  }
  symbols_ = gatherer.symbols();
  std::iota(places_.begin(), places_.end(), 0U);
}

bool TransactionFinder::hasWords(std::string_view text) {
  return !wordsIn(foldedForSearch(text)).empty();
}

const std::vector<std::uint32_t>& TransactionFinder::places(std::string_view text) {
  std::vector<Word> words = wordsOf(text);
  // Whoever types on looks only through what has been found so far.
  const bool narrows = std::ranges::all_of(words_, [&](const Word& former) {
    return std::ranges::any_of(words, [&](const Word& word) { return word.implies(former); });
  });
  if (!narrows) {
    places_.resize(rows_.size());
    std::iota(places_.begin(), places_.end(), 0U);
  }
  for (const Word& word : words) {
    if (!narrows || std::ranges::find(words_, word.text, &Word::text) == words_.end()) {
      keepRowsWith(word);
    }
  }
  words_ = std::move(words);
  return places_;
}

bool TransactionFinder::Word::implies(const Word& other) const {
  return contains(text, other.text) && std::ranges::all_of(numbers, [&](const auto& number) {
           return std::ranges::any_of(other.numbers,
                                      [&](const auto& part) { return contains(number, part); });
         });
}

std::vector<TransactionFinder::Word> TransactionFinder::wordsOf(std::string_view text) const {
  std::vector<Word> words;
  const std::string folded = foldedForSearch(text);
  for (const std::string_view word : wordsIn(folded)) {
    words.push_back({std::string(word), plainNumbers(word)});
  }
  return words;
}

/// `word` as it would stand in plain digits: by the user's locale, which may have other separators
/// for money, and where it has a point for the decimal separator as exports have it.
std::vector<std::string> TransactionFinder::plainNumbers(std::string_view word) const {
  std::vector<std::string> numbers;
  const auto add = [&](std::string number) {
    if (std::ranges::find(numbers, number) == numbers.end()) {
      numbers.push_back(std::move(number));
    }
  };
  for (const Separators& separators : separators_) {
    if (auto number = unformatted(word, separators)) {
      add(std::move(*number));
    }
  }
  const std::string_view unsignedWord = word.substr(word.starts_with('-') ? 1 : 0);
  if (contains(unsignedWord, ".") && unsignedWord.find_first_of(digits) != word.npos &&
      unsignedWord.find_first_not_of("0123456789.") == word.npos) {
    add(std::string(word));
  }
  return numbers;
}

/// The digits of `text`, which begins with one or a decimal separator, with a point for the latter;
/// none where something else stands between them.
std::optional<std::string> TransactionFinder::withoutGrouping(std::string_view text,
                                                              const Separators& separators) {
  std::string number;
  bool hasPoint = false;
  while (!text.empty()) {
    if (contains(digits, text.substr(0, 1))) {
      number += text.front();
      text.remove_prefix(1);
    } else if (text.starts_with(separators.decimal) && !std::exchange(hasPoint, true)) {
      number += '.';
      text.remove_prefix(separators.decimal.size());
    } else if (!separators.grouping.empty() && text.starts_with(separators.grouping) && !hasPoint) {
      text.remove_prefix(separators.grouping.size());
    } else {
      return std::nullopt;
    }
  }
  return number;
}

/// The number that is written in `word` as the screen writes it, perhaps with a sign, in brackets
/// or beside a part of a currency's symbol; none where something else stands in it.
std::optional<std::string> TransactionFinder::unformatted(std::string_view word,
                                                          const Separators& separators) const {
  bool isNegative = false;
  std::string_view rest = word;
  takeSign(rest, isNegative);
  std::size_t start = 0;
  while (start < rest.size() && !contains(digits, rest.substr(start, 1)) && rest[start] != '-' &&
         !rest.substr(start).starts_with(separators.decimal)) {
    ++start;
  }
  const std::string_view before = rest.substr(0, start);
  rest.remove_prefix(start);
  takeSign(rest, isNegative);
  const std::size_t last = rest.find_last_of(digits);
  if (last == rest.npos) {
    return std::nullopt;
  }
  std::string_view behind = rest.substr(last + 1);
  for (const std::string_view end : {separators.grouping, separators.decimal}) {
    behind.remove_prefix(!end.empty() && behind.starts_with(end) ? end.size() : 0);
  }
  behind.remove_suffix(behind.ends_with(')') ? 1 : 0);
  const auto isBeside = [&](const std::string& symbol) {
    return symbol.ends_with(before) && symbol.starts_with(behind);
  };
  if (!(before.empty() && behind.empty()) && std::ranges::none_of(symbols_, isBeside)) {
    return std::nullopt;
  }
  auto number = withoutGrouping(rest.substr(0, last + 1), separators);
  return number && isNegative ? "-" + *number : number;
}

void TransactionFinder::keepRowsWith(const Word& word) {
  std::vector<std::uint8_t> hasWord(texts_.size());
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    hasWord[i] = contains(texts_[i], word.text) ? 1 : 0;
  }
  if (!word.numbers.empty()) {
    gatherNumbers();
  }
  std::erase_if(places_, [&](std::uint32_t place) {
    const TextsOfRow& texts = textsOfRows_[place];
    return std::ranges::none_of(texts, [&](std::uint32_t text) { return hasWord[text] != 0; }) &&
           std::ranges::none_of(word.numbers, [&](const std::string& number) {
             return contains(numbersOf(place), number);
           });
  });
}

void TransactionFinder::gatherNumbers() {
  if (!numbersEnds_.empty()) {
    return;
  }
  std::vector<TransactionFigure> figures;
  numbersEnds_.reserve(rows_.size());
  for (const TransactionPointer& row : rows_) {
    figures.clear();
    appendFigures(*row, primary_, showsCash_, figures);
    for (const TransactionFigure& figure : figures) {
      appendPlain(figure, numbers_);
    }
    numbersEnds_.push_back(static_cast<std::uint32_t>(numbers_.size()));
  }
}

std::string_view TransactionFinder::numbersOf(std::uint32_t row) const {
  const std::size_t start = row == 0 ? 0 : numbersEnds_[row - 1];
  return std::string_view(numbers_).substr(start, numbersEnds_[row] - start);
}

}  // namespace corvane
