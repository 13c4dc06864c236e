#include "core/decimal/json_coding.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace corvane {
namespace {

/// The date components by their names in JSON.
constexpr std::array<std::pair<std::string_view, CalendarUnit>, 7> unitNames = {{
    {"year", CalendarUnit::year},
    {"month", CalendarUnit::month},
    {"weekOfYear", CalendarUnit::weekOfYear},
    {"day", CalendarUnit::day},
    {"hour", CalendarUnit::hour},
    {"minute", CalendarUnit::minute},
    {"second", CalendarUnit::second},
}};

int wholeNumber(const JSONValue& value, const std::string& path) {
  const std::string& text = value.number(path).text();
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw JSONError(path, "expected a whole number, found " + text);
  }
  return number;
}

}  // namespace

JSONValue json(const Decimal& value, std::string_view path) {
  const auto number = JSONNumber::fromText(value.description());
  if (!number) {
    throw JSONError(std::string(path), "a value that is not a number cannot be written");
  }
  return *number;
}

Decimal decimal(const JSONValue& value, std::string_view path) {
  const std::string& text = value.number(path).text();
  const Decimal number = Decimal::fromWholeString(text).value_or(Decimal::nan());
  if (number.isNaN()) {
    throw JSONError(std::string(path), "the number " + text + " is too large");
  }
  return number;
}

JSONValue json(const DateComponents& components) {
  JSONValue value{JSONValue::Object()};
  for (const auto& [name, unit] : unitNames) {
    if (const auto count = components.get(unit)) {
      value.set(name, *count);
    }
  }
  return value;
}

DateComponents dateComponents(const JSONValue& value, std::string_view path) {
  DateComponents components;
  for (const auto& [key, field] : value.object(path)) {
    const auto unit =
        std::ranges::find(unitNames, key, [](const auto& name) { return name.first; });
    if (unit != unitNames.end() && !field.isNull()) {
      components.set(unit->second, wholeNumber(field, pathOf(key, path)));
    }
  }
  return components;
}

std::string pathOf(std::string_view key, std::string_view path) {
  return path.empty() ? std::string(key) : std::string(path) + "." + std::string(key);
}

const JSONValue& requiredField(const JSONValue& object, std::string_view key,
                               std::string_view path) {
  (void)object.object(path);
  const JSONValue* field = object.find(key);
  if (field == nullptr) {
    throw JSONError(pathOf(key, path), "the field is missing");
  }
  return *field;
}

}  // namespace corvane
