#include "presentation/frame/settings_view_controller.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "presentation/frame/quote_service_address.h"

namespace corvane {
namespace {

/// Nobody waits longer than this for the answer to a test.
constexpr double secondsOfServiceTest = 15;

std::shared_ptr<QuoteProvider> namedService(const UserDefaults& defaults) {
  YahooService service = YahooService::named(defaults);
  service.pauses.requestLimit = secondsOfServiceTest;
  return std::make_shared<YahooQuoteProvider>(std::move(service));
}

}  // namespace

SettingsViewController::SettingsViewController(AppDelegate& application, UserDefaults& defaults,
                                               MakeProvider makeTestProvider)
    : application_(application),
      defaults_(defaults),
      makeTestProvider_(makeTestProvider ? std::move(makeTestProvider)
                                         : [&defaults] { return namedService(defaults); }),
      self_(std::make_shared<SettingsViewController*>(this)) {
  localTimeZoneButton.title = "Dates in the local time zone";
  fetchedRowsButton.title = "Mark rows from the network";
  confirmQuitButton.title = "Ask before quitting";
  diagnosticToolsButton.title = "Diagnostic tools";
  testServiceButton.title = "Test";
  const std::array titles = {"As traded", "Adjusted for splits",
                             "Adjusted for splits and dividends"};
  static_assert(titles.size() == AppDelegate::priceAdjustmentUserDefaultsMap.size());
  for (std::size_t i = 0; i < titles.size(); ++i) {
    priceAdjustmentPopUpButton.items.push_back(
        {titles[i], AppDelegate::priceAdjustmentUserDefaultsMap[i].first});
  }
  serviceField.placeholder = YahooService().apiHost;
  for (const std::string_view key :
       {application.preferLocalTimeZone.key, application.indicateFetchedRows.key,
        application.confirmBeforeQuit.key, application.diagnosticToolsEnabled.key,
        AppDelegate::priceAdjustmentUserDefaultsKey}) {
    observations_.push_back(defaults.observe(std::string(key), [this] {
      load();
      changeHandler();
    }));
  }
  load();
  workspacesFolderField.placeholder = "Your documents";
  workspacesFolderField.text = application.workspacesFolder.get();
  const auto address = QuoteServiceAddress::of(defaults_);
  serviceField.text = address ? address->text() : "";
}

void SettingsViewController::load() {
  localTimeZoneButton.isOn = application_.preferLocalTimeZone.get();
  fetchedRowsButton.isOn = application_.indicateFetchedRows.get();
  confirmQuitButton.isOn = application_.confirmBeforeQuit.get();
  diagnosticToolsButton.isOn = application_.diagnosticToolsEnabled.get();
  priceAdjustmentPopUpButton.select(application_.selectedPriceAdjustment());
}

void SettingsViewController::setLocalTimeZone(bool isOn) {
  application_.preferLocalTimeZone.set(isOn);
  load();
}

void SettingsViewController::setFetchedRows(bool isOn) {
  application_.indicateFetchedRows.set(isOn);
  load();
}

void SettingsViewController::setConfirmQuit(bool isOn) {
  application_.confirmBeforeQuit.set(isOn);
  load();
}

void SettingsViewController::setDiagnosticTools(bool isOn) {
  application_.diagnosticToolsEnabled.set(isOn);
  load();
}

void SettingsViewController::choosePriceAdjustment(std::size_t index) {
  application_.choosePriceAdjustment(*priceAdjustmentPopUpButton.items.at(index).value);
  load();
}

void SettingsViewController::typeWorkspacesFolder(std::string text) {
  workspacesFolderField.text = std::move(text);
  workspacesFolderField.error.clear();
}

void SettingsViewController::keepWorkspacesFolder() {
  workspacesFolderField.error.clear();
  std::string folder = workspacesFolderField.text;
  if (folder.find_first_not_of(' ') == std::string::npos) {
    workspacesFolderField.text.clear();
    application_.workspacesFolder.set("");
    return;
  }
  if (const char* home = std::getenv("HOME");
      home != nullptr && (folder == "~" || folder.starts_with("~/"))) {
    folder.replace(0, 1, home);
  }
  std::error_code unreadable;
  if (!std::filesystem::path(folder).is_absolute() ||
      !std::filesystem::is_directory(folder, unreadable)) {
    workspacesFolderField.error =
        "There is no folder of this name. Its path begins with “/” or “~/”.";
    return;
  }
  workspacesFolderField.text = folder;
  application_.workspacesFolder.set(folder);
}

void SettingsViewController::typeService(std::string text) {
  serviceField.text = std::move(text);
  serviceField.error.clear();
  testResultLabel.text.clear();
}

void SettingsViewController::keepService() {
  serviceField.error.clear();
  if (serviceField.text.find_first_not_of(' ') == std::string::npos) {
    serviceField.text.clear();
    QuoteServiceAddress::keep(std::nullopt, defaults_);
    return;
  }
  const auto address = QuoteServiceAddress::parse(serviceField.text);
  if (!address) {
    serviceField.error =
        "This is not the address of a server. Type its name, such as “prices.example.org”, with "
        "“http://” before it and a port such as “:8080” behind it where they are needed.";
    return;
  }
  // An address that is left as it was keeps what the settings say beyond it.
  if (address != QuoteServiceAddress::of(defaults_)) {
    QuoteServiceAddress::keep(address, defaults_);
  }
  serviceField.text = address->text();
}

void SettingsViewController::testServiceAction() {
  keepService();
  if (!serviceField.error.empty() || testProvider_ != nullptr) {
    return;
  }
  testProvider_ = makeTestProvider_();
  testServiceButton.isEnabled = false;
  testResultLabel.text = "Asking the service…";
  const EquityPointer rate = testProvider_->exchangeRateEquity(Currency::usd(), Currency::cad());
  testProvider_->refreshEquities(
      {rate}, [weakSelf = std::weak_ptr(self_), rate](const ErrorPointer& error) {
        if (const auto self = weakSelf.lock()) {
          (*self)->testDidEnd(rate, error);
        }
      });
}

void SettingsViewController::testDidEnd(const EquityPointer& rate, const ErrorPointer& error) {
  // A provider is not to be destroyed by its own completion.
  DispatchQueue::main()->async([ended = std::move(testProvider_)] {});
  testProvider_ = nullptr;
  testServiceButton.isEnabled = true;
  if (error != nullptr) {
    testResultLabel.text = "The service does not answer: " + error->description().value_or("?");
  } else if (!rate->recentPrice) {
    testResultLabel.text = "The service answers, but names no rate of exchange.";
  } else {
    testResultLabel.text =
        "The service answers: 1 USD is " + rate->recentPrice->description() + " CAD.";
  }
  changeHandler();
}

}  // namespace corvane
