// Single transactions: record, revise, delete.

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "cli/commands/commands.h"
#include "cli/commands/transaction_form.h"
#include "cli/console/listing.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

using Form = EditTransactionViewController;

/// The number of the row that has come into the ledger since it had the rows `before`; none where
/// there is no new one.
std::optional<std::size_t> newRowNumber(const PortfolioPointer& portfolio,
                                        const std::set<TransactionPointer>& before) {
  const auto& rows = portfolio->transactions();
  const auto found = std::ranges::find_if(
      rows, [&](const TransactionPointer& row) { return !before.contains(row); });
  return found == rows.end() ? std::nullopt
                             : std::optional(static_cast<std::size_t>(found - rows.begin()) + 1);
}

/// What the entry would do, as the form tells it beside its fields. Throws EntryRefusal where the
/// ledger would not take it.
void writeOutcome(const Form& form, const Console& console) {
  const TransactionPreview& preview = form.preview();
  if (!preview.refusal.empty()) {
    throw EntryRefusal(preview.refusal + (preview.reason.empty() ? "" : " " + preview.reason));
  }
  using enum Listing::Kind;
  Listing figures({{"figure", ""}, {"before", "Before"}, {"after", "After"}});
  for (const auto& [label, before, after] : preview.figures) {
    figures.add({label, before, after});
  }
  figures.write(ListingFormat::table, console.out);
}

void record(const CommandLine& line, const Console& console) {
  WorkspaceFile workspace(line.word(0), console);
  workspace.requireSound();
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  Form form;
  form.behaviour = Form::Create{.portfolio = portfolio};
  form.load();
  fillForm(form, line);
  const Order order = orderOf(form);
  if (line.has("--dry-run")) {
    writeOutcome(form, console);
    return;
  }
  const auto& rows = portfolio->transactions();
  const std::set<TransactionPointer> before(rows.begin(), rows.end());
  workspace.manager()->placeOrder(order, portfolio, nullptr);
  workspace.save();
  console.out << "Recorded as transaction " << newRowNumber(portfolio, before).value() << ".\n";
}

void revise(const CommandLine& line, const Console& console) {
  WorkspaceFile workspace(line.word(0), console);
  workspace.requireSound();
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  const std::string& number = line.required("--transaction");
  const TransactionPointer row = rowNumbered(number, portfolio);
  Form form;
  form.behaviour = Form::Modify{.transaction = row->basic, .portfolio = portfolio, .row = row};
  form.load();
  fillForm(form, line);
  const Order order = orderOf(form);
  if (line.has("--dry-run")) {
    writeOutcome(form, console);
    return;
  }
  workspace.manager()->reviseTransactions({row}, {std::get<Order::Record>(order.kind).transaction},
                                          std::nullopt, portfolio, nullptr);
  workspace.save();
  const auto& rows = portfolio->transactions();
  const auto place = std::ranges::find(rows, row) - rows.begin() + 1;
  console.out << "Revised transaction " << number;
  if (std::to_string(place) != number) {
    console.out << ", which is transaction " << place << " now";
  }
  console.out << ".\n";
}

void deleteOne(const CommandLine& line, const Console& console) {
  WorkspaceFile workspace(line.word(0), console);
  workspace.requireSound();
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  workspace.manager()->deleteTransactions({rowNumbered(line.required("--transaction"), portfolio)},
                                          portfolio, nullptr);
  workspace.save();
  console.out << "Deleted 1 transaction.\n";
}

constexpr Option portfolioOption = {"--portfolio", "NAME", "the portfolio", true};
constexpr Option numberedOption = {"--transaction", "N", "the one with this number in the ledger",
                                   true};
constexpr Option dryRunOption = {"--dry-run", "", "tells what it would do, and saves nothing"};

/// `which`, then what a transaction is made of, then whether to save it.
std::vector<Option> formOptions(std::vector<Option> which) {
  return joined(std::move(which), transactionOptions(), std::vector<Option>{dryRunOption});
}

}  // namespace

Command recordCommand() {
  std::vector<Option> options = formOptions({portfolioOption});
  std::ranges::find(options, "--type", &Option::name)->isRequired = true;
  return {.name = "record",
          .summary = "Records a transaction.",
          .words = {"WORKSPACE"},
          .options = std::move(options),
          .explanation =
              "KIND is one of\n"
              "  buy, sell                     shares for cash: --symbol --shares --total\n"
              "  transfer-in, transfer-out     cash from and to elsewhere: --total\n"
              "  cash-credit, cash-expense     interest, fees and the like: --total\n"
              "  dividend, cap-gains-dividend, reinvested-distribution, return-of-capital\n"
              "                                what a holding paid: --symbol --shares --total\n"
              "  split                         or consolidation: --symbol --prior-shares --shares\n"
              "  journaled-shares              shares that come or, below 0, leave without a\n"
              "                                trade: --symbol --shares, --equivalent is their\n"
              "                                cost base\n"
              "It is the form of the window: what is left out follows as it does there, and an\n"
              "entry is refused in the same words. Without --date it is of today. Amounts are\n"
              "written 1234.56, whatever the locale, and have no sign.\n",
          .run = &record};
}

Command reviseCommand() {
  return {.name = "revise",
          .summary = "Changes a transaction.",
          .words = {"WORKSPACE"},
          .options = formOptions({portfolioOption, numberedOption}),
          .explanation =
              "What no option names stays, or follows as in the form of the window: another number "
              "of\nshares changes the total, another total the price, another day the "
              "settlement.\nThe options are explained by corvane-cli record --help. There is no "
              "undo.\n",
          .run = &revise};
}

Command deleteCommand() {
  return {.name = "delete",
          .summary = "Deletes a transaction.",
          .words = {"WORKSPACE"},
          .options = {portfolioOption, numberedOption},
          .explanation =
              "A transaction that later ones rely on stays: a deposit cannot go while a "
              "purchase needs\nit. There is no undo.\n",
          .run = &deleteOne};
}

}  // namespace corvane::cli
