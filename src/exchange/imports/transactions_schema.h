// The fields that a row of transactions may have.
#pragma once

#include <array>
#include <string_view>

namespace corvane {

/// A field as an import asks for it.
struct TransactionsSchemaField {
  std::string_view rawValue;
  std::string_view title;
  std::string_view exportedTitle;  ///< what stands over it in a ledger that was exported
  bool isNumber = false;
};

/// In the order in which a setup offers them.
inline constexpr std::array<TransactionsSchemaField, 12> transactionsSchema = {{
    {"type", "Transaction Type", "Transaction Type"},
    {"tradeDate", "Trade Date", "Trade Date"},
    {"settlementDate", "Settlement Date", "Settlement Date"},
    {"symbol", "Symbol/Description", "Symbol"},
    {"numberOfShares", "Number of Shares", "Number of Shares", true},
    {"sharesNet", "Shares Net", "Shares Net", true},
    {"cashAmount", "Cash Amount", "Cash Amount", true},
    {"cashCurrency", "Transaction Currency", "Transaction Currency"},
    {"exchangeRate", "Exchange Rate", "Exchange Rate †", true},
    {"equivalentAmount", "Equivalent Amount †", "Equivalent Amount †", true},
    {"costBaseAdded", "Cost Base Added †", "Cost Base Added †", true},
    {"note", "Notes", "Note"},
}};

}  // namespace corvane
