#include "exchange/reading/row_values.h"

#include <utility>

#include "exchange/strict/statement_error.h"

namespace corvane {

void RowValues::fail(RowField field, std::string reason, std::string remedy) const {
  throw StatementError(row_.line(), row_.columnOf(field), std::move(reason), std::move(remedy));
}

std::optional<Decimal> RowValues::number(RowField field) const {
  const std::string_view text = row_.text(field);
  if (text.empty()) {
    return std::nullopt;
  }
  const RowTexts::Scale scale = row_.scaleOf(field);
  Decimal value = numberIn(field, text) * scale.times;
  if (!scale.over.empty()) {
    const Decimal divisor = numberIn(field, scale.over);
    if (divisor.isZero()) {
      fail(field, "it is to be divided by 0.");
    }
    value = value / divisor;
  }
  return value;
}

Decimal RowValues::numberIn(RowField field, std::string_view text) const {
  if (notation_.decimal) {
    if (const auto plain = plainNumber(text, *notation_.decimal)) {
      return *plain;
    }
  }
  const auto cell = NumberCell::read(text);
  std::optional<Decimal> value;
  if (cell) {
    value = cell->value(notation_.decimal ? *notation_.decimal : markOf(*cell, field, text));
  }
  if (!value) {
    fail(field, "“" + std::string(text) + "” is not a number.");
  }
  return *value;
}

/// The mark of a cell of a layout in which each cell has its own.
DecimalMark RowValues::markOf(const NumberCell& cell, RowField field, std::string_view text) const {
  switch (cell.evidence()) {
    case NumberCell::Evidence::comma:
      return DecimalMark::comma;
    case NumberCell::Evidence::point:
    case NumberCell::Evidence::none:
      return DecimalMark::point;
    case NumberCell::Evidence::undecided:
      break;
  }
  if (options_.decimal) {
    return *options_.decimal;
  }
  // Shares times price may tell.
  DecimalMarkRecognition byTrade;
  byTrade.add(row_.line(), rawValue(field), text);
  byTrade.addTrade(row_.text(RowField::shares), row_.text(RowField::price),
                   row_.text(RowField::amount));
  if (field == RowField::amount && !byTrade.isUndecided()) {
    return byTrade.mark();
  }
  fail(field,
       "“" + std::string(text) + "” may be " +
           cell.value(DecimalMark::point).value_or(0).description() + " or " +
           cell.value(DecimalMark::comma).value_or(0).description() + ".",
       "Say --decimal . or --decimal ,");
}

YearMonthDay RowValues::day(RowField field, std::optional<std::int64_t>& time) {
  const std::string_view text = row_.text(field);
  if (text != lastDayText_ || !lastDay_) {
    lastDayText_ = text;
    lastDay_ = DayCell::read(text);
  }
  const auto day = lastDay_ ? lastDay_->day(notation_.days) : std::nullopt;
  if (!day) {
    fail(field, text.empty() ? "the cell is empty." : "“" + std::string(text) + "” is not a day.");
  }
  time = lastDay_->time();
  return *day;
}

RowValues::RowCurrency RowValues::currency() const {
  std::string code(row_.text(RowField::currency));
  RowField field = RowField::currency;
  if (code.empty()) {
    const auto amount = NumberCell::read(row_.text(RowField::amount));
    code = amount ? amount->currencyCode() : "";
    field = RowField::amount;
  }
  if (code.empty() && options_.currencyCode) {
    code = *options_.currencyCode;
  }
  if (code.empty()) {
    throw RowStopped{{RowVerdict::asks, "no column tells the currency.", "Say --currency CODE.",
                      RowQuestion{RowQuestion::About::currency, {}, {}, {}, {}}}};
  }
  if (const auto alias = profile_.currencies.find(code); alias != profile_.currencies.end()) {
    return {Currency::byCode().at(alias->second.code), alias->second.divide};
  }
  if (code == "GBX" || code == "GBp" || code == "GBX (p)") {
    return {Currency::byCode().at("GBP"), 100};
  }
  const auto found = Currency::byCode().find(code);
  if (found == Currency::byCode().end()) {
    fail(field, "“" + code + "” is not the code of a currency.");
  }
  return {found->second, 1};
}

}  // namespace corvane
