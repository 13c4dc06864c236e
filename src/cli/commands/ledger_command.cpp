#include <utility>

#include "cli/commands/commands.h"
#include "cli/console/date_text.h"
#include "cli/console/listing.h"
#include "cli/console/workspace_file.h"
#include "exchange/exports/portfolio_transactions_exporter.h"
#include "ledger/transaction/transaction_effect.h"
#include "presentation/transactions/transaction_finder.h"

namespace corvane::cli {
namespace {

/// What the columns between the type and the balances say of a transaction.
struct Happening {
  std::string symbol = {};
  std::string shares = {};
  std::string cash = {};
};

std::string digitsOf(const std::optional<Decimal>& number) {
  return number ? number->description() : "";
}

/// `amount` with all digits of the currency's minor units, and without grouping.
std::string digitsOf(const std::optional<Decimal>& amount, const Currency& currency) {
  std::string digits = digitsOf(amount);
  if (!amount || currency.minorUnits <= 0) {
    return digits;
  }
  const std::size_t point = digits.find('.');
  const std::size_t decimals = point == digits.npos ? 0 : digits.size() - point - 1;
  const auto wanted = static_cast<std::size_t>(currency.minorUnits);
  digits += point == digits.npos ? "." : "";
  return digits + std::string(decimals < wanted ? wanted - decimals : 0, '0');
}

Happening happening(const BasicTransaction& transaction) {
  const TransactionEffect effect = transactionEffect(transaction.kind);
  Happening what;
  if (effect.equity != nullptr) {
    what.symbol = (*effect.equity)->symbol;
    what.shares = effect.isYield() ? "" : digitsOf(effect.sharesAdded);
  }
  if (effect.currency != nullptr) {
    what.cash = digitsOf(effect.amount, *effect.currency);
  }
  return what;
}

std::vector<Listing::Field> ledgerFields() {
  using enum Listing::Kind;
  return {{"number", "No", number},
          {"tradeDate", "Trade Date"},
          {"settlementDate", "Settlement"},
          {"type", "Type"},
          {"symbol", "Symbol"},
          {"shares", "Shares", number},
          {"cash", "Cash", number},
          {"currency", "Currency"},
          {"sharesNet", "Shares Net", number},
          {"cashNet", "Cash Net", number},
          {"costBase", "Cost Base", number},
          {"capitalGain", "Gain", number},
          {"note", "Note"}};
}

/// One line of the listing, of the row that is the `number`th of the ledger.
std::vector<std::string> fieldsOf(const PortfolioTransaction& row, std::size_t number,
                                  const Currency& primary, const Calendar& calendar) {
  Happening what = happening(row.basic);
  const Currency* currency = row.basic.currency();
  return {std::to_string(number),
          dateText(row.tradeDate(), calendar),
          dateText(row.settlementDate(), calendar),
          std::string(exportedWord(row.basic.kind)),
          std::move(what.symbol),
          std::move(what.shares),
          std::move(what.cash),
          currency == nullptr ? "" : std::string(currency->code),
          digitsOf(row.sharesNet),
          digitsOf(row.cashNet, currency == nullptr ? primary : *currency),
          digitsOf(row.costBaseNet(), primary),
          digitsOf(row.capitalGain(), primary),
          row.basic.note.value_or("")};
}

void writeLedger(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
  const WorkspaceFile workspace(line.word(0), console);
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  const Calendar& calendar = workspace.manager()->calendar;
  Listing ledger(ledgerFields());
  const auto& rows = portfolio->transactions();
  const Currency& primary = portfolio->primaryCurrency();
  TransactionFinder finder(rows, primary, calendar, portfolio->usesCashAccounts);
  for (const std::uint32_t place : finder.places(line.value("--find").value_or(""))) {
    ledger.add(fieldsOf(*rows[place], place + 1, primary, calendar));
  }
  ledger.write(format, console.out);
}

}  // namespace

Command ledgerCommand() {
  return {.name = "ledger",
          .summary = "Shows the ledger of a portfolio with its balances.",
          .words = {"WORKSPACE"},
          .options = joined({{"--portfolio", "NAME", "whose ledger", true},
                             {"--find", "WORDS", "only the rows with all of these words"}},
                            listingOptions()),
          .explanation =
              "Cost base and gain are in the portfolio's own currency, cash is in that of the "
              "row.\nCash that came in counts as positive. The numbers in front are what "
              "corvane-cli revise\nand delete take; they change when the ledger does.\n\n"
              "--find looks for the words as the window does, in dates, names, types, numbers and "
              "notes:\n--find 'div AAPL 2023', --find 1234.56.\n",
          .listings = {{"", ledgerFields()}},
          .run = &writeLedger};
}

}  // namespace corvane::cli
