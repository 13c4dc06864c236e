// Any bytes as a layout and a statement: reading them never crashes or hangs, throws only the
// program's own errors, and what the preview shows as new is what a ledger takes. A line "====="
// parts the two.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/async/dispatch_queue.h"
#include "statement_recording.h"

namespace {

using namespace corvane;

void run(std::string_view layout, const std::string& statement) {
  recordWhatIsNew([&](const PortfolioPointer& portfolio) {
    const std::vector<StatementProfile> profiles = {
        StatementProfile::parse(layout, "fuzz", "fuzz.toml")};
    StatementOptions options;
    options.currencyCode = "CAD";
    return previewStatement(statement, profiles, portfolio, options);
  });
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
