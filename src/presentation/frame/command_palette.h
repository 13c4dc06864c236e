// One box from which everything can be reached by a few letters.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/market/equity_info.h"
#include "ledger/portfolio/portfolio.h"
#include "presentation/frame/subsequence_match.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Something that a CommandPalette finds.
struct CommandPaletteEntry {
  std::string title;
  std::string context;  ///< what it is, or the menu in which it stands; "File › Open Recent"
  std::string shortcut = "";
  bool isEnabled = true;  ///< false for a command that cannot be given at the moment
  bool isOn = false;      ///< for a command that is switched on and off
  std::function<void()> perform = [] {};
};

/// Commands, portfolios and equities, of which a query leaves those that fit, best first. A plain
/// object that a window shows. Main queue only.
class CommandPalette {
 public:
  struct Row {
    const CommandPaletteEntry* entry;  ///< lives until setEntries()
    /// The characters of the title that were found, as in SubsequenceMatch; none where the letters
    /// were found in the context and the title together.
    std::vector<std::size_t> foundInTitle;
  };

  /// With no query all entries are shown, in this order.
  void setEntries(std::vector<CommandPaletteEntry> entries);
  /// What the user has typed. The first row is selected.
  void setQuery(std::string query);

  /// What can be done now comes before what cannot; a title that fits comes before one that fits
  /// only together with its context; of two that fit equally, the shorter one is first.
  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
  [[nodiscard]] std::optional<std::size_t> selectedRow() const { return selectedRow_; }
  void selectRow(std::size_t row);
  /// Moves the selection by `distance` rows, as far as there are some.
  void moveSelection(std::ptrdiff_t distance);

  /// What a screen reader says of the row: title, shortcut, context, and whether it is to be had.
  [[nodiscard]] std::string accessibleText(std::size_t row) const;
  /// How many there are and which one is selected, in a sentence; what is wrong where there are
  /// none.
  [[nodiscard]] std::string status() const;

  /// What Return does with the selected row: hands out what it performs. None where nothing is
  /// selected or it cannot be done at the moment.
  [[nodiscard]] std::optional<std::function<void()>> chosen() const;

 private:
  void find();

  std::vector<CommandPaletteEntry> entries_;
  std::string query_;
  std::vector<Row> rows_;
  std::optional<std::size_t> selectedRow_;
};

/// The portfolios of `model`, the equities that it watches, and those that its portfolios hold and
/// that it does not watch. An equity is found by its symbol and by its name.
[[nodiscard]] std::vector<CommandPaletteEntry> paletteEntriesOf(
    const WorkspaceModel& model, const std::function<void(const PortfolioPointer&)>& showPortfolio,
    const std::function<void(const EquityPointer&)>& showEquity);

}  // namespace corvane
