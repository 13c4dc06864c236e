#include "ledger/portfolio/settlement_date_text.h"

#include "ledger/manager/portfolio_manager.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane {

std::string settlementDateText(const PortfolioTransaction& row) {
  DateFormatter formatter;
  formatter.dateStyle = DateFormatter::Style::mediumStyle;
  formatter.timeStyle = DateFormatter::Style::none;
  if (const auto portfolio = row.portfolio.lock()) {
    if (const auto manager = portfolio->manager.lock()) {
      formatter.timeZone = manager->calendar.timeZone();
    }
  }
  return formatter.string(row.settlementDate());
}

}  // namespace corvane
