#include "exchange/statements/statement_preview.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/statements/held_splits.h"
#include "exchange/statements/ofx_statement.h"
#include "exchange/statements/statement_trial.h"
#include "exchange/strict/statement_error.h"
#include "exchange/strict/statement_text.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/data/ofx.h"
#include "platform/data/sha256.h"

namespace corvane {
namespace {

/// The line of the row that the new transaction at `index` comes from.
std::uint32_t lineOf(std::size_t index, const StatementRows& rows) {
  std::uint32_t line = 0;
  for (const std::uint32_t row : recordingOrder(rows)) {
    line = rows.line(row);
    const std::size_t count = rows.transactionCount(row);
    if (index < count) {
      break;
    }
    index -= count;
  }
  return line;
}

/// `options` with what was said before about files of a layout.
StatementOptions withRemembered(const StatementOptions& options, const std::string& layout) {
  StatementOptions said = options;
  if (const auto code = said.remembered.currencies.find(layout);
      !said.currencyCode && code != said.remembered.currencies.end()) {
    said.currencyCode = code->second;
  }
  if (const auto accounts = said.remembered.accounts.find(layout);
      said.accounts.empty() && accounts != said.remembered.accounts.end()) {
    said.accounts = accounts->second;
  }
  return said;
}

/// Says of rows that tell a transaction of the file once more that it is there already.
void stopRepetitions(StatementRows& rows,
                     const std::map<std::uint32_t, std::uint32_t>& repetitions) {
  for (std::size_t row = 0; row < rows.size() && !repetitions.empty(); ++row) {
    const auto first = repetitions.find(rows.line(row));
    const RowVerdict verdict = rows.verdict(row);
    if (first != repetitions.end() &&
        (verdict == RowVerdict::isNew || verdict == RowVerdict::asks)) {
      rows.stop(row, {.verdict = RowVerdict::present,
                      .reason = "it is the transaction of line " + std::to_string(first->second)});
    }
  }
}

}  // namespace

bool StatementPreview::isReady() const {
  const StatementRows& rows = reading.rows;
  return rows.count(RowVerdict::asks) + rows.count(RowVerdict::refused) +
             rows.count(RowVerdict::ledgerRefuses) ==
         0;
}

std::vector<BasicTransaction> StatementPreview::transactions() const {
  std::vector<BasicTransaction> all;
  const auto order = recordingOrder(reading.rows);
  all.reserve(order.size());
  for (const std::uint32_t row : order) {
    for (BasicTransaction& transaction : reading.rows.transactions(row)) {
      all.push_back(std::move(transaction));
    }
  }
  return all;
}

std::size_t StatementPreview::newRowCount() const {
  return reading.rows.count(RowVerdict::isNew);
}

StatementPreview previewStatement(
    std::string_view bytes, const std::vector<StatementProfile>& profiles,
    const PortfolioPointer& portfolio, const StatementOptions& options,
    std::function<std::optional<StatementSurroundings::Rate>(const Currency&, YearMonthDay)> rateOf,
    const std::vector<RecordedImport>& earlier,
    const std::function<void(double fraction)>& progress) {
  const auto manager = portfolio->manager.lock();
  const auto part = [&](double from, double to) {
    return progress ? [&progress, from, to](double done) { progress(from + (to - from) * done); }
                    : std::function<void(double)>();
  };
  const auto ofx =
      isOFX(bytes) ? std::optional(readOFX(bytes, portfolio->primaryCurrency())) : std::nullopt;
  const StatementFile file = StatementFile::read(ofx ? std::string_view(ofx->table) : bytes,
                                                 profiles, options.profile, part(0.0, 0.2));
  const StatementOptions said = withRemembered(options, file.profile->name);
  const StatementSurroundings surroundings = {
      .primaryCurrency = portfolio->primaryCurrency(),
      .calendar = manager->calendar,
      .today = YearMonthDay::of(Date::now(), manager->calendar),
      .equityFor =
          [&](std::string_view symbol) { return manager->quoteProvider->equityWithId(symbol); },
      .rateOf = std::move(rateOf),
      .progress = part(0.2, 0.7)};
  StatementPreview preview{
      .profileId = file.profile->id,
      .profileName = file.profile->name,
      .file = {.sha256 = sha256(bytes),
               .profile = file.profile->name,
               .firstDay = {},
               .lastDay = {}},
      .encodingName = std::string(displayName(ofx ? ofx->encoding : file.encoding)),
      .reading = readStatement(file, surroundings, said)};
  const auto& remarks = ofx ? ofx->remarks : file.remarks;
  preview.reading.remarks.insert(preview.reading.remarks.begin(), remarks.begin(), remarks.end());
  StatementRows& rows = preview.reading.rows;
  const HeldSplits splits(rows, *portfolio, manager->calendar);
  findDays(preview.file, rows);
  for (const RecordedImport& import : earlier) {
    if (import.sha256 == preview.file.sha256) {
      preview.reading.remarks.push_back("The same file was imported on " + import.day + ".");
      break;
    }
  }
  if (ofx) {
    stopRepetitions(rows, ofx->repetitions);
  }
  matchWithLedger(rows, *portfolio, manager->calendar, preview.file, earlier, said);
  tryOnLedger(rows, *portfolio, splits, part(0.7, 1.0));
  if (progress) {
    progress(1.0);
  }
  return preview;
}

LearnedAnswers answersToLearn(const StatementPreview& preview, const ProfileShelf& shelf,
                              const StatementOptions& options) {
  const StatementProfile* profile = shelf.find(preview.profileId);
  if (profile == nullptr) {
    return {};
  }
  LearnedAnswers answers{.kinds = options.kinds, .days = {}, .decimal = {}};
  answers.days = profile->days ? std::nullopt : options.days;
  if (!profile->decimal && !profile->decimalOfEachCell) {
    answers.decimal = options.decimal;
  }
  return answers;
}

std::vector<BasicTransaction> recordStatement(
    const StatementPreview& preview, const PortfolioPointer& portfolio,
    const std::function<void(double fraction)>& progress) {
  constexpr std::size_t rowsOfUpdate = 256;
  constexpr double bookedPart = 0.6;
  constexpr double mostTold = 0.999;
  std::size_t told = 0;
  auto transactions = preview.transactions();
  std::size_t recorded = 0;
  try {
    portfolio->manager.lock()->recordTransactions(
        transactions, portfolio, nullptr, [&](std::size_t count) {
          recorded = count;
          const double all = static_cast<double>(transactions.size());
          if (progress && ++told % rowsOfUpdate == 0) {
            // Once all are booked it is told of those that are stored, by as many calls.
            progress(
                told <= transactions.size()
                    ? bookedPart * static_cast<double>(told) / all
                    : std::min(mostTold, bookedPart + (1 - bookedPart) *
                                                          (static_cast<double>(told) / all - 1)));
          }
        });
  } catch (const UserCancelledError&) {
    throw;
  } catch (const Error& error) {
    if (recorded == transactions.size()) {
      throw;
    }
    throw StatementError(lineOf(recorded, preview.reading.rows), "", ledgerRefusalText(error));
  }
  return transactions;
}

}  // namespace corvane
