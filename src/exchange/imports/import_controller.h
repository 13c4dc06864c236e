// An import from its open panel to its end.
#pragma once

#include <filesystem>
#include <memory>

#include "exchange/panels/import_export_controller.h"

namespace corvane {

class ImportSource;

/// Imports one file through an ImportBroker.
class ImportController : public ImportExportController {
 public:
  [[nodiscard]] static std::shared_ptr<ImportController> make(std::shared_ptr<ImportBroker> broker);

  /// Asks for a file, has its columns set up, and imports it. `completion` is told whether the
  /// import ran to its end; whatever went wrong has been shown by then.
  void beginImport(const WindowPointer& window, Completion completion);

 private:
  explicit ImportController(std::shared_ptr<ImportBroker> broker);

  void loadAndSetUp(const std::filesystem::path& url, const WindowPointer& window,
                    ConfigurationPointer saved, Completion completion);
  /// Reads the file and fits the field order to it; null for a file without a line. Throws
  /// FileError, TextEncodingError, CSVParseError, ImportExportError::InconsistentColumnLayout.
  std::shared_ptr<const ImportSource> loadFile(const std::filesystem::path& url);
  void fitTo(const ImportSource& source);
  void runImport(std::shared_ptr<const ImportSource> source, const WindowPointer& window,
                 Completion completion);

  std::shared_ptr<ImportBroker> importBroker_;
};

}  // namespace corvane
