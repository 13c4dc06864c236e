#include "exchange/exports/export_controller.h"

#include <algorithm>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/brokers/row_text.h"
#include "platform/system/file_manager.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

std::size_t longestRow(const std::optional<ExportBroker::Rows>& rows) {
  std::size_t longest = 0;
  for (const auto& row : rows.value_or(ExportBroker::Rows())) {
    longest = std::max(longest, row.size());
  }
  return longest;
}

/// The text of a file that a broker exports.
class ExportedText {
 public:
  ExportedText(ExportBroker& broker, Progress& progress)
      : broker_(broker),
        progress_(progress),
        configuration_(broker.configuration()),
        leading_(broker.leadingRows()),
        trailing_(broker.trailingRows()),
        width_(std::max(
            {configuration_->fieldOrder.size(), longestRow(leading_), longestRow(trailing_)})) {}

  /// Throws UserCancelledError.
  [[nodiscard]] std::string write() {
    writeRows(leading_);
    if (configuration_->includesHeaderRow) {
      writeHeader();
    }
    const int count = broker_.exportRowCount();
    for (int row = 0; row < count; ++row) {
      if (progress_.isCancelled()) {
        throw UserCancelledError();
      }
      writeValues(row);
      progress_.setCompletedUnitCount(row + 1);
    }
    writeRows(trailing_);
    return std::move(text_);
  }

 private:
  void writeRow(std::vector<std::string> cells) {
    cells.resize(width_);
    text_ += rowText(cells, configuration_->fieldDelimiter);
  }

  void writeRows(const std::optional<ExportBroker::Rows>& rows) {
    for (const auto& row : rows.value_or(ExportBroker::Rows())) {
      writeRow(row);
    }
  }

  void writeHeader() {
    std::vector<std::string> titles;
    for (const std::string& field : configuration_->fieldOrder) {
      titles.push_back(broker_.fieldTitle(field));
    }
    writeRow(std::move(titles));
  }

  void writeValues(int row) {
    std::vector<std::string> cells;
    for (const std::string& field : configuration_->fieldOrder) {
      cells.push_back(broker_.exportValue(row, field).value_or(""));
    }
    writeRow(std::move(cells));
  }

  ExportBroker& broker_;
  Progress& progress_;
  const ConfigurationPointer configuration_;
  const std::optional<ExportBroker::Rows> leading_;
  const std::optional<ExportBroker::Rows> trailing_;
  const std::size_t width_;
  std::string text_;
};

}  // namespace

std::shared_ptr<ExportController> ExportController::make(std::shared_ptr<ExportBroker> broker) {
  return std::shared_ptr<ExportController>(new ExportController(std::move(broker)));
}

ExportController::ExportController(std::shared_ptr<ExportBroker> broker)
    : ImportExportController(broker), exportBroker_(std::move(broker)) {
  progress()->setTotalUnitCount(static_cast<std::int64_t>(exportBroker_->exportRowCount() * 1.1));
}

void ExportController::setConfiguration(ConfigurationPointer configuration) {
  ImportExportController::setConfiguration(configuration);
  if (saveAccessory_ != nullptr) {
    saveAccessory_->setConfiguration(std::move(configuration));
  }
}

void ExportController::beginExport(const WindowPointer& window, Completion completion) {
  if (exportBroker_->exportRowCount() < 1) {
    completion(false);
    return;
  }
  makeSaveAccessory(window);
  window->beginSavePanel(
      {.title = "Export",
       .prompt = "Export",
       .message = exportBroker_->titleForSavePanel().value_or(""),
       .nameField = exportBroker_->defaultFilename().value_or("Untitled"),
       .contentTypes = contentTypes(),
       .accessory = saveAccessory_},
      [weak = std::weak_ptr(std::static_pointer_cast<ExportController>(shared_from_this())), window,
       saved = configuration(),
       completion = std::move(completion)](const std::optional<fs::path>& url) mutable {
        const auto self = weak.lock();
        if (self == nullptr) {
          completion(false);
          return;
        }
        self->saveAccessory_ = nullptr;
        if (!url) {
          self->setConfiguration(std::move(saved));
          completion(false);
          return;
        }
        self->runWithProgress(window, "Exporting " + url->filename().string() + "…",
                              self->exportJob(*url), std::move(completion));
      });
}

void ExportController::makeSaveAccessory(const WindowPointer& window) {
  saveAccessory_ = std::make_shared<ExportSaveAccessoryViewController>(configuration());
  const auto weak = std::weak_ptr(std::static_pointer_cast<ExportController>(shared_from_this()));
  saveAccessory_->configurationChangedHandler = [weak, window](const ConfigurationPointer& made) {
    const auto self = weak.lock();
    if (self != nullptr && !(*made == *self->configuration())) {
      self->setConfiguration(withLayout(*self->configuration(), *made));
      window->setSavePanelContentTypes(self->contentTypes());
    }
  };
  saveAccessory_->configureFieldsHandler = [weak, window] {
    if (const auto self = weak.lock()) {
      self->configureFields(window);
    }
  };
}

void ExportController::configureFields(const WindowPointer& window) {
  const auto weak = std::weak_ptr(std::static_pointer_cast<ExportController>(shared_from_this()));
  presentFieldSetup(
      window, ImportExportWindow::SheetParent::savePanel, exportBroker_->exportRowCount(),
      [broker = exportBroker_](int row, int column) -> std::optional<std::string> {
        const auto configuration = broker->configuration();
        const auto& order = configuration->fieldOrder;
        const auto index = static_cast<std::size_t>(column);
        return index < order.size() ? broker->exportValue(row, order[index]) : std::nullopt;
      },
      [weak, held = configuration()](bool goesOn) {
        const auto self = weak.lock();
        if (self != nullptr && !goesOn) {
          self->setConfiguration(held);
        }
      });
}

ImportExportController::Job ExportController::exportJob(const fs::path& url) {
  return [broker = exportBroker_, counted = progress(), url] {
    counted->setCompletedUnitCount(0);
    files::writeAtomically(url, ExportedText(*broker, *counted).write());
    counted->setCompletedUnitCount(counted->totalUnitCount());
  };
}

}  // namespace corvane
