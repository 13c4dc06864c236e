// Two desktops and a console edit and save one workspace at the same time. What any of them has
// reported as saved is in the file.
//
// CORVANE_TEST_CASES sets the seconds that they go on for.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <set>
#include <sstream>

#include "desktop/desktop_world.h"
#include "platform/system/file_manager.h"
#include "storage/workspace/document_error.h"
#include "storage/workspace/workspace_document.h"
#include "support/checkout.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::string environment(const char* name) {
  const char* text = std::getenv(name);
  return text == nullptr ? "" : text;
}

/// Whether `statement` went through; false where somebody else was in the way.
bool succeeds(const std::function<void()>& statement) {
  try {
    statement();
    return true;
  } catch (const DocumentError& error) {
    if (!error.isAboutReplacing()) {
      throw;
    }
  } catch (const FileError& error) {
    // Read while another one put a new package in its place.
    if (error.number != ENOENT) {
      throw;
    }
  }
  return false;
}

PortfolioPointer portfolioIn(const std::shared_ptr<WorkspaceDocument>& document) {
  return document->model()->portfolios().front();
}

/// One of the desktops, in a process of its own: deposits and saves again and again in a window,
/// and writes down what is saved.
TEST(SharedWorkspace, DISABLED_Desktop) {
  const std::string name = environment("CORVANE_SHARED_NAME");
  const fs::path workspace = environment("CORVANE_SHARED_WORKSPACE");
  const auto end =
      Clock::now() + std::chrono::seconds(std::stoi(environment("CORVANE_SHARED_SECONDS")));
  std::ofstream report(environment("CORVANE_SHARED_REPORT"));
  DesktopWorld world;
  std::shared_ptr<WorkspaceDocument> document;
  while (!succeeds(
      [&] { document = world.application.documentController().openDocument(workspace); })) {
  }
  for (int number = 1; Clock::now() < end; ++number) {
    const std::string note = name + " " + std::to_string(number);
    const auto portfolio = portfolioIn(document);
    const auto manager = portfolio->manager.lock();
    const Date day = YearMonthDay{2021, 3, 1 + number % 28}.startIn(manager->calendar);
    manager->recordTransactions(
        {{BasicTransaction::Transfer{{Currency::cad(), Decimal(1)}}, day, day, note}}, portfolio,
        document->undoManager());
    QApplication::processEvents();
    if (succeeds([&] { document->save(workspace); })) {
      report << note << std::endl;
    } else {
      while (!succeeds([&] { document->revertToSaved(); })) {
      }
    }
  }
}

pid_t startDesktop(const fs::path& folder, const std::string& name, int seconds) {
  const pid_t child = fork();
  if (child == 0) {
    // The desktop is a test for itself, whatever part of the tests this one belongs to.
    unsetenv("GTEST_TOTAL_SHARDS");
    unsetenv("GTEST_SHARD_INDEX");
    setenv("CORVANE_SHARED_NAME", name.c_str(), 1);
    setenv("CORVANE_SHARED_WORKSPACE", (folder / "Family.corvane").c_str(), 1);
    setenv("CORVANE_SHARED_SECONDS", std::to_string(seconds).c_str(), 1);
    setenv("CORVANE_SHARED_REPORT", (folder / name).c_str(), 1);
    execl("/proc/self/exe", "desktop", "--gtest_also_run_disabled_tests",
          "--gtest_filter=SharedWorkspace.DISABLED_Desktop", "--gtest_brief=1", nullptr);
    _exit(127);
  }
  return child;
}

/// Imports a deposit with the console; whether it was saved.
bool importByConsole(const fs::path& folder, const std::string& note) {
  writeText(folder / "row.csv", "Date,Type,Amount,Note\n2021-03-15,Deposit,1," + note + "\n");
  const std::string command = "cd '" + folder.string() + "' && '" + builtProgram("corvane-cli") +
                              "' import row.csv --into Family --portfolio Savings --fields "
                              "settlementDate,type,cashAmount,note >/dev/null 2>'" +
                              (folder / "console.err").string() + "'";
  return std::system(command.c_str()) == 0;
}

std::set<std::string> linesOf(const fs::path& file) {
  std::istringstream text(readText(file));
  std::set<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    lines.insert(line);
  }
  return lines;
}

TEST(SharedWorkspace, LosesNothingThatWasReportedAsSaved) {
  const std::string cases = environment("CORVANE_TEST_CASES");
  const int seconds = cases.empty() ? 3 : std::stoi(cases);
  const TemporaryFolder folder;
  const fs::path workspace = folder / "Family.corvane";
  {
    DesktopWorld world;
    const auto window = world.newWindow();
    world.addPortfolio(*window, "Savings");
    window->document()->save(workspace);
  }
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  const pid_t desktops[] = {startDesktop(folder.path(), "first", seconds),
                            startDesktop(folder.path(), "second", seconds)};
  std::set<std::string> saved;
  int refusals = 0;
  for (int number = 1; Clock::now() < end; ++number) {
    const std::string note = "console " + std::to_string(number);
    if (importByConsole(folder.path(), note)) {
      saved.insert(note);
    } else {
      ++refusals;
    }
  }
  const std::size_t savedByConsole = saved.size();
  for (const pid_t desktop : desktops) {
    int status = 0;
    waitpid(desktop, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  saved.merge(linesOf(folder / "first"));
  saved.merge(linesOf(folder / "second"));

  DesktopWorld world;
  const auto document = world.application.documentController().openDocument(workspace);
  std::multiset<std::string> found;
  for (const auto& row : portfolioIn(document)->transactions()) {
    if (row->basic.note) {
      found.insert(*row->basic.note);
    }
  }
  for (const std::string& note : saved) {
    EXPECT_EQ(found.count(note), 1U) << note;
  }
  EXPECT_EQ(found.size(), saved.size()) << "what was refused is not there";
  EXPECT_GT(saved.size(), savedByConsole);
  std::cout << saved.size() << " edits saved, " << savedByConsole
            << " of them by the console, which "
            << "was refused " << refusals << " times\n";
}

}  // namespace
}  // namespace corvane::testing
