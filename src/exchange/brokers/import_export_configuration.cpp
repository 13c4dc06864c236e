#include "exchange/brokers/import_export_configuration.h"

namespace corvane {

std::string_view rawValue(ImportExportFieldDelimiter delimiter) {
  return delimiter == ImportExportFieldDelimiter::tab ? "tab" : "comma";
}

std::optional<ImportExportFieldDelimiter> fieldDelimiterWithRawValue(std::string_view rawValue) {
  if (rawValue == "comma") {
    return ImportExportFieldDelimiter::comma;
  }
  if (rawValue == "tab") {
    return ImportExportFieldDelimiter::tab;
  }
  return std::nullopt;
}

char separator(ImportExportFieldDelimiter delimiter) {
  return delimiter == ImportExportFieldDelimiter::tab ? '\t' : ',';
}

ConfigurationPointer withLayout(const ImportExportConfiguration& configuration,
                                const ImportExportConfiguration& layout) {
  return changed(configuration, [&](ImportExportConfiguration& copy) {
    copy.fieldDelimiter = layout.fieldDelimiter;
    copy.includesHeaderRow = layout.includesHeaderRow;
    copy.fieldOrder = layout.fieldOrder;
  });
}

void writeLayout(const ImportExportConfiguration& configuration, JSONValue& object) {
  object.set("fieldDelimiter", rawValue(configuration.fieldDelimiter));
  object.set("includesHeaderRow", configuration.includesHeaderRow);
  JSONValue::Array order(configuration.fieldOrder.begin(), configuration.fieldOrder.end());
  object.set("fieldOrder", std::move(order));
}

void readLayout(const JSONValue& object, ImportExportConfiguration& configuration) {
  const auto delimiter =
      fieldDelimiterWithRawValue(object.at("fieldDelimiter").string("fieldDelimiter"));
  if (!delimiter) {
    throw JSONError("fieldDelimiter", "neither comma nor tab");
  }
  std::vector<std::string> order;
  for (const JSONValue& field : object.at("fieldOrder").array("fieldOrder")) {
    order.push_back(field.string("fieldOrder"));
  }
  configuration.includesHeaderRow = object.at("includesHeaderRow").boolean("includesHeaderRow");
  configuration.fieldDelimiter = *delimiter;
  configuration.fieldOrder = std::move(order);
}

}  // namespace corvane
