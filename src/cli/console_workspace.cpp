#include "cli/console_workspace.h"

#include "core/price_adjuster.h"
#include "marketdata/yahoo_quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/file_manager.h"
#include "platform/system/resources.h"
#include "platform/system/user_defaults.h"
#include "storage/info_dictionary.h"

namespace corvane::cli {
namespace {

/// The name that the service's client goes by, and the file of its cache.
constexpr std::string_view serviceName = "YahooFinance";
constexpr std::string_view cacheName = "YahooQuoteProviderCache.sqlite3";

/// Stands for the service where nothing is to be asked of it, so that equities keep its name.
class SilentProvider final : public QuoteProvider {
 public:
  [[nodiscard]] std::string providerName() const override { return std::string(serviceName); }
};

/// Answers for documents on a terminal: tells what there is to be told, and decides nothing.
class ConsoleDocumentShell final : public DocumentShell {
 public:
  explicit ConsoleDocumentShell(std::ostream& err) : err_(err) {}

  std::shared_ptr<WorkspaceDocumentModelHaving> showWindow(
      const std::shared_ptr<WorkspaceDocument>& /*document*/) override {
    return nullptr;
  }
  ChangesAnswer askToSaveChanges(WorkspaceDocument& /*document*/) override {
    return ChangesAnswer::cancel;
  }
  std::optional<std::filesystem::path> askForLocation(WorkspaceDocument& /*document*/) override {
    return std::nullopt;
  }
  bool askToReplace(WorkspaceDocument& /*document*/, const DocumentError& /*problem*/) override {
    return false;
  }
  void showAlert(WorkspaceDocument& /*document*/, const DocumentAlert& alert,
                 std::function<void(std::size_t)> /*pressed*/) override {
    err_ << alert.messageText << '\n' << alert.informativeText << '\n';
  }
  void presentError(WorkspaceDocument& /*document*/, const Error& error) override {
    err_ << error << '\n';
  }

 private:
  std::ostream& err_;
};

std::shared_ptr<WorkspaceDocument> makeDocument(Console& console,
                                                std::shared_ptr<QuoteProvider> provider) {
  const auto info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName));
  return std::make_shared<WorkspaceDocument>(
      WorkspaceSurroundings{.sharedQuoteProvider = [provider] { return provider; },
                            .appBundleVersion = info.bundleVersion(),
                            .appMarketingVersion = info.shortVersion(),
                            .shell = std::make_shared<ConsoleDocumentShell>(console.err)});
}

}  // namespace

std::vector<Signature::Option> priceSourceOptions() {
  return {{.name = "--offline", .value = "", .help = "take prices from the cache alone"},
          {.name = "--sample-market", .value = "", .help = "take prices from the invented market"}};
}

PriceSource priceSource(const Arguments& arguments) {
  if (arguments.has("--offline") && arguments.has("--sample-market")) {
    throw UsageError("--offline and --sample-market exclude each other.");
  }
  return arguments.has("--offline")         ? PriceSource::cache
         : arguments.has("--sample-market") ? PriceSource::sampleMarket
                                            : PriceSource::network;
}

ConsolePrices::ConsolePrices(PriceSource source) {
  std::filesystem::path cache;
  std::shared_ptr<QuoteProvider> service;
  switch (source) {
    case PriceSource::none:
    case PriceSource::cache:
      service = std::make_shared<SilentProvider>();
      cache = files::cachesDirectory() / cacheName;
      break;
    case PriceSource::network:
      service = std::make_shared<YahooQuoteProvider>(YahooService::named(UserDefaults::standard()));
      cache = files::cachesDirectory() / cacheName;
      break;
    case PriceSource::sampleMarket: {
      market_ = std::make_unique<SampleMarket>();
      YahooService onThisMachine;
      onThisMachine.scheme = "http";
      onThisMachine.apiHost = market_->host();
      onThisMachine.webHost = market_->host();
      onThisMachine.port = market_->port();
      service = std::make_shared<YahooQuoteProvider>(onThisMachine);
      // Invented prices must never get among the real ones.
      temporaryFolder_ = files::makePrivateDirectory(std::filesystem::temp_directory_path());
      cache = temporaryFolder_ / cacheName;
      break;
    }
  }
  const auto chain = std::make_shared<SwitchableQuoteProvider>(service, cache);
  if (source == PriceSource::cache) {
    chain->dataSource = SwitchableQuoteProvider::DataSource::cacheOnly;
  }
  provider_ = chain;
}

ConsolePrices::~ConsolePrices() {
  provider_.reset();
  if (!temporaryFolder_.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(temporaryFolder_, ignored);
  }
}

ConsoleWorkspace::ConsoleWorkspace(Console& console, std::shared_ptr<QuoteProvider> provider)
    : document_(makeDocument(console, std::move(provider))) {
  document_->makeWindowControllers(nullptr);
}

ConsoleWorkspace::ConsoleWorkspace(Console& console, std::shared_ptr<QuoteProvider> provider,
                                   const std::filesystem::path& path)
    : document_(makeDocument(console, std::move(provider))) {
  document_->open(path);
}

PortfolioPointer ConsoleWorkspace::portfolioNamed(const std::string& name) {
  PortfolioPointer found;
  for (const PortfolioPointer& portfolio : model().portfolios()) {
    if (portfolio->name == name) {
      if (found != nullptr) {
        throw ConsoleError("There is more than one portfolio “" + name + "”.");
      }
      found = portfolio;
    }
  }
  if (found == nullptr) {
    throw ConsoleError("There is no portfolio “" + name + "” in the workspace.");
  }
  return found;
}

void ConsoleWorkspace::save() {
  document_->save(document_->fileURL().value());
}

void refreshEquities(QuoteProvider& provider, std::vector<EquityPointer> equities,
                     Console& console) {
  if (equities.empty()) {
    return;
  }
  std::optional<ErrorPointer> outcome;
  provider.refreshEquities(std::move(equities), [&outcome](ErrorPointer error) {
    // Providers answer on a queue of their choice.
    DispatchQueue::main()->async([&outcome, error = std::move(error)] { outcome = error; });
  });
  waitUntil([&] { return outcome.has_value(); });
  if (*outcome != nullptr) {
    console.err << "Prices could not be brought up to date: " << **outcome << '\n';
  }
}

void waitUntil(const std::function<bool()>& isDone) {
  while (!MainLoop::runUntil(isDone, std::chrono::hours(1))) {
  }
}

}  // namespace corvane::cli
