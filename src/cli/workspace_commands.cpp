// Commands on workspaces and their ledgers.

#include <algorithm>
#include <charconv>

#include "cli/command.h"
#include "cli/console_workspace.h"
#include "cli/text_table.h"
#include "core/year_month_day.h"
#include "exchange/portfolio_transactions_exporter.h"

namespace corvane::cli {
namespace {

std::string dayText(Date date, const Calendar& calendar) {
  const YearMonthDay day = YearMonthDay::of(date, calendar);
  const auto padded = [](int number, std::size_t digits) {
    const std::string text = std::to_string(number);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
  };
  return padded(day.year, 4) + "-" + padded(day.month, 2) + "-" + padded(day.day, 2);
}

std::string numberText(const std::optional<Decimal>& number) {
  return number ? number->description() : "";
}

bool create(const Arguments& arguments, Console& console) {
  const std::filesystem::path path = arguments.operand(0);
  if (path.extension() != WorkspaceDocument::filenameExtension) {
    throw UsageError("The name of a workspace ends in " +
                     std::string(WorkspaceDocument::filenameExtension) + ".");
  }
  const Currency currency = arguments.currency("--currency").value();
  const ConsolePrices prices(PriceSource::none);
  const bool exists = std::filesystem::exists(path);
  ConsoleWorkspace workspace = exists ? ConsoleWorkspace(console, prices.provider(), path)
                                      : ConsoleWorkspace(console, prices.provider());
  const std::string name = arguments.value("--portfolio").value();
  for (const PortfolioPointer& portfolio : workspace.model().portfolios()) {
    if (portfolio->name == name) {
      throw ConsoleError("There is a portfolio “" + name + "” already.");
    }
  }
  const PortfolioPointer portfolio = workspace.manager().createPortfolio(currency);
  portfolio->name = name;
  portfolio->usesCashAccounts = !arguments.has("--without-cash-accounts");
  portfolio->allowsNegativeBalances = arguments.has("--allow-negative-balances");
  workspace.manager().portfolioPropertiesDidChange(portfolio);
  workspace.document().save(path);
  return true;
}

bool list(const Arguments& arguments, Console& console) {
  const ConsolePrices prices(PriceSource::none);
  ConsoleWorkspace workspace(console, prices.provider(), arguments.operand(0));
  TextTable table(
      {{"Portfolio"}, {"Currency"}, {"Rows", TextTable::Alignment::right}, {"Last day"}});
  const Calendar& calendar = workspace.manager().calendar;
  for (const PortfolioPointer& portfolio : workspace.model().portfolios()) {
    const auto& rows = portfolio->transactions();
    table.add({portfolio->name, std::string(portfolio->primaryCurrency().code),
               std::to_string(rows.size()),
               rows.empty() ? "" : dayText(rows.back()->settlementDate(), calendar)});
  }
  table.write(console.out);
  if (!workspace.model().watchlistEquities.empty()) {
    console.out << "\nWatchlist:";
    for (const EquityPointer& equity : workspace.model().watchlistEquities) {
      console.out << ' ' << equity->id();
    }
    console.out << '\n';
  }
  return true;
}

bool ledger(const Arguments& arguments, Console& console) {
  const ConsolePrices prices(PriceSource::none);
  ConsoleWorkspace workspace(console, prices.provider(), arguments.operand(0));
  const auto portfolio = workspace.portfolioNamed(arguments.value("--portfolio").value());
  const Calendar& calendar = workspace.manager().calendar;
  using enum TextTable::Alignment;
  TextTable table({{"Row", right},
                   {"Settled"},
                   {"Type"},
                   {"Symbol"},
                   {"Amount", right},
                   {"Currency"},
                   {"Cash", right},
                   {"Shares", right},
                   {"Cost base", right},
                   {"Gain", right},
                   {"Note"}});
  std::size_t number = 0;
  for (const TransactionPointer& row : portfolio->transactions()) {
    const BasicTransaction& basic = row->basic;
    const EquityPointer* equity = basic.equity();
    const Currency* currency = basic.currency();
    std::string amount;
    if (const auto* trade = std::get_if<BasicTransaction::Trade>(&basic.kind)) {
      amount = numberText(-trade->cashDisposed.amount);
    } else if (const auto* yield = std::get_if<BasicTransaction::Yield>(&basic.kind)) {
      amount = numberText(yield->netAmount.amount);
    } else if (const auto* transfer = std::get_if<BasicTransaction::Transfer>(&basic.kind)) {
      amount = numberText(transfer->amount.amount);
    } else if (const auto* adjustment =
                   std::get_if<BasicTransaction::CashAdjustment>(&basic.kind)) {
      amount = numberText(adjustment->amount.amount);
    }
    table.add({std::to_string(++number), dayText(row->settlementDate(), calendar),
               std::string(exportedWord(basic.kind)), equity == nullptr ? "" : (*equity)->symbol,
               amount, currency == nullptr ? "" : std::string(currency->code),
               numberText(row->cashNet), numberText(row->sharesNet), numberText(row->costBaseNet()),
               numberText(row->capitalGain()), basic.note.value_or("")});
  }
  table.write(console.out);
  return true;
}

bool verify(const Arguments& arguments, Console& console) {
  const ConsolePrices prices(PriceSource::none);
  ConsoleWorkspace workspace(console, prices.provider(), arguments.operand(0));
  bool allAreSound = true;
  for (const PortfolioPointer& portfolio : workspace.model().portfolios()) {
    try {
      const auto& rows = portfolio->transactions();
      (void)PortfolioManager::replay(rows, {});
      console.out << portfolio->name << ": " << rows.size() << " rows, all balances are right.\n";
    } catch (const Error& error) {
      allAreSound = false;
      console.err << portfolio->name << ": " << error << '\n';
    }
  }
  return allAreSound;
}

bool remove(const Arguments& arguments, Console& console) {
  const ConsolePrices prices(PriceSource::none);
  ConsoleWorkspace workspace(console, prices.provider(), arguments.operand(0));
  const auto portfolio = workspace.portfolioNamed(arguments.value("--portfolio").value());
  if (!arguments.has("--row")) {
    workspace.manager().removePortfolio(portfolio);
    workspace.save();
    return true;
  }
  const auto& rows = portfolio->transactions();
  std::vector<std::size_t> numbers;
  for (const std::string& text : arguments.values("--row")) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number == 0 ||
        number > rows.size()) {
      throw UsageError("--row takes the number of a row, 1 to " + std::to_string(rows.size()) +
                       ", not “" + text + "”.");
    }
    numbers.push_back(number);
  }
  std::ranges::sort(numbers);
  const auto repeated = std::ranges::unique(numbers);
  numbers.erase(repeated.begin(), repeated.end());
  PortfolioManager::Transactions subjects;
  for (const std::size_t number : numbers) {
    subjects.push_back(rows[number - 1]);
  }
  workspace.manager().deleteTransactions(subjects, portfolio, nullptr);
  workspace.save();
  return true;
}

bool watch(const Arguments& arguments, Console& console) {
  const ConsolePrices prices(PriceSource::none);
  ConsoleWorkspace workspace(console, prices.provider(), arguments.operand(0));
  auto& watched = workspace.model().watchlistEquities;
  for (const std::string& symbol : std::span(arguments.operands()).subspan(1)) {
    const EquityPointer equity = prices.provider()->equityWithId(symbol);
    const auto isIt = [&](const EquityPointer& other) { return *other == *equity; };
    if (arguments.has("--stop")) {
      std::erase_if(watched, isIt);
    } else if (std::ranges::none_of(watched, isIt)) {
      watched.push_back(equity);
    }
  }
  workspace.save();
  return true;
}

constexpr Signature::Option portfolioOption = {
    .name = "--portfolio", .value = "NAME", .help = "the portfolio's name", .isRequired = true};

}  // namespace

std::vector<Command> workspaceCommands() {
  return {
      {.name = "create",
       .summary = "Makes a portfolio, and its workspace where there is none yet.",
       .details = "The primary currency is that of all cost bases and gains and stays for good.",
       .signature = {.operands = {"WORKSPACE"},
                     .options = {portfolioOption,
                                 {.name = "--currency",
                                  .value = "CODE",
                                  .help = "the primary currency, such as CAD",
                                  .isRequired = true},
                                 {.name = "--without-cash-accounts",
                                  .value = "",
                                  .help = "count the cash of each trade as deposited for it"},
                                 {.name = "--allow-negative-balances",
                                  .value = "",
                                  .help = "let cash and shares go below zero"}}},
       .run = create},
      {.name = "list",
       .summary = "Lists the portfolios and the watchlist of a workspace.",
       .details = "",
       .signature = {.operands = {"WORKSPACE"}},
       .run = list},
      {.name = "ledger",
       .summary = "Prints the ledger of a portfolio with its balances.",
       .details = "",
       .signature = {.operands = {"WORKSPACE"}, .options = {portfolioOption}},
       .run = ledger},
      {.name = "verify",
       .summary = "Replays every ledger and compares all balances.",
       .details = "The exit code is 1 where a balance is wrong.",
       .signature = {.operands = {"WORKSPACE"}},
       .run = verify},
      {.name = "remove",
       .summary = "Removes a portfolio, or rows of its ledger.",
       .details = "Without --row the whole portfolio goes. Rows that others depend on are not "
                  "removed: the ledger\nmust be right afterwards.",
       .signature = {.operands = {"WORKSPACE"},
                     .options = {portfolioOption,
                                 {.name = "--row",
                                  .value = "NUMBER",
                                  .help = "a row, by its number in “ledger”; may be repeated"}}},
       .run = remove},
      {.name = "watch",
       .summary = "Puts equities on the watchlist.",
       .details = "",
       .signature = {.operands = {"WORKSPACE", "SYMBOL"},
                     .takesFurtherOperands = true,
                     .options = {{.name = "--stop",
                                  .value = "",
                                  .help = "take them off the watchlist instead"}}},
       .run = watch},
  };
}

}  // namespace corvane::cli
