// The view of what the market has told about the days of what is held.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/async/notification_center.h"
#include "platform/range.h"
#include "presentation/reports/record_table.h"
#include "presentation/reports/report_text.h"
#include "presentation/screen/screen_surroundings.h"
#include "reports/coverage/price_coverage.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

class PortfolioExporter;
class SwitchableQuoteProvider;
class Timer;

/// The coverage of an equity or exchange rate, with its days counted.
struct CoverageLine {
  static constexpr std::size_t stateCount = 5;

  PriceCoverage coverage;
  std::array<int, stateCount> days = {};  ///< by PriceCoverage::State, weekends included

  [[nodiscard]] int daysIn(PriceCoverage::State state) const {
    return days.at(static_cast<std::size_t>(state));
  }
  [[nodiscard]] int allDays() const;
  /// Days of which the cache has all there is, as a part of all; none where the equity was never
  /// held.
  [[nodiscard]] std::optional<double> coveredPart() const;
};

/// "Covered", "Carried forward", "No price yet", "Not final yet", "Missing"
[[nodiscard]] std::string_view titleOf(PriceCoverage::State state);

/// Shows for which days the cache has the daily prices of all that a workspace has held, and
/// fetches those that are missing. Ledgers and cache are looked through a piece at a time, so that
/// the window answers in between; while nothing is asked of the market, nobody is. Held by shared
/// pointer only. Main queue only.
class CoverageViewController : public std::enable_shared_from_this<CoverageViewController> {
  struct Passkey {};

 public:
  [[nodiscard]] static std::shared_ptr<CoverageViewController> make(
      ScreenSurroundings surroundings);
  CoverageViewController(Passkey passkey, ScreenSurroundings surroundings);

  /// Called when anything has changed, the tables included.
  std::function<void()> changeHandler = [] {};
  /// Shows the equity of a line on its own screen.
  std::function<void(const EquityPointer&)> openEquityHandler = [](const EquityPointer&) {};

  void setDocumentModel(std::weak_ptr<WorkspaceModel> model);
  void setShown(bool isShown);

  // What is shown.

  /// Whether ledgers and cache are being looked through, or prices fetched.
  [[nodiscard]] bool isBusy() const { return isReading_ || isFetching(); }
  [[nodiscard]] bool isFetching() const { return fetch_ != nullptr; }
  /// The part of a fetch that is done, from 0 to 1; 0 without one.
  [[nodiscard]] double progress() const;
  /// What there is, in a sentence.
  [[nodiscard]] std::string title() const;
  /// In place of lines; empty where there are some.
  [[nodiscard]] const std::string& message() const { return message_; }
  [[nodiscard]] const std::vector<ReportFigure>& figures() const { return figures_; }
  /// What the last fetch has come to, and why prices cannot be fetched; mostly empty.
  [[nodiscard]] std::string notice() const;
  /// From the first day on which anything was held to today: what all bars stretch over.
  [[nodiscard]] const ClosedRange<YearMonthDay>& days() const { return days_; }

  /// The equities by symbol, then the exchange rates.
  RecordTable<CoverageLine> table;
  /// The stretches of the line that is chosen, the latest first.
  RecordTable<PriceCoverage::Stretch> stretches;

  // What the user does.

  /// Shows the stretches of the line at `row`.
  void chooseRow(std::optional<std::size_t> row);
  [[nodiscard]] std::optional<std::size_t> chosenRow() const;
  /// Shows the equity of the line at `row`; an exchange rate has no screen.
  void openRow(std::size_t row);
  /// Whether something is missing, and there is somebody to ask.
  [[nodiscard]] bool canFetch() const;
  /// Asks the market for all days that are missing, and looks at the cache again.
  void fetchAction();
  /// Ends the fetch. What has come stays; what is under way is kept when it comes.
  void cancelAction();

  /// What writes the stretches of all lines to a file; null before there are any.
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const;

 private:
  struct Reading;
  struct Fetch;

  void observe();
  void reload();
  void advance(const std::shared_ptr<Reading>& reading);
  void advanceLater(const std::shared_ptr<Reading>& reading);
  void readNext(Reading& reading) const;
  void take(Reading& reading);
  void show(std::vector<CoverageLine> lines);
  void showFigures();
  void showStretches();
  void fetchNext(const std::shared_ptr<Fetch>& fetch);
  void fetchDidEnd(const Fetch& fetch);
  [[nodiscard]] std::vector<PortfolioPointer> portfolios() const;
  [[nodiscard]] std::shared_ptr<SwitchableQuoteProvider> chain() const;

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  bool isShown_ = false;
  bool isRefreshed_ = false;  ///< prices of holdings have been refreshed since the start
  bool isReading_ = false;
  int generation_ = 0;  ///< of the reading
  std::shared_ptr<Timer> waitTimer_;
  std::shared_ptr<Fetch> fetch_;
  EquityMap<std::string> refused_;  ///< by the last fetch
  EquityPointer chosen_;
  std::string message_;
  std::string outcome_;
  std::vector<ReportFigure> figures_;
  ClosedRange<YearMonthDay> days_{{}, {}};
  std::vector<Subscription> observations_;
};

}  // namespace corvane
