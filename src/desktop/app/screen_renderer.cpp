#include "desktop/app/screen_renderer.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QImageWriter>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
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
#include "desktop/controls/equity_combo_box_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/reports/tax_year_view.h"
#include "desktop/scenario/heat_map_dialog.h"
#include "desktop/transactions/edit_transaction_dialog.h"
#include "desktop/workspace/reports_view.h"
#include "desktop/workspace/source_list_view.h"
#include "desktop/workspace/workspace_view.h"
#include "platform/system/file_manager.h"

namespace corvane::desktop {
namespace {

constexpr int pollMilliseconds = 10;
constexpr std::size_t mostEquities = 4;
constexpr int settlingMilliseconds = 100;
/// Of the picture files, from 0 to 100. What more would spare in size takes as long as the drawing.
constexpr int lightCompression = 20;
constexpr int searchMilliseconds = 5000;  // a search begins half a second after the last key

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

QDialog* ScreenRenderer::openDialog(const QWidget& window) {
  if (auto* front = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      front != nullptr && window.isAncestorOf(front)) {
    return front;
  }
  for (QDialog* dialog : window.findChildren<QDialog*>()) {
    if (dialog->isVisible()) {
      return dialog;
    }
  }
  return nullptr;
}

ScreenRenderer::ScreenRenderer(MainWindow& window, std::filesystem::path folder, QSize size)
    : window_(window), folder_(std::move(folder)), size_(size) {
  std::error_code error;
  std::filesystem::create_directories(folder_, error);
  if (error) {
    throw FileError("create", folder_, error.value());
  }
}

bool ScreenRenderer::renderAll(const std::function<void(const std::filesystem::path&)>& drawn) {
  drawn_ = drawn;
  window_.setFixedSize(size_);
  inBothAppearances([this] { renderScreens(); });
  finishWriting();
  return !hasFailed_;
}

void ScreenRenderer::inBothAppearances(const std::function<void()>& render) {
  for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
    theme::apply(appearance, theme::contrast());
    appearance_ =
        appearance == Appearance::light ? QStringLiteral("light") : QStringLiteral("dark");
    render();
  }
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
  renderPopups();
  renderMenus();
  renderAlerts();
  renderWindows();
  renderEquities();
  renderUnknownEquity();
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
    const auto isDone = [&] { return !reports.isBusy(); };
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
  const MainSplitViewController& frame = window_.workspaceView().controller();
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
    settle();
    if (i == 0) {
      renderHover(name);
    }
    screen.selectTab(1);
    settle();
    write(name + QStringLiteral("-history"));
    if (i == 0) {
      renderHistory(name);
      renderScenarios(name);
    }
    screen.selectTab(0);
  }
}

/// The history of a single day in minutes, its cursor, and a row that is selected; and days to
/// come.
void ScreenRenderer::renderHistory(const QString& name) {
  HistoryViewController& history =
      *window_.workspaceView().controller().equityViewController->history;
  const auto settle = [&] { hasFailed_ |= !waitUntil([&] { return !history.isFetching(); }); };
  const YearMonthDay from = history.datesPicker.startDate();
  const YearMonthDay to = history.datesPicker.endDate();
  const QuoteInterval interval = history.datesPicker.selectedInterval();
  const Date latest = history.currentEquity()->recentDate.value_or(Date::now());
  const auto day = YearMonthDay::of(latest, history.currentEquity()->calendar);
  history.datesPicker.setDates(day, day);
  history.datesPicker.chooseInterval(QuoteInterval::oneMinute);
  settle();
  write(name + QStringLiteral("-history-one-day"));
  history.selectRow(history.table().numberOfRows() / 3);
  write(name + QStringLiteral("-history-row"));
  renderHover(name + QStringLiteral("-history"));
  history.datesPicker.setDates(from, to);
  history.datesPicker.chooseInterval(interval);
  settle();
}

/// A symbol of which the market knows nothing: the alert, and the screen without it.
void ScreenRenderer::renderUnknownEquity() {
  const MainSplitViewController& frame = window_.workspaceView().controller();
  auto& source = *frame.masterSourceViewController;
  const auto model = window_.documentModel().lock();
  if (model == nullptr || model->portfolioManagers.empty() ||
      model->portfolioManagers.front()->quoteProvider == nullptr) {
    return;
  }
  const auto& provider = model->portfolioManagers.front()->quoteProvider;
  EquityViewController& screen = *frame.equityViewController;
  const std::size_t tabBefore = screen.selectedTabIndex();
  source.setCurrentDetailObject(provider->equityWithId("NO.SUCH"));
  hasFailed_ |= !waitUntil([&] { return !screen.overview->isFetching(); });
  write(QStringLiteral("equity-unknown-alert"));
  while (QDialog* alert = openDialog(window_)) {
    alert->close();
  }
  write(QStringLiteral("equity-unknown"));
  screen.selectTab(tabBefore);
  source.setCurrentDetailObject({});
}

/// The screens of a strategy: before there is anything to run, with one run, and with a batch under
/// way and done.
void ScreenRenderer::renderScenarios(const QString& name) {
  const MainSplitViewController& frame = window_.workspaceView().controller();
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

  // There is none where there were no prices to run the strategy on.
  if (auto grid = detail.detailDataSource().makeHeatMap()) {
    HeatMapDialog map(std::move(grid), &window_);
    map.setAttribute(Qt::WA_DeleteOnClose, false);
    map.open();
    hasFailed_ |= !waitUntil([&] { return !map.map().progress().isAnimated; });
    write(name + QStringLiteral("-scenario-heat-map"));
    map.close();
  }

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
    if (index == 0 && &portfolio.selectedTab() == portfolio.transactions.get()) {
      renderFinding(picture);
    }
  }
  const auto [gain, ratesOfDays] = portfolio.gainTrail();
  frame.explanation.explain(gain, ratesOfDays);
  hasFailed_ |= !waitUntil([&] { return !frame.explanation.isAwaiting(); });
  tabs.setCurrentIndex(static_cast<int>(portfolio.indexOf(*portfolio.holdings)));
  write(name + QStringLiteral("-explanation"));
  frame.explanation.close();
  tabs.setCurrentIndex(shownBefore);
  renderCursor(name);
  if (index == 0) {
    renderDaysOf(name);
  }
}

/// The transactions with some words, and with words that none has.
void ScreenRenderer::renderFinding(const QString& name) {
  PortfolioTransactionsViewController& transactions =
      *window_.workspaceView().controller().portfolioViewController->transactions;
  for (const QSize size : reportSizes) {
    window_.setFixedSize(size);
    const auto sizeName = QStringLiteral("-%1x%2").arg(size.width()).arg(size.height());
    transactions.setFindText("buy");
    write(name + QStringLiteral("-found") + sizeName);
    transactions.setFindText("no such words");
    write(name + QStringLiteral("-nothing-found") + sizeName);
    transactions.setFindText("");
  }
  window_.setFixedSize(size_);
}

/// A portfolio over a single day, and over days on which it held nothing yet.
void ScreenRenderer::renderDaysOf(const QString& name) {
  PortfolioViewController& portfolio =
      *window_.workspaceView().controller().portfolioViewController;
  const auto settle = [&] { hasFailed_ |= !waitUntil([&] { return !portfolio.isFetching(); }); };
  QueryDatesPicker& picker = portfolio.datesPicker;
  const YearMonthDay from = picker.startDate();
  const YearMonthDay to = picker.endDate();
  const auto choose = [&](const YearMonthDay& first, const YearMonthDay& last) {
    picker.setDates(first, last);
    picker.action();
    settle();
  };
  choose(to, to);
  write(name + QStringLiteral("-one-day"));
  const YearMonthDay earliest = picker.minimumDate();
  choose(earliest, earliest);
  write(name + QStringLiteral("-first-day"));
  choose(from, to);
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

/// The pointer in the lower right corner of the first chart, where its panel has least room.
void ScreenRenderer::renderHover(const QString& name) {
  for (ChartWidget* chart : window_.findChildren<ChartWidget*>()) {
    if (!chart->isVisible() || chart->chart().isEmpty()) {
      continue;
    }
    const QPoint corner(chart->width() - 120, chart->height() / 2);
    QWidget* under = chart->childAt(corner);
    if (under == nullptr) {
      continue;
    }
    const QPointF at = under->mapFrom(chart, corner);
    QMouseEvent move(QEvent::MouseMove, at, under->mapToGlobal(at), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(under, &move);
    write(name + QStringLiteral("-hover"));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(under, &leave);
    return;
  }
}

/// The matches of a search.
void ScreenRenderer::renderPopups() {
  const QString wanted = QStringLiteral("a");
  // The report of returns has such a box as well.
  auto* search = window_.findChild<SourceView*>()->findChild<EquityComboBoxView*>();
  if (search != nullptr && search->isVisible()) {
    // What is still to come of the dialogs before would take the keyboard away.
    window_.activateWindow();
    waitFor(settlingMilliseconds);
    search->startEditing();
    search->field().setText(wanted);
    const auto* matches = search->findChild<QWidget*>(QStringLiteral("equityPopup"));
    const auto& box =
        window_.workspaceView().controller().masterSourceViewController->equityComboBox;
    QElapsedTimer clock;
    clock.start();
    waitUntil([&] {
      return (matches->isVisible() && !box.isSearching() && box.numberOfRows() > 0) ||
             clock.hasExpired(searchMilliseconds);
    });
    if (matches->isVisible()) {
      write(QStringLiteral("search-matches"));
    }
    search->field().clear();
    search->field().clearFocus();
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
  renderRandomPortfolio();
  using Palette = CommandPaletteDialog;
  render(QStringLiteral("command-palette"), [&] {
    window_.openCommandPalette(Palette::Contents::everything);
    // An alert may stand there in its place.
    if (auto* sought = openDialog(window_)->findChild<QLineEdit*>()) {
      sought->setText(QStringLiteral("pr"));
    }
  });
  render(QStringLiteral("keyboard-shortcuts"),
         [&] { window_.openCommandPalette(Palette::Contents::shortcuts); });
  render(QStringLiteral("settings"), [&] { window_.openSettings(); });
  if (frame.currentDetailTab() == MainSplitViewController::DetailTab::portfolio) {
    PortfolioViewController& portfolio = *frame.portfolioViewController;
    render(QStringLiteral("form-portfolio-details"), [&] { portfolio.editPortfolioAction(); });
    render(QStringLiteral("panel-export"),
           [&] { window_.workspaceView().portfolioExport().exportAction(); });
    renderFieldSetup();
    renderImportFields();
    renderChartData();
    for (const QSize size : formSizes) {
      renderTransactionForms(size);
    }
    renderStatement();
  }
}

/// A statement with rows of several verdicts and questions, and the list of imports.
void ScreenRenderer::renderStatement() {
  constexpr std::string_view statement =
      "Date;Order #;Transaction;Symbol;Name;ISIN;Quantity;Unit price;Costs;Accrued Interest;Net "
      "Amount;Balance;Currency\n"
      "10-03-2025 12:16:00;2;Sell;;Penwyth "
      "World;IE0000000001;10.0;52.00;20.00;0.00;500.00;2.0;GBP\n"
      "05-03-2025 12:16:00;1;Buy;;Penwyth "
      "World;IE0000000001;30.0;51.20;12.80;0.00;-1548.80;1.0;GBP\n"
      "04-03-2025 12:22:24;3;Rights issue;PWYTH;Penwyth;;1.0;0.00;0.00;0.00;1.25;1.0;CAD\n"
      "03-03-2025 07:00:15;0;Credit;;;;1.0;5000.00;0.00;0.00;5000.00;5000.00;CAD\n";
  WorkspaceView& view = window_.workspaceView();
  const std::filesystem::path folder = files::makePrivateDirectory(files::temporaryDirectory());
  files::writeAtomically(folder / "transactions.csv", statement);
  view.openStatement(folder / "transactions.csv");
  files::remove(folder);
  if (QDialog* dialog = openDialog(window_)) {
    write(QStringLiteral("form-statement"));
    dialog->reject();
  }
  QApplication::processEvents();
  view.showImports();
  if (QDialog* dialog = openDialog(window_)) {
    write(QStringLiteral("form-statement-imports"));
    dialog->reject();
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
  const PortfolioViewController& portfolio =
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
    painter.fillRect(window_.rect(), QColor(0, 0, 0, 90));
    const QPixmap front = dialog->grab();
    const QPoint corner((window_.width() - dialog->width()) / 2,
                        (window_.height() - dialog->height()) / 2);
    painter.drawPixmap(corner, front);
    painter.setPen(theme::colour(Colour::Name::separator));
    painter.drawRect(QRect(corner, dialog->size()).adjusted(-1, -1, 0, 0));
  }
  // Menus, lists and tooltips are windows of their own, which the picture of this one lacks.
  for (QWidget* other : QApplication::topLevelWidgets()) {
    const Qt::WindowType type = other->windowType();
    if (other->isVisible() && (type == Qt::Popup || type == Qt::ToolTip)) {
      QPainter painter(&picture);
      painter.drawPixmap(window_.mapFromGlobal(other->pos()), other->grab());
    }
  }
  save(picture, name);
}

void ScreenRenderer::save(const QPixmap& picture, const QString& name) {
  const std::filesystem::path file =
      folder_ / utf8Text(name + QLatin1Char('-') + appearance_ + QStringLiteral(".png"));
  finishWriting();
  writing_ = std::async(std::launch::async, [path = qtPath(file), image = picture.toImage()] {
    QImageWriter writer(path, "PNG");
    writer.setCompression(lightCompression);
    return writer.write(image);
  });
  drawn_(file);
}

void ScreenRenderer::finishWriting() {
  if (writing_.valid()) {
    hasFailed_ |= !writing_.get();
  }
}

void ScreenRenderer::waitFor(int milliseconds) {
  QElapsedTimer clock;
  clock.start();
  waitUntil([&] { return clock.hasExpired(milliseconds); });
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
