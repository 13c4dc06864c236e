#include "exchange/exports/portfolio_transactions_exporter.h"

#include <array>
#include <utility>

#include "ledger/reports/asset_lines.h"
#include "ledger/transaction/transaction_effect.h"

namespace corvane {
namespace {

/// The shares that it moves, or else those that it applies to.
std::optional<Decimal> numberOfShares(const TransactionEffect& effect) {
  return effect.movesShares() ? effect.sharesAdded : effect.declaredShares;
}

/// Units of the primary currency for one of the transaction's.
std::optional<Decimal> exchangeRate(const TransactionEffect& effect) {
  return effect.equivalentAmount ? std::optional(*effect.equivalentAmount / effect.amount)
                                 : std::nullopt;
}

std::optional<std::string> codeText(const std::optional<Currency>& currency) {
  return currency ? std::optional<std::string>(std::string_view(currency->code)) : std::nullopt;
}

}  // namespace

std::string_view exportedWord(const BasicTransaction::Kind& kind) {
  const TransactionEffect effect = transactionEffect(kind);
  switch (effect.type) {
    case TransactionType::trade:
      return effect.sharesAdded > 0 ? "Buy" : "Sell";
    case TransactionType::split:
      return *effect.declaredShares < *effect.splitInto ? "Split" : "Consolidation";
    case TransactionType::journaledShares:
      return "Journal";
    case TransactionType::dividend:
      return "Dividend";
    case TransactionType::capitalGainsDividend:
      return "Cap. Gains Dividend";
    case TransactionType::reinvestedDistribution:
      return "Reinvested Distribution";
    case TransactionType::returnOfCapital:
      return "Return of Capital";
    case TransactionType::transfer:
      return effect.amount > 0 ? "Transfer In" : "Transfer Out";
    case TransactionType::cashAdjustment:
      return "Cash Adjustment";
  }
  return "";
}

std::shared_ptr<PortfolioTransactionsExporter> PortfolioTransactionsExporter::make(
    const Portfolio& portfolio, std::vector<TransactionPointer> transactions,
    UserDefaults* defaults) {
  return std::shared_ptr<PortfolioTransactionsExporter>(
      new PortfolioTransactionsExporter(portfolio, std::move(transactions), defaults));
}

PortfolioTransactionsExporter::PortfolioTransactionsExporter(
    const Portfolio& portfolio, std::vector<TransactionPointer> transactions,
    UserDefaults* defaults)
    : PortfolioExporter(
          defaults, std::string(userDefaultsKey),
          [] {
            // In the order of the SchemaField.
            static constexpr std::array<Field, 16> fields = {{
                {"tradeDate", "Trade Date"},
                {"settlementDate", "Settlement Date"},
                {"type", "Transaction Type"},
                {"symbol", "Symbol"},
                {"numberOfShares", "Number of Shares"},
                {"sharesNet", "Shares Net"},
                {"cashAdded", "Cash Amount"},
                {"cashNet", "Cash Net"},
                {"cashCurrency", "Transaction Currency"},
                {"exchangeRate", "Exchange Rate †"},
                {"equivalentAmount", "Equivalent Amount †"},
                {"equivalentCurrency", "Portfolio Currency †"},
                {"costBaseAdded", "Cost Base Added †"},
                {"costBaseNet", "Cost Base Net †"},
                {"capitalGain", "Capital Gain †"},
                {"note", "Note"},
            }};
            return std::span<const Field>(fields);
          }(),
          transactions.size()),
      transactions_(std::move(transactions)) {
  setDefaultFilename(portfolio.name);
  for (const TransactionPointer& row : transactions_) {
    if (const EquityPointer* equity = row->basic.equity()) {
      symbols_.try_emplace(*equity, (*equity)->symbol);
    }
  }
}

std::optional<std::string> PortfolioTransactionsExporter::cellText(std::size_t rowIndex,
                                                                   std::size_t field) {
  const PortfolioTransaction& row = *transactions_[rowIndex];
  const TransactionEffect effect = transactionEffect(row.basic.kind);
  const auto primary = [&] {
    const auto portfolio = row.portfolio.lock();
    return portfolio ? std::optional(portfolio->primaryCurrency()) : std::nullopt;
  };
  const auto own = [&] {
    const Currency* currency = row.basic.currency();
    return currency != nullptr ? std::optional(*currency) : std::nullopt;
  };
  switch (static_cast<SchemaField>(field)) {
    case SchemaField::tradeDate:
      return dateText(row.tradeDate());
    case SchemaField::settlementDate:
      return dateText(row.settlementDate());
    case SchemaField::type:
      return std::string(exportedWord(row.basic.kind));
    case SchemaField::symbol: {
      const EquityPointer* equity = row.basic.equity();
      return equity != nullptr ? std::optional(symbols_.at(*equity)) : std::nullopt;
    }
    case SchemaField::numberOfShares:
      return shareText(numberOfShares(effect));
    case SchemaField::sharesNet:
      return shareText(row.sharesNet);
    case SchemaField::cashAdded:
      return effect.currency == nullptr ? std::nullopt : moneyText(effect.amount, own());
    case SchemaField::cashNet:
      return moneyText(row.cashNet, own());
    case SchemaField::cashCurrency:
      return codeText(own());
    case SchemaField::exchangeRate:
      return rateText(exchangeRate(effect), primary());
    case SchemaField::equivalentAmount:
      return moneyText(effect.equivalentAmount, primary());
    case SchemaField::equivalentCurrency:
      return row.basic.equity() != nullptr ? codeText(primary()) : std::nullopt;
    case SchemaField::costBaseAdded:
      return moneyText(costBaseAddedBy(row), primary());
    case SchemaField::costBaseNet:
      return moneyText(row.costBaseNet(), primary());
    case SchemaField::capitalGain:
      return moneyText(row.capitalGain(), primary());
    case SchemaField::note:
      return row.basic.note;
  }
  return std::nullopt;
}

}  // namespace corvane
