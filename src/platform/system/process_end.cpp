#include "platform/system/process_end.h"

#include <cstdio>
#include <cstdlib>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace corvane {

void endProcess(int status) {
  std::fflush(nullptr);
#ifdef __SANITIZE_ADDRESS__
  // It usually looks when a process exits in the long way.
  __lsan_do_leak_check();
#endif
  std::_Exit(status);
}

}  // namespace corvane
