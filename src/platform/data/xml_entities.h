// The entities in which XML writes characters that mean something to it.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// `text` with "&amp;", "&lt;", "&gt;", "&quot;", "&apos;" and references by number ("&#233;",
/// "&#xE9;") as the characters that they stand for. Whatever else follows an ampersand stays as it
/// is. Nothing is unescaped twice.
[[nodiscard]] std::string unescapingXMLEntities(std::string_view text);

}  // namespace corvane
