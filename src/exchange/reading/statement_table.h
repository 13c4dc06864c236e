// A table of a layout as a file has it: where the text of each field is to be found.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "exchange/profiles/statement_profile.h"

namespace corvane {

/// What a row of a statement may tell.
enum class RowField : std::uint8_t {
  date,
  time,
  settle,
  type,
  note,
  group,
  symbol,
  isin,
  name,
  shares,
  sharesAfter,
  price,
  amount,
  currency,
  fee,
  tax,
  rate,
  inverseRate,
  equivalent,
  cost,
  id,
  account
};
constexpr std::size_t rowFieldCount = 22;

/// "date", "shares-after" and so on, as layouts have them.
[[nodiscard]] std::string_view rawValue(RowField field);
[[nodiscard]] std::optional<RowField> rowFieldWithRawValue(std::string_view rawValue);

class StatementTable {
 public:
  StatementTable(const StatementTableLayout& layout, const std::vector<std::string>& heading);

  [[nodiscard]] const StatementTableLayout& layout() const { return *layout_; }
  /// The place of a heading or of "#9"; none where the file has no such column.
  [[nodiscard]] std::optional<std::size_t> column(std::string_view name) const;
  [[nodiscard]] std::size_t width() const { return width_; }

  /// Where a text comes from.
  struct Source {
    const FieldSource* told = nullptr;
    std::optional<std::size_t> column = {};
    std::optional<std::size_t> divisor = {};
  };
  /// The sources of every field, for the rows of one rule or of none.
  struct Plan {
    std::array<std::vector<Source>, rowFieldCount> sources;
    /// The fields whose sources are the rule's own.
    std::bitset<rowFieldCount> isOwn;
  };
  /// That of rows for which no rule is known.
  [[nodiscard]] const Plan& plan() const { return *plans_.front(); }

  /// What a text of the type's columns means.
  struct KindMatch {
    const KindRule* rule = nullptr;     ///< null where no pattern of the layout matches
    const Plan* plan = nullptr;         ///< never null
    std::optional<StatementKind> kind;  ///< none where the layout does not know the text
    TextPattern::Captures captures = {};
  };
  /// Good until the next call. Texts that were asked for before are remembered, up to a number; so
  /// not safe on two threads at once.
  [[nodiscard]] const KindMatch& kindOf(std::string_view type) const;

 private:
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  template <typename Value>
  using ByText = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

  [[nodiscard]] KindMatch matchOf(std::string_view type) const;
  [[nodiscard]] std::vector<Source> placed(const std::vector<FieldSource>& sources) const;

  const StatementTableLayout* layout_;
  ByText<std::size_t> columns_;
  std::size_t width_;
  std::vector<std::unique_ptr<Plan>> plans_;  ///< that of no rule, and one for each rule
  mutable ByText<KindMatch> kinds_;
  mutable KindMatch unkept_;  ///< once there are too many texts to remember
};

}  // namespace corvane
