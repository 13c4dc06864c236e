// Any bytes as an OFX file: its events stay balanced, reading it throws only the program's own
// errors, and what the preview shows as new is what a ledger takes. Bytes that do not begin as OFX
// are taken for the transactions of a statement.

#include "platform/data/ofx.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/profiles/profile_shelf.h"
#include "statement_recording.h"

namespace {

using namespace corvane;

class BalanceChecker : public OFXHandler {
 public:
  void startElement(std::string_view name, std::uint32_t) override { open_.emplace_back(name); }
  void endElement(std::string_view name) override {
    if (open_.empty() || open_.back() != name) {
      std::abort();
    }
    open_.pop_back();
  }
  void value(std::string_view, const std::string& text, std::uint32_t line) override {
    if (line == 0 || text.starts_with(' ') || text.ends_with(' ')) {
      std::abort();
    }
  }

 private:
  std::vector<std::string> open_;
};

void preview(const std::string& file) {
  static const ProfileShelf shelf = ProfileShelf::of({CORVANE_STATEMENTS});
  recordWhatIsNew([&](const PortfolioPointer& portfolio) {
    return previewStatement(file, shelf.profiles, portfolio, StatementOptions());
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  BalanceChecker checker;
  try {
    parseOFX(text, checker);
  } catch (const OFXError& error) {
    (void)error.description();
  }
  if (isOFX(text)) {
    preview(text);
    return 0;
  }
  preview("<OFX><INVSTMTRS><CURDEF>CAD<INVACCTFROM><ACCTID>1</INVACCTFROM><INVTRANLIST>\n" + text +
          "</INVTRANLIST></INVSTMTRS><SECLIST><SECINFO><UNIQUEID>1<TICKER>A</SECINFO></SECLIST>"
          "</OFX>");
  return 0;
}
