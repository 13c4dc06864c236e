// The view logic that the two scenario screens share.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/controls/form_controls.h"
#include "presentation/charts/fiscal_chart_view.h"
#include "presentation/scenario/scenario_data_source.h"
#include "presentation/scenario/scenario_strategy_view_controller.h"
#include "presentation/screen/current_equity_having.h"
#include "presentation/screen/market_inquiry.h"
#include "presentation/screen/screen_surroundings.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// A tab of an equity's screen that replays a strategy: a summary, a chart and a table of the same
/// outcome, and a panel for the input, which the document keeps. Every change of the input fetches
/// and runs anew; of several changes one after the other only the outcome of the last one is shown.
/// A tab that is not on the screen starts nothing, but lets what is under way go on. Held by shared
/// pointer only. Main queue only.
class ScenarioViewController : public std::enable_shared_from_this<ScenarioViewController>,
                               public EquityTab,
                               public WorkspaceDocumentModelHaving {
 public:
  using Settings = GeneralProperties::RegressionSettings;
  /// Takes over to another screen.
  using ScenarioHandler = std::function<void(const InvestmentScenario&, const InvestmentStrategy&)>;
  /// Where in the settings of a document a screen keeps its input.
  struct KeyPaths {
    std::optional<InvestmentScenario> Settings::*lastScenarioProperties;
    std::optional<InvestmentStrategy> Settings::*lastStrategyProperties;
  };

  ScenarioViewController(const ScenarioViewController&) = delete;
  ScenarioViewController& operator=(const ScenarioViewController&) = delete;

  /// Called when texts, buttons or the progress have changed.
  std::function<void()> changeHandler = [] {};
  /// Called when the table has other rows. `areAppended` where those before are as they were.
  std::function<void(bool areAppended)> rowsChangeHandler = [](bool) {};
  /// Called when another row is selected. `takesKeyboard` where a click on the chart has done it.
  std::function<void(bool takesKeyboard)> selectionChangeHandler = [](bool) {};

  ScenarioStrategyViewController strategyViewController;
  FiscalChartView scenarioChartView;

  /// The table, and what fills it and the chart.
  [[nodiscard]] const ScenarioDataSource& scenarioDataSource() const { return *dataSource_; }
  /// The line above them.
  [[nodiscard]] const AttributedText& summaryTextLabel() const { return summaryTextLabel_; }
  /// How current the prices are, or how far the run has come.
  [[nodiscard]] virtual std::string statusText() const;

  /// What the document keeps of this screen, or the defaults.
  [[nodiscard]] const InvestmentScenario& scenario() const;
  [[nodiscard]] const InvestmentStrategy& strategy() const;

  [[nodiscard]] const EquityPointer& currentEquity() const override { return currentEquity_; }
  void setCurrentEquity(EquityPointer equity) override;
  void setShown(bool isShown) override;
  [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override {
    return documentModel_;
  }
  void setDocumentModel(std::weak_ptr<WorkspaceModel> model) override;

  /// Whether prices are being fetched or a run is under way.
  [[nodiscard]] bool isBusy() const;
  /// How far the run has come.
  [[nodiscard]] virtual ProgressIndicator progress() const;
  /// Gives up what is under way.
  void cancelAction();
  /// Fetches and runs once more.
  void runAction();

  [[nodiscard]] std::optional<std::size_t> selectedRow() const { return selectedRow_; }
  /// What the user does in the table; none where not exactly one row is selected.
  void selectRow(std::optional<std::size_t> row);

 protected:
  ScenarioViewController(ScreenSurroundings surroundings,
                         std::unique_ptr<ScenarioDataSource> dataSource, const KeyPaths& keyPaths);
  /// To be called once the screen is held.
  void connect();
  /// Runs the screen if it is on the screen, and else as soon as it will be.
  void runWhenShown();
  /// To be called when rows have been added.
  void rowsDidArrive();

  [[nodiscard]] ScenarioDataSource& dataSource() { return *dataSource_; }
  [[nodiscard]] const ScreenSurroundings& surroundings() const { return surroundings_; }

 private:
  void prepare();
  void run();
  void clearOutcome();
  [[nodiscard]] std::optional<QuoteQuery> makeQuery() const;
  void quotesDidArrive(MarketInquiry::Answer& answer);
  void analysisDidEnd(const ErrorPointer& error);
  void showOutcome();
  void showChart();
  void parametersDidChange();
  bool store(const InvestmentScenario& scenario, const InvestmentStrategy& strategy);
  void chartSelected(std::optional<std::size_t> index);

  ScreenSurroundings surroundings_;
  const std::unique_ptr<ScenarioDataSource> dataSource_;
  const KeyPaths keyPaths_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  EquityPointer currentEquity_;
  std::shared_ptr<MarketInquiry> inquiry_;
  AttributedText summaryTextLabel_;
  std::optional<Date> newestPrice_;  ///< of what was run; none where nothing was
  bool isOfCacheOnly_ = false;       ///< what was run
  std::optional<std::size_t> selectedRow_;
  bool isShown_ = false;
  bool isRunDue_ = true;      ///< when it is shown next
  bool isReloadDue_ = false;  ///< of the table, soon
  bool isChartDue_ = false;   ///< its table is shown already
};

}  // namespace corvane
