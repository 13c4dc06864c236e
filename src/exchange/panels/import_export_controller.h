// What an import and an export have in common: the broker, the field setup, and the job behind its
// progress sheet.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "exchange/brokers/import_export_broker.h"
#include "exchange/panels/import_export_field_setup_view_controller.h"
#include "exchange/panels/import_export_progress_view_controller.h"
#include "exchange/panels/import_export_window.h"
#include "platform/async/progress.h"

namespace corvane {

/// Drives one import or one export through panel, field setup and job. Its owner holds it until the
/// completion has run; should the owner let go of it earlier, a job that runs goes on to its end.
/// Held by shared pointer only; main queue only.
class ImportExportController : public std::enable_shared_from_this<ImportExportController> {
 public:
  using WindowPointer = std::shared_ptr<ImportExportWindow>;
  /// Runs exactly once, on the main queue; true when a job ran to its end.
  using Completion = std::move_only_function<void(bool)>;
  /// Work for another queue. Throws values of type Error.
  using Job = std::move_only_function<void()>;

  virtual ~ImportExportController() = default;

  [[nodiscard]] const std::shared_ptr<ImportOrExportBroker>& broker() const { return broker_; }
  /// What the job counts, and through which it is cancelled.
  [[nodiscard]] const std::shared_ptr<Progress>& progress() const { return progress_; }

  /// The broker's.
  [[nodiscard]] ConfigurationPointer configuration() const { return broker_->configuration(); }
  virtual void setConfiguration(ConfigurationPointer configuration);

  /// Shows the setup of the columns as a sheet. `completion` is told whether the user went on.
  /// Throws ImportExportError::InternalMisconfiguration for a broker of neither kind.
  virtual void presentFieldSetup(
      const WindowPointer& window, ImportExportWindow::SheetParent parent, int totalRows,
      ImportExportFieldSetupViewController::SampleStringValueProvider sampleProvider,
      Completion completion);

  /// Shows a progress sheet, runs `job` on the global queue of user-initiated quality, ends the
  /// sheet, shows an error of the job but for UserCancelledError, and calls `completion`.
  virtual void runWithProgress(const WindowPointer& window, std::string statusText, Job job,
                               Completion completion);

 protected:
  /// What the setup keeps layouts with; none where it keeps none.
  std::function<std::filesystem::path(const std::string& name)> rememberLayoutHandler;

  /// Takes the fields that do not exist any more out of the broker's stored order; when nothing is
  /// left it becomes all fields.
  explicit ImportExportController(std::shared_ptr<ImportOrExportBroker> broker);

  /// The content types of a panel, that of the configuration's delimiter first.
  [[nodiscard]] std::vector<ImportExportWindow::ContentType> contentTypes() const;

 private:
  std::shared_ptr<ImportOrExportBroker> broker_;
  std::shared_ptr<Progress> progress_ = std::make_shared<Progress>();
};

}  // namespace corvane
