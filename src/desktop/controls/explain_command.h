// The command that asks how the figure of a cell came about.
#pragma once

#include <functional>

#include "presentation/controls/table_model.h"

class QAction;

namespace corvane::desktop {

class TableView;

/// Adds "Explain This Number" to the commands and the context menu of `table`, which shows `model`.
/// It tells of the current cell, or where that cannot be explained of the first one in its row that
/// can, so that nobody has to find the column by keys. A click on the text of such a cell, which is
/// underlined with dots, does the same. `explain` is handed what tells of it. Both must outlive the
/// table. The table owns the action.
QAction* addExplainCommand(TableView& table, const TableModel& model,
                           std::function<void(const TrailMaker&)> explain);

}  // namespace corvane::desktop
