#include "exchange/imports/import_controller.h"

#include <algorithm>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/imports/import_job.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// `order` with exactly `columns` fields: what is too much goes, and the fields that have no column
/// yet fill up what is too little; columns beyond those are ignored.
std::vector<std::string> fitted(std::vector<std::string> order, std::size_t columns,
                                const std::vector<std::string>& allFields) {
  if (order.size() > columns) {
    order.resize(columns);
  }
  for (const std::string& field : allFields) {
    if (order.size() < columns && std::ranges::find(order, field) == order.end()) {
      order.push_back(field);
    }
  }
  order.resize(columns);
  return order;
}

}  // namespace

std::shared_ptr<ImportController> ImportController::make(std::shared_ptr<ImportBroker> broker) {
  return std::shared_ptr<ImportController>(new ImportController(std::move(broker)));
}

ImportController::ImportController(std::shared_ptr<ImportBroker> broker)
    : ImportExportController(broker), importBroker_(std::move(broker)) {}

void ImportController::beginImport(const WindowPointer& window, Completion completion) {
  window->beginOpenPanel(
      {.title = "Import", .prompt = "Import", .contentTypes = contentTypes()},
      [weak = std::weak_ptr(std::static_pointer_cast<ImportController>(shared_from_this())), window,
       saved = configuration(),
       completion = std::move(completion)](const std::optional<fs::path>& url) mutable {
        const auto self = weak.lock();
        if (self == nullptr) {
          completion(false);
        } else if (!url) {
          self->setConfiguration(std::move(saved));
          completion(false);
        } else {
          self->loadAndSetUp(*url, window, std::move(saved), std::move(completion));
        }
      });
}

void ImportController::loadAndSetUp(const fs::path& url, const WindowPointer& window,
                                    ConfigurationPointer saved, Completion completion) {
  std::shared_ptr<const ImportSource> source;
  try {
    source = loadFile(url);
  } catch (const Error& error) {
    window->presentError(error,
                         [completion = std::move(completion)]() mutable { completion(false); });
    return;
  }
  if (source == nullptr) {
    completion(false);
    return;
  }
  if (importBroker_->canRememberLayout()) {
    rememberLayoutHandler = [broker = importBroker_,
                             heading = source->header().strings()](const std::string& name) {
      return broker->rememberLayout(name, heading);
    };
  }
  presentFieldSetup(
      window, ImportExportWindow::SheetParent::window, static_cast<int>(source->rows().size()) + 1,
      [shown = std::weak_ptr(source)](int row, int column) {
        const auto file = shown.lock();
        return file == nullptr ? std::nullopt : file->cell(row, column);
      },
      [weak = std::weak_ptr(std::static_pointer_cast<ImportController>(shared_from_this())), window,
       source, saved = std::move(saved), completion = std::move(completion)](bool goesOn) mutable {
        const auto self = weak.lock();
        if (self == nullptr) {
          completion(false);
        } else if (!goesOn) {
          self->setConfiguration(std::move(saved));
          completion(false);
        } else {
          self->runImport(std::move(source), window, std::move(completion));
        }
      });
}

std::shared_ptr<const ImportSource> ImportController::loadFile(const fs::path& url) {
  try {
    auto source = std::make_shared<const ImportSource>(url);
    return source->columnCount() == 0 ? nullptr : (fitTo(*source), source);
  } catch (const FileError&) {
    throw;
  } catch (const Error& refusal) {
    if (!importBroker_->canReview()) {
      throw;
    }
    auto source = std::make_shared<const ImportSource>(url, refusal);
    fitTo(*source);
    return source;
  }
}

void ImportController::fitTo(const ImportSource& source) {
  setConfiguration(changed(*configuration(), [&](ImportExportConfiguration& layout) {
    layout.fieldOrder =
        fitted(std::move(layout.fieldOrder), source.columnCount(), importBroker_->allFields());
  }));
  if (source.refusal() == nullptr) {
    const ConfigurationPointer layout = configuration();
    source.requireColumns(layout->includesHeaderRow ? 1 : 0, layout->fieldOrder.size());
  }
}

void ImportController::runImport(std::shared_ptr<const ImportSource> source,
                                 const WindowPointer& window, Completion completion) {
  std::string statusText = "Importing " + source->filename() + "…";
  runWithProgress(
      window, std::move(statusText),
      [source = std::move(source), broker = importBroker_, counted = progress()]() mutable {
        runImportJob(std::move(source), *broker, *counted);
      },
      std::move(completion));
}

}  // namespace corvane
