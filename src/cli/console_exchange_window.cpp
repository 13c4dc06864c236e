#include "cli/console_exchange_window.h"

#include <algorithm>
#include <cmath>

#include "exchange/export_save_accessory_view_controller.h"
#include "exchange/import_export_field_setup_view_controller.h"
#include "exchange/import_export_progress_view_controller.h"

namespace corvane::cli {

void ConsoleExchangeWindow::beginOpenPanel(const OpenPanel& /*panel*/, PanelCompletion completion) {
  completion(file_);
}

void ConsoleExchangeWindow::beginSavePanel(const SavePanel& /*panel*/, PanelCompletion completion) {
  completion(file_);
}

void ConsoleExchangeWindow::beginFieldSetup(
    const std::shared_ptr<ImportExportFieldSetupViewController>& setup, SheetParent /*parent*/) {
  try {
    setUp_(*setup);
  } catch (const Error& error) {
    console_.err << error << '\n';
    setup->cancel();
    return;
  }
  setup->submit();
}

void ConsoleExchangeWindow::beginProgress(
    const std::shared_ptr<ImportExportProgressViewController>& progress) {
  if (!console_.showsProgress) {
    return;
  }
  progress_ = progress;
  progress_->viewDidUpdate = [this] { drawProgress(); };
  drawProgress();
}

void ConsoleExchangeWindow::endProgress() {
  if (progress_ == nullptr) {
    return;
  }
  progress_->viewDidUpdate = nullptr;
  progress_ = nullptr;
  console_.err << "\r\x1B[K" << std::flush;
  drawn_.clear();
}

void ConsoleExchangeWindow::drawProgress() {
  constexpr int width = 40;
  const auto& indicator = progress_->progressIndicator;
  const double span = indicator.maximum - indicator.minimum;
  std::string line = progress_->statusLabel.text;
  if (!indicator.isIndeterminate && span > 0) {
    const double done = std::clamp((indicator.value - indicator.minimum) / span, 0.0, 1.0);
    const auto full = static_cast<std::size_t>(std::lround(done * width));
    line += " [" + std::string(full, '#') + std::string(width - full, '.') + "] " +
            std::to_string(std::lround(done * 100)) + "%";
  }
  if (line != drawn_) {
    drawn_ = line;
    console_.err << '\r' << line << "\x1B[K" << std::flush;
  }
}

void ConsoleExchangeWindow::presentError(const Error& error,
                                         std::move_only_function<void()> dismissed) {
  console_.err << error << '\n';
  if (const auto suggestion = error.recoverySuggestion()) {
    console_.err << *suggestion << '\n';
  }
  if (dismissed) {
    dismissed();
  }
}

}  // namespace corvane::cli
