#include "core/money/currency_almanac.h"

#include <charconv>

#include "platform/fatal_error.h"
#include "platform/system/file_manager.h"
#include "platform/system/log.h"
#include "platform/system/resources.h"

namespace corvane {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n\v\f";
  const auto first = text.find_first_not_of(blanks);
  if (first == text.npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<int> integer(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole ? std::optional(value) : std::nullopt;
}

/// "N.A." stands for currencies without minor units, such as metals.
std::optional<int> minorUnits(std::string_view text) {
  return text == "N.A." ? std::optional(0) : integer(text);
}

}  // namespace

const Currency::CodeTable& CurrencyAlmanac::allCurrenciesByCode() {
  static const Currency::CodeTable table = [] {
    const auto path = resourcePath(xmlFilename);
    CurrencyAlmanac almanac;
    try {
      parseXML(files::read(path), almanac);
    } catch (const Error& error) {
      fatalError("The list of currencies " + path.string() +
                 " is unusable: " + *error.description());
    }
    return std::move(almanac.currenciesByCode_);
  }();
  return table;
}

Currency::CodeTable CurrencyAlmanac::currenciesIn(std::string_view document) {
  CurrencyAlmanac almanac;
  parseXML(document, almanac);
  return std::move(almanac.currenciesByCode_);
}

void CurrencyAlmanac::startElement(std::string_view name, const Attributes& /*attributes*/) {
  const bool isEntry = !tagStack_.empty() && tagStack_.back() == "CcyTbl" && name == "CcyNtry";
  if (isEntry) {
    profile_ = {};
  } else if (!isAllowed(name)) {
    Log::write("Inconsistency in expected ISO 4217 XML format; aborting.");
    abortParsing();
    return;
  }
  tagStack_.emplace_back(name);
}

/// Whether the list has an element of this name here, entries aside.
bool CurrencyAlmanac::isAllowed(std::string_view element) const {
  if (tagStack_.empty()) {
    return element == "ISO_4217";
  }
  if (tagStack_.back() == "ISO_4217") {
    return element == "CcyTbl";
  }
  return tagStack_.back() == "CcyNtry";
}

void CurrencyAlmanac::characters(std::string_view text) {
  if (tagStack_.size() < 2 || tagStack_[tagStack_.size() - 2] != "CcyNtry") {
    return;
  }
  // The text of an element may come in pieces, of which those around the value are blank.
  const std::string_view value = trimmed(text);
  if (value.empty()) {
    return;
  }
  const std::string& tag = tagStack_.back();
  if (tag == "CtryNm") {
    profile_.countryName = value;
  } else if (tag == "CcyNm") {
    profile_.currencyName = value;
  } else if (tag == "Ccy") {
    profile_.code = value;
  } else if (tag == "CcyNbr") {
    profile_.number = integer(value);
  } else if (tag == "CcyMnrUnts") {
    profile_.minorUnits = minorUnits(value);
  } else {
    Log::write("Unknown currency entry tag \"", tag, "\" (value \"", value, "\")");
  }
}

void CurrencyAlmanac::endElement(std::string_view name) {
  if (name == "CcyNtry" && profile_.code && profile_.number && profile_.minorUnits) {
    if (profile_.code->size() <= CurrencyCode::maximumLength) {
      currenciesByCode_.insert_or_assign(
          *profile_.code,
          Currency{std::string_view(*profile_.code), *profile_.number, *profile_.minorUnits});
    } else {
      Log::write("The currency code \"", *profile_.code, "\" is too long.");
    }
  }
  tagStack_.pop_back();
}

}  // namespace corvane
