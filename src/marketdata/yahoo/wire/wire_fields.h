// Reads JSON straight into records by tables of their fields.
//
// A record is described by a specialisation of fieldsOf<Record>: a tuple of a key and a member for
// each field. Whether a field must be there, and of what type, is read off the member.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "core/decimal/decimal.h"
#include "core/decimal/json_coding.h"
#include "platform/data/json_reader.h"
#include "platform/time/date.h"

namespace corvane::wire {

template <typename Record, typename Value>
struct Field {
  std::string_view key;
  Value Record::*member;
  bool canRefuse;  ///< whether an answer without it, or with something else there, is none
};

template <typename Record, typename Value>
constexpr Field<Record, Value> field(std::string_view key, Value Record::*member) {
  return {key, member, true};
}

/// A field that no figure depends on. The service changes such fields without notice, so whatever
/// stands there refuses no answer: what is not as agreed is left out.
template <typename Record, typename Value>
constexpr Field<Record, Value> byTheWay(std::string_view key, Value Record::*member) {
  return {key, member, false};
}

/// To be specialised for each record.
template <typename Record>
inline constexpr std::tuple<> fieldsOf{};

/// Each reads one value and throws JSONError where it is of another type, null included. A number
/// is whole when its value is, however it is written; a date is a number of seconds since 1970.
void read(JSONCursor& cursor, bool& value);
void read(JSONCursor& cursor, std::string& value);
void read(JSONCursor& cursor, std::int64_t& value);
void read(JSONCursor& cursor, double& value);
void read(JSONCursor& cursor, Decimal& value);
void read(JSONCursor& cursor, Date& value);

/// The whole number that the key of `cursor` spells. Throws JSONError for another key.
[[nodiscard]] std::int64_t wholeNumberKey(const JSONCursor& cursor, std::string_view key);

template <typename Value>
void read(JSONCursor& cursor, std::optional<Value>& value);
template <typename Value>
void read(JSONCursor& cursor, std::vector<Value>& list);
template <typename Value>
void read(JSONCursor& cursor, std::map<std::int64_t, Value>& values);

/// Reads what it can of a value that refuses no answer; whether it is as agreed.
template <typename Value>
bool readIfItFits(JSONCursor& cursor, Value& value);

template <typename Value>
inline constexpr bool mayBeAbsent = false;
template <typename Value>
inline constexpr bool mayBeAbsent<std::optional<Value>> = true;

/// Throws JSONError for a field that must be there and is not in `isPresent`.
template <typename Record, std::size_t... index>
void requireFields(const JSONCursor& cursor, const std::array<bool, sizeof...(index)>& isPresent,
                   std::index_sequence<index...>) {
  const auto require = [&]<typename Value>(const Field<Record, Value>& wanted, bool isHere) {
    if (wanted.canRefuse && !isHere && !mayBeAbsent<Value>) {
      throw JSONError(pathOf(wanted.key, cursor.path()), "the field is missing");
    }
  };
  (require(std::get<index>(fieldsOf<Record>), isPresent[index]), ...);
}

/// Reads a record; of several fields with one key the last counts.
template <typename Record>
requires(std::tuple_size_v<std::remove_cvref_t<decltype(fieldsOf<Record>)>> >
         0) void read(JSONCursor& cursor, Record& record) {
  constexpr auto& fields = fieldsOf<Record>;
  constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(fields)>>;
  constexpr auto indexes = std::make_index_sequence<count>();
  std::array<bool, count> isPresent{};
  cursor.forEachField([&](std::string_view key, JSONCursor& value) {
    const auto readIfNamed = [&](const auto& candidate, bool& isHere) {
      if (candidate.key != key) {
        return false;
      }
      if (candidate.canRefuse) {
        read(value, record.*candidate.member);
      } else {
        readIfItFits(value, record.*candidate.member);
      }
      isHere = true;
      return true;
    };
    [&]<std::size_t... index>(std::index_sequence<index...>) {
      (void)(readIfNamed(std::get<index>(fields), isPresent[index]) || ...);
    }
    (indexes);
  });
  requireFields<Record>(cursor, isPresent, indexes);
}

template <typename Value>
void read(JSONCursor& cursor, std::optional<Value>& value) {
  if (cursor.isNull()) {
    value.reset();
  } else {
    read(cursor, value.emplace());
  }
}

template <typename Value>
void read(JSONCursor& cursor, std::vector<Value>& list) {
  list.clear();
  cursor.forEachElement([&](JSONCursor& element) { read(element, list.emplace_back()); });
}

template <typename Value>
void read(JSONCursor& cursor, std::map<std::int64_t, Value>& values) {
  values.clear();
  cursor.forEachField([&](std::string_view key, JSONCursor& value) {
    read(value, values[wholeNumberKey(value, key)] = Value());
  });
}

template <typename Value>
inline constexpr bool isList = false;
template <typename Value>
inline constexpr bool isList<std::vector<Value>> = true;

template <typename Value>
bool readIfItFits(JSONCursor& cursor, Value& value) {
  if constexpr (mayBeAbsent<Value>) {
    if (cursor.isNull() || !readIfItFits(cursor, value.emplace())) {
      value.reset();
    }
    return true;
  } else if constexpr (isList<Value>) {
    value.clear();
    if (cursor.type() != JSONCursor::Type::array) {
      return false;
    }
    cursor.forEachElement(
        [&](JSONCursor& element) { readIfItFits(element, value.emplace_back()); });
    return true;
  } else if constexpr (std::tuple_size_v<std::remove_cvref_t<decltype(fieldsOf<Value>)>> > 0) {
    if (cursor.type() != JSONCursor::Type::object) {
      return false;
    }
    cursor.forEachField([&](std::string_view key, JSONCursor& field) {
      std::apply(
          [&](const auto&... each) {
            (void)((each.key == key && (readIfItFits(field, value.*each.member), true)) || ...);
          },
          fieldsOf<Value>);
    });
    return true;
  } else {
    try {
      read(cursor, value);
      return true;
    } catch (const JSONError&) {
      value = Value();
      return false;
    }
  }
}

/// The record that the whole of `json` is. Throws JSONError.
template <typename Record>
[[nodiscard]] Record decode(std::string_view json) {
  Record record;
  JSONReader(json).read([&](JSONCursor& root) { read(root, record); });
  return record;
}

}  // namespace corvane::wire
