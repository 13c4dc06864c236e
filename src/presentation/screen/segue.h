// What a screen asks its window to open.
#pragma once

#include <string_view>
#include <variant>

namespace corvane {

// A screen has a variant of the forms and screens that it can ask for, each with what it is to be
// filled with. The window visits it, so that a new one does not compile until it can be opened.

/// The name of what `segue` asks for.
template <typename... Destinations>
[[nodiscard]] std::string_view segueIdentifier(const std::variant<Destinations...>& segue) {
  return std::visit([](const auto& destination) { return destination.identifier; }, segue);
}

}  // namespace corvane
