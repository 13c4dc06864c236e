// What is made from the table of commands: help, manual page, completions, and the forms of data.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

#include "cli/console_program.h"
#include "platform/data/json.h"

namespace corvane {
namespace {

using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::StartsWith;

class ConsoleHelpTest : public ::testing::Test {
 protected:
  testing::ConsoleProgram program;

  /// The commands that the help lists.
  [[nodiscard]] std::vector<std::string> commands() const {
    const std::string help = program.output("--help");
    const std::size_t first = help.find("Commands:\n") + 10;
    std::istringstream lines(help.substr(first, help.find("\n\n", first) - first));
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);) {
      names.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    return names;
  }
  /// The options that the help of `command` explains.
  [[nodiscard]] std::set<std::string> options(const std::string& command) const {
    const std::string help = program.output(command + " --help");
    const std::regex option("\n  (--[a-z-]+)");
    std::set<std::string> names;
    for (std::sregex_iterator each(help.begin(), help.end(), option), end; each != end; ++each) {
      names.insert((*each)[1]);
    }
    return names;
  }
  /// The fields that the help of `command` lists under "--csv and --json" + `of`.
  [[nodiscard]] std::string fields(const std::string& command, const std::string& of = "") const {
    const std::string help = program.output(command + " --help");
    const std::string title = "\nFields of --csv and --json" + of + ":\n";
    const std::size_t first = help.find(title);
    if (first == help.npos) {
      return "no fields" + of;
    }
    std::istringstream words(help.substr(first + title.size()));
    std::string names;
    for (std::string word; words >> word;) {
      const bool isLast = !word.ends_with(',');
      names +=
          (names.empty() ? "\"" : ",\"") + word.substr(0, word.size() - (isLast ? 0 : 1)) + '"';
      if (isLast) {
        break;
      }
    }
    return names + "\r\n";
  }
  /// What bash offers behind `line`, one a line.
  [[nodiscard]] std::set<std::string> completions(const std::string& line) const {
    std::string words;
    int count = 0;
    std::istringstream parts(line);
    for (std::string part; parts >> part; ++count) {
      words += " '" + part + "'";
    }
    if (line.ends_with(' ')) {
      words += " ''";
      ++count;
    }
    testing::writeText(program.folder / "complete.sh",
                       "source completions\nCOMP_WORDS=(" + words +
                           ")\nCOMP_CWORD=" + std::to_string(count - 1) +
                           "\n_corvane_cli\nprintf '%s\\n' \"${COMPREPLY[@]}\" >offered\n");
    const std::string command =
        "cd '" + program.folder.path().string() + "' && LC_ALL=C bash --norc -u complete.sh";
    EXPECT_EQ(std::system(command.c_str()), 0) << line;
    std::istringstream offered(testing::readText(program.folder / "offered"));
    std::set<std::string> found;
    for (std::string word; std::getline(offered, word);) {
      found.insert(word);
    }
    return found;
  }
  /// Whether `shell` can read the script in the file "completions".
  [[nodiscard]] bool isRead(const std::string& shell) const {
    const std::string command =
        "cd '" + program.folder.path().string() + "' && LC_ALL=C " + shell + " -n completions";
    return std::system(command.c_str()) == 0;
  }
};

TEST_F(ConsoleHelpTest, TellsExitCodes) {
  EXPECT_THAT(program.output("--help"), HasSubstr("Exit codes:\n  0    all went well\n  1    "));
  for (const std::string& command : commands()) {
    EXPECT_THAT(program.output(command + " --help"),
                HasSubstr("\nExit codes: 0 done, 1 failed, 2 not understood, 130 interrupted.\n"));
  }
}

TEST_F(ConsoleHelpTest, IsNotGivenForWhatIsNotUnderstood) {
  for (const std::string arguments : {"--version x", "--help x", "--man x", "--completions",
                                      "--nonsense", "help list x", "help nonsense", "nonsense"}) {
    const auto result = program.run(arguments);
    EXPECT_EQ(result.exitCode, 2) << arguments;
    EXPECT_EQ(result.out, "") << arguments;
    EXPECT_THAT(result.err, StartsWith("corvane-cli: ")) << arguments;
  }
}

TEST_F(ConsoleHelpTest, EveryListingHasTwoFormsOfData) {
  for (const std::string command : {"list", "ledger", "value", "statements", "quotes", "backtest",
                                    "import", "imports", "verify", "recover"}) {
    EXPECT_THAT(options(command), IsSupersetOf({"--csv", "--json"})) << command;
  }
  ASSERT_EQ(program.output("create Family --portfolio 'Ann \"A\", née B' --currency CAD"), "");
  EXPECT_EQ(program.output("list Family --csv"),
            "\"portfolio\",\"currency\",\"transactions\",\"from\",\"to\"\r\n"
            "\"Ann \"\"A\"\", née B\",\"CAD\",\"0\",\"\",\"\"\r\n");
  EXPECT_EQ(program.output("list Family --json"),
            "[\n{\"portfolio\":\"Ann \\\"A\\\", née B\",\"currency\":\"CAD\",\"transactions\":0,"
            "\"from\":null,\"to\":null}\n]\n");
  EXPECT_EQ(JSONValue::parse(program.output("list Family --watchlist --json")), JSONValue::Array());
  EXPECT_GT(JSONValue::parse(program.output("statements --json")).array().size(), 20U);
  EXPECT_EQ(program.run("list Family --csv --json").exitCode, 2);
  EXPECT_EQ(program.run("import a.csv --into Family --portfolio A --json").exitCode, 2);
}

TEST_F(ConsoleHelpTest, ListsTheFieldsThatAreWritten) {
  setenv("XDG_CACHE_HOME", (program.folder / "cache").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (program.folder / "config").c_str(), 1);
  program.makeFamily();
  testing::writeText(program.folder / "a.ofx",
                     "<OFX><STMTRS><CURDEF>CAD<BANKACCTFROM><ACCTID>1</BANKACCTFROM><BANKTRANLIST>"
                     "<STMTTRN><TRNTYPE>DEP<DTPOSTED>20250103<TRNAMT>1<FITID>1</STMTTRN>"
                     "</BANKTRANLIST></STMTRS></OFX>");
  const std::string days = " --from 2024-01-02 --to 2024-01-09 --sample-market";
  struct Case {
    std::string command;
    std::string arguments;
    std::string of = {};
  };
  const std::string savings = "Family --portfolio Savings";
  for (const Case& each :
       std::vector<Case>{{"list", "Family"},
                         {"list", "Family --watchlist", ", with --watchlist"},
                         {"ledger", savings},
                         {"value", "Family --offline"},
                         {"returns", "Family --offline"},
                         {"income", "Family --offline"},
                         {"tax", "Family"},
                         {"tax", "Family --section disposals"},
                         {"tax", "Family --section totals", ", with --section totals"},
                         {"tax", "Family --section income", ", with --section income"},
                         {"tax", "Family --section check", ", with --section check"},
                         {"tax", "Family --section costs", ", with --section costs"},
                         {"tax-settings", "Family"},
                         {"explain", "value " + savings + " --offline"},
                         {"explain", "deposits " + savings + " --offline", ", of deposits"},
                         {"coverage", "Family --offline"},
                         {"statements", ""},
                         {"imports", savings},
                         {"import", "a.ofx --into " + savings + " --preview", ", with --preview"},
                         {"verify", "Family"},
                         {"recover", "."},
                         {"quotes", "CASTR" + days},
                         {"backtest", "CASTR" + days},
                         {"backtest", "CASTR --batch daily" + days, ", with --batch"}}) {
    const std::string command = each.command + " " + each.arguments;
    const std::string csv = program.run(command + " --csv").out;
    EXPECT_EQ(csv.substr(0, csv.find('\n') + 1), fields(each.command, each.of)) << command;
    // The same rows as objects, whose names are those of the first row.
    const JSONValue::Array objects = JSONValue::parse(program.run(command + " --json").out).array();
    EXPECT_EQ(static_cast<std::ptrdiff_t>(objects.size()) + 1, std::ranges::count(csv, '\n'))
        << command;
    std::string names;
    for (const auto& [name, value] : objects.empty() ? JSONValue::Object() : objects[0].object()) {
      names += (names.empty() ? "\"" : ",\"") + name + '"';
    }
    EXPECT_TRUE(objects.empty() || csv.starts_with(names + "\r\n")) << command;
  }
  for (const std::string& command : commands()) {
    const bool writesData = options(command).contains("--json");
    EXPECT_EQ(program.output(command + " --help").contains("\nFields of --csv and --json"),
              writesData)
        << command;
  }
}

TEST_F(ConsoleHelpTest, HasEveryCommandAndOptionInItsManualPage) {
  std::string page = program.output("--man");
  EXPECT_THAT(page, HasSubstr("\nFields of \\-\\-csv and \\-\\-json, with \\-\\-watchlist:\n"));
  EXPECT_THAT(page, StartsWith(".TH CORVANE"));
  page = std::regex_replace(page, std::regex("\\\\-"), "-");
  for (const std::string& command : commands()) {
    EXPECT_THAT(page, HasSubstr("\n.SS \"" + command + "\"\n"));
    for (const std::string& option : options(command)) {
      EXPECT_TRUE(std::regex_search(page, std::regex("\n\\.B " + option + "[ \n]"))) << option;
    }
  }
}

TEST_F(ConsoleHelpTest, CompletesCommandsOptionsAndTheirValues) {
  testing::writeText(program.folder / "completions", program.output("--completions bash"));
  EXPECT_THAT(completions("corvane-cli "), IsSupersetOf(commands()));
  EXPECT_EQ(completions("corvane-cli rec"), (std::set<std::string>{"record", "recover"}));
  for (const std::string& command : commands()) {
    EXPECT_THAT(completions("corvane-cli " + command + " --"), IsSupersetOf(options(command)))
        << command;
  }
  EXPECT_EQ(completions("corvane-cli record F --type cash-"),
            (std::set<std::string>{"cash-credit", "cash-expense"}));
  EXPECT_THAT(completions("corvane-cli export "), IsSupersetOf({"holdings", "gains"}));
  testing::writeText(program.folder / "statement.csv", "");
  EXPECT_EQ(completions("corvane-cli import state"), (std::set<std::string>{"statement.csv"}));
  EXPECT_EQ(completions("corvane-cli ledger state --portfolio sta"), (std::set<std::string>{""}))
      << "the name of a portfolio is no file";
  EXPECT_TRUE(isRead("bash"));
}

TEST_F(ConsoleHelpTest, HasEveryCommandAndOptionInTheCompletionsOfZsh) {
  const std::string script = program.output("--completions zsh");
  for (const std::string& command : commands()) {
    const std::size_t first = script.find("\n    " + command + ")\n");
    ASSERT_NE(first, script.npos) << command;
    const std::string part = script.substr(first, script.find(";;", first) - first);
    for (const std::string& option : options(command)) {
      EXPECT_THAT(part, HasSubstr(option + "[")) << command;
    }
  }
  testing::writeText(program.folder / "completions", script);
  if (std::system("command -v zsh >/dev/null") == 0) {
    EXPECT_TRUE(isRead("zsh"));
  }
  EXPECT_EQ(program.run("--completions fish").exitCode, 2);
}

}  // namespace
}  // namespace corvane
