#include "desktop/app/command_line.h"

#include <QCommandLineParser>

#include "desktop/look/qt_text.h"

namespace corvane::desktop {

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
  // For measuring how long a start takes; of no use to a user.
  QCommandLineOption quitAfterFirstPaint(QStringLiteral("quit-after-first-paint"));
  quitAfterFirstPaint.setFlags(QCommandLineOption::HiddenFromHelp);
  parser.addOption(quitAfterFirstPaint);
  parser.addOption(sampleMarket);
  parser.addOption(render);
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
  return line;
}

}  // namespace corvane::desktop
