#include "exchange/imports/portfolio_transactions_importer.h"

namespace corvane {
namespace {

/// Whose the default currency is, where it isn't simply the portfolio's own.
constexpr std::string_view portfolioField = "defaultCurrencyPortfolio";

}  // namespace

JSONValue TransactionsImportConfiguration::json() const {
  JSONValue object;
  writeLayout(*this, object);
  object.set("useDateFormatString", useDateFormatString);
  object.set("dateFormatString", dateFormatString);
  if (defaultCurrencyCode) {
    object.set("defaultCurrencyCode", *defaultCurrencyCode);
    if (*defaultCurrencyCode != portfolioCurrencyCode) {
      object.set(std::string(portfolioField), portfolioKey);
    }
  }
  return object;
}

TransactionsImportConfiguration TransactionsImportConfiguration::fromJSON(
    const JSONValue& value, const TransactionsImportConfiguration& defaults) {
  TransactionsImportConfiguration configuration = defaults;
  readLayout(value, configuration);
  configuration.useDateFormatString =
      value.at("useDateFormatString").boolean("useDateFormatString");
  configuration.dateFormatString = value.at("dateFormatString").string("dateFormatString");
  const JSONValue* code = value.find("defaultCurrencyCode");
  const JSONValue* owner = value.find(portfolioField);
  const bool isForThisPortfolio =
      owner != nullptr && owner->string(portfolioField) == defaults.portfolioKey;
  if (isForThisPortfolio && code != nullptr && !code->isNull()) {
    configuration.defaultCurrencyCode = code->string("defaultCurrencyCode");
  }
  return configuration;
}

}  // namespace corvane
