// The box in which commands, portfolios and equities are found by a few letters.
#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <vector>

#include "presentation/frame/command_palette.h"

class QLabel;
class QLineEdit;
class QListView;
class QMenuBar;

namespace corvane::desktop {

/// Shows a CommandPalette: a field that keeps the keyboard, and below it the rows that fit, among
/// which the arrows move. Return and a click run the row, Escape closes. What is chosen runs after
/// the box has closed, with the keyboard where it was before.
class CommandPaletteDialog : public QDialog {
  Q_OBJECT

 public:
  ~CommandPaletteDialog() override;

  enum class Contents { everything, shortcuts };

  /// Opens the box on `window` with `entries`, at the top of it, and returns.
  static CommandPaletteDialog* open(QWidget* window, Contents contents,
                                    std::vector<CommandPaletteEntry> entries);

  /// The commands of `menus` that are visible, as they are at this moment, in their order. Those of
  /// `except` are left out.
  [[nodiscard]] static std::vector<CommandPaletteEntry> entriesOf(
      const QMenuBar& menus, const std::vector<const QAction*>& except);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  class RowModel;

  CommandPaletteDialog(QWidget* window, Contents contents,
                       std::vector<CommandPaletteEntry> entries);
  void layOut(Contents contents);
  void showRows();
  void showSelection();
  void choose();

  CommandPalette palette_;
  QLineEdit* query_;
  QListView* list_;
  QLabel* status_;
  std::unique_ptr<RowModel> rows_;
};

}  // namespace corvane::desktop
