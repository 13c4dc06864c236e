#include "exchange/strict/day_order.h"

#include <algorithm>
#include <charconv>
#include <functional>

#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"
#include "platform/text/formats/date_formatter.h"
#include "platform/text/formats/month_names.h"
#include "platform/text/unicode/letters.h"
#include "platform/time/civil_day.h"

namespace corvane {
namespace {

constexpr std::array allOrders = {DayOrder::ymd, DayOrder::dmy, DayOrder::mdy};

constexpr std::array<std::pair<DayOrder, DayOrder>, 3> orderPairs = {
    {{DayOrder::ymd, DayOrder::dmy},
     {DayOrder::ymd, DayOrder::mdy},
     {DayOrder::dmy, DayOrder::mdy}}};

/// More characters than any day with its time has.
constexpr std::size_t longestDay = 64;
/// No statement is from outside these years.
constexpr int firstYear = 1900;
constexpr int lastYear = 2199;
/// Two digits mean the years from 1950 on.
constexpr int firstShortYear = 50;
/// So many days tell that the rows of a file are in order on purpose.
constexpr std::size_t daysThatTell = 6;
constexpr std::int32_t longestSettlement = 10;

bool isDecimalDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

std::size_t indexOf(DayOrder order) {
  return static_cast<std::size_t>(order);
}

std::size_t pairIndex(DayOrder one, DayOrder other) {
  return indexOf(one) + indexOf(other) - 1;
}

std::string_view nameOf(DayOrder order) {
  switch (order) {
    case DayOrder::ymd:
      return "year, month, day";
    case DayOrder::dmy:
      return "day, month, year";
    case DayOrder::mdy:
      break;
  }
  return "month, day, year";
}

/// Takes up to `longest` digits off `text`; none where it starts with none, or with more.
std::optional<int> takeNumber(std::string_view& text, std::size_t longest) {
  const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
  if (length == 0 || length > longest) {
    return std::nullopt;
  }
  int value = 0;
  std::from_chars(text.data(), text.data() + length, value);
  text.remove_prefix(length);
  return value;
}

std::string_view withoutBlanksInFront(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

/// Whether `text`, which stands behind a time of day, is a time zone: Z, +02:00, GMT-4, EST.
bool isZone(std::string_view text) {
  const std::size_t letters =
      std::min(static_cast<std::size_t>(std::ranges::find_if(text,
                                                             [](char byte) {
                                                               return (byte < 'A' || byte > 'Z') &&
                                                                      (byte < 'a' || byte > 'z');
                                                             }) -
                                        text.begin()),
               text.size());
  if (letters > 5) {
    return false;
  }
  text.remove_prefix(letters);
  return text.empty() || ((text.front() == '+' || text.front() == '-') && text.size() >= 2 &&
                          text.size() <= 6 && std::ranges::all_of(text.substr(1), [](char byte) {
                            return isDecimalDigit(byte) || byte == ':';
                          }));
}

std::int64_t countOf(const YearMonthDay& day) {
  return dayCount(day.year, day.month, day.day);
}

std::optional<YearMonthDay> existing(int year, int month, int day) {
  if (year < firstYear || year > lastYear || month < 1 || month > 12 || day < 1 ||
      day > daysInMonth(year, month)) {
    return std::nullopt;
  }
  return YearMonthDay{year, month, day};
}

}  // namespace

std::string spelledDay(const YearMonthDay& day) {
  const DateFormatter formatter{.format = "d MMMM yyyy",
                                .timeZone = TimeZone::withSecondsFromGMT(0).value(),
                                .locale = Locale{"en_GB"}};
  return formatter.string(
      Date::since1970(static_cast<double>(countOf(day)) * static_cast<double>(secondsPerDay)));
}

std::string_view rawValue(DayOrder order) {
  constexpr std::array<std::string_view, 3> names = {"ymd", "dmy", "mdy"};
  return names[indexOf(order)];
}

std::optional<DayOrder> dayOrderWithRawValue(std::string_view rawValue) {
  const auto* found = std::ranges::find_if(
      allOrders, [&](DayOrder order) { return corvane::rawValue(order) == rawValue; });
  return found == allOrders.end() ? std::nullopt : std::optional(*found);
}

std::optional<DayCell> DayCell::read(std::string_view text) {
  text = trimmedCell(text);
  if (text.empty() || text.size() > longestDay) {
    return std::nullopt;
  }
  DayCell cell;
  if (cell.readDay(text)) {
    return cell;
  }
  // A time may stand behind "T", a semicolon, a comma or blanks.
  for (std::size_t at = text.find_first_of("T;, "); at != text.npos;
       at = text.find_first_of("T;, ", at + 1)) {
    DayCell timed;
    const std::string_view rest = text.substr(at + 1);
    if (timed.readDay(trimmedCell(text.substr(0, at))) &&
        timed.readTime(withoutBlanksInFront(rest))) {
      return timed;
    }
  }
  return std::nullopt;
}

bool DayCell::readDay(std::string_view text) {
  if (text.size() == 8 && std::ranges::all_of(text, isDecimalDigit)) {
    eightDigits_ = text;
    return true;
  }
  std::size_t count = 0;
  std::size_t named = 0;
  bool isSeparated = true;
  while (!text.empty()) {
    if (!isSeparated || count == parts_.size()) {
      return false;
    }
    Part& part = parts_[count];
    if (isDecimalDigit(text.front())) {
      const std::size_t before = text.size();
      const auto number = takeNumber(text, 4);
      if (!number) {
        return false;
      }
      part = {*number, static_cast<int>(before - text.size())};
      if (part.digits == 3) {
        return false;
      }
      ++count;
    } else {
      std::string_view rest = text;
      while (!rest.empty()) {
        const std::string_view before = rest;
        const char32_t character = takeCharacter(rest);
        if (!isWordCharacter(character) || isDecimalDigit(before.front())) {
          rest = before;
          break;
        }
      }
      const std::string_view word = text.substr(0, text.size() - rest.size());
      text = rest;
      const auto month = monthNamed(word);
      if (month) {
        part = {*month, 0};
        ++count;
        ++named;
      } else if (word != "de" && word != "of") {
        return false;  // as in "2 de enero de 2024"
      }
    }
    const std::size_t separators = std::min(text.find_first_not_of("-/., "), text.size());
    isSeparated = separators > 0;
    if (separators > 2 || (separators == text.size() && separators > 0 && text != ".")) {
      return false;
    }
    text.remove_prefix(separators);
  }
  return count == parts_.size() && named <= 1;
}

bool DayCell::readTime(std::string_view text) {
  std::array<int, 3> fields = {0, 0, 0};
  std::int64_t fraction = 0;
  if (text.size() >= 6 && std::ranges::all_of(text.substr(0, 6), isDecimalDigit)) {
    for (int& field : fields) {
      std::string_view two = text.substr(0, 2);
      field = takeNumber(two, 2).value_or(0);
      text.remove_prefix(2);
    }
  } else {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) {
        if (!text.starts_with(':')) {
          if (i == 1) {
            return false;
          }
          break;
        }
        text.remove_prefix(1);
      }
      const auto number = takeNumber(text, 2);
      if (!number) {
        return false;
      }
      fields[i] = *number;
    }
  }
  if (text.starts_with('.') || text.starts_with(',')) {
    text.remove_prefix(1);
    std::int64_t unit = 100'000'000;
    if (text.empty() || !isDecimalDigit(text.front())) {
      return false;
    }
    for (; !text.empty() && isDecimalDigit(text.front()); text.remove_prefix(1), unit /= 10) {
      fraction += (text.front() - '0') * unit;
    }
  }
  text = withoutBlanksInFront(text);
  for (const auto& [mark, isAfternoon] :
       {std::pair("AM", false), {"PM", true}, {"am", false}, {"pm", true}}) {
    if (text.starts_with(mark)) {
      if (fields[0] < 1 || fields[0] > 12) {
        return false;
      }
      fields[0] = fields[0] % 12 + (isAfternoon ? 12 : 0);
      text = withoutBlanksInFront(text.substr(2));
      break;
    }
  }
  if (fields[0] > 24 || fields[1] > 59 || fields[2] > 60 || !isZone(text)) {
    return false;
  }
  time_ = ((fields[0] * 60LL + fields[1]) * 60 + fields[2]) * 1'000'000'000 + fraction;
  return true;
}

std::optional<YearMonthDay> DayCell::day(DayOrder order) const {
  if (!eightDigits_.empty()) {
    const auto number = [&](std::size_t start, std::size_t length) {
      std::string_view digits = std::string_view(eightDigits_).substr(start, length);
      return takeNumber(digits, length).value_or(0);
    };
    switch (order) {
      case DayOrder::ymd:
        return existing(number(0, 4), number(4, 2), number(6, 2));
      case DayOrder::dmy:
        return existing(number(4, 4), number(2, 2), number(0, 2));
      case DayOrder::mdy:
        return existing(number(4, 4), number(0, 2), number(2, 2));
    }
  }
  constexpr std::array<std::array<std::size_t, 3>, 3> places = {{{0, 1, 2}, {2, 1, 0}, {2, 0, 1}}};
  const auto& place = places[indexOf(order)];
  const Part& year = parts_[place[0]];
  const Part& month = parts_[place[1]];
  const Part& day = parts_[place[2]];
  const bool isNamed = month.digits == 0;
  if (year.digits == 0 || day.digits == 0 || year.digits == 1 || day.digits > 2 ||
      month.digits > 2 || (isNamed && order == DayOrder::ymd && year.digits != 4)) {
    return std::nullopt;
  }
  const int century = year.value < firstShortYear ? 2000 : 1900;
  return existing(year.digits == 2 ? century + year.value : year.value, month.value, day.value);
}

void DayOrderRecognition::add(std::uint32_t line, std::string_view tradeColumn,
                              std::string_view tradeCell, std::string_view settlementColumn,
                              std::string_view settlementCell) {
  if (isLike(tradeCell, settlementCell)) {
    return;
  }
  lastTrade_ = tradeCell;
  lastSettlement_ = settlementCell;
  Row row;
  row.trade = daysIn(line, tradeColumn, tradeCell);
  row.settlement = daysIn(line, settlementColumn, settlementCell);
  if (rows_.empty() || rows_.back() != row) {
    rows_.push_back(row);
  }
}

std::optional<std::int32_t> DayOrderRecognition::Days::in(DayOrder order) const {
  const std::int32_t count = counts[indexOf(order)];
  return count == none ? std::nullopt : std::optional(count);
}

std::optional<std::int32_t> DayOrderRecognition::Row::dayIn(DayOrder order) const {
  return trade == Days() ? settlement.in(order) : trade.in(order);
}

DayOrderRecognition::Days DayOrderRecognition::daysIn(std::uint32_t line, std::string_view column,
                                                      std::string_view text) {
  text = trimmedCell(text);
  Days days;
  if (text.empty()) {
    return days;
  }
  if (const auto cell = DayCell::read(text)) {
    for (const DayOrder order : allOrders) {
      if (const auto day = cell->day(order)) {
        days.counts[indexOf(order)] = static_cast<std::int32_t>(countOf(*day));
      }
    }
  }
  const Cell cell{line, column, text};
  if (days == Days()) {
    if (!noDay_) {
      noDay_ = KeptCell(cell);
    }
    return days;
  }
  strike(cell, days);
  return days;
}

void DayOrderRecognition::strike(const Cell& cell, const Days& days) {
  for (const auto& [one, other] : orderPairs) {
    auto& place = differing_[pairIndex(one, other)];
    const auto oneDay = days.in(one);
    const auto otherDay = days.in(other);
    if (!place && oneDay && otherDay && oneDay != otherDay) {
      place = KeptCell(cell);
    }
  }
  for (const DayOrder order : allOrders) {
    auto& striker = strikers_[indexOf(order)];
    if (!striker && !days.in(order)) {
      striker = KeptCell(cell);
      std::ranges::copy_if(allOrders, std::back_inserter(strikerOrders_[indexOf(order)]),
                           [&](DayOrder other) { return days.in(other).has_value(); });
    }
  }
}

DayOrderRecognition::Verdict DayOrderRecognition::verdict(YearMonthDay today,
                                                          std::optional<DayOrder> told) const {
  if (noDay_) {
    throw StatementError(noDay_->line, noDay_->column, "“" + noDay_->text + "” is not a day.");
  }
  if (told) {
    if (const auto& striker = strikers_[indexOf(*told)]) {
      throw StatementError(
          striker->line, striker->column,
          "“" + striker->text + "” is not a day written as " + std::string(nameOf(*told)) + ".");
    }
    return {*told, "Days are " + std::string(nameOf(*told)) + ", as was said."};
  }
  std::vector<DayOrder> left;
  std::ranges::copy_if(allOrders, std::back_inserter(left),
                       [&](DayOrder order) { return isAlwaysDay(order); });
  if (left.empty()) {
    failOfTwoOrders();
  }
  std::string why = left.size() == 1 ? whyStruck(left.front()) : "";
  // Each reason counts only where it leaves one: what strikes all out tells nothing.
  const auto strikeOut = [&](const std::function<bool(DayOrder)>& isUnlikely,
                             std::string_view reason) {
    std::vector<DayOrder> rest;
    std::ranges::copy_if(left, std::back_inserter(rest),
                         [&](DayOrder order) { return !isUnlikely(order); });
    if (left.size() > 1 && !rest.empty() && rest.size() < left.size()) {
      left = std::move(rest);
      why = reason;
    }
  };
  strikeOut([&](DayOrder order) { return hasDaysToCome(order, today); },
            "else some are still to come");
  strikeOut([&](DayOrder order) { return settlesOddly(order); },
            "else trades settle before their day or long behind it");
  const bool oneTells = std::ranges::count_if(left, [&](DayOrder order) {
                          return isInOrder(order) && dayCount(order) >= daysThatTell;
                        }) == 1;
  strikeOut([&](DayOrder order) { return oneTells && !isInOrder(order); },
            "else the rows are not in order");
  if (left.size() > 1) {
    // Orders that come to the same day in every cell need no choice.
    const bool areSame = std::ranges::all_of(rows_, [&](const Row& row) {
      const auto isSame = [&](const Days& days) {
        return std::ranges::all_of(
            left, [&](DayOrder order) { return days.in(order) == days.in(left.front()); });
      };
      return isSame(row.trade) && isSame(row.settlement);
    });
    if (!areSame) {
      failUndecided(left);
    }
    why = "they read the same in any order";
  }
  return {left.front(), "Days are " + std::string(nameOf(left.front())) + ": " + why + "."};
}

bool DayOrderRecognition::isAlwaysDay(DayOrder order) const {
  return !strikers_[indexOf(order)];
}

std::string DayOrderRecognition::whyStruck(DayOrder order) const {
  std::string why;
  for (const DayOrder other : allOrders) {
    const auto& striker = strikers_[indexOf(other)];
    if (other != order && striker) {
      why = "“" + striker->text + "” on line " + std::to_string(striker->line) + " is nothing else";
      if (strikerOrders_[indexOf(other)].size() == 1) {
        break;
      }
    }
  }
  return why;
}

bool DayOrderRecognition::hasDaysToCome(DayOrder order, YearMonthDay today) const {
  const auto last = static_cast<std::int32_t>(countOf(today));
  return std::ranges::any_of(rows_, [&](const Row& row) {
    const auto day = row.trade.in(order);
    return day && last < *day;
  });
}

bool DayOrderRecognition::settlesOddly(DayOrder order) const {
  return std::ranges::any_of(rows_, [&](const Row& row) {
    const auto trade = row.trade.in(order);
    const auto settlement = row.settlement.in(order);
    if (!trade || !settlement) {
      return false;
    }
    const std::int32_t days = *settlement - *trade;
    return days < 0 || days > longestSettlement;
  });
}

bool DayOrderRecognition::isInOrder(DayOrder order) const {
  bool rises = true;
  bool falls = true;
  std::optional<std::int32_t> last;
  for (const Row& row : rows_) {
    const auto day = row.dayIn(order);
    if (day && last) {
      rises = rises && *last <= *day;
      falls = falls && *day <= *last;
    }
    last = day ? day : last;
  }
  return rises || falls;
}

std::size_t DayOrderRecognition::dayCount(DayOrder order) const {
  std::vector<std::int32_t> days;
  for (const Row& row : rows_) {
    if (const auto day = row.dayIn(order)) {
      days.push_back(*day);
    }
  }
  std::ranges::sort(days);
  return static_cast<std::size_t>(std::ranges::unique(days).begin() - days.begin());
}

void DayOrderRecognition::failOfTwoOrders() const {
  // The cell that has struck out the last order against the first one that leaves another.
  std::size_t last = 0;
  for (std::size_t i = 1; i < strikers_.size(); ++i) {
    last = strikers_[i]->line >= strikers_[last]->line ? i : last;
  }
  const KeptCell& breaker = *strikers_[last];
  const DayOrder breakerOrder = strikerOrders_[last].front();
  const auto& other = strikers_[indexOf(breakerOrder)];
  throw StatementError(
      breaker.line, breaker.column,
      "“" + breaker.text + "” is " + std::string(nameOf(breakerOrder)) + ", but line " +
          std::to_string(other->line) + " (“" + other->text + "”) is " +
          std::string(nameOf(strikerOrders_[indexOf(breakerOrder)].front())) + ".");
}

void DayOrderRecognition::failUndecided(const std::vector<DayOrder>& orders) const {
  const auto isLeft = [&](DayOrder order) {
    return std::ranges::find(orders, order) != orders.end();
  };
  const auto* pair = std::ranges::find_if(orderPairs, [&](const auto& orderPair) {
    return isLeft(orderPair.first) && isLeft(orderPair.second) &&
           differing_[pairIndex(orderPair.first, orderPair.second)];
  });
  const KeptCell& told = *differing_[pairIndex(pair->first, pair->second)];
  const auto cell = DayCell::read(told.text);
  const YearMonthDay first = *cell->day(pair->first);
  const YearMonthDay second = *cell->day(pair->second);
  std::string firstText = spelledDay(first);
  if (first.year == second.year) {
    firstText = firstText.substr(0, firstText.rfind(' '));
  }
  std::string options;
  for (const DayOrder order : orders) {
    options += (options.empty() ? "--days " : " or --days ") + std::string(rawValue(order));
  }
  throw StatementError(told.line, told.column,
                       "“" + told.text + "” may be " + firstText + " or " + spelledDay(second) +
                           ", and no other row tells.",
                       "Say " + options + ".");
}

}  // namespace corvane
