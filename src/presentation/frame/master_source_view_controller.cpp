#include "presentation/frame/master_source_view_controller.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "core/market/price_adjuster.h"
#include "presentation/frame/price_status_text.h"

namespace corvane {
namespace {

/// "Watch “ABC”"
std::string named(const std::string& verb, const EquityInfo& equity) {
  return verb + " “" + equity.symbol + "”";
}

/// The same for one of `equities`, or their number.
std::string named(const std::string& verb, const std::vector<EquityPointer>& equities) {
  return equities.size() == 1 ? named(verb, *equities.front())
                              : verb + " " + std::to_string(equities.size()) + " Symbols";
}

template <typename Value>
bool contains(const std::vector<Value>& values, const Value& value) {
  return std::ranges::find(values, value) != values.end();
}

void normalise(std::vector<std::size_t>& rows) {
  std::ranges::sort(rows);
  const auto repeated = std::ranges::unique(rows);
  rows.erase(repeated.begin(), repeated.end());
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
  selectedWatchlistRows_.clear();
  selectedPortfolioRow_.reset();
  thumbnails_.clear();
  takeQuoteProvider();
  equityComboBox.setSelectedEquity(nullptr);
  fetchDueThumbnails();
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
  static const auto noThumbnail =
      std::make_shared<const QuoteChartView>(QuoteChartView::Mode::thumbnail);
  const EquityPointer& equity = documentModel_.lock()->watchlistEquities.at(index);
  const auto found = thumbnails_.find(equity);
  return equitySourceRow(equity, found == thumbnails_.end() ? noThumbnail : found->second.chart);
}

std::size_t MasterSourceViewController::numberOfPortfolioRows() const {
  return portfolios().size();
}

PortfolioSourceRow MasterSourceViewController::portfolioRow(std::size_t index) const {
  return portfolioSourceRow(portfolios().at(index));
}

void MasterSourceViewController::selectWatchlistRows(std::vector<std::size_t> rows) {
  normalise(rows);
  if (rows == selectedWatchlistRows_) {
    return;
  }
  selectedWatchlistRows_ = std::move(rows);
  if (!selectedWatchlistRows_.empty()) {
    selectedPortfolioRow_.reset();
  }
  changeHandler({});
  if (selectedWatchlistRows_.size() == 1) {
    setDetailObject(watchlist().at(selectedWatchlistRows_.front()));
  }
}

void MasterSourceViewController::selectPortfolioRow(std::optional<std::size_t> row) {
  if (row == selectedPortfolioRow_) {
    return;
  }
  if (!row) {
    changeHandler({});  // for the table to show again what stays selected
    return;
  }
  selectedPortfolioRow_ = row;
  selectedWatchlistRows_.clear();
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
  return std::ranges::any_of(
      watchlist(), [&](const EquityPointer& watched) { return watched->symbol == equity.symbol; });
}

void MasterSourceViewController::addToWatchlist(const EquityPointer& equity) {
  if (watches(*equity)) {
    return;
  }
  std::vector<EquityPointer> equities = watchlist();
  equities.push_back(equity);
  editWatchlist(std::move(equities), named("Watch", *equity));
  if (currentDetailObject_ == DetailObject(equity)) {
    selectRowOfDetailObject();
    changeHandler({});
  }
}

void MasterSourceViewController::removeSelectedAction() {
  std::vector<EquityPointer> kept;
  std::vector<EquityPointer> removed;
  const std::vector<EquityPointer> equities = watchlist();
  for (std::size_t i = 0; i < equities.size(); ++i) {
    (contains(selectedWatchlistRows_, i) ? removed : kept).push_back(equities[i]);
  }
  if (!removed.empty()) {
    editWatchlist(std::move(kept), named("Unwatch", removed));
    selectedWatchlistRows_.clear();
    changeHandler({});
  }
}

void MasterSourceViewController::moveWatchlistRows(std::vector<std::size_t> rows, std::size_t row) {
  normalise(rows);
  const std::vector<EquityPointer> equities = watchlist();
  std::vector<EquityPointer> moved;
  std::vector<EquityPointer> before;
  std::vector<EquityPointer> behind;
  for (std::size_t i = 0; i < equities.size(); ++i) {
    const bool isMoved = contains(rows, i);
    (isMoved ? moved : i < row ? before : behind).push_back(equities[i]);
  }
  std::vector<EquityPointer> ordered = std::move(before);
  ordered.insert(ordered.end(), moved.begin(), moved.end());
  ordered.insert(ordered.end(), behind.begin(), behind.end());
  if (ordered != equities) {
    editWatchlist(std::move(ordered), named("Move", moved));
  }
}

void MasterSourceViewController::moveSelectionUp() {
  if (!selectedWatchlistRows_.empty() && selectedWatchlistRows_.front() > 0) {
    moveWatchlistRows(selectedWatchlistRows_, selectedWatchlistRows_.front() - 1);
  }
}

void MasterSourceViewController::moveSelectionDown() {
  if (!selectedWatchlistRows_.empty() &&
      selectedWatchlistRows_.back() + 1 < numberOfWatchlistRows()) {
    moveWatchlistRows(selectedWatchlistRows_, selectedWatchlistRows_.back() + 2);
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
  fetchDueThumbnails();
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
  fetchDueThumbnails();
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

MasterSourceViewController::Thumbnail& MasterSourceViewController::thumbnailOf(
    const EquityPointer& equity) {
  Thumbnail& thumbnail = thumbnails_[equity];
  if (thumbnail.chart == nullptr) {
    thumbnail.chart = std::make_shared<QuoteChartView>(QuoteChartView::Mode::thumbnail);
  }
  return thumbnail;
}

void MasterSourceViewController::fetchThumbnail(const EquityPointer& equity) {
  const auto provider = equity->quoteProvider.lock();
  // Before the first refresh its currency is not known, and no price would be taken.
  if (provider == nullptr || !equity->isAuthoritative) {
    return;
  }
  Thumbnail& thumbnail = thumbnailOf(equity);
  thumbnail.session = equity->recentTradingPeriod;
  thumbnail.latest = equity->recentDate;
  const QuoteQuery query = QuoteQuery::currentPeriod(equity, true);
  provider->fetchQuotes(query, std::make_shared<PriceAdjuster>(provider),
                        [self = weak_from_this(), query](Result<QuoteFetchResult> result) {
                          DispatchQueue::main()->async([self, query, result = std::move(result)] {
                            if (const auto living = self.lock()) {
                              living->thumbnailFetchDidEnd(query, result);
                            }
                          });
                        });
}

/// A session that could not be had leaves the row without a chart: its price says what is known,
/// and the next refresh tries again.
void MasterSourceViewController::thumbnailFetchDidEnd(const QuoteQuery& query,
                                                      const Result<QuoteFetchResult>& result) {
  const std::vector<EquityPointer> rows = watchlist();
  const auto row = std::ranges::find_if(
      rows, [&](const EquityPointer& equity) { return *equity == *query.equity; });
  if (row == rows.end()) {
    return;
  }
  if (query.dateRange.isEmpty() &&
      !QuoteQuery::currentPeriod(query.equity, true).dateRange.isEmpty()) {
    // No session was known when this was asked; the answer has told of it.
    fetchThumbnail(*row);
    return;
  }
  Thumbnail& thumbnail = thumbnailOf(query.equity);
  QuoteChartView& chart = *thumbnail.chart;
  if (!result) {
    thumbnail.latest = Date::distantPast();
  }
  if (result && result->quotes && !query.dateRange.isEmpty()) {
    chart.setQuotes(*result->quotes, query);
  } else {
    chart.clear();
  }
  changeHandler({.reloadedWatchlistRows = {static_cast<std::size_t>(row - rows.begin())}});
}

/// Whether the session of `equity` has not been asked for, or goes on: after its close nothing can
/// have changed.
bool MasterSourceViewController::isThumbnailDue(const EquityPointer& equity) const {
  const auto found = thumbnails_.find(equity);
  return found == thumbnails_.end() || found->second.session != equity->recentTradingPeriod ||
         found->second.latest != equity->recentDate;
}

void MasterSourceViewController::fetchDueThumbnails() {
  for (const EquityPointer& equity : watchlist()) {
    if (isThumbnailDue(equity)) {
      fetchThumbnail(equity);
    }
  }
}

void MasterSourceViewController::editWatchlist(std::vector<EquityPointer> equities,
                                               const std::string& actionName) {
  replaceWatchlist(std::move(equities));
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->setActionName(actionName);
  } else {
    surroundings_.documentDidChange();
  }
}

/// Makes `equities` the watchlist, undoably. What was selected stays selected where it stays.
void MasterSourceViewController::replaceWatchlist(std::vector<EquityPointer> equities) {
  const auto model = documentModel_.lock();
  if (model == nullptr) {
    return;
  }
  const std::vector<EquityPointer> former =
      std::exchange(model->watchlistEquities, std::move(equities));
  std::vector<std::size_t> selection;
  for (const std::size_t index : selectedWatchlistRows_) {
    const auto found = std::ranges::find(model->watchlistEquities, former.at(index));
    if (found != model->watchlistEquities.end()) {
      selection.push_back(static_cast<std::size_t>(found - model->watchlistEquities.begin()));
    }
  }
  normalise(selection);
  selectedWatchlistRows_ = std::move(selection);
  std::erase_if(thumbnails_, [&](const auto& entry) {
    return !contains(model->watchlistEquities, entry.first);
  });
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->registerUndo(
        shared_from_this(),
        [former](MasterSourceViewController& list) { list.replaceWatchlist(former); });
  }
  fetchDueThumbnails();
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
  selectedWatchlistRows_.clear();
  selectedPortfolioRow_.reset();
  const auto indexOf = [](const auto& rows, const auto& object) -> std::optional<std::size_t> {
    const auto found = std::ranges::find(rows, object);
    return found == rows.end() ? std::nullopt
                               : std::optional(static_cast<std::size_t>(found - rows.begin()));
  };
  if (const auto* equity = std::get_if<EquityPointer>(&currentDetailObject_)) {
    if (const auto index = indexOf(watchlist(), *equity)) {
      selectedWatchlistRows_ = {*index};
    }
  } else if (const auto* portfolio = std::get_if<PortfolioPointer>(&currentDetailObject_)) {
    selectedPortfolioRow_ = indexOf(portfolios(), *portfolio);
  }
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
