// Calendar fields by name: a day, a time of day, or a span to add to a date.
#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <utility>

namespace corvane {

/// The fields a Calendar counts in, largest first.
enum class CalendarUnit { year, month, weekOfYear, day, hour, minute, second };

/// A set of calendar fields, each present with an integer or absent.
///
/// What an absent field means is the operation's to say: nothing to add, or the least value that
/// the field can have. Values may lie outside the field's usual range; a Calendar rolls them over.
class DateComponents {
 public:
  constexpr DateComponents() = default;
  constexpr DateComponents(std::initializer_list<std::pair<CalendarUnit, int>> fields) {
    for (const auto& [unit, value] : fields) {
      set(unit, value);
    }
  }

  [[nodiscard]] constexpr std::optional<int> get(CalendarUnit unit) const {
    return fields_[static_cast<std::size_t>(unit)];
  }
  constexpr void set(CalendarUnit unit, std::optional<int> value) {
    fields_[static_cast<std::size_t>(unit)] = value;
  }
  /// The field's value, or `absent` where it has none.
  [[nodiscard]] constexpr int valueOr(CalendarUnit unit, int absent) const {
    return get(unit).value_or(absent);
  }

  [[nodiscard]] constexpr std::optional<int> year() const { return get(CalendarUnit::year); }
  [[nodiscard]] constexpr std::optional<int> month() const { return get(CalendarUnit::month); }
  [[nodiscard]] constexpr std::optional<int> day() const { return get(CalendarUnit::day); }
  [[nodiscard]] constexpr std::optional<int> hour() const { return get(CalendarUnit::hour); }
  [[nodiscard]] constexpr std::optional<int> minute() const { return get(CalendarUnit::minute); }
  [[nodiscard]] constexpr std::optional<int> second() const { return get(CalendarUnit::second); }

  friend constexpr bool operator==(const DateComponents&, const DateComponents&) = default;

 private:
  std::array<std::optional<int>, 7> fields_{};
};

}  // namespace corvane
