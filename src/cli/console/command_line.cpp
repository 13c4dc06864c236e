#include "cli/console/command_line.h"

#include <algorithm>

namespace corvane::cli {
namespace {

const Option& optionNamed(std::string_view name, std::span<const Option> options) {
  const auto found = std::ranges::find(options, name, &Option::name);
  if (found == options.end()) {
    throw UsageError("There is no option “" + std::string(name) + "” here.");
  }
  return *found;
}

}  // namespace

CommandLine::CommandLine(std::span<const std::string> arguments,
                         std::span<const std::string_view> words, std::span<const Option> options) {
  bool areOptionsOver = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (areOptionsOver || !argument.starts_with("--")) {
      words_.push_back(argument);
      continue;
    }
    if (argument == "--") {
      areOptionsOver = true;
      continue;
    }
    const std::size_t equals = argument.find('=');
    const Option& option = optionNamed(argument.substr(0, equals), options);
    const std::string name(option.name);
    std::string value;
    if (option.value.empty()) {
      if (equals != argument.npos) {
        throw UsageError("“" + name + "” takes no value.");
      }
    } else if (equals != argument.npos) {
      value = argument.substr(equals + 1);
    } else if (const auto count =
                   static_cast<std::size_t>(std::ranges::count(option.value, ' ') + 1);
               i + count < arguments.size()) {
      value = arguments[++i];
      for (std::size_t word = 1; word < count; ++word) {
        value += " " + arguments[++i];
      }
    } else {
      throw UsageError("“" + name + "” needs a value: " + std::string(option.value) + ".");
    }
    if (const auto [entry, isNew] = values_.emplace(name, value); !isNew) {
      if (!option.mayRepeat) {
        throw UsageError("“" + name + "” is given twice.");
      }
      entry->second += "\n" + value;
    }
  }
  if (words_.size() < words.size()) {
    throw UsageError(std::string(words[words_.size()]) + " is missing.");
  }
  if (words_.size() > words.size()) {
    throw UsageError("“" + words_[words.size()] + "” is one word too many.");
  }
  for (const Option& option : options) {
    if (option.isRequired && !has(option.name)) {
      throw UsageError("“" + std::string(option.name) + " " + std::string(option.value) +
                       "” is missing.");
    }
  }
}

std::optional<std::string> CommandLine::value(std::string_view option) const {
  const auto found = values_.find(option);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace corvane::cli
