// Worked examples of reports: our own in cases/, and those with figures that others have published,
// which lie beside the project.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "core/decimal/decimal.h"
#include "core/money/year_month_day.h"
#include "platform/data/json.h"
#include "support/checkout.h"
#include "support/shared_data.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

inline double numberOf(const JSONValue& value) {
  return std::stod(value.number().text());
}

/// The amount in a text or in a number.
inline Decimal amountOf(const JSONValue& value) {
  const bool isText = value.visit(
      [](const auto& held) { return std::is_same_v<decltype(held), const std::string&>; });
  return Decimal::fromWholeString(isText ? value.string() : value.number().text()).value();
}

/// "2024-03-09"
inline YearMonthDay dayOf(const JSONValue& value) {
  const std::string& text = value.string();
  return {std::stoi(text.substr(0, 4)), std::stoi(text.substr(5, 2)), std::stoi(text.substr(8, 2))};
}

inline const JSONValue* fieldOf(const JSONValue& value, std::string_view name) {
  for (const auto& [key, field] : value.object()) {
    if (key == name) {
      return &field;
    }
  }
  return nullptr;
}

inline bool isArray(const JSONValue& value) {
  return value.visit([](const auto& held) {
    return std::is_same_v<std::decay_t<decltype(held)>, JSONValue::Array>;
  });
}

struct ReportCase {
  std::string id;
  const JSONValue& inputs;
  const JSONValue& expected;
  double tolerance;
};

/// All worked examples: our own, and what the list that CORVANE_SHARED_DATA names has besides.
inline std::vector<JSONValue> allReportCases() {
  const std::string name = "report-cases.json";
  const auto read = [](const std::filesystem::path& file) {
    return JSONValue::parse(readText(file)).at("cases").array();
  };
  std::vector<JSONValue> all = read(sourcePath("tests/reports/cases/" + name));
  if (const auto further = sharedData(name)) {
    std::ranges::move(read(*further), std::back_inserter(all));
  }
  return all;
}

/// Calls `check(case)` for each case of `area`, which returns whether it has compared anything.
/// A case that it does not know how to check fails, as does an area without cases.
template <typename Check>
void forReportCases(const std::string& area, Check check) {
  const std::vector<JSONValue> all = allReportCases();
  int checked = 0;
  for (const JSONValue& made : all) {
    if (made.at("area").string() != area) {
      continue;
    }
    const std::string id = made.at("id").string();
    SCOPED_TRACE(id);
    const JSONValue* tolerance = fieldOf(made, "tolerance");
    const ReportCase told{id, made.at("inputs"), made.at("expected"),
                          tolerance == nullptr ? 0 : numberOf(*tolerance)};
    try {
      EXPECT_TRUE(check(told)) << "nobody has checked this case";
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what();
    }
    ++checked;
  }
  if (checked == 0 && std::getenv("CORVANE_SHARED_DATA") == nullptr) {
    GTEST_SKIP() << "CORVANE_SHARED_DATA names no folder with worked examples of " << area;
  }
  EXPECT_GT(checked, 0) << "no cases of " << area;
  ::testing::Test::RecordProperty("casesOf." + area, checked);
  std::printf("[  cases   ] %s: %d checked\n", area.c_str(), checked);
}

}  // namespace corvane::testing
