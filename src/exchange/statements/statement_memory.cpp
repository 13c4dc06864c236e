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

/// The text under `key`; empty where there is none, as in files of earlier versions.
std::string textUnder(const JSONValue& object, const std::string& key) {
  const JSONValue* found = object.find(key);
  return found == nullptr ? std::string() : found->string(key);
}

RecordedRow recordedRowIn(const JSONValue& entry) {
  const auto line = Decimal::fromWholeString(entry.at("line").number("line").text());
  RecordedRow row{.line = static_cast<std::uint32_t>(line.value_or(0).integerValue()),
                  .id = entry.at("id").string("id"),
                  .fingerprints = {entry.at("is").string("is")}};
  if (const JSONValue* further = entry.find("also")) {
    for (const JSONValue& print : further->array("also")) {
      row.fingerprints.push_back(print.string("also"));
    }
  }
  return row;
}

RecordedImport recordedImportIn(const JSONValue& entry) {
  RecordedImport import{.file = entry.at("file").string("file"),
                        .sha256 = textUnder(entry, "sha256"),
                        .day = entry.at("day").string("day"),
                        .profile = entry.at("profile").string("profile"),
                        .firstDay = textUnder(entry, "from"),
                        .lastDay = textUnder(entry, "to"),
                        .rows = {}};
  for (const JSONValue& row : entry.at("rows").array("rows")) {
    import.rows.push_back(recordedRowIn(row));
  }
  return import;
}

/// `object` as text, without the brace at its end, so that more can be written into it.
std::string openText(const JSONValue& object) {
  std::string text = object.text();
  text.resize(text.rfind('}'));
  return text;
}

/// Writes an import behind `text`, row by row: one of a large file has millions.
void append(const RecordedImport& import, std::string& text) {
  JSONValue entry{JSONValue::Object()};
  entry.set("file", import.file);
  entry.set("sha256", import.sha256);
  entry.set("day", import.day);
  entry.set("profile", import.profile);
  entry.set("from", import.firstDay);
  entry.set("to", import.lastDay);
  text += openText(entry) + ",\"rows\":[";
  const char* separator = "";
  for (const RecordedRow& row : import.rows) {
    JSONValue told{JSONValue::Object()};
    told.set("line", std::int64_t{row.line});
    told.set("id", row.id);
    told.set("is", row.fingerprints.front());
    if (row.fingerprints.size() > 1) {
      told.set("also", JSONValue::Array(row.fingerprints.begin() + 1, row.fingerprints.end()));
    }
    text += std::exchange(separator, ",");
    text += told.text();
  }
  text += "]}";
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
    answers_ = {};
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
    imports_.push_back(recordedImportIn(entry));
  }
  if (const JSONValue* answers = own->find("answers")) {
    for (const auto& [layout, given] : answers->object("answers")) {
      if (const std::string code = textUnder(given, "currency"); !code.empty()) {
        answers_.currencies.emplace(layout, code);
      }
      if (textUnder(given, "rates") == "market") {
        answers_.marketRates.insert(layout);
      }
      if (const JSONValue* accounts = given.find("accounts")) {
        for (const JSONValue& account : accounts->array("accounts")) {
          answers_.accounts[layout].insert(account.string("accounts"));
        }
      }
    }
  }
}

void StatementMemory::rememberAnswers(const StatementOptions& options,
                                      const StatementPreview& preview) {
  if (options.takesMarketRates) {
    answers_.marketRates.insert(preview.profileName);
  }
  for (const auto& [name, symbol] : options.symbols) {
    symbols_.insert_or_assign(name, symbol);
  }
  if (options.currencyCode) {
    answers_.currencies.insert_or_assign(preview.profileName, *options.currencyCode);
  }
  if (!options.accounts.empty()) {
    answers_.accounts.insert_or_assign(preview.profileName, options.accounts);
  }
}

void StatementMemory::rememberImport(const std::string& file, const StatementPreview& preview,
                                     const Calendar& calendar) {
  RecordedImport import{.file = file,
                        .sha256 = preview.file.sha256,
                        .day = isoDay(Date::now(), calendar),
                        .profile = preview.profileName,
                        .firstDay = preview.file.firstDay,
                        .lastDay = preview.file.lastDay,
                        .rows = {}};
  const StatementRows& rows = preview.reading.rows;
  import.rows.reserve(rows.count(RowVerdict::isNew));
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (rows.verdict(row) == RowVerdict::isNew && rows.transactionCount(row) > 0) {
      auto& kept = import.rows.emplace_back(rows.line(row), std::string(rows.id(row)),
                                            std::vector<std::string>());
      kept.fingerprints.reserve(rows.transactionCount(row));
      for (const BasicTransaction& transaction : rows.transactions(row)) {
        kept.fingerprints.push_back(fingerprint(transaction, calendar));
      }
    }
  }
  imports_.push_back(std::move(import));
}

void StatementMemory::write() const {
  const JSONValue document =
      others_.empty() ? JSONValue(JSONValue::Object()) : JSONValue::parse(others_);
  JSONValue own{JSONValue::Object()};
  JSONValue symbols{JSONValue::Object()};
  for (const auto& [name, symbol] : symbols_) {
    symbols.set(name, symbol);
  }
  own.set("symbols", std::move(symbols));
  JSONValue answers{JSONValue::Object()};
  const auto answer = [&](const std::string& layout, const std::string& key, JSONValue value) {
    const JSONValue* known = answers.find(layout);
    JSONValue given = known == nullptr ? JSONValue(JSONValue::Object()) : *known;
    given.set(key, std::move(value));
    answers.set(layout, std::move(given));
  };
  for (const auto& [layout, code] : answers_.currencies) {
    answer(layout, "currency", code);
  }
  for (const auto& [layout, accounts] : answers_.accounts) {
    answer(layout, "accounts", JSONValue::Array(accounts.begin(), accounts.end()));
  }
  for (const std::string& layout : answers_.marketRates) {
    answer(layout, "rates", std::string("market"));
  }
  own.set("answers", std::move(answers));
  JSONValue others{JSONValue::Object()};
  for (const auto& [key, value] : document.object("")) {
    if (key != key_) {
      others.set(key, value);
    }
  }
  std::string text = openText(others);
  text += (others.object("").empty() ? "" : ",") + JSONValue(key_).text() + ":" + openText(own) +
          ",\"imports\":[";
  const char* separator = "";
  for (const RecordedImport& import : imports_) {
    text += std::exchange(separator, ",");
    append(import, text);
  }
  text += "]}}";
  files::writeAtomically(file_, text);
}

}  // namespace corvane
