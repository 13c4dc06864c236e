// JSON documents as trees, with exact numbers.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/data/json_error.h"

namespace corvane {

/// A number as the text that it is written in, so that no digit is lost.
class JSONNumber {
 public:
  /// The number that `text` spells; none where JSON has no such number ("01", "1.", "+1", "NaN").
  [[nodiscard]] static std::optional<JSONNumber> fromText(std::string_view text);
  template <std::integral Integer>
  requires(!std::same_as<Integer, bool>)
      JSONNumber(Integer value)  // NOLINT(google-explicit-constructor): whole numbers read as such
      : text_(std::to_string(value)) {}

  [[nodiscard]] const std::string& text() const { return text_; }

  /// By their texts: 1.0 and 1.00 are different.
  friend bool operator==(const JSONNumber&, const JSONNumber&) = default;

 private:
  explicit JSONNumber(std::string text) : text_(std::move(text)) {}
  std::string text_;
};

/// Null, a boolean, a number, a text, an array, or an object whose fields keep their order. A plain
/// value. For small documents; JSONReader reads large ones.
class JSONValue {
 public:
  using Array = std::vector<JSONValue>;
  using Field = std::pair<std::string, JSONValue>;
  using Object = std::vector<Field>;

  JSONValue() = default;  ///< null
  template <std::same_as<bool> Boolean>
  JSONValue(Boolean value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  template <std::integral Integer>
  requires(!std::same_as<Integer, bool>) JSONValue(Integer value)
      : value_(JSONNumber(value)) {}                          // NOLINT(google-explicit-constructor)
  JSONValue(JSONNumber value) : value_(std::move(value)) {}   // NOLINT(google-explicit-constructor)
  JSONValue(std::string value) : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor)
  JSONValue(std::string_view value) : value_(std::string(value)) {}  // NOLINT
  JSONValue(const char* value) : value_(std::string(value)) {}       // NOLINT
  JSONValue(Array value) : value_(std::move(value)) {}   // NOLINT(google-explicit-constructor)
  JSONValue(Object value) : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor)

  /// Reads a whole document of UTF-8 text. Of several fields with one key the last counts. Throws
  /// JSONError for whatever JSON does not allow, and for nesting beyond JSONCursor::maximumDepth.
  [[nodiscard]] static JSONValue parse(std::string_view text);

  /// The document in its shortest form, or indented by two blanks a level. Numbers are written as
  /// they were read. Bytes of a text that are not UTF-8 are written as U+FFFD, so that what is
  /// written can be read again.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::string prettyText() const;

  [[nodiscard]] bool isNull() const { return std::holds_alternative<std::monostate>(value_); }

  /// This value as the type wanted. Throws JSONError, which names `path`, where it is another.
  [[nodiscard]] bool boolean(std::string_view path = "") const;
  [[nodiscard]] const JSONNumber& number(std::string_view path = "") const;
  [[nodiscard]] const std::string& string(std::string_view path = "") const;
  [[nodiscard]] const Array& array(std::string_view path = "") const;
  [[nodiscard]] const Object& object(std::string_view path = "") const;

  /// Calls `visitor` with the std::monostate, bool, JSONNumber, text, Array or Object that this is.
  template <typename Visitor>
  decltype(auto) visit(Visitor&& visitor) const {
    return std::visit(std::forward<Visitor>(visitor), value_);
  }

  /// The field `key` of an object; null where there is none, or where this is no object.
  [[nodiscard]] const JSONValue* find(std::string_view key) const;
  [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }
  /// The field `key` of an object. Throws JSONError where there is none.
  [[nodiscard]] const JSONValue& at(std::string_view key) const;

  /// Gives the field `key` this value; null first becomes an empty object.
  void set(std::string_view key, JSONValue value);
  void remove(std::string_view key);

  /// Objects are equal when they have the same fields in the same order.
  friend bool operator==(const JSONValue&, const JSONValue&) = default;

 private:
  template <typename Type>
  const Type& as(std::string_view expected, std::string_view path) const;

  std::variant<std::monostate, bool, JSONNumber, std::string, Array, Object> value_;
};

}  // namespace corvane
