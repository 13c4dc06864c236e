// The window with the user's settings.
#pragma once

#include <QDialog>

#include "presentation/frame/settings_view_controller.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
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

  /// Keeps a folder and an address that are being typed, where they are such.
  void done(int result) override;

 private:
  void layOut();
  QFormLayout* makeWorkspaces();
  void chooseFolder();
  void connectFields();
  void showState();

  SettingsViewController controller_;
  QCheckBox* localTimeZone_;
  QCheckBox* fetchedRows_;
  QCheckBox* confirmQuit_;
  QCheckBox* diagnosticTools_;
  QComboBox* priceAdjustment_;
  QLineEdit* folder_;
  QPushButton* chooseFolder_;
  QLabel* folderNote_;
  QLineEdit* service_;
  QPushButton* test_;
  QLabel* serviceNote_;
};

}  // namespace corvane::desktop
