// Any bytes as a layout and a statement: reading them never crashes or hangs, throws only the
// program's own errors, and what the preview shows as new is what a ledger takes. A line "====="
// parts the two.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "exchange/statements/statement_preview.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/async/dispatch_queue.h"

namespace {

using namespace corvane;

void run(std::string_view layout, const std::string& statement) {
  const auto manager = std::make_shared<PortfolioManager>(std::make_shared<QuoteProvider>());
  const auto portfolio = manager->createPortfolio(Currency::cad());
  try {
    const std::vector<StatementProfile> profiles = {
        StatementProfile::parse(layout, "fuzz", "fuzz.toml")};
    StatementOptions options;
    options.currencyCode = "CAD";
    const StatementPreview preview = previewStatement(statement, profiles, portfolio, options);
    const auto transactions = preview.transactions();
    if (!transactions.empty()) {
      manager->recordTransactions(transactions, portfolio, nullptr);
      if (portfolio->transactions().size() != transactions.size()) {
        std::abort();
      }
    }
  } catch (const Error& error) {
    if (!error.description() || !portfolio->transactions().empty()) {
      std::abort();
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  constexpr std::string_view border = "\n=====\n";
  const std::size_t middle = text.find(border);
  if (middle != text.npos) {
    run(text.substr(0, middle), std::string(text.substr(middle + border.size())));
  } else {
    run("name = \"Fuzz\"\nheading = \"D,T,S,N,A\"\nfields = { date = \"D\", type = \"T\", symbol = "
        "\"S\", shares = \"N\", amount = \"A\" }\nwords = \"standard\"\nround = true\n",
        "D,T,S,N,A\n" + std::string(text));
  }
  return 0;
}
