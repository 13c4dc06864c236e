// Where the sample market's instruments are traded, and when.
#pragma once

#include <array>
#include <string>

namespace corvane::samplemarket {

enum class ExchangeID { newYork, toronto, london, frankfurt, tokyo, currencies };

/// An exchange and its hours, in minutes after midnight of its own time zone.
struct Exchange {
  ExchangeID id;
  std::string code;
  std::string fullName;
  std::string market;
  std::string timeZoneName;
  std::string standardAbbreviation;
  std::string summerAbbreviation;
  int standardOffsetSeconds;
  int preOpen;  ///< equals `open` where there is no trading before the session
  int open;
  int close;
  int postClose;     ///< equals `close` where there is no trading after the session
  int halfDayClose;  ///< of the sessions that end early
  /// Midday recess, in minutes after the opening; empty where trading goes through.
  int recessStart;
  int recessEnd;

  [[nodiscard]] const std::string& abbreviation(int offsetSeconds) const {
    return offsetSeconds == standardOffsetSeconds ? standardAbbreviation : summerAbbreviation;
  }
};

[[nodiscard]] const Exchange& exchange(ExchangeID id);

}  // namespace corvane::samplemarket
