// What can happen to a console program and to its files: damage, interruption, sudden death.
//
// CORVANE_TEST_CASES sets the number of damaged packages, CORVANE_TEST_SEED the first seed.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <thread>

#include "cli/console_program.h"
#include "platform/data/sqlite.h"
#include "random_cases.h"
#include "storage/workspace/working_copy.h"
#include "storage/workspace/workspace_document.h"
#include "support/checkout.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ConsoleDamage : public ::testing::Test {
 protected:
  ConsoleDamage() {
    std::string text = "Date,Type,Symbol,Shares,Amount\n";
    for (int day = 1; day <= 28; ++day) {
      for (const char* month : {"03", "07", "12"}) {
        const std::string date = std::string("20") + (day % 2 == 0 ? "22-" : "23-") + month + "-" +
                                 (day < 10 ? "0" : "") + std::to_string(day);
        text += date + ",Deposit,,,1000.00\n" + date + ",Buy,ABC,10,500.00\n";
      }
    }
    writeText(program.folder / "statement.csv", text);
    for (const char* portfolio : {"Savings", "Pension"}) {
      (void)program.output(std::string("create Family --portfolio ") + portfolio +
                           " --currency CAD");
      (void)program.output(importInto(portfolio));
    }
  }

  static std::string importInto(const std::string& portfolio) {
    return "import statement.csv --into Family --portfolio " + portfolio +
           " --fields tradeDate,type,symbol,numberOfShares,cashAmount";
  }
  static std::vector<std::string> everyCommand() {
    return {"verify Family",
            "list Family",
            "ledger Family --portfolio Savings",
            "value Family --portfolio Savings --offline",
            "export transactions Family --portfolio Savings --out out.csv",
            "export gains Family --portfolio Savings --out gains.csv --offline",
            "watch Family XYZ",
            "create Family --portfolio Other --currency CAD",
            "remove Family --portfolio Savings --transaction 168",
            "remove Family --portfolio Savings --whole-portfolio",
            importInto("Savings"),
            "recover ."};
  }
  [[nodiscard]] std::map<std::string, std::string> contents() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(package)) {
      files[entry.path().filename()] = readText(entry.path());
    }
    return files;
  }
  [[nodiscard]] std::vector<std::string> leftovers() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(program.temporary)) {
      // The thread sanitizer's own files are not the program's.
      if (!entry.path().filename().string().starts_with("tsan.")) {
        names.push_back(entry.path().filename());
      }
    }
    return names;
  }

  ConsoleProgram program;
  const fs::path package = program.folder / "Family.corvane";
};

TEST_F(ConsoleDamage, NoCommandTouchesADamagedPackage) {
  const std::string database = readText(package / WorkspaceDocument::databaseName);
  int damagedCount = 0;
  forRandomCases(6, [&](std::mt19937_64& random) {
    std::string damaged = database;
    for (std::size_t flips = 1 + random() % 8; flips > 0; --flips) {
      damaged[random() % damaged.size()] ^= static_cast<char>(1 + random() % 255);
    }
    writeText(package / WorkspaceDocument::databaseName, damaged);
    const auto before = contents();
    if (program.run("verify Family").exitCode == 0) {
      return;  // where nothing stands, or in a note
    }
    ++damagedCount;
    for (const std::string& command : everyCommand()) {
      const ProgramResult result = program.run(command);
      EXPECT_GE(result.exitCode, 0) << command << " has crashed";
      EXPECT_EQ(contents(), before) << command;
      EXPECT_THAT(leftovers(), IsEmpty()) << command;
    }
  });
  std::cout << damagedCount << " of the packages were found damaged\n";
}

TEST_F(ConsoleDamage, VerifyComparesWhatStandsInTheFile) {
  const auto refusedWith = [&](const std::string& sql, const std::string& message) {
    const std::string database = readText(package / WorkspaceDocument::databaseName);
    SQLiteDatabase(package / WorkspaceDocument::databaseName, SQLiteDatabase::Mode::readWrite)
        .executeScript(sql);
    const auto before = contents();
    const ProgramResult result = program.run("verify Family");
    EXPECT_EQ(result.exitCode, 1) << sql;
    EXPECT_THAT(result.err, HasSubstr("Savings: ")) << sql;
    EXPECT_THAT(result.err, HasSubstr(message)) << sql;
    EXPECT_THAT(result.out, HasSubstr("Pension: 168 transactions, all balances are right.")) << sql;
    const ProgramResult change = program.run("watch Family XYZ");
    EXPECT_EQ(change.exitCode, 1);
    EXPECT_THAT(change.err, HasSubstr("“Family.corvane” is damaged: portfolio “Savings”: "));
    EXPECT_EQ(contents(), before);
    for (const char* suffix : {"-wal", "-shm"}) {
      fs::remove((package / WorkspaceDocument::databaseName).string() + suffix);
    }
    writeText(package / WorkspaceDocument::databaseName, database);
  };
  refusedWith(
      "UPDATE cashByYear SET cashOnHand = cashOnHand + 1 WHERE id = "
      "(SELECT min(id) FROM cashByYear WHERE portfolioId = 1)",
      "The totals of 2022 are not those of the transactions.");
  refusedWith(
      "DELETE FROM cashByYear WHERE portfolioId = 1 AND year = 2023;"
      "DELETE FROM equitiesByYear WHERE portfolioId = 1 AND year = 2023",
      "The totals of 2023 are not those of the transactions.");
  refusedWith("UPDATE transactions SET cashNet = cashNet + 1 WHERE id = 50", "");

  // Another time zone is no damage.
  setenv("TZ", "Asia/Tokyo", 1);
  (void)program.output("verify Family");
  setenv("TZ", "America/Toronto", 1);

  fs::rename(package / WorkspaceDocument::generalPropertiesName, program.folder / "aside");
  EXPECT_THAT(program.run("verify Family").err, HasSubstr("There is no “General.json”"));
  fs::rename(program.folder / "aside", package / WorkspaceDocument::generalPropertiesName);
  fs::remove(package / WorkspaceDocument::databaseName);
  const ProgramResult alone = program.run("verify Family");
  EXPECT_EQ(alone.exitCode, 1);
  EXPECT_THAT(alone.err, HasSubstr("There is no database"));
}

/// Starts `arguments` in the folder of `program` and sends `signal` after `delay`.
void interruptAfter(const ConsoleProgram& program, const std::string& arguments, int signal,
                    std::chrono::milliseconds delay) {
  const pid_t child = fork();
  if (child == 0) {
    const int nothing = open("/dev/null", O_WRONLY);
    dup2(nothing, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    setenv("TMPDIR", program.temporary.c_str(), 1);
    const std::string command = "exec '" + testing::builtProgram("corvane-cli") + "' " + arguments;
    if (chdir(program.folder.path().c_str()) == 0) {
      execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    }
    _exit(127);
  }
  std::this_thread::sleep_for(delay);
  kill(child, signal);
  waitpid(child, nullptr, 0);
}

TEST_F(ConsoleDamage, AnInterruptedCommandLeavesNothing) {
  const auto before = contents();
  for (const std::string command : {"ledger Family --portfolio Savings", "verify Family",
                                    "value Family --portfolio Savings --sample-market",
                                    "create Family --portfolio Savings --currency CAD"}) {
    for (const int signal : {SIGINT, SIGTERM}) {
      for (int delay = 5; delay < 80; delay += 15) {
        interruptAfter(program, command, signal, std::chrono::milliseconds(delay));
        ASSERT_THAT(leftovers(), IsEmpty()) << command << " after " << delay << " ms";
      }
    }
  }
  EXPECT_EQ(contents(), before);
}

TEST_F(ConsoleDamage, UnsavedWorkIsToldOfAndSavedOnDemand) {
  const auto before = contents();
  const pid_t child = fork();
  if (child == 0) {
    const auto document = std::make_shared<WorkspaceDocument>(WorkspaceSurroundings{
        .sharedQuoteProvider = [provider = std::make_shared<QuoteProvider>()] { return provider; },
        .appBundleVersion = "1",
        .appMarketingVersion = "1",
        .temporaryDirectory = program.temporary});
    document->open(package);
    const auto& manager = document->model()->portfolioManagers.front();
    manager->deleteTransactions({manager->portfolios().front()->transactions().back()},
                                manager->portfolios().front(), document->undoManager());
    kill(getpid(), SIGKILL);
  }
  waitpid(child, nullptr, 0);
  const ProgramResult told = program.run("list Family");
  EXPECT_EQ(told.exitCode, 0);
  EXPECT_THAT(told.err, HasSubstr("unsaved changes of “Family”"));
  writeText(program.folder / "Recovered Family.corvane", "in the way");
  EXPECT_EQ(program.output("recover ."), "./Recovered Family 2.corvane\n");
  EXPECT_THAT(leftovers(), IsEmpty());
  EXPECT_EQ(contents(), before);
  EXPECT_THAT(program.output("verify 'Recovered Family 2'"),
              HasSubstr("Savings: 167 transactions"));
  const ProgramResult again = program.run("recover . --csv");
  EXPECT_EQ(again.err, "corvane-cli: There is no unsaved work.\n");
  EXPECT_THAT(again.out, HasSubstr("workspace")) << "fields are named without a row too";
}

TEST_F(ConsoleDamage, AnUnusableTemporaryFolderIsToldOfAndReplaced) {
  fs::remove(program.temporary);
  const ProgramResult result = program.run("list Family");
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.err,
              HasSubstr("Cannot use the temporary folder “" + program.temporary.string()));
  EXPECT_THAT(result.out, HasSubstr("Savings"));
}

}  // namespace
}  // namespace corvane::testing
