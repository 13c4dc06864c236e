// Texts of many rows, kept one behind the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace corvane {

/// Keeps texts under keys of 32 bits. A text takes its own length and four to seven bytes more, and
/// texts that many rows share are kept once. What it hands out is good as long as the pool.
class TextPool {
 public:
  using Key = std::uint32_t;
  static constexpr Key empty = 0;

  TextPool();

  /// Keeps `text`; the key of an equal one where it was kept lately. Throws StatementError where
  /// the pool has grown beyond 16 GiB.
  Key add(std::string_view text);
  [[nodiscard]] std::string_view text(Key key) const;

 private:
  static constexpr std::size_t unit = 4;  ///< bytes that a key counts in
  static constexpr std::size_t unitsOfChunk = std::size_t{1} << 16;
  static constexpr std::size_t recentCount = 4096;

  [[nodiscard]] std::size_t placeFor(std::size_t units);

  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  std::vector<std::byte*> chunks_;  ///< a text that is longer than a chunk takes several
  std::size_t end_ = 0;             ///< in units
  std::vector<Key> recent_;         ///< by hash
};

}  // namespace corvane
