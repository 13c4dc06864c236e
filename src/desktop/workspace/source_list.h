// The two lists of the source list, as Qt shows them.
#pragma once

#include <QAbstractListModel>
#include <QListView>
#include <memory>

#include "presentation/frame/master_source_view_controller.h"

namespace corvane::desktop {

/// Rows that the controller counts; what it says of their number holds from the next reload() on.
class SourceRowsModel : public QAbstractListModel {
 public:
  void reload();
  void reloadRows(const std::vector<std::size_t>& rows);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;

 protected:
  using Count = std::size_t (MasterSourceViewController::*)() const;

  SourceRowsModel(MasterSourceViewController& controller, Count count, QObject* parent);

  [[nodiscard]] MasterSourceViewController& controller() const { return controller_; }
  /// Whether the controller has the row of `index`.
  [[nodiscard]] bool has(const QModelIndex& index) const;

 private:
  MasterSourceViewController& controller_;
  Count count_;
  int rows_;
};

/// The rows of the watchlist, which can be dragged to another place.
class WatchlistModel : public SourceRowsModel {
 public:
  explicit WatchlistModel(MasterSourceViewController& controller, QObject* parent = nullptr);

  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
  [[nodiscard]] QStringList mimeTypes() const override;
  [[nodiscard]] QMimeData* mimeData(const QModelIndexList& indexes) const override;
  bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                    const QModelIndex& parent) override;
};

/// The rows of the portfolios.
class PortfolioListModel : public SourceRowsModel {
 public:
  explicit PortfolioListModel(MasterSourceViewController& controller, QObject* parent = nullptr);

  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
};

/// A list in the colours of the source list. With a placeholder where it is empty.
class SourceListView : public QListView {
 public:
  SourceListView(const QString& accessibleName, const QString& placeholder,
                 QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void takeColours();
  QString placeholder_;
};

}  // namespace corvane::desktop
