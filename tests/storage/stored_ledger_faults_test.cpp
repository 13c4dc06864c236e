// A failure at any point of any edit leaves memory and file as they were before it, reaches the
// caller, and does not keep the next edit from working.

#include <functional>

#include "ledger/manager/portfolio_property_changer.h"
#include "storage/stored_ledger.h"
#include "support/failing_vfs.h"

namespace corvane::testing {
namespace {

using YieldType = BasicTransaction::YieldType;

/// A ledger over three years with a fractional holding, ready for each of the edits.
class FaultyLedger : public StoredLedger {
 public:
  FaultyLedger() {
    record({make.on(day(2020, 5, 1)).deposit("50000"), make.buy("10", "1000"),
            make.buy("20.5", "2000"), make.on(day(2021, 5, 1)).sell("5", "900"),
            make.on(day(2021, 5, 1))
                .make(BasicTransaction::Yield{
                    YieldType::dividend, make.xyz, {}, Ledger::cad("12"), dec("12")}),
            make.on(day(2022, 5, 1)).buy("1", "80"), make.on(day(2022, 5, 1)).deposit("5")});
    undo->removeAllActions();
  }
};

struct Edit {
  const char* name;
  std::function<void(FaultyLedger&)> perform;
};

std::ostream& operator<<(std::ostream& out, const Edit& edit) {
  return out << edit.name;
}

const std::vector<Edit> edits = {
    {"Record",
     [](FaultyLedger& ledger) {
       ledger.record({ledger.make.on(day(2020, 5, 1)).buy("1.2345", "100"),
                      ledger.make.on(day(2023, 5, 1)).deposit("1"),
                      ledger.make.on(day(2023, 5, 2)).buy("2", "300")});
     }},
    {"Revise",
     [](FaultyLedger& ledger) {
       ledger.manager->reviseTransactions({ledger.rows()[1]},
                                          {ledger.make.on(day(2021, 5, 1)).buy("11", "1001")},
                                          std::nullopt, ledger.portfolio, ledger.undo);
     }},
    {"Move",
     [](FaultyLedger& ledger) {
       ledger.manager->moveTransactions({ledger.rows()[6]}, {ledger.rows()[5]}, ledger.portfolio,
                                        ledger.undo);
     }},
    {"Delete",
     [](FaultyLedger& ledger) {
       ledger.manager->deleteTransactions({ledger.rows()[2], ledger.rows()[4]}, ledger.portfolio,
                                          ledger.undo);
     }},
    {"ChangeProperties",
     [](FaultyLedger& ledger) {
       PortfolioPropertyChanger().changeProperties(ledger.portfolio, {"Other", true, true},
                                                   ledger.undo);
     }},
    {"CreatePortfolio",
     [](FaultyLedger& ledger) { ledger.manager->createPortfolio(Currency::usd()); }},
    {"RemovePortfolio",
     [](FaultyLedger& ledger) { ledger.manager->removePortfolio(ledger.portfolio); }},
};

class FaultyEdits : public ::testing::TestWithParam<Edit> {
 protected:
  /// Performs the edit until it meets no more failure. `prepare(ledger, n)` lets the n-th operation
  /// fail, `mend(ledger)` lets all go well again, so that the file can be looked at.
  void failEverywhere(const std::function<void(FaultyLedger&, int)>& prepare,
                      const std::function<void(FaultyLedger&)>& mend) {
    int failures = 0;
    for (int position = 0; position < 200; ++position) {
      SCOPED_TRACE("failure at operation " + std::to_string(position));
      FaultyLedger ledger;
      const StoredState before = ledger.state();
      const auto portfolios = ledger.manager->portfolios();
      prepare(ledger, position);
      bool hasFailed = false;
      try {
        GetParam().perform(ledger);
      } catch (const SQLiteError&) {
        hasFailed = true;
      }
      mend(ledger);
      ledger.expectFileIsMemory();
      if (!hasFailed) {
        EXPECT_GT(failures, 0) << "the edit has met no failure at all";
        return;
      }
      ++failures;
      EXPECT_EQ(ledger.manager->portfolios(), portfolios);
      EXPECT_EQ(ledger.state(), before);
      EXPECT_FALSE(ledger.undo->canUndo());
      GetParam().perform(ledger);
      ledger.expectFileIsMemory();
      if (HasFailure()) {
        return;
      }
    }
    ADD_FAILURE() << "the edit never succeeded";
  }
};

// Every write of a row counts one down in a table of the connection's own; the one that finds
// nothing left fails.
TEST_P(FaultyEdits, SurviveAFailureOfEveryStatement) {
  failEverywhere(
      [](FaultyLedger& ledger, int position) {
        std::string script =
            "CREATE TEMP TABLE writesLeft (count INTEGER);\n"
            "INSERT INTO writesLeft VALUES (" +
            std::to_string(position) + ");\n";
        for (const auto* table :
             {"portfolios", "equities", "equitiesByYear", "cashByYear", "transactions"}) {
          for (const auto* operation : {"INSERT", "UPDATE", "DELETE"}) {
            script += std::string("CREATE TEMP TRIGGER fail") + operation + table + " BEFORE " +
                      operation + " ON main." + table +
                      " BEGIN SELECT RAISE(ABORT, 'a failure') FROM temp.writesLeft "
                      "WHERE count = 0; UPDATE writesLeft SET count = count - 1; END;\n";
          }
        }
        ledger.manager->database().executeScript(script);
      },
      [](FaultyLedger& ledger) {
        ledger.manager->database().executeScript("UPDATE temp.writesLeft SET count = -1;");
      });
}

TEST_P(FaultyEdits, SurviveAFailureOfEveryWriteToTheDisk) {
  FailingFileSystem disk;
  failEverywhere([&](FaultyLedger& /*ledger*/, int position) { disk.failAfter(position); },
                 [&](FaultyLedger& ledger) {
                   disk.mend();
                   // A log that the disk did not confirm may end with the whole failed edit. The
                   // next thing that is written goes over it, at the latest before a save.
                   ledger.manager->compactStorage();
                 });
}

INSTANTIATE_TEST_SUITE_P(All, FaultyEdits, ::testing::ValuesIn(edits),
                         [](const auto& edit) { return edit.param.name; });

TEST(StoredLedgers, SurviveAFullDisk) {
  FaultyLedger ledger;
  const auto setMostPages = [&](int count) {
    ledger.manager->database().executeScript("PRAGMA max_page_count = " + std::to_string(count));
  };
  const auto manyRows = [&] {
    std::vector<BasicTransaction> basics;
    for (int i = 0; i < 2000; ++i) {
      basics.push_back(ledger.make.deposit("1"));
    }
    return basics;
  };
  const StoredState before = ledger.state();
  setMostPages(std::stoi(ledger.query("PRAGMA page_count")) + 3);

  const auto error = errorOf<SQLiteError>([&] { ledger.record(manyRows()); });

  EXPECT_EQ(error->primaryCode(), 13 /* SQLITE_FULL */);
  EXPECT_EQ(ledger.state(), before);
  ledger.expectFileIsMemory();
  setMostPages(1 << 30);
  ledger.record(manyRows());
  EXPECT_EQ(ledger.rows().size(), before.rows.size() + 2000);
  ledger.expectFileIsMemory();
}

}  // namespace
}  // namespace corvane::testing
