#include "platform/system/class_name.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace corvane {

std::string className(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> readable(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  const std::string full = status == 0 ? readable.get() : type.name();
  const auto end = full.find('<');
  const auto colon = full.rfind(':', end);
  const auto start = colon == full.npos ? 0 : colon + 1;
  return full.substr(start, end == full.npos ? end : end - start);
}

}  // namespace corvane
