// The columns of a file, as an option lists them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::cli {

/// The field of each column in `list`, a text such as "tradeDate,type,,cashAmount"; an empty name
/// for a column that is ignored. Throws UsageError for a name that is not in `allFields` and for
/// one that stands twice.
[[nodiscard]] std::vector<std::string> fieldNames(std::string_view list,
                                                  const std::vector<std::string>& allFields);

}  // namespace corvane::cli
