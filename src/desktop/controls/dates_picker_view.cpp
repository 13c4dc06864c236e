#include "desktop/controls/dates_picker_view.h"

#include <QComboBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStandardItemModel>

#include "desktop/controls/flow_row.h"
#include "desktop/controls/window_shortcuts.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane::desktop {
namespace {

QDate qtDate(const YearMonthDay& day) {
  return {day.year, day.month, day.day};
}

YearMonthDay yearMonthDay(const QDate& date) {
  return {date.year(), date.month(), date.day()};
}

/// As tables and forms write days, in Qt's letters: a pattern of Unicode has one letter for a year
/// of four digits, and another one for a month that stands alone.
QString dayFormat() {
  const QString pattern =
      qtText(DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle}.pattern());
  QString format;
  bool isQuoted = false;
  for (qsizetype i = 0; i < pattern.size(); ++i) {
    isQuoted = isQuoted != (pattern[i] == QLatin1Char('\''));
    if (!isQuoted && pattern[i] == QLatin1Char('y')) {
      while (i + 1 < pattern.size() && pattern[i + 1] == QLatin1Char('y')) {
        ++i;
      }
      format += QStringLiteral("yyyy");
    } else {
      format += !isQuoted && pattern[i] == QLatin1Char('L') ? QLatin1Char('M') : pattern[i];
    }
  }
  return format;
}

QDateEdit* makeDateEdit(const QString& accessibleName) {
  auto* edit = new QDateEdit;
  edit->setCalendarPopup(true);
  // A day is taken when the user is done with it, not after each digit.
  edit->setKeyboardTracking(false);
  new WindowShortcuts(*edit);
  edit->setAccessibleName(accessibleName);
  edit->setToolTip(accessibleName);
  edit->setDisplayFormat(dayFormat());
  return edit;
}

}  // namespace

DatesPickerView::DatesPickerView(QueryDatesPicker& picker, QWidget* parent)
    : QWidget(parent),
      picker_(picker),
      presets_(new QPushButton),
      start_(makeDateEdit(QStringLiteral("First day"))),
      end_(makeDateEdit(QStringLiteral("Last day"))),
      interval_(new QComboBox),
      row_(new FlowRow(this)) {
  presets_->setMenu(new QMenu(presets_));
  connect(presets_->menu(), &QMenu::aboutToShow, this, &DatesPickerView::fillPresetMenu);
  interval_->setAccessibleName(QStringLiteral("Interval"));
  for (const auto& [interval, label] : QueryDatesPicker::intervalLabels) {
    interval_->addItem(qtText(label));
  }

  // The two days stay together where they do not fit beside the rest.
  auto* range = new QWidget;
  auto* days = new QHBoxLayout(range);
  days->setContentsMargins(0, 0, 0, 0);
  days->setSpacing(spacing::narrow);
  days->addWidget(start_);
  days->addWidget(new QLabel(QStringLiteral("–")));
  days->addWidget(end_);
  row_->addWidget(presets_);
  row_->addWidget(range);
  row_->addWidget(interval_);

  connect(start_, &QDateEdit::dateChanged, this,
          [this](const QDate& date) { picker_.chooseStartDate(yearMonthDay(date)); });
  connect(end_, &QDateEdit::dateChanged, this,
          [this](const QDate& date) { picker_.chooseEndDate(yearMonthDay(date)); });
  connect(interval_, &QComboBox::activated, this, [this](int index) {
    picker_.chooseInterval(QueryDatesPicker::intervalLabels[static_cast<std::size_t>(index)].first);
  });
  changes_ = subscribe(picker_.changeHandler, [this] { update(); });
  update();
}

void DatesPickerView::addAtEnd(QWidget* control) {
  row_->addStretch();
  row_->addWidget(control);
}

void DatesPickerView::fillPresetMenu() {
  QMenu* menu = presets_->menu();
  menu->clear();
  const QString shown = qtText(picker_.presetTitle());
  for (std::size_t i = 0; i < picker_.presets().size(); ++i) {
    const QueryDatesPicker::Preset& preset = picker_.presets()[i];
    if (preset.isSeparator()) {
      menu->addSeparator();
      continue;
    }
    QAction* action = menu->addAction(qtText(preset.label));
    action->setCheckable(true);
    action->setChecked(action->text() == shown);
    connect(action, &QAction::triggered, this, [this, i] { picker_.choosePreset(i); });
  }
}

void DatesPickerView::update() {
  const QSignalBlocker blockStart(start_);
  const QSignalBlocker blockEnd(end_);
  const auto startLimits = picker_.startDateLimits();
  const auto endLimits = picker_.endDateLimits();
  start_->setDateRange(qtDate(startLimits.lower()), qtDate(startLimits.upper()));
  end_->setDateRange(qtDate(endLimits.lower()), qtDate(endLimits.upper()));
  start_->setDate(qtDate(picker_.startDate()));
  end_->setDate(qtDate(picker_.endDate()));

  presets_->setVisible(!picker_.isPresetMenuHidden());
  presets_->setText(qtText(picker_.presetTitle()));
  presets_->setAccessibleName(QStringLiteral("Range: ") + qtText(picker_.presetTitle()));

  interval_->setVisible(picker_.allowsIntervalSelection());
  auto* items = qobject_cast<QStandardItemModel*>(interval_->model());
  for (std::size_t i = 0; i < QueryDatesPicker::intervalLabels.size(); ++i) {
    items->item(static_cast<int>(i))->setEnabled(picker_.isIntervalEnabled(i));
    if (QueryDatesPicker::intervalLabels[i].first == picker_.selectedInterval()) {
      interval_->setCurrentIndex(static_cast<int>(i));
    }
  }
}

}  // namespace corvane::desktop
