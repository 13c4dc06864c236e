// The window with the user's settings.
#pragma once

#include <QDialog>

#include "presentation/frame/settings_view_controller.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace corvane::desktop {

/// Shows a SettingsViewController. There is nothing to confirm: what is changed is kept.
class SettingsDialog : public QDialog {
  Q_OBJECT

 public:
  /// The first two outlive this.
  SettingsDialog(AppDelegate& application, UserDefaults& defaults, QWidget* parent);

  /// Keeps an address that is being typed, where it is one.
  void done(int result) override;

 private:
  void layOut();
  void showState();

  SettingsViewController controller_;
  QCheckBox* localTimeZone_;
  QCheckBox* fetchedRows_;
  QCheckBox* confirmQuit_;
  QCheckBox* diagnosticTools_;
  QComboBox* priceAdjustment_;
  QLineEdit* service_;
  QPushButton* test_;
  QLabel* serviceNote_;
};

}  // namespace corvane::desktop
