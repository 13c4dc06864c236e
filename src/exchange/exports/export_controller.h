// An export from its save panel to its end.
#pragma once

#include <filesystem>
#include <memory>

#include "exchange/panels/export_save_accessory_view_controller.h"
#include "exchange/panels/import_export_controller.h"

namespace corvane {

/// Exports to one file through an ExportBroker.
class ExportController : public ImportExportController {
 public:
  [[nodiscard]] static std::shared_ptr<ExportController> make(std::shared_ptr<ExportBroker> broker);

  /// Asks where to save, and writes the file. `completion` is told whether the export ran to its
  /// end; whatever went wrong has been shown by then. With nothing to export it runs at once.
  void beginExport(const WindowPointer& window, Completion completion);

  /// The accessory of the save panel, while that is open.
  [[nodiscard]] const std::shared_ptr<ExportSaveAccessoryViewController>&
  saveAccessoryViewController() const {
    return saveAccessory_;
  }

  /// Also shown in the accessory.
  void setConfiguration(ConfigurationPointer configuration) override;

  /// The work of writing the file at `url`, which replaces what stands there only when all of it
  /// has been written.
  [[nodiscard]] Job exportJob(const std::filesystem::path& url);

 private:
  explicit ExportController(std::shared_ptr<ExportBroker> broker);

  void makeSaveAccessory(const WindowPointer& window);
  void configureFields(const WindowPointer& window);

  std::shared_ptr<ExportBroker> exportBroker_;
  std::shared_ptr<ExportSaveAccessoryViewController> saveAccessory_;
};

}  // namespace corvane
