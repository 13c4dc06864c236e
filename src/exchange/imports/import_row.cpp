#include "exchange/imports/import_row.h"

#include <algorithm>
#include <initializer_list>

#include "core/money/currency_amount.h"
#include "exchange/imports/transactions_import_error.h"
#include "ledger/transaction/transaction_effect.h"
#include "platform/text/unicode/letter_case.h"
#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

using Failure = TransactionsImportError;
using YieldType = BasicTransaction::YieldType;

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::ranges::find(words, word) != words.end();
}

/// What follows the first blank in `text` behind which `word` stands, and the word.
std::optional<std::string_view> behindBlankAnd(std::string_view word, std::string_view text) {
  while (!text.empty()) {
    if (isWhitespace(takeCharacter(text)) && text.starts_with(word)) {
      return text.substr(word.size());
    }
  }
  return std::nullopt;
}

/// Whether `text` names a dividend of capital gains: "cap" somewhere, behind it a word "gain…",
/// behind that a word "div…".
bool namesCapitalGainsDividend(std::string_view text) {
  constexpr std::string_view capital = "cap";
  const std::size_t position = text.find(capital);
  if (position == text.npos) {
    return false;
  }
  const auto behindGain = behindBlankAnd("gain", text.substr(position + capital.size()));
  return behindGain && behindBlankAnd("div", *behindGain);
}

std::optional<Currency> currencyWithCode(std::string_view code) {
  const auto& known = Currency::byCode();
  const auto found = known.find(code);
  return found == known.end() ? std::nullopt : std::optional(found->second);
}

Decimal withSign(const Decimal& amount, ImportRow::SignRule rule) {
  switch (rule) {
    case ImportRow::SignRule::positive:
      return abs(amount);
    case ImportRow::SignRule::negative:
      return -abs(amount);
    case ImportRow::SignRule::oppositeToFile:
      return -amount;
    case ImportRow::SignRule::asInFile:
      break;
  }
  return amount;
}

}  // namespace

std::string_view firstWord(std::string_view text) {
  std::string_view rest = text;
  const char* begin = nullptr;
  while (!rest.empty()) {
    const char* position = rest.data();
    const bool isBlank = isWhitespace(takeCharacter(rest));
    if (isBlank && begin != nullptr) {
      return {begin, position};
    }
    if (!isBlank && begin == nullptr) {
      begin = position;
    }
  }
  return begin == nullptr ? std::string_view() : std::string_view(begin, rest.data());
}

const std::string* ImportRow::cell(std::string_view field) const {
  const auto found = values_.find(field);
  return found == values_.end() ? nullptr : &found->second;
}

std::optional<Decimal> ImportRow::number(std::string_view field) const {
  const std::string* text = cell(field);
  if (text == nullptr) {
    return std::nullopt;
  }
  return surroundings_.strictNumber ? surroundings_.strictNumber(field, *text)
                                    : surroundings_.numberFormatter.decimalFromString(*text);
}

BasicTransaction::Kind ImportRow::kind() const {
  using enum YieldType;
  const std::string* cellOfType = cell("type");
  if (cellOfType == nullptr) {
    throw Failure(Failure::TypeMissing());
  }
  const std::string type = lowercased(*cellOfType);
  if (isOneOf(type, {"buy", "bought"})) {
    return trade(/*isPurchase=*/true);
  }
  if (isOneOf(type, {"sell", "sold"})) {
    return trade(/*isPurchase=*/false);
  }
  if (type == "transfer") {
    return BasicTransaction::Transfer{cashAmount(SignRule::asInFile)};
  }
  if (isOneOf(type, {"deposit", "cash in", "transfer in"})) {
    return BasicTransaction::Transfer{cashAmount(SignRule::positive)};
  }
  if (isOneOf(type, {"withdraw", "withdrawal", "cash out", "transfer out"})) {
    return BasicTransaction::Transfer{cashAmount(SignRule::negative)};
  }
  if (type.starts_with("split") || type.starts_with("consolidation")) {
    return split();
  }
  if (isOneOf(type, {"dividend", "distribution"})) {
    return yield(dividend);
  }
  if (namesCapitalGainsDividend(type)) {
    return yield(capitalGainsDividend);
  }
  if (type.starts_with("reinvested")) {
    return yield(reinvestedDistribution);
  }
  if (isOneOf(type, {"return of capital", "roc", "capital return"})) {
    return yield(returnOfCapital);
  }
  if (type.contains("journal")) {
    return journaledShares();
  }
  if (isOneOf(type, {"cash adjustment", "interest"})) {
    return BasicTransaction::CashAdjustment{cashAmount(SignRule::asInFile)};
  }
  if (isOneOf(type, {"credit", "referral"})) {
    return BasicTransaction::CashAdjustment{cashAmount(SignRule::positive)};
  }
  if (isOneOf(type, {"expense", "fees"})) {
    return BasicTransaction::CashAdjustment{cashAmount(SignRule::negative)};
  }
  throw Failure(Failure::UnrecognizedType{type});
}

std::optional<std::string_view> ImportRow::note(const Kind& kind) const {
  const auto textIn = [this](std::string_view field) -> std::optional<std::string_view> {
    const std::string* text = cell(field);
    return text == nullptr || text->empty() ? std::nullopt : std::optional<std::string_view>(*text);
  };
  const bool isOfCashAlone = transactionEffect(kind).equity == nullptr;
  auto note = textIn("note");
  return !note && isOfCashAlone ? textIn("symbol") : note;
}

EquityPointer ImportRow::equity() const {
  const std::string* text = cell("symbol");
  const std::string_view symbol = text == nullptr ? std::string_view() : firstWord(*text);
  EquityPointer equity = symbol.empty() ? nullptr : surroundings_.equityFor(symbol);
  if (equity == nullptr) {
    throw Failure(Failure::SymbolMissing());
  }
  return equity;
}

std::optional<Currency> ImportRow::namedCurrency() const {
  const std::string* code = cell("cashCurrency");
  if (code != nullptr && surroundings_.strictCurrency) {
    if (auto currency = surroundings_.strictCurrency(*code)) {
      return currency;
    }
  } else if (code != nullptr) {
    // A blank behind the code is no reason to take the amount for one of another currency.
    if (auto currency = currencyWithCode(firstWord(*code))) {
      return currency;
    }
  }
  return surroundings_.defaultCurrencyCode ? currencyWithCode(*surroundings_.defaultCurrencyCode)
                                           : std::nullopt;
}

CurrencyAmount ImportRow::cashAmount(SignRule rule) const {
  const auto amount = number("cashAmount");
  if (!amount) {
    throw Failure(Failure::CashAmountMissing());
  }
  return {namedCurrency().value_or(surroundings_.primaryCurrency), withSign(*amount, rule)};
}

Decimal ImportRow::equivalent(const CurrencyAmount& cash, SignRule rule) const {
  const Currency& primary = surroundings_.primaryCurrency;
  if (namedCurrency() == primary) {
    return cash.amount;
  }
  if (const auto amount = number("equivalentAmount")) {
    return withSign(*amount, rule);
  }
  const std::string* rateText = cell("exchangeRate");
  if (rateText == nullptr) {
    throw Failure(Failure::EquivalentAmountMissing());
  }
  const auto rate = number("exchangeRate");
  if (!rate || !(*rate > 0)) {
    throw Failure(Failure::InvalidExchangeRate{*rateText});
  }
  return roundedToMinorUnits(cash.amount * *rate, primary);
}

BasicTransaction::Kind ImportRow::trade(bool isPurchase) const {
  const SignRule byWord = isPurchase ? SignRule::positive : SignRule::negative;
  const bool isOwn = surroundings_.isOwnExport;
  // What is paid is given up by the trade and taken off the account.
  const SignRule rule = isOwn ? SignRule::oppositeToFile : byWord;
  BasicTransaction::Trade trade;
  trade.equity = equity();
  const auto shares = number("numberOfShares");
  if (!shares) {
    throw Failure(Failure::SharesMissing());
  }
  trade.sharesAdded = withSign(*shares, isOwn ? SignRule::asInFile : byWord);
  trade.cashDisposed = cashAmount(rule);
  trade.equivalentCashDisposed = equivalent(trade.cashDisposed, rule);
  return trade;
}

BasicTransaction::Kind ImportRow::split() const {
  EquityPointer split = equity();
  const auto prior = number("numberOfShares");
  const auto net = number("sharesNet");
  if (!prior || !net) {
    throw Failure(Failure::SharesMissing());
  }
  return BasicTransaction::Split{std::move(split), surroundings_.isOwnExport ? *prior : abs(*prior),
                                 *net};
}

BasicTransaction::Kind ImportRow::yield(YieldType type) const {
  BasicTransaction::Yield yield;
  yield.type = type;
  yield.equity = equity();
  const std::string_view field = cell("sharesNet") != nullptr ? "sharesNet" : "numberOfShares";
  // An empty cell declares nothing: the ledger knows how many shares are held.
  const std::string* declared = cell(field);
  if (declared != nullptr && !firstWord(*declared).empty()) {
    yield.netShares = number(field);
  }
  yield.netAmount = cashAmount(SignRule::asInFile);
  yield.equivalentNetAmount = equivalent(yield.netAmount, SignRule::asInFile);
  return yield;
}

BasicTransaction::Kind ImportRow::journaledShares() const {
  BasicTransaction::JournaledShares journaled;
  journaled.equity = equity();
  const auto shares = number("numberOfShares");
  if (!shares) {
    throw Failure(Failure::SharesMissing());
  }
  journaled.sharesAdded = *shares;
  // Shares that go take their part of the cost base along, whatever the file says of it.
  if (!(*shares < 0)) {
    journaled.costBaseAdded = number("costBaseAdded");
    if (!journaled.costBaseAdded) {
      throw Failure(Failure::CostBaseAdjustmentMissing());
    }
  }
  return journaled;
}

}  // namespace corvane
