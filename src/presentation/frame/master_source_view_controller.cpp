#include "presentation/frame/master_source_view_controller.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "presentation/source/price_status_text.h"

namespace corvane {
namespace {

template <typename Value>
bool contains(const std::vector<Value>& values, const Value& value) {
  return std::ranges::find(values, value) != values.end();
}

}  // namespace

std::shared_ptr<MasterSourceViewController> MasterSourceViewController::make(
    ScreenSurroundings surroundings) {
  auto made = std::make_shared<MasterSourceViewController>(Passkey{}, std::move(surroundings));
  made->observe();
  return made;
}

MasterSourceViewController::MasterSourceViewController(Passkey /*passkey*/,
                                                       ScreenSurroundings surroundings)
    : surroundings_(std::move(surroundings)) {
  equityComboBox.setPlaceholder("Search");
  equityComboBox.action = [this] {
    if (const EquityPointer found = equityComboBox.selectedEquity()) {
      setCurrentDetailObject(found);
    } else {
      changeHandler({});
    }
  };
}

void MasterSourceViewController::observe() {
  thumbnails_->changeHandler = [self = weak_from_this()](const EquityPointer& equity) {
    if (const auto living = self.lock()) {
      living->thumbnailDidChange(equity);
    }
  };
  using Self = MasterSourceViewController;
  observe(WatchlistManager::didRefreshWatchlistEquities,
          [](Self& living, const EquitySet& equities) { living.reloadEquities(equities); });
  observe(WatchlistManager::didRefreshPortfolioEquities,
          [](Self& living, const auto& portfolios) { living.portfoliosDidRefresh(portfolios); });
  observe(WatchlistManager::statusDidChange,
          [](Self& living, const WatchlistManager::Status& status) {
            living.refreshStatus_ = status;
            living.changeHandler({});
          });
  observe(PortfolioManager::didChangePortfolio, [](Self& living, const auto& change) {
    living.changeHandler({.reloadedPortfolioRows = living.rowsOf({change.portfolio})});
  });
}

/// What the refreshes bring prices of, as far as it can be listed now.
EquitySet MasterSourceViewController::refreshedEquities() const {
  const std::vector<EquityPointer> watched = watchlist();
  EquitySet equities(watched.begin(), watched.end());
  for (const PortfolioPointer& portfolio : portfolios()) {
    try {
      if (const auto manager = portfolio->manager.lock()) {
        equities.merge(manager->valuationEquities(portfolio));
      }
    } catch (const Error&) {  // NOLINT(bugprone-empty-catch): a refresh passes over it as well
    }
  }
  return equities;
}

std::string MasterSourceViewController::priceStatus() const {
  return priceStatusText(refreshStatus_, refreshedEquities(), surroundings_.now());
}

template <typename Payload, typename Handler>
void MasterSourceViewController::observe(const Topic<Payload>& topic, Handler handler) {
  observations_.push_back(NotificationCenter::defaultCenter().addObserver(
      topic, nullptr,
      [self = weak_from_this(), handler](const Payload& payload) {
        if (const auto living = self.lock()) {
          handler(*living, payload);
        }
      },
      DispatchQueue::main()));
}

void MasterSourceViewController::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  documentModel_ = std::move(model);
  selection_.clear();
  thumbnails_->clear();
  takeQuoteProvider();
  equityComboBox.setSelectedEquity(nullptr);
  thumbnails_->follow(watchlist());
  changeHandler({.watchlistRowsChanged = true, .portfolioRowsChanged = true});
  setDetailObject(std::monostate{});
}

void MasterSourceViewController::setCurrentDetailObject(DetailObject object) {
  setDetailObject(std::move(object));
  selectRowOfDetailObject();
  changeHandler({});
}

std::size_t MasterSourceViewController::numberOfWatchlistRows() const {
  const auto model = documentModel_.lock();
  return model == nullptr ? 0 : model->watchlistEquities.size();
}

EquitySourceRow MasterSourceViewController::watchlistRow(std::size_t index) const {
  const EquityPointer& equity = documentModel_.lock()->watchlistEquities.at(index);
  return equitySourceRow(equity, thumbnails_->chart(equity));
}

std::size_t MasterSourceViewController::numberOfPortfolioRows() const {
  return portfolios().size();
}

PortfolioSourceRow MasterSourceViewController::portfolioRow(std::size_t index) const {
  return portfolioSourceRow(portfolios().at(index));
}

void MasterSourceViewController::selectWatchlistRows(std::vector<std::size_t> rows) {
  if (!selection_.selectWatchlistRows(std::move(rows))) {
    return;
  }
  changeHandler({});
  if (selectedWatchlistRows().size() == 1) {
    setDetailObject(watchlist().at(selectedWatchlistRows().front()));
  }
}

void MasterSourceViewController::selectPortfolioRow(std::optional<std::size_t> row) {
  if (row == selectedPortfolioRow()) {
    return;
  }
  if (!row) {
    changeHandler({});  // for the table to show again what stays selected
    return;
  }
  selection_.selectPortfolioRow(*row);
  changeHandler({});
  setDetailObject(portfolios().at(*row));
}

void MasterSourceViewController::takeQuoteProvider() {
  const auto model = documentModel_.lock();
  equityComboBox.setQuoteProvider(model == nullptr || model->portfolioManagers.empty()
                                      ? nullptr
                                      : model->portfolioManagers.front()->quoteProvider);
}

bool MasterSourceViewController::canAddToWatchlist() const {
  const EquityPointer& found = equityComboBox.selectedEquity();
  return !documentModel_.expired() && found != nullptr && !watches(*found);
}

void MasterSourceViewController::addToWatchlistAction() {
  if (canAddToWatchlist()) {
    addToWatchlist(equityComboBox.selectedEquity());
  }
}

bool MasterSourceViewController::watches(const EquityInfo& equity) const {
  return corvane::watches(watchlist(), equity);
}

void MasterSourceViewController::addToWatchlist(const EquityPointer& equity) {
  if (carryOut(watch(watchlist(), equity)) && currentDetailObject_ == DetailObject(equity)) {
    selectRowOfDetailObject();
    changeHandler({});
  }
}

void MasterSourceViewController::removeSelectedAction() {
  carryOut(unwatch(watchlist(), selectedWatchlistRows()));
}

void MasterSourceViewController::moveWatchlistRows(const std::vector<std::size_t>& rows,
                                                   std::size_t row) {
  carryOut(moveWatched(watchlist(), rows, row));
}

void MasterSourceViewController::moveSelectionUp() {
  const auto& rows = selectedWatchlistRows();
  if (!rows.empty() && rows.front() > 0) {
    moveWatchlistRows(rows, rows.front() - 1);
  }
}

void MasterSourceViewController::moveSelectionDown() {
  const auto& rows = selectedWatchlistRows();
  if (!rows.empty() && rows.back() + 1 < numberOfWatchlistRows()) {
    moveWatchlistRows(rows, rows.back() + 2);
  }
}

void MasterSourceViewController::portfoliosDidChange() {
  takeQuoteProvider();
  selectRowOfDetailObject();
  changeHandler({.portfolioRowsChanged = true});
}

/// Reloads the rows of `equities` and fetches their sessions where something was traded since.
void MasterSourceViewController::reloadEquities(const EquitySet& equities) {
  Update update;
  const std::vector<EquityPointer> rows = watchlist();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (equities.contains(rows[i])) {
      update.reloadedWatchlistRows.push_back(i);
    }
  }
  thumbnails_->follow(watchlist());
  changeHandler(update);
}

/// Reloads the rows of `refreshed`, and the watchlist: the refresh of a workspace that has just
/// been opened brings prices for both and tells only of the portfolios.
void MasterSourceViewController::portfoliosDidRefresh(
    const std::vector<PortfolioPointer>& refreshed) {
  Update update{.reloadedPortfolioRows = rowsOf(refreshed)};
  update.reloadedWatchlistRows.resize(numberOfWatchlistRows());
  std::iota(update.reloadedWatchlistRows.begin(), update.reloadedWatchlistRows.end(),
            std::size_t{0});
  thumbnails_->follow(watchlist());
  changeHandler(update);
}

/// Where those of `wanted` stand that are portfolios of this workspace.
std::vector<std::size_t> MasterSourceViewController::rowsOf(
    const std::vector<PortfolioPointer>& wanted) const {
  std::vector<std::size_t> indexes;
  const std::vector<PortfolioPointer> rows = portfolios();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (contains(wanted, rows[i])) {
      indexes.push_back(i);
    }
  }
  return indexes;
}

void MasterSourceViewController::thumbnailDidChange(const EquityPointer& equity) {
  const std::vector<EquityPointer> rows = watchlist();
  const auto row = std::ranges::find(rows, equity);
  if (row != rows.end()) {
    changeHandler({.reloadedWatchlistRows = {static_cast<std::size_t>(row - rows.begin())}});
  }
}

bool MasterSourceViewController::carryOut(std::optional<WatchlistEdit> edit) {
  if (!edit) {
    return false;
  }
  replaceWatchlist(std::move(edit->equities));
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->setActionName(edit->actionName);
  } else {
    surroundings_.documentDidChange();
  }
  return true;
}

/// Makes `equities` the watchlist, undoably.
void MasterSourceViewController::replaceWatchlist(std::vector<EquityPointer> equities) {
  const auto model = documentModel_.lock();
  if (model == nullptr) {
    return;
  }
  const std::vector<EquityPointer> former =
      std::exchange(model->watchlistEquities, std::move(equities));
  selection_.follow(former, model->watchlistEquities);
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->registerUndo(
        shared_from_this(),
        [former](MasterSourceViewController& list) { list.replaceWatchlist(former); });
  }
  thumbnails_->follow(watchlist());
  changeHandler({.watchlistRowsChanged = true});
  watchlistChangedHandler();
}

void MasterSourceViewController::setDetailObject(DetailObject object) {
  if (object != currentDetailObject_) {
    currentDetailObject_ = std::move(object);
    sourceObjectChangedHandler(currentDetailObject_);
  }
}

void MasterSourceViewController::selectRowOfDetailObject() {
  selection_.select(currentDetailObject_, watchlist(), portfolios());
}

std::vector<EquityPointer> MasterSourceViewController::watchlist() const {
  const auto model = documentModel_.lock();
  return model == nullptr ? std::vector<EquityPointer>() : model->watchlistEquities;
}

std::vector<PortfolioPointer> MasterSourceViewController::portfolios() const {
  const auto model = documentModel_.lock();
  return model == nullptr ? std::vector<PortfolioPointer>() : model->portfolios();
}

}  // namespace corvane
