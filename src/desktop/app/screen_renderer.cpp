#include "desktop/app/screen_renderer.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QTimer>
#include <algorithm>
#include <cerrno>

#include "desktop/app/main_window.h"
#include "desktop/charts/chart_widget.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/reports/tax_year_view.h"
#include "desktop/scenario/heat_map_dialog.h"
#include "desktop/transactions/edit_transaction_dialog.h"
#include "desktop/workspace/reports_view.h"
#include "desktop/workspace/workspace_view.h"
#include "platform/system/file_manager.h"

namespace corvane::desktop {
namespace {

constexpr int pollMilliseconds = 10;
constexpr std::size_t mostEquities = 4;

/// `text` as a part of a file name.
QString slug(const QString& text) {
  QString made;
  for (const QChar c : text.toLower()) {
    if (c.isLetterOrNumber()) {
      made.append(c);
    } else if (!made.isEmpty() && !made.endsWith(QLatin1Char('-'))) {
      made.append(QLatin1Char('-'));
    }
  }
  while (made.endsWith(QLatin1Char('-'))) {
    made.chop(1);
  }
  return made.isEmpty() ? QStringLiteral("unnamed") : made;
}

/// The dialog of `window` that is open.
QDialog* openDialog(const QWidget& window) {
  for (QDialog* dialog : window.findChildren<QDialog*>()) {
    if (dialog->isVisible()) {
      return dialog;
    }
  }
  return nullptr;
}

Decimal sharesHeld(const Portfolio& portfolio, const EquityPointer& equity) {
  const auto& years = portfolio.snapshotsByYear;
  return years.empty() || equity == nullptr
             ? Decimal()
             : years.rbegin()->second.equitySnapshots.get(equity).sharesHeld;
}

/// Fills `form` in `mode` with figures that show all of its rows, foreign ones where it can.
void fillIn(EditTransactionViewController& form, TransactionMode mode) {
  form.chooseMode(mode);
  const auto& held = form.heldEquities();
  const auto foreign = std::ranges::find_if(held, [&](const EquityPointer& equity) {
    return equity->currency != form.portfolio()->primaryCurrency();
  });
  if (!held.empty()) {
    form.chooseEquity(foreign != held.end() ? *foreign : held.front());
  }
  const auto& currencies = form.availableCurrencies();
  for (const Currency& other : {Currency::usd(), Currency::cad()}) {
    if (foreign == held.end() && other != form.portfolio()->primaryCurrency() &&
        std::ranges::count(currencies, other) > 0) {
      form.chooseCurrency(other);
    }
  }
  const Decimal shares = sharesHeld(*form.portfolio(), form.currentEquity());
  const bool countsHeld = yieldTypeOf(mode).has_value() && shares > 0;
  form.typeInto(form.priorNumberOfSharesField, shares > 0 ? shares.description() : "100");
  form.typeInto(form.numberOfSharesField, mode == TransactionMode::split ? "300"
                                          : countsHeld                   ? shares.description()
                                                                         : "10");
  form.typeInto(form.exchangeRateField, "1.2");
  form.typeInto(form.totalAmountField, "1234");
  if (mode == TransactionMode::journaledShares) {
    form.typeInto(form.equivalentValueField, "1500");
  }
}

}  // namespace

ScreenRenderer::ScreenRenderer(MainWindow& window, std::filesystem::path folder, QSize size)
    : window_(window), folder_(std::move(folder)), size_(size) {
  std::error_code error;
  std::filesystem::create_directories(folder_, error);
  if (error) {
    throw FileError("create", folder_, error.value());
  }
}

bool ScreenRenderer::renderAll(const std::function<void(const std::filesystem::path&)>& written) {
  written_ = written;
  window_.setFixedSize(size_);
  for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
    theme::apply(*qApp, appearance);
    appearance_ =
        appearance == Appearance::light ? QStringLiteral("light") : QStringLiteral("dark");
    renderScreens();
  }
  return !hasFailed_;
}

void ScreenRenderer::renderScreens() {
  auto& source = *window_.workspaceView().controller().masterSourceViewController;
  source.setCurrentDetailObject({});
  write(QStringLiteral("start"));
  for (std::size_t i = 0; i < source.numberOfPortfolioRows(); ++i) {
    source.selectPortfolioRow(i);
    renderPortfolio(i);
  }
  renderReports();
  if (source.numberOfPortfolioRows() > 0) {
    source.selectPortfolioRow(0);
    const auto& portfolio = *window_.workspaceView().controller().portfolioViewController;
    hasFailed_ |= !waitUntil([&] { return !portfolio.isFetching(); });
  }
  renderForms();
  renderEquities();
}

void ScreenRenderer::renderReportSizes(const QString& name) {
  for (const QSize size : reportSizes) {
    window_.setFixedSize(size);
    const auto sizeName = QStringLiteral("-%1x%2").arg(size.width()).arg(size.height());
    write(name + sizeName);
    for (QScrollArea* page : window_.findChildren<QScrollArea*>()) {
      page->verticalScrollBar()->setValue(page->verticalScrollBar()->maximum());
    }
    if (size == reportSizes.at(1)) {
      write(name + QStringLiteral("-end") + sizeName);
    }
    for (QScrollArea* page : window_.findChildren<QScrollArea*>()) {
      page->verticalScrollBar()->setValue(0);
    }
  }
  window_.setFixedSize(size_);
}

/// The reports about all portfolios, and the form that says whose they are.
void ScreenRenderer::renderReports() {
  MainSplitViewController& frame = window_.workspaceView().controller();
  const WorkspaceReports& reports = *frame.reports;
  for (const WorkspaceReports::Entry& entry : WorkspaceReports::entries) {
    frame.showReport(entry.report);
    const auto isDone = [&] {
      return !reports.returns->isBusy() && !reports.taxYear->isBusy() && !reports.income->isBusy();
    };
    hasFailed_ |= !waitUntil(isDone);
    if (entry.report == WorkspaceReport::taxYear && reports.taxYear->years().size() > 1) {
      reports.taxYear->chooseYear(reports.taxYear->years()[1]);
      hasFailed_ |= !waitUntil(isDone);
    }
    renderReportSizes(QStringLiteral("reports-") + slug(qtText(entry.title)));
    if (entry.report == WorkspaceReport::taxYear) {
      window_.workspaceView().reportsView().taxYear().openRoles();
      write(QStringLiteral("reports-roles"));
      if (QDialog* sheet = openDialog(window_)) {
        sheet->reject();
      }
    }
  }
}

/// The first equities of the watchlist: every period of the first one, and the tabs of all.
void ScreenRenderer::renderEquities() {
  MainSplitViewController& frame = window_.workspaceView().controller();
  auto& source = *frame.masterSourceViewController;
  EquityViewController& screen = *frame.equityViewController;
  const auto settle = [&] {
    hasFailed_ |=
        !waitUntil([&] { return !screen.overview->isFetching() && !screen.history->isFetching(); });
  };
  for (std::size_t i = 0; i < std::min(source.numberOfWatchlistRows(), mostEquities); ++i) {
    source.selectWatchlistRows({i});
    const QString name =
        QStringLiteral("equity-%1-%2").arg(i + 1).arg(slug(qtText(screen.currentEquity()->symbol)));
    const std::size_t shownBefore = screen.overview->selectedPeriod();
    for (std::size_t period = 0; period < OverviewViewController::periodPresets.size(); ++period) {
      if (i > 0 && period != shownBefore) {
        continue;
      }
      screen.overview->selectPeriod(period);
      settle();
      write(name + QStringLiteral("-overview-") +
            slug(qtText(OverviewViewController::periodPresets[period].label)));
    }
    screen.overview->selectPeriod(shownBefore);
    screen.selectTab(1);
    settle();
    write(name + QStringLiteral("-history"));
    if (i == 0) {
      renderScenarios(name);
    }
    screen.selectTab(0);
  }
}

/// The screens of a strategy: before there is anything to run, with one run, and with a batch under
/// way and done.
void ScreenRenderer::renderScenarios(const QString& name) {
  MainSplitViewController& frame = window_.workspaceView().controller();
  EquityViewController& screen = *frame.equityViewController;
  ScenarioDetailViewController& detail = *frame.scenarioDetailViewController;
  ScenarioBatchViewController& batch = *frame.scenarioBatchViewController;
  const auto settle = [&](const ScenarioViewController& shown) {
    hasFailed_ |= !waitUntil([&] { return !shown.isBusy(); });
  };
  const InvestmentScenario before = detail.scenario();
  InvestmentScenario toCome = before;
  toCome.fromDateComponents.set(CalendarUnit::year, 2999);
  toCome.toDateComponents.set(CalendarUnit::year, 3000);
  screen.selectTab(2);
  detail.strategyViewController.setScenario(toCome, detail.strategy());
  write(name + QStringLiteral("-scenario-greeting"));

  InvestmentStrategy lively = detail.strategy();
  lively.targetBuySpread = lively.targetSellSpread = Decimal::fromMantissa(Sign::plus, 15, -3);
  lively.isStopLossActive = true;
  detail.strategyViewController.setScenario(before, lively);
  settle(detail);
  write(name + QStringLiteral("-scenario"));
  detail.selectRow(detail.scenarioDataSource().numberOfRows() / 2);
  write(name + QStringLiteral("-scenario-row"));

  HeatMapDialog map(detail.detailDataSource().makeHeatMap(), &window_);
  map.setAttribute(Qt::WA_DeleteOnClose, false);
  map.open();
  hasFailed_ |= !waitUntil([&] { return !map.map().progress().isAnimated; });
  write(name + QStringLiteral("-scenario-heat-map"));
  map.close();

  const std::size_t typeBefore = batch.selectedBatchType();
  detail.makeBatchAction();
  batch.strategyViewController.queryDatesPicker.choosePreset(4);
  for (std::size_t type = 0; type < ScenarioBatchViewController::batchTypes.size(); ++type) {
    batch.selectBatchType(type);
    const QString method = slug(qtText(title(ScenarioBatchViewController::batchTypes.at(type))));
    if (type == 1) {
      hasFailed_ |= !waitUntil(
          [&] { return batch.batchDataSource().completedCount() > 0 || !batch.isBusy(); });
      batch.rowsChangeHandler(true);
      batch.changeHandler();
      capture(name + QStringLiteral("-scenario-batch-under-way"));
    }
    settle(batch);
    batch.selectRow(0);
    write(name + QStringLiteral("-scenario-batch-") + method);
  }
  batch.selectBatchType(typeBefore);
  batch.cancelAction();
}

void ScreenRenderer::renderPortfolio(std::size_t index) {
  MainSplitViewController& frame = window_.workspaceView().controller();
  const PortfolioViewController& portfolio = *frame.portfolioViewController;
  if (!waitUntil([&] { return !portfolio.isFetching(); })) {
    hasFailed_ = true;
  }
  QTabWidget& tabs = window_.workspaceView().portfolioView().tabs();
  const int shownBefore = tabs.currentIndex();
  const QString name =
      QStringLiteral("portfolio-%1-%2").arg(index + 1).arg(slug(qtText(portfolio.heading().name)));
  for (int tab = 0; tab < tabs.count(); ++tab) {
    tabs.setCurrentIndex(tab);
    hasFailed_ |=
        !waitUntil([&] { return !portfolio.returns->isBusy() && !portfolio.income->isBusy(); });
    const QString picture = name + QLatin1Char('-') + slug(tabs.tabText(tab));
    if (portfolio.selectedTab().hasOwnChart()) {
      renderReportSizes(picture);
    } else {
      write(picture);
    }
  }
  frame.explanation.explain(portfolio.gainTrailMaker());
  tabs.setCurrentIndex(static_cast<int>(portfolio.indexOf(*portfolio.holdings)));
  write(name + QStringLiteral("-explanation"));
  frame.explanation.close();
  tabs.setCurrentIndex(shownBefore);
  renderCursor(name);
}

/// The first chart with its cursor on a value, and with a span selected.
void ScreenRenderer::renderCursor(const QString& name) {
  for (ChartWidget* chart : window_.findChildren<ChartWidget*>()) {
    if (!chart->isVisible() || chart->chart().isEmpty()) {
      continue;
    }
    const auto press = [&](int key, Qt::KeyboardModifiers modifiers) {
      QKeyEvent event(QEvent::KeyPress, key, modifiers);
      QApplication::sendEvent(chart, &event);
    };
    press(Qt::Key_Home, Qt::NoModifier);
    for (int i = 0; i < 5; ++i) {
      press(Qt::Key_Right, Qt::ControlModifier);
    }
    write(name + QStringLiteral("-chart-cursor"));
    press(Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    press(Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    write(name + QStringLiteral("-chart-selection"));
    press(Qt::Key_Escape, Qt::NoModifier);
    return;
  }
}

void ScreenRenderer::renderForms() {
  MainSplitViewController& frame = window_.workspaceView().controller();
  const auto render = [&](const QString& name, const std::function<void()>& open) {
    open();
    if (openDialog(window_) != nullptr) {
      write(name);
      openDialog(window_)->reject();
    }
  };
  render(QStringLiteral("form-new-portfolio"), [&] { frame.createPortfolioAction(); });
  using Palette = CommandPaletteDialog;
  render(QStringLiteral("command-palette"), [&] {
    window_.openCommandPalette(Palette::Contents::everything);
    openDialog(window_)->findChild<QLineEdit*>()->setText(QStringLiteral("pr"));
  });
  render(QStringLiteral("keyboard-shortcuts"),
         [&] { window_.openCommandPalette(Palette::Contents::shortcuts); });
  render(QStringLiteral("settings"), [&] { window_.openSettings(); });
  if (frame.currentDetailTab() == MainSplitViewController::DetailTab::portfolio) {
    PortfolioViewController& portfolio = *frame.portfolioViewController;
    render(QStringLiteral("form-portfolio-details"), [&] { portfolio.editPortfolioAction(); });
    render(QStringLiteral("panel-export"),
           [&] { window_.workspaceView().portfolioExport().exportAction(); });
    for (const QSize size : formSizes) {
      renderTransactionForms(size);
    }
  }
}

void ScreenRenderer::renderTransactionForms(QSize size) {
  const auto sizeName = QStringLiteral("-%1x%2").arg(size.width()).arg(size.height());
  window_.setFixedSize(size);
  renderTransactionModes(sizeName);
  renderBulkForm(sizeName);
  window_.setFixedSize(size_);
}

/// The form for a transaction in each of its modes, with figures, and with what can be wrong.
void ScreenRenderer::renderTransactionModes(const QString& sizeName) {
  PortfolioViewController& portfolio =
      *window_.workspaceView().controller().portfolioViewController;
  portfolio.createTransactionAction();
  auto* sheet = qobject_cast<EditTransactionDialog*>(openDialog(window_));
  if (sheet == nullptr) {
    return;
  }
  EditTransactionViewController& form = sheet->form();
  const auto writeForm = [&](const QString& name) {
    write(QStringLiteral("form-transaction-") + name + sizeName);
  };
  for (const TransactionModeEntry& entry :
       EditTransactionViewController::transactionModeEntries()) {
    if (!entry.title.empty()) {
      fillIn(form, entry.mode);
      writeForm(slug(qtText(entry.title)));
    }
  }
  fillIn(form, TransactionMode::sell);
  form.typeInto(form.exchangeRateField, "1.2345");
  form.setNote("At the rate of the bank");
  form.toggleNote();
  writeForm(QStringLiteral("to-be-rounded"));
  form.chooseMode(TransactionMode::buy);
  form.chooseEquity(nullptr);
  form.typeInto(form.totalAmountField, "a lot");
  form.changeTransactionDate([](DateEntry& date) { date.setText("0000-12-31"); });
  writeForm(QStringLiteral("with-mistakes"));
  sheet->reject();
}

void ScreenRenderer::renderBulkForm(const QString& sizeName) {
  PortfolioViewController& portfolio =
      *window_.workspaceView().controller().portfolioViewController;
  QTabWidget& tabs = window_.workspaceView().portfolioView().tabs();
  const int shownBefore = tabs.currentIndex();
  tabs.setCurrentIndex(static_cast<int>(portfolio.indexOf(*portfolio.transactions)));
  PortfolioTransactionsViewController& transactions = *portfolio.transactions;
  const auto selectedBefore = transactions.selectedRows();
  if (transactions.numberOfRows() > 1) {
    transactions.setSelectedRows({0, 1});
    transactions.modifyTransactionAction();
    if (QDialog* sheet = openDialog(window_)) {
      write(QStringLiteral("form-bulk-transactions") + sizeName);
      sheet->reject();
    }
    transactions.setSelectedRows(selectedBefore);
  }
  tabs.setCurrentIndex(shownBefore);
}

void ScreenRenderer::write(const QString& name) {
  // Layouts, fonts and queued drawing settle first.
  for (int i = 0; i < 3; ++i) {
    QApplication::sendPostedEvents();
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
  capture(name);
}

void ScreenRenderer::capture(const QString& name) {
  QPixmap picture = window_.grab();
  if (QDialog* dialog = openDialog(window_)) {
    QPainter painter(&picture);
    painter.fillRect(picture.rect(), QColor(0, 0, 0, 90));
    const QPixmap front = dialog->grab();
    const QPoint corner((picture.width() - front.width()) / 2,
                        (picture.height() - front.height()) / 2);
    painter.drawPixmap(corner, front);
    painter.setPen(theme::colour(Colour::Name::separator));
    painter.drawRect(QRect(corner, front.size()).adjusted(-1, -1, 0, 0));
  }
  // A tooltip is a window of its own, which the picture of this one lacks.
  for (const ChartWidget* chart : window_.findChildren<ChartWidget*>()) {
    if (chart->tooltip().isVisible()) {
      QPainter painter(&picture);
      painter.drawPixmap(window_.mapFromGlobal(chart->tooltip().pos()), chart->tooltip().grab());
    }
  }
  const std::filesystem::path file =
      folder_ / utf8Text(name + QLatin1Char('-') + appearance_ + QStringLiteral(".png"));
  if (picture.save(qtPath(file), "PNG")) {
    written_(file);
  } else {
    hasFailed_ = true;
  }
}

bool ScreenRenderer::waitUntil(const std::function<bool()>& isDone) {
  QElapsedTimer clock;
  clock.start();
  QTimer poll;
  poll.start(pollMilliseconds);
  while (!isDone()) {
    if (clock.hasExpired(deadlineMilliseconds)) {
      return false;
    }
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

}  // namespace corvane::desktop
