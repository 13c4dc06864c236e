// Windows for benchmarks, drawn to memory.
#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>

#include "desktop/look/theme.h"

namespace corvane {

/// Makes the one application of this process on its first use. It stays until the process ends, as
/// what has been drawn does.
inline void startQt() {
  static int argumentCount = 1;
  static char name[] = "bench";
  static char* arguments[] = {name, nullptr};
  static const bool isStarted = [] {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    new QApplication(argumentCount, arguments);
    desktop::theme::apply(Appearance::light);
    return true;
  }();
  benchmark::DoNotOptimize(isStarted);
}

}  // namespace corvane
