#include "platform/data/json.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <unordered_map>

#include "platform/data/json_reader.h"
#include "platform/data/json_syntax.h"

namespace corvane {
namespace {

JSONValue treeOf(JSONCursor& cursor) {
  switch (cursor.type()) {
    case JSONCursor::Type::null:
      return {};
    case JSONCursor::Type::boolean:
      return cursor.boolean();
    case JSONCursor::Type::number:
      return *JSONNumber::fromText(cursor.numberText());
    case JSONCursor::Type::string:
      return cursor.string();
    case JSONCursor::Type::array: {
      JSONValue::Array array;
      cursor.forEachElement([&](JSONCursor& element) { array.push_back(treeOf(element)); });
      return array;
    }
    case JSONCursor::Type::object: {
      JSONValue::Object object;
      std::unordered_map<std::string, std::size_t> positions;
      cursor.forEachField([&](std::string_view key, JSONCursor& value) {
        const auto [known, isNew] = positions.try_emplace(std::string(key), object.size());
        if (isNew) {
          object.emplace_back(key, treeOf(value));
        } else {
          object[known->second].second = treeOf(value);
        }
      });
      return object;
    }
  }
  __builtin_unreachable();
}

/// `text` with U+FFFD in place of whatever is not UTF-8.
std::string validUTF8(const std::string& text) {
  std::string valid;
  return icu::UnicodeString::fromUTF8(text).toUTF8String(valid);
}

class Writer {
 public:
  explicit Writer(bool isPretty) : isPretty_(isPretty) {}

  void write(const JSONValue& value) {
    value.visit([this](const auto& alternative) { write(alternative); });
  }
  void write(std::monostate) { text_ += "null"; }
  void write(bool value) { text_ += value ? "true" : "false"; }
  void write(const JSONNumber& number) { text_ += number.text(); }

  void write(const std::string& string) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    text_ += '"';
    for (const char c : validUTF8(string)) {
      switch (c) {
        case '"':
          text_ += "\\\"";
          break;
        case '\\':
          text_ += "\\\\";
          break;
        case '\n':
          text_ += "\\n";
          break;
        case '\r':
          text_ += "\\r";
          break;
        case '\t':
          text_ += "\\t";
          break;
        default:
          if (const auto byte = static_cast<unsigned char>(c); byte < 0x20) {
            text_ += "\\u00";
            text_ += hexDigits[byte >> 4];
            text_ += hexDigits[byte & 15];
          } else {
            text_ += c;
          }
      }
    }
    text_ += '"';
  }

  void write(const JSONValue::Array& array) {
    writeList('[', ']', array, [this](const JSONValue& element) { write(element); });
  }

  void write(const JSONValue::Object& object) {
    writeList('{', '}', object, [this](const JSONValue::Field& field) {
      write(field.first);
      text_ += isPretty_ ? ": " : ":";
      write(field.second);
    });
  }

  std::string takeText() { return std::move(text_); }

 private:
  template <typename List, typename WriteItem>
  void writeList(char opening, char closing, const List& list, WriteItem writeItem) {
    text_ += opening;
    ++level_;
    bool isFirst = true;
    for (const auto& item : list) {
      if (!std::exchange(isFirst, false)) {
        text_ += ',';
      }
      startLine();
      writeItem(item);
    }
    --level_;
    if (!list.empty()) {
      startLine();
    }
    text_ += closing;
  }

  void startLine() {
    if (isPretty_) {
      text_ += '\n';
      text_.append(2 * level_, ' ');
    }
  }

  const bool isPretty_;
  std::size_t level_ = 0;
  std::string text_;
};

}  // namespace

std::optional<JSONNumber> JSONNumber::fromText(std::string_view text) {
  return isJSONNumber(text) ? std::optional(JSONNumber(std::string(text))) : std::nullopt;
}

JSONValue JSONValue::parse(std::string_view text) {
  JSONValue value;
  JSONReader(text).read([&](JSONCursor& root) { value = treeOf(root); });
  return value;
}

std::string JSONValue::text() const {
  Writer writer(/*isPretty=*/false);
  writer.write(*this);
  return writer.takeText();
}

std::string JSONValue::prettyText() const {
  Writer writer(/*isPretty=*/true);
  writer.write(*this);
  return writer.takeText();
}

template <typename Type>
const Type& JSONValue::as(std::string_view expected, std::string_view path) const {
  const auto* wanted = std::get_if<Type>(&value_);
  if (wanted == nullptr) {
    constexpr std::string_view names[] = {"null", "a boolean", "a number",
                                          "text", "an array",  "an object"};
    throw JSONError(std::string(path), "expected " + std::string(expected) + ", found " +
                                           std::string(names[value_.index()]));
  }
  return *wanted;
}

bool JSONValue::boolean(std::string_view path) const {
  return as<bool>("a boolean", path);
}

const JSONNumber& JSONValue::number(std::string_view path) const {
  return as<JSONNumber>("a number", path);
}

const std::string& JSONValue::string(std::string_view path) const {
  return as<std::string>("text", path);
}

const JSONValue::Array& JSONValue::array(std::string_view path) const {
  return as<Array>("an array", path);
}

const JSONValue::Object& JSONValue::object(std::string_view path) const {
  return as<Object>("an object", path);
}

const JSONValue* JSONValue::find(std::string_view key) const {
  const auto* object = std::get_if<Object>(&value_);
  if (object == nullptr) {
    return nullptr;
  }
  const auto found = std::ranges::find(*object, key, &Field::first);
  return found == object->end() ? nullptr : &found->second;
}

const JSONValue& JSONValue::at(std::string_view key) const {
  (void)object();
  const JSONValue* value = find(key);
  if (value == nullptr) {
    throw JSONError(std::string(key), "the field is missing");
  }
  return *value;
}

void JSONValue::set(std::string_view key, JSONValue value) {
  if (isNull()) {
    value_ = Object();
  }
  auto& fields = std::get<Object>(value_);
  const auto found = std::ranges::find(fields, key, &Field::first);
  if (found != fields.end()) {
    found->second = std::move(value);
  } else {
    fields.emplace_back(key, std::move(value));
  }
}

void JSONValue::remove(std::string_view key) {
  if (auto* fields = std::get_if<Object>(&value_)) {
    std::erase_if(*fields, [&](const Field& field) { return field.first == key; });
  }
}

}  // namespace corvane
