#include <algorithm>
#include <cctype>

#include "platform/data/json.h"
#include "samplemarket/service/answer.h"

namespace corvane::samplemarket {

namespace {

std::string upperCased(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(),
                         [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
  return result;
}

bool hasWordStartingWith(std::string_view name, std::string_view text) {
  for (std::size_t found = name.find(text); found != std::string_view::npos;
       found = name.find(text, found + 1)) {
    if (found == 0 || std::isalnum(static_cast<unsigned char>(name[found - 1])) == 0) {
      return true;
    }
  }
  return false;
}

/// How well `instrument` fits `text`, which is in capitals; 0 for not at all.
int score(const Instrument& instrument, std::string_view text) {
  if (instrument.symbol == text) {
    return 30000;
  }
  if (instrument.symbol.starts_with(text) ||
      instrument.symbol.starts_with("^" + std::string(text))) {
    return 20000;
  }
  return hasWordStartingWith(upperCased(instrument.name), text) ? 10000 : 0;
}

JSONValue result(const Instrument& instrument, int itsScore) {
  const Exchange& place = exchange(instrument.exchange);
  JSONValue::Object fields = {{"exchange", place.code},
                              {"shortname", instrument.name},
                              {"quoteType", quoteType(instrument.kind)},
                              {"symbol", instrument.symbol},
                              {"index", "quotes"},
                              {"score", itsScore},
                              {"typeDisp", quoteType(instrument.kind)},
                              {"longname", instrument.name},
                              {"exchDisp", place.fullName},
                              {"isYahooFinance", true}};
  if (!instrument.sector.empty()) {
    fields.emplace_back("sector", instrument.sector);
    fields.emplace_back("industry", instrument.sector);
    fields.emplace_back("dispSecIndFlag", false);
  }
  return fields;
}

std::optional<Instrument> pairNamed(std::string text) {
  std::erase_if(text, [](char byte) { return byte == '/' || byte == ' '; });
  return instrumentNamed(text.ends_with("=X") ? text : text.size() == 6 ? text + "=X" : "");
}

}  // namespace

Answer searchAnswer(std::string_view text) {
  const std::string wanted = upperCased(text);
  std::vector<std::pair<int, Instrument>> found;
  if (!wanted.empty()) {
    if (auto pair = pairNamed(wanted)) {
      found.emplace_back(30000, *std::move(pair));
    }
    for (const Instrument& instrument : listedInstruments()) {
      if (const int fit = score(instrument, wanted); fit > 0) {
        found.emplace_back(fit, instrument);
      }
    }
  }
  std::ranges::stable_sort(found, std::ranges::greater(),
                           [](const auto& entry) { return entry.first; });
  JSONValue::Array quotes;
  for (const auto& [itsScore, instrument] : found) {
    quotes.push_back(result(instrument, itsScore));
  }
  JSONValue root;
  const auto count = quotes.size();
  root.set("count", count);
  root.set("quotes", std::move(quotes));
  root.set("news", JSONValue::Array());
  return {.body = root.text()};
}

}  // namespace corvane::samplemarket
