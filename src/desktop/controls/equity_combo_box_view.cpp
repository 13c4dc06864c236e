#include "desktop/controls/equity_combo_box_view.h"

#include <QAbstractListModel>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QProgressBar>
#include <QScreen>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/controls/field_button.h"
#include "desktop/controls/window_shortcuts.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/clear_button.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int leastPopupWidth = 320;
constexpr int busyLineHeight = 3;

/// The rows of the popup.
class EquityRows : public QAbstractListModel {
 public:
  explicit EquityRows(const EquityComboBox& box, QObject* parent)
      : QAbstractListModel(parent), box_(box) {}

  void reload() {
    beginResetModel();
    rows_ = static_cast<int>(box_.numberOfRows());
    endResetModel();
  }
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : rows_;
  }
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override {
    return box_.isRowSelectable(static_cast<std::size_t>(index.row()))
               ? Qt::ItemIsEnabled | Qt::ItemIsSelectable
               : Qt::ItemIsEnabled;
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid() || row >= box_.numberOfRows()) {
      return {};
    }
    switch (role) {
      case AttributedTextDelegate::attributedTextRole:
        return QVariant::fromValue(box_.row(row));
      case Qt::DisplayRole:
      case Qt::ToolTipRole:
        return qtText(box_.row(row).plainText());
      default:
        return {};
    }
  }

 private:
  const EquityComboBox& box_;
  int rows_ = 0;
};

/// Rows a little apart.
class EquityRowDelegate : public AttributedTextDelegate {
 public:
  using AttributedTextDelegate::AttributedTextDelegate;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex& index) const override {
    return {AttributedTextDelegate::sizeHint(option, index).width(),
            QFontMetrics(option.font).height() + 2 * EquityComboBox::intercellSpacing};
  }
};

}  // namespace

/// A window of its own without a title, which takes neither the keyboard nor the mouse for itself.
class EquityPopup : public QFrame {
 public:
  EquityPopup(EquityComboBox& box, const QString& accessibleName, QWidget* parent)
      : QFrame(parent, Qt::ToolTip | Qt::FramelessWindowHint),
        box_(box),
        rows_(new EquityRows(box, this)),
        list_(new QListView),
        busy_(new QProgressBar) {
    setObjectName(QStringLiteral("equityPopup"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFrameShape(QFrame::StyledPanel);
    setAccessibleName(accessibleName + QStringLiteral(" matches"));
    list_->setAccessibleName(accessibleName + QStringLiteral(" matches"));
    list_->setModel(rows_);
    list_->setItemDelegate(new EquityRowDelegate(list_));
    list_->setUniformItemSizes(true);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setMinimumHeight(1);  // as low as its rows are
    list_->setMouseTracking(true);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    busy_->setRange(0, 0);
    busy_->setTextVisible(false);
    busy_->setFixedHeight(busyLineHeight);
    busy_->setAccessibleName(QStringLiteral("Searching"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(1, 1, 1, 1);
    column->setSpacing(0);
    column->addWidget(list_, 1);
    column->addWidget(busy_);
    connect(list_, &QListView::entered, this, [this](const QModelIndex& index) {
      box_.highlightRow(static_cast<std::size_t>(index.row()));
    });
    connect(list_, &QListView::clicked, this, [this](const QModelIndex& index) {
      box_.chooseRow(static_cast<std::size_t>(index.row()));
    });
  }

  /// Shows the rows below `field`, or above it where there is more room.
  void showAt(const QWidget& field) {
    rows_->reload();
    busy_->setVisible(box_.isSearching());
    const auto shown =
        static_cast<int>(std::min(box_.numberOfRows(), EquityComboBox::numberOfVisibleItems));
    const int margins = 2 + (box_.isSearching() ? busyLineHeight : 0);
    const int height = shown * list_->sizeHintForRow(0) + margins;
    const QRect room = field.screen()->availableGeometry();
    const int width = std::max(field.width(), leastPopupWidth);
    QPoint corner = field.mapToGlobal(QPoint(0, field.height() + 1));
    if (corner.y() + height > room.bottom()) {
      corner.setY(field.mapToGlobal(QPoint(0, 0)).y() - height - 1);
    }
    corner.setX(std::clamp(corner.x(), room.left(), std::max(room.left(), room.right() - width)));
    setGeometry(QRect(corner, QSize(width, height)));
    const auto row = box_.highlightedRow();
    const QModelIndex index = row ? rows_->index(static_cast<int>(*row), 0) : QModelIndex();
    list_->setCurrentIndex(index);
    if (index.isValid()) {
      list_->scrollTo(index);
    }
    show();
    raise();
  }

 private:
  EquityComboBox& box_;
  EquityRows* rows_;
  QListView* list_;
  QProgressBar* busy_;
};

EquityComboBoxView::EquityComboBoxView(EquityComboBox& box, const QString& accessibleName,
                                       QWidget* parent)
    : QWidget(parent),
      box_(box),
      field_(new QLineEdit),
      clear_(new QToolButton),
      arrow_(new QToolButton),
      popup_(new EquityPopup(box, accessibleName, this)) {
  setFocusProxy(field_);
  field_->setAccessibleName(accessibleName);
  field_->installEventFilter(this);
  new WindowShortcuts(*field_);
  clear_->setIcon(style()->standardIcon(QStyle::SP_LineEditClearButton));
  clear_->setAccessibleName(QStringLiteral("Clear ") + accessibleName.toLower());
  clear_->setToolTip(QStringLiteral("Clear the field"));
  arrow_->setArrowType(Qt::DownArrow);
  arrow_->setAccessibleName(accessibleName + QStringLiteral(" list"));
  arrow_->setToolTip(QStringLiteral("Show what was found"));
  putIntoField(*this, *field_, {clear_, arrow_});
  // Whatever changes the text is typing, also a paste and an assistive technology that sets it.
  connect(field_, &QLineEdit::textChanged, this, [this](const QString& text) {
    if (!isShowing_) {
      box_.changeText(utf8Text(text));
    }
  });
  connect(clear_, &QToolButton::clicked, this, [this] {
    field_->setFocus();
    field_->clear();
  });
  connect(arrow_, &QToolButton::clicked, this, [this] {
    field_->setFocus();
    box_.togglePopup();
  });
  changes_ = subscribe(box_.changeHandler, [this] { update(); });
  update();
}

void EquityComboBoxView::startEditing() {
  field_->setFocus(Qt::ShortcutFocusReason);
  field_->selectAll();
}

bool EquityComboBoxView::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
      if (watched == field_ && handleFieldKey(static_cast<QKeyEvent*>(event)->key())) {
        return true;
      }
      break;
    case QEvent::FocusOut:
      // A menu over the field, or another window, does not end the typing.
      if (watched == field_ && static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason &&
          static_cast<QFocusEvent*>(event)->reason() != Qt::ActiveWindowFocusReason) {
        box_.finishEditing();
      } else if (watched == field_) {
        box_.dismissPopup();
      }
      break;
    case QEvent::MouseButtonPress: {
      auto* pressed = qobject_cast<QWidget*>(watched);
      if (pressed != nullptr && !isAncestorOf(pressed) && pressed != this &&
          !popup_->isAncestorOf(pressed) && pressed != popup_) {
        box_.dismissPopup();
      }
      break;
    }
    case QEvent::Move:
    case QEvent::Resize:
      if (watched == window()) {
        box_.dismissPopup();
      }
      break;
    default:
      break;
  }
  return QWidget::eventFilter(watched, event);
}

void EquityComboBoxView::hideEvent(QHideEvent* event) {
  box_.dismissPopup();
  QWidget::hideEvent(event);
}

bool EquityComboBoxView::handleFieldKey(int key) {
  switch (key) {
    case Qt::Key_Down:
      box_.highlightNextRow();
      return true;
    case Qt::Key_Up:
      box_.highlightPreviousRow();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return box_.returnKey();
    case Qt::Key_Escape:
      return box_.dismissPopup();
    default:
      return false;
  }
}

void EquityComboBoxView::update() {
  isShowing_ = true;
  const QString text = qtText(box_.text());
  if (field_->text() != text) {
    field_->setText(text);
    field_->setCursorPosition(0);
  }
  field_->setPlaceholderText(qtText(box_.placeholder()));
  field_->setToolTip(text);
  clear_->setVisible(!text.isEmpty() && box_.isEnabled());
  setEnabled(box_.isEnabled());
  isShowing_ = false;
  updatePopup();
}

void EquityComboBoxView::updatePopup() {
  if (box_.isPopupOpen() && isVisible()) {
    if (!popup_->isVisible()) {
      // While the popup is open, a click anywhere else closes it.
      qApp->installEventFilter(this);
    }
    popup_->showAt(*field_);
  } else if (popup_->isVisible()) {
    popup_->hide();
    qApp->removeEventFilter(this);
  }
  const QString said = qtText(box_.announcement());
  if (field_->accessibleDescription() != said) {
    field_->setAccessibleDescription(said);
    QAccessibleEvent changed(field_, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&changed);
  }
}

}  // namespace corvane::desktop
