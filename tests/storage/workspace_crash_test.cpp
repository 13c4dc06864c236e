// A program that edits and saves a workspace is killed at random moments. What it has reported as
// done is in the files, and nothing but what it was just doing may be there besides.
//
// CORVANE_TEST_CASES sets how often it is killed, CORVANE_TEST_SEED the first seed.

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>

#include "storage/editing_session.h"
#include "storage/workspace_world.h"
#include "support/checkout.h"

extern char** environ;

namespace corvane::testing {
namespace {

/// The editing program, and what it has reported.
class Editor {
 public:
  Editor(const fs::path& package, const fs::path& temporaryDirectory, std::uint64_t seed) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    std::string program = builtProgram("workspace_editor");
    std::string arguments[] = {package, temporaryDirectory, std::to_string(seed)};
    char* vector[] = {program.data(), arguments[0].data(), arguments[1].data(), arguments[2].data(),
                      nullptr};
    EXPECT_EQ(posix_spawn(&process_, program.c_str(), &actions, nullptr, vector, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
  }
  ~Editor() { close(output_); }
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;

  /// Reads reports until there are `count`, and goes on for `nanoseconds` after the last of them.
  void watch(std::size_t count, long nanoseconds) {
    constexpr int patienceMilliseconds = 60'000;
    while (reports.size() < count && readMore(patienceMilliseconds * 1'000'000L)) {
    }
    EXPECT_GE(reports.size(), count) << "the program has ended or hangs";
    (void)readMore(nanoseconds);
  }

  /// Ends the program in the middle of what it is doing.
  void kill() {
    ::kill(process_, SIGKILL);
    int status = 0;
    waitpid(process_, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "the program has ended by itself";
    while (readMore(0)) {
    }
  }

  std::vector<std::string> reports;

 private:
  /// False at the end of the output, or where nothing comes for so long.
  bool readMore(long nanoseconds) {
    pollfd output = {output_, POLLIN, 0};
    const timespec timeout = {nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    char buffer[4096];
    if (ppoll(&output, 1, &timeout, nullptr) <= 0) {
      return false;
    }
    const ssize_t length = read(output_, buffer, sizeof buffer);
    if (length <= 0) {
      return false;
    }
    text_.append(buffer, static_cast<std::size_t>(length));
    for (std::size_t end; (end = text_.find('\n')) != std::string::npos; text_.erase(0, end + 1)) {
      reports.push_back(text_.substr(0, end));
    }
    return true;
  }

  pid_t process_ = 0;
  int output_ = -1;
  std::string text_;
};

/// What the reports of a killed program lead to expect of its files.
struct Expectation {
  explicit Expectation(const std::vector<std::string>& reports, std::string digestAtStart)
      : packages{std::move(digestAtStart)} {
    for (const std::string& report : reports) {
      const std::string what = report.substr(0, report.find(' '));
      const std::string value = what == report ? "" : report.substr(what.size() + 1);
      EXPECT_NE(what, "failed") << report;
      if (what == "saving") {
        packages.push_back(value);
      } else if (what == "saved") {
        packages.erase(packages.begin(), packages.end() - 1);
      } else {
        ++attempts;
        ledger = value;
      }
    }
  }

  std::vector<std::string> packages;  ///< the one that stands, and one that is being saved
  std::string ledger;                 ///< empty where the document was not open yet
  std::size_t attempts = 0;           ///< edits reported, and the opening
};

class KilledWorkspace {
 public:
  KilledWorkspace() {
    auto document = world_.newDocument();
    world_.deposit(*document, "100000");
    const auto& manager = document->model()->portfolioManagers.front();
    const auto& portfolio = manager->portfolios().front();
    portfolio->allowsNegativeBalances = true;
    manager->portfolioPropertiesDidChange(portfolio);
    document->save(world_.file);
    start_ = world_.folder / "start.corvane";
    files::copy(world_.file, start_);
    digest_ = digest(*manager);
  }

  void kill(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const fs::path before = world_.folder / "before.corvane";
    files::remove(before);
    files::copy(world_.file, before);

    Editor editor(world_.file, world_.surroundings.temporaryDirectory, seed);
    editor.watch(random() % 40, static_cast<long>(random() % 4'000'000));
    editor.kill();
    const Expectation expected(editor.reports, digest_);
    checkWorkingDirectory(expected, before, seed);
    checkPackage(expected);
    kills += 1;
    killsWhileSaving += expected.packages.size() > 1 ? 1 : 0;

    // The next program goes on with what is there, as long as that stays small.
    fs::remove_all(world_.surroundings.temporaryDirectory);
    fs::create_directory(world_.surroundings.temporaryDirectory);
    if (random() % 10 == 0) {
      files::remove(world_.file);
      files::copy(start_, world_.file);
      digest_ = digest(*world_.open(world_.file)->model()->portfolioManagers.front());
    }
  }

  /// A save by a program that lives clears away what the killed ones have left.
  void checkNothingIsLeftAfterASave() {
    const auto document = world_.open(world_.file);
    document->save(world_.file);
    EXPECT_THAT(namesIn(world_.files), ::testing::ElementsAre("Family.corvane"));
  }

  int kills = 0;
  int killsWhileSaving = 0;

 private:
  static void checkDatabase(StoredPortfolioManager& manager) {
    SQLiteStatement check = manager.database().query("PRAGMA integrity_check;");
    ASSERT_TRUE(check.step());
    EXPECT_EQ(check.text(0), "ok");
    for (const auto& portfolio : manager.portfolios()) {
      const auto& rows = portfolio->transactions();
      EXPECT_EQ(PortfolioManager::replay(rows, {}), manager.snapshotBefore(rows.size(), portfolio));
    }
  }

  void checkWorkingDirectory(const Expectation& expected, const fs::path& before,
                             std::uint64_t seed) {
    if (expected.ledger.empty()) {
      return;
    }
    const auto directories = namesIn(world_.surroundings.temporaryDirectory);
    ASSERT_EQ(directories.size(), 1U);
    const auto manager =
        StoredPortfolioManager::open(std::make_shared<QuoteProvider>(),
                                     world_.surroundings.temporaryDirectory / directories.front() /
                                         "files" / "LocalPortfolios.sqlite3");
    checkDatabase(*manager);
    const std::string found = digest(*manager);
    if (found != expected.ledger) {
      EXPECT_EQ(found, digestAfter(expected.attempts, before, seed)) << "of the edit under way";
    }
  }

  /// What the ledger is after the opening and `edits` edits, done once more from the same file.
  [[nodiscard]] std::string digestAfter(std::size_t edits, const fs::path& before,
                                        std::uint64_t seed) const {
    const fs::path again = world_.folder / "again";
    fs::create_directory(again);
    std::string found;
    {
      EditingSession session(before, again, seed);
      for (std::size_t i = 0; i < edits; ++i) {
        if (i > 0) {
          (void)session.wantsToSave();
        }
        found = session.edit();
      }
    }
    fs::remove_all(again);
    return found;
  }

  void checkPackage(const Expectation& expected) {
    const auto document =
        std::make_shared<WorkspaceDocument>(quietSurroundings(world_.folder.path()));
    document->open(world_.file);
    auto& manager =
        dynamic_cast<StoredPortfolioManager&>(*document->model()->portfolioManagers.front());
    checkDatabase(manager);
    digest_ = digest(manager);
    EXPECT_THAT(expected.packages, ::testing::Contains(digest_));
    const auto& watchlist = document->model()->watchlistEquities;
    if (!watchlist.empty()) {
      EXPECT_EQ(watchlist.front()->id(), digest_) << "the files are of two different saves";
    }
  }

  WorkspaceWorld world_;
  fs::path start_;
  std::string digest_;  ///< of the package as it stands
};

TEST(KilledWorkspaces, KeepWhatWasReportedAsDone) {
  const std::uint64_t first = setting("CORVANE_TEST_SEED", std::random_device()());
  const std::uint64_t count = setting("CORVANE_TEST_CASES", 15);
  KilledWorkspace workspace;
  for (std::uint64_t seed = first; seed < first + count && !HasFailure(); ++seed) {
    SCOPED_TRACE("CORVANE_TEST_SEED=" + std::to_string(seed));
    workspace.kill(seed);
  }
  workspace.checkNothingIsLeftAfterASave();
  std::cout << workspace.kills << " kills, " << workspace.killsWhileSaving << " while saving\n";
}

}  // namespace
}  // namespace corvane::testing
