// The settings of a file in the panel that asks where to save it.
#pragma once

#include <functional>

#include "core/controls/form_controls.h"
#include "exchange/brokers/import_export_configuration.h"

namespace corvane {

/// Delimiter, header row, and the way to the field setup. Main queue only.
class ExportSaveAccessoryViewController {
 public:
  RadioButton delimitByCommasButton;
  RadioButton delimitByTabsButton;
  CheckBox headerRowCheckboxButton;

  /// What the button "Configure Fields…" does.
  std::function<void()> configureFieldsHandler;
  /// Told of each change that the user makes here.
  std::function<void(ConfigurationPointer)> configurationChangedHandler;
  /// Set by the shell: shows the state again.
  std::function<void()> viewDidUpdate;

  explicit ExportSaveAccessoryViewController(ConfigurationPointer configuration);

  [[nodiscard]] const ConfigurationPointer& configuration() const { return configuration_; }
  void setConfiguration(ConfigurationPointer configuration);

  /// The user has pressed a control.
  void delimitByCommas();
  void delimitByTabs();
  void setIncludesHeaderRow(bool includes);
  void configureFields();

 private:
  void change(const std::function<void(ImportExportConfiguration&)>& change);
  void updateButtons();

  ConfigurationPointer configuration_;
};

}  // namespace corvane
