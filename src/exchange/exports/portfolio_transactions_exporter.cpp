#include "exchange/exports/portfolio_transactions_exporter.h"

#include <utility>

#include "ledger/reports/asset_lines.h"

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

const std::array<PortfolioTransactionsExporter::SchemaField, 16>
    PortfolioTransactionsExporter::schema = {{
        {{"tradeDate", "Trade Date"},
         [](Self& self, const Line& line) -> CellText {
           return self.dateText(line.row.tradeDate());
         }},
        {{"settlementDate", "Settlement Date"},
         [](Self& self, const Line& line) -> CellText {
           return self.dateText(line.row.settlementDate());
         }},
        {{"type", "Transaction Type"},
         [](Self& /*self*/, const Line& line) -> CellText {
           return std::string(exportedWord(line.row.basic.kind));
         }},
        {{"symbol", "Symbol"},
         [](Self& self, const Line& line) -> CellText {
           const EquityPointer* equity = line.row.basic.equity();
           return equity != nullptr ? std::optional(self.symbols_.at(*equity)) : std::nullopt;
         }},
        {{"numberOfShares", "Number of Shares"},
         [](Self& self, const Line& line) -> CellText {
           return self.shareText(numberOfShares(line.effect));
         }},
        {{"sharesNet", "Shares Net"},
         [](Self& self, const Line& line) -> CellText {
           return self.shareText(line.row.sharesNet);
         }},
        {{"cashAdded", "Cash Amount"},
         [](Self& self, const Line& line) -> CellText {
           return line.effect.currency == nullptr
                      ? std::nullopt
                      : self.moneyText(line.effect.amount, line.ownCurrency());
         }},
        {{"cashNet", "Cash Net"},
         [](Self& self, const Line& line) -> CellText {
           return self.moneyText(line.row.cashNet, line.ownCurrency());
         }},
        {{"cashCurrency", "Transaction Currency"},
         [](Self& /*self*/, const Line& line) -> CellText { return codeText(line.ownCurrency()); }},
        {{"exchangeRate", "Exchange Rate †"},
         [](Self& self, const Line& line) -> CellText {
           return self.rateText(exchangeRate(line.effect), line.primaryCurrency());
         }},
        {{"equivalentAmount", "Equivalent Amount †"},
         [](Self& self, const Line& line) -> CellText {
           return self.moneyText(line.effect.equivalentAmount, line.primaryCurrency());
         }},
        {{"equivalentCurrency", "Portfolio Currency †"},
         [](Self& /*self*/, const Line& line) -> CellText {
           return line.row.basic.equity() != nullptr ? codeText(line.primaryCurrency())
                                                     : std::nullopt;
         }},
        {{"costBaseAdded", "Cost Base Added †"},
         [](Self& self, const Line& line) -> CellText {
           return self.moneyText(costBaseAddedBy(line.row), line.primaryCurrency());
         }},
        {{"costBaseNet", "Cost Base Net †"},
         [](Self& self, const Line& line) -> CellText {
           return self.moneyText(line.row.costBaseNet(), line.primaryCurrency());
         }},
        {{"capitalGain", "Capital Gain †"},
         [](Self& self, const Line& line) -> CellText {
           return self.moneyText(line.row.capitalGain(), line.primaryCurrency());
         }},
        {{"note", "Note"},
         [](Self& /*self*/, const Line& line) -> CellText { return line.row.basic.note; }},
    }};

std::shared_ptr<PortfolioTransactionsExporter> PortfolioTransactionsExporter::make(
    const Portfolio& portfolio, std::vector<TransactionPointer> transactions,
    UserDefaults* defaults) {
  return std::shared_ptr<PortfolioTransactionsExporter>(
      new PortfolioTransactionsExporter(portfolio, std::move(transactions), defaults));
}

PortfolioTransactionsExporter::PortfolioTransactionsExporter(
    const Portfolio& portfolio, std::vector<TransactionPointer> transactions,
    UserDefaults* defaults)
    : PortfolioExporter(defaults, std::string(userDefaultsKey), fieldsOf(schema),
                        transactions.size()),
      transactions_(std::move(transactions)) {
  writeDaysOf(portfolio);
  setDefaultFilename(portfolio.name);
  for (const TransactionPointer& row : transactions_) {
    if (const EquityPointer* equity = row->basic.equity()) {
      symbols_.try_emplace(*equity, (*equity)->symbol);
    }
  }
}

std::optional<Currency> PortfolioTransactionsExporter::Line::primaryCurrency() const {
  const auto portfolio = row.portfolio.lock();
  return portfolio ? std::optional(portfolio->primaryCurrency()) : std::nullopt;
}

std::optional<Currency> PortfolioTransactionsExporter::Line::ownCurrency() const {
  const Currency* currency = row.basic.currency();
  return currency != nullptr ? std::optional(*currency) : std::nullopt;
}

PortfolioExporter::CellText PortfolioTransactionsExporter::cellText(std::size_t row,
                                                                    std::size_t field) {
  const PortfolioTransaction& written = *transactions_[row];
  return schema.at(field).text(*this, {written, transactionEffect(written.basic.kind)});
}

}  // namespace corvane
