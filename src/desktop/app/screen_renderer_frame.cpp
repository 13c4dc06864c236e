// The pictures of what belongs to no screen: menus, alerts, windows beside the main one.

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>

#include "desktop/app/help_window.h"
#include "desktop/app/main_window.h"
#include "desktop/app/network_activity_window.h"
#include "desktop/app/screen_renderer.h"
#include "desktop/charts/chart_data_dialog.h"
#include "desktop/charts/chart_widget.h"
#include "desktop/controls/dates_picker_view.h"
#include "desktop/exchange/field_setup_dialog.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/qt_text.h"
#include "desktop/portfolio/edit_portfolio_dialog.h"
#include "desktop/workspace/workspace_view.h"
#include "platform/system/file_manager.h"
#include "platform/system/resources.h"

namespace corvane::desktop {
namespace {

QString menuSlug(QString title) {
  return title.remove(QLatin1Char('&')).toLower();
}

}  // namespace

void ScreenRenderer::renderMenus() {
  for (QAction* top : window_.menuBar()->actions()) {
    QMenu* menu = top->menu();
    menu->popup(
        window_.menuBar()->mapToGlobal(window_.menuBar()->actionGeometry(top).bottomLeft()));
    write(QStringLiteral("menu-") + menuSlug(top->text()));
    menu->close();
  }
  for (DatesPickerView* picker : window_.findChildren<DatesPickerView*>()) {
    auto* presets = picker->findChild<QPushButton*>();
    if (picker->isVisible() && presets != nullptr && presets->menu() != nullptr) {
      presets->menu()->popup(presets->mapToGlobal(presets->rect().bottomLeft()));
      write(QStringLiteral("menu-presets"));
      presets->menu()->close();
    }
  }
}

void ScreenRenderer::renderAlerts() {
  const auto render = [&](const QString& name, AlertKind kind, const QString& message,
                          const QString& informative, const QStringList& buttons) {
    showAlert(&window_, kind, message, informative, buttons);
    write(name);
    if (QDialog* alert = openDialog(window_)) {
      alert->reject();
    }
  };
  render(QStringLiteral("alert-message"), AlertKind::message,
         QStringLiteral("6 transactions were imported."), {}, {QStringLiteral("OK")});
  render(QStringLiteral("alert-warning"), AlertKind::warning,
         QStringLiteral("Do you want to save the changes you made to “Family”?"),
         QStringLiteral("Your changes will be lost if you don’t save them."),
         {QStringLiteral("Save"), QStringLiteral("Don’t Save"), QStringLiteral("Cancel")});
  if (window_.workspaceView().controller().currentDetailTab() ==
      MainSplitViewController::DetailTab::portfolio) {
    window_.workspaceView().controller().portfolioViewController->deletePortfolioAction();
    write(QStringLiteral("alert-delete"));
    if (QDialog* alert = openDialog(window_)) {
      alert->reject();
    }
  }
}

/// The figures of the first chart as a table.
void ScreenRenderer::renderChartData() {
  for (ChartWidget* chart : window_.findChildren<ChartWidget*>()) {
    if (chart->isVisible() && !chart->chart().isEmpty()) {
      chart->showDataTable();
      write(QStringLiteral("chart-data"));
      if (QDialog* dialog = openDialog(window_)) {
        dialog->reject();
      }
      return;
    }
  }
}

/// The fields of an export, whose sheet stands on the panel.
void ScreenRenderer::renderFieldSetup() {
  window_.workspaceView().portfolioExport().exportAction();
  QDialog* panel = openDialog(window_);
  if (panel == nullptr) {
    return;
  }
  for (QPushButton* button : panel->findChildren<QPushButton*>()) {
    if (button->text().startsWith(QStringLiteral("Configure"))) {
      button->click();
    }
  }
  if (QDialog* sheet = openDialog(*panel)) {
    writeWindow(*sheet, QStringLiteral("sheet-export-fields"));
    sheet->reject();
  }
  panel->reject();
}

/// The form for a portfolio with what the diagnostic tools add to it.
void ScreenRenderer::renderRandomPortfolio() {
  auto form = window_.workspaceView().controller().makeCreatePortfolioForm([] {}, true);
  if (EditPortfolioDialog* sheet = EditPortfolioDialog::open(&window_, std::move(form))) {
    write(QStringLiteral("form-new-portfolio-random"));
    sheet->reject();
  }
}

/// The panel for the import of a file, and the sheet for its columns.
void ScreenRenderer::renderImportFields() {
  constexpr std::string_view rows =
      "What,When,Amount,Currency\nDeposit,2026-03-22,500.00,CAD\nDeposit,2026-03-25,250.00,CAD\n";
  const std::filesystem::path folder = files::makePrivateDirectory(files::temporaryDirectory());
  files::writeAtomically(folder / "transactions.csv", rows);
  for (QAction* command : window_.findChildren<QAction*>()) {
    if (command->text().startsWith(QStringLiteral("&Import Transactions"))) {
      command->trigger();
    }
  }
  if (auto* panel = qobject_cast<QFileDialog*>(openDialog(window_))) {
    write(QStringLiteral("panel-import"));
    panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
        ->setText(qtPath(folder / "transactions.csv"));
    static_cast<QDialog*>(panel)->accept();
    const auto sheet = [this] { return qobject_cast<FieldSetupDialog*>(openDialog(window_)); };
    if (waitUntil([&] { return sheet() != nullptr; })) {
      write(QStringLiteral("form-import-fields"));
      sheet()->reject();
    } else {
      hasFailed_ = true;
    }
  }
  files::remove(folder);
}

void ScreenRenderer::renderWindows() {
  HelpWindow help;
  help.showPage(resourcePath("Welcome.html"));
  writeWindow(help, QStringLiteral("window-help"));
  NetworkActivityWindow activity;
  activity.show();
  writeWindow(activity, QStringLiteral("window-network-activity"));
}

bool ScreenRenderer::renderBlank(const std::function<void(const std::filesystem::path&)>& drawn) {
  drawn_ = drawn;
  window_.setFixedSize(size_);
  inBothAppearances([this] { write(QStringLiteral("empty-workspace")); });
  MainSplitViewController& frame = window_.workspaceView().controller();
  frame.createPortfolioAction();
  if (QDialog* form = openDialog(window_)) {
    for (QPushButton* button : form->findChildren<QPushButton*>()) {
      if (button->isDefault()) {
        button->click();
        break;
      }
    }
  }
  inBothAppearances([this] { write(QStringLiteral("empty-portfolio")); });
  finishWriting();
  return !hasFailed_;
}

void ScreenRenderer::writeWindow(QWidget& window, const QString& name) {
  for (int i = 0; i < 3; ++i) {
    QApplication::sendPostedEvents();
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
  save(window.grab(), name);
}

}  // namespace corvane::desktop
