#include "platform/data/toml.h"

#include <toml++/toml.h>

#include <algorithm>

namespace corvane {
namespace {

TextPlace placeOf(const toml::source_position& position) {
  return {static_cast<std::uint32_t>(position.line), static_cast<std::uint32_t>(position.column)};
}

TOMLValue valueOf(const toml::node& node) {
  const TextPlace place = placeOf(node.source().begin);
  switch (node.type()) {
    case toml::node_type::string:
      return {place, **node.as_string()};
    case toml::node_type::integer:
      return {place, **node.as_integer()};
    case toml::node_type::boolean:
      return {place, **node.as_boolean()};
    case toml::node_type::array: {
      TOMLValue::Array values;
      for (const toml::node& value : *node.as_array()) {
        values.push_back(valueOf(value));
      }
      return {place, std::move(values)};
    }
    case toml::node_type::table: {
      TOMLValue::Table entries;
      for (const auto& [key, value] : *node.as_table()) {
        entries.push_back({std::string(key.str()), placeOf(key.source().begin), valueOf(value)});
      }
      // In the order of the text, so that the first fault is told first.
      std::ranges::sort(entries, {}, [](const TOMLValue::Entry& entry) {
        return std::pair(entry.place.line, entry.place.column);
      });
      return {place, std::move(entries)};
    }
    default:
      throw TOMLError(place, "neither a text, a whole number, true or false, nor a list or table.");
  }
}

}  // namespace

TOMLValue TOMLValue::parse(std::string_view text) {
  if (const std::size_t quotes = text.find("\"\"\""); quotes != text.npos) {
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<long>(quotes), '\n');
    throw TOMLError({static_cast<std::uint32_t>(line), 1},
                    "texts in three quotes are not taken; write them in one line.");
  }
  try {
    return valueOf(toml::parse(text));
  } catch (const toml::parse_error& error) {
    std::string reason(error.description());
    if (reason.contains("cannot redefine existing")) {
      reason = "this key stands here a second time";
    }
    if (!reason.ends_with('.')) {
      reason += '.';
    }
    throw TOMLError(placeOf(error.source().begin), std::move(reason));
  }
}

}  // namespace corvane
