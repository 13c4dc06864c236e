// The box in which one looks for an equity, as Qt shows it.
#pragma once

#include <QWidget>

#include "platform/async/subscription.h"
#include "presentation/controls/equity_combo_box.h"

class QLineEdit;
class QListView;
class QToolButton;

namespace corvane::desktop {

class EquityPopup;

/// Shows an EquityComboBox: a field with a button, and below it the list of what was found, which
/// never takes the keyboard away from the field. Down and Up move through the list, Return chooses,
/// Escape closes; keys for which the box has no use go on to the window. The box must outlive this;
/// this takes its changeHandler.
class EquityComboBoxView : public QWidget {
  Q_OBJECT

 public:
  EquityComboBoxView(EquityComboBox& box, const QString& accessibleName, QWidget* parent = nullptr);

  /// The field, for labels and the order of tabs.
  [[nodiscard]] QLineEdit& field() { return *field_; }
  /// Puts the keyboard into the field, with all of its text selected.
  void startEditing();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  bool handleFieldKey(int key);
  void update();
  void updatePopup();

  EquityComboBox& box_;
  QLineEdit* field_;
  QToolButton* clear_;
  QToolButton* arrow_;
  EquityPopup* popup_;
  bool isShowing_ = false;
  Subscription changes_;
};

}  // namespace corvane::desktop
