#include "platform/system/file_manager.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "support/temporary_folder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using testing::readText;
using testing::writeText;

std::size_t countIn(const fs::path& folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST(Files, AreWrittenWholeOrNotAtAll) {
  const testing::TemporaryFolder folder;
  const fs::path file = folder / "file";
  const std::string content("a\0b", 3);
  files::writeAtomically(file, content);
  EXPECT_EQ(files::read(file), content);
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  files::writeAtomically(file, "new");
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(countIn(folder.path()), 1U) << "a temporary file was left behind";

  fs::create_symlink("file", folder / "link");
  files::writeAtomically(folder / "link", "through the link");
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(readText(file), "through the link");
  fs::remove(folder / "link");

  fs::create_directory(folder / "taken");
  EXPECT_THROW(files::writeAtomically(folder / "taken", "x"), FileError);
  EXPECT_EQ(countIn(folder.path()), 2U);
  try {
    (void)files::read(folder / "absent");
    FAIL();
  } catch (const FileError& error) {
    EXPECT_EQ(error.number, ENOENT);
    EXPECT_EQ(error.description(),
              "Cannot read “" + (folder / "absent").string() + "”: No such file or directory.");
  }
}

TEST(Files, ThatAreNoFilesAreWrittenIntoAndStay) {
  const testing::TemporaryFolder folder;
  const fs::path pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  files::writeAtomically(pipe, "through the pipe");
  EXPECT_TRUE(fs::is_fifo(pipe));
  std::string heard(100, '\0');
  heard.resize(static_cast<std::size_t>(std::max(read(reader, heard.data(), 100), ssize_t{0})));
  close(reader);
  EXPECT_EQ(heard, "through the pipe");
  EXPECT_EQ(countIn(folder.path()), 1U);
}

TEST(Files, TakeThePlaceOfOthersInOneStep) {
  const testing::TemporaryFolder folder;
  const fs::path package = folder / "package";
  const fs::path built = files::makeReplacementDirectory(package);
  EXPECT_EQ(built.parent_path(), package.parent_path());
  writeText(built / "file", "new");
  files::synchronize(built);
  files::replace(package, built);
  EXPECT_EQ(readText(package / "file"), "new");
  EXPECT_FALSE(fs::exists(built));

  const fs::path newer = files::makeReplacementDirectory(package);
  writeText(newer / "file", "newer");
  files::replace(package, newer);
  EXPECT_EQ(readText(package / "file"), "newer");
  EXPECT_EQ(readText(newer / "file"), "new");
  EXPECT_THROW(files::replace(package, folder / "absent"), FileError);
  EXPECT_EQ(readText(package / "file"), "newer");
}

TEST(Files, AreCopiedAndRemovedWithAllThatIsInThem) {
  const testing::TemporaryFolder folder;
  fs::create_directories(folder / "from/inner");
  writeText(folder / "from/inner/file", "x");
  files::copy(folder / "from", folder / "to");
  EXPECT_EQ(readText(folder / "to/inner/file"), "x");
  EXPECT_THROW(files::copy(folder / "from", folder / "to"), FileError);
  EXPECT_THROW(files::copy(folder / "absent", folder / "to2"), FileError);
  files::remove(folder / "to");
  files::remove(folder / "to");
  EXPECT_FALSE(fs::exists(folder / "to"));
}

TEST(Files, HaveTheProgramsFoldersWhereTheSystemSays) {
  const testing::TemporaryFolder folder;
  const char* const former = std::getenv("XDG_CACHE_HOME");
  const std::optional<std::string> kept =
      former ? std::optional<std::string>(former) : std::nullopt;
  setenv("XDG_CACHE_HOME", folder.path().c_str(), 1);
  EXPECT_EQ(files::cachesDirectory(), folder / "corvane");
  EXPECT_TRUE(fs::is_directory(folder / "corvane"));
  kept ? setenv("XDG_CACHE_HOME", kept->c_str(), 1) : unsetenv("XDG_CACHE_HOME");
}

}  // namespace
}  // namespace corvane
