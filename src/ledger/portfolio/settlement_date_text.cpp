#include "ledger/portfolio/settlement_date_text.h"

#include "ledger/portfolio/portfolio.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane {

std::string settlementDateText(const PortfolioTransaction& row) {
  DateFormatter formatter;
  formatter.dateStyle = DateFormatter::Style::mediumStyle;
  formatter.timeStyle = DateFormatter::Style::none;
  if (const auto portfolio = row.portfolio.lock()) {
    if (const auto keeper = portfolio->keeper.lock()) {
      formatter.timeZone = keeper->calendar.timeZone();
    }
  }
  return formatter.string(row.settlementDate());
}

}  // namespace corvane
