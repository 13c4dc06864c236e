#include "exchange/statements/statement_preview.h"

#include <algorithm>
#include <utility>

#include "exchange/statements/ofx_statement.h"
#include "exchange/strict/statement_error.h"
#include "exchange/strict/statement_text.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/data/ofx.h"
#include "platform/data/sha256.h"

namespace corvane {
namespace {

/// More refusals than this are not looked for: the file is not this ledger's.
constexpr int mostRefusals = 100;

struct Refusal {
  std::size_t transaction;
  std::string reason;
};

/// What went wrong, and why or what helps.
std::string reasonOf(const Error& error) {
  const std::string further = error.furtherText();
  return error.description().value_or("The row was refused.") +
         (further.empty() ? "" : " " + further);
}

/// Tries rows on copies of a ledger.
class Trial {
 public:
  explicit Trial(Portfolio& portfolio) : portfolio_(portfolio) {
    for (const TransactionPointer& row : portfolio.transactions()) {
      present_.push_back(row->basic);
    }
  }

  /// The first transaction that the ledger refuses; none where it takes all.
  [[nodiscard]] std::optional<Refusal> refusal(std::vector<BasicTransaction> rows) const {
    const auto owner = portfolio_.manager.lock();
    const auto manager = std::make_shared<PortfolioManager>(owner->quoteProvider);
    manager->calendar = owner->calendar;
    const PortfolioPointer copy = manager->createPortfolio(portfolio_.primaryCurrency());
    copy->allowsNegativeBalances = portfolio_.allowsNegativeBalances;
    copy->usesCashAccounts = portfolio_.usesCashAccounts;
    manager->recordTransactions(present_, copy, nullptr);
    std::size_t recorded = 0;
    try {
      manager->recordTransactions(std::move(rows), copy, nullptr,
                                  [&](std::size_t count) { recorded = count; });
    } catch (const Error& error) {
      return Refusal{recorded, reasonOf(error)};
    }
    return std::nullopt;
  }

 private:
  Portfolio& portfolio_;
  std::vector<BasicTransaction> present_;
};

std::vector<BasicTransaction> newTransactions(const std::vector<StatementRow>& rows) {
  std::vector<BasicTransaction> transactions;
  for (const StatementRow& row : rows) {
    if (row.verdict == RowVerdict::isNew) {
      transactions.insert(transactions.end(), row.transactions.begin(), row.transactions.end());
    }
  }
  return transactions;
}

/// The row of `rows` that the new transaction at `index` comes from.
template <typename Rows>
auto& rowOf(std::size_t index, Rows& rows) {
  decltype(&rows.front()) last = nullptr;
  for (auto& row : rows) {
    if (row.verdict != RowVerdict::isNew || row.transactions.empty()) {
      continue;
    }
    last = &row;
    if (index < row.transactions.size()) {
      break;
    }
    index -= row.transactions.size();
  }
  return *last;
}

/// `rows` with those of each day the other way round.
std::vector<StatementRow> turnedWithinDays(const std::vector<StatementRow>& rows) {
  std::vector<StatementRow> turned = rows;
  const auto dayOf = [](const StatementRow& row) {
    return row.transactions.empty() ? std::optional<Date>() : row.transactions.front().tradeDate;
  };
  for (auto begin = turned.begin(); begin != turned.end();) {
    const auto end = std::find_if(
        begin, turned.end(), [&](const StatementRow& row) { return dayOf(row) != dayOf(*begin); });
    std::reverse(begin, end);
    begin = end;
  }
  return turned;
}

void tryOnCopy(std::vector<StatementRow>& rows, Portfolio& portfolio) {
  const Trial trial(portfolio);
  auto refusal = trial.refusal(newTransactions(rows));
  const bool haveTimes =
      std::ranges::all_of(rows, [](const StatementRow& row) { return row.time.has_value(); });
  if (refusal && !haveTimes) {
    std::vector<StatementRow> turned = turnedWithinDays(rows);
    if (!trial.refusal(newTransactions(turned))) {
      rows = std::move(turned);
      return;
    }
  }
  for (int count = 0; refusal && count < mostRefusals; ++count) {
    StatementRow& row = rowOf(refusal->transaction, rows);
    row.verdict = RowVerdict::ledgerRefuses;
    row.reason = refusal->reason;
    const auto rest = newTransactions(rows);
    refusal = rest.empty() ? std::nullopt : trial.refusal(rest);
  }
  if (refusal) {
    for (StatementRow& row : rows) {
      if (row.verdict == RowVerdict::isNew) {
        row.verdict = RowVerdict::ledgerRefuses;
        row.reason = "too many rows before it are refused";
      }
    }
  }
}

/// The shares of `equity` in the ledger of `portfolio` after the day that starts with `day`.
Decimal heldAfter(Portfolio& portfolio, const EquityPointer& equity, Date day) {
  const auto& rows = portfolio.transactions();
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    const EquityPointer* own = (*row)->basic.equity();
    if (own != nullptr && *own == equity && !((*row)->settlementDate() > day)) {
      return (*row)->sharesNet.value_or(0);
    }
  }
  return 0;
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

}  // namespace

bool StatementPreview::isReady() const {
  return std::ranges::none_of(reading.rows, [](const StatementRow& row) {
    return row.verdict == RowVerdict::asks || row.verdict == RowVerdict::refused ||
           row.verdict == RowVerdict::ledgerRefuses;
  });
}

std::vector<BasicTransaction> StatementPreview::transactions() const {
  return newTransactions(reading.rows);
}

std::size_t StatementPreview::newRowCount() const {
  return static_cast<std::size_t>(
      std::ranges::count(reading.rows, RowVerdict::isNew, &StatementRow::verdict));
}

StatementPreview previewStatement(
    const std::string& bytes, const std::vector<StatementProfile>& profiles,
    const PortfolioPointer& portfolio, const StatementOptions& options,
    std::function<std::optional<StatementSurroundings::Rate>(const Currency&, YearMonthDay)> rateOf,
    const std::vector<RecordedImport>& earlier) {
  const auto manager = portfolio->manager.lock();
  const auto ofx =
      isOFX(bytes) ? std::optional(readOFX(bytes, portfolio->primaryCurrency())) : std::nullopt;
  const StatementFile file =
      StatementFile::read(ofx ? ofx->table : bytes, profiles, options.profile);
  const StatementOptions said = withRemembered(options, file.profile->name);
  const StatementSurroundings surroundings = {
      .primaryCurrency = portfolio->primaryCurrency(),
      .calendar = manager->calendar,
      .today = YearMonthDay::of(Date::now(), manager->calendar),
      .equityFor =
          [&](std::string_view symbol) { return manager->quoteProvider->equityWithId(symbol); },
      .heldAfter = [&](const EquityPointer& equity,
                       Date day) { return heldAfter(*portfolio, equity, day); },
      .rateOf = std::move(rateOf)};
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
  findDays(preview.file, preview.reading.rows, manager->calendar);
  for (const RecordedImport& import : earlier) {
    if (import.sha256 == preview.file.sha256) {
      preview.reading.remarks.push_back("The same file was imported on " + import.day + ".");
      break;
    }
  }
  matchWithLedger(preview.reading.rows, *portfolio, manager->calendar, preview.file, earlier, said);
  if (preview.newRowCount() > 0) {
    tryOnCopy(preview.reading.rows, *portfolio);
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

std::vector<BasicTransaction> recordStatement(const StatementPreview& preview,
                                              const PortfolioPointer& portfolio) {
  auto transactions = preview.transactions();
  std::size_t recorded = 0;
  try {
    portfolio->manager.lock()->recordTransactions(transactions, portfolio, nullptr,
                                                  [&](std::size_t count) { recorded = count; });
  } catch (const Error& error) {
    if (recorded == transactions.size()) {
      throw;
    }
    throw StatementError(rowOf(recorded, preview.reading.rows).line, "", reasonOf(error));
  }
  return transactions;
}

}  // namespace corvane
