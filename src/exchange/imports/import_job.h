// A file that is to be imported, and the work of importing it.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "exchange/brokers/import_export_broker.h"
#include "exchange/csv/csv.h"
#include "platform/async/progress.h"

namespace corvane {

/// A delimited text file that has been read: its rows, not its text. Any thread, one at a time.
class ImportSource {
 public:
  /// Throws FileError, TextEncodingError, CSVParseError. A quote that is never closed is an error
  /// where it swallows rows, though the reader of delimited text takes it.
  explicit ImportSource(const std::filesystem::path& file);

  /// Reads a file that the rules refuse with `refusal`, as far as it can be done without a guess
  /// that nobody sees: in the encoding that its bytes tell, and with rows that are too short or
  /// whose last cells are empty. Throws where that does not help either.
  ImportSource(const std::filesystem::path& file, const Error& refusal);

  /// Why the rules refuse the file; null where they do not.
  [[nodiscard]] const Error* refusal() const { return refusal_.get(); }

  /// The last component of the path.
  [[nodiscard]] const std::string& filename() const { return filename_; }
  [[nodiscard]] std::size_t columnCount() const { return header().size(); }
  /// The first line.
  [[nodiscard]] CSVRow header() const { return header_.empty() ? CSVRow() : header_[0]; }
  /// The rows after the first line.
  [[nodiscard]] const CSVTable& rows() const { return rows_; }
  [[nodiscard]] bool isTabDelimited() const { return isTabDelimited_; }

  /// The text of a cell; the first line is row 0.
  [[nodiscard]] std::optional<std::string> cell(int row, int column) const;

  /// Throws ImportExportError::InconsistentColumnLayout for the first row from `startAt` on that
  /// has not `columns` cells. The first line is row 0.
  void requireColumns(std::size_t startAt, std::size_t columns) const;

  /// The cells of one column, without the first line.
  [[nodiscard]] std::vector<std::string> column(std::size_t index) const;

  /// Calls `take` with the number of each row from `startAt` on, and the row.
  template <typename Take>
  void forEachRow(std::size_t startAt, Take take) const {
    if (startAt == 0) {
      take(std::size_t{0}, header());
    }
    for (std::size_t index = 0; index < rows().size(); ++index) {
      take(index + 1, rows().row(index));
    }
  }

 private:
  ImportSource(const std::filesystem::path& file, CSV<Enumerated> csv);

  std::string filename_;
  ErrorPointer refusal_;
  CSVTable header_;
  CSVTable rows_;
  bool isTabDelimited_;
};

/// Hands the rows of `source` to `broker` and counts them in `progress`, which it looks at before
/// every row. Lets go of the source before the broker records what it has understood. Off the main
/// queue. Throws UserCancelledError, ImportExportError, and what the broker throws at its end.
void runImportJob(std::shared_ptr<const ImportSource> source, ImportBroker& broker,
                  Progress& progress);

}  // namespace corvane
