// What is wrong with a layout of statements, and where in its file.
#pragma once

#include <optional>
#include <string>

#include "platform/data/toml.h"
#include "platform/error.h"

namespace corvane {

class ProfileError : public ErrorValue<ProfileError> {
 public:
  ProfileError(std::string file, TextPlace where, std::string what)
      : path(std::move(file)), place(where), reason(std::move(what)) {}

  std::string path;
  TextPlace place;
  std::string reason;

  /// "~/.config/corvane/statements/x.toml, line 7, column 9: “bying” is not a kind."
  [[nodiscard]] std::optional<std::string> description() const override {
    return path + ", line " + std::to_string(place.line) + ", column " +
           std::to_string(place.column) + ": " + reason;
  }
  [[nodiscard]] bool hasSameValues(const ProfileError& other) const {
    return path == other.path && place == other.place && reason == other.reason;
  }
};

}  // namespace corvane
