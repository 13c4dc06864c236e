// The desktop program as a user has it: real windows, real keys, a screen reader. The script beside
// this file does the work; here it is run and its words are shown when it fails.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

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

}  // namespace

TEST(OneEvening, importsExportsSavesAndOpensAgain) {
#ifdef __SANITIZE_THREAD__
  // The thread sanitizer does not see the locks inside of Qt, which is not built with it, and takes
  // what they guard for races.
  GTEST_SKIP() << "Qt is not built with the thread sanitizer.";
#endif
  if (run("command -v Xvfb").exitStatus != 0) {
    GTEST_SKIP() << "There is no Xvfb to show windows on.";
  }
  const Outcome evening =
      run("/usr/bin/python3 '" CORVANE_EVENING "' '" CORVANE_PROGRAMS "' '" CORVANE_EXAMPLES "'");
  EXPECT_EQ(evening.exitStatus, 0) << evening.output;
}
