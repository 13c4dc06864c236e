#include "exchange/imports/import_job.h"

#include <algorithm>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/strict/closed_quotes.h"

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

void requireNotCancelled(const Progress& progress) {
  if (progress.isCancelled()) {
    throw UserCancelledError();
  }
}

}  // namespace

ImportSource::ImportSource(const std::filesystem::path& file)
    : filename_(file.filename()), csv_(file) {
  requireClosedQuotes(csv_.text(), csv_.content().unclosedQuote());
}

std::optional<std::string> ImportSource::cell(int row, int column) const {
  const auto index = static_cast<std::size_t>(row);
  if (row < 0 || column < 0 || index > rows().size()) {
    return std::nullopt;
  }
  const CSVRow cells = row == 0 ? csv_.header() : rows().row(index - 1);
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

void runImportJob(const ImportSource& source, ImportBroker& broker, Progress& progress) {
  const ConfigurationPointer configuration = broker.configuration();
  const auto& order = configuration->fieldOrder;
  const auto rowCount = static_cast<std::int64_t>(source.rows().size());
  const auto tenth = static_cast<std::int64_t>(static_cast<double>(rowCount) * 0.1);
  progress.setTotalUnitCount(rowCount + tenth);
  progress.setCompletedUnitCount(0);
  requireNotCancelled(progress);
  std::int64_t completed = 0;
  if (const auto preflightFields = broker.preflightFields(); !preflightFields.empty()) {
    progress.setTotalUnitCount(rowCount + 2 * tenth);
    broker.preflight(preflightColumns(source, preflightFields, order));
    completed += tenth;
    progress.setCompletedUnitCount(completed);
  }

  const std::size_t first = configuration->includesHeaderRow ? 1 : 0;
  source.forEachRow(first, [&](std::size_t number, const CSVRow& row) {
    requireNotCancelled(progress);
    ImportBroker::ValuesByField values;
    for (std::size_t column = 0; column < row.size(); ++column) {
      if (!order[column].empty()) {
        values.emplace(order[column], row[column]);
      }
    }
    try {
      broker.importRow(values);
    } catch (const Error& error) {
      throw ImportExportError(
          ImportExportError::BrokerImportError{error.copy(), static_cast<int>(number)});
    }
    ++completed;
    progress.setCompletedUnitCount(completed);
  });

  broker.setConfiguration(changed(*configuration, [&](ImportExportConfiguration& layout) {
    layout.fieldDelimiter = source.isTabDelimited() ? ImportExportFieldDelimiter::tab
                                                    : ImportExportFieldDelimiter::comma;
  }));
  requireNotCancelled(progress);
  broker.finishImport(progress);
  progress.setCompletedUnitCount(progress.totalUnitCount());
}

}  // namespace corvane
