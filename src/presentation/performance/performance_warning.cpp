#include "presentation/performance/performance_warning.h"

#include <algorithm>
#include <utility>

#include "presentation/text/formatting.h"

namespace corvane {
namespace {

constexpr std::size_t mostNamed = 5;
constexpr const char* noBreakSpace = "\u00A0";

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) {
    text += (text.empty() ? "" : separator) + part;
  }
  return text;
}

/// "symbol (ABC)", "symbols (ABC, XYZ)", "6 symbols"; empty for none.
std::string phrase(std::vector<std::string> names, const std::string& singular,
                   const std::string& plural) {
  if (names.empty()) {
    return "";
  }
  if (names.size() > mostNamed) {
    return std::to_string(names.size()) + noBreakSpace + plural;
  }
  std::ranges::sort(names);
  return (names.size() == 1 ? singular : plural) + " (" + joined(names, ", ") + ")";
}

}  // namespace

std::string performanceWarning(const MissingPrices& missing, const PortfolioSnapshotGroup* shown,
                               const UserDefaults& defaults) {
  std::vector<std::string> symbols;
  std::vector<std::string> codes;
  if (shown != nullptr) {
    // A rate that only the price of an equity needs is missed as much as that of cash.
    CurrencySet needed = shown->currenciesHeldOrTraded;
    for (const EquityPointer& equity : shown->equitiesHeldOrTraded) {
      needed.insert(equity->currency);
      if (missing.incompleteEquities.contains(equity)) {
        symbols.push_back(equity->symbol);
      }
    }
    for (const Currency& currency : missing.incompleteCurrencies) {
      if (needed.contains(currency)) {
        codes.emplace_back(std::string_view(currency.code));
      }
    }
  }
  std::optional<std::string> lastDay;
  if (!missing.endsOfStoredPrices.empty()) {
    // The one that stands for all is the oldest: nothing on the screen is older than it says.
    const auto oldest = std::ranges::min_element(missing.endsOfStoredPrices, {},
                                                 [](const auto& entry) { return entry.second; });
    lastDay = Formatting::equityDateFormatter(*oldest->first, defaults).string(oldest->second);
  }
  return performanceWarning(std::move(symbols), std::move(codes), lastDay);
}

std::string performanceWarning(std::vector<std::string> symbols,
                               std::vector<std::string> currencies,
                               const std::optional<std::string>& lastStoredDate) {
  std::vector<std::string> phrases = {phrase(std::move(symbols), "symbol", "symbols"),
                                      phrase(std::move(currencies), "currency", "currencies")};
  std::erase(phrases, "");
  std::vector<std::string> sentences;
  if (lastStoredDate) {
    sentences.push_back("⚠️ The market cannot be reached. Prices from the cache, up to " +
                        *lastStoredDate + ".");
  }
  if (!phrases.empty()) {
    sentences.push_back("⚠️ Past performance is unavailable for " + joined(phrases, " and ") +
                        ". Graphed totals may be understated.");
  }
  return joined(sentences, " ");
}

}  // namespace corvane
