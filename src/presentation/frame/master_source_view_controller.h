// The list at the side of the window: the watchlist and the portfolios.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/async/notification_center.h"
#include "presentation/controls/equity_combo_box.h"
#include "presentation/screen/screen_surroundings.h"
#include "presentation/source/source_rows.h"
#include "presentation/source/source_selection.h"
#include "presentation/source/watchlist_edit.h"
#include "presentation/source/watchlist_thumbnails.h"
#include "storage/application/watchlist_manager.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Two tables of which one at most has a selection, and a search box. What is selected is shown in
/// the detail area. Edits of the watchlist can be undone. Held by shared pointer only. Main queue
/// only.
class MasterSourceViewController : public std::enable_shared_from_this<MasterSourceViewController>,
                                   public WorkspaceDocumentModelHaving {
  struct Passkey {};

 public:
  /// What the detail area shows.
  using DetailObject = SourceObject;

  /// Rows whose texts or thumbnails have changed, or whole tables.
  struct Update {
    bool watchlistRowsChanged = false;  ///< rows came, went or moved
    bool portfolioRowsChanged = false;
    std::vector<std::size_t> reloadedWatchlistRows = {};
    std::vector<std::size_t> reloadedPortfolioRows = {};
  };

  /// The type under which dragged rows carry their place, a whole number.
  static constexpr std::string_view watchlistEquityIndexPasteboardType =
      "ca.orlend.Corvane.WatchlistEquityIndex";

  [[nodiscard]] static std::shared_ptr<MasterSourceViewController> make(
      ScreenSurroundings surroundings);
  MasterSourceViewController(Passkey passkey, ScreenSurroundings surroundings);
  MasterSourceViewController(const MasterSourceViewController&) = delete;
  MasterSourceViewController& operator=(const MasterSourceViewController&) = delete;

  /// Called when another object is to be shown in the detail area.
  std::function<void(const DetailObject&)> sourceObjectChangedHandler = [](const DetailObject&) {};
  /// Called when the watchlist has other equities, or in another order.
  std::function<void()> watchlistChangedHandler = [] {};
  /// Called when rows, selections, buttons or priceStatus() have changed.
  std::function<void(const Update&)> changeHandler = [](const Update&) {};

  [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override {
    return documentModel_;
  }
  void setDocumentModel(std::weak_ptr<WorkspaceModel> model) override;

  [[nodiscard]] const DetailObject& currentDetailObject() const { return currentDetailObject_; }
  /// Shows `object`, also one that is in neither table, and selects its row where it has one.
  void setCurrentDetailObject(DetailObject object);

  /// How old the prices are, what a refresh did not bring and why, and when the next one comes;
  /// empty where there is nothing to refresh.
  [[nodiscard]] std::string priceStatus() const;

  // The tables.

  [[nodiscard]] std::size_t numberOfWatchlistRows() const;
  [[nodiscard]] EquitySourceRow watchlistRow(std::size_t index) const;
  [[nodiscard]] std::size_t numberOfPortfolioRows() const;
  [[nodiscard]] PortfolioSourceRow portfolioRow(std::size_t index) const;

  [[nodiscard]] const std::vector<std::size_t>& selectedWatchlistRows() const {
    return selection_.watchlistRows();
  }
  [[nodiscard]] std::optional<std::size_t> selectedPortfolioRow() const {
    return selection_.portfolioRow();
  }
  /// What the user does. One selected row is shown; an empty selection of portfolios is not taken.
  void selectWatchlistRows(std::vector<std::size_t> rows);
  void selectPortfolioRow(std::optional<std::size_t> row);

  /// The search box. An equity that is chosen there is shown, without being added.
  EquityComboBox equityComboBox;
  /// Whether the box holds an equity that is not in the watchlist.
  [[nodiscard]] bool canAddToWatchlist() const;
  /// Adds the equity of the box.
  void addToWatchlistAction();

  // Edits of the watchlist.

  /// Whether the watchlist holds an equity with this symbol.
  [[nodiscard]] bool watches(const EquityInfo& equity) const;
  void addToWatchlist(const EquityPointer& equity);
  [[nodiscard]] bool canRemove() const { return !selectedWatchlistRows().empty(); }
  void removeSelectedAction();
  /// Moves rows in front of `row`, or behind the last one where it is their number.
  void moveWatchlistRows(const std::vector<std::size_t>& rows, std::size_t row);
  /// Moves the selected rows by one place, as one block.
  void moveSelectionUp();
  void moveSelectionDown();

  /// To be called after a portfolio has been made or removed.
  void portfoliosDidChange();

 private:
  void observe();
  [[nodiscard]] EquitySet refreshedEquities() const;
  template <typename Payload, typename Handler>
  void observe(const Topic<Payload>& topic, Handler handler);
  void takeQuoteProvider();
  void reloadEquities(const EquitySet& equities);
  void portfoliosDidRefresh(const std::vector<PortfolioPointer>& portfolios);
  [[nodiscard]] std::vector<std::size_t> rowsOf(
      const std::vector<PortfolioPointer>& portfolios) const;
  void thumbnailDidChange(const EquityPointer& equity);
  void replaceWatchlist(std::vector<EquityPointer> equities);
  /// Whether there was an edit to carry out.
  bool carryOut(std::optional<WatchlistEdit> edit);
  void setDetailObject(DetailObject object);
  void selectRowOfDetailObject();
  [[nodiscard]] std::vector<EquityPointer> watchlist() const;
  [[nodiscard]] std::vector<PortfolioPointer> portfolios() const;

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  DetailObject currentDetailObject_;
  WatchlistManager::Status refreshStatus_;
  SourceSelection selection_;
  const std::shared_ptr<WatchlistThumbnails> thumbnails_ = std::make_shared<WatchlistThumbnails>();
  std::vector<Subscription> observations_;
};

}  // namespace corvane
