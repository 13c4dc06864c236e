#include "exchange/panels/import_export_controller.h"

#include <algorithm>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace {

using Setup = ImportExportFieldSetupViewController;

Setup::Mode setupMode(ImportOrExportBroker* broker) {
  if (dynamic_cast<ExportBroker*>(broker) != nullptr) {
    return Setup::Mode::exporting;
  }
  if (dynamic_cast<ImportBroker*>(broker) != nullptr) {
    return Setup::Mode::importing;
  }
  throw ImportExportError(ImportExportError::InternalMisconfiguration());
}

std::map<std::string, std::string> titlesOf(const ImportOrExportBroker& broker) {
  std::map<std::string, std::string> titles;
  for (const std::string& field : broker.allFields()) {
    titles.emplace(field, broker.fieldTitle(field));
  }
  return titles;
}

/// Runs `job`; the error that it ended with, or null.
ErrorPointer failureOf(ImportExportController::Job& job) {
  try {
    job();
    return nullptr;
  } catch (const Error& error) {
    return error.copy();
  }
}

bool isUserCancelled(const Error& error) {
  return dynamic_cast<const UserCancelledError*>(&error) != nullptr;
}

}  // namespace

ImportExportController::ImportExportController(std::shared_ptr<ImportOrExportBroker> broker)
    : broker_(std::move(broker)) {
  const auto fields = broker_->allFields();
  const bool mayIgnore = dynamic_cast<ImportBroker*>(broker_.get()) != nullptr;
  broker_->setConfiguration(
      changed(*broker_->configuration(), [&](ImportExportConfiguration& configuration) {
        auto& order = configuration.fieldOrder;
        std::erase_if(order, [&](const std::string& field) {
          return std::ranges::find(fields, field) == fields.end() && !(mayIgnore && field.empty());
        });
        if (order.empty()) {
          order = fields;
        }
      }));
}

void ImportExportController::setConfiguration(ConfigurationPointer configuration) {
  broker_->setConfiguration(std::move(configuration));
}

std::vector<ImportExportWindow::ContentType> ImportExportController::contentTypes() const {
  using enum ImportExportWindow::ContentType;
  if (configuration()->fieldDelimiter == ImportExportFieldDelimiter::tab) {
    return {tabSeparatedText, commaSeparatedText, plainText};
  }
  return {commaSeparatedText, tabSeparatedText, plainText};
}

void ImportExportController::presentFieldSetup(const WindowPointer& window,
                                               ImportExportWindow::SheetParent parent,
                                               int totalRows,
                                               Setup::SampleStringValueProvider sampleProvider,
                                               Completion completion) {
  const Setup::Mode mode = setupMode(broker_.get());
  auto setup = std::make_shared<Setup>();
  setup->prepare(mode, broker_->allFields(), titlesOf(*broker_), totalRows,
                 std::move(sampleProvider), configuration());
  setup->configurationChangedHandler = [weak = weak_from_this()](const ConfigurationPointer& made) {
    if (const auto self = weak.lock()) {
      // The broker's own settings are the accessory's to change.
      self->setConfiguration(withLayout(*self->configuration(), *made));
    }
  };
  broker_->didChangeConfiguration = [weak = std::weak_ptr(setup)](const ConfigurationPointer& now) {
    if (const auto shown = weak.lock()) {
      shown->setConfiguration(now);
    }
  };
  setup->rememberLayoutHandler = rememberLayoutHandler;
  setup->accessoryViewController = broker_->accessoryConfigurationViewController();
  setup->completionHandler = [broker = broker_, window,
                              completion = std::move(completion)](bool goesOn) mutable {
    broker->didChangeConfiguration = nullptr;
    window->endFieldSetup();
    completion(goesOn);
  };
  window->beginFieldSetup(setup, parent);
}

void ImportExportController::runWithProgress(const WindowPointer& window, std::string statusText,
                                             Job job, Completion completion) {
  auto sheet = std::make_shared<ImportExportProgressViewController>();
  sheet->statusLabel.text = std::move(statusText);
  sheet->cancelHandler = [progress = progress_] { progress->cancel(); };
  sheet->observe(progress_);
  window->beginProgress(sheet);

  auto end = [window, completion = std::move(completion)](const ErrorPointer& failure) mutable {
    window->endProgress();
    if (failure != nullptr && !isUserCancelled(*failure)) {
      window->presentError(*failure, [] {});
    }
    completion(failure == nullptr);
  };
  auto run = [job = std::move(job), end = std::move(end)]() mutable {
    ErrorPointer failure = failureOf(job);
    // The job goes along, so that what it holds is let go of where it was made.
    DispatchQueue::main()->async([job = std::move(job), end = std::move(end),
                                  failure = std::move(failure)]() mutable { end(failure); });
  };
  // By way of the main queue: changes of the configuration that still wait there are applied before
  // the job uses what they change.
  DispatchQueue::main()->async([run = std::move(run)]() mutable {
    DispatchQueue::global(QualityOfService::userInitiated)->async(std::move(run));
  });
}

}  // namespace corvane
