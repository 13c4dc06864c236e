#include "storage/workspace/general_properties.h"

#include <charconv>
#include <system_error>

#include "core/decimal/json_coding.h"

namespace corvane {
namespace {

using WatchlistEntry = GeneralProperties::WatchlistEntry;
using RegressionSettings = GeneralProperties::RegressionSettings;

constexpr std::string_view settingsKey = "lastTradingScenarioSettings";
constexpr std::string_view watchlistKey = "watchlistSymbols";
constexpr std::string_view taxKey = "taxSettings";
constexpr std::string_view rolesKey = "portfolioTaxRoles";
constexpr std::string_view timeZoneKey = "datesTimeZone";

using Roles = std::map<std::int64_t, PortfolioTaxRole>;

/// The field `key` of `object`; null where it is absent or null.
const JSONValue* present(const JSONValue& object, std::string_view key) {
  const JSONValue* field = object.find(key);
  return field == nullptr || field->isNull() ? nullptr : field;
}

/// What `read(value, path)` makes of the field `key` of the object at `path`, where there is one.
template <typename Read>
auto optionalField(const JSONValue& object, std::string_view key, std::string_view path, Read read)
    -> std::optional<decltype(read(object, path))> {
  const JSONValue* field = present(object, key);
  if (field == nullptr) {
    return std::nullopt;
  }
  return read(*field, pathOf(key, path));
}

std::string text(const JSONValue& value, std::string_view path) {
  return value.string(path);
}

std::vector<WatchlistEntry> watchlist(const JSONValue& value, std::string_view path) {
  std::vector<WatchlistEntry> entries;
  for (const JSONValue& entry : value.array(path)) {
    const std::string entryPath = std::string(path) + "[" + std::to_string(entries.size()) + "]";
    const auto field = [&](std::string_view key) {
      return text(requiredField(entry, key, entryPath), pathOf(key, entryPath));
    };
    entries.push_back({field("provider"), field("identifier")});
  }
  return entries;
}

RegressionSettings regressionSettings(const JSONValue& value, std::string_view path) {
  (void)value.object(path);
  return {optionalField(value, "detailScenario", path, investmentScenario),
          optionalField(value, "detailStrategy", path, investmentStrategy),
          optionalField(value, "batchScenario", path, investmentScenario),
          optionalField(value, "batchStrategy", path, investmentStrategy)};
}

JSONValue watchlistJSON(const std::vector<WatchlistEntry>& entries) {
  JSONValue::Array array;
  for (const auto& [provider, identifier] : entries) {
    array.push_back(JSONValue::Object{{"provider", provider}, {"identifier", identifier}});
  }
  return array;
}

JSONValue settingsJSON(const RegressionSettings& settings) {
  JSONValue value{JSONValue::Object()};
  const auto append = [&](std::string_view key, const auto& record) {
    if (record) {
      value.set(key, json(*record, pathOf(key, settingsKey)));
    }
  };
  append("detailScenario", settings.detailScenario);
  append("detailStrategy", settings.detailStrategy);
  append("batchScenario", settings.batchScenario);
  append("batchStrategy", settings.batchStrategy);
  return value;
}

JSONValue rolesJSON(const Roles& roles) {
  JSONValue value{JSONValue::Object()};
  for (const auto& [id, role] : roles) {
    value.set(std::to_string(id), json(role));
  }
  return value;
}

/// The roles that can be read; a key that is no id and a word that is not known name none.
Roles rolesOf(const JSONValue& value, std::string_view path) {
  Roles roles;
  for (const auto& [key, field] : value.object(path)) {
    std::int64_t id = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), id);
    const auto role = portfolioTaxRole(field);
    if (error == std::errc() && end == key.data() + key.size() && role) {
      roles.emplace(id, *role);
    }
  }
  return roles;
}

JSONValue timeZoneJSON(const DatesTimeZone& zone) {
  return JSONValue::Object{{"identifier", zone.identifier},
                           {"isUsedEverywhere", zone.isUsedEverywhere}};
}

DatesTimeZone timeZoneOf(const JSONValue& value, std::string_view path) {
  const std::string_view everywhere = "isUsedEverywhere";
  return {text(requiredField(value, "identifier", path), pathOf("identifier", path)),
          requiredField(value, everywhere, path).boolean(pathOf(everywhere, path))};
}

}  // namespace

std::string GeneralProperties::json() const {
  JSONValue value{JSONValue::Object()};
  if (appBundleVersion) {
    value.set("appBundleVersion", *appBundleVersion);
  }
  if (appMarketingVersion) {
    value.set("appMarketingVersion", *appMarketingVersion);
  }
  if (watchlistSymbols) {
    value.set(watchlistKey, watchlistJSON(*watchlistSymbols));
  }
  if (lastTradingScenarioSettings) {
    value.set(settingsKey, settingsJSON(*lastTradingScenarioSettings));
  }
  if (taxSettings) {
    value.set(taxKey, corvane::json(*taxSettings));
  }
  if (!taxRoles.empty()) {
    value.set(rolesKey, rolesJSON(taxRoles));
  }
  if (datesTimeZone) {
    value.set(timeZoneKey, timeZoneJSON(*datesTimeZone));
  }
  return value.text();
}

GeneralProperties GeneralProperties::fromJSON(std::string_view document) {
  const JSONValue value = JSONValue::parse(document);
  (void)value.object();
  return {optionalField(value, "appBundleVersion", "", text),
          optionalField(value, "appMarketingVersion", "", text),
          optionalField(value, watchlistKey, "", watchlist),
          optionalField(value, settingsKey, "", regressionSettings),
          optionalField(
              value, taxKey, "",
              [](const JSONValue& field, std::string_view) { return corvane::taxSettings(field); }),
          optionalField(value, rolesKey, "", rolesOf).value_or(Roles()),
          optionalField(value, timeZoneKey, "", timeZoneOf)};
}

}  // namespace corvane
