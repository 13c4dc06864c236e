// Where the sources and the built programs are, for tests that read or start them. It is told by a
// file beside the test program and not compiled into it, so that checkouts share what is compiled.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace corvane::testing {

/// The folder of the running test program.
inline std::filesystem::path testFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

/// The file or folder at `path` among the sources; all of them without one.
inline std::filesystem::path sourcePath(std::string_view path = {}) {
  static const std::filesystem::path root = [] {
    std::ifstream file(testFolder() / "checkout.txt");
    std::string line;
    std::getline(file, line);
    return line;
  }();
  return path.empty() ? root : root / path;
}

/// A program of this build.
inline std::string builtProgram(std::string_view name) {
  return testFolder().parent_path() / "bin" / name;
}

}  // namespace corvane::testing
