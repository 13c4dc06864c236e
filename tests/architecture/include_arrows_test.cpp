// The arrows of the architecture, read off the #include lines: a folder includes only itself and
// what stands below it, a room of a folder only itself and the rooms below it, and nothing under
// presentation/ or below knows Qt.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/checkout.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// The rooms of a folder from the ground up; those of one floor do not know each other. The files
/// outside of all rooms are the room "".
using Floors = std::vector<std::vector<std::string>>;

struct Folder {
  std::set<std::string> below;  ///< the folders that it may include
  Floors floors;
};

const std::map<std::string, Folder> house = {
    {"platform",
     {{},
      {{""},
       {"time"},
       {"text/unicode"},
       {"text/styled", "text/formats"},
       {"async"},
       {"data", "net"},
       {"system"}}}},
    {"core",
     {{"platform"}, {{"decimal"}, {"money"}, {"controls"}, {"market"}, {"strategy", "tax"}}}},
    {"ledger",
     {{"core", "platform"},
      {{"transaction"}, {"portfolio"}, {"accounting"}, {"edits"}, {"reports"}, {"manager"}}}},
    {"marketdata", {{"core", "platform"}, {{"yahoo/wire"}, {"yahoo"}, {"cache"}, {"chain"}}}},
    {"storage",
     {{"ledger", "marketdata", "core", "platform"},
      {{"database"}, {"workspace"}, {"application"}}}},
    {"reports",
     {{"ledger", "marketdata", "core", "platform"},
      {{"inquiry"},
       {"series"},
       {"returns", "tax", "income", "coverage"},
       {"overview"},
       {"trail"}}}},
    {"exchange",
     {{"reports", "storage", "ledger", "marketdata", "core", "platform"},
      {{"csv", "strict"},
       {"brokers", "profiles", "pools"},
       {"panels", "reading"},
       {"exports", "imports", "statements"}}}},
    {"scenario", {{"storage", "ledger", "marketdata", "core", "platform"}, {{""}}}},
    {"presentation",
     {{"exchange", "scenario", "reports", "storage", "ledger", "marketdata", "core", "platform"},
      {{"text"},
       {"controls"},
       {"screen"},
       {"axes"},
       {"charts"},
       {"transactions", "performance", "source"},
       {"equity"},
       {"scenario"},
       {"reports"},
       {"coverage", "overview", "portfolio", "taxes"},
       {"frame"}}}},
    {"samplemarket", {{"core", "platform"}, {{"prices"}, {"service"}, {""}}}},
    // The programs that make the sample workspaces.
    {"samplemarket/workspace",
     {{"sample", "samplemarket", "storage", "ledger", "marketdata", "core", "platform"}, {{""}}}},
    {"sample", {{"storage", "ledger", "marketdata", "core", "platform"}, {{""}}}},
    {"desktop",
     {{"samplemarket", "presentation", "exchange", "scenario", "reports", "storage", "ledger",
       "marketdata", "core", "platform"},
      {{"look"},
       {"controls"},
       {"charts"},
       {"transactions", "reports"},
       {"portfolio", "equity", "scenario", "exchange"},
       {"workspace", "frame"},
       {"app"},
       {""}}}},
    {"cli",
     {{"samplemarket", "presentation", "exchange", "scenario", "reports", "storage", "ledger",
       "marketdata", "core", "platform"},
      {{"console"}, {"commands"}, {""}}}},
};

struct Place {
  std::string folder;
  std::string room;
};

/// Where a file with this path from src/ stands.
Place placeOf(const std::string& path) {
  if (path.starts_with("samplemarket/workspace/")) {
    return {"samplemarket/workspace", ""};
  }
  const auto first = path.find('/');
  const auto last = path.rfind('/');
  return {path.substr(0, first), first == last ? "" : path.substr(first + 1, last - first - 1)};
}

std::optional<std::size_t> floorOf(const Place& place) {
  const Floors& floors = house.at(place.folder).floors;
  const auto found = std::ranges::find_if(floors, [&](const auto& rooms) {
    return std::ranges::find(rooms, place.room) != rooms.end();
  });
  return found == floors.end() ? std::nullopt : std::optional(found - floors.begin());
}

std::optional<std::string> faultOfArrow(const std::string& from, const std::string& target) {
  const Place here = placeOf(from);
  const Place there = placeOf(target);
  if (!house.contains(there.folder)) {
    return "includes " + target + ", which does not start with a folder of src/";
  }
  if (here.folder != there.folder) {
    return house.at(here.folder).below.contains(there.folder)
               ? std::nullopt
               : std::optional("includes " + target + ", which stands above it or beside it");
  }
  if (here.room == there.room) {
    return std::nullopt;
  }
  const auto floor = floorOf(there);
  if (!floor) {
    return "includes " + target + ", whose room has no floor";
  }
  return *floor < floorOf(here).value()
             ? std::nullopt
             : std::optional("includes " + target + ", whose room is above it or beside it");
}

/// What is wrong with the include lines of `text`, the file `path`.
std::vector<std::string> faults(const std::string& path, std::istream& text) {
  static const std::regex include(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])");
  static const std::regex qtHeader(R"(^(Qt?[A-Z]\w*(/.*)?|q[a-z]+\.h|qcustomplot\.h)$)");
  const Place place = placeOf(path);
  if (!house.contains(place.folder) || !floorOf(place)) {
    return {path + " has no place in the architecture"};
  }
  std::vector<std::string> found;
  std::string line;
  while (std::getline(text, line)) {
    std::smatch match;
    if (!std::regex_search(line, match, include)) {
      continue;
    }
    const std::string target = match[2];
    if (place.folder != "desktop" && std::regex_match(target, qtHeader)) {
      found.push_back("includes the Qt header " + target);
    }
    if (match[1] == "\"") {
      if (const auto fault = faultOfArrow(path, target)) {
        found.push_back(*fault);
      }
    }
  }
  return found;
}

std::vector<std::string> faultsIn(const std::string& path, const std::string& text) {
  std::istringstream stream(text);
  return faults(path, stream);
}

TEST(IncludeArrows, RunDownInEveryFolderAndRoom) {
  const fs::path root = testing::sourcePath();
  int filesRead = 0;
  for (const auto& [folder, start] :
       {std::pair(root / "src", root / "src"), std::pair(root / "samplemarket", root)}) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      const auto extension = entry.path().extension();
      if (extension != ".h" && extension != ".cpp") {
        continue;
      }
      const std::string path = entry.path().lexically_relative(start).generic_string();
      std::ifstream text(entry.path());
      EXPECT_THAT(faults(path, text), ::testing::IsEmpty()) << path;
      ++filesRead;
    }
  }
  EXPECT_GT(filesRead, 300);
}

TEST(IncludeArrows, AreFaultsWhenTheyRunUpOrSidewaysOrToQt) {
  const auto isFault = [](const std::string& path, const std::string& include) {
    return faultsIn(path, include + "\n").size() == 1;
  };
  EXPECT_TRUE(isFault("core/money/a.h", "#include \"ledger/portfolio/portfolio.h\""));
  EXPECT_TRUE(isFault("ledger/edits/a.cpp", "#include \"marketdata/cache/cache.h\""));
  EXPECT_TRUE(isFault("presentation/text/a.h", "#include <QWidget>"));
  EXPECT_TRUE(isFault("cli/console/a.h", "#include <QtCore/QString>"));
  EXPECT_TRUE(isFault("platform/async/a.cpp", "  #  include <qobject.h>"));
  EXPECT_TRUE(isFault("core/decimal/a.h", "#include \"core/money/currency.h\""));
  EXPECT_TRUE(isFault("exchange/exports/a.h", "#include \"exchange/imports/b.h\""));
  EXPECT_TRUE(isFault("reports/series/a.h", "#include \"storage/database/b.h\""));
  EXPECT_TRUE(isFault("desktop/portfolio/a.h", "#include \"desktop/workspace/b.h\""));
  EXPECT_TRUE(isFault("samplemarket/prices/a.h", "#include \"samplemarket/sample_market.h\""));
  EXPECT_TRUE(isFault("core/money/a.h", "#include \"core/elsewhere/b.h\""));
  EXPECT_TRUE(isFault("core/elsewhere/a.h", ""));

  EXPECT_FALSE(isFault("storage/database/a.h", "#include \"ledger/manager/b.h\""));
  EXPECT_FALSE(isFault("marketdata/yahoo/a.h", "#include \"marketdata/yahoo/wire/b.h\""));
  EXPECT_FALSE(isFault("desktop/look/a.h", "#include <QWidget>"));
  EXPECT_FALSE(isFault("desktop/main.cpp", "#include \"desktop/app/a.h\""));
}

}  // namespace
}  // namespace corvane
