// What the market knows of the equities that a statement names by ISIN or name.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "exchange/reading/statement_options.h"
#include "exchange/reading/statement_rows.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// One equity that may be meant.
struct SymbolFind {
  std::string symbol;
  std::string name;      ///< may be empty
  std::string exchange;  ///< may be empty
  std::string currency;  ///< its code; empty where it is not known

  /// "VWCE.DE, Vanguard FTSE All-World, Xetra, EUR"
  [[nodiscard]] std::string description() const;
  friend bool operator==(const SymbolFind&, const SymbolFind&) = default;
};

/// Up to five finds for each subject of a question, those in the row's currency first.
using SymbolFinds = std::map<std::string, std::vector<SymbolFind>, std::less<>>;

/// Searches for the equities that `questions` ask for: by the ISIN, and where that finds nothing
/// by the name. A search that fails finds nothing. `completion` runs once, later, on the main
/// queue. Main queue only.
void searchSymbols(const std::shared_ptr<QuoteProvider>& provider,
                   const std::vector<RowQuestion>& questions,
                   std::move_only_function<void(SymbolFinds)> completion);

/// Questions whether the symbols of new rows are those of the market, for equities that
/// `portfolio` does not have yet and the user has not named: a broker's "XEQT" has its prices under
/// "XEQT.TO".
[[nodiscard]] std::vector<RowQuestion> doubtfulSymbols(const StatementRows& rows,
                                                       const StatementOptions& options,
                                                       Portfolio& portfolio);
/// The symbol of the market that is meant by a doubtful one: none where the market knows it in the
/// row's currency as it is, or has nothing like it.
[[nodiscard]] std::optional<std::string> likelySymbol(const RowQuestion& question,
                                                      const std::vector<SymbolFind>& finds);

/// The questions for symbols in `rows`, each subject once.
[[nodiscard]] std::vector<RowQuestion> symbolQuestions(const StatementRows& rows);

}  // namespace corvane
