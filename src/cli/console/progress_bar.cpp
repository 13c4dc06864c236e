#include "cli/console/progress_bar.h"

#include <algorithm>

#include "platform/system/terminal.h"

namespace corvane::cli {

ProgressBar::ProgressBar(std::ostream& out, std::string text)
    : out_(out), text_(std::move(text)), isShown_(terminal::isErrorStreamShown()) {}

ProgressBar::~ProgressBar() {
  if (isShown_ && percentShown_ >= 0) {
    out_ << '\r' << std::string(terminal::width() - 1, ' ') << '\r' << std::flush;
  }
}

void ProgressBar::show(double fraction) {
  const int percent = static_cast<int>(100 * std::clamp(fraction, 0.0, 1.0));
  if (!isShown_ || percent == percentShown_) {
    return;
  }
  percentShown_ = percent;
  // Text, brackets, blanks, percentage, and one column that stays free.
  const std::size_t taken = text_.size() + 10;
  const std::size_t width = terminal::width();
  const std::size_t length = width > taken ? std::min<std::size_t>(width - taken, 40) : 0;
  const std::size_t filled = length * static_cast<std::size_t>(percent) / 100;
  out_ << '\r' << text_ << " [" << std::string(filled, '#') << std::string(length - filled, ' ')
       << "] " << percent << '%' << std::flush;
}

}  // namespace corvane::cli
