#include "presentation/frame/command_palette.h"

#include <algorithm>
#include <utility>

#include "ledger/portfolio/portfolio_snapshot.h"

namespace corvane {
namespace {

/// What the place of a row is decided by; the greater comes first.
struct PaletteRank {
  bool isEnabled;
  bool isInTitle;
  int score;
  std::ptrdiff_t brevity;

  friend auto operator<=>(const PaletteRank&, const PaletteRank&) = default;
};

std::string equityTitle(const EquityInfo& equity) {
  return equity.name && !equity.name->empty() ? equity.symbol + " — " + *equity.name
                                              : equity.symbol;
}

std::vector<EquityPointer> heldEquities(const WorkspaceModel& model) {
  EquitySet held;
  for (const PortfolioPointer& portfolio : model.portfolios()) {
    if (portfolio->snapshotsByYear.empty()) {
      continue;
    }
    for (const auto& [equity, holding] :
         portfolio->snapshotsByYear.rbegin()->second.equitySnapshots) {
      if (!holding.sharesHeld.isZero()) {
        held.insert(equity);
      }
    }
  }
  std::vector<EquityPointer> sorted(held.begin(), held.end());
  std::ranges::sort(
      sorted, {}, [](const EquityPointer& equity) -> const std::string& { return equity->symbol; });
  return sorted;
}

}  // namespace

void CommandPalette::setEntries(std::vector<CommandPaletteEntry> entries) {
  entries_ = std::move(entries);
  find();
}

void CommandPalette::setQuery(std::string query) {
  query_ = std::move(query);
  find();
}

void CommandPalette::find() {
  struct Found {
    PaletteRank rank;
    Row row;
  };
  const bool hasLetters = matchSubsequence(query_, "") == std::nullopt;
  std::vector<Found> found;
  for (const CommandPaletteEntry& entry : entries_) {
    auto match = matchSubsequence(query_, entry.title);
    const bool isInTitle = match.has_value();
    if (!match) {
      match = matchSubsequence(query_, entry.context + " " + entry.title);
    }
    if (match) {
      found.push_back({{entry.isEnabled, isInTitle, match->score,
                        -static_cast<std::ptrdiff_t>(entry.title.size())},
                       {&entry, isInTitle ? match->places : std::vector<std::size_t>()}});
    }
  }
  if (hasLetters) {
    std::ranges::stable_sort(found, std::greater(), &Found::rank);
  }
  rows_.clear();
  for (Found& each : found) {
    rows_.push_back(std::move(each.row));
  }
  selectedRow_ = rows_.empty() ? std::nullopt : std::optional<std::size_t>(0);
}

void CommandPalette::selectRow(std::size_t row) {
  if (row < rows_.size()) {
    selectedRow_ = row;
  }
}

void CommandPalette::moveSelection(std::ptrdiff_t distance) {
  if (selectedRow_) {
    const auto last = static_cast<std::ptrdiff_t>(rows_.size()) - 1;
    const auto now = static_cast<std::ptrdiff_t>(*selectedRow_);
    selectedRow_ = static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(now + distance, 0, last));
  }
}

std::string CommandPalette::accessibleText(std::size_t row) const {
  const CommandPaletteEntry& entry = *rows_.at(row).entry;
  std::string text = entry.title;
  for (const std::string& part : {entry.shortcut, entry.context}) {
    text += part.empty() ? "" : ", " + part;
  }
  return text + (entry.isOn ? ", on" : "") + (entry.isEnabled ? "" : ", not available now");
}

std::string CommandPalette::status() const {
  if (!selectedRow_) {
    return query_.empty() ? "There is nothing to choose from." : "Nothing fits these letters.";
  }
  return accessibleText(*selectedRow_) + ". " + std::to_string(*selectedRow_ + 1) + " of " +
         std::to_string(rows_.size()) + ".";
}

std::optional<std::function<void()>> CommandPalette::chosen() const {
  if (!selectedRow_ || !rows_[*selectedRow_].entry->isEnabled) {
    return std::nullopt;
  }
  return rows_[*selectedRow_].entry->perform;
}

std::vector<CommandPaletteEntry> paletteEntriesOf(
    const WorkspaceModel& model, const std::function<void(const PortfolioPointer&)>& showPortfolio,
    const std::function<void(const EquityPointer&)>& showEquity) {
  std::vector<CommandPaletteEntry> entries;
  for (const PortfolioPointer& portfolio : model.portfolios()) {
    entries.push_back({.title = portfolio->name,
                       .context = "Portfolio",
                       .perform = [showPortfolio, portfolio] { showPortfolio(portfolio); }});
  }
  EquitySet seen;
  const auto add = [&](const EquityPointer& equity, const char* context) {
    if (seen.insert(equity).second) {
      entries.push_back({.title = equityTitle(*equity),
                         .context = context,
                         .perform = [showEquity, equity] { showEquity(equity); }});
    }
  };
  for (const EquityPointer& equity : model.watchlistEquities) {
    add(equity, "Watched equity");
  }
  for (const EquityPointer& equity : heldEquities(model)) {
    add(equity, "Held equity");
  }
  return entries;
}

}  // namespace corvane
