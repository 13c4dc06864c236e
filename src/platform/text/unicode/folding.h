// Text as a search compares it.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// `text` without what somebody who looks for words leaves out: in small letters, without accents
/// and strokes through letters, without marks that are not seen, with 0 to 9 for the digits of all
/// scripts, and with the blank, the dash and the apostrophe of a keyboard for all others. "Société
/// Ö" and "SOCIETE o" become the same. Independent of the user's language; only for comparing. Any
/// thread.
[[nodiscard]] std::string foldedForSearch(std::string_view text);

}  // namespace corvane
