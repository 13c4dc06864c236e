#include "exchange/reading/statement_rows.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <utility>

#include "platform/time/civil_day.h"

namespace corvane {
namespace {

std::int32_t countOfDay(const YearMonthDay& day) {
  return day == YearMonthDay() ? StatementRows::unknownDay
                               : static_cast<std::int32_t>(dayCount(day.year, day.month, day.day));
}

YearMonthDay dayOfCount(std::int32_t count) {
  if (count == StatementRows::unknownDay) {
    return {};
  }
  const CivilDay civil = civilDay(count);
  return {static_cast<int>(civil.year), civil.month, civil.day};
}

BasicTransaction::YieldType yieldTypeOf(StatementKind kind) {
  using enum BasicTransaction::YieldType;
  switch (kind) {
    case StatementKind::capitalGainsDividend:
      return capitalGainsDividend;
    case StatementKind::reinvested:
      return reinvestedDistribution;
    case StatementKind::returnOfCapital:
      return returnOfCapital;
    default:
      return dividend;
  }
}

}  // namespace

StatementRow StatementRows::operator[](std::size_t row) const {
  const RowQuestion* asked = question(row);
  return {.line = line(row),
          .verdict = verdict(row),
          .reason = std::string(reason(row)),
          .remedy = std::string(remedy(row)),
          .question = asked == nullptr ? std::nullopt : std::optional(*asked),
          .kind = std::string(kind(row)),
          .symbol = std::string(symbol(row)),
          // What lacks a rate is nothing to record yet.
          .transactions = verdict(row) == RowVerdict::asks ? std::vector<BasicTransaction>()
                                                           : transactions(row),
          .rate = std::string(rate(row)),
          .time = time(row),
          .id = std::string(id(row))};
}

std::size_t StatementRows::count(RowVerdict verdict) const {
  return static_cast<std::size_t>(std::ranges::count(records_, verdict, &Record::verdict));
}

std::string_view StatementRows::reason(std::size_t row) const {
  return texts_.text(records_[row].reason);
}

std::string_view StatementRows::symbol(std::size_t row) const {
  return texts_.text(records_[row].symbol);
}

std::string_view StatementRows::id(std::size_t row) const {
  return texts_.text(records_[row].id);
}

std::string_view StatementRows::kind(std::size_t row) const {
  const auto kind = static_cast<std::uint8_t>(records_[row].kind & ~finishedBit);
  if (kind != unknownKind) {
    return rawValue(static_cast<StatementKind>(kind));
  }
  const Extra* extra = extraOf(records_[row]);
  return extra == nullptr ? std::string_view() : texts_.text(extra->unknownWord);
}

std::string_view StatementRows::rate(std::size_t row) const {
  const Extra* extra = extraOf(records_[row]);
  return extra == nullptr ? std::string_view() : texts_.text(extra->rateText);
}

std::string_view StatementRows::remedy(std::size_t row) const {
  const Extra* extra = extraOf(records_[row]);
  return extra == nullptr ? std::string_view() : texts_.text(extra->remedy);
}

const RowQuestion* StatementRows::question(std::size_t row) const {
  const Extra* extra = extraOf(records_[row]);
  return extra == nullptr || extra->question == nothing ? nullptr
                                                        : &questions_[extra->question - 1];
}

std::optional<std::int64_t> StatementRows::time(std::size_t row) const {
  const std::int64_t time = records_[row].time;
  return time == unknownTime ? std::nullopt : std::optional(time);
}

std::size_t StatementRows::transactionCount(std::size_t row) const {
  const Record& record = records_[row];
  if ((record.kind & finishedBit) == 0) {
    return 0;
  }
  const Extra* extra = extraOf(record);
  return extra == nullptr || extra->tax == PackedDecimals::none ? 1 : 2;
}

std::vector<BasicTransaction> StatementRows::transactions(std::size_t row) const {
  std::vector<BasicTransaction> made;
  const std::size_t count = transactionCount(row);
  if (count == 0) {
    return made;
  }
  const Record& record = records_[row];
  const RowFigures known = figures(row);
  const Date trade = dateOf(record.trade);
  const Date settlement = record.settlement == record.trade ? trade : dateOf(record.settlement);
  const std::string_view note = texts_.text(record.note);
  made.reserve(count);
  made.push_back({transactionKind(known), trade, settlement,
                  note.empty() ? std::nullopt : std::optional(std::string(note))});
  if (count == 2) {
    made.push_back({BasicTransaction::CashAdjustment{{known.cash.currency, -known.tax}}, trade,
                    settlement, "Tax, " + std::string(symbol(row))});
  }
  return made;
}

BasicTransaction::Kind StatementRows::transactionKind(const RowFigures& figures) const {
  const CurrencyAmount& cash = figures.cash;
  const Decimal equivalent = figures.equivalent.value_or(cash.amount);
  switch (figures.kind) {
    case StatementKind::buy:
      return BasicTransaction::Trade{figures.equity, cash, equivalent, figures.shares};
    case StatementKind::sell:
      return BasicTransaction::Trade{
          figures.equity, {cash.currency, -cash.amount}, -equivalent, -figures.shares};
    case StatementKind::split:
    case StatementKind::splitAdded:
      return BasicTransaction::Split{figures.equity, figures.shares,
                                     figures.sharesAfter.value_or(0)};
    case StatementKind::journal:
      return BasicTransaction::JournaledShares{figures.equity, figures.shares, figures.cost};
    case StatementKind::deposit:
    case StatementKind::withdrawal:
    case StatementKind::transfer:
      return BasicTransaction::Transfer{cash};
    case StatementKind::cash:
    case StatementKind::credit:
    case StatementKind::expense:
      return BasicTransaction::CashAdjustment{cash};
    default:
      return BasicTransaction::Yield{yieldTypeOf(figures.kind), figures.equity, std::nullopt, cash,
                                     equivalent};
  }
}

std::vector<std::uint32_t> StatementRows::byLine() const {
  std::vector<std::uint32_t> order(size());
  std::iota(order.begin(), order.end(), 0U);
  const auto lineOf = [&](std::uint32_t row) { return records_[row].line; };
  if (!std::ranges::is_sorted(order, {}, lineOf)) {
    std::ranges::stable_sort(order, {}, lineOf);
  }
  return order;
}

void StatementRows::add(const RowDraft& draft) {
  Record& record = records_.emplace_back();
  record.line = draft.line;
  record.symbol = texts_.add(draft.symbol);
  record.id = texts_.add(draft.id);
  record.note = texts_.add(draft.note);
  record.time = draft.time.value_or(unknownTime);
  pack(record, draft.figures);
  if (!draft.unknownWord.empty()) {
    record.kind = unknownKind;
    extraOf(record).unknownWord = texts_.add(draft.unknownWord);
  }
  if (draft.stop) {
    stop(size() - 1, *draft.stop);
  }
}

void StatementRows::addApart(std::uint32_t line, RowVerdict verdict, std::string_view reason) {
  Record& record = records_.emplace_back();
  record.line = line;
  record.verdict = verdict;
  record.reason = texts_.add(reason);
}

void StatementRows::appendApart(const StatementRows& others) {
  for (std::size_t row = 0; row < others.size(); ++row) {
    addApart(others.line(row), others.verdict(row), others.reason(row));
  }
}

void StatementRows::stop(std::size_t row, const RowStop& stop) {
  Record& record = records_[row];
  record.verdict = stop.verdict;
  record.reason = texts_.add(stop.reason);
  if (stop.question) {
    const std::uint32_t place = placeOf(*stop.question);
    extraOf(record).question = place;
  } else if (record.extra != nothing) {
    extraOf(record).question = nothing;
  }
  if (!stop.remedy.empty() || record.extra != nothing) {
    setRemedy(row, stop.remedy);
  }
}

void StatementRows::setRemedy(std::size_t row, std::string_view remedy) {
  const TextPool::Key key = texts_.add(remedy);
  extraOf(records_[row]).remedy = key;
}

RowFigures StatementRows::figures(std::size_t row) const {
  const Record& record = records_[row];
  RowFigures figures;
  const auto kind = static_cast<std::uint8_t>(record.kind & ~finishedBit);
  figures.kind = kind == unknownKind ? StatementKind::ignore : static_cast<StatementKind>(kind);
  figures.trade = dayOfCount(record.trade);
  figures.settlement = dayOfCount(record.settlement);
  if (record.equity != nothing) {
    figures.equity = equities_[record.equity - 1];
  }
  if (record.currency != nothing) {
    figures.cash.currency = currencies_[record.currency - 1U];
  }
  figures.cash.amount = numbers_.optionalNumber(record.cash).value_or(0);
  figures.shares = numbers_.optionalNumber(record.shares).value_or(0);
  if (const Extra* extra = extraOf(record)) {
    figures.sharesAfter = numbers_.optionalNumber(extra->sharesAfter);
    figures.tax = numbers_.optionalNumber(extra->tax).value_or(0);
    figures.equivalent = numbers_.optionalNumber(extra->equivalent);
    figures.rate = numbers_.optionalNumber(extra->rate);
    figures.cost = numbers_.optionalNumber(extra->cost);
  }
  return figures;
}

void StatementRows::setFigures(std::size_t row, const RowFigures& figures) {
  pack(records_[row], figures);
}

void StatementRows::finish(std::size_t row, const RowFigures& figures, std::string_view rate) {
  Record& record = records_[row];
  pack(record, figures);
  record.kind |= finishedBit;
  if (!rate.empty()) {
    const TextPool::Key key = texts_.add(rate);
    extraOf(record).rateText = key;
  }
}

void StatementRows::pack(Record& record, const RowFigures& figures) {
  record.kind = static_cast<std::uint8_t>(figures.kind);
  record.trade = countOfDay(figures.trade);
  record.settlement = countOfDay(figures.settlement);
  record.equity = figures.equity == nullptr ? nothing : placeOf(figures.equity);
  record.currency = placeOf(figures.cash.currency);
  record.cash = numbers_.pack(figures.cash.amount);
  record.shares = numbers_.pack(figures.shares);
  if (record.extra != nothing || figures.sharesAfter || !figures.tax.isZero() ||
      figures.equivalent || figures.rate || figures.cost) {
    Extra& extra = extraOf(record);
    extra.sharesAfter = numbers_.pack(figures.sharesAfter);
    extra.tax = figures.tax.isZero() ? PackedDecimals::none : numbers_.pack(figures.tax);
    extra.equivalent = numbers_.pack(figures.equivalent);
    extra.rate = numbers_.pack(figures.rate);
    extra.cost = numbers_.pack(figures.cost);
  }
}

StatementRows::Extra& StatementRows::extraOf(Record& record) {
  if (record.extra == nothing) {
    extras_.emplace_back();
    record.extra = static_cast<std::uint32_t>(extras_.size());
  }
  return extras_[record.extra - 1];
}

const StatementRows::Extra* StatementRows::extraOf(const Record& record) const {
  return record.extra == nothing ? nullptr : &extras_[record.extra - 1];
}

std::uint32_t StatementRows::placeOf(const EquityPointer& equity) {
  const auto [entry, isNew] = equityPlaces_.try_emplace(equity, equities_.size() + 1);
  if (isNew) {
    equities_.push_back(equity);
  }
  return entry->second;
}

std::uint16_t StatementRows::placeOf(const Currency& currency) {
  auto found = std::ranges::find(currencies_, currency);
  if (found == currencies_.end()) {
    currencies_.push_back(currency);
    found = currencies_.end() - 1;
  }
  return static_cast<std::uint16_t>(found - currencies_.begin() + 1);
}

std::uint32_t StatementRows::placeOf(const RowQuestion& question) {
  std::string key(1, static_cast<char>(question.about));
  for (const std::string* part :
       {&question.subject, &question.name, &question.currency, &question.proposal}) {
    key += *part;
    key += '\0';
  }
  const auto [entry, isNew] = questionPlaces_.try_emplace(std::move(key), questions_.size() + 1);
  if (isNew) {
    questions_.push_back(question);
  }
  return entry->second;
}

Date StatementRows::dateOf(std::int32_t day) const {
  return dayOfCount(day).startIn(calendar_);
}

void StatementRows::reorder(const std::vector<std::uint32_t>& order) {
  assert(order.size() == size());
  std::vector<bool> isPlaced(size(), false);
  for (std::size_t start = 0; start < size(); ++start) {
    if (isPlaced[start]) {
      continue;
    }
    const Record first = records_[start];
    std::size_t place = start;
    while (order[place] != start) {
      records_[place] = records_[order[place]];
      isPlaced[place] = true;
      place = order[place];
    }
    records_[place] = first;
    isPlaced[place] = true;
  }
}

void StatementRows::reverse() {
  std::ranges::reverse(records_);
}

}  // namespace corvane
