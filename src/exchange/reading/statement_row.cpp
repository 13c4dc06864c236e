#include "exchange/reading/statement_row.h"

namespace corvane {

std::string_view displayName(RowVerdict verdict) {
  switch (verdict) {
    case RowVerdict::isNew:
      return "new";
    case RowVerdict::present:
      return "already there";
    case RowVerdict::perhapsPresent:
      return "perhaps already there";
    case RowVerdict::leftOut:
      return "left out";
    case RowVerdict::belongs:
      return "belongs";
    case RowVerdict::asks:
      return "asks";
    case RowVerdict::refused:
      return "refused";
    case RowVerdict::ledgerRefuses:
      break;
  }
  return "the ledger refuses";
}

}  // namespace corvane
