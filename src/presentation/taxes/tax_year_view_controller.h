// The report of a tax year: disposals, totals, income, and what wants a human eye.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/async/notification_center.h"
#include "presentation/reports/record_table.h"
#include "presentation/reports/report_text.h"
#include "presentation/screen/screen_surroundings.h"
#include "presentation/taxes/tax_roles_form.h"
#include "reports/inquiry/report_inquiry.h"
#include "reports/tax/denied_loss_booking.h"
#include "reports/tax/tax_year.h"
#include "reports/trail/tax_trails.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

class PortfolioExporter;

/// A line of what wants a human eye: a deemed gain, or something that is not computed.
struct TaxCheckLine {
  TaxRowPlace place;
  std::string reason;
};

/// The lists of a tax year, each of which can be written to a file.
enum class TaxSection { disposals, totals, income, toCheck, costs };

/// Income of one kind of one equity; a sum of a kind where it has no equity; fees and adjustments
/// where it has neither.
struct TaxIncomeLine {
  EquityPointer equity;
  std::string kind;
  CurrencyAmount amount;                     ///< of a sum the equivalent
  std::optional<CurrencyAmount> equivalent;  ///< none for fees, which have no rate
  std::optional<std::size_t> place = {};  ///< among the income of the year, where it has an equity
};

/// The tax year of one person, over all portfolios of a workspace. Computed on the queue of
/// reports; answers that have been overtaken are dropped. Held by shared pointer only. Main queue
/// only.
class TaxYearViewController : public std::enable_shared_from_this<TaxYearViewController> {
  struct Passkey {};

 public:
  [[nodiscard]] static std::shared_ptr<TaxYearViewController> make(ScreenSurroundings surroundings);
  TaxYearViewController(Passkey passkey, ScreenSurroundings surroundings);

  /// Called when anything but the tables has changed.
  std::function<void()> changeHandler = [] {};
  std::function<void(const TrailMaker&)> explainHandler = [](const TrailMaker&) {};
  /// Shows the row at `position`, from 0, of the portfolio.
  std::function<void(const PortfolioPointer& portfolio, std::size_t position)> openRowHandler =
      [](const PortfolioPointer&, std::size_t) {};

  void setDocumentModel(std::weak_ptr<WorkspaceModel> model);
  void setShown(bool isShown);

  // What is chosen.

  /// Tax years by the year in which they start, the latest first.
  [[nodiscard]] const std::vector<int>& years() const { return years_; }
  [[nodiscard]] int chosenYear() const { return chosenYear_; }
  void chooseYear(int year);
  /// "2024", or "2024/25" where the year does not start in January.
  [[nodiscard]] std::string yearTitle(int year) const;
  /// Whose year: "You", then everybody who has portfolios of his own.
  [[nodiscard]] const std::vector<std::string>& persons() const { return persons_; }
  [[nodiscard]] std::size_t chosenPerson() const { return chosenPerson_; }
  void choosePerson(std::size_t index);

  // What is shown.

  [[nodiscard]] bool isBusy() const { return inquiry_.isAsking(); }
  /// Whose year, its days, and what counts.
  [[nodiscard]] std::string title() const;
  /// Asks whose portfolios these are, where that has not been said; else empty.
  [[nodiscard]] const std::string& banner() const { return banner_; }
  [[nodiscard]] const std::vector<ReportFigure>& figures() const { return figures_; }
  /// In place of disposals; empty where there are some.
  [[nodiscard]] const std::string& message() const { return message_; }
  /// What the report goes by, and that it is no advice.
  [[nodiscard]] std::string footnote() const;

  RecordTable<TaxYear::Disposal> disposals;
  RecordTable<TaxYear::Totals> totals;
  RecordTable<TaxIncomeLine> income;
  RecordTable<TaxCheckLine> toCheck;
  RecordTable<TaxYear::CostAtEnd> costs;

  /// What the user does to a row of `disposals` and of `toCheck`.
  void openDisposal(std::size_t row);
  void openCheck(std::size_t row);
  /// Whether something of the loss of a disposal was denied.
  [[nodiscard]] bool canRecordAdjustment(std::size_t row) const;
  /// Asks, and books what was denied into the buyers' cost bases, as one step that can be undone.
  void recordAdjustmentAction(std::size_t row);

  /// The form that says whose the portfolios are and when a year starts; null without a workspace.
  [[nodiscard]] std::unique_ptr<TaxRolesForm> makeRolesForm() const;

  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter(
      TaxSection section = TaxSection::disposals) const;

 private:
  void observe();
  void reload();
  void take(TaxYear year);
  void gatherChoices();
  void gatherBanner();
  [[nodiscard]] TaxYearQuestion question() const;
  [[nodiscard]] std::vector<PortfolioPointer> portfolios() const;
  [[nodiscard]] std::vector<TaxedPortfolio> taxed() const;
  using DisposalTrailFunction = decltype(&taxGainTrail);
  [[nodiscard]] TrailMaker trailOf(const TaxYear::Disposal& disposal,
                                   DisposalTrailFunction makeTrail) const;
  [[nodiscard]] TrailMaker trailOf(const TaxYear::CostAtEnd& cost) const;
  [[nodiscard]] TrailMaker ledgerTrailOf(const TaxYear::Disposal& disposal) const;
  void openPlace(const TaxRowPlace& place);
  void record(const std::vector<DeniedLossBooking>& bookings);

  ScreenSurroundings surroundings_;
  std::weak_ptr<WorkspaceModel> documentModel_;
  bool isShown_ = false;
  std::vector<int> years_;
  std::optional<int> wantedYear_;
  int chosenYear_ = 0;
  std::vector<std::string> persons_ = {"You"};
  std::size_t chosenPerson_ = 0;
  std::string banner_;
  std::string message_;
  std::vector<ReportFigure> figures_;
  std::shared_ptr<const TaxYear> year_ = std::make_shared<TaxYear>();
  ReportInquiry inquiry_;
  std::vector<Subscription> observations_;
};

}  // namespace corvane
