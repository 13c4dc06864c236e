// House rules that can be read off the text of the sources: small rooms, short functions, no
// printing in libraries, nothing that nobody uses, assertions in every build.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/checkout.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// The text of all sources under the named folders, by their path from the root.
std::map<std::string, std::string> sourcesIn(const std::vector<std::string>& folders) {
  const fs::path root = testing::sourcePath();
  std::map<std::string, std::string> sources;
  for (const std::string& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      if (entry.path().extension() == ".h" || entry.path().extension() == ".cpp") {
        std::ostringstream text;
        text << std::ifstream(entry.path()).rdbuf();
        sources.emplace(entry.path().lexically_relative(root).generic_string(), text.str());
      }
    }
  }
  return sources;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// The functions of `text` with more than 70 lines, by their first line. A function begins with a
/// line that opens a brace at most one level deep, and ends with the brace in the same column.
std::vector<std::string> longFunctions(const std::string& text) {
  static const std::regex opening(R"(^( {0,2})[^ }].*\).*\{$)");
  static const std::regex noFunction(R"(^ *(class|struct|enum|namespace) .*|.*= \{$)");
  constexpr std::size_t mostLines = 70;
  std::vector<std::string> found;
  std::string first;
  std::string ending;
  std::size_t begin = 0;
  const std::vector<std::string> lines = linesOf(text);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::smatch match;
    if (!first.empty()) {
      if (lines[i].starts_with(ending)) {
        if (i - begin + 1 > mostLines) {
          found.push_back(first + " (" + std::to_string(i - begin + 1) + " lines)");
        }
        first.clear();
      }
    } else if (std::regex_match(lines[i], match, opening) &&
               !std::regex_match(lines[i], noFunction)) {
      first = lines[i];
      ending = match[1].str() + "}";
      begin = i;
    }
  }
  return found;
}

TEST(Tidiness, RoomsHaveADozenTypesAtMost) {
  std::map<std::string, int> headers;
  for (const auto& [path, text] : sourcesIn({"src", "samplemarket"})) {
    if (path.ends_with(".h")) {
      ++headers[path.substr(0, path.rfind('/'))];
    }
  }
  EXPECT_GT(headers.size(), 30U);
  for (const auto& [room, count] : headers) {
    EXPECT_LE(count, 12) << room << " wants to be two rooms";
  }
}

TEST(Tidiness, FunctionsFitOnAPage) {
  for (const auto& [path, text] : sourcesIn({"src"})) {
    EXPECT_THAT(longFunctions(text), ::testing::IsEmpty()) << path;
  }
}

TEST(Tidiness, CountsTheLinesOfFunctions) {
  std::string body;
  for (int i = 0; i < 68; ++i) {
    body += "    x();\n";
  }
  EXPECT_THAT(longFunctions("void f() {\n" + body + "}\n"), ::testing::IsEmpty());
  EXPECT_THAT(longFunctions("void f() {\n" + body + "  y();\n}\n"), ::testing::SizeIs(1));
  EXPECT_THAT(longFunctions("class A {\n  void f() const {\n" + body + "    y();\n  }\n};\n"),
              ::testing::SizeIs(1));
  EXPECT_THAT(longFunctions("class A {\n" + body + body + "};\n"), ::testing::IsEmpty());
}

TEST(Tidiness, OnlyTheShellsPrint) {
  static const std::regex printing(
      R"((std::(cout|cerr|clog)|\b(printf|fprintf|puts|fputs)\(|<iostream>))");
  const std::set<std::string> exceptions = {
      "src/platform/fatal_error.cpp",  // the last words of the program
  };
  for (const auto& [path, text] : sourcesIn({"src"})) {
    const bool isShell = path.starts_with("src/desktop/") || path.starts_with("src/cli/");
    if (!isShell && !exceptions.contains(path)) {
      EXPECT_FALSE(std::regex_search(text, printing)) << path << " prints; is it for the Log?";
    }
  }
}

/// How often each identifier stands in `text` outside of comments and string literals.
void countWords(const std::string& text, std::map<std::string, int>& counts) {
  static const std::regex noCode(R"(//[^\n]*|"(\\.|[^"\\\n])*")");
  static const std::regex word(R"([A-Za-z_]\w*)");
  for (const std::string& line : linesOf(text)) {
    const std::string code = std::regex_replace(line, noCode, "");
    for (std::sregex_iterator found(code.begin(), code.end(), word), end; found != end; ++found) {
      ++counts[found->str()];
    }
  }
}

/// Counts what a header declares and a source defines, by the name: a line that begins with a type,
/// not with a call.
void countFunctions(const std::string& path, const std::string& text,
                    std::map<std::string, int>& counts) {
  static const std::regex declaration(
      R"(^ *(\[\[nodiscard\]\] )?([a-zA-Z][\w:<>,&*]* )+[&*]*([a-z]\w*)\(.*)");
  static const std::regex definition(R"(^[a-zA-Z].*[ &*](\w+::)+([a-z]\w*)\(.*)");
  std::smatch match;
  const std::vector<std::string> lines = linesOf(text);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (path.ends_with(".cpp") && std::regex_match(lines[i], match, definition)) {
      ++counts[match[2].str()];
    } else if (path.ends_with(".h") && std::regex_match(lines[i], match, declaration)) {
      const std::string name = match[3];
      std::string whole = lines[i];
      for (std::size_t k = i + 1; whole.find_first_of(";{") == whole.npos && k < lines.size();
           ++k) {
        whole += lines[k];
      }
      // What overrides is called through what it overrides.
      const bool isCall = whole.starts_with("  return ") || whole.starts_with("    return ");
      if (!isCall && whole.find(" override") == whole.npos) {
        ++counts[name];
      }
    }
  }
}

/// Names are compared, not functions: one that shares its name with another that is called stays
/// unseen.
TEST(Tidiness, EveryPublicFunctionIsCalledSomewhere) {
  // For those who write exporters, screens and strategies of their own on these classes.
  const std::set<std::string> forOthers = {"shareCountFormatter",
                                           "exchangeRateFormatter",
                                           "dataSlice",
                                           "filteredEquityEvents",
                                           "currentQuery",
                                           "currentAsset",
                                           "tableColumnSpecs",
                                           "portfolioValueDataSet",
                                           "buyAndHoldValuesDataSet",
                                           "transactionsDataSet",
                                           "placeTrade",
                                           "recordEvent"};
  std::map<std::string, int> words;
  std::map<std::string, int> functions;
  std::map<std::string, std::string> declaredIn;
  for (const auto& [path, text] :
       sourcesIn({"src", "samplemarket", "resources", "tests", "benchmarks", "fuzz"})) {
    countWords(text, words);
    if (path.starts_with("src/")) {
      std::map<std::string, int> here;
      countFunctions(path, text, here);
      for (const auto& [name, count] : here) {
        functions[name] += count;
        if (path.ends_with(".h")) {
          declaredIn.emplace(name, path);
        }
      }
    }
  }
  EXPECT_GT(declaredIn.size(), 1000U);
  for (const auto& [name, path] : declaredIn) {
    if (!forOthers.contains(name)) {
      EXPECT_GT(words.at(name), functions.at(name)) << "nothing calls " << name << " of " << path;
    }
  }
}

TEST(Tidiness, AssertionsAreOnInThisBuild) {
#ifdef NDEBUG
  FAIL() << "NDEBUG is defined: assertions are off";
#endif
}

}  // namespace
}  // namespace corvane
