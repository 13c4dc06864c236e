#include "desktop/app/screen_renderer.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QTabWidget>
#include <QTimer>
#include <algorithm>
#include <cerrno>

#include "desktop/app/main_window.h"
#include "desktop/charts/chart_widget.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/scenario/heat_map_dialog.h"
#include "desktop/transactions/edit_transaction_dialog.h"
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
  if (foreign == held.end() && std::ranges::count(currencies, Currency::usd()) > 0) {
    form.chooseCurrency(Currency::usd());
  }
  form.typeInto(form.priorNumberOfSharesField, "100");
  form.typeInto(form.numberOfSharesField, mode == TransactionMode::split ? "300" : "10");
  form.typeInto(form.exchangeRateField, "1.25");
  form.typeInto(form.totalAmountField, "1234.5");
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
  renderForms();
  renderEquities();
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
    write(name + QLatin1Char('-') + slug(tabs.tabText(tab)));
  }
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
    renderTransactionForms();
  }
}

/// The form for a transaction in each of its modes, and that for several transactions.
void ScreenRenderer::renderTransactionForms() {
  PortfolioViewController& portfolio =
      *window_.workspaceView().controller().portfolioViewController;
  portfolio.createTransactionAction();
  if (auto* sheet = qobject_cast<EditTransactionDialog*>(openDialog(window_))) {
    for (const TransactionModeEntry& entry :
         EditTransactionViewController::transactionModeEntries()) {
      if (!entry.title.empty()) {
        fillIn(sheet->form(), entry.mode);
        write(QStringLiteral("form-transaction-") + slug(qtText(entry.title)));
      }
    }
    sheet->form().chooseMode(TransactionMode::buy);
    sheet->form().chooseEquity(nullptr);
    sheet->form().typeInto(sheet->form().totalAmountField, "a lot");
    sheet->form().changeTransactionDate([](DateEntry& date) { date.setText("0000-12-31"); });
    write(QStringLiteral("form-transaction-with-mistakes"));
    sheet->reject();
  }
  QTabWidget& tabs = window_.workspaceView().portfolioView().tabs();
  const int shownBefore = tabs.currentIndex();
  tabs.setCurrentIndex(static_cast<int>(PortfolioViewController::transactionsTabIndex));
  PortfolioTransactionsViewController& transactions = *portfolio.transactions;
  const auto selectedBefore = transactions.selectedRows();
  if (transactions.numberOfRows() > 1) {
    transactions.setSelectedRows({0, 1});
    transactions.modifyTransactionAction();
    if (QDialog* sheet = openDialog(window_)) {
      write(QStringLiteral("form-bulk-transactions"));
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
