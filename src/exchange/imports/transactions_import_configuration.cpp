#include "exchange/imports/portfolio_transactions_importer.h"

namespace corvane {

JSONValue TransactionsImportConfiguration::json() const {
  JSONValue object;
  writeLayout(*this, object);
  object.set("useDateFormatString", useDateFormatString);
  object.set("dateFormatString", dateFormatString);
  if (defaultCurrencyCode) {
    object.set("defaultCurrencyCode", *defaultCurrencyCode);
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
  if (code != nullptr && !code->isNull()) {
    configuration.defaultCurrencyCode = code->string("defaultCurrencyCode");
  }
  return configuration;
}

}  // namespace corvane
