#include "platform/text/formats/month_names.h"

#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>

#include <algorithm>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "platform/text/unicode/icu_text.h"
#include "platform/text/unicode/letter_case.h"
#include "platform/text/unicode/locale.h"

namespace corvane {
namespace {

using MonthsByName = std::map<std::string, int, std::less<>>;

std::string plainName(std::string_view name) {
  while (name.ends_with('.')) {
    name.remove_suffix(1);
  }
  return lowercased(name);
}

void addNames(const std::string& language, MonthsByName& months) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::DateFormatSymbols symbols(icu::Locale(language.c_str()), status);
  if (U_FAILURE(status)) {
    return;
  }
  using Symbols = icu::DateFormatSymbols;
  for (const auto context : {Symbols::FORMAT, Symbols::STANDALONE}) {
    for (const auto width : {Symbols::WIDE, Symbols::ABBREVIATED}) {
      std::int32_t count = 0;
      const icu::UnicodeString* names = symbols.getMonths(count, context, width);
      int month = 0;
      for (const auto& name : std::span(names, static_cast<std::size_t>(std::min(count, 12)))) {
        // What an earlier language calls it counts.
        months.emplace(plainName(toUtf8(name)), ++month);
      }
    }
  }
}

MonthsByName learnedNames() {
  MonthsByName months;
  for (const std::string& language :
       {std::string("en"), Locale::current().identifier, std::string("de"), std::string("fr"),
        std::string("nl"), std::string("it"), std::string("es"), std::string("sv")}) {
    addNames(language, months);
  }
  // Statements write what no locale does.
  months.emplace("sept", 9);
  months.emplace("mrz", 3);
  months.emplace("maerz", 3);
  return months;
}

}  // namespace

std::optional<int> monthNamed(std::string_view name) {
  // The language of the user does not change while the program runs.
  static const MonthsByName months = learnedNames();
  const auto found = months.find(plainName(name));
  return found == months.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace corvane
