// Runs the console program as a user does, and looks at what it wrote.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/checkout.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

struct ProgramResult {
  int exitCode;
  std::string out;
  std::string err;
};

class ConsoleProgram {
 public:
  ConsoleProgram() {
    std::filesystem::create_directory(temporary);
    setenv("LC_ALL", "en_CA.UTF-8", 1);
    setenv("TZ", "America/Toronto", 1);
  }

  TemporaryFolder folder;
  /// Where the program keeps what goes with it.
  const std::filesystem::path temporary = folder / "temporary";

  /// Runs it in the folder with `arguments`, which the shell reads.
  [[nodiscard]] ProgramResult run(const std::string& arguments) const {
    const auto out = folder / "out.txt";
    const auto err = folder / "err.txt";
    const std::string command = "cd '" + folder.path().string() + "' && TMPDIR='" +
                                temporary.string() + "' '" + builtProgram("corvane-cli") + "' " +
                                arguments + " >'" + out.string() + "' 2>'" + err.string() + "'";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(out), readText(err)};
  }

  /// What it writes where it succeeds without a word on the standard error.
  [[nodiscard]] std::string output(const std::string& arguments) const {
    const ProgramResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 0) << arguments;
    EXPECT_EQ(result.err, "") << arguments;
    return result.out;
  }

  /// A workspace with the statement of a Canadian broker, who trades at home and in dollars.
  void makeFamily() const {
    EXPECT_EQ(output("create Family --portfolio Savings --currency CAD"), "");
    EXPECT_EQ(output("import " + sourcePath("resources/examples").string() +
                     "/tamarack-trading.csv --into Family --portfolio Savings --fields "
                     "tradeDate,settlementDate,type,symbol,note,numberOfShares,,,,"
                     "cashAmount,cashCurrency,exchangeRate"),
              "Imported 9 transactions.\n");
  }
};

}  // namespace corvane::testing
