// What the user asks for when the program is started.
#pragma once

#include <QSize>
#include <QStringList>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace corvane::desktop {

/// corvane [WORKSPACE] [--sample-market] [--render DIR [--size WIDTHxHEIGHT] [--font-size POINTS]
/// [--high-contrast]]
struct CommandLine {
  std::optional<std::filesystem::path> workspace;
  /// Prices come from the invented market in the program, not from the network.
  bool usesSampleMarket = false;
  /// Ends as soon as the window of a workspace has been painted, by --quit-after-first-paint.
  bool quitsAfterFirstPaint = false;
  /// Draws every screen into this folder and ends.
  std::optional<std::filesystem::path> renderFolder;
  /// How large the window is whose screens are drawn.
  QSize renderSize{1280, 800};
  /// The size of its text in points; none for the usual one.
  std::optional<double> renderFontSize;
  bool rendersHighContrast = false;

  /// What was typed wrongly, or asked for (`--help`, `--version`), with the status to exit with.
  struct Message {
    std::string text;
    int exitStatus;
  };

  /// Reads the arguments behind the program's name. `version` is what --version says.
  [[nodiscard]] static std::variant<CommandLine, Message> parse(const QStringList& arguments,
                                                                const std::string& version);
};

}  // namespace corvane::desktop
