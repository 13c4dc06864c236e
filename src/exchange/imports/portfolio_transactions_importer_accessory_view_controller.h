// The settings of a transactions import: how dates are read, and the currency of rows that name
// none.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "core/controls/form_controls.h"
#include "exchange/brokers/import_export_broker.h"
#include "exchange/imports/portfolio_transactions_importer.h"

namespace corvane {

/// State of the controls beside the field setup, and what they do. Main queue only.
class PortfolioTransactionsImporterAccessoryViewController final
    : public AccessoryConfigurationViewController {
 public:
  explicit PortfolioTransactionsImporterAccessoryViewController(
      std::weak_ptr<PortfolioTransactionsImporter> importer);

  RadioButton dateFormatAutomaticButton;
  RadioButton dateFormatCustomButton;
  TextField dateFormatCustomTextField;
  /// "CAD · Canadian Dollar" and the code, for all currencies by code.
  PopUpButton<std::string> defaultCurrencyPopUpButton;

  /// The user has used a control. Each writes one field of the importer's configuration.
  void chooseAutomaticDateFormat();
  void chooseCustomDateFormat();
  void setDateFormatString(const std::string& format);
  void selectDefaultCurrency(std::size_t index);

  /// Shows `configuration`.
  void update(const TransactionsImportConfiguration& configuration);

 private:
  std::weak_ptr<PortfolioTransactionsImporter> importer_;
};

}  // namespace corvane
