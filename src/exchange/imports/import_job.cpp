#include "exchange/imports/import_job.h"

#include <algorithm>
#include <map>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/closed_quotes.h"
#include "exchange/strict/statement_text.h"

namespace corvane {
namespace {

ImportBroker::ColumnsByField preflightColumns(const ImportSource& source,
                                              const std::vector<std::string>& preflightFields,
                                              const std::vector<std::string>& order) {
  ImportBroker::ColumnsByField columns;
  for (const std::string& field : preflightFields) {
    const auto position = std::ranges::find(order, field);
    if (position != order.end()) {
      columns.emplace(field, source.column(static_cast<std::size_t>(position - order.begin())));
    }
  }
  return columns;
}

/// Whoever shows the progress is woken so many times at most.
constexpr std::int64_t mostUpdates = 500;

/// The text of a file of whatever encoding.
CSV<Enumerated> readableText(const std::filesystem::path& file) {
  StatementText text = readStatementText(file);
  CSVDelimiter delimiter = CSVDelimiter::guessed(text.text);
  return {std::move(text.text), std::move(delimiter)};
}

/// The cells of a source under the names of their fields.
class SourceCells final : public ImportedCells {
 public:
  SourceCells(const ImportSource& source, const ImportExportConfiguration& layout)
      : source_(source), hasHeader_(layout.includesHeaderRow) {
    for (std::size_t column = 0; column < layout.fieldOrder.size(); ++column) {
      if (!layout.fieldOrder[column].empty()) {
        columns_.emplace(layout.fieldOrder[column], column);
      }
    }
  }

  [[nodiscard]] std::size_t rowCount() const override {
    return source_.rows().size() + (hasHeader_ ? 0 : 1);
  }
  [[nodiscard]] std::uint32_t line(std::size_t row) const override { return cellsOf(row).line(); }
  [[nodiscard]] std::optional<std::size_t> column(std::string_view field) const override {
    const auto found = columns_.find(field);
    return found == columns_.end() ? std::nullopt : std::optional(found->second);
  }
  [[nodiscard]] std::string_view text(std::size_t row, std::size_t column) const override {
    const CSVRow cells = cellsOf(row);
    return column < cells.size() ? cells[column] : std::string_view();
  }
  [[nodiscard]] std::string columnTitle(std::string_view field) const override {
    const auto column = columns_.find(field);
    if (!hasHeader_ || column == columns_.end() || column->second >= source_.header().size()) {
      return "";
    }
    return std::string(trimmedCell(source_.header()[column->second]));
  }

 private:
  [[nodiscard]] CSVRow cellsOf(std::size_t row) const {
    if (!hasHeader_ && row == 0) {
      return source_.header();
    }
    return source_.rows().row(hasHeader_ ? row : row - 1);
  }

  const ImportSource& source_;
  bool hasHeader_;
  std::map<std::string, std::size_t, std::less<>> columns_;
};

void requireNotCancelled(const Progress& progress) {
  if (progress.isCancelled()) {
    throw UserCancelledError();
  }
}

}  // namespace

ImportSource::ImportSource(const std::filesystem::path& file, CSV<Enumerated> csv)
    : filename_(file.filename()), isTabDelimited_(csv.delimiter() == CSVDelimiter::tab()) {
  requireClosedQuotes(csv.text(), csv.content().unclosedQuote());
  if (!csv.header().empty()) {
    header_.append(csv.header());
  }
  rows_ = std::move(csv).takeContent().takeRows();
}

ImportSource::ImportSource(const std::filesystem::path& file)
    : ImportSource(file, CSV<Enumerated>(file)) {}

ImportSource::ImportSource(const std::filesystem::path& file, const Error& refusal)
    : ImportSource(file, readableText(file)) {
  for (const CSVRow& row : rows()) {
    for (std::size_t column = columnCount(); column < row.size(); ++column) {
      if (!trimmedCell(row[column]).empty()) {
        refusal.raise();
      }
    }
  }
  refusal_ = refusal.copy();
}

std::optional<std::string> ImportSource::cell(int row, int column) const {
  const auto index = static_cast<std::size_t>(row);
  if (row < 0 || column < 0 || index > rows().size()) {
    return std::nullopt;
  }
  const CSVRow cells = row == 0 ? header() : rows().row(index - 1);
  const auto position = static_cast<std::size_t>(column);
  return position < cells.size() ? std::optional(std::string(cells[position])) : std::nullopt;
}

void ImportSource::requireColumns(std::size_t startAt, std::size_t columns) const {
  forEachRow(startAt, [&](std::size_t number, const CSVRow& row) {
    if (row.size() != columns) {
      throw ImportExportError(ImportExportError::InconsistentColumnLayout{
          static_cast<int>(number), static_cast<int>(row.size()), static_cast<int>(columns)});
    }
  });
}

std::vector<std::string> ImportSource::column(std::size_t index) const {
  std::vector<std::string> cells;
  cells.reserve(rows().size());
  for (const std::string_view cell : CSVColumn(rows(), index)) {
    cells.emplace_back(cell);
  }
  return cells;
}

namespace {

/// Hands all rows to `broker`; what has kept them from being taken, null for nothing.
ErrorPointer takeRows(const ImportSource& source, const ImportExportConfiguration& configuration,
                      ImportBroker& broker, Progress& progress, std::int64_t completed) {
  if (source.refusal() != nullptr) {
    return source.refusal()->copy();
  }
  // One map for all rows: its texts keep their room from one row to the next.
  ImportBroker::ValuesByField values;
  std::vector<std::string*> places;
  for (const std::string& field : configuration.fieldOrder) {
    const auto [entry, isNew] = values.try_emplace(field);
    places.push_back(isNew && !field.empty() ? &entry->second : nullptr);
  }
  values.erase("");
  const std::int64_t rowsPerUpdate =
      1 + static_cast<std::int64_t>(source.rows().size()) / mostUpdates;
  std::size_t current = 0;
  try {
    source.forEachRow(configuration.includesHeaderRow ? 1 : 0,
                      [&](std::size_t number, const CSVRow& row) {
                        requireNotCancelled(progress);
                        current = number;
                        for (std::size_t column = 0; column < row.size(); ++column) {
                          if (places[column] != nullptr) {
                            places[column]->assign(row[column]);
                          }
                        }
                        broker.importRow(values);
                        ++completed;
                        if (completed % rowsPerUpdate == 0) {
                          progress.setCompletedUnitCount(completed);
                        }
                      });
    progress.setCompletedUnitCount(completed);
  } catch (const UserCancelledError&) {
    throw;
  } catch (const Error& error) {
    return ImportExportError(
               ImportExportError::BrokerImportError{error.copy(), static_cast<int>(current)})
        .copy();
  }
  return nullptr;
}

}  // namespace

void runImportJob(std::shared_ptr<const ImportSource> source, ImportBroker& broker,
                  Progress& progress) {
  const ConfigurationPointer configuration = broker.configuration();
  const auto& order = configuration->fieldOrder;
  const auto rowCount = static_cast<std::int64_t>(source->rows().size());
  const auto tenth = static_cast<std::int64_t>(static_cast<double>(rowCount) * 0.1);
  progress.setTotalUnitCount(rowCount + tenth);
  progress.setCompletedUnitCount(0);
  requireNotCancelled(progress);
  std::int64_t completed = 0;
  if (const auto preflightFields = broker.preflightFields(); !preflightFields.empty()) {
    progress.setTotalUnitCount(rowCount + 2 * tenth);
    broker.preflight(preflightColumns(*source, preflightFields, order));
    completed += tenth;
    progress.setCompletedUnitCount(completed);
  }

  const SourceCells cells(*source, *configuration);
  broker.willImport(cells.rowCount());
  const ErrorPointer refusal = takeRows(*source, *configuration, broker, progress, completed);

  broker.setConfiguration(changed(*configuration, [&](ImportExportConfiguration& layout) {
    layout.fieldDelimiter = source->isTabDelimited() ? ImportExportFieldDelimiter::tab
                                                     : ImportExportFieldDelimiter::comma;
  }));
  requireNotCancelled(progress);
  broker.review(cells, refusal.get());
  source.reset();
  broker.finishImport(progress);
  progress.setCompletedUnitCount(progress.totalUnitCount());
}

}  // namespace corvane
