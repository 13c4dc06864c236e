#include "platform/fatal_error.h"

#include <cstdio>
#include <cstdlib>

#ifdef NDEBUG
#error "Corvane is not to be built without its assertions."
#endif

namespace corvane {

void fatalError(std::string_view message) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

}  // namespace corvane
