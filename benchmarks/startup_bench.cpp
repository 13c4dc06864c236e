// What a user waits for when he starts the program: from the start of the process until the window
// with the sample workspace has been painted.

#include <benchmark/benchmark.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace corvane {
namespace startup_bench {

/// A home of its own for the program, which is empty at first.
class Home {
 public:
  Home() {
    std::string pattern = std::filesystem::temp_directory_path() / "corvane-startup-XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) {
      folder_ = pattern;
    }
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;
  ~Home() {
    if (!folder_.empty()) {
      std::filesystem::remove_all(folder_);
    }
  }
  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

/// Starts the program and waits for its end, which is when it has been painted.
bool startOnce(const Home& home) {
  const std::string in = home.folder().string();
  const std::string command = "HOME='" + in + "' XDG_CONFIG_HOME='" + in + "/config'" +
                              " XDG_CACHE_HOME='" + in + "/cache' QT_QPA_PLATFORM=offscreen" +
                              " LC_ALL=C.UTF-8 '" CORVANE_PROGRAM "'" +
                              " --sample-market --quit-after-first-paint >/dev/null 2>&1";
  const int status = std::system(command.c_str());
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// The whole life of the process, so what ending it takes is counted too.
void startWithSample(benchmark::State& state) {
  const Home home;
  // The first start shows the page that welcomes the user, and reads the program from the disk.
  if (home.folder().empty() || !startOnce(home)) {
    state.SkipWithError("The program does not start.");
    return;
  }
  for (auto _ : state) {
    const auto begin = std::chrono::steady_clock::now();
    const bool isPainted = startOnce(home);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    if (!isPainted) {
      state.SkipWithError("The program failed.");
      return;
    }
    state.SetIterationTime(taken.count());
  }
}
BENCHMARK(startWithSample)
    ->Name("Startup/first paint with the sample workspace, warm")
    ->UseManualTime()
    ->MinTime(5)
    ->Unit(benchmark::kMillisecond);

}  // namespace startup_bench
}  // namespace corvane
