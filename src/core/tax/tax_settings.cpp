#include "core/tax/tax_settings.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <tuple>
#include <type_traits>

#include "platform/time/civil_day.h"

namespace corvane {
namespace {

constexpr std::array<std::pair<TaxRole, std::string_view>, 4> roleWords = {{
    {TaxRole::taxable, "taxable"},
    {TaxRole::registered, "registered"},
    {TaxRole::affiliated, "affiliated"},
    {TaxRole::notMine, "notMine"},
}};

constexpr std::array<std::pair<TaxCountry, std::string_view>, 3> countryWords = {{
    {TaxCountry::none, "none"},
    {TaxCountry::canada, "canada"},
    {TaxCountry::unitedKingdom, "unitedKingdom"},
}};

template <typename Value, std::size_t count>
std::string_view wordOf(const std::array<std::pair<Value, std::string_view>, count>& words,
                        Value value) {
  return std::ranges::find(words, value, &std::pair<Value, std::string_view>::first)->second;
}

template <typename Value, std::size_t count>
std::optional<Value> valueOf(const std::array<std::pair<Value, std::string_view>, count>& words,
                             std::string_view word) {
  const auto found = std::ranges::find(words, word, &std::pair<Value, std::string_view>::second);
  return found == words.end() ? std::nullopt : std::optional(found->first);
}

/// The text of the field, where it is one.
std::optional<std::string> textField(const JSONValue& value, std::string_view key) {
  const JSONValue* field = value.find(key);
  return field == nullptr ? std::nullopt : field->visit([](const auto& held) {
    if constexpr (std::is_same_v<std::remove_cvref_t<decltype(held)>, std::string>) {
      return std::optional(held);
    } else {
      return std::optional<std::string>();
    }
  });
}

bool booleanField(const JSONValue& value, std::string_view key) {
  const JSONValue* field = value.find(key);
  return field != nullptr && *field == JSONValue(true);
}

std::string twoDigits(int number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

YearMonthDay dayBefore(const YearMonthDay& day) {
  const CivilDay before = civilDay(dayCount(day.year, day.month, day.day) - 1);
  return {static_cast<int>(before.year), before.month, before.day};
}

}  // namespace

std::string_view wordFor(TaxRole role) {
  return wordOf(roleWords, role);
}

std::optional<TaxRole> taxRoleNamed(std::string_view word) {
  return valueOf(roleWords, word);
}

std::string_view wordFor(TaxCountry country) {
  return wordOf(countryWords, country);
}

std::optional<TaxCountry> taxCountryNamed(std::string_view word) {
  return valueOf(countryWords, word);
}

std::optional<PortfolioTaxRole> proposedTaxRole(std::string_view portfolioName) {
  constexpr std::array<std::string_view, 8> accounts = {"RRSP", "TFSA", "RESP", "FHSA",
                                                        "LIRA", "RRIF", "REER", "CELI"};
  std::string word;
  const auto isAccount = [&] { return std::ranges::find(accounts, word) != accounts.end(); };
  for (const char character : portfolioName) {
    // Bytes of letters beyond ASCII belong to a word too.
    const auto byte = static_cast<unsigned char>(character);
    if (std::isalpha(byte) != 0 || byte >= 0x80) {
      word.push_back(static_cast<char>(std::toupper(byte)));
    } else if (isAccount()) {
      break;
    } else {
      word.clear();
    }
  }
  return isAccount() ? std::optional(PortfolioTaxRole{TaxRole::registered}) : std::nullopt;
}

YearMonthDay TaxSettings::lastDay(int year) const {
  return dayBefore(firstDay(year + 1));
}

int TaxSettings::yearOf(const YearMonthDay& day) const {
  return day < firstDay(day.year) ? day.year - 1 : day.year;
}

bool isDayOfEveryYear(int month, int day) {
  constexpr int commonYear = 2001;
  return month >= 1 && month <= 12 && day >= 1 && day <= daysInMonth(commonYear, month);
}

std::optional<std::pair<int, int>> dayOfEveryYear(std::string_view text) {
  const auto isDigit = [&](std::size_t at) { return text[at] >= '0' && text[at] <= '9'; };
  if (text.size() != 5 || text[2] != '-' || !isDigit(0) || !isDigit(1) || !isDigit(3) ||
      !isDigit(4)) {
    return std::nullopt;
  }
  const auto number = [&](std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
  const std::pair day(number(0), number(3));
  return isDayOfEveryYear(day.first, day.second) ? std::optional(day) : std::nullopt;
}

JSONValue json(const TaxSettings& settings) {
  return JSONValue::Object{
      {"yearStart", twoDigits(settings.startMonth) + "-" + twoDigits(settings.startDay)},
      {"country", wordFor(settings.country)},
      {"countedOn", settings.byTradeDate ? "trade" : "settlement"}};
}

TaxSettings taxSettings(const JSONValue& value) {
  TaxSettings settings;
  if (const auto start = dayOfEveryYear(textField(value, "yearStart").value_or(""))) {
    std::tie(settings.startMonth, settings.startDay) = *start;
  }
  settings.country =
      taxCountryNamed(textField(value, "country").value_or("")).value_or(settings.country);
  settings.byTradeDate = textField(value, "countedOn") == "trade";
  return settings;
}

JSONValue json(const PortfolioTaxRole& role) {
  JSONValue value{JSONValue::Object{{"role", wordFor(role.role)}}};
  if (role.role == TaxRole::affiliated) {
    value.set("person", role.person);
    if (role.isRegistered) {
      value.set("registered", true);
    }
  }
  return value;
}

std::optional<PortfolioTaxRole> portfolioTaxRole(const JSONValue& value) {
  const auto role = taxRoleNamed(textField(value, "role").value_or(""));
  if (!role) {
    return std::nullopt;
  }
  return PortfolioTaxRole{*role, textField(value, "person").value_or(""),
                          booleanField(value, "registered")};
}

}  // namespace corvane
