// Somebody who edits a workspace at random and saves it now and then: the same seed on the same
// file does the same again.
#pragma once

#include <filesystem>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "ledger/random_edits.h"
#include "storage/stored_ledger.h"
#include "storage/workspace/workspace_document.h"

namespace corvane::testing {

/// A short text that tells apart all that the files keep of the portfolios of `manager`.
inline std::string digest(const PortfolioManager& manager) {
  std::ostringstream text;
  for (const auto& portfolio : manager.portfolios()) {
    StoredState state = StoredState::of(portfolio);
    // The balances of a year have no order.
    std::set<std::string> balances;
    for (const auto& [year, snapshot] : std::exchange(state.years, {})) {
      const auto add = [&, year = year](const auto&... figures) {
        std::ostringstream balance;
        ((balance << year) << ... << figures);
        balances.insert(balance.str());
      };
      for (const auto& [currency, cash] : snapshot.currencySnapshots) {
        add(" ", currency, " ", cash.cashOnHand, " ", cash.netCashDeposited, "\n");
      }
      for (const auto& [equity, held] : snapshot.equitySnapshots) {
        add(" ", equity->id(), " ", held.sharesHeld, " ", held.costBase, " ",
            held.cumulativeCapitalGain, "\n");
      }
    }
    text << state << "\n";
    for (const std::string& balance : balances) {
      text << balance;
    }
  }
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : text.str()) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  }
  return std::to_string(hash);
}

/// The surroundings of a workspace whose working directory is made in `temporaryDirectory`.
inline WorkspaceSurroundings quietSurroundings(const std::filesystem::path& temporaryDirectory) {
  return {
      .sharedQuoteProvider = [provider = std::make_shared<QuoteProvider>()] { return provider; },
      .appBundleVersion = "100",
      .appMarketingVersion = "1.0",
      .temporaryDirectory = temporaryDirectory};
}

class EditingSession {
 public:
  EditingSession(const std::filesystem::path& package,
                 const std::filesystem::path& temporaryDirectory, std::uint64_t seed)
      : package_(package),
        document_(std::make_shared<WorkspaceDocument>(quietSurroundings(temporaryDirectory))) {
    document_->open(package);
    const auto& manager = document_->model()->portfolioManagers.front();
    // An edit may undo what the ledger then needs.
    manager->presentError = [](const Error&) {};
    edits_.emplace(seed, manager, manager->portfolios().front());
  }

  /// Tries one edit and returns the digest of what there is then.
  std::string edit() {
    try {
      edits_->perform(edits_->next(), document_->undoManager());
    } catch (const PortfolioManagerError&) {
      // Refused: nothing has changed.
    }
    return currentDigest();
  }

  /// Saves the document. Its watchlist is the digest, so that the two files of a package tell
  /// whether they belong together.
  void save() {
    const auto& manager = document_->model()->portfolioManagers.front();
    document_->model()->watchlistEquities = {manager->quoteProvider->equityWithId(currentDigest())};
    document_->save(package_);
  }

  [[nodiscard]] std::string currentDigest() const {
    return digest(*document_->model()->portfolioManagers.front());
  }
  /// Whether this is a time to save, which the seed decides.
  bool wantsToSave() { return edits_->chance(6); }

 private:
  const std::filesystem::path package_;
  const std::shared_ptr<WorkspaceDocument> document_;
  std::optional<RandomEdits> edits_;
};

}  // namespace corvane::testing
