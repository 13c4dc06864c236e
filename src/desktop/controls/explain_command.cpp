#include "desktop/controls/explain_command.h"

#include <QAction>
#include <QApplication>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <utility>

#include "desktop/controls/table_view.h"
#include "desktop/look/attributed_text_view.h"

namespace corvane::desktop {
namespace {

using Explain = std::function<void(const TrailMaker&)>;

TrailMaker trailAt(const QModelIndex& index, const TableModel& model) {
  const bool isThere =
      index.isValid() && static_cast<std::size_t>(index.row()) < model.numberOfRows();
  return isThere ? model.trailOf(static_cast<std::size_t>(index.row()),
                                 static_cast<std::size_t>(index.column()))
                 : nullptr;
}

TrailMaker currentTrail(const TableView& table, const TableModel& model) {
  const QModelIndex current = table.currentIndex();
  TrailMaker trail = trailAt(current, model);
  for (int column = 0;
       trail == nullptr && current.isValid() && column < table.model()->columnCount(); ++column) {
    if (!table.isColumnHidden(column)) {
      trail = trailAt(current.siblingAtColumn(column), model);
    }
  }
  return trail;
}

/// Has a click on an explained text ask for what tells of it, and the pointer say so before.
class ExplainedTexts : public QObject {
 public:
  ExplainedTexts(TableView& table, const TableModel& model, Explain explain)
      : QObject(&table), table_(table), model_(model), explain_(std::move(explain)) {
    table_.viewport()->setMouseTracking(true);
    table_.viewport()->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::MouseMove) {
      const bool isOver = trailUnder(*static_cast<QMouseEvent*>(event)) != nullptr;
      if (isOver != std::exchange(isOver_, isOver)) {
        table_.viewport()->setCursor(isOver ? Qt::PointingHandCursor : Qt::ArrowCursor);
      }
    } else if (event->type() == QEvent::MouseButtonPress) {
      pressed_ = table_.indexAt(static_cast<QMouseEvent*>(event)->position().toPoint());
    } else if (event->type() == QEvent::MouseButtonRelease) {
      const auto& click = *static_cast<QMouseEvent*>(event);
      const bool isPlain = click.button() == Qt::LeftButton &&
                           click.modifiers() == Qt::NoModifier &&
                           pressed_ == table_.indexAt(click.position().toPoint());
      if (const TrailMaker trail = isPlain ? trailUnder(click) : nullptr) {
        // The table has selected the row by then, and takes the release as well.
        QMetaObject::invokeMethod(
            this, [this, trail] { explain_(trail); }, Qt::QueuedConnection);
      }
    }
    return false;
  }

 private:
  [[nodiscard]] TrailMaker trailUnder(const QMouseEvent& event) const {
    const QModelIndex index = table_.indexAt(event.position().toPoint());
    const auto* delegate =
        dynamic_cast<const AttributedTextDelegate*>(table_.itemDelegateForIndex(index));
    if (!index.isValid() || delegate == nullptr) {
      return nullptr;
    }
    const QVariant font = index.data(Qt::FontRole);
    const QRectF text = delegate->textArea(
        table_.visualRect(index), font.isValid() ? font.value<QFont>() : table_.font(), index);
    return text.contains(event.position()) ? trailAt(index, model_) : nullptr;
  }

  TableView& table_;
  const TableModel& model_;
  const Explain explain_;
  QPersistentModelIndex pressed_;
  bool isOver_ = false;
};

}  // namespace

QAction* addExplainCommand(TableView& table, const TableModel& model, Explain explain) {
  auto* action = new QAction(QStringLiteral("Explain This Number"), &table);
  action->setObjectName(QStringLiteral("explain"));
  action->setEnabled(false);
  table.addAction(action);
  if (table.contextMenuPolicy() == Qt::DefaultContextMenu) {
    table.setContextMenuPolicy(Qt::ActionsContextMenu);
  }
  new ExplainedTexts(table, model, explain);
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
