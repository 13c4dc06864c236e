#include "exchange/reading/row_drafts.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/money/currency_amount.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"

namespace corvane {
namespace {

using RowKind = StatementKind;

/// "francs have (Rappen)", "CHF has": what an amount with more digits is held against.
std::string minorUnitsText(const Currency& currency) {
  constexpr std::array<std::array<std::string_view, 2>, 11> names = {{
      {"CHF", "francs have (Rappen)"},
      {"EUR", "euros have (cents)"},
      {"USD", "dollars have (cents)"},
      {"CAD", "dollars have (cents)"},
      {"AUD", "dollars have (cents)"},
      {"NZD", "dollars have (cents)"},
      {"GBP", "pounds have (pence)"},
      {"SEK", "kronor have (öre)"},
      {"NOK", "kroner have (øre)"},
      {"DKK", "kroner have (øre)"},
      {"JPY", "yen have"},
  }};
  const std::string_view code = currency.code;
  const auto* named = std::ranges::find(names, code, [](const auto& entry) { return entry[0]; });
  return named == names.end() ? std::string(code) + " has" : std::string((*named)[1]);
}

/// What a row does to the cash, but for the sign of a purchase, which is positive here.
Decimal cashChange(RowKind kind, const Decimal& told, const Decimal& fee, const Decimal& tax) {
  switch (kind) {
    case RowKind::buy:
      return abs(told) + fee;
    case RowKind::sell:
      return abs(told) - fee;
    case RowKind::deposit:
    case RowKind::credit:
      return abs(told) - fee - tax;
    case RowKind::withdrawal:
    case RowKind::expense:
      return -abs(told) - fee - tax;
    default:
      return told - fee - tax;
  }
}

}  // namespace

bool isTradeKind(StatementKind kind) {
  return kind == RowKind::buy || kind == RowKind::sell;
}

bool isYieldKind(StatementKind kind) {
  return kind == RowKind::dividend || kind == RowKind::capitalGainsDividend ||
         kind == RowKind::reinvested || kind == RowKind::returnOfCapital;
}

bool isCashKind(StatementKind kind) {
  return kind == RowKind::deposit || kind == RowKind::withdrawal || kind == RowKind::transfer ||
         kind == RowKind::cash || kind == RowKind::credit || kind == RowKind::expense;
}

RowKinds::RowKinds(const StatementOptions& options) : options_(options) {
  for (const auto& [word, kind] : options.kinds) {
    kinds_.emplace(foldedText(word), kind);
  }
}

std::optional<StatementKind> RowKinds::kindOf(const RowTexts& row) const {
  if (row.kind() || kinds_.empty()) {
    return row.kind();
  }
  const auto said = kinds_.find(foldedText(row.text(RowField::type)));
  return said == kinds_.end() ? std::nullopt : std::optional(said->second);
}

bool RowKinds::takesAccountOf(const RowTexts& row) const {
  if (options_.accounts.empty()) {
    return true;
  }
  const std::string account(row.text(RowField::account));
  return account.empty() || options_.accounts.contains(account);
}

RowDrafter::RowDrafter(const RowTexts& row, const StatementProfile& profile,
                       const StatementSurroundings& surroundings, const StatementOptions& options,
                       StatementNotation notation)
    : row_(row),
      profile_(profile),
      surroundings_(surroundings),
      options_(options),
      kinds_(options),
      values_(row, profile, options, notation) {}

RowDraft RowDrafter::draft() {
  RowDraft draft;
  draft.line = row_.line();
  draft.id = row_.text(RowField::id);
  draft.symbol = row_.text(RowField::symbol);
  draft.figures.kind = row_.kind().value_or(RowKind::ignore);
  draft.unknownWord = row_.kind() ? std::string_view() : row_.text(RowField::type);
  std::optional<RowQuestion> question;
  try {
    if (options_.leaveOut.contains(row_.line())) {
      throw RowStopped{{RowVerdict::leftOut, "you leave it out"}};
    }
    if (!kinds_.takesAccountOf(row_)) {
      throw RowStopped{{RowVerdict::leftOut, "it is of another account"}};
    }
    const auto kind = kinds_.kindOf(row_);
    if (!kind) {
      const std::string word(row_.text(RowField::type));
      question = RowQuestion{RowQuestion::About::kind, word, {}, {}, {}};
      values_.fail(RowField::type, "“" + word + "” is not in the layout.",
                   "Leave the line out (--leave-out " + std::to_string(row_.line()) +
                       ") or tell what it means in ~/.config/corvane/statements/" + profile_.id +
                       ".toml.");
    }
    draft.unknownWord = {};
    draft.figures.kind = *kind;
    if (*kind == RowKind::ignore) {
      throw RowStopped{{RowVerdict::leftOut,
                        std::string(row_.why().empty() ? "the layout leaves it out" : row_.why())}};
    }
    fill(draft);
  } catch (RowStopped& stopped) {
    draft.stop = std::move(stopped.stop);
  } catch (const StatementError& error) {
    draft.stop = RowStop{
        .verdict = RowVerdict::refused,
        .reason = (error.column.empty() ? "" : "column “" + error.column + "”: ") + error.reason,
        .remedy = error.remedy,
        .question = std::move(question)};
  }
  return draft;
}

void RowDrafter::fill(RowDraft& draft) {
  RowFigures& figures = draft.figures;
  figures.trade = values_.day(RowField::date, draft.time);
  if (const std::string_view time = row_.text(RowField::time); !time.empty()) {
    const auto cell = DayCell::read("2000-01-01 " + std::string(time));
    draft.time = cell ? cell->time() : std::nullopt;
  }
  figures.settlement = figures.trade;
  if (!row_.text(RowField::settle).empty()) {
    std::optional<std::int64_t> unused;
    figures.settlement = std::max(figures.trade, values_.day(RowField::settle, unused));
  }
  draft.note = row_.text(RowField::note);
  if (draft.note.empty() && profile_.takesFirstWordOfSymbols && isCashKind(figures.kind)) {
    draft.note = row_.text(RowField::symbol);
  }
  fillMoney(draft);
  if (!isCashKind(figures.kind)) {
    fillShares(figures);
    figures.equity = equityOf(draft);
  }
}

void RowDrafter::fillShares(RowFigures& figures) const {
  figures.sharesAfter = values_.number(RowField::sharesAfter);
  figures.cost = values_.number(RowField::cost);
  const auto shares = values_.number(RowField::shares);
  if (isYieldKind(figures.kind)) {
    return;  // the ledger knows how many are held
  }
  if (!shares) {
    values_.fail(RowField::shares, "the cell is empty.");
  }
  figures.shares = isTradeKind(figures.kind) ? abs(*shares) : *shares;
  if (figures.kind == RowKind::split && !figures.sharesAfter) {
    values_.fail(RowField::sharesAfter, "the cell is empty.");
  }
}

EquityPointer RowDrafter::equityNamed(std::string_view symbol) {
  auto known = equities_.find(symbol);
  if (known == equities_.end()) {
    known = equities_.emplace(symbol, surroundings_.equityFor(symbol)).first;
  }
  return known->second;
}

const std::string* RowDrafter::saidSymbol(std::string_view name) {
  if (options_.symbols.empty()) {
    return nullptr;
  }
  constexpr std::size_t mostRemembered = 4096;
  if (const auto known = said_.find(name); known != said_.end()) {
    return known->second;
  }
  const auto said = options_.symbols.find(foldedText(name));
  const std::string* symbol = said == options_.symbols.end() ? nullptr : &said->second;
  if (said_.size() < mostRemembered) {
    said_.emplace(name, symbol);
  }
  return symbol;
}

EquityPointer RowDrafter::equityOf(RowDraft& draft) {
  const std::string_view symbol = row_.text(RowField::symbol);
  const std::string_view isin = row_.text(RowField::isin);
  const std::string_view name = row_.text(RowField::name);
  std::string_view asked;
  for (const std::string_view text : {isin, name, symbol}) {
    if (text.empty()) {
      continue;
    }
    asked = asked.empty() ? text : asked;
    if (const std::string* said = saidSymbol(text)) {
      draft.symbol = *said;
      return equityNamed(*said);
    }
  }
  if (!symbol.empty() && !symbol.contains(' ')) {
    return equityNamed(symbol);
  }
  draft.symbol = !name.empty() ? name : asked;
  if (asked.empty()) {
    values_.fail(RowField::symbol, "the cell is empty.");
  }
  const std::string subject = isin.empty() ? draft.symbol : std::string(isin);
  const std::string proposal(profile_.takesFirstWordOfSymbols ? symbol.substr(0, symbol.find(' '))
                                                              : std::string_view());
  throw RowStopped{{RowVerdict::asks, "“" + subject + "” has no symbol yet.",
                    "Say --symbol \"" + subject + "=" + (proposal.empty() ? "…" : proposal) + "\".",
                    RowQuestion{RowQuestion::About::symbol, subject,
                                isin.empty() ? std::string() : std::string(name),
                                std::string(draft.figures.cash.currency.code), proposal}}};
}

void RowDrafter::fillMoney(RowDraft& draft) {
  RowFigures& figures = draft.figures;
  if (figures.kind == RowKind::split || figures.kind == RowKind::splitAdded) {
    return;
  }
  const RowValues::RowCurrency currency = values_.currency();
  figures.cash.currency = currency.currency;
  auto amount = values_.number(RowField::amount);
  const auto shares = values_.number(RowField::shares);
  const auto price = values_.number(RowField::price);
  if (!amount && shares && price && !isCashKind(figures.kind)) {
    amount = abs(*shares) * *price;
  }
  if (!amount && figures.kind != RowKind::journal) {
    values_.fail(RowField::amount, "the cell is empty.");
  }
  const Decimal charge = profile_.chargesAreNegative ? -1 : 1;
  const Decimal fee = values_.number(RowField::fee).value_or(0) * charge / currency.divide;
  const Decimal tax = values_.number(RowField::tax).value_or(0) * charge / currency.divide;
  const Decimal told = amount.value_or(0) / currency.divide;
  if (figures.kind == RowKind::trade) {
    const Decimal sign = profile_.tradesBySignOfAmount ? -told : shares.value_or(0);
    if (sign.isZero()) {
      values_.fail(profile_.tradesBySignOfAmount ? RowField::amount : RowField::shares,
                   "its sign would tell a purchase from a sale.");
    }
    figures.kind = sign < 0 ? RowKind::sell : RowKind::buy;
  }
  figures.cash.amount = inDigits(figures, cashChange(figures.kind, told, fee, tax));
  figures.tax = isTradeKind(figures.kind) ? inDigits(figures, tax) : 0;
  figures.equivalent = values_.number(RowField::equivalent);
  figures.rate = values_.number(RowField::rate);
  if (const auto inverse = values_.number(RowField::inverseRate); !figures.rate && inverse) {
    if (!(*inverse > 0)) {
      values_.fail(RowField::inverseRate, "a rate is above 0.");
    }
    figures.rate = Decimal(1) / *inverse;
  }
  if (isCashKind(figures.kind) && figures.cash.amount.isZero()) {
    throw RowStopped{{RowVerdict::leftOut, "it comes to nothing"}};
  }
}

Decimal RowDrafter::inDigits(const RowFigures& figures, const Decimal& amount) {
  const Currency& currency = figures.cash.currency;
  const Decimal cut = roundedToMinorUnits(amount, currency);
  if (cut == amount) {
    return amount;
  }
  if (!profile_.roundsAmounts) {
    values_.fail(RowField::amount, amount.description() + " " + std::string(currency.code) +
                                       " has more digits than " + minorUnitsText(currency) +
                                       ". The layout does not say that amounts are rounded.");
  }
  rounded_[std::string(currency.code)] += abs(amount - cut);
  if (cut.isZero() && isCashKind(figures.kind)) {
    throw RowStopped{{RowVerdict::leftOut, "it rounds to nothing"}};
  }
  return cut;
}

}  // namespace corvane
