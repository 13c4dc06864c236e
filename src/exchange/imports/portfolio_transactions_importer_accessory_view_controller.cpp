#include "exchange/imports/portfolio_transactions_importer_accessory_view_controller.h"

#include <utility>

#include "core/market/portfolio_asset.h"
#include "core/money/currency.h"

namespace corvane {

using ImporterAccessory = PortfolioTransactionsImporterAccessoryViewController;

ImporterAccessory::PortfolioTransactionsImporterAccessoryViewController(
    std::weak_ptr<PortfolioTransactionsImporter> importer)
    : importer_(std::move(importer)) {
  // The table is sorted by code.
  for (const auto& [code, currency] : Currency::byCode()) {
    defaultCurrencyPopUpButton.items.push_back(
        {PortfolioAsset(currency).title().plainText(), code});
  }
  defaultCurrencyPopUpButton.selectedIndex = 0;
  if (const auto owner = importer_.lock()) {
    update(owner->settings());
  }
}

void ImporterAccessory::update(const TransactionsImportConfiguration& configuration) {
  dateFormatAutomaticButton.isOn = !configuration.useDateFormatString;
  dateFormatCustomButton.isOn = configuration.useDateFormatString;
  dateFormatCustomTextField = {.text = configuration.dateFormatString,
                               .isEnabled = configuration.useDateFormatString};
  defaultCurrencyPopUpButton.select(configuration.defaultCurrencyCode.value_or(""));
  if (viewDidUpdate) {
    viewDidUpdate();
  }
}

void ImporterAccessory::chooseAutomaticDateFormat() {
  if (const auto importer = importer_.lock()) {
    importer->changeSettings([](auto& settings) { settings.useDateFormatString = false; });
  }
}

void ImporterAccessory::chooseCustomDateFormat() {
  if (const auto importer = importer_.lock()) {
    importer->changeSettings([](auto& settings) { settings.useDateFormatString = true; });
  }
}

void ImporterAccessory::setDateFormatString(const std::string& format) {
  if (const auto importer = importer_.lock()) {
    importer->changeSettings([&](auto& settings) { settings.dateFormatString = format; });
  }
}

void ImporterAccessory::selectDefaultCurrency(std::size_t index) {
  if (const auto importer = importer_.lock()) {
    importer->changeSettings([&](auto& settings) {
      settings.defaultCurrencyCode = defaultCurrencyPopUpButton.items.at(index).value;
    });
  }
}

}  // namespace corvane
