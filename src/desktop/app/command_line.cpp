#include "desktop/app/command_line.h"

#include <QCommandLineParser>

#include "desktop/look/qt_text.h"

namespace corvane::desktop {
namespace {

constexpr int greatestSide = 8192;

std::optional<QSize> sizeFromText(const QString& text) {
  const QStringList sides = text.split(QLatin1Char('x'));
  const QSize size(sides.constFirst().toInt(), sides.constLast().toInt());
  const bool isSize = sides.size() == 2 && size.width() > 0 && size.height() > 0 &&
                      size.width() <= greatestSide && size.height() <= greatestSide;
  return isSize ? std::optional(size) : std::nullopt;
}

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
  const QCommandLineOption render(
      QStringLiteral("render"),
      QStringLiteral("Draw every screen of the workspace into PNG files in DIR, and end."),
      QStringLiteral("DIR"));
  const QCommandLineOption size(
      QStringLiteral("size"),
      QStringLiteral("How large the window is in the pictures of --render."),
      QStringLiteral("WIDTHxHEIGHT"));
  // For measuring how long a start takes; of no use to a user.
  QCommandLineOption quitAfterFirstPaint(QStringLiteral("quit-after-first-paint"));
  quitAfterFirstPaint.setFlags(QCommandLineOption::HiddenFromHelp);
  parser.addOption(quitAfterFirstPaint);
  parser.addOption(sampleMarket);
  parser.addOption(render);
  parser.addOption(size);
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption versionOption = parser.addVersionOption();

  if (!parser.parse(QStringList(QStringLiteral("corvane")) + arguments)) {
    return Message{utf8Text(parser.errorText()), 2};
  }
  if (parser.isSet(help)) {
    return Message{utf8Text(parser.helpText()), 0};
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
  if (parser.isSet(render)) {
    if (parser.value(render).isEmpty()) {
      return Message{"--render needs the name of a folder.", 2};
    }
    line.renderFolder = filePath(parser.value(render));
  }
  if (parser.isSet(size)) {
    line.pictureSize = sizeFromText(parser.value(size));
    if (!line.pictureSize) {
      return Message{"--size needs a width and a height, such as 1280x800, of no more than " +
                         std::to_string(greatestSide) + " each.",
                     2};
    }
  }
  return line;
}

}  // namespace corvane::desktop
