// A table of the program's own, as Qt shows one.
#pragma once

#include <QAbstractTableModel>
#include <QTableView>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "presentation/controls/table_model.h"

namespace corvane::desktop {

/// Hands the rows of a TableModel to a view, which asks only for those that it shows. The model
/// must outlive this. Main queue only.
class TableModelAdapter : public QAbstractTableModel {
 public:
  explicit TableModelAdapter(const TableModel& table, QObject* parent = nullptr);

  /// To be called after every change of the rows; the number of rows counts as it was until then.
  void reload();
  /// As reload(), but where the number of rows is what it was, only the cells are drawn anew: what
  /// is selected and scrolled to stays.
  void update();
  /// To be called where rows have only been added at the end: what a view knows of the others
  /// stays.
  void appendRows();

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role) const override;

 private:
  [[nodiscard]] QVariant fontOf(std::size_t row, std::size_t column) const;

  const TableModel& table_;
  int rows_;
};

/// A table of whole rows without a grid. Columns are as wide as their content, unless the user has
/// sized them; the one with the names takes what is left. Copying puts the selected rows on the
/// clipboard, with tabs between the cells.
class TableView : public QTableView {
  Q_OBJECT

 public:
  explicit TableView(const QString& accessibleName, QWidget* parent = nullptr);

  void setTable(TableModelAdapter* adapter, const TableModel& table);
  /// Makes each column wide enough for its heading and for its rows, of which it looks at a sample
  /// where there are many.
  /// A table that is not seen does so when it is shown, or its widths are asked for.
  void fitColumns();
  /// Does `reload`, which resets the model, without giving columns other widths.
  void keepingWidths(const std::function<void()>& reload);
  void copySelectedRows() const;
  /// Selects `row` alone and scrolls to it; nothing is selected without one.
  void chooseRow(std::optional<std::size_t> row);
  /// The width at which no column is cut short.
  [[nodiscard]] int neededWidth();
  /// The width at which only the column of names is cut short, as far as it may be.
  [[nodiscard]] int leastWidth();

  /// How narrow the column of names may get, in pixels, before the table scrolls sideways.
  void setLeastStretchedWidth(int width) { leastStretchedWidth_ = width; }

  /// The column of the table's model with this identifier; -1 without one.
  [[nodiscard]] int columnWithIdentifier(std::string_view identifier) const;
  [[nodiscard]] std::string columnIdentifier(int column) const;
  /// Whether the table's model wants `column` to be seen.
  [[nodiscard]] bool isOffered(int column) const;
  /// Hides the columns that the model leaves out and those that the user has put away.
  void showColumns();
  [[nodiscard]] bool isPutAway(int column) const { return putAway_.contains(column); }
  void setPutAway(int column, bool isPutAway);
  /// The width in pixels that the user has given to `column`; none where the table finds it.
  [[nodiscard]] std::optional<int> chosenWidth(int column) const;
  void setChosenWidth(int column, std::optional<int> width);

  /// A text in the middle of a table that has no rows.
  void setPlaceholderText(const QString& text);

 signals:
  /// The user has given a column another width.
  void columnSized();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void fitStaleColumns();
  void noteWidth(int column, int oldWidth, int width);
  [[nodiscard]] int fittingWidth(int column) const;
  [[nodiscard]] int fittedWidth(int column) const;
  [[nodiscard]] int widthBesideStretchedColumn() const;
  [[nodiscard]] int widthOfRows(int column, int first, int last) const;
  void widenColumns(int first, int last);
  void stretch();
  void setWidth(int column, int width);

  QString placeholderText_;
  const TableModel* table_ = nullptr;
  std::set<int> putAway_;
  std::map<int, int> chosenWidths_;  ///< by column
  std::map<int, int>
      fittedWidths_;      ///< of the columns that are shown, before they share what is left
  bool isStale_ = false;  ///< the columns are to be fitted
  bool keepsWidths_ = false;
  bool isFitting_ = false;  ///< sections are sized by the table, not by its user
  int stretchedColumn_ = 0;
  int stretchedColumnWidth_ = 0;  ///< that it needs
  int leastStretchedWidth_;
};

}  // namespace corvane::desktop
