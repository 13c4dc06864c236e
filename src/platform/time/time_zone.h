// A time zone of the IANA database, or a fixed offset from UTC.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/time/date.h"

namespace corvane {

/// A time zone by name, with its history of offsets. A cheap value to copy; safe on any thread.
class TimeZone {
 public:
  /// UTC.
  TimeZone();

  /// The zone that the IANA database calls `identifier` ("America/Toronto"), or the fixed offset
  /// that has this identifier; none for an unknown name. Matching is exact: "america/toronto" is
  /// unknown.
  [[nodiscard]] static std::optional<TimeZone> withIdentifier(std::string_view identifier);

  /// A fixed offset, east of Greenwich positive; none beyond 18 hours either way. Its identifier is
  /// of the form "GMT+0530".
  [[nodiscard]] static std::optional<TimeZone> withSecondsFromGMT(int seconds);

  /// The user's zone. Read again from the system at each call, so that it follows a traveller; UTC
  /// where the system has none that the database knows.
  [[nodiscard]] static TimeZone current();

  [[nodiscard]] const std::string& identifier() const;

  /// Seconds to add to UTC to get the zone's civil time at `date`. A date that no calendar can
  /// express gets the offset of the nearest one that it can.
  [[nodiscard]] std::int32_t secondsFromGMT(Date date) const;

  /// Zones are equal when their identifiers are.
  friend bool operator==(const TimeZone& left, const TimeZone& right) {
    return left.identifier() == right.identifier();
  }

 private:
  friend class Calendar;
  struct Data;
  explicit TimeZone(std::shared_ptr<const Data> data);

  std::shared_ptr<const Data> data_;
};

}  // namespace corvane
