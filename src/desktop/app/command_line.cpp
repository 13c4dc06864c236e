#include "desktop/app/command_line.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include "desktop/look/qt_text.h"

namespace corvane::desktop {
namespace {

constexpr double leastFontSize = 6;
constexpr double largestFontSize = 36;

/// "1440x900"; none for what is no such size, or none that a window can have.
std::optional<QSize> sizeOf(const QString& text) {
  static const QRegularExpression form(QStringLiteral("^(\\d{3,4})x(\\d{3,4})$"));
  const auto match = form.match(text);
  return match.hasMatch()
             ? std::optional(QSize(match.captured(1).toInt(), match.captured(2).toInt()))
             : std::nullopt;
}

/// What is drawn of the program, and how.
struct RenderOptions {
  const QCommandLineOption folder{
      QStringLiteral("render"),
      QStringLiteral("Draw every screen of the workspace into PNG files in DIR, and end."),
      QStringLiteral("DIR")};
  const QCommandLineOption size{
      QStringLiteral("size"),
      QStringLiteral("How large the window is that --render draws; 1280x800 where it is not told."),
      QStringLiteral("WIDTHxHEIGHT")};
  const QCommandLineOption fontSize{
      QStringLiteral("font-size"),
      QStringLiteral("How large the text is that --render draws; 10 where it is not told."),
      QStringLiteral("POINTS")};
  const QCommandLineOption highContrast{QStringLiteral("high-contrast"),
                                        QStringLiteral("Has --render draw with high contrast.")};

  /// Fills in `line`; what was typed wrongly, or none.
  [[nodiscard]] std::optional<CommandLine::Message> read(const QCommandLineParser& parser,
                                                         CommandLine& line) const {
    if (parser.isSet(folder)) {
      if (parser.value(folder).isEmpty()) {
        return CommandLine::Message{"--render needs the name of a folder.", 2};
      }
      line.renderFolder = filePath(parser.value(folder));
    }
    if (parser.isSet(size)) {
      const auto told = sizeOf(parser.value(size));
      if (!told) {
        return CommandLine::Message{
            "--size needs a width and a height in pixels, such as 1440x900.", 2};
      }
      line.renderSize = *told;
    }
    if (parser.isSet(fontSize)) {
      bool isNumber = false;
      const double points = parser.value(fontSize).toDouble(&isNumber);
      if (!isNumber || points < leastFontSize || points > largestFontSize) {
        return CommandLine::Message{"--font-size needs a number of points from 6 to 36.", 2};
      }
      line.renderFontSize = points;
    }
    line.rendersHighContrast = parser.isSet(highContrast);
    return std::nullopt;
  }
};

}  // namespace

std::variant<CommandLine, CommandLine::Message> CommandLine::parse(const QStringList& arguments,
                                                                   const std::string& version) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Keeps the books of a private investor."));
  parser.addPositionalArgument(QStringLiteral("workspace"),
                               QStringLiteral("The workspace to open."),
                               QStringLiteral("[WORKSPACE]"));
  const QCommandLineOption sampleMarket(
      QStringLiteral("sample-market"),
      QStringLiteral("Take prices from an invented market instead of the network."));
  const RenderOptions rendering;
  // For measuring how long a start takes; of no use to a user.
  QCommandLineOption quitAfterFirstPaint(QStringLiteral("quit-after-first-paint"));
  quitAfterFirstPaint.setFlags(QCommandLineOption::HiddenFromHelp);
  parser.addOption(quitAfterFirstPaint);
  parser.addOption(sampleMarket);
  parser.addOptions({rendering.folder, rendering.size, rendering.fontSize, rendering.highContrast});
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption versionOption = parser.addVersionOption();

  if (!parser.parse(QStringList(QStringLiteral("corvane")) + arguments)) {
    return Message{utf8Text(parser.errorText()), 2};
  }
  if (parser.isSet(help)) {
    // Qt names the program by its path, or not at all where there is no application yet.
    static const QRegularExpression usage(QStringLiteral("^Usage: \\S+"));
    return Message{utf8Text(parser.helpText().replace(usage, QStringLiteral("Usage: corvane"))), 0};
  }
  if (parser.isSet(versionOption)) {
    return Message{"Corvane " + version, 0};
  }
  const QStringList paths = parser.positionalArguments();
  if (paths.size() > 1) {
    return Message{"Only one workspace can be named.", 2};
  }
  CommandLine line;
  line.usesSampleMarket = parser.isSet(sampleMarket);
  line.quitsAfterFirstPaint = parser.isSet(quitAfterFirstPaint);
  if (!paths.isEmpty()) {
    line.workspace = filePath(paths.constFirst());
  }
  if (auto mistake = rendering.read(parser, line)) {
    return *mistake;
  }
  return line;
}

}  // namespace corvane::desktop
