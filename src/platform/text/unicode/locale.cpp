#include "platform/text/unicode/locale.h"

#include <unicode/ucurr.h>

#include <algorithm>
#include <cstdlib>

#include "platform/text/unicode/icu_text.h"

namespace corvane {
namespace {

/// "de_CH.UTF-8@euro" without the encoding and what follows it.
std::string_view languageAndRegion(std::string_view setting) {
  return setting.substr(0, setting.find_first_of(".@"));
}

std::string_view systemSetting() {
  for (const char* variable : {"LC_ALL", "LC_MONETARY", "LANG"}) {
    if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') {
      return languageAndRegion(value);
    }
  }
  return icu::Locale::getDefault().getName();
}

}  // namespace

Locale Locale::current() {
  const std::string setting(systemSetting());
  if (setting.empty() || setting == "C" || setting == "POSIX" || setting == "en_US_POSIX") {
    return {};
  }
  const icu::Locale locale = icu::Locale::createCanonical(setting.c_str());
  const bool isUsable = !locale.isBogus() && *locale.getISO3Language() != '\0';
  return isUsable ? Locale{locale.getName()} : Locale{};
}

std::optional<std::string> Locale::currencyCode() const {
  char16_t code[4];
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length = ucurr_forLocale(identifier.c_str(), code, 4, &status);
  if (U_FAILURE(status) || length != 3) {
    return std::nullopt;
  }
  return toUtf8(icu::UnicodeString(code, length));
}

std::optional<std::string> Locale::localizedCurrencyName(std::string_view code) const {
  const auto isLetter = [](char character) { return character >= 'A' && character <= 'Z'; };
  if (code.size() != 3 || !std::all_of(code.begin(), code.end(), isLetter)) {
    return std::nullopt;
  }
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t length = 0;
  icu::UnicodeString isoCode = toIcu(code);
  const char16_t* name = ucurr_getName(isoCode.getTerminatedBuffer(), identifier.c_str(),
                                       UCURR_LONG_NAME, nullptr, &length, &status);
  // Without a name ICU hands the code back, and says so.
  if (U_FAILURE(status) || status == U_USING_DEFAULT_WARNING ||
      icu::UnicodeString(name, length) == isoCode) {
    return std::nullopt;
  }
  return toUtf8(icu::UnicodeString(name, length));
}

}  // namespace corvane
