#include "exchange/reading/statement_reader.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <utility>

#include "exchange/reading/row_drafts.h"
#include "exchange/reading/row_groups.h"
#include "exchange/reading/row_money.h"
#include "exchange/reading/row_texts.h"

namespace corvane {
namespace {

constexpr std::array readNumberFields = {
    RowField::shares,     RowField::sharesAfter, RowField::price, RowField::amount,
    RowField::fee,        RowField::tax,         RowField::rate,  RowField::inverseRate,
    RowField::equivalent, RowField::cost};

/// Rows between two calls of a progress handler.
constexpr std::size_t rowsOfUpdate = 4096;

class RowsReader {
 public:
  RowsReader(const StatementFile& file, const StatementSurroundings& surroundings,
             const StatementOptions& options)
      : file_(file),
        profile_(*file.profile),
        surroundings_(surroundings),
        options_(options),
        row_(file) {
    reading_.rows = StatementRows(surroundings.calendar);
  }

  StatementReading read() {
    findEnd();
    learn();
    StatementRows& rows = reading_.rows;
    rows.reserve(file_.rows.size() + file_.apart.size());
    RowGroups groups;
    draft(groups);
    sortByTime(groups);
    groups.merge(rows);
    RowMoney money(surroundings_);
    for (std::size_t i = 0; i < end_; ++i) {
      money.finish(rows, i);
    }
    for (std::size_t i = end_; i < file_.rows.size(); ++i) {
      rows.addApart(file_.rows[i].line, RowVerdict::leftOut, "below the table");
    }
    rows.appendApart(file_.apart);
    return std::move(reading_);
  }

 private:
  /// Rows at the end without an amount or without a day are no rows of the table.
  void findEnd() {
    end_ = file_.rows.size();
    for (; end_ > 0; --end_) {
      row_.goTo(end_ - 1);
      const bool hasDay =
          row_.text(RowField::date).find_first_of("0123456789") != std::string_view::npos;
      const bool hasAmount =
          !row_.text(RowField::amount).empty() || !row_.text(RowField::shares).empty();
      if (hasDay && (hasAmount || row_.kind())) {
        break;
      }
    }
  }

  /// Works out from all rows how days and numbers are written.
  void learn() {
    const RowKinds kinds(options_);
    const auto toldMark = options_.decimal ? options_.decimal : profile_.decimal;
    const bool needsMark = !profile_.decimalOfEachCell && !toldMark;
    DayOrderRecognition days;
    DecimalMarkRecognition marks;
    std::string lastAccount;
    for (std::size_t i = 0; i < end_; ++i) {
      tellProgress(0.0, i);
      row_.goTo(i);
      if (const std::string_view account = row_.text(RowField::account); account != lastAccount) {
        lastAccount = account;
        if (!account.empty()) {
          reading_.accounts.insert(lastAccount);
        }
      }
      if (kinds.kindOf(row_) == StatementKind::ignore || options_.leaveOut.contains(row_.line()) ||
          !kinds.takesAccountOf(row_)) {
        continue;
      }
      learnDays(days);
      if (needsMark) {
        for (const RowField field : readNumberFields) {
          if (const std::string_view text = row_.text(field); !text.empty()) {
            marks.add(row_.line(), row_.columnOf(field), text);
          }
        }
        marks.addTrade(row_.text(RowField::shares), row_.text(RowField::price),
                       row_.text(RowField::amount));
      }
    }
    tellAccounts();
    const auto told = options_.days ? options_.days : profile_.days;
    const auto verdict = days.verdict(surroundings_.today, told);
    notation_.days = verdict.order;
    reading_.remarks.push_back(verdict.why);
    if (!profile_.decimalOfEachCell) {
      notation_.decimal = toldMark ? *toldMark : marks.mark();
    }
  }

  void learnDays(DayOrderRecognition& days) {
    const std::string_view trade = row_.text(RowField::date);
    const std::string_view settlement = row_.text(RowField::settle);
    if (!days.isLike(trade, settlement)) {
      days.add(row_.line(), row_.columnOf(RowField::date), trade, row_.columnOf(RowField::settle),
               settlement);
    }
  }

  void tellAccounts() {
    if (reading_.accounts.size() <= 1 || !options_.accounts.empty()) {
      return;
    }
    std::string names;
    for (const std::string& account : reading_.accounts) {
      names += (names.empty() ? "“" : ", “") + account + "”";
    }
    reading_.remarks.push_back("The file has rows of several accounts: " + names + ".");
  }

  void draft(RowGroups& groups) {
    RowDrafter drafter(row_, profile_, surroundings_, options_, notation_);
    for (std::size_t i = 0; i < end_; ++i) {
      tellProgress(0.5, i);
      row_.goTo(i);
      reading_.rows.add(drafter.draft());
      if (reading_.rows.verdict(i) == RowVerdict::isNew) {
        groups.add(static_cast<std::uint32_t>(i), row_.text(RowField::group));
      }
    }
    for (const auto& [code, sum] : drafter.rounded()) {
      reading_.remarks.push_back("Amounts were rounded, by " + sum.description() + " " + code +
                                 " in all.");
    }
  }

  /// Newest first is turned round; then by day, and by time where every row has one.
  void sortByTime(RowGroups& groups) {
    StatementRows& rows = reading_.rows;
    std::vector<std::uint32_t> order(rows.size());
    std::iota(order.begin(), order.end(), 0U);
    std::optional<std::int32_t> first;
    std::optional<std::int32_t> last;
    bool haveTimes = true;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const std::int32_t day = rows.tradeDay(i);
      if (day != StatementRows::unknownDay) {
        first = first ? first : day;
        last = day;
        haveTimes = haveTimes && rows.time(i).has_value();
      }
    }
    const bool isOneDay = first && first == last;
    if (first && (*last < *first || (isOneDay && profile_.isNewestFirst))) {
      std::ranges::reverse(order);
    }
    // A row without a day goes with the one before it.
    std::vector<std::int32_t> days(rows.size());
    std::int32_t before = StatementRows::unknownDay;
    for (const std::uint32_t row : order) {
      const std::int32_t day = rows.tradeDay(row);
      before = day == StatementRows::unknownDay ? before : day;
      days[row] = before;
    }
    const auto goesBefore = [&](std::uint32_t left, std::uint32_t right) {
      if (days[left] != days[right]) {
        return days[left] < days[right];
      }
      return haveTimes && rows.time(left) < rows.time(right);
    };
    if (!std::ranges::is_sorted(order, goesBefore)) {
      std::ranges::stable_sort(order, goesBefore);
    }
    if (!std::ranges::is_sorted(order)) {
      rows.reorder(order);
      groups.reorder(order);
    }
  }

  /// The file is gone through twice; `from` is where this time begins.
  void tellProgress(double from, std::size_t row) const {
    if (surroundings_.progress && row % rowsOfUpdate == 0) {
      surroundings_.progress(from + static_cast<double>(row) / (2.0 * static_cast<double>(end_)));
    }
  }

  const StatementFile& file_;
  const StatementProfile& profile_;
  const StatementSurroundings& surroundings_;
  const StatementOptions& options_;
  RowTexts row_;
  std::size_t end_ = 0;  ///< of the rows that are rows of a table
  StatementNotation notation_;
  StatementReading reading_;
};

}  // namespace

StatementReading readStatement(const StatementFile& file, const StatementSurroundings& surroundings,
                               const StatementOptions& options) {
  return RowsReader(file, surroundings, options).read();
}

}  // namespace corvane
