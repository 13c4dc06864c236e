#include "support/volume_without_exchange.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace corvane::testing {
namespace {

VolumeWithoutExchange* present = nullptr;

int systemsOwnRename(int fromFolder, const char* from, int toFolder, const char* to,
                     unsigned int flags) {
  return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

}  // namespace

VolumeWithoutExchange::VolumeWithoutExchange(Fails fails) : fails_(std::move(fails)) {
  present = this;
}

VolumeWithoutExchange::~VolumeWithoutExchange() {
  present = nullptr;
}

int VolumeWithoutExchange::rename(const char* from, const char* to) {
  if (fails_(++renamings_)) {
    errno = EIO;
    return -1;
  }
  return systemsOwnRename(AT_FDCWD, from, AT_FDCWD, to, 0);
}

}  // namespace corvane::testing

// What the program calls in place of the C library's functions.

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned int flags) noexcept {
  if (corvane::testing::present != nullptr && flags != 0) {
    errno = EINVAL;
    return -1;
  }
  return corvane::testing::systemsOwnRename(fromFolder, from, toFolder, to, flags);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  using corvane::testing::present;
  return present != nullptr ? present->rename(from, to)
                            : corvane::testing::systemsOwnRename(AT_FDCWD, from, AT_FDCWD, to, 0);
}
