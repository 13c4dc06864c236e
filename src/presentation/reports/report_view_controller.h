// What the reports share that are a tab of a portfolio and a page of a workspace alike.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "presentation/reports/report_scope.h"
#include "presentation/reports/report_text.h"
#include "presentation/screen/current_portfolio_having.h"
#include "presentation/screen/screen_surroundings.h"
#include "reports/inquiry/report_inquiry.h"

namespace corvane {

/// A report on a portfolio, or on all portfolios of a workspace. It asks the market only while it
/// is shown, computes on the queue of reports, and drops answers that have been overtaken; until a
/// new one is there the old one stays. Main queue only.
class ReportViewController : public PortfolioTab {
 public:
  /// Called when anything but the charts and the tables has changed, which have handlers of their
  /// own.
  std::function<void()> changeHandler = [] {};

  // As a tab of a portfolio.
  [[nodiscard]] const PortfolioDataSlice& currentData() const final { return currentData_; }
  void setCurrentData(PortfolioDataSlice data,
                      const std::optional<TransactionChanges>& changes) final;
  [[nodiscard]] bool hasOwnChart() const final { return true; }
  /// A tab that is not selected is not shown.
  void setReceivesCommands(bool receivesCommands) final { setShown(receivesCommands); }

  // As a report of a workspace.

  /// Reports on `scope`; the same one once more looks at ledgers and prices anew.
  void setScope(ReportScope scope);
  [[nodiscard]] const ReportScope& scope() const { return scope_; }
  void setShown(bool isShown);

  /// The primary currencies of the portfolios, one of which is chosen. More than one only for
  /// portfolios of several.
  [[nodiscard]] const std::vector<Currency>& currencies() const { return currencies_; }
  [[nodiscard]] const Currency& currency() const { return currency_; }
  void chooseCurrency(std::size_t index);

  // What is shown.

  /// Whether the market or figures are being waited for.
  [[nodiscard]] bool isBusy() const { return isFetching_ || inquiry_.isAsking(); }
  /// Of what, in a sentence.
  [[nodiscard]] virtual std::string title() const = 0;
  /// In place of figures; empty where there are some.
  [[nodiscard]] const std::string& message() const { return message_; }
  [[nodiscard]] const std::vector<ReportFigure>& figures() const { return figures_; }
  /// What the reader should know of the figures, a sentence each.
  [[nodiscard]] const std::vector<std::string>& notes() const { return notes_; }
  [[nodiscard]] const ReportWarning& warning() const { return warning_; }

 protected:
  explicit ReportViewController(ScreenSurroundings surroundings)
      : surroundings_(std::move(surroundings)) {}

  /// Forgets all answers: they are about other portfolios than those of the scope.
  virtual void forget(const std::string& message) = 0;
  /// Follows another scope, whose currencies are known by then.
  virtual void scopeDidChange() {}
  virtual void currencyDidChange() = 0;
  /// Asks `quotes` for what the report needs, with a completion by whileCurrent().
  virtual void askMarket(const std::shared_ptr<QuoteProvider>& quotes) = 0;

  [[nodiscard]] bool isShown() const { return isShown_; }
  /// Whether it will be made anew when it is shown.
  [[nodiscard]] bool isStale() const { return isStale_; }

  /// Asks the market, or remembers to do so when the report is shown.
  void reload();

  /// A completion that calls `take(screen, answer)` unless another question has been asked
  /// meanwhile or `screen`, which is this, is gone.
  template <typename Screen, typename Take>
  [[nodiscard]] auto whileCurrent(Screen& screen, Take take) {
    return [self = screen.weak_from_this(), generation = generation_,
            take = std::move(take)](auto answer) {
      const auto living = self.lock();
      if (living == nullptr) {
        return;
      }
      ReportViewController& report = *living;
      if (report.generation_ == generation) {
        report.isFetching_ = false;
        take(*living, std::move(answer));
      }
    };
  }

  ScreenSurroundings surroundings_;
  PortfolioDataSlice currentData_;
  ReportScope scope_;
  Currency currency_ = Currency::cad();
  std::vector<Currency> currencies_;
  std::string message_;
  std::vector<ReportFigure> figures_;
  std::vector<std::string> notes_;
  ReportWarning warning_;
  ReportInquiry inquiry_;

 private:
  bool isShown_ = false;
  bool isStale_ = false;  ///< to be made anew when it is shown
  bool isFetching_ = false;
  int generation_ = 0;  ///< of the question to the market
};

}  // namespace corvane
