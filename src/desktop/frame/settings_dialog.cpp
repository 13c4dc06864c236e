#include "desktop/frame/settings_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "desktop/controls/fitting_scroll_area.h"
#include "desktop/look/check_mark.h"
#include "desktop/look/documents_folder.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int lettersOfSettings = 57;

/// The words below a setting, smaller and as wide as the window.
QLabel* makeNote(const QString& text) {
  auto* note = new QLabel(text);
  note->setWordWrap(true);
  note->setFont(theme::font(0.92));
  note->setForegroundRole(QPalette::PlaceholderText);
  return note;
}

QLabel* makeSection(const QString& text) {
  auto* section = new QLabel(text);
  section->setFont(theme::font(1, QFont::DemiBold));
  return section;
}

/// `box` with what it means below it, which is also what a screen reader says of it.
QVBoxLayout* explained(QCheckBox* box, const QString& meaning) {
  auto* column = new QVBoxLayout;
  column->setSpacing(2);
  column->addWidget(box);
  auto* note = makeNote(meaning);
  note->setIndent(box->style()->pixelMetric(QStyle::PM_IndicatorWidth) + spacing::narrow);
  column->addWidget(note);
  box->setAccessibleDescription(meaning);
  return column;
}

}  // namespace

SettingsDialog::SettingsDialog(AppDelegate& application, UserDefaults& defaults, QWidget* parent)
    : QDialog(parent),
      controller_(application, defaults),
      localTimeZone_(new QCheckBox(qtText(controller_.localTimeZoneButton.title))),
      fetchedRows_(new QCheckBox(qtText(controller_.fetchedRowsButton.title))),
      confirmQuit_(new QCheckBox(qtText(controller_.confirmQuitButton.title))),
      diagnosticTools_(new QCheckBox(qtText(controller_.diagnosticToolsButton.title))),
      priceAdjustment_(new QComboBox),
      folder_(new QLineEdit),
      chooseFolder_(new QPushButton(QStringLiteral("Choose…"))),
      folderNote_(makeNote({})),
      service_(new QLineEdit),
      test_(new QPushButton(qtText(controller_.testServiceButton.title))),
      serviceNote_(makeNote({})) {
  setWindowTitle(QStringLiteral("Settings"));
  setAttribute(Qt::WA_DeleteOnClose);
  layOut();
  for (const auto& [box, set] :
       {std::pair{localTimeZone_, &SettingsViewController::setLocalTimeZone},
        std::pair{fetchedRows_, &SettingsViewController::setFetchedRows},
        std::pair{confirmQuit_, &SettingsViewController::setConfirmQuit},
        std::pair{diagnosticTools_, &SettingsViewController::setDiagnosticTools}}) {
    connect(box, &QCheckBox::toggled, this,
            [this, perform = set](bool isOn) { (controller_.*perform)(isOn); });
  }
  connect(priceAdjustment_, &QComboBox::activated, this, [this](int index) {
    controller_.choosePriceAdjustment(static_cast<std::size_t>(index));
  });
  connectFields();
  controller_.changeHandler = [this] { showState(); };
  showState();
}

void SettingsDialog::connectFields() {
  connect(folder_, &QLineEdit::textEdited, this, [this](const QString& text) {
    controller_.typeWorkspacesFolder(utf8Text(text));
    showState();
  });
  connect(folder_, &QLineEdit::editingFinished, this, [this] {
    controller_.keepWorkspacesFolder();
    showState();
  });
  connect(chooseFolder_, &QPushButton::clicked, this, &SettingsDialog::chooseFolder);
  connect(service_, &QLineEdit::textEdited, this, [this](const QString& text) {
    controller_.typeService(utf8Text(text));
    showState();
  });
  connect(service_, &QLineEdit::editingFinished, this, [this] {
    controller_.keepService();
    showState();
  });
  connect(test_, &QPushButton::clicked, this, [this] {
    controller_.testServiceAction();
    showState();
  });
}

void SettingsDialog::chooseFolder() {
  const QString start = folder_->text().isEmpty() ? documentsFolder() : folder_->text();
  const QString chosen =
      QFileDialog::getExistingDirectory(this, QStringLiteral("Folder of Workspaces"), start);
  if (!chosen.isEmpty()) {
    controller_.typeWorkspacesFolder(utf8Text(chosen));
    controller_.keepWorkspacesFolder();
    showState();
  }
}

QFormLayout* SettingsDialog::makeWorkspaces() {
  folder_->setPlaceholderText(qtText(controller_.workspacesFolderField.placeholder));
  folder_->setAccessibleName(QStringLiteral("Folder of workspaces"));
  chooseFolder_->setAccessibleName(QStringLiteral("Choose the folder of workspaces"));
  chooseFolder_->setAutoDefault(false);
  folderNote_->setTextFormat(Qt::PlainText);
  auto* row = new QHBoxLayout;
  row->setSpacing(spacing::narrow);
  row->addWidget(folder_, 1);
  row->addWidget(chooseFolder_);
  auto* label = new QLabel(QStringLiteral("&Workspaces:"));
  label->setBuddy(folder_);
  auto* form = new QFormLayout;
  form->setSpacing(spacing::narrow);
  form->addRow(label, row);
  form->addRow(QString(), folderNote_);
  return form;
}

void SettingsDialog::layOut() {
  for (const std::string& title : controller_.priceAdjustmentPopUpButton.titles()) {
    priceAdjustment_->addItem(qtText(title));
  }
  priceAdjustment_->setAccessibleName(QStringLiteral("Prices"));
  service_->setPlaceholderText(qtText(controller_.serviceField.placeholder));
  service_->setAccessibleName(QStringLiteral("Price service"));
  test_->setAccessibleName(QStringLiteral("Test the price service"));
  test_->setAutoDefault(false);

  auto* service = new QHBoxLayout;
  service->setSpacing(spacing::narrow);
  service->addWidget(service_, 1);
  service->addWidget(test_);
  auto* prices = new QFormLayout;
  prices->setSpacing(spacing::narrow);
  prices->addRow(QStringLiteral("&Prices:"), priceAdjustment_);
  auto* serviceLabel = new QLabel(QStringLiteral("Price &service:"));
  serviceLabel->setBuddy(service_);
  prices->addRow(serviceLabel, service);
  prices->addRow(QString(), serviceNote_);
  // Room for the longest of its texts, so that nothing jumps.
  serviceNote_->setMinimumHeight(3 * QFontMetrics(serviceNote_->font()).lineSpacing());
  serviceNote_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  serviceNote_->setTextFormat(Qt::PlainText);

  auto* closing = new QPushButton(QStringLiteral("Close"));
  closing->setAutoDefault(false);
  connect(closing, &QPushButton::clicked, this, &QDialog::accept);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(closing);

  auto* content = new QWidget;
  content->setFixedWidth(theme::widthOfLetters(lettersOfSettings));
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(spacing::medium);
  column->addWidget(makeSection(QStringLiteral("Dates and tables")));
  column->addLayout(explained(
      localTimeZone_,
      QStringLiteral(
          "Times of the market are those of your own clock, not of the exchange. In which "
          "time zone the days of transactions stand, each workspace says by itself: "
          "Edit › Time Zone of Days.")));
  column->addLayout(explained(
      fetchedRows_,
      QStringLiteral("Rows of the price history that were just fetched have a tint of brown.")));
  column->addSpacing(spacing::narrow);
  column->addWidget(makeSection(QStringLiteral("Market data")));
  column->addLayout(prices);
  column->addSpacing(spacing::narrow);
  column->addWidget(makeSection(QStringLiteral("Program")));
  column->addLayout(makeWorkspaces());
  column->addWidget(confirmQuit_);
  column->addLayout(explained(
      diagnosticTools_,
      QStringLiteral("Offers the source of prices, the log of what is asked of the network, and "
                     "portfolios with random transactions.")));

  const int around =
      closing->sizeHint().height() + spacing::section + spacing::wide + spacing::medium;
  auto* sheet = new QVBoxLayout(this);
  sheet->setContentsMargins(spacing::section, spacing::section, spacing::section, spacing::wide);
  sheet->setSpacing(spacing::medium);
  sheet->addWidget(new FittingScrollArea(content, around));
  sheet->addLayout(buttons);
  sheet->setSizeConstraint(QLayout::SetFixedSize);
}

void SettingsDialog::showState() {
  showChecked(*localTimeZone_, controller_.localTimeZoneButton.isOn);
  showChecked(*fetchedRows_, controller_.fetchedRowsButton.isOn);
  showChecked(*confirmQuit_, controller_.confirmQuitButton.isOn);
  showChecked(*diagnosticTools_, controller_.diagnosticToolsButton.isOn);
  priceAdjustment_->setCurrentIndex(
      static_cast<int>(controller_.priceAdjustmentPopUpButton.selectedIndex.value_or(0)));
  const TextField& folder = controller_.workspacesFolderField;
  if (const QString text = qtText(folder.text); folder_->text() != text) {
    folder_->setText(text);
  }
  folderNote_->setText(folder.error.empty()
                           ? QStringLiteral("Where workspaces are opened and saved that have no "
                                            "folder of their own yet.")
                           : QStringLiteral("⚠ ") + qtText(folder.error));
  folder_->setAccessibleDescription(folderNote_->text());
  if (const QString text = qtText(controller_.serviceField.text); service_->text() != text) {
    service_->setText(text);
  }
  test_->setEnabled(controller_.testServiceButton.isEnabled);
  const std::string& error = controller_.serviceField.error;
  const std::string& result = controller_.testResultLabel.text;
  serviceNote_->setText(!error.empty() ? QStringLiteral("⚠ ") + qtText(error)
                        : !result.empty()
                            ? qtText(result)
                            : QStringLiteral("Leave it empty for the usual one. Another address is "
                                             "used from the next start of Corvane."));
  service_->setAccessibleDescription(serviceNote_->text());
}

void SettingsDialog::done(int result) {
  controller_.keepWorkspacesFolder();
  controller_.keepService();
  QDialog::done(result);
}

}  // namespace corvane::desktop
