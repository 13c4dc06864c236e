#include "platform/data/xml_entities.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

namespace corvane {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> namedEntities = {
    {{"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}}};

std::string utf8(std::uint32_t character) {
  const auto byte = [](std::uint32_t bits) { return static_cast<char>(bits); };
  const auto following = [&](int shift) { return byte(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) {
    return {byte(character)};
  }
  if (character < 0x800) {
    return {byte(0xC0 | character >> 6), following(0)};
  }
  if (character < 0x10000) {
    return {byte(0xE0 | character >> 12), following(6), following(0)};
  }
  return {byte(0xF0 | character >> 18), following(12), following(6), following(0)};
}

/// What "&" `name` ";" stands for.
std::optional<std::string> character(std::string_view name) {
  if (!name.starts_with('#')) {
    for (const auto& [entity, value] : namedEntities) {
      if (entity == name) {
        return std::string(value);
      }
    }
    return std::nullopt;
  }
  name.remove_prefix(1);
  const bool isHexadecimal = name.starts_with('x') || name.starts_with('X');
  if (isHexadecimal) {
    name.remove_prefix(1);
  }
  std::uint32_t number = 0;
  const char* const end = name.data() + name.size();
  const auto [next, error] = std::from_chars(name.data(), end, number, isHexadecimal ? 16 : 10);
  const bool isSurrogate = number >= 0xD800 && number < 0xE000;
  if (error != std::errc() || next != end || number == 0 || number > 0x10FFFF || isSurrogate) {
    return std::nullopt;
  }
  return utf8(number);
}

}  // namespace

std::string unescapingXMLEntities(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto ampersand = text.find('&');
    result += text.substr(0, ampersand);
    if (ampersand == text.npos) {
      break;
    }
    text.remove_prefix(ampersand + 1);
    const auto semicolon = text.find(';');
    const auto value = semicolon == text.npos ? std::nullopt : character(text.substr(0, semicolon));
    if (value) {
      result += *value;
      text.remove_prefix(semicolon + 1);
    } else {
      result += '&';
    }
  }
  return result;
}

}  // namespace corvane
