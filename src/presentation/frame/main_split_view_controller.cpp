#include "presentation/frame/main_split_view_controller.h"

#include <algorithm>
#include <array>
#include <utility>
#include <variant>
#include <vector>

#include "platform/overloaded.h"
#include "platform/text/unicode/isolation.h"

namespace corvane {
namespace {

using DetailObject = MasterSourceViewController::DetailObject;

constexpr std::size_t mostRemembered = 50;
/// Nobody's first look at an equity waits for the disk.
constexpr DispatchQueue::Duration rememberDelay{1};

/// The settings that say how all screens show what they show.
constexpr std::array shownSettings = {"preferLocalTimeZone", "indicateFetchedRows"};

/// The name under which an object is remembered; empty for none.
std::string rememberedName(const DetailObject& object) {
  return std::visit(
      Overloaded{[](std::monostate) { return std::string(); },
                 [](const EquityPointer& equity) { return "equity " + equity->id(); },
                 [](const PortfolioPointer& portfolio) { return "portfolio " + portfolio->name; }},
      object);
}

}  // namespace

std::shared_ptr<MainSplitViewController> MainSplitViewController::make(
    ScreenSurroundings surroundings) {
  auto made = std::make_shared<MainSplitViewController>(Passkey{}, std::move(surroundings));
  made->connect();
  return made;
}

MainSplitViewController::MainSplitViewController(Passkey /*passkey*/,
                                                 ScreenSurroundings surroundings)
    : masterSourceViewController(MasterSourceViewController::make(surroundings)),
      equityViewController(EquityViewController::make(surroundings)),
      scenarioDetailViewController(ScenarioDetailViewController::make(surroundings)),
      scenarioBatchViewController(ScenarioBatchViewController::make(surroundings)),
      portfolioViewController(PortfolioViewController::make(surroundings)),
      reports(WorkspaceReports::make(surroundings)),
      surroundings_(std::move(surroundings)) {}

void MainSplitViewController::connect() {
  masterSourceViewController->sourceObjectChangedHandler =
      [self = weak_from_this()](const MasterSourceViewController::DetailObject& object) {
        if (const auto living = self.lock()) {
          living->showDetail(object);
        }
      };
  masterSourceViewController->watchlistChangedHandler = [self = weak_from_this()] {
    if (const auto living = self.lock()) {
      living->equityViewController->watchlistDidChange();
      living->changeHandler();
    }
  };
  equityViewController->addToWatchlistHandler = [self = weak_from_this()](const auto& equity) {
    if (const auto living = self.lock()) {
      living->masterSourceViewController->addToWatchlist(equity);
    }
  };
  portfolioViewController->openEquityHandler = [self = weak_from_this()](const auto& equity) {
    if (const auto living = self.lock()) {
      living->masterSourceViewController->setCurrentDetailObject(equity);
    }
  };
  for (const char* setting : shownSettings) {
    settings_.push_back(surroundings_.defaults->observe(setting, [self = weak_from_this()] {
      if (const auto living = self.lock()) {
        living->settingsDidChange();
      }
    }));
  }
  connectScenarios();
  connectReports();
}

/// Figures are explained in one panel, whose lines lead to the ledgers.
void MainSplitViewController::connectReports() {
  const auto self = weak_from_this();
  const auto explain = [self](const TrailMaker& trail) {
    if (const auto living = self.lock()) {
      living->explanation.explain(trail);
    }
  };
  const auto openEquity = [self](const EquityPointer& equity) {
    if (const auto living = self.lock()) {
      living->masterSourceViewController->setCurrentDetailObject(equity);
    }
  };
  const auto open = [self](const PortfolioPointer& portfolio, std::size_t position) {
    if (const auto living = self.lock()) {
      living->openRow(portfolio, position);
    }
  };
  portfolioViewController->explainHandler = [self](const TrailMaker& trail,
                                                   const TrailFetch& fetch) {
    if (const auto living = self.lock()) {
      living->explanation.explain(trail, fetch);
    }
  };
  reports->overview->explainHandler = explain;
  reports->returns->explainHandler = explain;
  reports->income->explainHandler = explain;
  reports->taxYear->explainHandler = explain;
  reports->overview->openEquityHandler = openEquity;
  reports->overview->openPortfolioHandler = [self](const PortfolioPointer& portfolio) {
    if (const auto living = self.lock()) {
      living->masterSourceViewController->setCurrentDetailObject(portfolio);
    }
  };
  reports->returns->openEquityHandler = openEquity;
  reports->income->openEquityHandler = openEquity;
  reports->coverage->openEquityHandler = openEquity;
  reports->taxYear->openRowHandler = open;
  explanation.openRowHandler = open;
}

void MainSplitViewController::openRow(const PortfolioPointer& portfolio, std::size_t position) {
  const auto model = documentModel_.lock();
  if (model == nullptr) {
    return;
  }
  const auto all = model->portfolios();
  if (std::ranges::find(all, portfolio) != all.end()) {
    masterSourceViewController->setCurrentDetailObject(portfolio);
    portfolioViewController->showTransaction(position);
  }
}

/// Each of the two screens can hand its input to the other one, which is shown then.
void MainSplitViewController::connectScenarios() {
  const auto takeTo = [equity = std::weak_ptr(equityViewController)](std::size_t tab,
                                                                     const auto& screen) {
    return [equity, tab, weakScreen = std::weak_ptr(screen)](const InvestmentScenario& scenario,
                                                             const InvestmentStrategy& strategy) {
      const auto view = equity.lock();
      const auto target = weakScreen.lock();
      if (view != nullptr && target != nullptr) {
        view->selectTab(tab);
        target->strategyViewController.setScenario(scenario, strategy);
      }
    };
  };
  const std::size_t detailTab = equityViewController->numberOfTabs();
  equityViewController->addTab(scenarioDetailViewController);
  equityViewController->addTab(scenarioBatchViewController);
  scenarioDetailViewController->makeBatchHandler =
      takeTo(detailTab + 1, scenarioBatchViewController);
  scenarioBatchViewController->goToDetailHandler = takeTo(detailTab, scenarioDetailViewController);
}

void MainSplitViewController::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  documentModel_ = model;
  equityViewController->setDocumentModel(model);
  masterSourceViewController->setDocumentModel(model);
  portfolioViewController->setDocumentModel(model);
  reports->setDocumentModel(model);
  masterSourceViewController->setCurrentDetailObject(initialDetailObject());
  changeHandler();
}

DetailObject MainSplitViewController::initialDetailObject() const {
  const auto model = documentModel_.lock();
  if (model == nullptr) {
    return std::monostate{};
  }
  std::vector<DetailObject> candidates;
  for (const auto& portfolio : model->portfolios()) {
    candidates.emplace_back(portfolio);
  }
  candidates.insert(candidates.end(), model->watchlistEquities.begin(),
                    model->watchlistEquities.end());
  for (const std::string& name : surroundings_.defaults->stringList(lastShownUserDefaultsKey)
                                     .value_or(std::vector<std::string>())) {
    const auto found = std::ranges::find(candidates, name, rememberedName);
    if (found != candidates.end()) {
      return *found;
    }
  }
  return candidates.empty() ? DetailObject() : candidates.front();
}

void MainSplitViewController::rememberLater(const DetailObject& object) {
  const std::string name = rememberedName(object);
  if (name.empty()) {
    return;
  }
  rememberTimer_ =
      Timer::scheduled(rememberDelay, false, [defaults = surroundings_.defaults, name](Timer&) {
        auto names =
            defaults->stringList(lastShownUserDefaultsKey).value_or(std::vector<std::string>());
        if (!names.empty() && names.front() == name) {
          return;
        }
        std::erase(names, name);
        names.insert(names.begin(), name);
        names.resize(std::min(names.size(), mostRemembered));
        defaults->setStringList(lastShownUserDefaultsKey, names);
      });
}

void MainSplitViewController::settingsDidChange() {
  equityViewController->settingsDidChange();
  if (currentDetailTab_ == DetailTab::portfolio) {
    portfolioViewController->reload(PortfolioViewController::PortfolioChanged{});
  }
}

std::string MainSplitViewController::emptyStateMessage() const {
  const auto model = documentModel_.lock();
  const bool hasAny =
      model != nullptr && (!model->watchlistEquities.empty() || !model->portfolios().empty());
  return hasAny ? "No equity or portfolio selected."
                : "Search for an equity or create a portfolio to get started!";
}

bool MainSplitViewController::canCreatePortfolio() const {
  const auto model = documentModel_.lock();
  return model != nullptr && !model->portfolioManagers.empty();
}

void MainSplitViewController::createPortfolioAction() {
  if (canCreatePortfolio()) {
    performSegue(CreatePortfolio{});
  }
}

std::unique_ptr<EditPortfolioViewController> MainSplitViewController::makeCreatePortfolioForm(
    std::function<void()> close, bool offersRandomPopulation) {
  const auto model = documentModel_.lock();
  if (model == nullptr || model->portfolioManagers.empty()) {
    return nullptr;
  }
  auto form = std::make_unique<EditPortfolioViewController>();
  form->behaviour = EditPortfolioViewController::Create{
      model->portfolioManagers.front(), model->watchlistEquities, offersRandomPopulation};
  form->presentError = surroundings_.presentError;
  // A portfolio stays although its random ledger was refused: it shows, and it is to be saved.
  form->createdHandler = [self = weak_from_this()](const PortfolioPointer&) {
    if (const auto living = self.lock()) {
      living->masterSourceViewController->portfoliosDidChange();
      living->reports->portfoliosDidChange();
      living->surroundings_.documentDidChange();
    }
  };
  form->completionHandler = [self = weak_from_this(),
                             close = std::move(close)](const PortfolioPointer& portfolio) {
    const auto living = self.lock();
    if (living != nullptr && portfolio != nullptr) {
      living->masterSourceViewController->portfoliosDidChange();
      living->reports->portfoliosDidChange();
      living->masterSourceViewController->setCurrentDetailObject(portfolio);
      living->surroundings_.documentDidChange();
    }
    close();
  };
  return form;
}

void MainSplitViewController::deletePortfolio(const PortfolioPointer& portfolio) {
  constexpr std::size_t deleteButton = 0;
  surroundings_.showAlert(
      {.messageText = "Are you sure you wish to delete “" + isolatedName(portfolio->name) + "”?",
       .informativeText =
           "All transaction data will be permanently removed. This action cannot be undone.",
       .buttons = {"Delete", "Cancel"}},
      [self = weak_from_this(), portfolio](std::size_t button) {
        const auto living = self.lock();
        if (living != nullptr && button == deleteButton) {
          living->removePortfolio(portfolio);
        }
      });
}

void MainSplitViewController::removePortfolio(const PortfolioPointer& portfolio) {
  const auto manager = portfolio->manager.lock();
  if (manager == nullptr) {
    return;
  }
  try {
    manager->removePortfolio(portfolio);
  } catch (const Error& error) {
    surroundings_.presentError(error);
    return;
  }
  // A deletion cannot be undone, and no step from before it may find the ledger that it was about.
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->removeAllActions();
  }
  if (masterSourceViewController->currentDetailObject() ==
      MasterSourceViewController::DetailObject(portfolio)) {
    masterSourceViewController->setCurrentDetailObject(std::monostate{});
  }
  masterSourceViewController->portfoliosDidChange();
  reports->portfoliosDidChange();
  surroundings_.documentDidChange();
}

void MainSplitViewController::showReport(WorkspaceReport report) {
  masterSourceViewController->setCurrentDetailObject(std::monostate{});
  currentDetailTab_ = DetailTab::report;
  reports->show(report);
  changeHandler();
}

void MainSplitViewController::showDetail(const DetailObject& object) {
  const auto self = weak_from_this();
  currentDetailTab_ = std::visit(Overloaded{[](std::monostate) { return DetailTab::emptyState; },
                                            [&](const EquityPointer& equity) {
                                              equityViewController->setCurrentEquity(equity);
                                              return DetailTab::equity;
                                            },
                                            [&](const PortfolioPointer& portfolio) {
                                              portfolioViewController->deletePortfolioHandler =
                                                  [self](const PortfolioPointer& deleted) {
                                                    if (const auto living = self.lock()) {
                                                      living->deletePortfolio(deleted);
                                                    }
                                                  };
                                              portfolioViewController->setPortfolio(portfolio);
                                              return DetailTab::portfolio;
                                            }},
                                 object);
  equityViewController->setShown(currentDetailTab_ == DetailTab::equity);
  if (currentDetailTab_ != DetailTab::portfolio) {
    portfolioViewController->setPortfolio(nullptr);
  }
  reports->show(std::nullopt);
  rememberLater(object);
  changeHandler();
}

}  // namespace corvane
