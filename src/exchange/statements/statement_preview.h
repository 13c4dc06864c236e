// A statement held against a ledger before anything is recorded.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/profiles/profile_writer.h"
#include "exchange/reading/statement_reader.h"
#include "exchange/statements/ledger_matching.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// What an import of a statement would do. Nothing else is recorded than what is new in it.
struct StatementPreview {
  std::string profileId;
  std::string profileName;
  MatchedFile file;
  std::string encodingName;
  StatementReading reading;

  /// Whether no row asks, is refused, or would be refused by the ledger.
  [[nodiscard]] bool isReady() const;
  /// The transactions of the new rows, in the order in which they are to be recorded.
  [[nodiscard]] std::vector<BasicTransaction> transactions() const;
  [[nodiscard]] std::size_t newRowCount() const;
};

/// Reads the file `bytes` by one of `profiles` for `portfolio`. Finds what its ledger has already:
/// of equal rows as many as the ledger holds are there, and the others are new. Tries the new ones
/// on a copy of the ledger, so that its refusals stand at their rows. `rateOf` may be null.
/// `earlier` is what was imported into the portfolio before.
///
/// `progress` is told again and again what part is done, from 0 to 1; what it throws ends the
/// reading, and it may be null. Beside `bytes` little more is held than the rows.
///
/// Main queue only. Throws StatementError, TextEncodingError, CSVParseError.
[[nodiscard]] StatementPreview previewStatement(
    std::string_view bytes, const std::vector<StatementProfile>& profiles,
    const PortfolioPointer& portfolio, const StatementOptions& options,
    std::function<std::optional<StatementSurroundings::Rate>(const Currency&, YearMonthDay)>
        rateOf = nullptr,
    const std::vector<RecordedImport>& earlier = {},
    const std::function<void(double fraction)>& progress = nullptr);

/// What `options` say of files of the layout of `preview` that the layout itself does not.
[[nodiscard]] LearnedAnswers answersToLearn(const StatementPreview& preview,
                                            const ProfileShelf& shelf,
                                            const StatementOptions& options);

/// Records the new rows of `preview` in `portfolio` as one edit that cannot be undone, and returns
/// their transactions. Throws StatementError with the line that the ledger or its store refuses;
/// what keeps the whole from being stored is thrown as it is.
/// `progress` is as above; what it throws takes all back.
std::vector<BasicTransaction> recordStatement(
    const StatementPreview& preview, const PortfolioPointer& portfolio,
    const std::function<void(double fraction)>& progress = nullptr);

}  // namespace corvane
