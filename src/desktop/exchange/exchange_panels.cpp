#include "desktop/exchange/exchange_panels.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>

#include "desktop/exchange/export_save_accessory.h"
#include "desktop/exchange/field_setup_dialog.h"
#include "desktop/exchange/progress_dialog.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/documents_folder.h"
#include "desktop/look/qt_text.h"

namespace corvane::desktop {
namespace {

using ContentType = ImportExportWindow::ContentType;

QString nameFilter(ContentType type) {
  switch (type) {
    case ContentType::commaSeparatedText:
      return QStringLiteral("Comma-separated text (*.csv)");
    case ContentType::tabSeparatedText:
      return QStringLiteral("Tab-separated text (*.tsv *.tab)");
    case ContentType::plainText:
      return QStringLiteral("Plain text (*.txt)");
  }
  return {};
}

QString suffix(ContentType type) {
  switch (type) {
    case ContentType::commaSeparatedText:
      return QStringLiteral("csv");
    case ContentType::tabSeparatedText:
      return QStringLiteral("tsv");
    case ContentType::plainText:
      return QStringLiteral("txt");
  }
  return {};
}

/// One filter that shows all content types, each of them, and all files.
QStringList nameFilters(const std::vector<ContentType>& types, bool withAllTypes) {
  QStringList filters;
  if (withAllTypes) {
    filters.append(QStringLiteral("Delimited text (*.csv *.tsv *.tab *.txt)"));
  }
  for (const ContentType type : types) {
    filters.append(nameFilter(type));
  }
  filters.append(QStringLiteral("All files (*)"));
  return filters;
}

/// Tells `completion` what `panel` has come to, once.
void runPanel(QFileDialog* panel, ImportExportWindow::PanelCompletion completion) {
  auto shared = std::make_shared<ImportExportWindow::PanelCompletion>(std::move(completion));
  panel->setAttribute(Qt::WA_DeleteOnClose);
  QObject::connect(panel, &QDialog::finished, panel, [panel, shared](int result) {
    const QStringList files = panel->selectedFiles();
    const bool isChosen = result == QDialog::Accepted && !files.isEmpty();
    (*shared)(isChosen ? std::optional(filePath(files.constFirst())) : std::nullopt);
  });
  panel->open();
}

}  // namespace

ExchangePanels::ExchangePanels(QWidget* window) : window_(window) {}

ExchangePanels::~ExchangePanels() = default;

void ExchangePanels::beginOpenPanel(const OpenPanel& panel, PanelCompletion completion) {
  auto* dialog = new QFileDialog(window_, qtText(panel.title), documentsFolder());
  dialog->setWindowModality(Qt::WindowModal);
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setNameFilters(nameFilters(panel.contentTypes, true));
  dialog->setLabelText(QFileDialog::Accept, qtText(panel.prompt));
  runPanel(dialog, std::move(completion));
}

void ExchangePanels::beginSavePanel(const SavePanel& panel, PanelCompletion completion) {
  auto* dialog = new QFileDialog(window_, qtText(panel.title), documentsFolder());
  // The system's panels have no room for settings of the file.
  dialog->setOption(QFileDialog::DontUseNativeDialog);
  dialog->setWindowModality(Qt::WindowModal);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->setLabelText(QFileDialog::Accept, qtText(panel.prompt));
  savePanel_ = dialog;
  setSavePanelContentTypes(panel.contentTypes);
  // A date in the name may be written with slashes, which no file name has.
  const QString name = qtText(panel.nameField).replace(QLatin1Char('/'), QLatin1Char('-'));
  dialog->selectFile(name + QLatin1Char('.') + dialog->defaultSuffix());
  if (auto* grid = qobject_cast<QGridLayout*>(dialog->layout())) {
    if (!panel.message.empty()) {
      auto* message = new QLabel(qtText(panel.message));
      message->setWordWrap(true);
      grid->addWidget(message, grid->rowCount(), 0, 1, -1);
    }
    if (panel.accessory != nullptr) {
      grid->addWidget(new ExportSaveAccessory(panel.accessory), grid->rowCount(), 0, 1, -1);
    }
  }
  runPanel(dialog, std::move(completion));
}

void ExchangePanels::setSavePanelContentTypes(const std::vector<ContentType>& contentTypes) {
  if (savePanel_ == nullptr || contentTypes.empty()) {
    return;
  }
  const QStringList chosen = savePanel_->selectedFiles();
  const QString suffixBefore = savePanel_->defaultSuffix();
  savePanel_->setNameFilters(nameFilters(contentTypes, false));
  savePanel_->setDefaultSuffix(suffix(contentTypes.front()));
  // A name that has the suffix of the other delimiter gets the new one.
  if (!chosen.isEmpty() && !suffixBefore.isEmpty()) {
    const QFileInfo file(chosen.constFirst());
    if (file.suffix() == suffixBefore) {
      savePanel_->selectFile(file.completeBaseName() + QLatin1Char('.') +
                             savePanel_->defaultSuffix());
    }
  }
}

void ExchangePanels::beginFieldSetup(
    const std::shared_ptr<ImportExportFieldSetupViewController>& setup, SheetParent parent) {
  QWidget* owner = parent == SheetParent::savePanel && savePanel_ != nullptr
                       ? static_cast<QWidget*>(savePanel_)
                       : window_.data();
  fieldSetup_ = new FieldSetupDialog(setup, owner);
  fieldSetup_->open();
}

void ExchangePanels::endFieldSetup() {
  if (fieldSetup_ != nullptr) {
    fieldSetup_->done(QDialog::Accepted);
  }
}

void ExchangePanels::beginProgress(
    const std::shared_ptr<ImportExportProgressViewController>& progress) {
  // What is behind the sheet must not look at rows that the job is changing.
  setContentUpdates(false);
  progress_ = new ProgressDialog(progress, window_);
  progress_->open();
}

void ExchangePanels::endProgress() {
  setContentUpdates(true);
  if (progress_ != nullptr) {
    progress_->done(QDialog::Accepted);
  }
}

void ExchangePanels::setContentUpdates(bool areOn) {
  if (auto* main = qobject_cast<QMainWindow*>(window_.data());
      main != nullptr && main->centralWidget() != nullptr) {
    main->centralWidget()->setUpdatesEnabled(areOn);
  }
}

void ExchangePanels::askForReading(const ReadingQuestion& question,
                                   std::move_only_function<void(ReadingAnswer)> answered) {
  std::vector<ReadingAnswer> answers;
  QStringList buttons;
  QString informative;
  const auto offer = [&](ReadingAnswer answer, const QString& button, const QString& heading,
                         const std::vector<std::string>& lines) {
    if (lines.empty()) {
      return;
    }
    answers.push_back(answer);
    buttons.append(button);
    informative += (informative.isEmpty() ? QString() : QStringLiteral("\n\n")) + heading;
    for (const std::string& line : lines) {
      informative += QStringLiteral("\n• ") + qtText(line);
    }
  };
  offer(ReadingAnswer::file, QStringLiteral("Use the File's Reading"),
        QStringLiteral("What the file says, each cell by itself:"), question.fileReading);
  offer(ReadingAnswer::standard, QStringLiteral("Use the Standard Reading"),
        QStringLiteral("What the standard rules make of it:"), question.standardReading);
  answers.push_back(ReadingAnswer::cancel);
  buttons.append(QStringLiteral("Cancel"));
  auto shared = std::make_shared<std::move_only_function<void(ReadingAnswer)>>(std::move(answered));
  showAlert(progress_ != nullptr ? static_cast<QWidget*>(progress_) : window_.data(),
            AlertKind::warning, qtText(question.problem), informative, buttons,
            [shared, answers](std::size_t button) {
              if (*shared) {
                std::exchange(*shared, nullptr)(button < answers.size() ? answers[button]
                                                                        : ReadingAnswer::cancel);
              }
            });
}

void ExchangePanels::presentError(const Error& error, std::move_only_function<void()> dismissed) {
  auto shared = std::make_shared<std::move_only_function<void()>>(std::move(dismissed));
  showError(window_, error, [shared] {
    if (*shared) {
      (*shared)();
    }
  });
}

}  // namespace corvane::desktop
