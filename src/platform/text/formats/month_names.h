// The months by their names, in the languages that statements come in.
#pragma once

#include <optional>
#include <string_view>

namespace corvane {

/// The month, 1 to 12, that `name` names: in full or short, with or without a point behind it, in
/// the user's language, English, German, French, Dutch, Italian, Spanish or Swedish, whatever its
/// case. None for any other word. Any thread.
[[nodiscard]] std::optional<int> monthNamed(std::string_view name);

}  // namespace corvane
