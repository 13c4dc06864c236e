// The window with the user's settings.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/controls/form_controls.h"
#include "platform/async/subscription.h"
#include "platform/system/user_defaults.h"
#include "storage/application/app_delegate.h"

namespace corvane {

/// The settings that hold for all workspaces. Each is kept as soon as it is changed, and shows in
/// all windows at once, but for the address of the service, which is used from the next start on.
/// Follows what is changed elsewhere. Main queue only.
class SettingsViewController {
 public:
  using MakeProvider = std::function<std::shared_ptr<QuoteProvider>()>;

  /// The first two outlive this. `makeTestProvider` makes a client of the service that the settings
  /// name, for the test; by default the one that the program asks for prices.
  SettingsViewController(AppDelegate& application, UserDefaults& defaults,
                         MakeProvider makeTestProvider = {});
  SettingsViewController(const SettingsViewController&) = delete;
  SettingsViewController& operator=(const SettingsViewController&) = delete;

  CheckBox localTimeZoneButton;
  CheckBox fetchedRowsButton;
  CheckBox confirmQuitButton;
  CheckBox diagnosticToolsButton;
  PopUpButton<PriceAdjustment> priceAdjustmentPopUpButton;
  /// Where panels for workspaces begin; empty for the user's documents.
  TextField workspacesFolderField;
  /// The address of the service; empty for the usual one, which is its placeholder.
  TextField serviceField;
  Button testServiceButton;
  Label testResultLabel;  ///< empty before the first test

  /// Called when fields have changed without the user's doing.
  std::function<void()> changeHandler = [] {};

  // What the user does.

  void setLocalTimeZone(bool isOn);
  void setFetchedRows(bool isOn);
  void setConfirmQuit(bool isOn);
  void setDiagnosticTools(bool isOn);
  void choosePriceAdjustment(std::size_t index);
  /// Takes the text as it is being typed; nothing is kept yet.
  void typeWorkspacesFolder(std::string text);
  /// Keeps the folder where there is one of this name, "~" being the user's home; says in
  /// workspacesFolderField.error what is wrong otherwise, and what was kept stays.
  void keepWorkspacesFolder();
  /// Takes the text as it is being typed; nothing is kept yet.
  void typeService(std::string text);
  /// Keeps the address, if it is one; says in serviceField.error what is wrong otherwise, and what
  /// was kept stays.
  void keepService();
  /// Keeps the address, and asks the service there for a rate of exchange. One test at a time.
  void testServiceAction();

 private:
  void load();
  void testDidEnd(const EquityPointer& rate, const ErrorPointer& error);

  AppDelegate& application_;
  UserDefaults& defaults_;
  MakeProvider makeTestProvider_;
  std::shared_ptr<QuoteProvider> testProvider_;  ///< while a test is under way
  std::vector<Subscription> observations_;
  std::shared_ptr<SettingsViewController*> self_;  ///< lets a test end after this has gone
};

}  // namespace corvane
