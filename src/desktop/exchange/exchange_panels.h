// The panels, sheets and alerts of imports and exports on a window.
#pragma once

#include <QPointer>
#include <memory>

#include "exchange/panels/import_export_window.h"

class QDialog;
class QFileDialog;
class QWidget;

namespace corvane::desktop {

/// What a main window is to imports and exports. Main queue only.
class ExchangePanels : public ImportExportWindow {
 public:
  /// Panels and sheets hang on `window`; when it is gone nothing is shown any more.
  explicit ExchangePanels(QWidget* window);
  ~ExchangePanels() override;

  void beginOpenPanel(const OpenPanel& panel, PanelCompletion completion) override;
  void beginSavePanel(const SavePanel& panel, PanelCompletion completion) override;
  void setSavePanelContentTypes(const std::vector<ContentType>& contentTypes) override;
  void beginFieldSetup(const std::shared_ptr<ImportExportFieldSetupViewController>& setup,
                       SheetParent parent) override;
  void endFieldSetup() override;
  void beginProgress(const std::shared_ptr<ImportExportProgressViewController>& progress) override;
  void endProgress() override;
  void askForReading(const ReadingQuestion& question,
                     std::move_only_function<void(ReadingAnswer)> answered) override;
  void presentError(const Error& error, std::move_only_function<void()> dismissed) override;

 private:
  void setContentUpdates(bool areOn);

  QPointer<QWidget> window_;
  QPointer<QFileDialog> savePanel_;
  QPointer<QDialog> fieldSetup_;
  QPointer<QDialog> progress_;
};

}  // namespace corvane::desktop
