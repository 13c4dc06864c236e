// The sheet that says in which time zone the days of a workspace stand.
#pragma once

#include <QDialog>
#include <memory>

#include "presentation/frame/dates_time_zone_form.h"

class QComboBox;
class QLabel;
class QPushButton;
class QRadioButton;

namespace corvane::desktop {

/// Shows a DatesTimeZoneForm, which decides everything.
class DatesTimeZoneDialog : public QDialog {
  Q_OBJECT

 public:
  DatesTimeZoneDialog(std::unique_ptr<DatesTimeZoneForm> form, QWidget* parent);

  void accept() override;

 private:
  void layOut();
  void showState();

  std::unique_ptr<DatesTimeZoneForm> form_;
  QRadioButton* present_;
  QRadioButton* fixed_;
  QComboBox* zone_;
  QLabel* effect_;
  QPushButton* go_;
};

}  // namespace corvane::desktop
