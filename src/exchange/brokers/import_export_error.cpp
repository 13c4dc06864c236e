#include "exchange/brokers/import_export_error.h"

#include "platform/overloaded.h"

namespace corvane {

std::optional<std::string> ImportExportError::description() const {
  return std::visit(Overloaded{[](const InconsistentColumnLayout& layout) {
                                 return "Row " + std::to_string(layout.row + 1) + " has " +
                                        std::to_string(layout.haveColumns) + " columns but " +
                                        std::to_string(layout.expectedColumns) + " were expected.";
                               },
                               [](const BrokerImportError& broker) {
                                 return "Problem on line " + std::to_string(broker.row + 1) + ": " +
                                        broker.underlyingError->description().value_or(
                                            "The operation could not be completed.");
                               },
                               [](InternalMisconfiguration) {
                                 return std::string("Internal misconfiguration.");
                               }},
                    which());
}

std::optional<std::string> ImportExportError::recoverySuggestion() const {
  const auto* broker = as<BrokerImportError>();
  return broker == nullptr ? std::nullopt : broker->underlyingError->recoverySuggestion();
}

std::optional<std::string> ImportExportError::advice() const {
  const auto* broker = as<BrokerImportError>();
  return broker == nullptr ? std::nullopt : broker->underlyingError->advice();
}

}  // namespace corvane
