// The settings of a portfolio's exports: how dates and amounts are written.
#pragma once

#include <memory>
#include <string>

#include "core/controls/form_controls.h"
#include "exchange/brokers/import_export_broker.h"
#include "exchange/exports/portfolio_exporter.h"

namespace corvane {

/// State of the controls beside the field setup, and what they do. Main queue only.
class PortfolioExporterAccessoryViewController final : public AccessoryConfigurationViewController {
 public:
  explicit PortfolioExporterAccessoryViewController(std::weak_ptr<PortfolioExporter> exporter);

  RadioButton dateFormatDefaultButton;
  RadioButton dateFormatCustomButton;
  TextField dateFormatCustomTextField;
  CheckBox accountingStyleCheckboxButton;
  CheckBox thousandSeparatorCheckboxButton;
  CheckBox currencySymbolCheckboxButton;

  /// Null once the exporter is gone; then the controls do nothing.
  [[nodiscard]] std::shared_ptr<PortfolioExporter> portfolioExporter() const {
    return portfolioExporter_.lock();
  }

  /// The user has used a control. Each writes one field of the exporter's configuration.
  void chooseDefaultDateFormat();
  void chooseCustomDateFormat();
  void setDateFormatString(const std::string& format);
  void setAccountingStyle(bool isOn);
  void setThousandSeparator(bool isOn);
  void setCurrencySymbol(bool isOn);

  /// Shows `configuration`.
  void update(const PortfolioExportConfiguration& configuration);

 private:
  template <typename Change>
  void changeSettings(Change change);

  std::weak_ptr<PortfolioExporter> portfolioExporter_;
};

}  // namespace corvane
