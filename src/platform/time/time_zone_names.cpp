#include "platform/time/time_zone_names.h"

#include <unicode/strenum.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace corvane {
namespace {

/// Neither an offset, whose sign surprises, nor an abbreviation.
bool isPlace(std::string_view name) {
  return name.contains('/') && !name.starts_with("Etc/") && !name.starts_with("SystemV/");
}

std::vector<std::string> namesInDatabase() {
  std::vector<std::string> names;
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::StringEnumeration> all(
      icu::TimeZone::createTimeZoneIDEnumeration(UCAL_ZONE_TYPE_ANY, nullptr, nullptr, status));
  while (all != nullptr && U_SUCCESS(status)) {
    const char* name = all->next(nullptr, status);
    if (name == nullptr) {
      break;
    }
    if (isPlace(name)) {
      names.emplace_back(name);
    }
  }
  std::ranges::sort(names);
  names.emplace_back("UTC");
  return names;
}

}  // namespace

const std::vector<std::string>& timeZoneNames() {
  static const std::vector<std::string> names = namesInDatabase();
  return names;
}

}  // namespace corvane
