#include "storage/database/ledger_reader.h"

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "ledger/portfolio/portfolio_manager_error.h"
#include "storage/database/stored_row.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;

constexpr std::string_view transactionsSql =
    "SELECT transactions.*, equities.equityIdentifier\n"
    "FROM transactions\n"
    "LEFT JOIN equities ON equities.id = transactions.equityId\n"
    "WHERE transactions.portfolioId = ?\n"
    "ORDER BY settlementDate ASC, sequence ASC, transactions.id ASC;";

constexpr std::string_view equityTotalsSql =
    "SELECT * FROM equitiesByYear LEFT JOIN equities\n"
    "ON equitiesByYear.equityId = equities.id\n"
    "WHERE equitiesByYear.portfolioId = ?\n"
    "ORDER BY year ASC;";

constexpr std::string_view cashTotalsSql =
    "SELECT * FROM cashByYear\n"
    "WHERE cashByYear.portfolioId = ?\n"
    "ORDER BY year ASC;";

/// The text of a column of any kind, for a message.
std::string textOf(const SQLiteStatement& row, int column) {
  const StoredNumbers columns(row);
  if (const auto number = columns.number(column)) {
    return number->description();
  }
  return std::string(columns.text(column).value_or("?"));
}

/// Goes through the rows of a ledger, which mostly repeat the currencies and equities of the rows
/// before them.
class TransactionReader {
 public:
  TransactionReader(const SQLiteStatement& row, const std::shared_ptr<StoredPortfolio>& portfolio,
                    QuoteProvider& provider)
      : row_(row),
        values_(row),
        portfolio_(portfolio),
        provider_(provider),
        id_(row.column("id")),
        type_(row.column("type")),
        tradeDate_(row.column("tradeDate")),
        settlementDate_(row.column("settlementDate")),
        sequence_(row.column("sequence")),
        currency_(row.column("currency")),
        cashAdded_(row.column("cashAdded")),
        cashNet_(row.column("cashNet")),
        equityId_(row.column("equityId")),
        equityIdentifier_(row.column("equityIdentifier")),
        shareUnitsAdded_(row.column("shareUnitsAdded")),
        shareUnitsNet_(row.column("shareUnitsNet")),
        equivalentCashAdded_(row.column("equivalentCashAdded")),
        costBasePrior_(row.column("costBasePrior")),
        note_(row.column("note")) {}

  TransactionPointer read() {
    const auto id = values_.whole(id_);
    const auto tradeDate = values_.date(tradeDate_);
    const auto settlementDate = values_.date(settlementDate_);
    const auto sequence = values_.whole(sequence_);
    const auto currency = values_.whole(currency_);
    const auto cashAdded = values_.number(cashAdded_);
    const auto cashNet = values_.number(cashNet_);
    if (!id || row_.isNull(type_) || !tradeDate || !settlementDate || !sequence || !currency ||
        !cashAdded || !cashNet || *sequence < 0 || *sequence > std::numeric_limits<int>::max()) {
      failInconsistent("Missing common transaction data.");
    }
    StoredFigures figures = {typeOfRow(), currencyOf(*currency), 0, 0, std::nullopt};
    figures.cashAdded = amountOf(*cashAdded, figures.currency);
    figures.cashNet = amountOf(*cashNet, figures.currency);
    if (figures.type != TransactionType::transfer &&
        figures.type != TransactionType::cashAdjustment) {
      figures.holding = holdingOfRow();
    }

    BasicTransaction basic = {transactionKind(figures), *tradeDate, *settlementDate, std::nullopt};
    basic.note = notes_.note(values_.text(note_));
    auto row = std::make_shared<StoredPortfolioTransaction>(std::move(basic), portfolio_,
                                                            /*isDirty=*/false);
    row->transactionId = id;
    row->dateSequence = static_cast<int>(*sequence);
    if (row->basic.currency() != nullptr) {
      row->cashNet = figures.cashNet;
    }
    if (figures.holding) {
      row->sharesNet = figures.holding->sharesNet;
      row->costBasePrior = figures.holding->costBasePrior;
    }
    return row;
  }

 private:
  [[nodiscard]] TransactionType typeOfRow() const {
    const auto type = values_.whole(type_);
    if (!type || *type < 1 || *type > 9) {
      failInconsistent("Unknown transaction type (" + textOf(row_, type_) + ")");
    }
    return static_cast<TransactionType>(*type);
  }

  const Currency& currencyOf(std::int64_t number) {
    if (lastCurrency_ == nullptr || lastCurrency_->number != number) {
      lastCurrency_ = &currencyWithNumber(number);
    }
    return *lastCurrency_;
  }

  StoredFigures::Holding holdingOfRow() {
    const auto equityId = values_.whole(equityId_);
    const auto sharesAdded = values_.number(shareUnitsAdded_);
    const auto sharesNet = values_.number(shareUnitsNet_);
    const auto equivalentCashAdded = values_.number(equivalentCashAdded_);
    const auto costBasePrior = values_.number(costBasePrior_);
    if (!equityId || !sharesAdded || !sharesNet || !equivalentCashAdded || !costBasePrior) {
      failInconsistent("Missing equity-related transaction data.");
    }
    EquityPointer& equity = equities_[*equityId];
    if (equity == nullptr) {
      const auto identifier = values_.text(equityIdentifier_);
      if (!identifier) {
        failInconsistent("Missing equity-related transaction data.");
      }
      equity = provider_.equityWithId(*identifier);
    }
    const Currency& primary = portfolio_->primaryCurrency();
    const int decimals = portfolio_->shareDecimals();
    return {equity, sharesOf(*sharesAdded, decimals), sharesOf(*sharesNet, decimals),
            amountOf(*equivalentCashAdded, primary), amountOf(*costBasePrior, primary)};
  }

  const SQLiteStatement& row_;
  StoredNumbers values_;
  const std::shared_ptr<StoredPortfolio>& portfolio_;
  QuoteProvider& provider_;
  const int id_, type_, tradeDate_, settlementDate_, sequence_, currency_, cashAdded_, cashNet_,
      equityId_, equityIdentifier_, shareUnitsAdded_, shareUnitsNet_, equivalentCashAdded_,
      costBasePrior_, note_;
  const Currency* lastCurrency_ = nullptr;
  NoteReader notes_;
  std::unordered_map<std::int64_t, EquityPointer> equities_;
};

double rowCount(SQLiteDatabase& database, const StoredPortfolio& portfolio) {
  SQLiteStatement row = database.query("SELECT COUNT(*) FROM transactions WHERE portfolioId = ?;",
                                       {portfolio.portfolioId});
  return row.step() ? row.real(0).value_or(0) : 0;
}

int yearOf(std::optional<std::int64_t> stored) {
  if (!stored || !std::in_range<int>(*stored)) {
    failInconsistent("Missing columns in portfolio totals result.");
  }
  return static_cast<int>(*stored);
}

void readEquityTotals(SQLiteDatabase& database, StoredPortfolio& portfolio,
                      QuoteProvider& provider) {
  SQLiteStatement row = database.query(equityTotalsSql, {portfolio.portfolioId});
  const StoredNumbers values(row);
  while (row.step()) {
    const auto identifier = values.text(row.column("equityIdentifier"));
    const auto costBase = values.number(row.column("costBase"));
    const auto gain = values.number(row.column("grossCapitalGain"));
    const auto shares = values.number(row.column("shareUnitsHeld"));
    const int year = yearOf(values.whole(row.column("year")));
    if (!identifier || !costBase || !gain || !shares) {
      failInconsistent("Missing columns in portfolio totals result.");
    }
    const Currency& primary = portfolio.primaryCurrency();
    portfolio.snapshotsByYear[year].equitySnapshots.set(
        provider.equityWithId(*identifier),
        {.sharesHeld = sharesOf(*shares, portfolio.shareDecimals()),
         .sharePrice = std::nullopt,
         .costBase = amountOf(*costBase, primary),
         .cumulativeCapitalGain = amountOf(*gain, primary)});
  }
}

void readCashTotals(SQLiteDatabase& database, StoredPortfolio& portfolio) {
  SQLiteStatement row = database.query(cashTotalsSql, {portfolio.portfolioId});
  const StoredNumbers values(row);
  while (row.step()) {
    const auto number = values.whole(row.column("currency"));
    const auto cashOnHand = values.number(row.column("cashOnHand"));
    const auto netDeposited = values.number(row.column("netDeposited"));
    const int year = yearOf(values.whole(row.column("year")));
    if (!number || !cashOnHand || !netDeposited) {
      failInconsistent("Missing columns in portfolio totals result.");
    }
    const Currency& currency = currencyWithNumber(*number);
    portfolio.snapshotsByYear[year].currencySnapshots.set(
        currency, {.cashOnHand = amountOf(*cashOnHand, currency),
                   .netCashDeposited = amountOf(*netDeposited, currency),
                   .exchangeRate = std::nullopt});
  }
}

}  // namespace

std::optional<std::int64_t> StoredNumbers::whole(int column) const {
  return row_.type(column) == SQLiteStatement::Type::integer ? row_.integer(column) : std::nullopt;
}

std::optional<Decimal> StoredNumbers::number(int column) const {
  switch (row_.type(column)) {
    case SQLiteStatement::Type::integer:
      return Decimal(*row_.integer(column));
    case SQLiteStatement::Type::real: {
      const Decimal value = Decimal::fromDouble(*row_.real(column));
      return value.isNaN() ? std::nullopt : std::optional(value);
    }
    default:
      return std::nullopt;
  }
}

std::optional<Date> StoredNumbers::date(int column) const {
  switch (row_.type(column)) {
    case SQLiteStatement::Type::integer:
    case SQLiteStatement::Type::real: {
      const double seconds = *row_.real(column);
      return std::isfinite(seconds) ? std::optional(Date::since1970(seconds)) : std::nullopt;
    }
    default:
      return std::nullopt;
  }
}

std::optional<std::string_view> StoredNumbers::text(int column) const {
  return row_.type(column) == SQLiteStatement::Type::text ? row_.text(column) : std::nullopt;
}

const Currency& currencyWithNumber(std::int64_t number) {
  const auto& currencies = Currency::byNumber();
  if (std::in_range<int>(number)) {
    if (const auto found = currencies.find(static_cast<int>(number)); found != currencies.end()) {
      return found->second;
    }
  }
  throw Failure(Failure::UnknownCurrency{number});
}

std::vector<TransactionPointer> readTransactions(SQLiteDatabase& database,
                                                 const std::shared_ptr<StoredPortfolio>& portfolio,
                                                 QuoteProvider& provider,
                                                 const std::function<void(double)>& tell) {
  constexpr std::size_t rowsBetweenNews = 1'000;
  std::vector<TransactionPointer> rows;
  const double count = tell ? rowCount(database, *portfolio) : 0;
  SQLiteStatement row = database.query(transactionsSql, {portfolio->portfolioId});
  if (!row.step()) {
    return rows;
  }
  TransactionReader reader(row, portfolio, provider);
  do {
    rows.push_back(reader.read());
    if (tell && rows.size() % rowsBetweenNews == 0) {
      tell(static_cast<double>(rows.size()) / count);
    }
  } while (row.step());
  if (tell) {
    tell(1);
  }
  return rows;
}

std::vector<Date> readDifferentDates(SQLiteDatabase& database) {
  std::vector<Date> dates;
  SQLiteStatement row = database.query(
      "SELECT tradeDate FROM transactions UNION SELECT settlementDate FROM transactions;");
  while (row.step()) {
    if (const auto date = StoredNumbers(row).date(0)) {
      dates.push_back(*date);
    }
  }
  return dates;
}

void readYearlyTotals(SQLiteDatabase& database, StoredPortfolio& portfolio,
                      QuoteProvider& provider) {
  readEquityTotals(database, portfolio, provider);
  readCashTotals(database, portfolio);
}

}  // namespace corvane
