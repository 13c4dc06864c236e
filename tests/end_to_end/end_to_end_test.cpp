// The desktop program as a user has it: real windows, real keys, a screen reader. The scripts
// beside this file do the work; here they are run and their words are shown when they fail.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/checkout.h"

namespace {

using corvane::testing::builtProgram;
using corvane::testing::sourcePath;

struct Outcome {
  std::string output;
  int exitStatus;
};

Outcome run(const std::string& command) {
  std::string output;
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) {
    return {"The shell cannot be started.", -1};
  }
  std::array<char, 4096> part{};
  for (std::size_t count = 0; (count = fread(part.data(), 1, part.size(), pipe)) > 0;) {
    output.append(part.data(), count);
  }
  const int status = pclose(pipe);
  return {output, WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

/// Runs a script of this folder; what it said where it failed, else nothing.
std::string wordsOfFailure(const std::string& script) {
  const Outcome done =
      run("/usr/bin/python3 '" + sourcePath("tests/end_to_end/").string() + script);
  return done.exitStatus == 0 ? std::string() : done.output;
}

class EndToEnd : public ::testing::Test {
 protected:
  const std::string programs = builtProgram("");

  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    // The thread sanitizer does not see the locks inside of Qt, which is not built with it, and
    // takes what they guard for races.
    GTEST_SKIP() << "Qt is not built with the thread sanitizer.";
#endif
    if (run("command -v Xvfb").exitStatus != 0) {
      GTEST_SKIP() << "There is no Xvfb to show windows on.";
    }
  }
};

TEST_F(EndToEnd, ImportsExportsSavesAndOpensAgain) {
  EXPECT_EQ(wordsOfFailure("one_evening.py' '" + programs + "' '" +
                           sourcePath("resources/examples").string() + "'"),
            "");
}

TEST_F(EndToEnd, TakesAStatementAsItIs) {
  EXPECT_EQ(wordsOfFailure("broker_statement.py' '" + programs + "'"), "");
}

TEST_F(EndToEnd, KeepsALedgerByHand) {
  EXPECT_EQ(wordsOfFailure("every_entry.py' '" + programs + "'"), "");
}

TEST_F(EndToEnd, TellsOfAFolderThatCannotBeUsed) {
  EXPECT_EQ(wordsOfFailure("unusable_folders.py' '" + programs + "'"), "");
}

}  // namespace
