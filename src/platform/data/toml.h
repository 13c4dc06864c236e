// TOML documents as trees that know where everything stands, for files that users write.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/error.h"

namespace corvane {

/// A place in a text, from 1.
struct TextPlace {
  std::uint32_t line = 0;
  std::uint32_t column = 0;
  friend bool operator==(const TextPlace&, const TextPlace&) = default;
};

/// What is wrong with a document, and where.
class TOMLError : public ErrorValue<TOMLError> {
 public:
  TOMLError(TextPlace where, std::string what) : place(where), reason(std::move(what)) {}

  TextPlace place;
  std::string reason;

  /// "line 7, column 9: …"
  [[nodiscard]] std::optional<std::string> description() const override {
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column) +
           ": " + reason;
  }
  [[nodiscard]] bool hasSameValues(const TOMLError& other) const {
    return place == other.place && reason == other.reason;
  }
};

/// A text, a whole number, a boolean, an array, or a table whose keys keep no order. Dates and
/// fractions are none of these. A plain value.
class TOMLValue {
 public:
  struct Entry;
  using Array = std::vector<TOMLValue>;
  using Table = std::vector<Entry>;
  using Content = std::variant<std::string, std::int64_t, bool, Array, Table>;

  TOMLValue();
  TOMLValue(TextPlace place, Content content);

  /// Reads a document of UTF-8 text. Throws TOMLError, also for texts of several lines in three
  /// quotes, in which the library reads beyond what it holds.
  [[nodiscard]] static TOMLValue parse(std::string_view text);

  [[nodiscard]] TextPlace place() const { return place_; }
  [[nodiscard]] const Content& content() const { return content_; }

  [[nodiscard]] const std::string* text() const { return std::get_if<std::string>(&content_); }
  [[nodiscard]] const bool* boolean() const { return std::get_if<bool>(&content_); }
  [[nodiscard]] const std::int64_t* integer() const { return std::get_if<std::int64_t>(&content_); }
  [[nodiscard]] const Array* array() const { return std::get_if<Array>(&content_); }
  [[nodiscard]] const Table* table() const { return std::get_if<Table>(&content_); }

 private:
  TextPlace place_;
  Content content_;
};

/// A key of a table, where it stands, and its value.
struct TOMLValue::Entry {
  std::string key;
  TextPlace place;
  TOMLValue value;
};

// Only here is it known what a table consists of.
inline TOMLValue::TOMLValue() = default;
inline TOMLValue::TOMLValue(TextPlace place, Content content)
    : place_(place), content_(std::move(content)) {}

}  // namespace corvane
