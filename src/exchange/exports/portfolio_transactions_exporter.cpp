#include "exchange/exports/portfolio_transactions_exporter.h"

#include <array>
#include <utility>

#include "platform/overloaded.h"

namespace corvane {
namespace {

using Trade = BasicTransaction::Trade;
using Split = BasicTransaction::Split;
using JournaledShares = BasicTransaction::JournaledShares;
using Yield = BasicTransaction::Yield;
using Transfer = BasicTransaction::Transfer;
using CashAdjustment = BasicTransaction::CashAdjustment;
using Kind = BasicTransaction::Kind;

std::string_view exportedWord(BasicTransaction::YieldType type) {
  switch (type) {
    case BasicTransaction::YieldType::dividend:
      return "Dividend";
    case BasicTransaction::YieldType::capitalGainsDividend:
      return "Cap. Gains Dividend";
    case BasicTransaction::YieldType::reinvestedDistribution:
      return "Reinvested Distribution";
    case BasicTransaction::YieldType::returnOfCapital:
      break;
  }
  return "Return of Capital";
}

std::optional<Decimal> numberOfShares(const Kind& kind) {
  using Count = std::optional<Decimal>;
  return std::visit(
      Overloaded{[](const Trade& trade) { return Count(trade.sharesAdded); },
                 [](const Split& split) { return Count(split.priorShares); },
                 [](const JournaledShares& journaled) { return Count(journaled.sharesAdded); },
                 [](const Yield& yield) { return yield.netShares; },
                 [](const Transfer&) { return Count(); },
                 [](const CashAdjustment&) { return Count(); }},
      kind);
}

/// What the transaction adds to the cash on hand, in its own currency.
std::optional<Decimal> cashAdded(const Kind& kind) {
  using Amount = std::optional<Decimal>;
  return std::visit(
      Overloaded{[](const Trade& trade) { return Amount(0 - trade.cashDisposed.amount); },
                 [](const Yield& yield) { return Amount(yield.netAmount.amount); },
                 [](const Transfer& transfer) { return Amount(transfer.amount.amount); },
                 [](const CashAdjustment& adjustment) { return Amount(adjustment.amount.amount); },
                 [](const Split&) { return Amount(); },
                 [](const JournaledShares&) { return Amount(); }},
      kind);
}

/// The same in the primary currency, for what comes with such an amount.
std::optional<Decimal> equivalentAmount(const Kind& kind) {
  if (const auto* trade = std::get_if<Trade>(&kind)) {
    return 0 - trade->equivalentCashDisposed;
  }
  if (const auto* yield = std::get_if<Yield>(&kind)) {
    return yield->equivalentNetAmount;
  }
  return std::nullopt;
}

/// Units of the primary currency for one of the transaction's.
std::optional<Decimal> exchangeRate(const Kind& kind) {
  if (const auto* trade = std::get_if<Trade>(&kind)) {
    return trade->equivalentCashDisposed / trade->cashDisposed.amount;
  }
  if (const auto* yield = std::get_if<Yield>(&kind)) {
    return yield->equivalentNetAmount / yield->netAmount.amount;
  }
  return std::nullopt;
}

std::optional<Decimal> costBaseAdded(const PortfolioTransaction& row) {
  const auto net = row.costBaseNet();
  return net && row.costBasePrior ? std::optional(*net - *row.costBasePrior) : std::nullopt;
}

std::optional<std::string> codeText(const std::optional<Currency>& currency) {
  return currency ? std::optional<std::string>(std::string_view(currency->code)) : std::nullopt;
}

}  // namespace

std::string_view exportedWord(const BasicTransaction::Kind& kind) {
  return std::visit(
      Overloaded{[](const Trade& trade) {
                   return std::string_view(trade.sharesAdded > 0 ? "Buy" : "Sell");
                 },
                 [](const Split& split) {
                   return std::string_view(split.priorShares < split.netShares ? "Split"
                                                                               : "Consolidation");
                 },
                 [](const JournaledShares&) { return std::string_view("Journal"); },
                 [](const Yield& yield) { return exportedWord(yield.type); },
                 [](const Transfer& transfer) {
                   return std::string_view(transfer.amount.amount > 0 ? "Transfer In"
                                                                      : "Transfer Out");
                 },
                 [](const CashAdjustment&) { return std::string_view("Cash Adjustment"); }},
      kind);
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
  const Kind& kind = row.basic.kind;
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
      return std::string(exportedWord(kind));
    case SchemaField::symbol: {
      const EquityPointer* equity = row.basic.equity();
      return equity != nullptr ? std::optional(symbols_.at(*equity)) : std::nullopt;
    }
    case SchemaField::numberOfShares:
      return shareText(numberOfShares(kind));
    case SchemaField::sharesNet:
      return shareText(row.sharesNet);
    case SchemaField::cashAdded:
      return moneyText(cashAdded(kind), own());
    case SchemaField::cashNet:
      return moneyText(row.cashNet, own());
    case SchemaField::cashCurrency:
      return codeText(own());
    case SchemaField::exchangeRate:
      return rateText(exchangeRate(kind), primary());
    case SchemaField::equivalentAmount:
      return moneyText(equivalentAmount(kind), primary());
    case SchemaField::equivalentCurrency:
      return row.basic.equity() != nullptr ? codeText(primary()) : std::nullopt;
    case SchemaField::costBaseAdded:
      return moneyText(costBaseAdded(row), primary());
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
