// Capital and small letters, independent of the user's language.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// `text` in capital letters, by the rules that hold where no language is known: "straße" becomes
/// "STRASSE", and "i" is "I" for users in Turkey too.
[[nodiscard]] std::string uppercased(std::string_view text);

/// `text` in small letters, by the same rules.
[[nodiscard]] std::string lowercased(std::string_view text);

}  // namespace corvane
