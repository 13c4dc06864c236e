// Writes layouts of statements that the program has learned from the user.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/profiles/statement_profile.h"

namespace corvane {

/// The file of a layout: what StatementProfile::parse() reads as an equal one.
[[nodiscard]] std::string profileText(const StatementProfile& profile);

/// What the user has said of files of a layout, which belongs into the layout.
struct LearnedAnswers {
  std::map<std::string, StatementKind, std::less<>> kinds;  ///< by the word of the file
  std::optional<DayOrder> days;
  std::optional<DecimalMark> decimal;

  [[nodiscard]] bool isEmpty() const { return kinds.empty() && !days && !decimal; }
};

/// `text`, the file of a layout, with `answers` added where it says nothing of them. Its comments
/// and its order stay as far as they can. Throws ProfileError.
[[nodiscard]] std::string profileTextWith(std::string_view text, const LearnedAnswers& answers);

/// Writes `answers` into the layout `id` in `folder`; one that comes with the program is copied
/// there first. Returns the file. Throws FileError and ProfileError; then nothing has changed.
std::filesystem::path learnAnswers(const std::string& id, const LearnedAnswers& answers,
                                   const std::filesystem::path& shipped,
                                   const std::filesystem::path& folder);

/// A layout of files with `heading`, whose columns hold the fields of `fieldOrder`, by the names
/// that an import knows ("tradeDate", "cashAmount" …; empty for none). It knows the words of every
/// import, takes the first word of a symbol's cell for the symbol, and the text beside cash for its
/// note.
[[nodiscard]] StatementProfile learnedProfile(const std::string& name,
                                              const std::vector<std::string>& heading,
                                              const std::vector<std::string>& fieldOrder);

/// Writes a new layout into `folder`, under a name made of that of the layout, and returns the
/// file. Throws ProfileError where it is no layout, such as one without days, and FileError.
std::filesystem::path rememberProfile(const StatementProfile& profile,
                                      const std::filesystem::path& folder);

}  // namespace corvane
