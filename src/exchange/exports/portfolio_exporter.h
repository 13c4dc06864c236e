// What the exports of a portfolio have in common: how dates, money, share counts and rates are
// written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"
#include "core/money/decimal_number_formatter.h"
#include "exchange/brokers/configured_broker.h"
#include "exchange/brokers/import_export_broker.h"
#include "exchange/brokers/import_export_configuration.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/system/user_defaults.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane {

class PortfolioExporterAccessoryViewController;

/// What an export of a portfolio is set up with.
struct PortfolioExportConfiguration : ImportExportConfigurationValue<PortfolioExportConfiguration> {
  /// Whether dates are written by dateFormatString; otherwise in the short style of the locale.
  bool useDateFormatString = false;
  std::string dateFormatString = "YYYY-MM-dd";
  bool negativeNumbersAccountingStyle = true;  ///< brackets instead of a minus sign
  bool includeThousandsSeparator = true;
  bool includeCurrencySymbol = true;

  [[nodiscard]] bool hasSameSettings(const PortfolioExportConfiguration& other) const {
    return useDateFormatString == other.useDateFormatString &&
           dateFormatString == other.dateFormatString &&
           negativeNumbersAccountingStyle == other.negativeNumbersAccountingStyle &&
           includeThousandsSeparator == other.includeThousandsSeparator &&
           includeCurrencySymbol == other.includeCurrencySymbol;
  }
  [[nodiscard]] JSONValue json() const;
  /// Throws JSONError where a setting is missing or of another type.
  [[nodiscard]] static PortfolioExportConfiguration fromJSON(
      const JSONValue& value, const PortfolioExportConfiguration& defaults);
};

/// The base of the exporters of a portfolio.
///
/// Made on the main queue, where it reads whatever belongs to that. exportValue() may then be
/// called from any thread, one call at a time, and writes by the configuration that is set at the
/// moment; the formatters that the accessors hand out follow a change a moment later, on the main
/// queue.
class PortfolioExporter : public ConfiguredBroker<ExportBroker, PortfolioExportConfiguration> {
 public:
  using Configuration = PortfolioExportConfiguration;

  [[nodiscard]] std::vector<std::string> allFields() const final;
  [[nodiscard]] std::string fieldTitle(std::string_view field) const final;
  [[nodiscard]] int exportRowCount() const final { return totalNumberOfItems_; }
  [[nodiscard]] std::optional<std::string> exportValue(int row, std::string_view field) final;

  [[nodiscard]] std::optional<std::string> defaultFilename() const final {
    return defaultFilename_;
  }
  void setDefaultFilename(std::optional<std::string> name) { defaultFilename_ = std::move(name); }
  [[nodiscard]] std::optional<std::string> titleForSavePanel() const final {
    return titleForSavePanel_;
  }
  void setTitleForSavePanel(std::optional<std::string> title) {
    titleForSavePanel_ = std::move(title);
  }

  /// A PortfolioExporterAccessoryViewController, made on first use.
  [[nodiscard]] std::shared_ptr<AccessoryConfigurationViewController>
  accessoryConfigurationViewController() final;

  [[nodiscard]] DateFormatter dateFormatter() const;
  [[nodiscard]] DecimalNumberFormatter currencyFormatter() const;
  [[nodiscard]] DecimalNumberFormatter shareCountFormatter() const;
  [[nodiscard]] DecimalNumberFormatter exchangeRateFormatter() const;

 protected:
  /// A column: the raw name of its field, and its title.
  struct Field {
    std::string_view rawValue;
    std::string_view title;
  };

  /// The text of a cell; none where there is nothing to tell.
  using CellText = std::optional<std::string>;

  /// A column with what an exporter writes in it, for lines that are told by a `Line`.
  template <typename Exporter, typename Line>
  struct SchemaFieldOf {
    Field field;
    CellText (*text)(Exporter&, const Line&);
  };

  template <typename Exporter, typename Line, std::size_t count>
  [[nodiscard]] static std::vector<Field> fieldsOf(
      const std::array<SchemaFieldOf<Exporter, Line>, count>& schema) {
    std::vector<Field> fields;
    for (const auto& each : schema) {
      fields.push_back(each.field);
    }
    return fields;
  }

  /// The texts of `fields` live as long as the program. `defaults` may be null; otherwise it
  /// outlives the exporter. The constructor of the exporter calls applyConfiguration() last.
  PortfolioExporter(UserDefaults* defaults, std::string configurationUserDefaultsKey,
                    std::span<const Field> fields, std::size_t totalNumberOfItems);

  void applyConfiguration() final;

  /// Dates are written as the days that they are in `calendar`; before, as those of the user's
  /// zone.
  void writeDaysOf(const Calendar& calendar);
  void writeDaysOf(const Portfolio& portfolio);

  /// The text of a cell, for exportValue(): the field is told by its place.
  [[nodiscard]] virtual CellText cellText(std::size_t row, std::size_t field) = 0;

  // The texts of values. An absent one has none, nor has one that is no number.
  [[nodiscard]] std::string dateText(Date date);
  [[nodiscard]] std::optional<std::string> shareText(const std::optional<Decimal>& count) const;
  /// With at least the minor units of `primary`, where the portfolio is still there to know it.
  [[nodiscard]] std::optional<std::string> rateText(const std::optional<Decimal>& rate,
                                                    const std::optional<Currency>& primary);
  [[nodiscard]] std::optional<std::string> moneyText(const std::optional<Decimal>& amount,
                                                     const std::optional<Currency>& currency);

 private:
  void updateAccessory() final;
  /// Makes the formatters those of the configuration, if they are not. With the lock held.
  void updateFormatters();

  const std::vector<Field> fields_;
  const int totalNumberOfItems_;
  std::optional<std::string> defaultFilename_;
  std::optional<std::string> titleForSavePanel_;
  std::shared_ptr<PortfolioExporterAccessoryViewController> accessory_;

  mutable std::mutex formattersMutex_;  ///< the main queue changes what the job uses
  ConfigurationPointer applied_;
  TimeZone timeZone_ = TimeZone::current();
  DateFormatter dateFormatter_;
  DecimalNumberFormatter currencyFormatter_;
  DecimalNumberFormatter shareCountFormatter_;
  DecimalNumberFormatter exchangeRateFormatter_;

  /// The texts of days, where a date is written without its time.
  std::unordered_map<std::int64_t, std::string> dayTexts_;
  bool writesDaysOnly_ = true;
};

}  // namespace corvane
