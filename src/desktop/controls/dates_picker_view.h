// The control that chooses a range of days.
#pragma once

#include <QWidget>

#include "platform/async/subscription.h"
#include "presentation/controls/query_dates_picker.h"

class QComboBox;
class QDateEdit;
class QPushButton;

namespace corvane::desktop {

class FlowRow;

/// Shows a QueryDatesPicker: a menu of presets, two days and, where the screen wants it, a menu of
/// intervals. The picker must outlive this; this takes its changeHandler.
class DatesPickerView : public QWidget {
  Q_OBJECT

 public:
  explicit DatesPickerView(QueryDatesPicker& picker, QWidget* parent = nullptr);
  /// Puts `control` at the right end of the line, or below the days where the line has no room.
  void addAtEnd(QWidget* control);

 private:
  void update();
  void fillPresetMenu();

  QueryDatesPicker& picker_;
  QPushButton* presets_;
  QDateEdit* start_;
  QDateEdit* end_;
  QComboBox* interval_;
  FlowRow* row_;
  Subscription changes_;
};

}  // namespace corvane::desktop
