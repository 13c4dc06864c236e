// What stands outside of the sources, and only some who run the tests have.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>

namespace corvane::testing {

/// The file or folder `name` in the folder that CORVANE_SHARED_DATA names; none where it is not
/// there.
inline std::optional<std::filesystem::path> sharedData(std::string_view name) {
  const char* shared = std::getenv("CORVANE_SHARED_DATA");
  if (shared == nullptr) {
    return std::nullopt;
  }
  const std::filesystem::path path = std::filesystem::path(shared) / name;
  return std::filesystem::exists(path) ? std::optional(path) : std::nullopt;
}

}  // namespace corvane::testing
