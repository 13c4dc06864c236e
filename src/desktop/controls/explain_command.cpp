#include "desktop/controls/explain_command.h"

#include <QAction>
#include <QItemSelectionModel>
#include <utility>

#include "desktop/controls/table_view.h"

namespace corvane::desktop {
namespace {

TrailMaker currentTrail(const TableView& table, const TableModel& model) {
  const QModelIndex index = table.currentIndex();
  const bool isThere =
      index.isValid() && static_cast<std::size_t>(index.row()) < model.numberOfRows();
  return isThere ? model.trailOf(static_cast<std::size_t>(index.row()),
                                 static_cast<std::size_t>(index.column()))
                 : nullptr;
}

}  // namespace

QAction* addExplainCommand(TableView& table, const TableModel& model,
                           std::function<void(const TrailMaker&)> explain) {
  auto* action = new QAction(QStringLiteral("Explain This Number"), &table);
  action->setObjectName(QStringLiteral("explain"));
  action->setEnabled(false);
  table.addAction(action);
  if (table.contextMenuPolicy() == Qt::DefaultContextMenu) {
    table.setContextMenuPolicy(Qt::ActionsContextMenu);
  }
  QObject::connect(action, &QAction::triggered, &table,
                   [&table, &model, explain = std::move(explain)] {
                     if (const TrailMaker trail = currentTrail(table, model)) {
                       explain(trail);
                     }
                   });
  QObject::connect(
      table.selectionModel(), &QItemSelectionModel::currentChanged, action,
      [&table, &model, action] { action->setEnabled(currentTrail(table, model) != nullptr); });
  return action;
}

}  // namespace corvane::desktop
