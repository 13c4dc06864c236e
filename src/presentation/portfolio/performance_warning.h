// What a portfolio's chart says when prices or rates could not be had.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane {

/// The warning for a chart that lacks the prices of `symbols` and the rates of `currencies`; empty
/// where it lacks neither. Up to five of each are named, more are counted. `lastStoredDate` is up
/// to when the prices go where the market could not be reached and the cache stood in.
[[nodiscard]] std::string performanceWarning(
    std::vector<std::string> symbols, std::vector<std::string> currencies,
    const std::optional<std::string>& lastStoredDate = std::nullopt);

}  // namespace corvane
