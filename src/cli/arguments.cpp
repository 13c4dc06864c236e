#include "cli/arguments.h"

#include <algorithm>
#include <charconv>

#include "platform/time/calendar.h"
#include "platform/time/time_zone.h"

namespace corvane::cli {
namespace {

std::optional<int> wholeNumber(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                  : std::nullopt;
}

std::optional<YearMonthDay> dayOf(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
    return std::nullopt;
  }
  const auto year = wholeNumber(text.substr(0, 4));
  const auto month = wholeNumber(text.substr(5, 2));
  const auto day = wholeNumber(text.substr(8, 2));
  if (!year || !month || !day || *year < 1) {
    return std::nullopt;
  }
  const YearMonthDay named{*year, *month, *day};
  const Calendar calendar(*TimeZone::withSecondsFromGMT(0));
  return YearMonthDay::normalised(*year, *month, *day, calendar) == named ? std::optional(named)
                                                                          : std::nullopt;
}

}  // namespace

Arguments::Arguments(std::span<const std::string> words, const Signature& signature) {
  bool optionsHaveEnded = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (optionsHaveEnded || word.size() < 2 || !word.starts_with("--")) {
      operands_.push_back(word);
      continue;
    }
    if (word == "--") {
      optionsHaveEnded = true;
      continue;
    }
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const auto option = std::ranges::find(signature.options, name, &Signature::Option::name);
    if (option == signature.options.end()) {
      throw UsageError("There is no option " + name + ".");
    }
    std::string value;
    if (option->value.empty()) {
      if (equals != std::string::npos) {
        throw UsageError(name + " takes no value.");
      }
    } else if (equals != std::string::npos) {
      value = word.substr(equals + 1);
    } else if (++i < words.size()) {
      value = words[i];
    } else {
      throw UsageError(name + " needs a value: " + name + " " + std::string(option->value));
    }
    options_[name].push_back(std::move(value));
  }
  if (operands_.size() < signature.operands.size()) {
    throw UsageError("Missing: " + std::string(signature.operands[operands_.size()]) + ".");
  }
  if (operands_.size() > signature.operands.size() && !signature.takesFurtherOperands) {
    throw UsageError("Too much: “" + operands_[signature.operands.size()] + "”.");
  }
  for (const Signature::Option& option : signature.options) {
    if (option.isRequired && !has(option.name)) {
      throw UsageError("Missing: " + std::string(option.name) + " " + std::string(option.value) +
                       ".");
    }
  }
}

std::optional<std::string> Arguments::value(std::string_view option) const {
  const auto found = options_.find(option);
  return found == options_.end() ? std::nullopt : std::optional(found->second.back());
}

std::vector<std::string> Arguments::values(std::string_view option) const {
  const auto found = options_.find(option);
  return found == options_.end() ? std::vector<std::string>() : found->second;
}

std::optional<YearMonthDay> Arguments::day(std::string_view option) const {
  const auto text = value(option);
  if (!text) {
    return std::nullopt;
  }
  const auto day = dayOf(*text);
  if (!day) {
    throw UsageError(std::string(option) + " takes a day such as 2024-02-29, not “" + *text + "”.");
  }
  return day;
}

std::optional<Decimal> Arguments::number(std::string_view option) const {
  const auto text = value(option);
  if (!text) {
    return std::nullopt;
  }
  const auto number = Decimal::fromWholeString(*text);
  if (!number || number->isNaN()) {
    throw UsageError(std::string(option) + " takes a number such as 0.05, not “" + *text + "”.");
  }
  return number;
}

std::optional<Currency> Arguments::currency(std::string_view option) const {
  const auto text = value(option);
  if (!text) {
    return std::nullopt;
  }
  const auto found = Currency::byCode().find(*text);
  if (found == Currency::byCode().end()) {
    throw UsageError("“" + *text + "” is no currency of ISO 4217, such as CAD.");
  }
  return found->second;
}

}  // namespace corvane::cli
