// The desktop program.

#include <malloc.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "desktop/app/command_line.h"
#include "desktop/app/desktop_application.h"
#include "desktop/app/first_paint.h"
#include "desktop/app/main_window.h"
#include "desktop/app/screen_renderer.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/system_appearance.h"
#include "desktop/look/theme.h"
#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "platform/system/file_manager.h"
#include "platform/system/log.h"
#include "platform/system/process_end.h"
#include "platform/system/termination_signals.h"
#include "platform/system/user_defaults.h"
#include "samplemarket/sample_market.h"
#include "storage/application/watchlist_manager.h"

namespace corvane::desktop {
namespace {

/// Where prices come from in this run.
class Prices {
 public:
  /// The invented market in the program, or the network.
  explicit Prices(bool areInvented) {
    if (areInvented) {
      market_ = std::make_unique<SampleMarket>();
      cacheFolder_ = std::make_unique<QTemporaryDir>(
          qtPath(files::temporaryDirectory() / "corvane-prices-XXXXXX"));
    }
  }

  [[nodiscard]] std::shared_ptr<QuoteProvider> makeProvider() const {
    YahooService service = YahooService::named(UserDefaults::standard());
    if (market_ != nullptr) {
      service.scheme = "http";
      service.apiHost = market_->host();
      service.webHost = market_->host();
      service.port = market_->port();
    }
    return std::make_shared<YahooQuoteProvider>(std::move(service));
  }

  /// Invented prices must never get among the real ones.
  [[nodiscard]] std::optional<std::filesystem::path> cacheURL() const {
    if (cacheFolder_ == nullptr) {
      return std::nullopt;
    }
    return filePath(cacheFolder_->filePath(QStringLiteral("SampleMarketCache.sqlite3")));
  }

  /// The sample holds what is traded where the prices come from.
  [[nodiscard]] std::string sampleWorkspace() const {
    return market_ != nullptr ? "SampleMarket.corvane" : "Sample.corvane";
  }

 private:
  std::unique_ptr<SampleMarket> market_;
  std::unique_ptr<QTemporaryDir> cacheFolder_;
};

/// Fetches the recent prices of all that is in `model`, and waits for them. Screens that are drawn
/// once have no second look.
std::shared_ptr<WatchlistManager> refresh(const std::shared_ptr<WorkspaceModel>& model) {
  auto manager = WatchlistManager::start([model] { return std::vector{model}; });
  const auto isKnown = [](const EquityPointer& equity) { return equity->isAuthoritative; };
  ScreenRenderer::waitUntil([&] {
    bool areAllKnown = std::ranges::all_of(model->watchlistEquities, isKnown);
    for (const PortfolioPointer& portfolio : model->portfolios()) {
      const auto ledger = portfolio->manager.lock();
      areAllKnown = areAllKnown && ledger != nullptr &&
                    std::ranges::all_of(ledger->valuationEquities(portfolio), isKnown);
    }
    return areAllKnown;
  });
  return manager;
}

/// What of the user's folders cannot be used.
std::vector<ErrorPointer> problemsOfFolders() {
  std::vector<ErrorPointer> problems;
  if (auto settings = UserDefaults::standard().problem()) {
    problems.push_back(std::move(settings));
  }
  std::optional<FileError> temporary;
  (void)files::temporaryDirectory(&temporary);
  if (temporary) {
    problems.push_back(temporary->copy());
  }
  return problems;
}

int render(DesktopApplication& program, const CommandLine& line) {
  try {
    const auto document = program.documentController().openDocument(
        line.workspace.value_or(program.sampleWorkspace()));
    const auto window = program.windows().windowOf(*document);
    const auto refreshes = refresh(document->model());
    const auto tell = [](const std::filesystem::path& file) {
      std::cout << file.string() << std::endl;
    };
    const bool isComplete =
        ScreenRenderer(*window, *line.renderFolder, line.renderSize).renderAll(tell);
    const auto blank = program.documentController().newDocument();
    const bool isBlankComplete =
        ScreenRenderer(*program.windows().windowOf(*blank), *line.renderFolder, line.renderSize)
            .renderBlank(tell);
    return isComplete && isBlankComplete ? 0 : 1;
  } catch (const Error& error) {
    std::cerr << error << '\n';
    return 1;
  }
}

/// Memory of one thread can be used by the next one, and what is freed goes back to the system.
/// With an arena for each thread the program takes a third more, for work that hardly ever runs in
/// more than two threads at once.
void shareMemoryAmongThreads() {
#ifdef __GLIBC__
  constexpr int arenas = 2;
  constexpr int largeBytes = 128 * 1024;
  (void)mallopt(M_ARENA_MAX, arenas);
  (void)mallopt(M_MMAP_THRESHOLD, largeBytes);
  (void)mallopt(M_TRIM_THRESHOLD, largeBytes);
#endif
}

/// What is free in these arenas goes back to the system now and then. Prices come every half
/// minute, and what their answers took is not needed until the next ones.
void returnMemory() {
#ifdef __GLIBC__
  (void)malloc_trim(0);
#endif
}

int run(int argumentCount, char** arguments) {
  const auto log = Log::listen([](std::string_view line) { std::cout << line << std::endl; });
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
  if (line.renderFolder && line.renderFontSize) {
    theme::setBodySize(*line.renderFontSize);
  }
  const SystemAppearance system(
      [](Appearance now, Contrast contrast) { theme::apply(now, contrast); });
  theme::apply(system.appearance(),
               line.renderFolder && line.rendersHighContrast ? Contrast::high : system.contrast());

  if (line.usesSampleMarket) {
    // A look at the invented market changes nothing of the real thing, which opens what it had
    // open.
    UserDefaults::nameStandard("sample-market.json");
  }
  const Prices prices(line.usesSampleMarket);
  DesktopApplication program({.makeSourceProvider = [&] { return prices.makeProvider(); },
                              .cacheURL = prices.cacheURL(),
                              .sampleWorkspace = prices.sampleWorkspace()});
  if (line.renderFolder) {
    return render(program, line);
  }
  std::optional<FirstPaint> firstPaint;
  if (line.quitsAfterFirstPaint) {
    firstPaint.emplace(application, [&] { program.quit(); });
  }
  if (!line.quitsAfterFirstPaint) {
    program.offerRecovery();
  }
  if (line.usesSampleMarket && !line.workspace) {
    program.startWithSample();
  } else {
    program.start(line.workspace);
  }
  program.showProblems(problemsOfFolders());
  QTimer returns;
  QObject::connect(&returns, &QTimer::timeout, &returnMemory);
  constexpr int millisecondsBetweenReturns = 60'000;
  returns.start(millisecondsBetweenReturns);
  // Before the loop of events runs there is nothing to end in order: what is to be recovered stays.
  const TerminationSignals endings([&] { program.endSession(true); });
  return QApplication::exec();
}

}  // namespace
}  // namespace corvane::desktop

int main(int argumentCount, char** arguments) {
  corvane::desktop::shareMemoryAmongThreads();
  corvane::endProcess(corvane::desktop::run(argumentCount, arguments));
}
