#include "cli/commands/transaction_form.h"

#include <algorithm>
#include <array>
#include <ranges>

#include "cli/console/option_values.h"

namespace corvane::cli {
namespace {

using Form = EditTransactionViewController;
using Mode = TransactionMode;

struct NamedMode {
  std::string_view name;
  Mode mode;
};
/// In the order of the form's menu.
constexpr std::array<NamedMode, 12> namedModes = {{
    {"buy", Mode::buy},
    {"sell", Mode::sell},
    {"transfer-in", Mode::deposit},
    {"transfer-out", Mode::withdraw},
    {"cash-credit", Mode::cashCredit},
    {"cash-expense", Mode::cashExpense},
    {"dividend", Mode::dividend},
    {"cap-gains-dividend", Mode::capitalGainsDividend},
    {"reinvested-distribution", Mode::reinvestedDistribution},
    {"return-of-capital", Mode::returnOfCapital},
    {"split", Mode::split},
    {"journaled-shares", Mode::journaledShares},
}};
constexpr std::string_view modeNames =
    "buy sell transfer-in transfer-out cash-credit cash-expense dividend cap-gains-dividend "
    "reinvested-distribution return-of-capital split journaled-shares";

std::string nameOf(Mode mode) {
  return std::string(std::ranges::find(namedModes, mode, &NamedMode::mode)->name);
}

void chooseMode(Form& form, const CommandLine& line) {
  const auto name = line.value("--type");
  if (!name) {
    return;
  }
  const auto found = std::ranges::find(namedModes, *name, &NamedMode::name);
  if (found == namedModes.end()) {
    throw UsageError("--type is one of " + std::string(modeNames) + ", not “" + *name + "”.");
  }
  form.chooseMode(found->mode);
  if (form.transactionMode() != found->mode) {
    throw EntryRefusal(form.notice);
  }
}

/// `option` is of a field that the form hides: for this kind of transaction, or because there is
/// nothing to convert.
[[noreturn]] void failWithout(std::string_view option, const Form& form) {
  const bool isConversion = option == "--rate" || option == "--equivalent";
  throw UsageError("“" + std::string(option) + "” does not go with " +
                   nameOf(form.transactionMode()) +
                   (isConversion ? " in " + std::string(form.currentCurrency().code) : "") + ".");
}

/// The currency in which the ledger last told of `equity`; none where it never did.
std::optional<Currency> lastCurrencyOf(const EquityPointer& equity, Portfolio& portfolio) {
  for (const TransactionPointer& row : portfolio.transactions() | std::views::reverse) {
    const EquityPointer* named = row->basic.equity();
    const Currency* currency = row->basic.currency();
    if (named != nullptr && currency != nullptr && **named == *equity) {
      return *currency;
    }
  }
  return std::nullopt;
}

void chooseEquity(Form& form, const CommandLine& line) {
  const auto symbol = line.value("--symbol");
  if (!symbol) {
    return;
  }
  if (form.layout().equity == EquityRow::hidden) {
    failWithout("--symbol", form);
  }
  const Currency before = form.currentCurrency();
  const auto isInLedger = [&](const EquityInfo& equity) {
    return std::ranges::any_of(form.portfolio()->transactions(), [&](const auto& row) {
      const EquityPointer* other = row->basic.equity();
      return other != nullptr && **other == equity;
    });
  };
  const EquityPointer equity =
      equityNamed(*symbol, *form.portfolioManager()->quoteProvider, isInLedger);
  form.chooseEquity(equity);
  // The symbol is not looked up, so nobody tells here in what it is traded.
  if (!form.layout().totalLabel.empty()) {
    form.chooseCurrency(form.isModifying() ? before
                                           : lastCurrencyOf(equity, *form.portfolio())
                                                 .value_or(form.portfolio()->primaryCurrency()));
  }
}

void chooseCurrency(Form& form, const CommandLine& line) {
  const auto code = line.value("--currency");
  if (!code) {
    return;
  }
  const Currency currency = currencyNamed(*code);
  if (form.currencyPopUpButton.isHidden) {
    failWithout("--currency", form);
  }
  form.chooseCurrency(currency);
}

void chooseDates(Form& form, const CommandLine& line) {
  if (const auto day = dayOption(line, "--date")) {
    form.changeTransactionDate([&](DateEntry& entry) { entry.setDay(*day); });
  }
  if (const auto day = dayOption(line, "--settlement")) {
    form.changeSettlementDate([&](DateEntry& entry) { entry.setDay(*day); });
  }
}

/// What the user's locale writes before the decimals in `field`.
std::string decimalSeparatorOf(const NumberEntry& field, const Form& form) {
  if (&field == &form.sharePriceField || &field == &form.totalAmountField) {
    return DecimalNumberFormatter::money(form.currentCurrency()).decimalSeparator();
  }
  if (&field == &form.equivalentValueField) {
    return DecimalNumberFormatter::money(form.portfolio()->primaryCurrency()).decimalSeparator();
  }
  return DecimalNumberFormatter().decimalSeparator();
}

/// Types the number of `option` into `field` as the user's locale writes it.
void enterNumber(Form& form, NumberEntry Form::*field, const CommandLine& line,
                 std::string_view option) {
  const auto text = line.value(option);
  if (!text) {
    return;
  }
  const auto number = Decimal::fromWholeString(*text);
  if (!number || number->isNaN()) {
    throw UsageError("“" + *text + "” is not a number such as 1234.56.");
  }
  NumberEntry& entry = form.*field;
  if (entry.isHidden) {
    failWithout(option, form);
  }
  if (!entry.isEnabled) {
    throw UsageError("“" + std::string(option) + "” does not go with shares that leave.");
  }
  std::string typed = number->description();
  if (const std::size_t point = typed.find('.'); point != typed.npos) {
    typed.replace(point, 1, decimalSeparatorOf(entry, form));
  }
  form.typeInto(entry, typed);
  if (entry.value() != number) {
    throw EntryRefusal(std::string(option) + ": " + entry.hint().text);
  }
}

void requireOneOf(const CommandLine& line, std::string_view one, std::string_view other) {
  if (line.has(one) && line.has(other)) {
    throw UsageError(std::string(one) + " and " + std::string(other) + " exclude each other.");
  }
}

}  // namespace

std::vector<Option> transactionOptions() {
  return {
      {"--type", "KIND", "what happened, see below", false, false, modeNames},
      {"--date", "DAY", "the day of the transaction, such as 2024-02-29"},
      {"--settlement", "DAY", "when it took effect; else two weekdays after a trade, or the day"},
      {"--symbol", "SYMBOL", "the equity, as the market-data service knows it"},
      {"--prior-shares", "NUMBER", "of a split: the shares before it"},
      {"--shares", "NUMBER", "shares traded, held at a dividend, or after a split"},
      {"--currency", "CODE", "of price and total; else that of the symbol's last transaction"},
      {"--price", "AMOUNT", "what one share cost or paid; the total follows"},
      {"--total", "AMOUNT", "or the whole amount, without a sign"},
      {"--rate", "NUMBER",
       "what one unit of the currency is worth in the portfolio's; the equivalent is rounded"},
      {"--equivalent", "AMOUNT", "or the total in the portfolio's currency, or a cost base"},
      {"--note", "TEXT", "your note"}};
}

void fillForm(EditTransactionViewController& form, const CommandLine& line) {
  requireOneOf(line, "--price", "--total");
  requireOneOf(line, "--rate", "--equivalent");
  chooseMode(form, line);
  chooseEquity(form, line);
  chooseCurrency(form, line);
  chooseDates(form, line);
  enterNumber(form, &Form::priorNumberOfSharesField, line, "--prior-shares");
  enterNumber(form, &Form::numberOfSharesField, line, "--shares");
  enterNumber(form, &Form::sharePriceField, line, "--price");
  enterNumber(form, &Form::totalAmountField, line, "--total");
  enterNumber(form, &Form::exchangeRateField, line, "--rate");
  enterNumber(form, &Form::equivalentValueField, line, "--equivalent");
  if (!line.has("--equivalent") && !form.roundButton.isHidden) {
    // What the rate comes to, in amounts that can be paid. Nobody is there to be asked.
    form.roundEquivalent();
  }
  if (const auto note = line.value("--note")) {
    form.setNote(*note);
  }
}

Order orderOf(const EditTransactionViewController& form) {
  if (!form.goButton.isEnabled) {
    std::string words;
    for (const std::string& missing : form.missing()) {
      words += (words.empty() ? "" : " ") + missing;
    }
    throw EntryRefusal(std::move(words));
  }
  auto order = form.makeOrder();
  if (!order) {
    throw OrderError(order.error());
  }
  return *std::move(order);
}

}  // namespace corvane::cli
