// The strict reading of days and numbers against slow models of its rules over random files, and
// the guard of imports over random statements that mean what the rules record.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <regex>

#include "exchange/statement_world.h"
#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"
#include "exchange/strict/statement_error.h"

namespace corvane {
namespace {

using testing::StatementWorld;

constexpr YearMonthDay lastDay{2026, 1, 31};

/// A day as a number that grows by at least 1 a day and by no more than 1 within a month.
struct SlowDay {
  int year = 0;
  int month = 0;
  int day = 0;
  auto operator<=>(const SlowDay&) const = default;

  /// The days up to `other`, counted one by one; -1 where it is before this one, 99 for many.
  [[nodiscard]] int daysTo(const SlowDay& other) const {
    SlowDay at = *this;
    for (int count = 0; count < 99; ++count) {
      if (at == other) {
        return count;
      }
      at = at.next();
    }
    return other < *this ? -1 : 99;
  }
  [[nodiscard]] SlowDay next() const {
    if (day < lengthOfMonth()) {
      return {year, month, day + 1};
    }
    return month < 12 ? SlowDay{year, month + 1, 1} : SlowDay{year + 1, 1, 1};
  }
  [[nodiscard]] int lengthOfMonth() const {
    constexpr std::array lengths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return lengths[static_cast<std::size_t>(month - 1)] + (month == 2 && isLeap ? 1 : 0);
  }
};

struct DayRow {
  std::string trade;
  std::string settlement;
};

/// The day that a text of three numbers is in an order, "ymd" and so on.
std::optional<SlowDay> slowDay(const std::string& text, const std::string& order) {
  static const std::regex form("([0-9]+)[-/. ]([0-9]+)[-/. ]([0-9]+)");
  std::smatch parts;
  if (!std::regex_match(text, parts, form)) {
    return std::nullopt;
  }
  SlowDay day;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::string digits = parts[i + 1];
    int number = std::stoi(digits);
    if (order[i] == 'y') {
      if (digits.size() == 2) {
        number += number < 50 ? 2000 : 1900;
      } else if (digits.size() != 4) {
        return std::nullopt;
      }
      day.year = number;
    } else if (digits.size() > 2) {
      return std::nullopt;
    } else {
      (order[i] == 'm' ? day.month : day.day) = number;
    }
  }
  const bool exists = day.year >= 1900 && day.year < 2200 && day.month >= 1 && day.month <= 12 &&
                      day.day >= 1 && day.day <= day.lengthOfMonth();
  return exists ? std::optional(day) : std::nullopt;
}

/// A file read in one order.
struct SlowReading {
  std::string order;
  bool areAllDays = true;
  bool hasDaysToCome = false;
  bool settlesOddly = false;
  bool isInOrder = false;
  std::size_t differentDays = 0;
  std::vector<std::optional<SlowDay>> all;
};

SlowReading slowReading(const std::vector<DayRow>& rows, const std::string& order) {
  SlowReading reading;
  reading.order = order;
  std::vector<SlowDay> trades;
  for (const DayRow& row : rows) {
    const auto trade = slowDay(row.trade, order);
    const auto settlement = slowDay(row.settlement, order);
    reading.areAllDays = reading.areAllDays && (row.trade.empty() || trade) &&
                         (row.settlement.empty() || settlement);
    reading.all.insert(reading.all.end(), {trade, settlement});
    if (trade && SlowDay{lastDay.year, lastDay.month, lastDay.day} < *trade) {
      reading.hasDaysToCome = true;
    }
    if (trade && settlement &&
        (trade->daysTo(*settlement) < 0 || trade->daysTo(*settlement) > 10)) {
      reading.settlesOddly = true;
    }
    if (trade || settlement) {
      trades.push_back(row.trade.empty() ? *settlement : trade.value_or(SlowDay()));
    }
  }
  reading.isInOrder =
      std::ranges::is_sorted(trades) || std::ranges::is_sorted(trades, std::ranges::greater());
  reading.differentDays = std::set<SlowDay>(trades.begin(), trades.end()).size();
  return reading;
}

/// The readings that are left, by the rules in their plainest form; none for a file without one.
std::vector<SlowReading> slowReadings(const std::vector<DayRow>& rows) {
  std::vector<SlowReading> left;
  for (const char* order : {"ymd", "dmy", "mdy"}) {
    left.push_back(slowReading(rows, order));
  }
  std::erase_if(left, [](const SlowReading& reading) { return !reading.areAllDays; });
  const auto keep = [&](const auto& isLikely) {
    if (std::ranges::any_of(left, isLikely)) {
      std::erase_if(left, [&](const SlowReading& reading) { return !isLikely(reading); });
    }
  };
  keep([](const SlowReading& reading) { return !reading.hasDaysToCome; });
  keep([](const SlowReading& reading) { return !reading.settlesOddly; });
  const auto tells = [](const SlowReading& reading) {
    return reading.isInOrder && reading.differentDays >= 6;
  };
  if (std::ranges::count_if(left, tells) == 1) {
    keep([](const SlowReading& reading) { return reading.isInOrder; });
  }
  return left;
}

/// Random rows of days: mostly of one order, in order or not, with settlement or without.
std::vector<DayRow> randomDays(std::mt19937& random) {
  const auto below = [&](int bound) {
    return static_cast<int>(random() % static_cast<unsigned>(bound));
  };
  const char separator = std::string("/-. ")[static_cast<std::size_t>(below(4))];
  const bool isShort = below(3) == 0;
  const bool isPadded = below(4) != 0;
  const bool settles = below(3) == 0;
  const int messiness = below(4) == 0 ? 5 : 1000;
  int order = below(3);
  const auto two = [&](int number) {
    return (number < 10 && isPadded ? "0" : "") + std::to_string(number);
  };
  const auto written = [&](const SlowDay& day) {
    const int own = below(messiness) == 0 ? below(3) : order;
    const std::string year = isShort
                                 ? (day.year % 100 < 10 ? "0" : "") + std::to_string(day.year % 100)
                                 : std::to_string(day.year);
    const std::string gap(1, separator);
    return own == 0   ? year + gap + two(day.month) + gap + two(day.day)
           : own == 1 ? two(day.day) + gap + two(day.month) + gap + year
                      : two(day.month) + gap + two(day.day) + gap + year;
  };
  std::vector<DayRow> rows;
  SlowDay day{2000 + below(26), 1 + below(12), 1 + below(28)};
  const int step = 1 + below(30);
  for (int count = 1 + below(12); count > 0; --count) {
    SlowDay settlement = day;
    for (int days = below(below(10) == 0 ? 15 : 4); days > 0; --days) {
      settlement = settlement.next();
    }
    rows.push_back({written(day), settles ? written(settlement) : ""});
    for (int days = below(step); days > 0; --days) {
      day = day.next();
    }
  }
  if (below(3) == 0) {
    std::ranges::shuffle(rows, random);
  } else if (below(2) == 0) {
    std::ranges::reverse(rows);
  }
  return rows;
}

TEST(DayOrderOfRandomFiles, IsThatOfASlowReading) {
  std::mt19937 random(4711);
  int bothDecided = 0;
  int bothLeftOpen = 0;
  for (int file = 0; file < 6000; ++file) {
    const std::vector<DayRow> rows = randomDays(random);
    std::string text;
    DayOrderRecognition recognition;
    std::uint32_t line = 2;
    for (const DayRow& row : rows) {
      recognition.add(line, "Trade", row.trade, "Settlement", row.settlement);
      text += row.trade + " " + row.settlement + "\n";
      ++line;
    }
    const std::vector<SlowReading> left = slowReadings(rows);
    const bool isOpen = std::ranges::any_of(
        left, [&](const SlowReading& reading) { return reading.all != left.front().all; });
    std::optional<DayOrder> order;
    try {
      order = recognition.verdict(lastDay, std::nullopt).order;
    } catch (const StatementError&) {
      // Refused or asked: it is not decided.
    }
    ASSERT_EQ(order.has_value(), !left.empty() && !isOpen) << text;
    bothLeftOpen += order ? 0 : 1;
    if (!order) {
      continue;
    }
    ++bothDecided;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const auto read = DayCell::read(rows[i].trade)->day(*order);
      ASSERT_TRUE(read) << text;
      ASSERT_EQ((SlowDay{read->year, read->month, read->day}), *left.front().all[2 * i]) << text;
    }
  }
  EXPECT_GT(bothDecided, 2000);
  EXPECT_GT(bothLeftOpen, 500);
}

/// `digits` in groups of three, with `group` between them.
std::string inGroups(std::string digits, const std::string& group) {
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, group);
  }
  return digits;
}

TEST(RandomNumbers, AreReadBackFromSixNotations) {
  struct Notation {
    std::string group;
    std::string decimal;
  };
  const std::vector<Notation> notations = {{"", "."},  {",", "."},      {".", ","},
                                           {"'", "."}, {"\u00A0", ","}, {"", ","}};
  std::mt19937 random(6);
  const auto below = [&](unsigned bound) { return static_cast<unsigned>(random() % bound); };
  int decided = 0;
  for (int file = 0; file < 3000; ++file) {
    const Notation& notation = notations[below(6)];
    std::vector<std::pair<std::string, Decimal>> cells;
    DecimalMarkRecognition marks;
    for (unsigned count = 1 + below(6); count > 0; --count) {
      const std::string whole = std::to_string(below(2) == 0 ? below(1000) : below(20'000'000));
      std::string decimals;
      for (unsigned digits = below(5); digits > 0; --digits) {
        decimals += static_cast<char>('0' + below(10));
      }
      const Decimal value =
          *Decimal::fromWholeString(decimals.empty() ? whole : whole + "." + decimals);
      std::string text = inGroups(whole, notation.group);
      text += decimals.empty() ? "" : notation.decimal + decimals;
      const bool isNegative = below(3) == 0;
      const unsigned form = below(5);
      if (isNegative) {
        text = form == 0 ? "(" + text + ")" : form == 1 ? text + "-" : "-" + text;
      } else if (form == 2) {
        text = "€ " + text;
      } else if (form == 3) {
        text += " EUR";
      }
      marks.add(static_cast<std::uint32_t>(cells.size() + 2), "Amount", text);
      cells.emplace_back(text, isNegative ? -value : value);
    }
    try {
      const DecimalMark mark = marks.mark();
      ++decided;
      for (const auto& [text, value] : cells) {
        const auto cell = NumberCell::read(text);
        ASSERT_TRUE(cell) << text;
        ASSERT_EQ(cell->value(mark), value) << text;
      }
    } catch (const StatementError& error) {
      ASSERT_THAT(error.description().value_or(""), ::testing::HasSubstr(" may be "))
          << "numbers of one notation never show two marks";
    }
  }
  EXPECT_GT(decided, 2000);
}

TEST(GuardOfImports, IsSilentOnRandomStatementsThatMeanWhatIsRecorded) {
  std::mt19937 random(99);
  const auto one = [&](const std::vector<std::string>& of) { return of[random() % of.size()]; };
  for (int file = 0; file < 150; ++file) {
    StatementWorld world;
    world.isGuarded = true;
    world.fields = {"tradeDate", "type", "symbol", "numberOfShares", "cashAmount", "cashCurrency"};
    // A day above 12 tells the order to both readings.
    std::string text =
        "Date,Type,Symbol,Shares,Amount,Cur\n2024-01-31,deposit,From my bank,,1000,CAD\n";
    std::size_t count = 1;
    for (std::size_t rows = 1 + random() % 10; rows > 0; --rows) {
      const std::string amount =
          std::to_string(1 + random() % 9000) + one({"", ".5", ".25", ".07"});
      text += "2024-02-" + std::to_string(10 + random() % 19) + ",";
      text += one({"buy," + one({"ABC", "XYZ Acme Corp"}) + "," + std::to_string(1 + random() % 50),
                   "deposit,,", "Withdrawal,Rent,", "interest,,", "fees,Of the year,"});
      text += "," + amount + ",CAD\n";
      ++count;
    }
    EXPECT_TRUE(world.importText(text)) << world.error() << world.question() << text;
    EXPECT_EQ(world.question(), "") << text;
    EXPECT_EQ(world.lines().size(), count) << text;
  }
}

}  // namespace
}  // namespace corvane
