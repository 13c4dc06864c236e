// What the user typed behind the name of a command.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error.h"

namespace corvane::cli {

/// An option of a command.
struct Option {
  std::string_view name;  ///< "--portfolio"
  /// What its value is called in the help, "NAME"; empty for a switch. "SYMBOL SHARES" takes two
  /// arguments, which become one text with a blank between.
  std::string_view value;
  std::string_view help;
  bool isRequired = false;
  bool mayRepeat = false;         ///< several values are one text with a line for each
  std::string_view choices = {};  ///< the values that there are, with blanks between; none for any
};

/// `options` with those of all `further` lists behind them.
template <typename... Further>
[[nodiscard]] std::vector<Option> joined(std::vector<Option> options, const Further&... further) {
  (options.insert(options.end(), further.begin(), further.end()), ...);
  return options;
}

/// Something was typed that the command does not take; the text says what.
class UsageError : public ErrorValue<UsageError> {
 public:
  explicit UsageError(std::string text) : text_(std::move(text)) {}
  [[nodiscard]] std::optional<std::string> description() const override { return text_; }
  [[nodiscard]] bool hasSameValues(const UsageError& other) const { return text_ == other.text_; }

 private:
  std::string text_;
};

/// The words and options of one call of a command.
class CommandLine {
 public:
  /// Reads `arguments`, which hold one word for each of `words` and any of `options`, in any order.
  /// An option and its value are two arguments, or one with a "=" between; what follows "--" are
  /// words. Throws UsageError.
  CommandLine(std::span<const std::string> arguments, std::span<const std::string_view> words,
              std::span<const Option> options);

  [[nodiscard]] const std::string& word(std::size_t index) const { return words_[index]; }
  [[nodiscard]] bool has(std::string_view option) const { return values_.contains(option); }
  [[nodiscard]] std::optional<std::string> value(std::string_view option) const;
  /// The value of an option that is required.
  [[nodiscard]] const std::string& required(std::string_view option) const {
    return values_.find(option)->second;
  }

 private:
  std::vector<std::string> words_;
  std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace corvane::cli
