// Calendar arithmetic on random dates of 1950 to 2050 in a zone with daylight-saving time, beside
// the same questions asked of ICU.
#include <benchmark/benchmark.h>
#include <unicode/gregocal.h>

#include <array>
#include <random>

#include "platform/time/calendar.h"

namespace corvane {
namespace calendar_bench {

const std::array<Date, 4096>& randomDates() {
  static const auto dates = [] {
    std::array<Date, 4096> result;
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::int64_t> seconds(-631152000, 2524608000);
    for (Date& date : result) {
      date = Date::since1970(static_cast<double>(seconds(random)));
    }
    return result;
  }();
  return dates;
}

Calendar toronto() {
  return Calendar(TimeZone::withIdentifier("America/Toronto").value());
}

template <typename Operation>
void runOnRandomDates(benchmark::State& state, Operation operation) {
  const auto& dates = randomDates();
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(operation(dates[next++ % dates.size()]));
  }
  state.SetItemsProcessed(state.iterations());
}

void calendarYear(benchmark::State& state) {
  const Calendar calendar = toronto();
  runOnRandomDates(state, [&](Date date) { return calendar.component(CalendarUnit::year, date); });
}
BENCHMARK(calendarYear);

void calendarAddDay(benchmark::State& state) {
  const Calendar calendar = toronto();
  runOnRandomDates(state,
                   [&](Date date) { return calendar.dateByAdding(CalendarUnit::day, 1, date); });
}
BENCHMARK(calendarAddDay);

void calendarStartOfDay(benchmark::State& state) {
  const Calendar calendar = toronto();
  runOnRandomDates(state, [&](Date date) { return calendar.startOfDay(date); });
}
BENCHMARK(calendarStartOfDay);

class IcuCalendar {
 public:
  IcuCalendar() : calendar_(icu::TimeZone::createTimeZone("America/Toronto"), status_) {}

  icu::GregorianCalendar& at(Date date) {
    calendar_.setTime(date.timeIntervalSince1970() * 1000, status_);
    return calendar_;
  }
  double time() { return calendar_.getTime(status_); }
  UErrorCode& status() { return status_; }

 private:
  UErrorCode status_ = U_ZERO_ERROR;
  icu::GregorianCalendar calendar_;
};

void icuYear(benchmark::State& state) {
  IcuCalendar calendar;
  runOnRandomDates(state,
                   [&](Date date) { return calendar.at(date).get(UCAL_YEAR, calendar.status()); });
}
BENCHMARK(icuYear);

void icuAddDay(benchmark::State& state) {
  IcuCalendar calendar;
  runOnRandomDates(state, [&](Date date) {
    calendar.at(date).add(UCAL_DATE, 1, calendar.status());
    return calendar.time();
  });
}
BENCHMARK(icuAddDay);

void icuStartOfDay(benchmark::State& state) {
  IcuCalendar calendar;
  runOnRandomDates(state, [&](Date date) {
    icu::GregorianCalendar& day = calendar.at(date);
    for (const auto unit : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND}) {
      day.set(unit, 0);
    }
    return calendar.time();
  });
}
BENCHMARK(icuStartOfDay);

}  // namespace calendar_bench
}  // namespace corvane
