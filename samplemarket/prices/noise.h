// Reproducible chance: a pure function of a key, a stream and an index.
#pragma once

#include <cstdint>
#include <string_view>

namespace corvane::samplemarket {

/// Numbers that look random and are the same on every machine and in every run, since they come of
/// integer arithmetic alone. One key has many independent streams, told apart by a number.
class Noise {
 public:
  constexpr explicit Noise(std::string_view key) {
    for (const char byte : key) {
      seed_ = (seed_ ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
  }
  constexpr Noise(const Noise& parent, std::int64_t child)
      : seed_(mixed(parent.seed_ + static_cast<std::uint64_t>(child) * 0x9E3779B97F4A7C15U)) {}

  [[nodiscard]] constexpr std::uint64_t bits(int stream, std::int64_t index) const {
    return mixed(mixed(seed_ + static_cast<std::uint64_t>(stream)) ^
                 static_cast<std::uint64_t>(index));
  }

  /// Evenly spread over 0 ..< `bound`, which is positive and less than 2^31.
  [[nodiscard]] constexpr std::int64_t uniform(int stream, std::int64_t index,
                                               std::int64_t bound) const {
    return static_cast<std::int64_t>(
        (bits(stream, index) >> 33U) * static_cast<std::uint64_t>(bound) >> 31U);
  }

  /// Bell-shaped around 0 with this standard deviation, and never beyond 3.5 of it.
  [[nodiscard]] constexpr std::int64_t normal(int stream, std::int64_t index,
                                              std::int64_t deviation) const {
    const std::uint64_t random = bits(stream, index);
    std::int64_t sum = 0;
    for (unsigned word = 0; word < 4; ++word) {
      sum += static_cast<std::int64_t>(random >> (16 * word) & 0xFFFFU);
    }
    return (sum - 131070) * deviation / 37837;
  }

 private:
  static constexpr std::uint64_t mixed(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
  }

  std::uint64_t seed_ = 14695981039346656037U;
};

}  // namespace corvane::samplemarket
