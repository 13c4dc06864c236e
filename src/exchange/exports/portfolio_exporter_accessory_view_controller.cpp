#include "exchange/exports/portfolio_exporter_accessory_view_controller.h"

#include <utility>

namespace corvane {

using Accessory = PortfolioExporterAccessoryViewController;
using Settings = PortfolioExportConfiguration;

Accessory::PortfolioExporterAccessoryViewController(std::weak_ptr<PortfolioExporter> exporter)
    : portfolioExporter_(std::move(exporter)) {
  if (const auto owner = portfolioExporter()) {
    update(owner->settings());
  }
}

void Accessory::update(const PortfolioExportConfiguration& configuration) {
  dateFormatDefaultButton.isOn = !configuration.useDateFormatString;
  dateFormatCustomButton.isOn = configuration.useDateFormatString;
  dateFormatCustomTextField = {.text = configuration.dateFormatString,
                               .isEnabled = configuration.useDateFormatString};
  accountingStyleCheckboxButton.isOn = configuration.negativeNumbersAccountingStyle;
  thousandSeparatorCheckboxButton.isOn = configuration.includeThousandsSeparator;
  currencySymbolCheckboxButton.isOn = configuration.includeCurrencySymbol;
  if (viewDidUpdate) {
    viewDidUpdate();
  }
}

template <typename Change>
void Accessory::changeSettings(Change change) {
  if (const auto exporter = portfolioExporter()) {
    exporter->changeSettings(change);
  }
}

void Accessory::chooseDefaultDateFormat() {
  changeSettings([](Settings& settings) { settings.useDateFormatString = false; });
}

void Accessory::chooseCustomDateFormat() {
  changeSettings([](Settings& settings) { settings.useDateFormatString = true; });
}

void Accessory::setDateFormatString(const std::string& format) {
  changeSettings([&](Settings& settings) { settings.dateFormatString = format; });
}

void Accessory::setAccountingStyle(bool isOn) {
  changeSettings([&](Settings& settings) { settings.negativeNumbersAccountingStyle = isOn; });
}

void Accessory::setThousandSeparator(bool isOn) {
  changeSettings([&](Settings& settings) { settings.includeThousandsSeparator = isOn; });
}

void Accessory::setCurrencySymbol(bool isOn) {
  changeSettings([&](Settings& settings) { settings.includeCurrencySymbol = isOn; });
}

}  // namespace corvane
