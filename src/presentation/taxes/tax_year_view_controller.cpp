#include "presentation/taxes/tax_year_view_controller.h"

#include <algorithm>
#include <set>
#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/text/unicode/isolation.h"
#include "presentation/reports/report_scope.h"
#include "presentation/taxes/tax_year_tables.h"
#include "reports/inquiry/frozen_ledger.h"
#include "reports/trail/ledger_trails.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

constexpr std::size_t theUser = 0;

const Calendar& taxCalendar(const std::vector<PortfolioPointer>& portfolios) {
  return calendarOf({.name = "", .portfolios = portfolios});
}

/// `portfolios` with the roles of `taxed`, which stand in the same order.
std::vector<TaxedPortfolio> withLedgers(std::vector<TaxedPortfolio> taxed,
                                        const ReportInquiry::Ledgers& ledgers) {
  for (std::size_t i = 0; i < taxed.size(); ++i) {
    taxed[i].portfolio = ledgers[i];
  }
  return taxed;
}

}  // namespace

std::shared_ptr<TaxYearViewController> TaxYearViewController::make(
    ScreenSurroundings surroundings) {
  auto made = std::make_shared<TaxYearViewController>(Passkey{}, std::move(surroundings));
  made->observe();
  return made;
}

TaxYearViewController::TaxYearViewController(Passkey /*passkey*/, ScreenSurroundings surroundings)
    : disposals(disposalColumns(
          {.taxGain =
               [this](const TaxYear::Disposal& line) { return trailOf(line, &taxGainTrail); },
           .costBase =
               [this](const TaxYear::Disposal& line) { return trailOf(line, &taxCostTrail); },
           .ledgerGain = [this](const TaxYear::Disposal& line) { return ledgerTrailOf(line); }})),
      totals(taxTotalsColumns([this] { return year_; })),
      income(taxIncomeColumns([this] { return year_; })),
      toCheck(taxCheckColumns()),
      costs(costAtEndColumns([this](const TaxYear::CostAtEnd& line) { return trailOf(line); })),
      surroundings_(std::move(surroundings)) {}

void TaxYearViewController::observe() {
  auto& center = NotificationCenter::defaultCenter();
  const auto reloads = [self = weak_from_this()](const auto& /*news*/) {
    if (const auto living = self.lock()) {
      living->reload();
    }
  };
  observations_.push_back(center.addObserver(
      PortfolioManager::didChangePortfolio, nullptr,
      [reloads](const PortfolioManager::PortfolioChange& change) { reloads(change); },
      DispatchQueue::main()));
  observations_.push_back(center.addObserver(
      taxSettingsDidChange, nullptr, [reloads](WorkspaceModel* const& model) { reloads(model); },
      DispatchQueue::main()));
}

void TaxYearViewController::setDocumentModel(std::weak_ptr<WorkspaceModel> model) {
  documentModel_ = std::move(model);
  wantedYear_.reset();
  chosenPerson_ = theUser;
  reload();
}

void TaxYearViewController::setShown(bool isShown) {
  if (isShown != std::exchange(isShown_, isShown) && isShown) {
    reload();
  }
}

void TaxYearViewController::chooseYear(int year) {
  wantedYear_ = year;
  reload();
}

void TaxYearViewController::choosePerson(std::size_t index) {
  chosenPerson_ = index;
  reload();
}

std::vector<PortfolioPointer> TaxYearViewController::portfolios() const {
  const auto model = documentModel_.lock();
  return model == nullptr ? std::vector<PortfolioPointer>() : model->portfolios();
}

std::vector<TaxedPortfolio> TaxYearViewController::taxed() const {
  const auto model = documentModel_.lock();
  const auto all = portfolios();
  return taxedPortfolios(
      all, [&](const PortfolioPointer& portfolio) { return model->taxRoleOf(portfolio); });
}

TaxYearQuestion TaxYearViewController::question() const {
  const auto model = documentModel_.lock();
  const YearMonthDay today = YearMonthDay::of(surroundings_.now(), taxCalendar(portfolios()));
  TaxYearQuestion asked = taxYearQuestion(model->taxSettings, chosenYear_, today);
  asked.person = chosenPerson_ == theUser ? "" : persons_.at(chosenPerson_);
  return asked;
}

/// Years and persons that there are to choose from.
void TaxYearViewController::gatherChoices() {
  const auto model = documentModel_.lock();
  const auto all = portfolios();
  const Calendar& calendar = taxCalendar(all);
  const TaxSettings settings = model == nullptr ? TaxSettings() : model->taxSettings;
  const int present = settings.yearOf(YearMonthDay::of(surroundings_.now(), calendar));
  int first = present;
  std::set<std::string> names;
  for (const PortfolioPointer& portfolio : all) {
    if (const auto& rows = portfolio->transactions(); !rows.empty()) {
      first = std::min(first,
                       settings.yearOf(YearMonthDay::of(rows.front()->settlementDate(), calendar)));
    }
    const auto role = model->taxRoleOf(portfolio);
    if (role && role->role == TaxRole::affiliated) {
      names.insert(role->person);
    }
  }
  years_.clear();
  for (int year = present; year >= first; --year) {
    years_.push_back(year);
  }
  chosenYear_ = std::clamp(wantedYear_.value_or(present), first, present);
  const std::string person = persons_.at(chosenPerson_);
  persons_ = {"You"};
  persons_.insert(persons_.end(), names.begin(), names.end());
  const auto found = std::ranges::find(persons_, person);
  chosenPerson_ =
      found == persons_.end() ? theUser : static_cast<std::size_t>(found - persons_.begin());
}

void TaxYearViewController::gatherBanner() {
  const auto model = documentModel_.lock();
  banner_.clear();
  std::string names;
  for (const PortfolioPointer& portfolio : portfolios()) {
    if (!model->taxRoleOf(portfolio)) {
      names += (names.empty() ? "“" : ", “") + isolatedName(portfolio->name) + "”";
      if (proposedTaxRole(portfolio->name)) {
        names += " (by its name a registered account)";
      }
    }
  }
  if (!names.empty()) {
    banner_ =
        "Whose are these portfolios, and are they taxed? Until you say so they count as your "
        "own and taxable: " +
        names + ".";
  }
}

void TaxYearViewController::reload() {
  if (!isShown_) {
    return;
  }
  gatherChoices();
  gatherBanner();
  const auto all = portfolios();
  if (all.empty()) {
    inquiry_.cancel();
    take({});
    return;
  }
  inquiry_.ask(
      all,
      [roles = taxed(), asked = question(), calendar = taxCalendar(all)](
          const ReportInquiry::Ledgers& ledgers, const Cancellation& cancellation) {
        TaxYearQuestion cancellable = asked;
        cancellable.cancellation = cancellation;
        return taxYear(withLedgers(roles, ledgers), cancellable, calendar);
      },
      [self = weak_from_this()](TaxYear year) {
        if (const auto living = self.lock()) {
          living->take(std::move(year));
        }
      });
  changeHandler();
}

void TaxYearViewController::take(TaxYear year) {
  auto former = std::exchange(year_, std::make_shared<const TaxYear>(std::move(year)));
  const auto currencies = primaryCurrencies(portfolios());
  const Currency currency = currencies.empty() ? Currency::cad() : currencies.front();
  message_ =
      year_->disposals.empty() ? "No disposals in " + yearTitle(chosenYear_) + "." : std::string();
  figures_ = taxFigures(year_, currencies);
  disposals.setRecords(year_->disposals);
  totals.setRecords(taxTotals(*year_, currency));
  income.setRecords(taxIncomeLines(*year_));
  toCheck.setRecords(taxCheckLines(*year_));
  costs.setRecords(year_->costs);
  changeHandler();
  // Its copies of ledgers are large, and given back where they were made.
  reportQueue()->async([former = std::move(former)] {});
}

std::string TaxYearViewController::yearTitle(int year) const {
  const auto model = documentModel_.lock();
  const TaxSettings settings = model == nullptr ? TaxSettings() : model->taxSettings;
  if (settings.startMonth == 1 && settings.startDay == 1) {
    return std::to_string(year);
  }
  const std::string next = std::to_string((year + 1) % 100);
  return std::to_string(year) + "/" + (next.size() < 2 ? "0" : "") + next;
}

std::string TaxYearViewController::title() const {
  const auto model = documentModel_.lock();
  if (model == nullptr) {
    return "";
  }
  const TaxSettings& settings = model->taxSettings;
  return "Tax year " + yearTitle(chosenYear_) + ", " +
         mediumDayText(settings.firstDay(chosenYear_)) + " – " +
         mediumDayText(settings.lastDay(chosenYear_)) +
         (settings.byTradeDate ? ", by trade date" : ", by settlement date");
}

std::string TaxYearViewController::footnote() const {
  const auto model = documentModel_.lock();
  std::string text;
  if (model != nullptr && model->taxSettings.country == TaxCountry::canada) {
    text =
        "Superficial losses are a hint after the tax office's letters 2021-0896031C6 and "
        "2022-0940941C6, which are practice and not law. ";
  }
  return text +
         "Rates are those that were entered with the transactions; income is net of what was "
         "withheld. This is no tax advice.";
}

TrailMaker TaxYearViewController::trailOf(const TaxYear::Disposal& disposal,
                                          DisposalTrailFunction makeTrail) const {
  if (documentModel_.expired()) {
    return nullptr;
  }
  // The trail is about the same copies as the line.
  std::vector<TaxedPortfolio> roles = taxed();
  return [disposal, makeTrail, asked = question(), calendar = taxCalendar(portfolios()),
          roles = std::move(roles)]() mutable -> std::optional<TrailNode> {
    TaxYear::Disposal line = disposal;
    if (const PortfolioPointer original = originalOf(line.place.portfolio)) {
      line.place.portfolio = original;
      return makeTrail(line, roles, asked, calendar);
    }
    return std::nullopt;
  };
}

TrailMaker TaxYearViewController::trailOf(const TaxYear::CostAtEnd& cost) const {
  if (documentModel_.expired()) {
    return nullptr;
  }
  return [cost, asked = question(), calendar = taxCalendar(portfolios()), roles = taxed()] {
    return taxCostAtEndTrail(cost, roles, asked, calendar);
  };
}

/// Of the ledger itself, in which the row may have moved since the line was made.
TrailMaker TaxYearViewController::ledgerTrailOf(const TaxYear::Disposal& disposal) const {
  if (!disposal.ledgerGain) {
    return nullptr;
  }
  return [place = disposal.place, gain = *disposal.ledgerGain,
          calendar = taxCalendar(portfolios())]() -> std::optional<TrailNode> {
    const PortfolioPointer original = originalOf(place.portfolio);
    if (original == nullptr) {
      return std::nullopt;
    }
    const auto& rows = original->transactions();
    const auto isSale = [&](std::size_t row) {
      const EquityPointer* equity = rows[row]->basic.equity();
      return equity != nullptr && **equity == *place.equity && rows[row]->capitalGain() == gain &&
             YearMonthDay::of(rows[row]->settlementDate(), calendar) == place.settlement;
    };
    std::size_t row = place.position;
    if (row >= rows.size() || !isSale(row)) {
      row = 0;
      while (row < rows.size() && !isSale(row)) {
        ++row;
      }
    }
    return row < rows.size()
               ? capitalGainTrail(*original, row, calendar)
               : std::optional(ofOlderLedger("Capital gain", gain,
                                             std::string(original->primaryCurrency().code)));
  };
}

void TaxYearViewController::openPlace(const TaxRowPlace& place) {
  if (const PortfolioPointer original = originalOf(place.portfolio)) {
    openRowHandler(original, place.position);
  }
}

void TaxYearViewController::openDisposal(std::size_t row) {
  if (row < disposals.numberOfRows()) {
    openPlace(disposals.records()[row].place);
  }
}

void TaxYearViewController::openCheck(std::size_t row) {
  if (row < toCheck.numberOfRows()) {
    openPlace(toCheck.records()[row].place);
  }
}

bool TaxYearViewController::canRecordAdjustment(std::size_t row) const {
  return row < disposals.numberOfRows() && disposals.records()[row].tax.superficial.denied > 0;
}

void TaxYearViewController::recordAdjustmentAction(std::size_t row) {
  if (!canRecordAdjustment(row) || documentModel_.expired()) {
    return;
  }
  TaxYear::Disposal line = disposals.records()[row];
  line.place.portfolio = originalOf(line.place.portfolio);
  if (line.place.portfolio == nullptr) {
    return;
  }
  auto bookings = deniedLossBookings(line, taxed(), question(), taxCalendar(portfolios()));
  if (bookings.empty()) {
    surroundings_.presentMessage(
        "There is nothing to book: the buyers' ledgers have it already, or it is lost.");
    return;
  }
  std::string where;
  for (const DeniedLossBooking& booking : bookings) {
    where += (where.empty() ? "“" : ", “") + isolatedName(booking.portfolio->name) + "”";
  }
  surroundings_.showAlert(
      {.messageText = "Book the denied loss into the cost base of " + line.place.equity->symbol +
                      " in " + where + "?",
       .informativeText = "A row that moves no shares raises the cost base, so that the ledger's "
                          "own gains follow. The tax year stays as it is. This can be undone.",
       .buttons = {"Record Adjustment", "Cancel"}},
      [self = weak_from_this(), bookings = std::move(bookings)](std::size_t button) {
        const auto living = self.lock();
        if (living != nullptr && button == 0) {
          living->record(bookings);
        }
      });
}

void TaxYearViewController::record(const std::vector<DeniedLossBooking>& bookings) {
  try {
    recordBookings(bookings, surroundings_.undoManager);
  } catch (const Error& error) {
    surroundings_.presentError(error);
    return;
  }
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->setActionName("Record Adjustment");
  }
}

std::unique_ptr<TaxRolesForm> TaxYearViewController::makeRolesForm() const {
  auto model = documentModel_.lock();
  return model == nullptr
             ? nullptr
             : std::make_unique<TaxRolesForm>(std::move(model), surroundings_.undoManager);
}

std::shared_ptr<PortfolioExporter> TaxYearViewController::makeExporter(TaxSection section) const {
  const std::string title = "Tax Year " + std::to_string(chosenYear_);
  const Calendar& calendar = taxCalendar(portfolios());
  UserDefaults* defaults = surroundings_.defaults;
  switch (section) {
    case TaxSection::disposals:
      return ReportLinesExporter::ofDisposals(*year_, title, calendar, defaults);
    case TaxSection::totals:
      return ReportLinesExporter::ofTaxTotals(*year_, title + " Totals", defaults);
    case TaxSection::income:
      return ReportLinesExporter::ofTaxIncome(*year_, title + " Income", defaults);
    case TaxSection::toCheck:
      return ReportLinesExporter::ofTaxChecks(*year_, title + " To Check", calendar, defaults);
    case TaxSection::costs:
      return ReportLinesExporter::ofTaxCosts(*year_, title + " Cost Base", defaults);
  }
  return nullptr;
}

}  // namespace corvane
