// The desktop program.

#include <QApplication>
#include <iostream>

#include "desktop/app/command_line.h"
#include "desktop/app/desktop_application.h"
#include "desktop/app/screen_renderer.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/system_appearance.h"
#include "desktop/look/theme.h"
#include "desktop/workspace/main_window.h"
#include "marketdata/nominal_quote_provider.h"

namespace corvane::desktop {
namespace {

int render(DesktopApplication& program, const CommandLine& line) {
  if (!line.workspace) {
    std::cerr << "--render needs a workspace.\n";
    return 2;
  }
  try {
    const auto document = program.documentController().openDocument(*line.workspace);
    const auto window = program.windows().windowOf(*document);
    ScreenRenderer renderer(*window, *line.renderFolder);
    const bool isComplete = renderer.renderAll(
        [](const std::filesystem::path& file) { std::cout << file.string() << std::endl; });
    return isComplete ? 0 : 1;
  } catch (const Error& error) {
    std::cerr << error << '\n';
    return 1;
  }
}

int run(int argumentCount, char** arguments) {
  QStringList texts;
  for (int i = 1; i < argumentCount; ++i) {
    texts.append(QString::fromLocal8Bit(arguments[i]));
  }
  const auto parsed = CommandLine::parse(texts, CORVANE_VERSION);
  if (const auto* message = std::get_if<CommandLine::Message>(&parsed)) {
    (message->exitStatus == 0 ? std::cout : std::cerr) << message->text << '\n';
    return message->exitStatus;
  }
  const auto& line = std::get<CommandLine>(parsed);
  if (line.renderFolder && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }

  QApplication application(argumentCount, arguments);
  QApplication::setApplicationName(QStringLiteral("corvane"));
  QApplication::setApplicationDisplayName(QStringLiteral("Corvane"));
  QApplication::setDesktopFileName(QStringLiteral("corvane"));
  const SystemAppearance system([&](Appearance now) { theme::apply(application, now); });
  theme::apply(application, system.appearance());

  DesktopApplication program(
      {.makeSourceProvider = [] { return std::make_shared<NominalQuoteProvider>(); }});
  if (line.renderFolder) {
    return render(program, line);
  }
  program.start(line.workspace);
  return QApplication::exec();
}

}  // namespace
}  // namespace corvane::desktop

int main(int argumentCount, char** arguments) {
  return corvane::desktop::run(argumentCount, arguments);
}
