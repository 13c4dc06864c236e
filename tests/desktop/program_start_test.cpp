// Starts the built program as a user does, and looks at what it leaves behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/checkout.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

class ProgramStart : public ::testing::Test {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "Qt is not built with the thread sanitizer, which takes its locks for races.";
#endif
  }

  /// Starts it with `environment` and `arguments` and lets it end after its first picture; its exit
  /// status, or -1 where it has crashed.
  int start(const std::string& environment, const std::string& arguments) {
    const std::string command =
        "env -u CORVANE_RESOURCES HOME='" + (folder / "home").string() + "' XDG_CONFIG_HOME='" +
        settings.string() + "' XDG_CACHE_HOME='" + (folder / "cache").string() +
        "' QT_QPA_PLATFORM=offscreen " + environment + " timeout 60 '" + builtProgram("corvane") +
        "' --quit-after-first-paint " + arguments + " >'" + (folder / "out").string() + "' 2>&1";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  [[nodiscard]] std::string output() const {
    return readText(folder / "out");
  }

  TemporaryFolder folder;
  const fs::path settings = folder / "config";
};

TEST_F(ProgramStart, GoesOnWhereFoldersCannotBeUsed) {
  // A file where the folder of the settings should be, and a folder that is missing.
  writeText(settings, "");
  EXPECT_EQ(start("TMPDIR='" + (folder / "missing").string() + "'", "--sample-market"), 0)
      << output();
  EXPECT_THAT(output(), HasSubstr(settings.string()));
  EXPECT_THAT(output(), HasSubstr("Settings hold for this run only."));
  EXPECT_FALSE(fs::exists(folder / "missing"));
}

TEST_F(ProgramStart, KeepsTheSettingsOfTheInventedMarketApart) {
  fs::create_directories(settings / "corvane");
  const fs::path own = settings / "corvane" / "settings.json";
  writeText(own, R"({"mine":1})");
  EXPECT_EQ(start("", "--sample-market"), 0) << output();
  EXPECT_EQ(readText(own), R"({"mine":1})");
  EXPECT_TRUE(fs::exists(settings / "corvane" / "sample-market.json"));
  EXPECT_THAT(output(), Not(HasSubstr("Settings hold")));
}

TEST_F(ProgramStart, EndsNormallyWhenTheSystemSaysSo) {
  // A temporary folder of its own, in which nobody has left anything to recover.
  fs::create_directories(folder / "tmp");
  const std::string file = (settings / "corvane" / "sample-market.json").string();
  // In the foreground a signal is passed on once; the group would get it, too, and a second one
  // kills.
  const std::string command =
      "export HOME='" + (folder / "home").string() + "' TMPDIR='" + (folder / "tmp").string() +
      "' XDG_CONFIG_HOME='" + settings.string() + "' XDG_CACHE_HOME='" +
      (folder / "cache").string() +
      "' QT_QPA_PLATFORM=offscreen; timeout --foreground -s KILL 60 " + "'" +
      builtProgram("corvane") + "' --sample-market >'" + (folder / "out").string() +
      "' 2>&1 & program=$!; for i in $(seq 400); do test -f '" + file +
      "' && break; sleep 0.05; done; sleep 2; kill -TERM $program; wait $program";
  EXPECT_EQ(std::system(command.c_str()), 0) << output();
  EXPECT_THAT(readText(file), HasSubstr("lastAppBundleVersion"));
}

}  // namespace
}  // namespace corvane::testing
