// Identifiers that nobody else makes.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace corvane {

/// 128 random bits in the form of RFC 4122, version 4. A plain value; any thread.
class UUID {
 public:
  /// A new one.
  UUID();

  /// "E621E1F8-C36C-495A-93FC-0C247A3E6E5F"
  [[nodiscard]] std::string string() const;

  friend auto operator<=>(const UUID&, const UUID&) = default;

 private:
  friend struct std::hash<UUID>;
  std::array<std::uint8_t, 16> bytes_;
};

}  // namespace corvane

template <>
struct std::hash<corvane::UUID> {
  std::size_t operator()(const corvane::UUID& uuid) const noexcept;
};
