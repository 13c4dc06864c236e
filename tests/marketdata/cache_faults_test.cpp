// A store that fails at any point leaves bars, events and coverage as they were, and the next one
// works. A damaged file is told and never believed.

#include <functional>

#include "marketdata/cache_world.h"
#include "support/failing_vfs.h"

namespace corvane::testing {
namespace {

/// A cache that holds something of each kind, two ranges with a hole between them.
class FaultyCache : public CacheWorld {
 public:
  FaultyCache() {
    for (const double start : {0.0, 100.0}) {
      store(daily(marketNominal), answer(range(start, start + 40),
                                         {{bar(start, start + 20), bar(start + 20, start + 40)}},
                                         {{dividend(start + 5, "1.25"), split(start + 7, 3, 2)}}));
    }
  }

  /// Replaces a part of both ranges and fills the hole.
  void overwrite() const {
    store(daily(marketNominal),
          answer(range(20, 120), {{bar(20, 40, "7"), bar(40, 60, "8"), bar(100, 120, "9")}},
                 {{dividend(30, "2"), dividend(105, "3")}}));
  }

  void expectOverwritten() const {
    EXPECT_EQ(rows("SELECT fromDate, close FROM quotes ORDER BY fromDate"),
              "0|1 20|7 40|8 100|9 120|1");
    EXPECT_EQ(rows("SELECT date, value1 FROM events ORDER BY date"), "5|125 7|3 30|2 105|3");
    EXPECT_EQ(rows("SELECT intervalType, fromDate, toDate FROM coverage ORDER BY 1"),
              "0|0|140 31|0|140");
  }

  void expectSound() const {
    EXPECT_EQ(rows("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(rows("PRAGMA foreign_key_check"), "");
  }
};

TEST(FailingStore, LeavesNothingHalfDoneWhicheverStatementFails) {
  for (const auto* event :
       {"DELETE ON quotes", "INSERT ON quotes WHEN NEW.fromDate = 20",
        "INSERT ON quotes WHEN NEW.fromDate = 100", "DELETE ON coverage", "INSERT ON coverage",
        "INSERT ON coverage WHEN NEW.intervalType = 0", "DELETE ON events", "INSERT ON events"}) {
    SCOPED_TRACE(event);
    const FaultyCache world;
    const std::string before = world.contents();
    world.tamper("CREATE TRIGGER refusal BEFORE " + std::string(event) +
                 " BEGIN SELECT RAISE(ABORT, 'refused'); END;");
    const ErrorPointer error = errorOf([&] { world.overwrite(); });
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->description(), "The database reports: refused.");
    EXPECT_EQ(world.contents(), before);
    world.expectSound();
    world.tamper("DROP TRIGGER refusal;");
    world.overwrite();
    world.expectOverwritten();
  }
}

TEST(FailingStore, RefusesPricesThatAreNoNumbersAndEventsThatAreThereTwice) {
  const FaultyCache world;
  const std::string before = world.contents();
  Quote nothing = bar(50, 60);
  nothing.close = Decimal::nan();
  EXPECT_NE(errorOf([&] {
              world.store(daily(marketNominal), answer(range(0, 100), {{bar(0, 20), nothing}}));
            }),
            nullptr);
  EXPECT_NE(errorOf([&] {
              world.store(events(marketNominal), answer(range(0, 100), std::nullopt,
                                                        {{dividend(50, "1"), dividend(50, "2")}}));
            }),
            nullptr);
  EXPECT_EQ(world.contents(), before);
}

// The disk refuses the n-th write, truncation or confirmation and all that follow, for every n.
TEST(FailingStore, LeavesNothingHalfDoneWhenTheDiskFails) {
  int failures = 0;
  for (int position = 0; position < 100; ++position) {
    SCOPED_TRACE("failure at operation " + std::to_string(position));
    FailingFileSystem disk;
    FaultyCache world;
    ASSERT_EQ(world.rows("PRAGMA journal_mode"), "wal");
    const std::string before = world.contents();
    disk.failAfter(position);
    const bool hasFailed = errorOf([&] { world.overwrite(); }) != nullptr;
    disk.mend();
    EXPECT_EQ(world.contents() == before, hasFailed);
    world.expectSound();
    world.overwrite();
    world.open();
    world.expectOverwritten();
    world.expectSound();
    if (!hasFailed) {
      EXPECT_GT(failures, 0);
      return;
    }
    ++failures;
  }
  ADD_FAILURE() << "the store never succeeded";
}

TEST(LockedCache, FailsAStoreAndStillReads) {
  const FaultyCache world;
  const std::string before = world.contents();
  SQLiteDatabase other(world.file, SQLiteDatabase::Mode::readWrite);
  other.begin(SQLiteDatabase::TransactionKind::exclusive);
  EXPECT_NE(errorOf([&] { world.overwrite(); }), nullptr);
  EXPECT_EQ(world.read(range(0, 20), daily(marketNominal)).quotes, std::vector{bar(0, 20)});
  other.rollback();
  EXPECT_EQ(world.contents(), before);
}

struct Damage {
  const char* change;
  const char* error;
  std::function<void(const FaultyCache&)> use;
};

std::ostream& operator<<(std::ostream& out, const Damage& damage) {
  return out << damage.change;
}

class DamagedCache : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedCache, IsTold) {
  const FaultyCache world;
  world.tamper(GetParam().change);
  EXPECT_THAT(errorOf([&] { GetParam().use(world); }), IsInconsistency(GetParam().error));
}

/// Lets columns be null that the tables do not allow to be.
std::string withoutRules(const std::string& table, const std::string& change) {
  return "ALTER TABLE " + table + " RENAME TO old; CREATE TABLE " + table +
         " AS SELECT * FROM old; " + change;
}

void readAll(const FaultyCache& world, const QuoteQuery::Subject& subject) {
  std::ignore = world.read(range(0, 200), subject);
}

const std::string nullQuotes = withoutRules("quotes", "UPDATE quotes SET toDate = NULL;");
const std::string nullEvents = withoutRules("events", "UPDATE events SET value2 = NULL;");
INSTANTIATE_TEST_SUITE_P(
    QuoteCache, DamagedCache,
    ::testing::Values(Damage{nullQuotes.c_str(), "Missing dates in quote row.",
                             [](const auto& world) { readAll(world, daily(marketNominal)); }},
                      Damage{nullEvents.c_str(), "Missing columns in events result.",
                             [](const auto& world) { readAll(world, events(marketNominal)); }},
                      Damage{"UPDATE events SET eventType = 7;", "Unknown event type (7).",
                             [](const auto& world) { readAll(world, events(marketNominal)); }}));

TEST(DamagedCache, CoversNothingByARangeThatEndsBeforeItStarts) {
  const FaultyCache world;
  world.tamper(
      "UPDATE coverage SET fromDate = 90, toDate = 60 WHERE fromDate = 0;"
      "UPDATE coverage SET priceType = 9 WHERE fromDate = 100;");
  const QuoteQuery all = world.query(range(0, 200), daily(marketNominal));
  EXPECT_EQ(world.cache->coveragePlan(all), (CoveragePlan{{}, {}, {all}}));
  world.overwrite();
  EXPECT_EQ(world.plan(range(20, 120), daily(marketNominal)).exactQueries.size(), 1U);
}

// Pages full of noise are either noticed or were not needed.
TEST(DamagedCache, GivesErrorsAndNoAnswersFromTornPages) {
  FaultyCache world;
  std::vector<Quote> bars;
  for (int i = 0; i < 2000; ++i) {
    bars.push_back(bar(1000 + i, 1001 + i));
  }
  world.store(daily(marketNominal), answer(range(1000, 3000), bars));
  world.cache.reset();
  std::string content = readText(world.file);
  ASSERT_GT(content.size(), 100'000U);
  for (std::size_t i = 8192; i < content.size(); ++i) {
    content[i] = static_cast<char>(content[i] ^ 0x5A);
  }
  writeText(world.file, content);
  world.open();
  EXPECT_NE(errorOf([&] {
              world.equity = world.cache->equityWithId("ABC");
              world.store(daily(marketNominal), answer(range(0, 10), {{bar(0, 10)}}));
            }),
            nullptr);
}

}  // namespace
}  // namespace corvane::testing
