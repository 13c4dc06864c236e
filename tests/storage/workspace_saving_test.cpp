// Saving: the file on the disk is never worse than before, whatever goes wrong.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>

#include "ledger/random_edits.h"
#include "storage/workspace_world.h"
#include "support/volume_without_exchange.h"

namespace corvane::testing {
namespace {

using ::testing::UnorderedElementsAre;

/// Lets no file grow beyond `bytes` while it lives: every writing beyond fails.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit = {bytes, former_.rlim_max};
    formerHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &former_);
    std::signal(SIGXFSZ, formerHandler_);
  }

 private:
  rlimit former_{};
  void (*formerHandler_)(int) = nullptr;
};

/// Takes the rights of the superuser away while it lives, where the tests have them.
class OrdinaryUser {
 public:
  OrdinaryUser() { isDone_ = geteuid() != 0 || seteuid(nobody) == 0; }
  ~OrdinaryUser() {
    if (getuid() == 0) {
      [[maybe_unused]] const int result = seteuid(0);
    }
  }
  [[nodiscard]] bool isDone() const { return isDone_; }

 private:
  static constexpr uid_t nobody = 65534;
  bool isDone_;
};

int errorNumberOf(const std::function<void()>& statement) {
  return errorOf<FileError>(statement)->number;
}

TEST(WorkspaceSaving, LeavesTheFileAloneWhenItFails) {
  WorkspaceWorld world;
  writeText(world.savedWorkspace() / "Attachment", std::string(3'000'000, 'a'));
  const auto document = world.open(world.file);
  world.deposit(*document, "5");
  const auto before = contentsOf(world.files);

  const fs::path orphan = world.files / "missing" / "Family.corvane";
  EXPECT_EQ(errorNumberOf([&] { document->save(orphan); }), ENOENT);
  {
    // The database fits, the attachment does not.
    const FileSizeLimit fullDisk(2'000'000);
    EXPECT_EQ(errorNumberOf([&] { document->save(world.file); }), EFBIG);
    EXPECT_EQ(errorNumberOf([&] { document->save(world.files / "Other.corvane"); }), EFBIG);
  }
  {
    // Not even the database fits.
    const FileSizeLimit fullDisk(4'000);
    EXPECT_THROW(document->save(world.file), Error);
  }
  {
    fs::permissions(world.files, fs::perms::owner_read | fs::perms::owner_exec |
                                     fs::perms::others_read | fs::perms::others_exec);
    fs::permissions(world.folder.path(), fs::perms::all);
    for (const auto& entry :
         fs::recursive_directory_iterator(world.surroundings.temporaryDirectory)) {
      fs::permissions(entry.path(), fs::perms::all);
    }
    {
      const OrdinaryUser user;
      ASSERT_TRUE(user.isDone());
      EXPECT_EQ(errorNumberOf([&] { document->save(world.file); }), EACCES);
    }
    fs::permissions(world.files, fs::perms::owner_all);
  }
  EXPECT_EQ(contentsOf(world.files), before);
  EXPECT_TRUE(document->isDocumentEdited());

  // Nothing of that has hurt the document.
  world.deposit(*document, "7");
  document->save(world.file);
  EXPECT_FALSE(document->isDocumentEdited());
  EXPECT_THAT(namesIn(world.files), UnorderedElementsAre("Family.corvane"));
  EXPECT_EQ(world.open(world.file)->model()->portfolios().front()->transactions().size(), 3U);
}

TEST(WorkspaceSaving, NeverOverwritesWhatItDoesNotKnow) {
  WorkspaceWorld world;
  const auto first = world.open(world.savedWorkspace());
  const auto second = world.open(world.file);
  world.deposit(*first, "5");
  first->save(world.file);
  first->save(world.file);

  world.deposit(*second, "6");
  const auto before = contentsOf(world.files);
  const auto refused = [&](const fs::path& path) {
    return errorOf<DocumentError>([&] { second->save(path); });
  };
  EXPECT_EQ(refused(world.file), DocumentError(DocumentError::ChangedElsewhere{world.file}));
  const fs::path other = world.files / "Other.corvane";
  writeText(other, "a file");
  EXPECT_EQ(refused(other), DocumentError(DocumentError::AlreadyExists{other}));
  fs::remove(other);
  EXPECT_EQ(contentsOf(world.files), before);

  second->save(world.file, Document::Replacing::anything);
  EXPECT_EQ(world.open(world.file)->model()->portfolios().front()->transactions().size(), 2U);
  EXPECT_EQ(errorOf<DocumentError>([&] { first->save(world.file); }),
            DocumentError(DocumentError::ChangedElsewhere{world.file}));

  // A file that is gone is no longer in anybody's way, and one with a single byte changed is.
  fs::remove_all(world.file);
  first->save(world.file);
  std::string general = readText(world.file / "General.json");
  general[2] = 'A';
  writeText(world.file / "General.json", general);
  EXPECT_EQ(errorOf<DocumentError>([&] { first->save(world.file); }),
            DocumentError(DocumentError::ChangedElsewhere{world.file}));
}

TEST(WorkspaceSaving, FollowsLinksAndKeepsPermissions) {
  WorkspaceWorld world;
  world.savedWorkspace();
  fs::permissions(world.file, fs::perms::owner_all);
  fs::permissions(world.file / "LocalPortfolios.sqlite3", fs::perms::owner_read);
  fs::create_directory_symlink("Family.corvane", world.files / "Link.corvane");
  const auto document = world.open(world.files / "Link.corvane");
  EXPECT_EQ(document->fileURL(), fs::canonical(world.file));
  world.deposit(*document, "5");
  document->save(world.files / "Link.corvane");
  EXPECT_TRUE(fs::is_symlink(world.files / "Link.corvane"));
  EXPECT_THAT(namesIn(world.files), UnorderedElementsAre("Family.corvane", "Link.corvane"));
  EXPECT_EQ(fs::status(world.file).permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(world.file / "LocalPortfolios.sqlite3").permissions(),
            fs::perms::owner_read);
  EXPECT_EQ(world.open(world.file)->model()->portfolios().front()->transactions().size(), 2U);
}

TEST(WorkspaceSaving, NeverPutsADamagedDatabaseInThePlaceOfASoundOne) {
  WorkspaceWorld world;
  {
    const auto document = world.newDocument();
    const auto portfolio = world.deposit(*document, "1000");
    const std::vector<BasicTransaction> many(3'000, world.make.deposit("1"));
    document->model()->portfolioManagers.front()->recordTransactions(many, portfolio, nullptr);
    document->save(world.file);
  }
  const auto before = contentsOf(world.files);
  const auto document = world.open(world.file);
  document->model()->portfolioManagers.front()->createPortfolio(Currency::usd());
  {
    // A page in the middle, which has not been read yet.
    std::fstream file(document->workingDirectoryURL() / WorkspaceDocument::databaseName,
                      std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(40 * 4096);
    file << std::string(4096, '\x5a');
  }
  for (const fs::path& place : {world.file, world.files / "Other.corvane"}) {
    const auto error = errorOf<DocumentError>([&] { document->save(place); });
    ASSERT_TRUE(error);
    const auto* damaged = std::get_if<DocumentError::Damaged>(&error->which());
    ASSERT_NE(damaged, nullptr) << *error;
    EXPECT_EQ(damaged->path, world.file);
    EXPECT_THAT(*error->description(), ::testing::StartsWith("“Family.corvane” is damaged: "));
    EXPECT_FALSE(error->isAboutReplacing());
  }
  EXPECT_EQ(contentsOf(world.files), before);
}

TEST(WorkspaceSaving, PutsBackWhatAKilledProgramLeftAside) {
  WorkspaceWorld world;
  world.savedWorkspace();
  const auto document = world.open(world.file);
  // On a volume without an exchange of names the former package steps aside first.
  const fs::path beside = world.files / ".Family.corvane.123";
  fs::create_directory(beside);
  fs::rename(world.file, beside / "Family.corvane.old");
  fs::create_directory(beside / "Family.corvane");
  const auto again = world.open(world.file);
  EXPECT_EQ(again->model()->portfolios().front()->transactions().size(), 1U);
  EXPECT_THAT(namesIn(world.files), UnorderedElementsAre("Family.corvane"));
  // It is the file that the other one knows.
  world.deposit(*document, "5");
  document->save(world.file);

  // Killed in the very last step, it has left what has been replaced.
  fs::create_directories(beside / "Family.corvane.old");
  world.deposit(*document, "6");
  document->save(world.file);
  EXPECT_THAT(namesIn(world.files), UnorderedElementsAre("Family.corvane"));
}

TEST(WorkspaceSaving, TakesTwoStepsWhereNamesCannotBeExchanged) {
  WorkspaceWorld world;
  const auto rowsOfFile = [&] {
    return world.open(world.file)->model()->portfolios().front()->transactions().size();
  };
  const auto first = world.open(world.savedWorkspace());
  const auto second = world.open(world.file);
  world.deposit(*first, "5");
  {
    const VolumeWithoutExchange volume;
    first->save(world.file);
  }
  EXPECT_THAT(namesIn(world.files), UnorderedElementsAre("Family.corvane"));
  EXPECT_EQ(rowsOfFile(), 2U);

  // What somebody else has saved comes back, and so does all of it where a step fails.
  world.deposit(*second, "6");
  const auto before = contentsOf(world.files);
  {
    const VolumeWithoutExchange volume;
    EXPECT_EQ(errorOf<DocumentError>([&] { second->save(world.file); }),
              DocumentError(DocumentError::ChangedElsewhere{world.file}));
  }
  EXPECT_EQ(contentsOf(world.files), before);
  world.deposit(*first, "7");
  for (int step = 1; step <= 2; ++step) {
    const VolumeWithoutExchange volume([&](int renaming) { return renaming == step; });
    EXPECT_EQ(errorNumberOf([&] { first->save(world.file); }), EIO) << step;
    EXPECT_EQ(contentsOf(world.files), before) << step;
  }
  first->save(world.file);
  EXPECT_EQ(rowsOfFile(), 3U);
}

TEST(WorkspaceSaving, LosesNothingWhenItIsKilledBetweenTheTwoSteps) {
  WorkspaceWorld world;
  world.savedWorkspace();
  int kills = 0;
  for (bool isKilled = true; isKilled; ++kills) {
    const pid_t child = fork();
    if (child == 0) {
      const auto document = world.open(world.file);
      world.deposit(*document, "5");
      const VolumeWithoutExchange volume([&](int renaming) {
        if (renaming == kills + 1) {
          kill(getpid(), SIGKILL);
        }
        return false;
      });
      document->save(world.file);
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    isKilled = WIFSIGNALED(status);
    const auto document = world.open(world.file);
    const std::size_t rows = document->model()->portfolios().front()->transactions().size();
    EXPECT_TRUE(rows == 1 || rows == 2) << rows;
    EXPECT_TRUE(isKilled || rows == 2);
    // Whoever saves next clears away, and starts the next round as the first one.
    world.deposit(*document, "6");
    document->save(world.file);
    EXPECT_THAT(namesIn(world.files), UnorderedElementsAre("Family.corvane"));
    const auto manager = document->model()->portfolioManagers.front();
    const auto portfolio = document->model()->portfolios().front();
    const auto all = portfolio->transactions();
    manager->deleteTransactions({all.begin() + 1, all.end()}, portfolio, nullptr);
    document->save(world.file);
  }
  EXPECT_GE(kills, 3) << "there are steps to be killed at";
}

/// One of several programs that deposit and save until they have done so `count` times; how often
/// another one was faster.
int depositAgainAndAgain(WorkspaceWorld& world, int count) {
  int refusals = 0;
  while (count > 0) {
    const auto document = world.open(world.file);
    world.deposit(*document, "1");
    try {
      document->save(world.file);
      --count;
    } catch (const DocumentError& error) {
      if (!error.isAboutReplacing()) {
        throw;
      }
      ++refusals;
    } catch (const FileError& error) {
      // Read while another one put a new package in its place.
      if (error.number != ENOENT) {
        throw;
      }
    }
  }
  return refusals;
}

// CORVANE_TEST_CASES sets how often each program saves.
TEST(WorkspaceSaving, LosesNothingWhenManyProgramsSaveAtOnce) {
  constexpr std::size_t programs = 6;
  const auto rounds = static_cast<int>(setting("CORVANE_TEST_CASES", 5));
  WorkspaceWorld world;
  world.savedWorkspace();
  std::vector<pid_t> children;
  for (std::size_t i = 0; i < programs; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      try {
        _exit(depositAgainAndAgain(world, rounds) > 0 ? 1 : 0);
      } catch (const Error& error) {
        std::cerr << error << std::endl;
        _exit(2);
      }
    }
    children.push_back(child);
  }
  int refused = 0;
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_LT(WEXITSTATUS(status), 2);
    refused += WEXITSTATUS(status);
  }
  const auto document = world.open(world.file);
  EXPECT_EQ(document->model()->portfolios().front()->transactions().size(),
            1 + programs * static_cast<std::size_t>(rounds))
      << "what was reported as saved is in the file";
  EXPECT_GT(refused, 0) << "they have never met";
  EXPECT_THAT(namesIn(world.files), UnorderedElementsAre("Family.corvane"));
}

TEST(WorkspaceSaving, KeepsOthersOutOfTheWorkingDatabase) {
  WorkspaceWorld world;
  const auto document = world.newDocument();
  world.deposit(*document, "5");
  document->save(world.file);
  const fs::path database = document->workingDirectoryURL() / WorkspaceDocument::databaseName;
  const pid_t child = fork();
  if (child == 0) {
    try {
      SQLiteDatabase intruder(database, SQLiteDatabase::Mode::readWrite);
      intruder.execute("DELETE FROM transactions;");
      _exit(0);
    } catch (const SQLiteError& error) {
      _exit(error.primaryCode());
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  constexpr int busy = 5;
  EXPECT_EQ(WEXITSTATUS(status), busy);
}

}  // namespace
}  // namespace corvane::testing
