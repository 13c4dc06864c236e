// The guard of imports: where the forgiving rules and the cells themselves come to two results.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "exchange/imports/strict_import.h"
#include "exchange/panels/import_export_window.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// Asked on the thread of the job, which waits for the answer.
using ReviewHandler = std::function<ReadingAnswer(const ReadingQuestion& question)>;

/// The handler that asks the user in `window`, which lives on the main queue.
[[nodiscard]] ReviewHandler reviewIn(std::shared_ptr<ImportExportWindow> window);

/// The first cell whose meaning differs from what `standard`, one transaction for each row of
/// `cells`, would record, as a sentence with its line; none where there is none. Looks at days,
/// shares, amounts and currencies. `file` is the strict reading of the same cells.
[[nodiscard]] std::optional<std::string> firstDifference(
    const ImportedCells& cells, const std::vector<BasicTransaction>& standard,
    const StrictImport& file, const Calendar& calendar);

/// Two texts of the symbol column that begin with one word and mean two equities, as a sentence
/// with the line of the second; none where there are none.
[[nodiscard]] std::optional<std::string> firstSharedSymbol(
    const ImportedCells& cells, const std::vector<BasicTransaction>& standard);

/// The first few of `rows`, in the order of the file, as lines for a question.
[[nodiscard]] std::vector<std::string> readingLines(const std::vector<BasicTransaction>& rows,
                                                    std::size_t from, const Calendar& calendar);

/// Whether the ledger of `portfolio` would take `rows`: they are recorded in a copy of it.
[[nodiscard]] bool wouldBeTaken(const std::vector<BasicTransaction>& rows, Portfolio& portfolio);

}  // namespace corvane
