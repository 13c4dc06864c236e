// The words of a command line, told apart by what a command takes.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/currency.h"
#include "core/decimal.h"
#include "core/year_month_day.h"
#include "platform/error.h"

namespace corvane::cli {

/// A command line that cannot be understood; the text says why.
class UsageError : public ErrorValue<UsageError> {
 public:
  explicit UsageError(std::string what) : text(std::move(what)) {}
  std::string text;
  [[nodiscard]] std::optional<std::string> description() const override { return text; }
  [[nodiscard]] bool hasSameValues(const UsageError& other) const { return text == other.text; }
};

/// What a command takes.
struct Signature {
  struct Option {
    std::string_view name;   ///< "--portfolio"
    std::string_view value;  ///< what its value is called, "NAME"; empty for a switch
    std::string_view help;
    bool isRequired = false;
  };
  std::vector<std::string_view> operands = {};  ///< what the words without a dash are called
  bool takesFurtherOperands = false;            ///< the last one may be repeated
  std::vector<Option> options = {};
};

/// The words of one command, checked against its signature.
class Arguments {
 public:
  /// Throws UsageError for unknown options and for a wrong number of words. "--name=value" and
  /// "--name value" are the same; behind "--" nothing is an option.
  Arguments(std::span<const std::string> words, const Signature& signature);

  [[nodiscard]] const std::vector<std::string>& operands() const { return operands_; }
  [[nodiscard]] const std::string& operand(std::size_t place) const { return operands_[place]; }
  [[nodiscard]] bool has(std::string_view option) const { return options_.contains(option); }
  /// The value of `option`, the last one where it is there more than once.
  [[nodiscard]] std::optional<std::string> value(std::string_view option) const;
  /// All values of `option`.
  [[nodiscard]] std::vector<std::string> values(std::string_view option) const;

  // Values of a kind; none where the option is absent. Throw UsageError for other texts.
  [[nodiscard]] std::optional<YearMonthDay> day(std::string_view option) const;  ///< 2024-02-29
  [[nodiscard]] std::optional<Decimal> number(std::string_view option) const;
  [[nodiscard]] std::optional<Currency> currency(std::string_view option) const;

 private:
  std::vector<std::string> operands_;
  std::map<std::string, std::vector<std::string>, std::less<>> options_;
};

}  // namespace corvane::cli
