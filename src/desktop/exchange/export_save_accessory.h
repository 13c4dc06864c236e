// The settings of a file in the panel that asks where to save it.
#pragma once

#include <QWidget>
#include <memory>

#include "exchange/panels/export_save_accessory_view_controller.h"
#include "platform/async/subscription.h"

class QCheckBox;
class QRadioButton;

namespace corvane::desktop {

/// Shows an ExportSaveAccessoryViewController.
class ExportSaveAccessory : public QWidget {
 public:
  explicit ExportSaveAccessory(std::shared_ptr<ExportSaveAccessoryViewController> controller,
                               QWidget* parent = nullptr);

 private:
  void update();

  std::shared_ptr<ExportSaveAccessoryViewController> controller_;
  QRadioButton* commas_;
  QRadioButton* tabs_;
  QCheckBox* header_;
  Subscription changes_;
};

}  // namespace corvane::desktop
