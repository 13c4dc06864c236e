#include "storage/database/ledger_writer.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <string_view>
#include <utility>

#include "ledger/portfolio/portfolio_manager_error.h"
#include "storage/database/stored_row.h"

namespace corvane {

/// The statements for one table of yearly totals. Their values are the portfolio, the year, the
/// equity or currency, and then the figures.
struct LedgerWriter::TotalsTable {
  std::string_view select, insert, update, remove;
};

namespace {

using Failure = PortfolioManagerError;

constexpr std::string_view insertTransactionSql =
    "INSERT INTO transactions\n"
    "(portfolioId, type, tradeDate, settlementDate, sequence, currency, cashAdded, cashNet, "
    "equityId, shareUnitsAdded, shareUnitsNet, equivalentCashAdded, costBasePrior, note)\n"
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?);";

constexpr std::string_view updateTransactionSql =
    "UPDATE transactions SET\n"
    "(type, tradeDate, settlementDate, sequence, currency, cashAdded, cashNet, equityId, "
    "shareUnitsAdded, shareUnitsNet, equivalentCashAdded, costBasePrior, note)\n"
    "= (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)\n"
    "WHERE id = ? AND portfolioId = ?;";

constexpr LedgerWriter::TotalsTable equityTotals = {
    "SELECT year, equityId, shareUnitsHeld, costBase, grossCapitalGain FROM equitiesByYear\n"
    "WHERE portfolioId = ? AND year >= ?",
    "INSERT INTO equitiesByYear\n"
    "(portfolioId, year, equityId, shareUnitsHeld, costBase, grossCapitalGain)\n"
    "VALUES (?, ?, ?, ?, ?, ?)",
    "UPDATE equitiesByYear SET shareUnitsHeld = ?4, costBase = ?5, grossCapitalGain = ?6\n"
    "WHERE portfolioId = ?1 AND year = ?2 AND equityId = ?3",
    "DELETE FROM equitiesByYear\nWHERE portfolioId = ? AND year = ? AND equityId = ?"};

constexpr LedgerWriter::TotalsTable cashTotals = {
    "SELECT year, currency, cashOnHand, netDeposited FROM cashByYear\n"
    "WHERE portfolioId = ? AND year >= ?",
    "INSERT INTO cashByYear\n"
    "(portfolioId, year, currency, cashOnHand, netDeposited)\n"
    "VALUES (?, ?, ?, ?, ?)",
    "UPDATE cashByYear SET cashOnHand = ?4, netDeposited = ?5\n"
    "WHERE portfolioId = ?1 AND year = ?2 AND currency = ?3",
    "DELETE FROM cashByYear\nWHERE portfolioId = ? AND year = ? AND currency = ?"};

/// The largest power of ten that fits the column `sharesFactor`.
constexpr int maximumShareDecimals = 18;

StoredPortfolioTransaction& stored(const TransactionPointer& row) {
  assert(dynamic_cast<StoredPortfolioTransaction*>(row.get()) != nullptr &&
         "a stored portfolio holds stored rows only");
  return static_cast<StoredPortfolioTransaction&>(*row);
}

/// The smaller of the exponents of the shares that `row` adds and leaves; 0 where it has none.
int shareExponent(const PortfolioTransaction& row) {
  if (!row.sharesNet) {
    return 0;
  }
  const Decimal added = transactionEffect(row.basic.kind).sharesAdded;
  return std::min(added.exponent(), row.sharesNet->exponent());
}

/// Whether a column of the row that `row` stands on holds `value`.
bool holds(const SQLiteStatement& row, int column, const SQLiteValue& value) {
  if (const auto* whole = std::get_if<std::int64_t>(&value)) {
    return row.type(column) == SQLiteStatement::Type::integer && row.integer(column) == *whole;
  }
  return row.type(column) == SQLiteStatement::Type::real &&
         row.real(column) == std::get<double>(value);
}

}  // namespace

void LedgerWriter::rowChanged(StoredPortfolioTransaction& row) {
  if (!row.awaitsWriting_) {
    row.awaitsWriting_ = true;
    changed_.push_back({&row, row.transactionId, row.dateSequence});
  }
}

void LedgerWriter::remove(const Transactions& rows) {
  for (const TransactionPointer& pointer : rows) {
    StoredPortfolioTransaction& row = stored(pointer);
    assert(row.transactionId && "only rows of the file are removed from it");
    database_.execute("DELETE FROM transactions\nWHERE portfolioId = ?\nAND id = ?;",
                      {portfolio_.portfolioId, *row.transactionId});
    removed_.push_back({&row, row.transactionId, row.dateSequence});
    row.transactionId.reset();
  }
}

void LedgerWriter::resequence(const Transactions& placed) {
  if (placed.empty()) {
    return;
  }
  const Date earliest = std::ranges::min(placed, {}, [](const TransactionPointer& row) {
                          return row->settlementDate().timeIntervalSinceReferenceDate();
                        })->settlementDate();
  const auto& rows = portfolio_.storedTransactions();
  const auto first = std::ranges::lower_bound(rows, earliest, std::less<>(),
                                              &PortfolioTransaction::settlementDate);
  if (first == rows.end() || (*first)->settlementDate() != earliest) {
    failInconsistent("Failed to find the first same-dated transaction; impossible.");
  }
  Date current = earliest;
  int counter = 0;
  for (auto next = first; next != rows.end(); ++next) {
    StoredPortfolioTransaction& row = stored(*next);
    if (row.settlementDate() != current) {
      current = row.settlementDate();
      counter = 0;
    }
    // A row that a deletion had taken out comes back with its balances but without an id.
    if (row.dateSequence != counter || !row.transactionId) {
      rowChanged(row);
      row.dateSequence = counter;
    }
    ++counter;
  }
}

void LedgerWriter::write(LedgerChange& change) {
  changed_.reserve(std::ranges::size(change.wasRecalculated()));
  for (const TransactionPointer& row : change.wasRecalculated()) {
    rowChanged(stored(row));
  }
  remove(change.removed);
  resequence(change.placed);
  const int decimals = requiredShareDecimals(change);
  if (decimals > portfolio_.shareDecimals()) {
    rescaleShares(decimals);
  }
  for (const Former& former : changed_) {
    change.willKeep(former.row);
    write(*former.row);
    former.row->awaitsWriting_ = false;
  }
  change.willKeep(nullptr);
  if (const auto firstYear = change.firstRecalculatedYear()) {
    writeTotals(equityTotals, *firstYear, totalsOfEquities(*firstYear));
    writeTotals(cashTotals, *firstYear, totalsOfCash(*firstYear));
  }
}

void LedgerWriter::restore() {
  for (const auto* formers : {&changed_, &removed_}) {
    for (const Former& former : *formers) {
      former.row->transactionId = former.transactionId;
      former.row->dateSequence = former.dateSequence;
      former.row->awaitsWriting_ = false;
    }
  }
  portfolio_.sharesFactor = formerSharesFactor_;
  portfolio_.equityRowIds_.clear();
}

int LedgerWriter::requiredShareDecimals(LedgerChange& change) const {
  const Former* finest = nullptr;
  int exponent = 0;
  for (const Former& former : changed_) {
    if (const int own = shareExponent(*former.row); own < exponent) {
      exponent = own;
      finest = &former;
    }
  }
  if (-exponent > portfolio_.shareDecimals()) {
    // Whatever goes wrong with a finer scale is this row's doing.
    change.willKeep(finest->row);
  }
  if (-exponent > maximumShareDecimals) {
    failInconsistent("A number of shares has too many decimals to be kept.");
  }
  return -exponent;
}

void LedgerWriter::rescaleShares(int decimals) {
  const Decimal factor = Decimal::fromMantissa(Sign::plus, 1, decimals);
  const std::int64_t multiplier = (factor / portfolio_.sharesFactor).integerValue();
  const std::int64_t id = portfolio_.portfolioId;
  database_.execute(
      "UPDATE transactions SET\n"
      "(shareUnitsAdded, shareUnitsNet)\n"
      "= (shareUnitsAdded * ?, shareUnitsNet * ?)\n"
      "WHERE portfolioId = ?;",
      {multiplier, multiplier, id});
  database_.execute(
      "UPDATE equitiesByYear SET\n"
      "shareUnitsHeld = shareUnitsHeld * ?\n"
      "WHERE portfolioId = ?;",
      {multiplier, id});
  // The engine turns a product beyond 64 bits into a double, which would lose digits.
  SQLiteStatement inexact = database_.query(
      "SELECT 1 FROM transactions WHERE portfolioId = ?1\n"
      "AND (typeof(shareUnitsAdded) = 'real' OR typeof(shareUnitsNet) = 'real')\n"
      "UNION ALL SELECT 1 FROM equitiesByYear WHERE portfolioId = ?1\n"
      "AND typeof(shareUnitsHeld) = 'real' LIMIT 1;",
      {id});
  if (inexact.step()) {
    failInconsistent("The numbers of shares have too many digits to be kept with " +
                     std::to_string(decimals) + " decimals.");
  }
  database_.execute("UPDATE portfolios SET\nsharesFactor = ?\nWHERE id = ?;",
                    {factor.integerValue(), id});
  portfolio_.sharesFactor = factor;
}

void LedgerWriter::write(StoredPortfolioTransaction& row) {
  const Currency& primary = portfolio_.primaryCurrency();
  const StoredFigures figures = storedFigures(row, primary);
  std::vector<SQLiteValue>& values = values_;
  values.clear();
  if (!row.transactionId) {
    values.emplace_back(portfolio_.portfolioId);
  }
  values.emplace_back(static_cast<std::int64_t>(figures.type));
  values.emplace_back(row.tradeDate().timeIntervalSince1970());
  values.emplace_back(row.settlementDate().timeIntervalSince1970());
  values.emplace_back(std::int64_t{row.dateSequence});
  values.emplace_back(std::int64_t{figures.currency.number});
  values.push_back(storedAmount(figures.cashAdded, figures.currency));
  values.push_back(storedAmount(figures.cashNet, figures.currency));
  if (const auto& holding = figures.holding) {
    const int decimals = portfolio_.shareDecimals();
    values.emplace_back(equityRowId(holding->equity));
    values.emplace_back(storedShares(holding->sharesAdded, decimals));
    values.emplace_back(storedShares(holding->sharesNet, decimals));
    values.push_back(storedAmount(holding->equivalentCashAdded, primary));
    values.push_back(storedAmount(holding->costBasePrior, primary));
  } else {
    values.insert(values.end(), 5, nullptr);
  }
  values.push_back(row.basic.note ? SQLiteValue(*row.basic.note) : SQLiteValue(nullptr));
  if (row.transactionId) {
    values.emplace_back(*row.transactionId);
    values.emplace_back(portfolio_.portfolioId);
    database_.execute(updateTransactionSql, values);
  } else {
    database_.execute(insertTransactionSql, values);
    row.transactionId = database_.lastInsertedRowId();
  }
}

std::int64_t LedgerWriter::equityRowId(const EquityPointer& equity) {
  auto& ids = portfolio_.equityRowIds_;
  if (const auto known = ids.find(equity->id()); known != ids.end()) {
    return known->second;
  }
  std::int64_t id = 0;
  SQLiteStatement statement =
      database_.query("SELECT id FROM equities\nWHERE portfolioId = ? AND equityIdentifier = ?",
                      {portfolio_.portfolioId, equity->id()});
  if (statement.step()) {
    id = statement.integer(0).value();
  } else {
    database_.execute("INSERT INTO equities\n(portfolioId, equityIdentifier)\nVALUES (?, ?)",
                      {portfolio_.portfolioId, equity->id()});
    id = database_.lastInsertedRowId();
  }
  ids.emplace(equity->id(), id);
  return id;
}

template <typename Visit>
void LedgerWriter::forEachYear(int firstYear, Visit visit) const {
  const auto& snapshots = portfolio_.snapshotsByYear;
  if (snapshots.empty()) {
    return;
  }
  const int lastYear = snapshots.rbegin()->first;
  for (int year = std::max(firstYear, snapshots.begin()->first); year <= lastYear; ++year) {
    visit(std::int64_t{year}, std::prev(snapshots.upper_bound(year))->second);
  }
}

LedgerWriter::Totals LedgerWriter::totalsOfEquities(int firstYear) {
  const Currency& primary = portfolio_.primaryCurrency();
  const int decimals = portfolio_.shareDecimals();
  Totals totals;
  forEachYear(firstYear, [&](std::int64_t year, const PortfolioSnapshot& snapshot) {
    for (const auto& [equity, holding] : snapshot.equitySnapshots) {
      totals[{year, equityRowId(equity)}] = {storedShares(holding.sharesHeld, decimals),
                                             storedAmount(holding.costBase, primary),
                                             storedAmount(holding.cumulativeCapitalGain, primary)};
    }
  });
  return totals;
}

LedgerWriter::Totals LedgerWriter::totalsOfCash(int firstYear) const {
  Totals totals;
  const auto add = [&](std::int64_t year, const Currency& currency,
                       const PortfolioSnapshot::CurrencySnapshot& cash) {
    totals[{year, currency.number}] = {storedAmount(cash.cashOnHand, currency),
                                       storedAmount(cash.netCashDeposited, currency)};
  };
  forEachYear(firstYear, [&](std::int64_t year, const PortfolioSnapshot& snapshot) {
    for (const auto& [currency, cash] : snapshot.currencySnapshots) {
      add(year, currency, cash);
    }
    // A year at whose end nothing is left must not be taken for one like the year before.
    if (snapshot.currencySnapshots.isEmpty() && snapshot.equitySnapshots.isEmpty()) {
      add(year, portfolio_.primaryCurrency(), {});
    }
  });
  return totals;
}

void LedgerWriter::writeTotals(const TotalsTable& table, int firstYear, Totals totals) {
  const std::int64_t id = portfolio_.portfolioId;
  Totals changed;
  std::vector<Totals::key_type> gone;
  {
    SQLiteStatement row = database_.query(table.select, {id, std::int64_t{firstYear}});
    while (row.step()) {
      const Totals::key_type key = {row.integer(0).value(), row.integer(1).value()};
      auto wanted = totals.extract(key);
      if (wanted.empty()) {
        gone.push_back(key);
        continue;
      }
      for (int column = 2; column < row.columnCount(); ++column) {
        if (!holds(row, column, wanted.mapped()[static_cast<std::size_t>(column) - 2])) {
          changed.insert(std::move(wanted));
          break;
        }
      }
    }
  }
  const auto write = [&](std::string_view sql, const Totals::key_type& key,
                         const std::vector<SQLiteValue>& figures) {
    std::vector<SQLiteValue> values = {id, key.first, key.second};
    values.insert(values.end(), figures.begin(), figures.end());
    database_.execute(sql, values);
  };
  for (const auto& key : gone) {
    write(table.remove, key, {});
  }
  for (const auto& [key, figures] : changed) {
    write(table.update, key, figures);
  }
  for (const auto& [key, figures] : totals) {
    write(table.insert, key, figures);
  }
}

}  // namespace corvane
