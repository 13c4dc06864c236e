#include "exchange/exports/portfolio_exporter.h"

#include <algorithm>
#include <utility>

#include "core/money/year_month_day.h"
#include "exchange/exports/portfolio_exporter_accessory_view_controller.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/time/calendar.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// Rates are written with no more digits after the point.
constexpr int mostRateDigits = 5;

/// Whether all moments of a day have one text in `format`. Takes a letter in quoted text for a
/// field, and then says no.
bool hasOnlyDays(const std::string& format) {
  return format.find_first_of("abBhHkKjJCmsSAzZOvVXx") == std::string::npos;
}

}  // namespace

JSONValue PortfolioExportConfiguration::json() const {
  JSONValue object;
  writeLayout(*this, object);
  object.set("useDateFormatString", useDateFormatString);
  object.set("dateFormatString", dateFormatString);
  object.set("negativeNumbersAccountingStyle", negativeNumbersAccountingStyle);
  object.set("includeThousandsSeparator", includeThousandsSeparator);
  object.set("includeCurrencySymbol", includeCurrencySymbol);
  return object;
}

PortfolioExportConfiguration PortfolioExportConfiguration::fromJSON(
    const JSONValue& value, const PortfolioExportConfiguration& defaults) {
  PortfolioExportConfiguration configuration = defaults;
  readLayout(value, configuration);
  const auto boolean = [&](const char* key) { return value.at(key).boolean(key); };
  configuration.useDateFormatString = boolean("useDateFormatString");
  configuration.dateFormatString = value.at("dateFormatString").string("dateFormatString");
  configuration.negativeNumbersAccountingStyle = boolean("negativeNumbersAccountingStyle");
  configuration.includeThousandsSeparator = boolean("includeThousandsSeparator");
  configuration.includeCurrencySymbol = boolean("includeCurrencySymbol");
  return configuration;
}

PortfolioExporter::PortfolioExporter(UserDefaults* defaults,
                                     std::string configurationUserDefaultsKey,
                                     std::span<const Field> fields, std::size_t totalNumberOfItems)
    : ConfiguredBroker(defaults, std::move(configurationUserDefaultsKey), Configuration()),
      fields_(fields.begin(), fields.end()),
      totalNumberOfItems_(static_cast<int>(totalNumberOfItems)) {
  applyConfiguration();
}

std::vector<std::string> PortfolioExporter::allFields() const {
  std::vector<std::string> names;
  for (const Field& field : fields_) {
    names.emplace_back(field.rawValue);
  }
  return names;
}

std::string PortfolioExporter::fieldTitle(std::string_view field) const {
  const auto found = std::ranges::find(fields_, field, &Field::rawValue);
  return found == fields_.end() ? "" : std::string(found->title);
}

std::optional<std::string> PortfolioExporter::exportValue(int row, std::string_view field) {
  const auto found = std::ranges::find(fields_, field, &Field::rawValue);
  if (row < 0 || row >= totalNumberOfItems_ || found == fields_.end()) {
    return std::nullopt;
  }
  const std::lock_guard lock(formattersMutex_);
  updateFormatters();
  return cellText(static_cast<std::size_t>(row), static_cast<std::size_t>(found - fields_.begin()));
}

std::shared_ptr<AccessoryConfigurationViewController>
PortfolioExporter::accessoryConfigurationViewController() {
  if (accessory_ == nullptr) {
    accessory_ = std::make_shared<PortfolioExporterAccessoryViewController>(
        std::static_pointer_cast<PortfolioExporter>(shared_from_this()));
  }
  return accessory_;
}

void PortfolioExporter::updateAccessory() {
  if (accessory_ != nullptr) {
    accessory_->update(settings());
  }
}

void PortfolioExporter::applyConfiguration() {
  const std::lock_guard lock(formattersMutex_);
  updateFormatters();
}

void PortfolioExporter::writeDaysOf(const Calendar& calendar) {
  const std::lock_guard lock(formattersMutex_);
  timeZone_ = calendar.timeZone();
  applied_ = nullptr;
  updateFormatters();
}

void PortfolioExporter::writeDaysOf(const Portfolio& portfolio) {
  if (const auto manager = portfolio.manager.lock()) {
    writeDaysOf(manager->calendar);
  }
}

void PortfolioExporter::updateFormatters() {
  if (const auto current = configuration(); current == applied_) {
    return;
  } else {
    applied_ = current;
  }
  const auto& settings = static_cast<const Configuration&>(*applied_);
  dayTexts_.clear();
  writesDaysOnly_ = !settings.useDateFormatString || hasOnlyDays(settings.dateFormatString);
  dateFormatter_ = {};
  dateFormatter_.timeZone = timeZone_;
  dateFormatter_.dateStyle = DateFormatter::Style::shortStyle;
  if (settings.useDateFormatString) {
    dateFormatter_.format = settings.dateFormatString;
  }

  const bool usesBrackets = settings.negativeNumbersAccountingStyle;
  currencyFormatter_ = {};
  currencyFormatter_.style = usesBrackets ? NumberFormatter::Style::currencyAccounting
                             : settings.includeCurrencySymbol ? NumberFormatter::Style::currency
                                                              : NumberFormatter::Style::decimal;
  currencyFormatter_.showsCurrencySymbol = settings.includeCurrencySymbol;

  shareCountFormatter_ = {};
  shareCountFormatter_.negativePrefix = usesBrackets ? "(" : "-";
  shareCountFormatter_.negativeSuffix = usesBrackets ? ")" : "";

  exchangeRateFormatter_ = {};
  exchangeRateFormatter_.maximumFractionDigits = mostRateDigits;

  for (NumberFormatter* formatter :
       {&currencyFormatter_, &shareCountFormatter_, &exchangeRateFormatter_}) {
    formatter->usesGroupingSeparator = settings.includeThousandsSeparator;
  }
}

DateFormatter PortfolioExporter::dateFormatter() const {
  const std::lock_guard lock(formattersMutex_);
  return dateFormatter_;
}

DecimalNumberFormatter PortfolioExporter::currencyFormatter() const {
  const std::lock_guard lock(formattersMutex_);
  return currencyFormatter_;
}

DecimalNumberFormatter PortfolioExporter::shareCountFormatter() const {
  const std::lock_guard lock(formattersMutex_);
  return shareCountFormatter_;
}

DecimalNumberFormatter PortfolioExporter::exchangeRateFormatter() const {
  const std::lock_guard lock(formattersMutex_);
  return exchangeRateFormatter_;
}

std::string PortfolioExporter::dateText(Date date) {
  if (!writesDaysOnly_) {
    return dateFormatter_.string(date);
  }
  // Making the text of a date takes longer than all else in a row, and many rows are of one day.
  const auto day = YearMonthDay::of(date, Calendar(dateFormatter_.timeZone));
  const auto [entry, isNew] = dayTexts_.try_emplace(dayNumber(day));
  if (isNew) {
    entry->second = dateFormatter_.string(date);
  }
  return entry->second;
}

std::optional<std::string> PortfolioExporter::shareText(const std::optional<Decimal>& count) const {
  return count ? shareCountFormatter_.string(*count) : std::nullopt;
}

std::optional<std::string> PortfolioExporter::rateText(const std::optional<Decimal>& rate,
                                                       const std::optional<Currency>& primary) {
  exchangeRateFormatter_.minimumFractionDigits = primary ? primary->minorUnits : 0;
  return rate ? exchangeRateFormatter_.string(*rate) : std::nullopt;
}

std::optional<std::string> PortfolioExporter::moneyText(const std::optional<Decimal>& amount,
                                                        const std::optional<Currency>& currency) {
  if (!amount || !currency) {
    return std::nullopt;
  }
  currencyFormatter_.currencyCode = std::string_view(currency->code);
  currencyFormatter_.minimumFractionDigits = currency->minorUnits;
  return currencyFormatter_.string(*amount);
}

}  // namespace corvane
