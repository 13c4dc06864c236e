#include "presentation/transactions/transaction_text.h"

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

AttributedText sharePriceCell(const BasicTransaction::Kind& kind) {
  const TransactionEffect effect = transactionEffect(kind);
  if (effect.type == TransactionType::trade) {
    return moneyTextCell(-effect.amount / effect.sharesAdded, *effect.currency);
  }
  if (!effect.isYield() || effect.declaredShares.value_or(0) <= 0) {
    return {};
  }
  auto formatter = DecimalNumberFormatter::money(*effect.currency);
  formatter.maximumFractionDigits = maximumPriceDigits;
  return numericCell(formatter.string(effect.amount / *effect.declaredShares).value_or(""));
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

}  // namespace

std::vector<TableColumn> transactionColumns() {
  return {{"tradeDate", "Trade Date"},
          {"name", "Name"},
          {"description", "Description"},
          {"settlementDate", "Settlement Date"},
          {"sharesAdded", "Shares Added", true},
          {"sharePrice", "Share Price", true},
          {"totalValue", "Total Value", true},
          {"netCash", "Net Cash", true},
          {"sharesHeld", "Shares Held", true},
          {"costBaseAdded", "Cost Base Added", true},
          {"costBaseNet", "Net Cost Base", true},
          {"capitalGain", "Capital Gain", true},
          {"note", "Note"}};
}

AttributedText transactionText(const PortfolioTransaction& row, TransactionColumn column,
                               const Currency& primary, const Calendar& calendar) {
  const BasicTransaction& basic = row.basic;
  switch (column) {
    case TransactionColumn::tradeDate:
      return AttributedText(dateText(basic.tradeDate, calendar));
    case TransactionColumn::settlementDate:
      return AttributedText(dateText(basic.settlementDate, calendar));
    case TransactionColumn::description:
      return AttributedText(descriptionText(basic.kind));
    case TransactionColumn::name:
      return nameText(basic);
    case TransactionColumn::sharesAdded:
      return sharesCell(sharesAdded(basic.kind));
    case TransactionColumn::sharePrice:
      return sharePriceCell(basic.kind);
    case TransactionColumn::totalValue:
      return totalValueCell(basic.kind);
    case TransactionColumn::netCash:
      return basic.currency() == nullptr ? AttributedText()
                                         : moneyTextCell(row.cashNet, *basic.currency());
    case TransactionColumn::sharesHeld:
      return sharesCell(row.sharesNet);
    case TransactionColumn::costBaseAdded:
      return gainCell(costBaseAddedBy(row), primary);
    case TransactionColumn::costBaseNet:
      return gainCell(row.costBaseNet(), primary);
    case TransactionColumn::capitalGain:
      return gainCell(row.capitalGain(), primary);
    case TransactionColumn::note:
      return AttributedText(basic.note.value_or(""));
  }
  return {};
}

}  // namespace corvane
