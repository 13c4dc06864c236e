// Reads the published list of ISO 4217 currencies.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/money/currency.h"
#include "platform/data/xml.h"

namespace corvane {

/// Gathers currencies from list one of ISO 4217, as the maintenance agency publishes it in XML. A
/// format fault writes a line to the log and costs the entry that it stands in; a fault
/// in the nesting ends the reading, with the entries finished by then.
class CurrencyAlmanac : public XMLHandler {
 public:
  static constexpr std::string_view xmlFilename = "iso-4217-list-one.xml";

  /// The table of the list that is installed with the program, read on first use. A list that is
  /// missing or cannot be read stops the program: it is part of the installation.
  [[nodiscard]] static const Currency::CodeTable& allCurrenciesByCode();

  /// The currencies in `document`. Throws XMLError where it is not well formed.
  [[nodiscard]] static Currency::CodeTable currenciesIn(std::string_view document);

  void startElement(std::string_view name, const Attributes& attributes) override;
  void endElement(std::string_view name) override;
  void characters(std::string_view text) override;

 private:
  /// The entry being read.
  struct Profile {
    std::optional<std::string> countryName;
    std::optional<std::string> currencyName;
    std::optional<std::string> code;
    std::optional<int> number;
    std::optional<int> minorUnits;
  };

  [[nodiscard]] bool isAllowed(std::string_view element) const;

  std::vector<std::string> tagStack_;
  Profile profile_;
  Currency::CodeTable currenciesByCode_;
};

}  // namespace corvane
