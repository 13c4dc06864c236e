#include "desktop/frame/command_palette_dialog.h"

#include <QAbstractListModel>
#include <QAction>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/look/clear_button.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::desktop {
namespace {

constexpr int paletteWidth = 620;
constexpr int paletteHeight = 440;
constexpr int rowsOfAPage = 10;

/// A command's text without the marks of keys.
QString plainTitle(const QString& text) {
  QString title = text.section(QLatin1Char('\t'), 0, 0);
  title.replace(QStringLiteral("&&"), QString(QChar(1)));
  title.remove(QLatin1Char('&'));
  return title.replace(QChar(1), QLatin1Char('&')).trimmed();
}

/// The keys of a command. Some commands only name theirs, behind a tab, since it is the field with
/// the keyboard that handles them.
QString shortcutText(const QAction& action) {
  if (action.shortcut().isEmpty()) {
    return action.text().section(QLatin1Char('\t'), 1);
  }
  return action.shortcut().toString(QKeySequence::NativeText);
}

void appendCommands(std::vector<CommandPaletteEntry>& entries, QMenu& menu, const QString& path,
                    const std::vector<const QAction*>& except) {
  // Menus bring themselves in line when they are about to be seen.
  emit menu.aboutToShow();
  for (QAction* action : menu.actions()) {
    if (!action->isVisible() || action->isSeparator() ||
        std::ranges::find(except, action) != except.end()) {
      continue;
    }
    if (action->menu() != nullptr) {
      if (action->isEnabled()) {
        appendCommands(entries, *action->menu(),
                       path + QStringLiteral(" › ") + plainTitle(action->text()), except);
      }
      continue;
    }
    entries.push_back({.title = utf8Text(plainTitle(action->text())),
                       .context = utf8Text(path),
                       .shortcut = utf8Text(shortcutText(*action)),
                       .isEnabled = action->isEnabled(),
                       .isOn = action->isCheckable() && action->isChecked(),
                       .perform = [command = QPointer(action)] {
                         if (command) {
                           command->trigger();
                         }
                       }});
  }
}

/// Draws a row: the title with the letters that were found, what it is, and its keys at the end.
class PaletteRowDelegate : public QStyledItemDelegate {
 public:
  PaletteRowDelegate(const CommandPalette& palette, QObject* parent)
      : QStyledItemDelegate(parent), palette_(palette) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const override {
    return {200, QFontMetrics(option.font).height() + 2 * spacing::narrow};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    const auto& rows = palette_.rows();
    if (static_cast<std::size_t>(index.row()) >= rows.size()) {
      return;
    }
    const CommandPalette::Row& row = rows[static_cast<std::size_t>(index.row())];
    painter->save();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    if (isSelected) {
      painter->fillRect(option.rect, option.palette.color(QPalette::Highlight));
    }
    const QColor strong = isSelected             ? option.palette.color(QPalette::HighlightedText)
                          : row.entry->isEnabled ? theme::colour(Colour::Name::label)
                                                 : theme::colour(Colour::Name::tertiaryLabel);
    const QColor weak = isSelected ? strong : theme::colour(Colour::Name::secondaryLabel);
    QRect inner = option.rect.adjusted(spacing::medium, 0, -spacing::medium, 0);
    painter->setPen(weak);
    painter->setFont(theme::font(0.92));
    const QString end = qtText(row.entry->shortcut);
    painter->drawText(inner, Qt::AlignRight | Qt::AlignVCenter, end);
    inner.setRight(inner.right() - painter->fontMetrics().horizontalAdvance(end) -
                   (end.isEmpty() ? 0 : spacing::wide));
    painter->setPen(strong);
    const int titleWidth = paintTitle(*painter, inner, row);
    painter->setPen(weak);
    painter->setFont(theme::font(0.92));
    inner.setLeft(inner.left() + titleWidth + spacing::medium);
    QString what = qtText(row.entry->context);
    if (!row.entry->isEnabled) {
      what += QStringLiteral(" · not available now");
    }
    painter->drawText(inner, Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(what, Qt::ElideRight, inner.width()));
    painter->restore();
  }

 private:
  /// The title, as far as there is room; the letters found are bold and underlined, so that their
  /// weight is not the only sign. Returns its width.
  static int paintTitle(QPainter& painter, const QRect& box, const CommandPalette::Row& row) {
    const QString mark = row.entry->isOn ? QStringLiteral("✓ ") : QString();
    const auto characters = qtText(row.entry->title).toUcs4();
    int left = box.left();
    const auto draw = [&](const QString& text, bool isFound) {
      QFont font = theme::font(1, isFound ? QFont::Bold : QFont::Normal);
      font.setUnderline(isFound);
      painter.setFont(font);
      const int width = painter.fontMetrics().horizontalAdvance(text);
      if (left + width <= box.right()) {
        painter.drawText(QRect(left, box.top(), width + 1, box.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, text);
      }
      left += width;
    };
    draw(mark, false);
    for (qsizetype i = 0, next = 0; i < characters.size(); i = next) {
      // Stretches of one look are drawn at once, so that letters join as they should.
      const auto isFound = [&](qsizetype place) {
        return std::ranges::binary_search(row.foundInTitle, static_cast<std::size_t>(place));
      };
      for (next = i + 1; next < characters.size() && isFound(next) == isFound(i);) {
        ++next;
      }
      draw(QString::fromUcs4(reinterpret_cast<const char32_t*>(&characters[i]), next - i),
           isFound(i));
    }
    return left - box.left();
  }

  const CommandPalette& palette_;
};

}  // namespace

class CommandPaletteDialog::RowModel : public QAbstractListModel {
 public:
  explicit RowModel(const CommandPalette& palette) : palette_(palette) {}

  int rowCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : static_cast<int>(palette_.rows().size());
  }
  QVariant data(const QModelIndex& index, int role) const override {
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid() || row >= palette_.rows().size()) {
      return {};
    }
    switch (role) {
      case Qt::DisplayRole:
        return qtText(palette_.rows()[row].entry->title);
      case Qt::AccessibleTextRole:
        return qtText(palette_.accessibleText(row));
      default:
        return {};
    }
  }
  void reset() {
    beginResetModel();
    endResetModel();
  }

 private:
  const CommandPalette& palette_;
};

std::vector<CommandPaletteEntry> CommandPaletteDialog::entriesOf(
    const QMenuBar& menus, const std::vector<const QAction*>& except) {
  std::vector<CommandPaletteEntry> entries;
  for (QAction* top : menus.actions()) {
    if (top->menu() != nullptr && top->isVisible()) {
      appendCommands(entries, *top->menu(), plainTitle(top->text()), except);
    }
  }
  return entries;
}

CommandPaletteDialog* CommandPaletteDialog::open(QWidget* window, Contents contents,
                                                 std::vector<CommandPaletteEntry> entries) {
  if (contents == Contents::shortcuts) {
    std::erase_if(entries, [](const auto& entry) { return entry.shortcut.empty(); });
  }
  auto* dialog = new CommandPaletteDialog(window, contents, std::move(entries));
  static_cast<QDialog*>(dialog)->open();
  return dialog;
}

CommandPaletteDialog::CommandPaletteDialog(QWidget* window, Contents contents,
                                           std::vector<CommandPaletteEntry> entries)
    : QDialog(window),
      query_(new QLineEdit),
      list_(new QListView),
      status_(new QLabel),
      rows_(std::make_unique<RowModel>(palette_)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  palette_.setEntries(std::move(entries));
  layOut(contents);
  connect(query_, &QLineEdit::textChanged, this, [this](const QString& text) {
    palette_.setQuery(utf8Text(text));
    showRows();
  });
  connect(list_, &QListView::clicked, this, [this](const QModelIndex& index) {
    palette_.selectRow(static_cast<std::size_t>(index.row()));
    showSelection();
    choose();
  });
  query_->installEventFilter(this);
  showRows();
}

CommandPaletteDialog::~CommandPaletteDialog() = default;

void CommandPaletteDialog::layOut(Contents contents) {
  const bool isListOfShortcuts = contents == Contents::shortcuts;
  setWindowTitle(isListOfShortcuts ? QStringLiteral("Keyboard Shortcuts")
                                   : QStringLiteral("Command Palette"));
  query_->setPlaceholderText(isListOfShortcuts
                                 ? QStringLiteral("Find a command that has a shortcut")
                                 : QStringLiteral("Find a command, portfolio or equity"));
  query_->setAccessibleName(query_->placeholderText());
  addClearButton(*query_);
  list_->setAccessibleName(isListOfShortcuts ? QStringLiteral("Shortcuts")
                                             : QStringLiteral("What fits"));
  list_->setModel(rows_.get());
  list_->setItemDelegate(new PaletteRowDelegate(palette_, list_));
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setUniformItemSizes(true);
  list_->setFrameShape(QFrame::NoFrame);
  // The field keeps the keyboard, and tells a screen reader which row is selected.
  list_->setFocusPolicy(Qt::NoFocus);
  status_->setForegroundRole(QPalette::PlaceholderText);
  status_->setFont(theme::font(0.92));
  status_->setText(QStringLiteral("↑ ↓ to choose, Return to run or show, Escape to close"));

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::medium, spacing::medium, spacing::medium, spacing::narrow);
  column->setSpacing(spacing::narrow);
  column->addWidget(query_);
  column->addWidget(list_, 1);
  column->addWidget(status_);
  const QWidget& window = *parentWidget();
  resize(QSize(paletteWidth, paletteHeight).boundedTo(window.size()));
  move(window.mapToGlobal(QPoint((window.width() - width()) / 2, window.height() / 10)));
}

void CommandPaletteDialog::showRows() {
  rows_->reset();
  showSelection();
}

void CommandPaletteDialog::showSelection() {
  const auto row = palette_.selectedRow();
  list_->setCurrentIndex(row ? rows_->index(static_cast<int>(*row)) : QModelIndex());
  query_->setAccessibleDescription(qtText(palette_.status()));
}

bool CommandPaletteDialog::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress) {
    return QDialog::eventFilter(watched, event);
  }
  const auto move = [this](std::ptrdiff_t distance) {
    palette_.moveSelection(distance);
    showSelection();
    return true;
  };
  switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Down:
      return move(1);
    case Qt::Key_Up:
      return move(-1);
    case Qt::Key_PageDown:
      return move(rowsOfAPage);
    case Qt::Key_PageUp:
      return move(-rowsOfAPage);
    case Qt::Key_Return:
    case Qt::Key_Enter:
      choose();
      return true;
    default:
      return QDialog::eventFilter(watched, event);
  }
}

void CommandPaletteDialog::choose() {
  if (auto perform = palette_.chosen()) {
    accept();
    // A command may open a sheet of its own, or act on the field with the keyboard.
    DispatchQueue::main()->async(std::move(*perform));
  }
}

}  // namespace corvane::desktop
