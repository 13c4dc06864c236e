// What the commands for reports have in common: figures as text, and tables as text or as CSV.
#pragma once

#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "cli/console/command_line.h"
#include "cli/console/console.h"
#include "cli/console/listing.h"
#include "cli/console/workspace_file.h"
#include "core/money/currency_amount.h"
#include "ledger/transaction/transaction_effect.h"

namespace corvane::cli {

/// What stands where there is no number.
inline constexpr std::string_view noFigure = "—";

/// `amount` rounded to the currency's minor units and with all of their digits, without grouping.
[[nodiscard]] std::string moneyText(const Decimal& amount, const Currency& currency);

/// 0.1234 as "12.34 %".
[[nodiscard]] std::string percentText(const std::optional<double>& value);

/// A listing in which a cell without a figure has a dash for eyes and nothing for programs.
class ReportTable {
 public:
  explicit ReportTable(std::vector<Listing::Field> fields) : fields_(std::move(fields)) {}

  /// A cell for each field.
  void add(std::vector<std::string> cells) { rows_.push_back({std::move(cells), false}); }
  /// A line that adds up others, for eyes alone.
  void addTotal(std::vector<std::string> cells) { rows_.push_back({std::move(cells), true}); }
  [[nodiscard]] bool isEmpty() const { return rows_.empty(); }

  void write(ListingFormat format, std::ostream& out) const;

 private:
  struct Row {
    std::vector<std::string> cells;
    bool isTotal;
  };
  std::vector<Listing::Field> fields_;
  std::vector<Row> rows_;
};

/// The portfolios that --portfolio names, or all of the workspace; their rows are read. Throws
/// UsageError where --all is there as well.
[[nodiscard]] std::vector<PortfolioPointer> portfoliosOf(const CommandLine& line,
                                                         const WorkspaceFile& workspace);

/// All equities that the ledgers of `portfolios` name.
[[nodiscard]] std::vector<EquityPointer> equitiesOf(
    const std::vector<PortfolioPointer>& portfolios);

/// The one of `equities` with this symbol. Throws UsageError where there is none.
[[nodiscard]] EquityPointer equityNamed(const std::string& symbol,
                                        const std::vector<EquityPointer>& equities);

/// The primary currency that most of `portfolios` have.
[[nodiscard]] Currency commonCurrency(const std::vector<PortfolioPointer>& portfolios);

/// Fetches the latest prices of all that the portfolios hold, and the rates that go with them.
void refreshHoldings(const PortfolioManager& manager, QuoteProvider& provider,
                     const Console& console);

}  // namespace corvane::cli
