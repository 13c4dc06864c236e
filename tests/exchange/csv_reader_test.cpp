#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/csv.h"

namespace corvane {
namespace {

using Rows = std::vector<std::vector<std::string>>;

Rows rowsOf(std::string_view text, const CSVDelimiter& delimiter = CSVDelimiter::comma()) {
  Rows rows;
  parseRows(text, delimiter, 0, std::nullopt,
            [&](const CSVRow& row) { rows.push_back(row.strings()); });
  return rows;
}

TEST(CSVReader, ReadsQuotedFields) {
  EXPECT_EQ(rowsOf("a,\"b\"\"c\",d"), (Rows{{"a", "b\"c", "d"}}));
}

}  // namespace
}  // namespace corvane
