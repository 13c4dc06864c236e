#include "platform/time/time_zone.h"

#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <vector>

#include "platform/time/civil_day.h"
#include "platform/time/time_zone_data.h"

namespace corvane {
namespace {

constexpr double millisecondsPerSecond = 1000;

UDate startOfYear(int year) {
  return static_cast<double>(dayCount(year, 1, 1) * secondsPerDay) * millisecondsPerSecond;
}

std::int32_t totalOffset(const icu::TimeZoneRule& rule) {
  return static_cast<std::int32_t>((rule.getRawOffset() + rule.getDSTSavings()) /
                                   millisecondsPerSecond);
}

/// Reads every change of the clocks out of the time-zone database.
ZoneHistory readHistory(const icu::BasicTimeZone& zone) {
  // Earlier than the first local mean time that any zone records.
  UDate cursor = startOfYear(1700);
  const UDate end = startOfYear(ZoneHistory::firstYearNotNeeded);

  UErrorCode status = U_ZERO_ERROR;
  std::int32_t rawOffset = 0;
  std::int32_t savings = 0;
  zone.getOffset(cursor, false, rawOffset, savings, status);
  const std::int32_t firstOffset = (rawOffset + savings) / 1000;

  std::vector<ZoneHistory::Transition> transitions;
  std::int32_t offset = firstOffset;
  icu::TimeZoneTransition change;
  while (zone.getNextTransition(cursor, false, change) && change.getTime() < end) {
    cursor = change.getTime();
    const std::int32_t next = totalOffset(*change.getTo());
    if (next != offset) {
      transitions.push_back({static_cast<std::int64_t>(cursor / millisecondsPerSecond), next});
      offset = next;
    }
  }
  return {firstOffset, transitions};
}

/// "GMT+0530", and "GMT" for no offset at all.
std::string nameOfOffset(int seconds) {
  if (seconds == 0) {
    return "GMT";
  }
  const int magnitude = std::abs(seconds);
  char text[16];
  std::snprintf(text, sizeof text, magnitude % 60 == 0 ? "GMT%c%02d%02d" : "GMT%c%02d%02d%02d",
                seconds < 0 ? '-' : '+', magnitude / 3600, magnitude / 60 % 60, magnitude % 60);
  return text;
}

/// The offset that nameOfOffset would call `name`; none for any other text.
std::optional<int> offsetNamed(std::string_view name) {
  constexpr std::string_view prefix = "GMT";
  if (!name.starts_with(prefix) || (name.size() != 8 && name.size() != 10)) {
    return std::nullopt;
  }
  const std::string_view digits = name.substr(prefix.size() + 1);
  int number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  const int hoursAndMinutes = digits.size() == 4 ? number : number / 100;
  const int seconds = digits.size() == 4 ? 0 : number % 100;
  const int magnitude = hoursAndMinutes / 100 * 3600 + hoursAndMinutes % 100 * 60 + seconds;
  const int offset = name[prefix.size()] == '-' ? -magnitude : magnitude;
  return nameOfOffset(offset) == name ? std::optional(offset) : std::nullopt;
}

bool isInDatabase(const icu::UnicodeString& identifier) {
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString canonical;
  UBool isSystemIdentifier = false;
  icu::TimeZone::getCanonicalID(identifier, canonical, isSystemIdentifier, status);
  return U_SUCCESS(status) && isSystemIdentifier &&
         canonical != UNICODE_STRING_SIMPLE("Etc/Unknown");
}

}  // namespace

TimeZone::TimeZone(std::shared_ptr<const Data> data) : data_(std::move(data)) {}

TimeZone::TimeZone() {
  static const auto utc = std::make_shared<const Data>(Data{"UTC", ZoneHistory(0, {})});
  data_ = utc;
}

std::optional<TimeZone> TimeZone::withIdentifier(std::string_view identifier) {
  // Histories are read once and stay: there are some 600 names, of 20 kB each at most.
  static std::mutex mutex;
  static std::map<std::string, std::shared_ptr<const Data>, std::less<>> known;

  const std::lock_guard lock(mutex);
  if (const auto found = known.find(identifier); found != known.end()) {
    return TimeZone(found->second);
  }
  const auto name = icu::UnicodeString::fromUTF8(
      icu::StringPiece(identifier.data(), static_cast<std::int32_t>(identifier.size())));
  if (!isInDatabase(name)) {
    const auto offset = offsetNamed(identifier);
    return offset ? withSecondsFromGMT(*offset) : std::nullopt;
  }
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(name));
  const auto* rules = dynamic_cast<const icu::BasicTimeZone*>(zone.get());
  if (rules == nullptr) {
    return std::nullopt;
  }
  auto data = std::make_shared<const Data>(Data{std::string(identifier), readHistory(*rules)});
  known.emplace(identifier, data);
  return TimeZone(std::move(data));
}

std::optional<TimeZone> TimeZone::withSecondsFromGMT(int seconds) {
  constexpr int mostSeconds = 18 * 3600;
  if (seconds < -mostSeconds || seconds > mostSeconds) {
    return std::nullopt;
  }
  return TimeZone(
      std::make_shared<const Data>(Data{nameOfOffset(seconds), ZoneHistory(seconds, {})}));
}

TimeZone TimeZone::current() {
  std::unique_ptr<icu::TimeZone> zone;
  {
    // ICU detects the host's zone through buffers of its own that no lock protects.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    zone.reset(icu::TimeZone::detectHostTimeZone());
  }
  if (zone == nullptr) {
    return {};
  }
  icu::UnicodeString name;
  std::string identifier;
  zone->getID(name).toUTF8String(identifier);
  return withIdentifier(identifier).value_or(TimeZone());
}

const std::string& TimeZone::identifier() const {
  return data_->identifier;
}

std::int32_t TimeZone::secondsFromGMT(Date date) const {
  return data_->history.offsetAt(wholeSecondsSince1970(date));
}

}  // namespace corvane
