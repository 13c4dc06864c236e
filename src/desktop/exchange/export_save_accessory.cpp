#include "desktop/exchange/export_save_accessory.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include "desktop/look/check_mark.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

ExportSaveAccessory::ExportSaveAccessory(
    std::shared_ptr<ExportSaveAccessoryViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      commas_(new QRadioButton(QStringLiteral("&Commas"))),
      tabs_(new QRadioButton(QStringLiteral("&Tabs"))),
      header_(new QCheckBox(QStringLiteral("Include &header row"))) {
  auto* fields = new QPushButton(QStringLiteral("Configure &Fields…"));
  fields->setAutoDefault(false);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, spacing::narrow, 0, 0);
  row->setSpacing(spacing::medium);
  row->addWidget(new QLabel(QStringLiteral("Delimited by:")));
  row->addWidget(commas_);
  row->addWidget(tabs_);
  row->addSpacing(spacing::wide);
  row->addWidget(header_);
  row->addStretch(1);
  row->addWidget(fields);

  whenChosen(*commas_, this, [this] { controller_->delimitByCommas(); });
  whenChosen(*tabs_, this, [this] { controller_->delimitByTabs(); });
  connect(header_, &QCheckBox::toggled, this,
          [this](bool isOn) { controller_->setIncludesHeaderRow(isOn); });
  connect(fields, &QPushButton::clicked, this, [this] { controller_->configureFields(); });
  changes_ = subscribe(controller_->viewDidUpdate, [this] { update(); });
  update();
}

void ExportSaveAccessory::update() {
  showChecked(*commas_, controller_->delimitByCommasButton.isOn);
  showChecked(*tabs_, controller_->delimitByTabsButton.isOn);
  showChecked(*header_, controller_->headerRowCheckboxButton.isOn);
}

}  // namespace corvane::desktop
