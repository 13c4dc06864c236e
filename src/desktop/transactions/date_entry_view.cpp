#include "desktop/transactions/date_entry_view.h"

#include <QCalendarWidget>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QWidgetAction>

#include "desktop/controls/field_button.h"
#include "desktop/look/qt_text.h"

namespace corvane::desktop {
namespace {

QDate calendarDate(const YearMonthDay& day) {
  return {day.year, day.month, day.day};
}

}  // namespace

DateEntryView::DateEntryView(const DateEntry& entry, Change change)
    : entry_(entry), change_(std::move(change)), field_(new QLineEdit), calendar_(new QToolButton) {
  setFocusProxy(field_);
  field_->installEventFilter(this);
  calendar_->setArrowType(Qt::DownArrow);
  calendar_->setToolTip(QStringLiteral("Choose a day in a calendar (Alt+Down)"));
  putIntoField(*this, *field_, {calendar_});
  connect(field_, &QLineEdit::textChanged, this, [this](const QString& text) {
    if (!isShowing_) {
      change_([&](DateEntry& date) { date.setText(utf8Text(text)); });
    }
  });
  connect(field_, &QLineEdit::editingFinished, this,
          [this] { change_([](DateEntry& date) { date.endEditing(); }); });
  connect(calendar_, &QToolButton::clicked, this, &DateEntryView::openCalendar);
}

void DateEntryView::update() {
  isShowing_ = true;
  if (const QString shown = qtText(entry_.text()); field_->text() != shown) {
    field_->setText(shown);
  }
  field_->setEnabled(entry_.isEnabled);
  calendar_->setEnabled(entry_.isEnabled);
  calendar_->setAccessibleName(field_->accessibleName() + QStringLiteral(" calendar"));
  isShowing_ = false;
}

bool DateEntryView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const auto* press = static_cast<QKeyEvent*>(event);
    if (handleFieldKey(press->key(), press->modifiers() & ~Qt::KeypadModifier)) {
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

bool DateEntryView::handleFieldKey(int key, Qt::KeyboardModifiers modifiers) {
  if (modifiers == Qt::AltModifier && key == Qt::Key_Down) {
    openCalendar();
    return true;
  }
  if (modifiers != Qt::NoModifier || (key != Qt::Key_Up && key != Qt::Key_Down)) {
    return false;
  }
  change_([key](DateEntry& date) { date.step(key == Qt::Key_Up ? 1 : -1); });
  field_->selectAll();
  return true;
}

void DateEntryView::openCalendar() {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->setAccessibleName(calendar_->accessibleName());
  auto* days = new QCalendarWidget(menu);
  days->setAccessibleName(calendar_->accessibleName());
  days->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
  if (const auto minimum = entry_.minimumDay()) {
    days->setMinimumDate(calendarDate(*minimum));
  }
  days->setSelectedDate(calendarDate(entry_.day()));
  auto* item = new QWidgetAction(menu);
  item->setDefaultWidget(days);
  menu->addAction(item);
  const auto choose = [this, menu](const QDate& day) {
    change_([&](DateEntry& date) { date.setDay({day.year(), day.month(), day.day()}); });
    menu->close();
  };
  connect(days, &QCalendarWidget::clicked, this, choose);
  connect(days, &QCalendarWidget::activated, this, choose);
  menu->popup(mapToGlobal(QPoint(0, height())));
  days->setFocus();
}

}  // namespace corvane::desktop
