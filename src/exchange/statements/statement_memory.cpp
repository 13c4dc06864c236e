#include "exchange/statements/statement_memory.h"

#include <system_error>
#include <utility>

#include "exchange/statements/ledger_matching.h"
#include "platform/data/json.h"
#include "platform/system/file_manager.h"
#include "storage/database/stored_portfolio.h"

namespace corvane {
namespace {

std::string keyOf(const Portfolio& portfolio) {
  const auto* stored = dynamic_cast<const StoredPortfolio*>(&portfolio);
  return stored == nullptr ? portfolio.name : std::to_string(stored->portfolioId);
}

}  // namespace

StatementMemory::StatementMemory(const std::filesystem::path& folder, const Portfolio& portfolio)
    : file_(folder / fileName), key_(keyOf(portfolio)) {
  std::error_code ignored;
  if (!std::filesystem::exists(file_, ignored)) {
    return;
  }
  try {
    read(files::read(file_));
  } catch (const JSONError&) {
    wasDamaged_ = true;
    symbols_.clear();
    fingerprintsById_.clear();
    imports_.clear();
    others_.clear();
    std::filesystem::rename(file_, file_.string() + ".damaged", ignored);
  }
}

void StatementMemory::read(const std::string& text) {
  const JSONValue document = JSONValue::parse(text);
  (void)document.object("");
  others_ = text;
  const JSONValue* own = document.find(key_);
  if (own == nullptr) {
    return;
  }
  for (const auto& [name, symbol] : own->at("symbols").object("symbols")) {
    symbols_.emplace(name, symbol.string(name));
  }
  for (const JSONValue& entry : own->at("imports").array("imports")) {
    Import import{.file = entry.at("file").string("file"),
                  .day = entry.at("day").string("day"),
                  .profile = entry.at("profile").string("profile"),
                  .rows = {}};
    for (const JSONValue& row : entry.at("rows").array("rows")) {
      const auto line = Decimal::fromWholeString(row.at("line").number("line").text());
      import.rows.push_back({static_cast<std::uint32_t>(line.value_or(0).integerValue()),
                             row.at("id").string("id"), row.at("is").string("is")});
      if (const auto& last = import.rows.back(); !last.id.empty()) {
        fingerprintsById_.insert_or_assign(last.id, last.fingerprint);
      }
    }
    imports_.push_back(std::move(import));
  }
}

void StatementMemory::rememberSymbols(
    const std::map<std::string, std::string, std::less<>>& symbols) {
  for (const auto& [name, symbol] : symbols) {
    symbols_.insert_or_assign(name, symbol);
  }
}

void StatementMemory::rememberImport(const std::string& file, const std::string& profile,
                                     const std::vector<StatementRow>& rows,
                                     const Calendar& calendar) {
  const YearMonthDay today = YearMonthDay::of(Date::now(), calendar);
  Import import{.file = file,
                .day = std::to_string(today.year) + "-" + std::to_string(today.month) + "-" +
                       std::to_string(today.day),
                .profile = profile,
                .rows = {}};
  for (const StatementRow& row : rows) {
    if (row.verdict == RowVerdict::isNew && !row.transactions.empty()) {
      import.rows.push_back({row.line, row.id, fingerprint(row.transactions.front(), calendar)});
    }
  }
  imports_.push_back(std::move(import));
}

void StatementMemory::write() const {
  JSONValue document = others_.empty() ? JSONValue(JSONValue::Object()) : JSONValue::parse(others_);
  JSONValue own{JSONValue::Object()};
  JSONValue symbols{JSONValue::Object()};
  for (const auto& [name, symbol] : symbols_) {
    symbols.set(name, symbol);
  }
  own.set("symbols", std::move(symbols));
  JSONValue::Array imports;
  for (const Import& import : imports_) {
    JSONValue entry{JSONValue::Object()};
    entry.set("file", import.file);
    entry.set("day", import.day);
    entry.set("profile", import.profile);
    JSONValue::Array rows;
    for (const Import::Row& row : import.rows) {
      JSONValue told{JSONValue::Object()};
      told.set("line", std::int64_t{row.line});
      told.set("id", row.id);
      told.set("is", row.fingerprint);
      rows.push_back(std::move(told));
    }
    entry.set("rows", std::move(rows));
    imports.push_back(std::move(entry));
  }
  own.set("imports", std::move(imports));
  document.set(key_, std::move(own));
  files::writeAtomically(file_, document.text());
}

}  // namespace corvane
