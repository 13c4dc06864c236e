// The seeds of tests that draw random cases.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

namespace corvane::testing {

/// Runs `test(random)` for `usualCount` seeds, until one fails. CORVANE_TEST_CASES sets another
/// count and CORVANE_TEST_SEED the first seed.
template <typename Test>
void forRandomCases(std::uint64_t usualCount, Test test) {
  const auto setting = [](const char* name, std::uint64_t usual) {
    const char* text = std::getenv(name);
    return text == nullptr ? usual : std::strtoull(text, nullptr, 10);
  };
  const std::uint64_t first = setting("CORVANE_TEST_SEED", std::random_device()());
  const std::uint64_t count = setting("CORVANE_TEST_CASES", usualCount);
  for (std::uint64_t seed = first; seed < first + count && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("CORVANE_TEST_SEED=" + std::to_string(seed));
    std::mt19937_64 random(seed);
    test(random);
  }
}

}  // namespace corvane::testing
