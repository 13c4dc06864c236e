#include "platform/data/json_reader.h"

#include <simdjson.h>

#include <cassert>
#include <new>

#include "platform/data/json_syntax.h"

namespace corvane {
namespace {

namespace ondemand = simdjson::ondemand;

/// A value inside a document, or the document itself where it is a lone number or text, which
/// simdjson reads by other functions.
struct Place {
  ondemand::value* value = nullptr;
  ondemand::document* document = nullptr;
};

static_assert(std::is_trivially_copyable_v<Place> && std::is_trivially_copyable_v<ondemand::value>);

struct Storage {
  Place place;
  ondemand::value value;
};

template <typename Bytes>
Storage& storageIn(Bytes& bytes) {
  static_assert(sizeof(Storage) <= sizeof(Bytes) && alignof(Storage) <= 8);
  return *std::launder(reinterpret_cast<Storage*>(bytes.data()));
}

template <typename Bytes>
void hold(ondemand::value value, Bytes& bytes) {
  auto* storage = new (bytes.data()) Storage{{}, value};
  storage->place.value = &storage->value;
}

/// Calls `read` with the value or the document that the bytes hold.
template <typename Bytes, typename Read>
auto at(Bytes& bytes, Read read) {
  const Place place = storageIn(bytes).place;
  return place.value != nullptr ? read(*place.value) : read(*place.document);
}

std::string_view trimmed(std::string_view text) {
  const auto end = text.find_last_not_of(" \t\r\n");
  return text.substr(0, end == text.npos ? 0 : end + 1);
}

void readThrough(JSONCursor& cursor) {
  switch (cursor.type()) {
    case JSONCursor::Type::null:
      break;
    case JSONCursor::Type::boolean:
      (void)cursor.boolean();
      break;
    case JSONCursor::Type::number:
      (void)cursor.numberText();
      break;
    case JSONCursor::Type::string:
      (void)cursor.string();
      break;
    case JSONCursor::Type::array:
      cursor.forEachElement([](JSONCursor& element) { readThrough(element); });
      break;
    case JSONCursor::Type::object:
      cursor.forEachField([](std::string_view, JSONCursor& value) { readThrough(value); });
      break;
  }
}

std::string_view name(JSONCursor::Type type) {
  switch (type) {
    case JSONCursor::Type::null:
      return "null";
    case JSONCursor::Type::boolean:
      return "a boolean";
    case JSONCursor::Type::number:
      return "a number";
    case JSONCursor::Type::string:
      return "text";
    case JSONCursor::Type::array:
      return "an array";
    case JSONCursor::Type::object:
      return "an object";
  }
  __builtin_unreachable();
}

std::string reasonFor(simdjson::error_code error) {
  switch (error) {
    case simdjson::EMPTY:
      return "the document is empty";
    case simdjson::UTF8_ERROR:
      return "the document is not valid UTF-8";
    case simdjson::UNCLOSED_STRING:
      return "a text is not closed";
    case simdjson::UNESCAPED_CHARS:
      return "a text has control characters";
    case simdjson::STRING_ERROR:
      return "a text has an invalid escape";
    case simdjson::INCOMPLETE_ARRAY_OR_OBJECT:
      return "an array or object is not closed";
    case simdjson::TRAILING_CONTENT:
      return "something follows the document";
    default:
      return "malformed JSON";
  }
}

}  // namespace

JSONCursor::Type JSONCursor::type() {
  ondemand::json_type type{};
  const auto error = at(value_, [&](auto& value) { return value.type().get(type); });
  if (error) {
    failBecause(error);
  }
  switch (type) {
    case ondemand::json_type::array:
      return Type::array;
    case ondemand::json_type::object:
      return Type::object;
    case ondemand::json_type::number:
      return Type::number;
    case ondemand::json_type::string:
      return Type::string;
    case ondemand::json_type::boolean:
      return Type::boolean;
    case ondemand::json_type::null: {
      bool isNull = false;
      const auto nullError = at(value_, [&](auto& value) {
        return simdjson::simdjson_result<bool>(value.is_null()).get(isNull);
      });
      if (nullError || !isNull) {
        fail("malformed JSON");
      }
      return Type::null;
    }
  }
  __builtin_unreachable();
}

bool JSONCursor::boolean() {
  bool value = false;
  const auto error = at(value_, [&](auto& place) { return place.get_bool().get(value); });
  if (error == simdjson::INCORRECT_TYPE) {
    failExpecting("a boolean");
  }
  if (error) {
    failBecause(error);
  }
  return value;
}

std::string_view JSONCursor::numberText() {
  if (type() != Type::number) {
    failExpecting("a number");
  }
  std::string_view token;
  const auto error = at(value_, [&](auto& place) {
    return simdjson::simdjson_result<std::string_view>(place.raw_json_token()).get(token);
  });
  if (error) {
    failBecause(error);
  }
  token = trimmed(token);
  if (!isJSONNumber(token)) {
    fail("malformed number");
  }
  return token;
}

std::string_view JSONCursor::string() {
  // simdjson's buffer has room for each text once and does not check for a second one.
  if (text_.data() != nullptr) {
    return text_;
  }
  const auto error = at(value_, [&](auto& place) { return place.get_string().get(text_); });
  if (error == simdjson::INCORRECT_TYPE) {
    failExpecting("text");
  }
  if (error) {
    failBecause(error);
  }
  return text_;
}

void JSONCursor::requireDepth() const {
  if (depth_ >= maximumDepth) {
    fail("the nesting is too deep");
  }
}

void JSONCursor::visitElements(ElementVisit visit) {
  requireDepth();
  ondemand::array array;
  if (const auto error = at(value_, [&](auto& place) { return place.get_array().get(array); })) {
    error == simdjson::INCORRECT_TYPE ? failExpecting("an array") : failBecause(error);
  }
  std::size_t index = 0;
  for (auto element : array) {
    JSONCursor cursor(this, {}, index++);
    ondemand::value value;
    if (const auto error = element.get(value)) {
      cursor.failBecause(error);
    }
    hold(value, cursor.value_);
    visit.call(visit.function, cursor);
  }
}

void JSONCursor::visitFields(FieldVisit visit) {
  requireDepth();
  ondemand::object object;
  if (const auto error = at(value_, [&](auto& place) { return place.get_object().get(object); })) {
    error == simdjson::INCORRECT_TYPE ? failExpecting("an object") : failBecause(error);
  }
  for (auto field : object) {
    std::string_view key;
    if (const auto error = field.unescaped_key().get(key)) {
      failBecause(error);
    }
    JSONCursor cursor(this, key, 0);
    ondemand::value value;
    if (const auto error = field.value().get(value)) {
      cursor.failBecause(error);
    }
    hold(value, cursor.value_);
    visit.call(visit.function, key, cursor);
  }
}

void JSONCursor::fail(std::string reason) const {
  throw JSONError(path(), std::move(reason));
}

void JSONCursor::failBecause(int error) const {
  fail(reasonFor(static_cast<simdjson::error_code>(error)));
}

void JSONCursor::failExpecting(std::string_view expected) {
  fail("expected " + std::string(expected) + ", found " + std::string(name(type())));
}

std::string JSONCursor::path() const {
  if (parent_ == nullptr) {
    return "";
  }
  const std::string before = parent_->path();
  if (key_.data() == nullptr) {
    return before + "[" + std::to_string(index_) + "]";
  }
  return before.empty() ? std::string(key_) : before + "." + std::string(key_);
}

struct JSONReader::State {
  explicit State(std::string_view text) : document(text) {}

  void read(ondemand::parser& reading, JSONCursor::ElementVisit visit) const;

  simdjson::padded_string document;
  ondemand::parser parser;
};

JSONReader::JSONReader(std::string_view document) : state_(std::make_unique<State>(document)) {}

JSONReader::~JSONReader() = default;

void JSONReader::readRoot(JSONCursor::ElementVisit visit) {
  state_->read(state_->parser, visit);
}

void JSONReader::finish() const {
  // The parser of read() still holds the texts that it handed out.
  ondemand::parser parser;
  state_->read(parser, {nullptr, [](void*, JSONCursor& root) { readThrough(root); }});
}

void JSONReader::State::read(ondemand::parser& reading, JSONCursor::ElementVisit visit) const {
  JSONCursor root(nullptr, {}, 0);
  const auto require = [&](simdjson::error_code error) {
    if (error) {
      root.failBecause(error);
    }
  };
  ondemand::document opened;
  require(reading.iterate(document).get(opened));
  bool isScalar = false;
  require(opened.is_scalar().get(isScalar));
  const char* start = nullptr;
  require(opened.current_location().get(start));
  if (isScalar) {
    new (root.value_.data()) Storage{{nullptr, &opened}, {}};
  } else {
    ondemand::value value;
    require(opened.get_value().get(value));
    hold(value, root.value_);
  }
  visit.call(visit.function, root);

  const char* next = nullptr;
  auto error = opened.current_location().get(next);
  if (!error && next == start) {
    readThrough(root);
    error = opened.current_location().get(next);
  }
  const char* const end = document.data() + document.size();
  if (error == simdjson::OUT_OF_BOUNDS) {
    return;
  }
  require(error);
  // simdjson stays in front of a lone number when its text has been read.
  const std::string_view rest(next, next < end ? static_cast<std::size_t>(end - next) : 0);
  if (!rest.empty() && !(next == start && isJSONNumber(trimmed(rest)))) {
    require(simdjson::TRAILING_CONTENT);
  }
}

}  // namespace corvane
