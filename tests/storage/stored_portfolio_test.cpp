// What stands in the file, and what is made of it.

#include "ledger/manager/portfolio_property_changer.h"
#include "storage/stored_ledger.h"
#include "support/log_capture.h"

namespace corvane::testing {
namespace {

using Failure = PortfolioManagerError;
using YieldType = BasicTransaction::YieldType;

constexpr std::string_view version1Schema = R"sql(
CREATE TABLE portfolios (id INTEGER PRIMARY KEY, name CHAR, dateCreated DATE NOT NULL,
  primaryCurrency INTEGER NOT NULL, sharesFactor INTEGER NOT NULL);
CREATE TABLE equities (id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE,
  equityIdentifier CHAR NOT NULL);
CREATE TABLE equitiesByYear (id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE, year INTEGER NOT NULL,
  equityId INTEGER REFERENCES equities NOT NULL, shareUnitsHeld INTEGER NOT NULL,
  costBase INTEGER NOT NULL, grossCapitalGain INTEGER NOT NULL);
CREATE TABLE cashByYear (id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE, year INTEGER NOT NULL,
  currency INTEGER NOT NULL, cashOnHand INTEGER NOT NULL, netDeposited INTEGER NOT NULL);
CREATE TABLE transactions (id INTEGER PRIMARY KEY,
  portfolioId INTEGER NOT NULL REFERENCES portfolios ON DELETE CASCADE, type INTEGER NOT NULL,
  tradeDate DATE NOT NULL, settlementDate DATE NOT NULL, currency INTEGER NOT NULL,
  cashAdded INTEGER NOT NULL, cashNet INTEGER NOT NULL, equityId INTEGER REFERENCES equities,
  shareUnitsAdded INTEGER, shareUnitsNet INTEGER, equivalentCashAdded INTEGER,
  costBasePrior INTEGER, note CHAR);
INSERT INTO portfolios VALUES (7, 'Old', 1000000000.5, 124, 1);
INSERT INTO transactions VALUES (2, 7, 1, 1.6e9, 1.6e9, 124, 500, 500, NULL, NULL, NULL, NULL, NULL, NULL);
INSERT INTO transactions VALUES (3, 7, 8, 1.6e9, 1.6e9, 124, -100, 400, NULL, NULL, NULL, NULL, NULL, 'fee');
INSERT INTO cashByYear VALUES (1, 7, 2020, 124, 400, 500);
PRAGMA user_version = 1;
)sql";

TEST(PortfolioDatabase, IsMadeWithAllTables) {
  const StoredLedger ledger;
  EXPECT_EQ(ledger.query("PRAGMA user_version"), "2\n");
  EXPECT_EQ(ledger.query("PRAGMA journal_mode"), "wal\n");
  EXPECT_EQ(ledger.query("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"),
            "cashByYear\nequities\nequitiesByYear\nportfolios\ntransactions\n");
  EXPECT_EQ(ledger.query("SELECT count(*) FROM sqlite_master WHERE type = 'index'"), "9\n");
}

TEST(PortfolioDatabase, OfVersion1GainsItsColumnsAndKeepsTheOrderOfItsRows) {
  StoredLedger ledger;
  const auto old = ledger.folder / "old.sqlite3";
  SQLiteDatabase(old, SQLiteDatabase::Mode::create).executeScript(std::string(version1Schema));

  const auto manager = ledger.open(old);

  ASSERT_EQ(manager->portfolios().size(), 1);
  const auto state = StoredState::of(manager->portfolios()[0]);
  EXPECT_EQ(state.name, "Old");
  EXPECT_FALSE(state.allowsNegativeBalances);
  EXPECT_TRUE(state.usesCashAccounts);
  ASSERT_EQ(state.rows.size(), 2);
  EXPECT_EQ(state.rows[0].basic.kind,
            BasicTransaction::Kind(BasicTransaction::Transfer{Ledger::cad("5")}));
  EXPECT_EQ(state.rows[1].basic.note, "fee");
  EXPECT_EQ(state.rows[1].sequence, 0);
  EXPECT_EQ(state.rows[1].cashNet, dec("4"));
  SQLiteStatement version = manager->database().query("PRAGMA user_version");
  version.step();
  EXPECT_EQ(version.integer(0), 2);
}

TEST(PortfolioDatabase, OfANewerVersionIsOpenedAsItIs) {
  StoredLedger ledger;
  ledger.manager->database().executeScript("PRAGMA user_version = 3");
  ledger.reopen();
  EXPECT_EQ(ledger.query("PRAGMA user_version"), "3\n");
}

TEST(PortfolioDatabase, IsLockedWhileItIsOpen) {
  const StoredLedger ledger;
  EXPECT_EQ(errorOf<SQLiteError>([&] { (void)ledger.open(ledger.file); })->primaryCode(),
            5 /* SQLITE_BUSY */);
}

TEST(StoredPortfolios, AreNamelessInTheFileUntilTheirPropertiesAreSaved) {
  StoredLedger ledger;
  EXPECT_EQ(ledger.query("SELECT id, name, primaryCurrency, sharesFactor, settings "
                         "FROM portfolios"),
            "1  124 1 -\n");
  EXPECT_EQ(ledger.portfolio->name, "Untitled Portfolio");

  PortfolioPropertyChanger().changeProperties(ledger.portfolio, {"Mine", true, false}, ledger.undo);

  EXPECT_EQ(ledger.query("SELECT name, settings, typeof(settings) FROM portfolios"),
            "Mine {\"allowsNegativeBalances\":true,\"usesCashAccounts\":false} blob\n");
  ledger.undo->undo();
  ledger.expectFileIsMemory();
  const Date created = dynamic_cast<StoredPortfolio&>(*ledger.portfolio).dateCreated;
  ledger.reopen();
  EXPECT_NEAR(
      dynamic_cast<StoredPortfolio&>(*ledger.portfolio).dateCreated.timeIntervalSince(created), 0,
      1e-6);
}

TEST(StoredPortfolios, LeaveNothingBehindWhenTheyAreRemoved) {
  StoredLedger ledger;
  const auto other = ledger.manager->createPortfolio(Currency::usd());
  ledger.record({ledger.make.deposit("1000"), ledger.make.buy("3", "30")});
  ledger.manager->recordTransactions({ledger.make.deposit("7")}, other, nullptr);

  ledger.manager->removePortfolio(ledger.portfolio);

  for (const auto* table : {"equities", "equitiesByYear", "cashByYear", "transactions"}) {
    EXPECT_EQ(ledger.query(std::string("SELECT count(*) FROM ") + table + " WHERE portfolioId = 1"),
              "0\n");
  }
  EXPECT_EQ(
      *errorOf([&] { ledger.manager->removePortfolio(ledger.portfolio); }),
      Failure(Failure::InvalidPortfolio{"The portfolio is not known to this portfolio manager."}));
  ledger.expectFileIsMemory();
}

TEST(StoredTransactions, HaveTheirFiguresInMinorUnitsAndShareUnits) {
  StoredLedger ledger;
  const EquityPointer& abc = ledger.make.abc;
  const CurrencyAmount yen = {Currency::byCode().find("JPY")->second, 5000};
  auto noted = ledger.make.on(day(2021, 3, 1) + 0.5).deposit("1000.5");
  noted.note = "first";
  ledger.record({noted, ledger.make.buy("10", "100"), ledger.make.split("10", "25"),
                 ledger.make.journal("5", dec("7.25")), ledger.make.journal("-3"),
                 ledger.make.sell("2", "9"), ledger.make.yield(YieldType::dividend, "1"),
                 ledger.make.yield(YieldType::capitalGainsDividend, "2"),
                 ledger.make.make(BasicTransaction::Yield{
                     YieldType::reinvestedDistribution, abc, {}, yen, dec("46.125")}),
                 ledger.make.yield(YieldType::returnOfCapital, "4"),
                 ledger.make.adjustment("-0.5")});

  EXPECT_EQ(ledger.query("SELECT type, currency, cashAdded, cashNet, equityId, shareUnitsAdded, "
                         "shareUnitsNet, equivalentCashAdded, costBasePrior, note "
                         "FROM transactions ORDER BY settlementDate"),
            "1 124 100050 100050 - - - - - first\n"
            "2 124 -10000 90050 1 10 10 -10000 0 -\n"
            "3 124 0 0 1 15 25 0 10000 -\n"
            "9 124 0 0 1 5 30 725 10000 -\n"
            "9 124 0 0 1 -3 27 0 10725 -\n"
            "2 124 900 90950 1 -2 25 900 9652 -\n"
            "4 124 100 91050 1 0 25 100 8937 -\n"
            "5 124 200 91050 1 0 25 200 8937 -\n"
            // An equivalent may have more digits than the currency: nothing of it is lost.
            "6 392 5000 0 1 0 25 ~4612.5 8937 -\n"
            "7 124 400 91050 1 0 25 400 13550 -\n"
            "8 124 -50 91000 - - - - - -\n");
  EXPECT_EQ(ledger.query("SELECT tradeDate FROM transactions LIMIT 1"), "~1614618000.5\n");
  ledger.expectFileIsMemory();
}

TEST(StoredTransactions, KeepLargeFiguresToTheLastDigit) {
  StoredLedger ledger;
  // 2^53 + 1 minor units, and close to 2^63.
  ledger.record({ledger.make.deposit("90071992547409.93"),
                 ledger.make.deposit("92000000000000000.01"),
                 ledger.make.buy("9007199254740993", "1")});
  EXPECT_EQ(ledger.query("SELECT cashAdded, shareUnitsNet FROM transactions ORDER BY id"),
            "9007199254740993 -\n9200000000000000001 -\n-100 9007199254740993\n");
  ledger.expectFileIsMemory();

  const StoredState before = ledger.state();
  for (const auto& [basic, isRefusedFor] :
       {std::pair{ledger.make.deposit("500000000000000000.01"), "too many digits"},
        std::pair{ledger.make.buy("0.0001", "1"), "too many digits"},
        std::pair{ledger.make.buy("0.0000000000000000001", "1"), "too many decimals"},
        std::pair{ledger.make.journal("1", dec("-5")), "negative cost base"}}) {
    const auto error = errorOf([&, kept = basic] { ledger.record({kept}); });
    EXPECT_THAT(*error->description(), ::testing::HasSubstr(isRefusedFor));
    EXPECT_EQ(ledger.state(), before);
  }
  ledger.expectFileIsMemory();
}

TEST(StoredTransactions, RaiseTheSharesFactorWhenTheyNeedMoreDecimals) {
  StoredLedger ledger;
  const auto factor = [&] { return ledger.query("SELECT sharesFactor FROM portfolios"); };
  ledger.record({ledger.make.deposit("9000"), ledger.make.buy("100", "1000")});
  EXPECT_EQ(factor(), "1\n");
  const auto added = ledger.record({ledger.make.buy("1.5", "10")});
  EXPECT_EQ(factor(), "10\n");
  EXPECT_EQ(ledger.query("SELECT shareUnitsAdded, shareUnitsNet FROM transactions "
                         "WHERE type = 2 ORDER BY id"),
            "1000 1000\n15 1015\n");
  EXPECT_EQ(ledger.query("SELECT shareUnitsHeld FROM equitiesByYear"), "1015\n");

  ledger.manager->deleteTransactions(added, ledger.portfolio, ledger.undo);
  EXPECT_EQ(factor(), "10\n");
  ledger.reopen();
  ledger.record({ledger.make.buy("0.25", "10")});
  EXPECT_EQ(ledger.query("SELECT shareUnitsNet FROM transactions WHERE type = 2 ORDER BY id"),
            "10000\n10025\n");
  ledger.expectFileIsMemory();
}

TEST(StoredTransactions, AreNumberedWithinTheirSettlementDate) {
  StoredLedger ledger;
  const auto numbers = [&] {
    return ledger.query("SELECT id, sequence FROM transactions ORDER BY settlementDate, sequence");
  };
  for (int i = 1; i <= 3; ++i) {
    ledger.record({ledger.make.on(day(2021, 3, 1)).deposit(std::to_string(i))});
  }
  ledger.record({ledger.make.on(day(2021, 3, 2)).deposit("9")});
  EXPECT_EQ(numbers(), "1 0\n2 1\n3 2\n4 0\n");

  ledger.manager->moveTransactions({ledger.rows()[2]}, {ledger.rows()[0]}, ledger.portfolio,
                                   ledger.undo);
  EXPECT_EQ(numbers(), "3 0\n1 1\n2 2\n4 0\n");
  ledger.expectFileIsMemory();

  // A row that comes back from a deletion is a new one in the file, at its old place.
  ledger.manager->deleteTransactions({ledger.rows()[1]}, ledger.portfolio, ledger.undo);
  ledger.undo->undo();
  EXPECT_EQ(numbers(), "3 0\n5 1\n2 2\n4 0\n");
  ledger.expectFileIsMemory();
}

TEST(StoredTransactions, ThatAreNotInTheFileCannotBeDeleted) {
  StoredLedger ledger;
  const auto rows = ledger.record({ledger.make.deposit("1"), ledger.make.deposit("2")});
  ledger.manager->deleteTransactions({rows[0]}, ledger.portfolio, nullptr);
  EXPECT_EQ(dynamic_cast<StoredPortfolioTransaction&>(*rows[0]).transactionId, std::nullopt);
  const StoredState before = ledger.state();
  EXPECT_EQ(*errorOf([&] {
    ledger.manager->deleteTransactions({rows[1], rows[0]}, ledger.portfolio, nullptr);
  }),
            Failure(Failure::LedgerInconsistency{
                "The transaction is not commited in the stored portfolio."}));
  EXPECT_EQ(ledger.state(), before);
}

TEST(YearlyTotals, StandForEveryYearFromTheFirstToTheLast) {
  StoredLedger ledger;
  ledger.record({ledger.make.on(day(2019, 3, 1)).deposit("100"), ledger.make.buy("10", "60"),
                 ledger.make.on(day(2022, 3, 1)).sell("10", "80"),
                 ledger.make.withdrawal("119.5")});
  EXPECT_EQ(ledger.query("SELECT year, shareUnitsHeld, costBase, grossCapitalGain "
                         "FROM equitiesByYear ORDER BY year"),
            "2019 10 6000 0\n2020 10 6000 0\n2021 10 6000 0\n2022 0 0 2000\n");
  EXPECT_EQ(ledger.query("SELECT year, currency, cashOnHand, netDeposited "
                         "FROM cashByYear ORDER BY year"),
            "2019 124 4000 10000\n2020 124 4000 10000\n2021 124 4000 10000\n2022 124 50 -1950\n");

  const auto rows = ledger.rows();
  ledger.manager->deleteTransactions(rows, ledger.portfolio, ledger.undo);
  EXPECT_EQ(ledger.query("SELECT (SELECT count(*) FROM equitiesByYear) + "
                         "(SELECT count(*) FROM cashByYear)"),
            "0\n");
}

TEST(YearlyTotals, TellAYearAtWhoseEndNothingIsLeft) {
  StoredLedger ledger;
  ledger.record({ledger.make.on(day(2019, 3, 1)).deposit("100"), ledger.make.buy("10", "60"),
                 ledger.make.on(day(2020, 3, 1)).sell("10", "60"), ledger.make.withdrawal("100")});
  ledger.reopen();
  EXPECT_EQ(ledger.manager->snapshotBefore(4, ledger.portfolio), PortfolioSnapshot());
  ledger.record({ledger.make.on(day(2021, 3, 1)).deposit("1")});
  EXPECT_EQ(ledger.rows().back()->cashNet, dec("1"));
  ledger.expectFileIsMemory();
}

TEST(YearlyTotals, AreThoseOfTheTimeZoneThatTheUserIsInNow) {
  StoredLedger ledger;
  // Still 2020 in Toronto, already 2021 in Tokyo.
  const Date newYear = day(2020, 12, 31) + 3600.0 * 10;
  ledger.record({ledger.make.on(day(2020, 3, 1)).deposit("100"),
                 ledger.make.on(newYear).buy("10", "60"),
                 ledger.make.on(day(2021, 5, 1)).deposit("1")});
  ledger.reopen();
  ledger.manager->calendar = Calendar(*TimeZone::withIdentifier("Asia/Tokyo"));
  ledger.record({ledger.make.on(day(2021, 6, 1)).deposit("2")});
  EXPECT_EQ(ledger.rows().back()->cashNet, dec("43"));
  EXPECT_EQ(
      ledger.portfolio->snapshotsByYear[2020].currencySnapshots.get(Currency::cad()).cashOnHand,
      dec("100"));
}

TEST(StoredLedgers, AreReadWhenTheyAreFirstAskedFor) {
  StoredLedger ledger;
  ledger.record({ledger.make.deposit("100"), ledger.make.buy("10", "60")});
  const StoredState state = ledger.state();
  ledger.reopen();
  EXPECT_EQ(ledger.portfolio->snapshotsByYear.size(), 1);
  // Changed behind the manager's back, to see when it looks.
  ledger.manager->database().executeScript("UPDATE transactions SET note = 'read now'");
  EXPECT_EQ(ledger.rows()[0]->basic.note, "read now");
  EXPECT_EQ(ledger.rows().size(), state.rows.size());

  const PortfolioPointer orphan =
      ledger.open(ledger.folder / "other")->createPortfolio(Currency::cad());
  EXPECT_TRUE(orphan->transactions().empty());
}

struct Damage {
  const char* sql;
  Failure error;
};

Failure inconsistency(const char* reason) {
  return Failure(Failure::LedgerInconsistency{reason});
}

TEST(StoredLedgers, WithADamagedRowStayEmptyAndRefuseEdits) {
  const Damage damages[] = {
      {"UPDATE transactions SET tradeDate = 'x' WHERE id = 2",
       inconsistency("Missing common transaction data.")},
      {"UPDATE transactions SET type = 10 WHERE id = 2",
       inconsistency("Unknown transaction type (10)")},
      {"UPDATE transactions SET type = 0 WHERE id = 2",
       inconsistency("Unknown transaction type (0)")},
      {"UPDATE transactions SET currency = 1 WHERE id = 1", Failure(Failure::UnknownCurrency{1})},
      {"UPDATE transactions SET costBasePrior = NULL WHERE id = 2",
       inconsistency("Missing equity-related transaction data.")},
      {"UPDATE transactions SET equityId = NULL WHERE id = 2",
       inconsistency("Missing equity-related transaction data.")},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.sql);
    StoredLedger ledger;
    ledger.record({ledger.make.deposit("100"), ledger.make.buy("10", "60")});
    ledger.reopen();
    ledger.manager->database().executeScript(damage.sql);
    const LogCapture log;
    EXPECT_TRUE(ledger.rows().empty());
    EXPECT_EQ(log.text(), "Stored portfolio failed to load transactions: " +
                              damage.error.description().value_or("") + "\n");
    EXPECT_EQ(*errorOf([&] { ledger.record({ledger.make.deposit("1")}); }), damage.error);
    EXPECT_EQ(ledger.query("SELECT count(*) FROM transactions"), "2\n");
  }
}

TEST(PortfolioDatabase, WithDamagedPortfolioDataIsNotOpened) {
  const Damage damages[] = {
      {"UPDATE portfolios SET name = NULL", inconsistency("Missing portfolio data.")},
      {"UPDATE portfolios SET sharesFactor = 0", inconsistency("Missing portfolio data.")},
      {"UPDATE portfolios SET primaryCurrency = 1", Failure(Failure::UnknownCurrency{1})},
      {"UPDATE cashByYear SET currency = 1", Failure(Failure::UnknownCurrency{1})},
      {"UPDATE cashByYear SET cashOnHand = 'x'",
       inconsistency("Missing columns in portfolio totals result.")},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.sql);
    StoredLedger ledger;
    PortfolioPropertyChanger().changeProperties(ledger.portfolio, {"Mine", false, true}, nullptr);
    ledger.record({ledger.make.deposit("100")});
    ledger.manager->database().executeScript(damage.sql);
    ledger.portfolio.reset();
    ledger.manager.reset();
    EXPECT_EQ(*errorOf([&] { (void)ledger.open(ledger.file); }), damage.error);
  }
}

TEST(StoredPortfolioManagers, CompactTheirStorageIntoTheMainFile) {
  StoredLedger ledger;
  ledger.record({ledger.make.deposit("100"), ledger.make.buy("10", "60")});
  ledger.manager->compactStorage();
  EXPECT_EQ(std::filesystem::file_size(ledger.file.string() + "-wal"), 0);
  const auto copy = ledger.folder / "main file alone";
  std::filesystem::copy_file(ledger.file, copy);
  EXPECT_EQ(StoredState::of(ledger.open(copy)->portfolios()[0]).rows, ledger.state().rows);
}

}  // namespace
}  // namespace corvane::testing
