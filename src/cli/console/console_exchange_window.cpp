#include "cli/console/console_exchange_window.h"

#include <cassert>

#include "cli/console/command_line.h"
#include "exchange/imports/portfolio_transactions_importer_accessory_view_controller.h"

namespace corvane::cli {

void ConsoleExchangeWindow::cancel() {
  isCancelled_ = true;
  if (progress_ != nullptr) {
    progress_->cancel();
  }
}

void ConsoleExchangeWindow::beginOpenPanel(const OpenPanel& /*panel*/, PanelCompletion completion) {
  completion(answers_.file);
}

void ConsoleExchangeWindow::beginSavePanel(const SavePanel& /*panel*/, PanelCompletion completion) {
  completion(answers_.file);
}

void ConsoleExchangeWindow::setSavePanelContentTypes(
    const std::vector<ContentType>& /*contentTypes*/) {}

void ConsoleExchangeWindow::beginFieldSetup(
    const std::shared_ptr<ImportExportFieldSetupViewController>& setup, SheetParent /*parent*/) {
  try {
    setUpColumns(*setup);
    setUpAccessory(*setup);
  } catch (const Error& error) {
    presentError(error, [] {});
    setup->cancel();
    return;
  }
  setup->submit();
}

void ConsoleExchangeWindow::setUpColumns(ImportExportFieldSetupViewController& setup) {
  setup.setIncludesHeaderRow(answers_.includesHeaderRow);
  if (!answers_.fields) {
    return;
  }
  const auto& fields = *answers_.fields;
  const std::size_t columns = setup.numberOfRows();
  if (fields.size() > columns) {
    throw UsageError("The file has " + std::to_string(columns) + " columns, but --fields names " +
                     std::to_string(fields.size()) + ".");
  }
  for (std::size_t column = 0; column < columns; ++column) {
    setup.changeField(column, "");
  }
  for (std::size_t column = 0; column < fields.size(); ++column) {
    setup.changeField(column, fields[column]);
  }
}

void ConsoleExchangeWindow::setUpAccessory(ImportExportFieldSetupViewController& setup) const {
  auto* accessory = dynamic_cast<PortfolioTransactionsImporterAccessoryViewController*>(
      setup.accessoryViewController.get());
  if (accessory == nullptr) {
    return;
  }
  if (answers_.dateFormat) {
    accessory->chooseCustomDateFormat();
    accessory->setDateFormatString(*answers_.dateFormat);
  }
  if (answers_.currencyCode) {
    auto menu = accessory->defaultCurrencyPopUpButton;
    [[maybe_unused]] const bool isKnown = menu.select(*answers_.currencyCode);
    assert(isKnown && "the currency has been looked up before");
    accessory->selectDefaultCurrency(*menu.selectedIndex);
  }
}

void ConsoleExchangeWindow::beginProgress(
    const std::shared_ptr<ImportExportProgressViewController>& progress) {
  progress_ = progress;
  bar_.emplace(console_.err, progress->statusLabel.text);
  progressChanges_ = subscribe(progress->viewDidUpdate, [this] {
    const auto& indicator = progress_->progressIndicator;
    bar_->show(indicator.maximum > 0 ? indicator.value / indicator.maximum : 0);
  });
  if (isCancelled_) {
    progress->cancel();
  }
}

void ConsoleExchangeWindow::endProgress() {
  progressChanges_.reset();
  bar_.reset();
  progress_ = nullptr;
}

void ConsoleExchangeWindow::askForReading(const ReadingQuestion& question,
                                          std::move_only_function<void(ReadingAnswer)> answered) {
  hasPresentedError_ = true;
  console_.warn(question.problem);
  const auto offer = [&](std::string_view option, const std::vector<std::string>& lines) {
    if (!lines.empty()) {
      console_.err << option << " would record:\n";
      for (const std::string& line : lines) {
        console_.err << "  " << line << '\n';
      }
    }
  };
  offer("--file-reading, what the cells mean by themselves,", question.fileReading);
  offer("--standard-reading", question.standardReading);
  console_.err << "Nothing has been imported.\n";
  answered(ReadingAnswer::cancel);
}

void ConsoleExchangeWindow::presentError(const Error& error,
                                         std::move_only_function<void()> dismissed) {
  hasPresentedError_ = true;
  console_.present(error);
  dismissed();
}

}  // namespace corvane::cli
