#include "exchange/exports/portfolio_exporter_accessory_view_controller.h"

#include <utility>

namespace corvane {

using ExporterAccessory = PortfolioExporterAccessoryViewController;
using Settings = PortfolioExportConfiguration;

ExporterAccessory::PortfolioExporterAccessoryViewController(
    std::weak_ptr<PortfolioExporter> exporter)
    : portfolioExporter_(std::move(exporter)) {
  if (const auto owner = portfolioExporter()) {
    update(owner->settings());
  }
}

void ExporterAccessory::update(const PortfolioExportConfiguration& configuration) {
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
void ExporterAccessory::changeSettings(Change change) {
  if (const auto exporter = portfolioExporter()) {
    exporter->changeSettings(change);
  }
}

void ExporterAccessory::chooseDefaultDateFormat() {
  changeSettings([](Settings& settings) { settings.useDateFormatString = false; });
}

void ExporterAccessory::chooseCustomDateFormat() {
  changeSettings([](Settings& settings) { settings.useDateFormatString = true; });
}

void ExporterAccessory::setDateFormatString(const std::string& format) {
  changeSettings([&](Settings& settings) { settings.dateFormatString = format; });
}

void ExporterAccessory::setAccountingStyle(bool isOn) {
  changeSettings([&](Settings& settings) { settings.negativeNumbersAccountingStyle = isOn; });
}

void ExporterAccessory::setThousandSeparator(bool isOn) {
  changeSettings([&](Settings& settings) { settings.includeThousandsSeparator = isOn; });
}

void ExporterAccessory::setCurrencySymbol(bool isOn) {
  changeSettings([&](Settings& settings) { settings.includeCurrencySymbol = isOn; });
}

}  // namespace corvane
