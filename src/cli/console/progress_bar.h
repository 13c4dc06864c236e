// A line on the terminal that shows how far something has come.
#pragma once

#include <ostream>
#include <string>

namespace corvane::cli {

/// Shows itself on a terminal and is silent elsewhere. The line is gone at the end.
class ProgressBar {
 public:
  ProgressBar(std::ostream& out, std::string text);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  /// `fraction` is between 0 and 1.
  void show(double fraction);

 private:
  std::ostream& out_;
  const std::string text_;
  const bool isShown_;
  int percentShown_ = -1;
};

}  // namespace corvane::cli
