// A volume on which two names cannot be exchanged in one step, as with some network file systems.
#pragma once

#include <functional>

namespace corvane::testing {

/// While one lives, the whole process finds that names can be given in no other way than over what
/// has them already. One at a time.
class VolumeWithoutExchange {
 public:
  /// Asked before each renaming with its number, from 1, whether it fails.
  using Fails = std::function<bool(int renaming)>;

  explicit VolumeWithoutExchange(Fails fails = [](int) { return false; });
  VolumeWithoutExchange(const VolumeWithoutExchange&) = delete;
  VolumeWithoutExchange& operator=(const VolumeWithoutExchange&) = delete;
  ~VolumeWithoutExchange();

  /// What the system does at such a volume.
  int rename(const char* from, const char* to);

 private:
  Fails fails_;
  int renamings_ = 0;
};

}  // namespace corvane::testing
