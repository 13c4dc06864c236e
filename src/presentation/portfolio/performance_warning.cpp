#include "presentation/portfolio/performance_warning.h"

#include <algorithm>
#include <utility>

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
