#include "cli/console/console.h"

#include <chrono>

#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "platform/system/terminal.h"

namespace corvane::cli {
namespace {

class OfflineProvider : public QuoteProvider {
 public:
  [[nodiscard]] std::string providerName() const override { return "YahooFinance"; }

  /// Rates are in the cache under the service's names.
  [[nodiscard]] EquityPointer exchangeRateEquity(const Currency& from,
                                                 const Currency& to) override {
    EquityPointer pair = equityWithId(YahooQuoteProvider::pairId(from, to));
    pair->currency = to;
    return pair;
  }
};

}  // namespace

void Console::present(const Error& error) const {
  err << "corvane-cli: " << error.description().value_or("The command has failed.") << '\n';
  if (const std::string further = error.furtherText(); !further.empty()) {
    err << further << '\n';
  }
}

void Console::warn(const std::string& text) const {
  err << "corvane-cli: " << text << '\n';
}

std::shared_ptr<QuoteProvider> makeOfflineProvider() {
  return std::make_shared<OfflineProvider>();
}

void endIfInterrupted() {
  if (terminal::wasInterrupted()) {
    throw Failed(exitCode::interrupted);
  }
}

void pumpUntil(const std::function<bool()>& isDone, const std::function<void()>& interrupted) {
  constexpr auto betweenLooks = std::chrono::milliseconds(20);
  bool isTold = false;
  do {
    if (terminal::wasInterrupted() && !isTold) {
      isTold = true;
      interrupted();
    }
  } while (!MainLoop::runUntil(isDone, betweenLooks));
}

}  // namespace corvane::cli
