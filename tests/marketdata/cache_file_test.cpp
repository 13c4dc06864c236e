// The file of the cache: a new one, older and newer ones, and what is no cache at all.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "marketdata/cache/quote_cache_rows.h"
#include "marketdata/cache_world.h"
#include "platform/system/file_manager.h"

namespace corvane {

/// A source at the top of the program's own namespace, where the real ones are.
class NamedQuoteProvider : public QuoteProvider {};

namespace testing {
namespace {

using ::testing::HasSubstr;

const std::string versionAndTables =
    "SELECT group_concat(name), (SELECT user_version FROM pragma_user_version) "
    "FROM (SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name)";
const std::string presentFile = "coverage,equities,events,quotes|4";

/// Makes a database with `script` before a cache is opened on it.
std::filesystem::path fileMadeBy(const TemporaryFolder& folder, const std::string& script) {
  const auto file = folder / "made.sqlite3";
  SQLiteDatabase(file, SQLiteDatabase::Mode::create).executeScript(script);
  return file;
}

TEST(CacheFile, IsMadeWithItsTables) {
  const CacheWorld world;
  EXPECT_EQ(world.rows(versionAndTables), presentFile);
  EXPECT_EQ(world.rows("PRAGMA journal_mode"), "wal");
}

/// What one of many programs does with the cache that they share. Throws what goes wrong.
void shareCache(const std::filesystem::path& file, int number) {
  const auto cache = std::make_shared<CacheQuoteProvider>(file);
  const EquityPointer equity = cache->equityWithId("E" + std::to_string(number));
  equity->currency = Currency::usd();
  for (int round = 0; round < 4; ++round) {
    const DateRange stretch = range(10 * round, 10 * round + 10);
    cache->storeFetchResult(answer(stretch, {{bar(10 * round, 10 * round + 10)}}),
                            {equity, stretch, daily(marketNominal)});
    const QuoteQuery all{equity, range(0, 10 * round + 10), daily(marketNominal)};
    if (cache->readQuery(all).quotes->size() != static_cast<std::size_t>(round + 1) ||
        !cache->coveragePlan(all).missingQueries.empty()) {
      throw dataInconsistency("What has been stored is not there.");
    }
  }
}

TEST(CacheFile, IsSharedByManyProgramsFromTheStart) {
  constexpr int programs = 16;
  for (int round = 0; round < 4; ++round) {
    const TemporaryFolder folder;
    const auto file = folder / "Cache.sqlite3";
    int gate[2];
    ASSERT_EQ(::pipe(gate), 0);
    std::vector<pid_t> children;
    for (int number = 0; number < programs; ++number) {
      const pid_t child = ::fork();
      ASSERT_GE(child, 0);
      if (child == 0) {
        // All of them start when the writing end of the pipe is closed everywhere.
        char none = 0;
        ::close(gate[1]);
        (void)!::read(gate[0], &none, 1);
        const ErrorPointer error = errorOf([&] { shareCache(file, number); });
        if (error != nullptr) {
          const auto* refused = dynamic_cast<const SQLiteError*>(error.get());
          std::fprintf(stderr, "program %d: %s %s\n", number,
                       error->description().value_or("").c_str(),
                       refused == nullptr ? "" : refused->sql.c_str());
        }
        ::_exit(error == nullptr ? 0 : 1);
      }
      children.push_back(child);
    }
    ::close(gate[0]);
    ::close(gate[1]);
    for (const pid_t child : children) {
      int status = 0;
      ASSERT_EQ(::waitpid(child, &status, 0), child);
      EXPECT_EQ(status, 0);
    }
    const CacheWorld world(file);
    EXPECT_EQ(world.rows("SELECT count(*) FROM equities"), "16");
    EXPECT_EQ(world.rows("SELECT count(*) FROM quotes"), "64");
    EXPECT_EQ(world.rows("SELECT count(*), min(fromDate), max(toDate) FROM coverage"), "16|0|40");
    EXPECT_EQ(world.rows("PRAGMA integrity_check"), "ok");
  }
}

TEST(CacheFile, OfAnOlderVersionLosesItsData) {
  const TemporaryFolder folder;
  const auto file =
      fileMadeBy(folder,
                 "CREATE TABLE equities (id INTEGER PRIMARY KEY, identifier CHAR);"
                 "CREATE TABLE quotes (id INTEGER PRIMARY KEY,"
                 "  equityId INTEGER NOT NULL REFERENCES equities ON DELETE CASCADE);"
                 "CREATE TABLE quoteCoverage (id INTEGER PRIMARY KEY);"
                 "INSERT INTO equities VALUES (1, 'ABC'); INSERT INTO quotes VALUES (1, 1);"
                 "PRAGMA user_version = 2;");
  const CacheWorld world(file);
  EXPECT_EQ(world.rows(versionAndTables), presentFile);
  EXPECT_EQ(world.rows("SELECT * FROM equities"), "");
}

TEST(CacheFile, OfANewerVersionIsUsedAsItIs) {
  CacheWorld world;
  world.cover(daily(marketNominal), range(0, 10));
  world.tamper("CREATE TABLE more (id INTEGER); PRAGMA user_version = 5;");
  world.open();
  EXPECT_EQ(world.rows("SELECT user_version FROM pragma_user_version"), "5");
  EXPECT_EQ(world.rows("SELECT fromDate, toDate FROM coverage"), "0|10");
}

TEST(CacheFile, ThatCannotBeMigratedIsRefusedAndLeftAlone) {
  const TemporaryFolder folder;
  const auto file = fileMadeBy(folder, "CREATE TABLE quotes (text CHAR);");
  const ErrorPointer error = errorOf([&] { CacheQuoteProvider cache(file); });
  ASSERT_NE(error, nullptr);
  EXPECT_THAT(error->description().value(), HasSubstr("table quotes already exists"));
  SQLiteDatabase other(file, SQLiteDatabase::Mode::readOnly);
  SQLiteStatement row = other.query(versionAndTables);
  ASSERT_TRUE(row.step());
  EXPECT_EQ(row.text(0), "quotes");
  EXPECT_EQ(row.integer(1), 0);
}

TEST(CacheFile, ThatIsNoDatabaseOrCannotBeReachedIsRefused) {
  const TemporaryFolder folder;
  const std::string text(4096, 'x');
  writeText(folder / "text", text);
  EXPECT_NE(errorOf([&] { CacheQuoteProvider cache(folder / "text"); }), nullptr);
  EXPECT_EQ(readText(folder / "text"), text);
  EXPECT_NE(errorOf([&] { CacheQuoteProvider cache(folder / "missing" / "cache"); }), nullptr);
}

TEST(CacheFile, HasItsPlaceUnderTheNameOfTheSource) {
  EXPECT_EQ(CacheQuoteProvider::defaultLocation(NamedQuoteProvider()),
            files::cachesDirectory() / "NamedQuoteProviderCache.sqlite3");
}

}  // namespace
}  // namespace testing
}  // namespace corvane
