#include "presentation/transactions/transaction_mode.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "ledger/transaction/transaction_effect.h"

namespace corvane {
namespace {

using Mode = TransactionMode;
using YieldType = BasicTransaction::YieldType;

constexpr std::array<TransactionModeEntry, 17> modeMenu = {
    {{"Buy", Mode::buy, 'B'},
     {"Sell", Mode::sell, 'S'},
     {},
     {"Transfer In", Mode::deposit, 'I'},
     {"Transfer Out", Mode::withdraw, 'O'},
     {},
     {"Cash Credit", Mode::cashCredit, 'E'},
     {"Cash Expense", Mode::cashExpense, 'X'},
     {},
     {"Dividend", Mode::dividend, 'V'},
     {"Cap. Gains Dividend", Mode::capitalGainsDividend, 'G'},
     {"Reinvested Distribution", Mode::reinvestedDistribution, 'R'},
     {"Return of Capital", Mode::returnOfCapital, 'C'},
     {},
     {"Split/Consolidation", Mode::split, 'T'},
     {},
     {"Journaled Shares", Mode::journaledShares, 'J'}}};

constexpr TransactionModeLayout distribution = {.detailSection = "Distribution details",
                                                .equity = EquityRow::held,
                                                .sharesLabel = "Shares Held:",
                                                .priceLabel = "Return Per Share:",
                                                .totalLabel = "Total Return:",
                                                .equivalentLabel = "Equivalent Return:",
                                                .buttonTitle = "Save",
                                                .offersAllCurrencies = true};

/// In the order of the modes.
constexpr std::array<TransactionModeLayout, 12> layouts = {
    {{.detailSection = "Trade details",
      .equity = EquityRow::search,
      .sharesLabel = "Number of Shares:",
      .priceLabel = "Share Price:",
      .totalLabel = "Total Cost:",
      .equivalentLabel = "Equivalent Cost:",
      .buttonTitle = "Buy"},
     {.detailSection = "Trade details",
      .equity = EquityRow::held,
      .sharesLabel = "Number of Shares:",
      .priceLabel = "Share Price:",
      .totalLabel = "Total Proceeds:",
      .equivalentLabel = "Equivalent Proceeds:",
      .buttonTitle = "Sell",
      .offersAllCurrencies = true},
     {.detailSection = "Transfer details",
      .totalLabel = "Total Deposit:",
      .buttonTitle = "Transfer",
      .offersAllCurrencies = true},
     {.detailSection = "Transfer details",
      .totalLabel = "Total Withdrawal:",
      .buttonTitle = "Transfer"},
     {.detailSection = "Dividend details",
      .equity = EquityRow::held,
      .sharesLabel = "Shares Held:",
      .priceLabel = "Dividend Per Share:",
      .totalLabel = "Total Dividend:",
      .equivalentLabel = "Equivalent Dividend:",
      .buttonTitle = "Save",
      .offersAllCurrencies = true},
     distribution,
     distribution,
     distribution,
     {.detailSection = "Split/consolidation details",
      .equity = EquityRow::held,
      .priorSharesLabel = "Pre-Split Shares:",
      .sharesLabel = "Post-Split Shares:",
      .buttonTitle = "Save"},
     {.detailSection = "Cash adjustment details",
      .totalLabel = "Total Expense:",
      .buttonTitle = "Save"},
     {.detailSection = "Cash adjustment details",
      .totalLabel = "Total Credit:",
      .buttonTitle = "Save",
      .offersAllCurrencies = true},
     {.detailSection = "Journal entry details",
      .equity = EquityRow::search,
      .sharesLabel = "Number of Shares:",
      .equivalentLabel = "Cost Base Added:",
      .buttonTitle = "Save"}}};
static_assert(static_cast<std::size_t>(Mode::journaledShares) + 1 == layouts.size());

constexpr std::array<std::pair<Mode, YieldType>, 4> yieldTypeByTransactionMode = {
    {{Mode::dividend, YieldType::dividend},
     {Mode::capitalGainsDividend, YieldType::capitalGainsDividend},
     {Mode::reinvestedDistribution, YieldType::reinvestedDistribution},
     {Mode::returnOfCapital, YieldType::returnOfCapital}}};

}  // namespace

std::span<const TransactionModeEntry> transactionModeEntries() {
  return modeMenu;
}

std::string_view titleOf(TransactionMode mode) {
  return std::ranges::find_if(modeMenu,
                              [mode](const TransactionModeEntry& entry) {
                                return !entry.title.empty() && entry.mode == mode;
                              })
      ->title;
}

const TransactionModeLayout& layoutOf(TransactionMode mode) {
  return layouts.at(static_cast<std::size_t>(mode));
}

std::optional<YieldType> yieldTypeOf(TransactionMode mode) {
  for (const auto& [yieldMode, type] : yieldTypeByTransactionMode) {
    if (yieldMode == mode) {
      return type;
    }
  }
  return std::nullopt;
}

TransactionMode transactionModeOf(YieldType type) {
  for (const auto& [mode, yieldType] : yieldTypeByTransactionMode) {
    if (yieldType == type) {
      return mode;
    }
  }
  assert(false && "each type of yield has a mode");
  return Mode::dividend;
}

TransactionMode transactionModeOf(const BasicTransaction::Kind& kind) {
  const TransactionEffect effect = transactionEffect(kind);
  switch (effect.type) {
    case TransactionType::trade:
      return effect.sharesAdded < 0 ? Mode::sell : Mode::buy;
    case TransactionType::split:
      return Mode::split;
    case TransactionType::journaledShares:
      return Mode::journaledShares;
    case TransactionType::transfer:
      return effect.amount < 0 ? Mode::withdraw : Mode::deposit;
    case TransactionType::cashAdjustment:
      return effect.amount < 0 ? Mode::cashExpense : Mode::cashCredit;
    case TransactionType::dividend:
    case TransactionType::capitalGainsDividend:
    case TransactionType::reinvestedDistribution:
    case TransactionType::returnOfCapital:
      return transactionModeOf(std::get<BasicTransaction::Yield>(kind).type);
  }
  __builtin_unreachable();
}

}  // namespace corvane
