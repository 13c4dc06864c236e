// The sheet in which the user says what stands in which column of a file.
#pragma once

#include <QAbstractTableModel>
#include <QDialog>
#include <QStyledItemDelegate>
#include <memory>

#include "exchange/panels/import_export_field_setup_view_controller.h"
#include "platform/async/subscription.h"

class QCheckBox;
class QPushButton;
class QTableView;

namespace corvane::desktop {

/// The rows of the setup: one for each column of the file. Rows can be dragged to another place.
class FieldSetupModel : public QAbstractTableModel {
 public:
  enum Column { order, field, example1, example2, columnTotal };

  explicit FieldSetupModel(ImportExportFieldSetupViewController& setup, QObject* parent = nullptr);

  void reload();

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
  [[nodiscard]] QStringList mimeTypes() const override;
  [[nodiscard]] QMimeData* mimeData(const QModelIndexList& indexes) const override;
  bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                    const QModelIndex& parent) override;

 private:
  ImportExportFieldSetupViewController& setup_;
  int rows_;
};

/// Makes the pop-up menu of a row.
class FieldDelegate : public QStyledItemDelegate {
 public:
  FieldDelegate(ImportExportFieldSetupViewController& setup, QObject* parent);
  [[nodiscard]] QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const override;
  /// Lets the menus have all keys, so that Tab goes on, Return imports and Escape cancels.
  bool eventFilter(QObject* /*editor*/, QEvent* /*event*/) override { return false; }
  void setEditorData(QWidget* editor, const QModelIndex& index) const override;
  void setModelData(QWidget* /*editor*/, QAbstractItemModel* /*model*/,
                    const QModelIndex& /*index*/) const override {}

 private:
  ImportExportFieldSetupViewController& setup_;
};

/// Shows an ImportExportFieldSetupViewController. Closing the sheet by other means is a click on
/// Cancel.
class FieldSetupDialog : public QDialog {
  Q_OBJECT

 public:
  FieldSetupDialog(std::shared_ptr<ImportExportFieldSetupViewController> setup, QWidget* parent);

  void reject() override;

 private:
  void layOut();
  void addShortcuts();
  void update();
  void moveSelection(int by);
  /// Asks for a name, and keeps the setup as a layout of statements.
  void rememberLayout();

  std::shared_ptr<ImportExportFieldSetupViewController> setup_;
  FieldSetupModel* model_;
  QTableView* table_;
  QCheckBox* header_;
  QPushButton* add_;
  QPushButton* remove_;
  QPushButton* reset_;
  QPushButton* remember_;
  bool isUpdating_ = false;
  Subscription changes_;
};

}  // namespace corvane::desktop
