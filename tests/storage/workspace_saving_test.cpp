// Saving: the file on the disk is never worse than before, whatever goes wrong.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "storage/workspace_world.h"

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
