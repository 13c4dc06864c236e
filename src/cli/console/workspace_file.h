// A workspace that a command works on.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "cli/console/console.h"
#include "ledger/portfolio/portfolio.h"
#include "storage/workspace/workspace_document.h"

namespace corvane::cli {

/// A document without a window. Only save() changes the file. Errors are those of the document.
/// What killed programs have left is cleared away first; where they left unsaved work, a line on
/// the standard error says how it is recovered. So does one where the days of the workspace are
/// doubtful in the user's time zone. Of a large workspace a bar on the terminal shows how far its
/// rows have been read, checked and saved.
class WorkspaceFile {
 public:
  /// Opens the workspace at `path`, or makes a new one where `isNew`. A name without the extension
  /// of workspaces gets it, unless something of that name is there.
  WorkspaceFile(const std::string& path, const Console& console, bool isNew = false)
      : WorkspaceFile(path, console, makeOfflineProvider(), isNew) {}
  /// The same with a provider that has prices.
  WorkspaceFile(const std::string& path, const Console& console,
                std::shared_ptr<QuoteProvider> provider, bool isNew = false);

  WorkspaceFile(const WorkspaceFile&) = delete;
  WorkspaceFile& operator=(const WorkspaceFile&) = delete;

  [[nodiscard]] static bool exists(const std::string& path);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] const std::shared_ptr<WorkspaceDocument>& document() const { return document_; }
  [[nodiscard]] const std::shared_ptr<PortfolioManager>& manager() const {
    return document_->model()->portfolioManagers.front();
  }

  /// The portfolio called `name`, with its rows read. Throws WorkspaceFileError.
  [[nodiscard]] PortfolioPointer portfolio(const std::string& name) const;
  [[nodiscard]] bool hasPortfolio(const std::string& name) const;

  /// To be called before the workspace is changed: throws WorkspaceFileError where its database or
  /// one of its ledgers is damaged, since a save would put that into the place of the file.
  void requireSound() const;

  /// To be called before a statement is imported or taken back: throws a DoubtfulDatesError that
  /// says `text` where the days of the rows are perhaps others than were recorded.
  void requireSureDates(std::string_view text) const;

  /// Throws Failed, and saves nothing, where the user has interrupted the program.
  void save();

 private:
  [[nodiscard]] bool isLarge() const;
  /// What shows a bar called `text` while it is told fractions below 1.
  [[nodiscard]] std::function<void(double)> barOf(const std::string& text) const;

  const Console& console_;
  std::filesystem::path path_;
  std::shared_ptr<DocumentShell> shell_;
  std::shared_ptr<WorkspaceDocumentModelHaving> window_;
  std::shared_ptr<WorkspaceDocument> document_;
};

/// What a command asks for is not in the workspace, or more than once.
class WorkspaceFileError : public ErrorValue<WorkspaceFileError> {
 public:
  WorkspaceFileError(std::string text, std::optional<std::string> suggestion)
      : text_(std::move(text)), suggestion_(std::move(suggestion)) {}
  [[nodiscard]] std::optional<std::string> description() const override { return text_; }
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override {
    return suggestion_;
  }
  [[nodiscard]] bool hasSameValues(const WorkspaceFileError& other) const {
    return text_ == other.text_ && suggestion_ == other.suggestion_;
  }

 private:
  std::string text_;
  std::optional<std::string> suggestion_;
};

/// The folder for what goes with a command. Warns where it is not the one that the user has named.
[[nodiscard]] std::filesystem::path temporaryDirectory(const Console& console);

/// Reads the rows of a stored portfolio. Throws what has kept them from being read.
void requireRows(const PortfolioPointer& portfolio);

/// The row of `portfolio` that `ledger` shows with the number that `text` is. Throws UsageError for
/// a text that is no number, and WorkspaceFileError for one that no row has.
[[nodiscard]] TransactionPointer rowNumbered(const std::string& text,
                                             const PortfolioPointer& portfolio);

}  // namespace corvane::cli
