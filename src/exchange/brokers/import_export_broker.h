// Brokers: what knows the columns of one kind of file, and turns rows into records or records into
// rows. The controllers do everything else.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/brokers/import_export_configuration.h"
#include "platform/async/progress.h"
#include "platform/error.h"

namespace corvane {

/// A broker's own settings as a view beside the list of fields: its state, and what its controls
/// do. The shell knows the classes for which it has widgets. Main queue only.
class AccessoryConfigurationViewController {
 public:
  virtual ~AccessoryConfigurationViewController() = default;

  /// Set by the shell: shows the state again.
  std::function<void()> viewDidUpdate;
};

/// What both kinds of broker offer. A broker has a table of its SchemaFields, in a fixed order, and
/// names them by raw names. Main queue only but for what says otherwise; held by shared pointer.
class ImportOrExportBroker {
 public:
  ImportOrExportBroker() = default;
  ImportOrExportBroker(const ImportOrExportBroker&) = delete;
  ImportOrExportBroker& operator=(const ImportOrExportBroker&) = delete;
  virtual ~ImportOrExportBroker() = default;

  /// The raw names of all fields, in the order of that table.
  [[nodiscard]] virtual std::vector<std::string> allFields() const = 0;
  /// The title of a field in the setup and in the header row.
  [[nodiscard]] virtual std::string fieldTitle(std::string_view field) const = 0;

  /// May be read and written by the job as well.
  [[nodiscard]] virtual ConfigurationPointer configuration() const = 0;
  virtual void setConfiguration(ConfigurationPointer configuration) = 0;

  /// Called on the main queue, later, with the configuration after a change.
  std::function<void(const ConfigurationPointer&)> didChangeConfiguration;

  /// The view with the broker's own settings; null where it has none.
  [[nodiscard]] virtual std::shared_ptr<AccessoryConfigurationViewController>
  accessoryConfigurationViewController() {
    return nullptr;
  }
};

/// The cells of the file that an import reads, for a second look at them. Rows count from the first
/// one that is no header.
class ImportedCells {
 public:
  virtual ~ImportedCells() = default;
  [[nodiscard]] virtual std::size_t rowCount() const = 0;
  /// The line of the file on which a row starts, from 1.
  [[nodiscard]] virtual std::uint32_t line(std::size_t row) const = 0;
  /// The column of a field; none where the file has no such column.
  [[nodiscard]] virtual std::optional<std::size_t> column(std::string_view field) const = 0;
  /// Empty where the row ends before the column.
  [[nodiscard]] virtual std::string_view text(std::size_t row, std::size_t column) const = 0;
  /// None where the file has no column with the field.
  [[nodiscard]] std::optional<std::string_view> cell(std::size_t row,
                                                     std::string_view field) const {
    const auto found = column(field);
    return found ? std::optional(text(row, *found)) : std::nullopt;
  }
  /// What the header calls the field's column; empty without a header.
  [[nodiscard]] virtual std::string columnTitle(std::string_view field) const = 0;
};

/// Turns rows of text into records. All operations below are called by one job, one at a time, off
/// the main queue, while the main queue is pumped. They throw values of type Error.
class ImportBroker : public ImportOrExportBroker {
 public:
  using ColumnsByField = std::map<std::string, std::vector<std::string>, std::less<>>;
  using ValuesByField = std::map<std::string, std::string, std::less<>>;

  /// The fields that want to see their whole column before the first row.
  [[nodiscard]] virtual std::vector<std::string> preflightFields() const = 0;
  /// The cells of those columns of preflightFields() that the file has.
  virtual void preflight(const ColumnsByField& columnsByField) = 0;

  /// Called before the first row with the number of all rows.
  virtual void willImport(std::size_t /*rowCount*/) {}

  /// Takes one row: the texts of the columns that are not ignored.
  virtual void importRow(const ValuesByField& valuesByField) = 0;

  /// Whether review() may do better than to give up.
  [[nodiscard]] virtual bool canReview() const { return false; }
  /// Called before finishImport, after the last row or with what kept the rows from being taken.
  /// The broker may look at the cells once more and take them in another way. Throws what the
  /// import is to end with: the refusal itself where there is no other way.
  virtual void review(const ImportedCells& /*cells*/, const Error* refusal) {
    if (refusal != nullptr) {
      refusal->raise();
    }
  }

  /// Whether rememberLayout() is there.
  [[nodiscard]] virtual bool canRememberLayout() const { return false; }
  /// Keeps what the configuration says of the columns below `heading` as a layout called `name`, by
  /// which such files are understood without a setup. Returns the file that it is in. Main queue.
  virtual std::filesystem::path rememberLayout(const std::string& /*name*/,
                                               const std::vector<std::string>& /*heading*/) {
    return {};
  }

  /// Called after the last row. Long work throws UserCancelledError, with nothing done, soon after
  /// `progress` has been cancelled.
  virtual void finishImport(const Progress& progress) = 0;
};

/// Turns records into rows of text.
class ExportBroker : public ImportOrExportBroker {
 public:
  using Rows = std::vector<std::vector<std::string>>;

  /// The name that the save panel offers, without an extension.
  [[nodiscard]] virtual std::optional<std::string> defaultFilename() const { return std::nullopt; }
  /// What the save panel says about the export.
  [[nodiscard]] virtual std::optional<std::string> titleForSavePanel() const {
    return std::nullopt;
  }

  [[nodiscard]] virtual int exportRowCount() const = 0;

  /// The text of a cell; none for an empty one. Rows count from 0. Called by the job, off the main
  /// queue, and on the main queue for the preview, never both at a time.
  [[nodiscard]] virtual std::optional<std::string> exportValue(int row, std::string_view field) = 0;

  /// Rows before the header row and behind the last row, of any length.
  [[nodiscard]] virtual std::optional<Rows> leadingRows() const { return std::nullopt; }
  [[nodiscard]] virtual std::optional<Rows> trailingRows() const { return std::nullopt; }
};

}  // namespace corvane
