#include "presentation/transactions/transaction_preview.h"

#include <optional>
#include <variant>

#include "core/money/decimal_number_formatter.h"

namespace corvane {
namespace {

std::string sharesText(const Decimal& shares) {
  return DecimalNumberFormatter().string(shares).value_or(shares.description());
}

std::string moneyText(const Decimal& amount, const Currency& currency) {
  return CurrencyAmount{currency, amount}.description();
}

/// The figures of a trial, those that the entry does not touch left out.
std::vector<TransactionPreview::Figure> figuresOf(const LedgerTrial& trial,
                                                  const BasicTransaction& transaction,
                                                  const Currency& primary) {
  std::vector<TransactionPreview::Figure> figures;
  const auto add = [&figures](std::string label, const std::optional<Decimal>& before,
                              const std::optional<Decimal>& after, const auto& textOf) {
    if (before && after) {
      figures.push_back({std::move(label), textOf(*before), textOf(*after)});
    }
  };
  const auto inPrimary = [&](const Decimal& amount) { return moneyText(amount, primary); };
  add("Shares held", trial.before.sharesHeld, trial.after.sharesHeld, sharesText);
  add("Cost base", trial.before.costBase, trial.after.costBase, inPrimary);
  if (const Currency* currency = transaction.currency()) {
    const auto inCurrency = [&](const Decimal& amount) { return moneyText(amount, *currency); };
    const std::string code(currency->code);
    add("Cash in " + code, trial.before.cashOnHand, trial.after.cashOnHand, inCurrency);
    // An entry among older ones changes what comes after it too.
    if (trial.after.cashOnHand != trial.atEnd.cashOnHand) {
      add(code + " at the end", trial.atEndNow.cashOnHand, trial.atEnd.cashOnHand, inCurrency);
    }
  }
  if (trial.capitalGain) {
    figures.push_back({"Capital gain", "", inPrimary(*trial.capitalGain)});
  }
  return figures;
}

}  // namespace

TransactionPreview previewOf(const BasicTransaction& transaction, const PortfolioPointer& portfolio,
                             const TransactionPointer& revised) {
  const auto manager = portfolio->manager.lock();
  if (manager == nullptr) {
    return {};
  }
  const auto trial = manager->trial(transaction, portfolio, revised);
  if (!trial) {
    if (!portfolio->usesCashAccounts &&
        std::holds_alternative<BasicTransaction::Transfer>(transaction.kind)) {
      return {.refusal = "This portfolio keeps no cash accounts, so nothing can be transferred.",
              .reason = "Turn on cash accounting in its details to record transfers."};
    }
    return {.refusal = trial.error()->description().value_or("The ledger would refuse this."),
            .reason = trial.error()->furtherText()};
  }
  return {.figures = figuresOf(*trial, transaction, portfolio->primaryCurrency())};
}

}  // namespace corvane
