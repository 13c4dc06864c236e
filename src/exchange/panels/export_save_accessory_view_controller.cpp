#include "exchange/panels/export_save_accessory_view_controller.h"

#include <utility>

namespace corvane {

ExportSaveAccessoryViewController::ExportSaveAccessoryViewController(
    ConfigurationPointer configuration)
    : configuration_(std::move(configuration)) {
  updateButtons();
}

void ExportSaveAccessoryViewController::setConfiguration(ConfigurationPointer configuration) {
  configuration_ = std::move(configuration);
  updateButtons();
}

void ExportSaveAccessoryViewController::delimitByCommas() {
  change([](ImportExportConfiguration& layout) {
    layout.fieldDelimiter = ImportExportFieldDelimiter::comma;
  });
}

void ExportSaveAccessoryViewController::delimitByTabs() {
  change([](ImportExportConfiguration& layout) {
    layout.fieldDelimiter = ImportExportFieldDelimiter::tab;
  });
}

void ExportSaveAccessoryViewController::setIncludesHeaderRow(bool includes) {
  change([=](ImportExportConfiguration& layout) { layout.includesHeaderRow = includes; });
}

void ExportSaveAccessoryViewController::configureFields() {
  if (configureFieldsHandler) {
    configureFieldsHandler();
  }
}

void ExportSaveAccessoryViewController::change(
    const std::function<void(ImportExportConfiguration&)>& change) {
  setConfiguration(changed(*configuration_, change));
  if (configurationChangedHandler) {
    configurationChangedHandler(configuration_);
  }
}

void ExportSaveAccessoryViewController::updateButtons() {
  const bool isTab = configuration_->fieldDelimiter == ImportExportFieldDelimiter::tab;
  delimitByCommasButton.isOn = !isTab;
  delimitByTabsButton.isOn = isTab;
  headerRowCheckboxButton.isOn = configuration_->includesHeaderRow;
  if (viewDidUpdate) {
    viewDidUpdate();
  }
}

}  // namespace corvane
