#include "presentation/transactions/transaction_text.h"

#include <optional>
#include <string>
#include <variant>

#include "core/market/portfolio_asset.h"
#include "core/money/decimal_number_formatter.h"
#include "platform/overloaded.h"
#include "platform/text/formats/date_formatter.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

using Trade = BasicTransaction::Trade;
using Split = BasicTransaction::Split;
using JournaledShares = BasicTransaction::JournaledShares;
using Yield = BasicTransaction::Yield;
using YieldType = BasicTransaction::YieldType;
using Transfer = BasicTransaction::Transfer;
using CashAdjustment = BasicTransaction::CashAdjustment;

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
std::string ratioText(const Split& split) {
  const Decimal after = wholePart(split.netShares);
  const Decimal before = wholePart(split.priorShares);
  const Decimal divisor = greatestCommonDivisor(after, before);
  if (divisor.isZero() || divisor.isNaN()) {
    return after.description() + "-for-" + before.description();
  }
  return (after / divisor).description() + "-for-" + (before / divisor).description();
}

std::string yieldText(YieldType type) {
  switch (type) {
    case YieldType::dividend:
      return "Dividend";
    case YieldType::capitalGainsDividend:
      return "Cap. Gains Dividend";
    case YieldType::reinvestedDistribution:
      return "Reinvested Cap. Gains Dist.";
    case YieldType::returnOfCapital:
      return "Return of Capital";
  }
  return "";
}

std::string descriptionText(const BasicTransaction::Kind& kind) {
  return std::visit(
      Overloaded{
          [](const Trade& trade) { return std::string(trade.sharesAdded < 0 ? "Sell" : "Buy"); },
          [](const Split& split) { return "Split (" + ratioText(split) + ")"; },
          [](const JournaledShares&) { return std::string("Journal"); },
          [](const Yield& yield) { return yieldText(yield.type); },
          [](const Transfer& transfer) {
            return std::string(transfer.amount.amount < 0 ? "Transfer Out" : "Transfer In");
          },
          [](const CashAdjustment& adjustment) {
            return std::string(adjustment.amount.amount < 0 ? "Cash Expense" : "Cash Credit");
          }},
      kind);
}

AttributedText nameText(const BasicTransaction& basic) {
  if (const EquityPointer* equity = basic.equity()) {
    return PortfolioAsset(*equity).title();
  }
  const Currency* currency = basic.currency();
  return currency == nullptr ? AttributedText() : PortfolioAsset(*currency).title();
}

std::optional<Decimal> sharesAdded(const BasicTransaction::Kind& kind) {
  if (const auto* trade = std::get_if<Trade>(&kind)) {
    return trade->sharesAdded;
  }
  if (const auto* journaled = std::get_if<JournaledShares>(&kind)) {
    return journaled->sharesAdded;
  }
  return std::nullopt;
}

AttributedText sharePriceCell(const BasicTransaction::Kind& kind) {
  if (const auto* trade = std::get_if<Trade>(&kind)) {
    const Decimal price = trade->cashDisposed.amount / trade->sharesAdded;
    return moneyTextCell(price, trade->cashDisposed.currency);
  }
  const auto* yield = std::get_if<Yield>(&kind);
  if (yield == nullptr || yield->netShares.value_or(0) <= 0) {
    return {};
  }
  auto formatter = DecimalNumberFormatter::money(yield->netAmount.currency);
  formatter.maximumFractionDigits = maximumPriceDigits;
  return numericCell(formatter.string(yield->netAmount.amount / *yield->netShares).value_or(""));
}

AttributedText totalValueCell(const BasicTransaction::Kind& kind) {
  return std::visit(
      Overloaded{[](const Trade& trade) {
                   return moneyTextCell(0 - trade.cashDisposed.amount, trade.cashDisposed.currency);
                 },
                 [](const Split&) { return AttributedText(); },
                 [](const JournaledShares&) { return AttributedText(); },
                 [](const Yield& yield) {
                   return Formatting::moneyCell(yield.netAmount.amount, yield.netAmount.currency,
                                                false);
                 },
                 [](const Transfer& transfer) {
                   return moneyTextCell(transfer.amount.amount, transfer.amount.currency);
                 },
                 [](const CashAdjustment& adjustment) {
                   return moneyTextCell(adjustment.amount.amount, adjustment.amount.currency);
                 }},
      kind);
}

AttributedText gainCell(const std::optional<Decimal>& amount, const Currency& primary) {
  return amount ? Formatting::moneyCell(*amount, primary, false) : AttributedText();
}

std::optional<Decimal> costBaseAdded(const PortfolioTransaction& row) {
  const auto net = row.costBaseNet();
  return net && row.costBasePrior ? std::optional(*net - *row.costBasePrior) : std::nullopt;
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
      return gainCell(costBaseAdded(row), primary);
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
