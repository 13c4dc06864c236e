// The columns of an exported ledger, as the importer places them.
#pragma once

#include <string>
#include <vector>

namespace corvane::testing {

/// The fields of the importer that stand in the columns of the exporter.
inline const std::vector<std::string> importedColumns = {"tradeDate",
                                                         "settlementDate",
                                                         "type",
                                                         "symbol",
                                                         "numberOfShares",
                                                         "sharesNet",
                                                         "cashAmount",
                                                         "",
                                                         "cashCurrency",
                                                         "exchangeRate",
                                                         "equivalentAmount",
                                                         "",
                                                         "costBaseAdded",
                                                         "",
                                                         "",
                                                         "note"};

}  // namespace corvane::testing
