#include <algorithm>
#include <iterator>
#include <map>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/commands/tax_question.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "exchange/exports/report_lines_exporter.h"
#include "reports/series/report_days.h"
#include "reports/tax/denied_loss_booking.h"
#include "reports/tax/sale_estimate.h"
#include "reports/tax/tax_year.h"

namespace corvane::cli {
namespace {

std::vector<Listing::Field> disposalFields() {
  using enum Listing::Kind;
  return {{"settlement", "Settlement"},
          {"tradeDate", "Trade Date"},
          {"portfolio", "Portfolio"},
          {"symbol", "Symbol"},
          {"shares", "Shares", number},
          {"proceeds", "Proceeds", number},
          {"currency", "Currency"},
          {"rate", "Rate", number},
          {"equivalent", "In Primary", number},
          {"costBase", "Cost Base", number},
          {"ledgerGain", "Ledger Gain", number},
          {"denied", "Denied", number},
          {"addedTo", "Added To"},
          {"taxGain", "Tax Gain", number},
          {"primaryCurrency", "Primary"},
          {"note", "Note"}};
}

ReportTable disposalsTable(const TaxYear& year) {
  ReportTable table(disposalFields());
  for (const TaxYear::Disposal& line : year.disposals) {
    const Currency& primary = line.place.portfolio->primaryCurrency();
    const auto money = [&](const Decimal& amount) { return moneyText(amount, primary); };
    table.add({isoText(line.place.settlement), isoText(line.place.trade),
               line.place.portfolio->name, line.place.equity->symbol, line.shares.description(),
               moneyText(line.proceeds.amount, line.proceeds.currency),
               std::string(line.proceeds.currency.code),
               rounded(line.rate, 6, RoundingMode::bankers).description(), money(line.equivalent),
               money(line.tax.costDisposed),
               line.ledgerGain ? money(*line.ledgerGain) : std::string(noFigure),
               money(line.tax.superficial.denied), line.addedTo, money(line.tax.taxGain),
               std::string(primary.code), line.note});
  }
  return table;
}

std::vector<Listing::Field> totalFields() {
  using enum Listing::Kind;
  return {{"symbol", "Symbol"},
          {"currency", "Currency"},
          {"proceeds", "Proceeds", number},
          {"costBase", "Cost Base", number},
          {"gains", "Gains", number},
          {"losses", "Losses", number},
          {"denied", "Denied", number},
          {"net", "Net", number}};
}

ReportTable totalsTable(const TaxYear& year) {
  ReportTable table(totalFields());
  for (const TaxYear::Totals& line : year.totals) {
    const auto money = [&](const Decimal& amount) { return moneyText(amount, line.currency); };
    const auto add = line.equity == nullptr ? &ReportTable::addTotal : &ReportTable::add;
    (table.*add)({line.equity == nullptr ? "Total" : line.equity->symbol,
                  std::string(line.currency.code), money(line.proceeds), money(line.costBase),
                  money(line.gains), money(line.losses), money(line.denied), money(line.net())});
  }
  if (year.totals.empty()) {
    table.addTotal({"Total", "", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"});
  }
  return table;
}

std::vector<Listing::Field> taxIncomeFields() {
  using enum Listing::Kind;
  return {{"symbol", "Symbol"},
          {"kind", "Kind"},
          {"amount", "Amount", number},
          {"currency", "Currency"},
          {"equivalent", "Equivalent", number},
          {"primaryCurrency", "Primary"}};
}

ReportTable taxIncomeTable(const TaxYear& year) {
  ReportTable table(taxIncomeFields());
  std::map<std::pair<std::string, std::string>, std::pair<Currency, Decimal>> sums;
  for (const TaxYear::Income& line : year.income) {
    const Currency& primary = line.equivalent.currency;
    table.add({line.equity->symbol, kindOfIncome(line.kind),
               moneyText(line.amount.amount, line.amount.currency),
               std::string(line.amount.currency.code), moneyText(line.equivalent.amount, primary),
               std::string(primary.code)});
    auto& [currency, sum] = sums[{kindOfIncome(line.kind), std::string(primary.code)}];
    currency = primary;
    sum += line.equivalent.amount;
  }
  for (const auto& [key, sum] : sums) {
    table.addTotal({"Total", key.first, "", "", moneyText(sum.second, sum.first), key.second});
  }
  for (const CurrencyAmount& adjustment : year.adjustments) {
    table.add({"", "fees and adjustments", moneyText(adjustment.amount, adjustment.currency),
               std::string(adjustment.currency.code), "", ""});
  }
  return table;
}

std::vector<Listing::Field> checkFields() {
  using enum Listing::Kind;
  return {{"settlement", "Settlement"},
          {"portfolio", "Portfolio"},
          {"row", "Row", number},
          {"symbol", "Symbol"},
          {"toCheck", "To Check"}};
}

ReportTable checkTable(const TaxYear& year) {
  ReportTable table(checkFields());
  const auto add = [&](const TaxRowPlace& place, const std::string& what) {
    table.add({isoText(place.settlement), place.portfolio->name, std::to_string(place.position + 1),
               place.equity->symbol, what});
  };
  for (const TaxYear::DeemedGain& deemed : year.deemedGains) {
    add(deemed.place, "a deemed gain of " +
                          moneyText(deemed.amount, deemed.place.portfolio->primaryCurrency()) +
                          ": the return of capital was more than the cost base");
  }
  for (const TaxYear::ToCheck& check : year.toCheck) {
    add(check.place, check.reason);
  }
  return table;
}

std::vector<Listing::Field> costFields() {
  using enum Listing::Kind;
  return {{"symbol", "Symbol"},
          {"shares", "Shares at End", number},
          {"costBase", "Cost Base at End", number},
          {"currency", "Currency"}};
}

ReportTable costsTable(const TaxYear& year) {
  ReportTable table(costFields());
  for (const TaxYear::CostAtEnd& cost : year.costs) {
    table.add({cost.equity->symbol, cost.pool.shares.description(),
               moneyText(cost.pool.cost, cost.currency), std::string(cost.currency.code)});
  }
  return table;
}

std::vector<Currency> primaryCurrencies(const std::vector<PortfolioPointer>& portfolios) {
  std::vector<Currency> currencies;
  for (const PortfolioPointer& portfolio : portfolios) {
    if (std::ranges::find(currencies, portfolio->primaryCurrency()) == currencies.end()) {
      currencies.push_back(portfolio->primaryCurrency());
    }
  }
  return currencies;
}

/// What `shares` of `equity` are worth in `currency` at the latest price and rate.
Decimal worthOf(const Decimal& shares, const EquityPointer& equity, const Currency& currency,
                PortfolioManager& manager, const Console& console) {
  std::optional<Decimal> rate = 1;
  if (equity->currency != currency) {
    const auto pair = manager.quoteProvider->exchangeRateEquity(equity->currency, currency);
    refreshEquities(*manager.quoteProvider, {pair}, console);
    rate = pair->recentPrice;
  }
  if (!equity->recentPrice || !rate) {
    console.warn("No price of " + equity->symbol + "; --proceeds says what a sale would bring.");
    throw Failed(exitCode::failure);
  }
  return roundedToMinorUnits(shares * *equity->recentPrice * *rate, currency);
}

std::vector<Listing::Field> saleFields() {
  using enum Listing::Kind;
  return {{"portfolio", "Portfolio"},       {"symbol", "Symbol"},
          {"shares", "Shares", number},     {"held", "Held", number},
          {"proceeds", "Proceeds", number}, {"costBase", "Cost Base", number},
          {"gain", "Gain", number},         {"denied", "Denied", number},
          {"addedTo", "Added To"},          {"taxGain", "Tax Gain", number},
          {"primaryCurrency", "Primary"}};
}

/// What a sale of --if-sold would come to today.
void writeSaleEstimate(const CommandLine& line, const WorkspaceFile& workspace,
                       const TaxYearQuestion& question,
                       const std::vector<TaxedPortfolio>& portfolios, const Console& console) {
  const std::string& text = line.required("--if-sold");
  const std::size_t blank = text.rfind(' ');
  const auto shares =
      blank == std::string::npos ? std::nullopt : Decimal::fromWholeString(text.substr(blank + 1));
  if (!shares || !(*shares > 0)) {
    throw UsageError("--if-sold needs a symbol and a number of shares, such as ABC 20.");
  }
  PortfolioManager& manager = *workspace.manager();
  const EquityPointer equity = equityNamed(text.substr(0, blank), equitiesOf(manager.portfolios()));
  const auto proceeds = numberOption(line, "--proceeds");
  if (!proceeds) {
    refreshEquities(*manager.quoteProvider, {equity}, console);
  }
  const ListingFormat format = listingFormat(line);
  ReportTable all(saleFields());
  bool isHeld = false;
  for (const Currency& currency : primaryCurrencies(manager.portfolios())) {
    const auto brought = proceeds ? proceeds : worthOf(*shares, equity, currency, manager, console);
    const auto estimate =
        estimatedSale(portfolios, question, equity, currency, *shares, *brought, manager.calendar);
    if (!estimate) {
      continue;
    }
    isHeld = true;
    const TaxDisposal& tax = estimate->tax;
    const auto money = [&](const Decimal& amount) { return moneyText(amount, currency); };
    const std::vector<std::string> cells = {estimate->place.portfolio->name,
                                            equity->symbol,
                                            shares->description(),
                                            estimate->held.description(),
                                            money(*brought),
                                            money(tax.costDisposed),
                                            money(tax.gain),
                                            money(tax.superficial.denied),
                                            estimate->addedTo,
                                            money(tax.taxGain),
                                            std::string(currency.code)};
    all.add(cells);
    if (format == ListingFormat::table) {
      ReportTable table(saleFields());
      table.add(cells);
      table.write(format, console.out);
      console.out << "\nToday, " << estimate->text() << ". Purchases until "
                  << isoText(tax.superficial.to) << " may change it. This is no tax advice.\n";
    }
  }
  if (!isHeld) {
    throw UsageError("Nothing of “" + equity->symbol + "” is held.");
  }
  if (format != ListingFormat::table) {
    all.write(format, console.out);  // one array, whatever the number of currencies
  }
}

void recordAdjustments(WorkspaceFile& workspace, const TaxYear& year,
                       const TaxYearQuestion& question,
                       const std::vector<TaxedPortfolio>& portfolios, const Console& console) {
  std::vector<DeniedLossBooking> bookings;
  for (const TaxYear::Disposal& disposal : year.disposals) {
    std::ranges::move(
        deniedLossBookings(disposal, portfolios, question, workspace.manager()->calendar),
        std::back_inserter(bookings));
  }
  if (bookings.empty()) {
    console.out << "No denied loss is left to be recorded.\n";
    return;
  }
  workspace.requireSound();
  recordBookings(bookings, nullptr);
  workspace.save();
  for (const auto& [portfolio, transaction] : bookings) {
    const auto& row = std::get<BasicTransaction::JournaledShares>(transaction.kind);
    console.out << portfolio->name << ": "
                << moneyText(row.costBaseAdded.value_or(0), portfolio->primaryCurrency()) << ' '
                << std::string_view(portfolio->primaryCurrency().code)
                << " added to the cost base of " << row.equity->symbol << ".\n";
  }
}

void writeWholeYear(const TaxYear& year, const TaxYearQuestion& question, bool asksForRoles,
                    std::ostream& out) {
  out << isoText(question.first) << " to " << isoText(question.last)
      << (question.byTradeDate ? ", by trade date" : ", by settlement") << "\n\n";
  if (year.disposals.empty()) {
    out << "No disposals in " << question.first.year << ".\n";
  } else {
    disposalsTable(year).write(ListingFormat::table, out);
  }
  for (const ReportTable& table :
       {totalsTable(year), taxIncomeTable(year), checkTable(year), costsTable(year)}) {
    if (!table.isEmpty()) {
      out << '\n';
      table.write(ListingFormat::table, out);
    }
  }
  if (asksForRoles) {
    out << "\nNobody has said yet what each portfolio is to taxes; see corvane-cli tax-settings.\n";
  }
  out << (question.country == TaxCountry::unitedKingdom
              ? "\nShares are matched with purchases of the same day, of the next 30 days, then "
                "with the pool.\nThis is no tax advice.\n"
              : "\nSuperficial losses are a hint after the tax office's letters 2021-0896031C6 "
                "and 2022-0940941C6,\nwhich are practice and not law. This is no tax advice.\n");
}

void writeTaxYear(const CommandLine& line, const Console& console) {
  const std::string section = line.value("--section").value_or("");
  const std::map<std::string, ReportTable (*)(const TaxYear&)> sections = {
      {"disposals", &disposalsTable},
      {"totals", &totalsTable},
      {"income", &taxIncomeTable},
      {"check", &checkTable},
      {"costs", &costsTable}};
  if (!section.empty() && !sections.contains(section)) {
    throw UsageError("--section is none of disposals, totals, income, check and costs.");
  }
  const bool needsPrices = line.has("--if-sold") && !line.has("--proceeds");
  std::optional<PriceSource> prices;
  if (needsPrices) {
    prices.emplace(line);
  }
  WorkspaceFile workspace(line.word(0), console,
                          prices ? prices->provider() : makeOfflineProvider());
  const auto& model = workspace.document()->model();
  const Calendar& calendar = workspace.manager()->calendar;
  const TaxYearQuestion question = taxQuestion(line, model->taxSettings, calendar);
  const std::vector<TaxedPortfolio> portfolios = portfoliosWithRoles(line, workspace);
  if (!question.person.empty() &&
      std::ranges::find(portfolios, question.person, &TaxedPortfolio::person) == portfolios.end()) {
    throw UsageError("No portfolio is that of “" + question.person + "” (--affiliated).");
  }
  if (line.has("--if-sold")) {
    writeSaleEstimate(line, workspace, question, portfolios, console);
    return;
  }
  const TaxYear year = taxYear(portfolios, question, calendar);
  const ListingFormat format = listingFormat(line);
  if (line.has("--record-adjustments")) {
    if (format != ListingFormat::table) {
      throw UsageError("--csv and --json go with what is shown, not with --record-adjustments.");
    }
    recordAdjustments(workspace, year, question, portfolios, console);
    return;
  }
  if (!section.empty() || format != ListingFormat::table) {
    sections.at(section.empty() ? "disposals" : section)(year).write(format, console.out);
    return;
  }
  const bool asksForRoles = std::ranges::any_of(
      portfolios, [&](const TaxedPortfolio& taxed) { return !model->taxRoleOf(taxed.portfolio); });
  writeWholeYear(year, question, asksForRoles && portfolios.size() > 1, console.out);
}

}  // namespace

Command taxCommand() {
  return {
      .name = "tax",
      .summary = "Shows the disposals, the income and the cost bases of a tax year.",
      .words = {"WORKSPACE"},
      .options = joined(
          {{"--year", "YEAR", "the year in which the tax year starts; else that of today"},
           {"--year-start", "MM-DD", "its first day, such as 04-06; else that of the workspace"},
           {"--country", "COUNTRY", "whose rules hold; else those of the workspace", false, false,
            "none canada unitedKingdom"},
           {"--person", "NAME", "whose year; else your own"},
           {"--trade-dates", "", "counts by trade dates; else as the workspace says"},
           {"--section", "NAME", "disposals, totals, income, check or costs alone", false, false,
            "disposals totals income check costs"},
           {"--registered", "PORTFOLIO", "is a registered account", false, true},
           {"--affiliated", "PORTFOLIO=PERSON", "is that of somebody affiliated", false, true},
           {"--not-mine", "PORTFOLIO", "plays no part", false, true},
           {"--no-superficial", "", "denies no superficial losses"},
           {"--if-sold", "SYMBOL SHARES",
            "what selling these shares today would gain and have denied"},
           {"--proceeds", "AMOUNT", "what that sale would bring, in the primary currency"},
           {"--record-adjustments", "",
            "books the year's denied losses into the buyers' cost bases"}},
          listingOptions(), priceSourceOptions()),
      .explanation =
          "The cost of shares is averaged over all portfolios of a person with one primary "
          "currency, while\nthe ledger averages each portfolio by itself; both gains are shown. "
          "Under the rules of Canada a\nloss is denied as far as the same shares were bought in "
          "the 30 days before and after the sale,\nby you, a registered account or somebody "
          "affiliated, and are held at the end of them. Under those\nof the United Kingdom shares "
          "are matched with purchases of the same day, of the next 30 days,\nthen with the pool. "
          "Rates are those entered with the transactions, and income is net of what was\n"
          "withheld. Roles, country and the year's start are kept by corvane-cli tax-settings; "
          "options here\nhold for one run. --record-adjustments changes the workspace; a loss that "
          "is booked already is\nnot booked again. Prices are needed for --if-sold alone. This is "
          "no tax advice.\n",
      .listings = {{"", disposalFields()},
                   {"with --section totals", totalFields()},
                   {"with --section income", taxIncomeFields()},
                   {"with --section check", checkFields()},
                   {"with --section costs", costFields()},
                   {"with --if-sold", saleFields()}},
      .run = &writeTaxYear};
}

}  // namespace corvane::cli
