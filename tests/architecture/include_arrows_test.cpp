// The arrows of the architecture, read off the #include lines: a folder includes only itself and
// what stands below it, and nothing under presentation/ or below knows Qt.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace corvane {
namespace {

namespace fs = std::filesystem;

const std::map<std::string, std::set<std::string>> foldersBelow = {
    {"platform", {}},
    {"core", {"platform"}},
    {"ledger", {"core", "platform"}},
    {"marketdata", {"core", "platform"}},
    {"storage", {"ledger", "marketdata", "core", "platform"}},
    {"exchange", {"storage", "ledger", "marketdata", "core", "platform"}},
    {"scenario", {"storage", "ledger", "marketdata", "core", "platform"}},
    {"presentation",
     {"exchange", "scenario", "storage", "ledger", "marketdata", "core", "platform"}},
};
const std::set<std::string> shells = {"desktop", "cli"};

/// What is wrong with the include lines of `text`, a file of the folder `folder`.
std::vector<std::string> faults(const std::string& folder, std::istream& text) {
  static const std::regex include(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])");
  static const std::regex qtHeader(R"(^(Qt?[A-Z]\w*(/.*)?|q[a-z]+\.h|qcustomplot\.h)$)");
  std::vector<std::string> found;
  std::string line;
  while (std::getline(text, line)) {
    std::smatch match;
    if (!std::regex_search(line, match, include)) {
      continue;
    }
    const std::string path = match[2];
    if (!shells.contains(folder) && std::regex_match(path, qtHeader)) {
      found.push_back("includes the Qt header " + path);
    }
    const std::string target = path.substr(0, path.find('/'));
    const bool isOurs =
        match[1] == "\"" && (foldersBelow.contains(target) || shells.contains(target));
    if (isOurs && target != folder && !shells.contains(folder) &&
        !foldersBelow.at(folder).contains(target)) {
      found.push_back("includes " + path + ", which stands above it or beside it");
    }
    const bool isSampleMarket = target == "samplemarket" && shells.contains(folder);
    if (match[1] == "\"" && !isOurs && !isSampleMarket) {
      found.push_back("includes " + path + ", which does not start with a folder of src/");
    }
  }
  return found;
}

std::vector<std::string> faultsIn(const std::string& folder, const std::string& text) {
  std::istringstream stream(text);
  return faults(folder, stream);
}

TEST(IncludeArrows, RunDownInEveryFolder) {
  const fs::path sources = fs::path(CORVANE_SOURCE_ROOT) / "src";
  int filesRead = 0;
  for (const auto& entry : fs::recursive_directory_iterator(sources)) {
    const auto extension = entry.path().extension();
    if (extension != ".h" && extension != ".cpp") {
      continue;
    }
    const std::string folder = entry.path().lexically_relative(sources).begin()->string();
    ASSERT_TRUE(foldersBelow.contains(folder) || shells.contains(folder))
        << folder << " has no place in the architecture";
    std::ifstream text(entry.path());
    EXPECT_THAT(faults(folder, text), testing::IsEmpty()) << entry.path();
    ++filesRead;
  }
  EXPECT_GT(filesRead, 20);
}

TEST(IncludeArrows, AreFaultsWhenTheyRunUpOrSidewaysOrToQt) {
  EXPECT_EQ(faultsIn("core", "#include \"ledger/portfolio.h\"\n").size(), 1U);
  EXPECT_EQ(faultsIn("ledger", "#include \"marketdata/cache.h\"\n").size(), 1U);
  EXPECT_EQ(faultsIn("presentation", "#include <QWidget>\n").size(), 1U);
  EXPECT_EQ(faultsIn("presentation", "#include <QtCore/QString>\n").size(), 1U);
  EXPECT_EQ(faultsIn("platform", "  #  include <qobject.h>\n").size(), 1U);
  EXPECT_THAT(faultsIn("storage", "#include \"ledger/portfolio.h\"\n#include <vector>\n"),
              testing::IsEmpty());
  EXPECT_THAT(faultsIn("desktop", "#include <QWidget>\n#include \"presentation/a.h\"\n"),
              testing::IsEmpty());
}

}  // namespace
}  // namespace corvane
