// What building a file's replacement beside it needs: copies that leave locks alone, folders that
// do not stay behind, and stamps that tell whether somebody else was there.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "platform/system/directory_lock.h"
#include "platform/system/file_manager.h"
#include "platform/system/open_file.h"
#include "platform/system/replacement_directory.h"
#include "support/temporary_folder.h"
#include "support/volume_without_exchange.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using testing::readText;
using testing::writeText;

struct flock wholeFile() {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return lock;
}

/// Whether another program finds the file locked.
bool isLockedForOthers(const fs::path& file) {
  const pid_t child = fork();
  if (child == 0) {
    struct flock lock = wholeFile();
    _exit(fcntl(open(file.c_str(), O_RDWR), F_SETLK, &lock) == 0 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WEXITSTATUS(status) == 1;
}

TEST(OpenFile, IsCopiedWithoutLosingTheLocksOnIt) {
  const testing::TemporaryFolder folder;
  const std::string content(300'000, 'x');
  writeText(folder / "database", content);
  writeText(folder / "copy", "an older and longer one" + content);
  const int locked = open((folder / "database").c_str(), O_RDWR);
  struct flock lock = wholeFile();
  ASSERT_EQ(fcntl(locked, F_SETLK, &lock), 0);
  {
    const OpenFile file(folder / "database");
    file.copyTo(folder / "copy");
    EXPECT_EQ(readText(folder / "copy"), content);
    EXPECT_TRUE(isLockedForOthers(folder / "database"));
    EXPECT_THROW(file.copyTo(folder / "missing" / "copy"), FileError);
  }
  EXPECT_FALSE(isLockedForOthers(folder / "database")) << "then nobody needs to keep the file";
  close(locked);
}

TEST(OpenFile, IsARegularFileAndNoLink) {
  const testing::TemporaryFolder folder;
  writeText(folder / "file", "text");
  fs::create_symlink("file", folder / "link");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  const std::pair<fs::path, int> refused[] = {{folder / "link", ELOOP},
                                              {folder.path(), EISDIR},
                                              {folder / "pipe", EINVAL},
                                              {folder / "none", ENOENT}};
  for (const auto& [path, number] : refused) {
    try {
      const OpenFile file(path);
      ADD_FAILURE() << path;
    } catch (const FileError& error) {
      EXPECT_EQ(error.number, number) << path;
    }
  }
}

TEST(ReplacementDirectory, GoesWithItsScopeOrAfterItsProgram) {
  const testing::TemporaryFolder folder;
  const fs::path target = folder / "Family";
  const auto hidden = [&] {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
      names.insert(entry.path().filename());
    }
    return names;
  };
  {
    const ReplacementDirectory directory(target);
    writeText(directory.path() / "half", "finished");
    ReplacementDirectory::removeAbandoned(target);
    EXPECT_TRUE(fs::exists(directory.path() / "half")) << "it is in use";
  }
  EXPECT_THAT(hidden(), ::testing::IsEmpty());

  // What killed programs have left, and what only looks like it.
  for (const auto* name : {".Family.123", ".Family.45", ".Family.6", ".Family.", ".Family.7a",
                           ".Other.123", "Family.8"}) {
    fs::create_directory(folder / name);
  }
  writeText(folder / ".Family.45" / "half", "finished");
  fs::create_directory(folder / ".Family.6" / "Family.old");
  ReplacementDirectory::removeAbandoned(target);
  EXPECT_THAT(hidden(), ::testing::UnorderedElementsAre(".Family.6", ".Family.", ".Family.7a",
                                                        ".Other.123", "Family.8"));
}

TEST(ReplacementDirectory, IsMadeAgainWhereAnotherProgramSweepsItAway) {
  const testing::TemporaryFolder folder;
  int made = 0;
  const auto [path, lock] = DirectoryLock::onNewDirectory([&] {
    const fs::path directory = folder / ("made " + std::to_string(++made));
    fs::create_directory(directory);
    if (made == 1) {
      fs::remove(directory);
    }
    return directory;
  });
  EXPECT_EQ(path, folder / "made 2");
  EXPECT_TRUE(lock.isHeld());
  EXPECT_FALSE(DirectoryLock::tryLock(path).isHeld());
}

TEST(Replace, ChangesBackWhatWasNotExpected) {
  const testing::TemporaryFolder folder;
  writeText(folder / "file", "of somebody else");
  writeText(folder / "new", "ours");
  std::string shown;
  EXPECT_FALSE(files::replace(folder / "file", folder / "new", [&](const fs::path& former) {
    shown = readText(former);
    EXPECT_FALSE(DirectoryLock::tryLock(folder.path()).isHeld()) << "one after the other";
    return false;
  }));
  EXPECT_EQ(shown, "of somebody else");
  EXPECT_EQ(readText(folder / "file"), "of somebody else");
  EXPECT_EQ(readText(folder / "new"), "ours");
  EXPECT_TRUE(
      files::replace(folder / "file", folder / "new", [](const fs::path&) { return true; }));
  EXPECT_EQ(readText(folder / "file"), "ours");
}

TEST(Replace, DoesTheSameInTwoStepsWhereNamesCannotBeExchanged) {
  const testing::TemporaryFolder folder;
  writeText(folder / "file", "of somebody else");
  writeText(folder / "new", "ours");
  const auto replace = [&](bool isExpected) {
    return files::replace(folder / "file", folder / "new",
                          [&](const fs::path&) { return isExpected; });
  };
  const testing::VolumeWithoutExchange volume;
  EXPECT_FALSE(replace(false));
  EXPECT_EQ(readText(folder / "file"), "of somebody else");
  EXPECT_EQ(readText(folder / "new"), "ours");
  EXPECT_TRUE(replace(true));
  EXPECT_EQ(readText(folder / "file"), "ours");
  EXPECT_EQ(readText(folder / "new"), "of somebody else");
  EXPECT_FALSE(fs::exists(files::asideOf(folder / "new")));
}

TEST(FileStamp, ChangesWithTheFileAndWithItsContent) {
  const testing::TemporaryFolder folder;
  writeText(folder / "file", "text");
  const FileStamp former = files::stamp(folder / "file");
  fs::rename(folder / "file", folder / "moved");
  EXPECT_EQ(files::stamp(folder / "moved"), former);
  const auto modified = fs::last_write_time(folder / "moved");
  writeText(folder / "moved", "text and more");
  fs::last_write_time(folder / "moved", modified);
  EXPECT_NE(files::stamp(folder / "moved"), former);
  // A restored copy has the size and the time, and is another file.
  writeText(folder / "file", "text");
  fs::last_write_time(folder / "file", modified);
  EXPECT_NE(files::stamp(folder / "file"), former);
  EXPECT_THROW((void)files::stamp(folder / "none"), FileError);

  const fs::path secret = files::makePrivateDirectory(folder.path());
  EXPECT_EQ(fs::status(secret).permissions(), fs::perms::owner_all);
}

}  // namespace
}  // namespace corvane
