#include "platform/system/resources.h"

#include <cstdlib>
#include <vector>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

namespace corvane {
namespace {

std::filesystem::path programPath() {
#ifdef __APPLE__
  std::uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);
  std::vector<char> path(size);
  _NSGetExecutablePath(path.data(), &size);
  return std::filesystem::canonical(path.data());
#else
  return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

}  // namespace

std::filesystem::path resourcePath(std::string_view name) {
  if (const char* folder = std::getenv("CORVANE_RESOURCES"); folder != nullptr && *folder != '\0') {
    return std::filesystem::path(folder) / name;
  }
  return programPath().parent_path().parent_path() / "share" / "corvane" / name;
}

}  // namespace corvane
