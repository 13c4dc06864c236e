#include "presentation/transactions/transaction_text.h"

#include <array>
#include <optional>
#include <string>

#include "core/market/portfolio_asset.h"
#include "core/money/decimal_number_formatter.h"
#include "ledger/reports/asset_lines.h"
#include "ledger/transaction/transaction_effect.h"
#include "platform/text/formats/date_formatter.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

std::string dateText(Date date, const Calendar& calendar) {
  return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                       .timeZone = calendar.timeZone()}
      .string(date);
}

Decimal wholePart(const Decimal& value) {
  return rounded(abs(value), 0, RoundingMode::down);
}

Decimal greatestCommonDivisor(Decimal left, Decimal right) {
  while (!right.isZero() && !right.isNaN()) {
    const Decimal remainder = left - wholePart(left / right) * right;
    left = right;
    right = abs(remainder);
  }
  return left;
}

/// "3-for-1"
std::string ratioText(const Decimal& netShares, const Decimal& priorShares) {
  const Decimal after = wholePart(netShares);
  const Decimal before = wholePart(priorShares);
  const Decimal divisor = greatestCommonDivisor(after, before);
  if (divisor.isZero() || divisor.isNaN()) {
    return after.description() + "-for-" + before.description();
  }
  return (after / divisor).description() + "-for-" + (before / divisor).description();
}

std::string descriptionText(const BasicTransaction::Kind& kind) {
  const TransactionEffect effect = transactionEffect(kind);
  switch (effect.type) {
    case TransactionType::trade:
      return effect.isSale() ? "Sell" : "Buy";
    case TransactionType::split:
      return "Split (" + ratioText(*effect.splitInto, *effect.declaredShares) + ")";
    case TransactionType::journaledShares:
      return "Journal";
    case TransactionType::dividend:
      return "Dividend";
    case TransactionType::capitalGainsDividend:
      return "Cap. Gains Dividend";
    case TransactionType::reinvestedDistribution:
      return "Reinvested Cap. Gains Dist.";
    case TransactionType::returnOfCapital:
      return "Return of Capital";
    case TransactionType::transfer:
      return effect.amount < 0 ? "Transfer Out" : "Transfer In";
    case TransactionType::cashAdjustment:
      return effect.amount < 0 ? "Cash Expense" : "Cash Credit";
  }
  return "";
}

AttributedText nameText(const BasicTransaction& basic) {
  if (const EquityPointer* equity = basic.equity()) {
    return PortfolioAsset(*equity).title();
  }
  const Currency* currency = basic.currency();
  return currency == nullptr ? AttributedText() : PortfolioAsset(*currency).title();
}

std::optional<Decimal> sharesAdded(const BasicTransaction::Kind& kind) {
  const TransactionEffect effect = transactionEffect(kind);
  return effect.movesShares() ? std::optional(effect.sharesAdded) : std::nullopt;
}

/// A price as its column shows it; `currency` is never null.
struct SharePrice {
  Decimal value;
  const Currency* currency;
  int maximumDigits;
};

/// Of a trade what a share has cost, of income what was paid on one.
std::optional<SharePrice> sharePrice(const TransactionEffect& effect) {
  if (effect.type == TransactionType::trade) {
    return SharePrice{-effect.amount / effect.sharesAdded, effect.currency,
                      effect.currency->minorUnits};
  }
  if (!effect.isYield() || effect.declaredShares.value_or(0) <= 0) {
    return std::nullopt;
  }
  return SharePrice{effect.amount / *effect.declaredShares, effect.currency, maximumPriceDigits};
}

AttributedText sharePriceCell(const BasicTransaction::Kind& kind) {
  const auto price = sharePrice(transactionEffect(kind));
  if (!price) {
    return {};
  }
  auto formatter = DecimalNumberFormatter::money(*price->currency);
  formatter.maximumFractionDigits = price->maximumDigits;
  return numericCell(formatter.string(price->value).value_or(""));
}

AttributedText totalValueCell(const BasicTransaction::Kind& kind) {
  const TransactionEffect effect = transactionEffect(kind);
  if (effect.currency == nullptr) {
    return {};
  }
  return effect.isYield() ? Formatting::moneyCell(effect.amount, *effect.currency, false)
                          : moneyTextCell(effect.amount, *effect.currency);
}

AttributedText gainCell(const std::optional<Decimal>& amount, const Currency& primary) {
  return amount ? Formatting::moneyCell(*amount, primary, false) : AttributedText();
}

struct LedgerLine {
  const PortfolioTransaction& row;
  const BasicTransaction& basic;
  const Currency& primary;
  const Calendar& calendar;
};

AttributedText netCashCell(const LedgerLine& line) {
  const Currency* currency = line.basic.currency();
  return currency == nullptr ? AttributedText() : moneyTextCell(line.row.cashNet, *currency);
}

constexpr std::array<ColumnOf<LedgerLine>, 13> ledgerColumns = {{
    {{"tradeDate", "Trade Date"},
     [](const LedgerLine& line) {
       return AttributedText(dateText(line.basic.tradeDate, line.calendar));
     }},
    {{"name", "Name"}, [](const LedgerLine& line) { return nameText(line.basic); }},
    {{"description", "Description"},
     [](const LedgerLine& line) { return AttributedText(descriptionText(line.basic.kind)); }},
    {{"settlementDate", "Settlement Date"},
     [](const LedgerLine& line) {
       return AttributedText(dateText(line.basic.settlementDate, line.calendar));
     }},
    {{"sharesAdded", "Shares Added", true},
     [](const LedgerLine& line) { return sharesCell(sharesAdded(line.basic.kind)); }},
    {{"sharePrice", "Share Price", true},
     [](const LedgerLine& line) { return sharePriceCell(line.basic.kind); }},
    {{"totalValue", "Total Value", true},
     [](const LedgerLine& line) { return totalValueCell(line.basic.kind); }},
    {{netCashColumn, "Net Cash", true}, netCashCell},
    {{"sharesHeld", "Shares Held", true},
     [](const LedgerLine& line) { return sharesCell(line.row.sharesNet); }},
    {{"costBaseAdded", "Cost Base Added", true},
     [](const LedgerLine& line) { return gainCell(costBaseAddedBy(line.row), line.primary); }},
    {{"costBaseNet", "Net Cost Base", true},
     [](const LedgerLine& line) { return gainCell(line.row.costBaseNet(), line.primary); }},
    {{"capitalGain", "Capital Gain", true},
     [](const LedgerLine& line) { return gainCell(line.row.capitalGain(), line.primary); }},
    {{"note", "Note"},
     [](const LedgerLine& line) { return AttributedText(line.basic.note.value_or("")); }},
}};

void appendFigure(const std::optional<Decimal>& value, int minimumDigits,
                  std::optional<int> maximumDigits, std::vector<TransactionFigure>& figures) {
  if (value && !value->isNaN()) {
    figures.push_back({*value, minimumDigits, maximumDigits});
  }
}

}  // namespace

std::vector<TableColumn> transactionColumns() {
  return columnsOf(ledgerColumns);
}

AttributedText transactionText(const PortfolioTransaction& row, std::size_t column,
                               const Currency& primary, const Calendar& calendar) {
  return ledgerColumns.at(column).cell({row, row.basic, primary, calendar});
}

std::string transactionDescription(const BasicTransaction& transaction) {
  return descriptionText(transaction.kind);
}

AttributedText transactionName(const BasicTransaction& transaction) {
  return nameText(transaction);
}

std::string transactionDateText(Date date, const Calendar& calendar) {
  return dateText(date, calendar);
}

void appendFigures(const PortfolioTransaction& row, const Currency& primary, bool showsCash,
                   std::vector<TransactionFigure>& figures) {
  const TransactionEffect effect = transactionEffect(row.basic.kind);
  if (effect.movesShares()) {
    appendFigure(effect.sharesAdded, 0, std::nullopt, figures);
  }
  appendFigure(row.sharesNet, 0, std::nullopt, figures);
  if (const auto price = sharePrice(effect)) {
    appendFigure(price->value, price->currency->minorUnits, price->maximumDigits, figures);
  }
  if (effect.currency != nullptr) {
    const int units = effect.currency->minorUnits;
    appendFigure(effect.amount, units, units, figures);
    if (showsCash) {
      appendFigure(row.cashNet, units, units, figures);
    }
  }
  const int units = primary.minorUnits;
  for (const auto& money : {costBaseAddedBy(row), row.costBaseNet(), row.capitalGain()}) {
    appendFigure(money, units, units, figures);
  }
}

}  // namespace corvane
