#include "exchange/imports/import_review.h"

#include <algorithm>
#include <future>
#include <map>
#include <utility>

#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/async/dispatch_queue.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

constexpr std::size_t shownLines = 3;

/// What a transaction says in the terms of its cells.
struct RecordedFigures {
  std::optional<Decimal> shares = {};
  std::optional<Decimal> netShares = {};
  std::optional<Decimal> amount = {};
  std::optional<Decimal> equivalent = {};
  std::optional<Decimal> cost = {};
  std::optional<Currency> currency = {};
};

RecordedFigures recordedFigures(const BasicTransaction& transaction) {
  return std::visit(Overloaded{[](const BasicTransaction::Trade& trade) {
                                 return RecordedFigures{.shares = trade.sharesAdded,
                                                        .amount = trade.cashDisposed.amount,
                                                        .equivalent = trade.equivalentCashDisposed,
                                                        .currency = trade.cashDisposed.currency};
                               },
                               [](const BasicTransaction::Split& split) {
                                 return RecordedFigures{.shares = split.priorShares,
                                                        .netShares = split.netShares};
                               },
                               [](const BasicTransaction::JournaledShares& journaled) {
                                 return RecordedFigures{.shares = journaled.sharesAdded,
                                                        .cost = journaled.costBaseAdded};
                               },
                               [](const BasicTransaction::Yield& yield) {
                                 // A yield that declares no shares and one that declares 0 differ
                                 // for the ledger alone, which refuses a wrong number.
                                 return RecordedFigures{.shares = yield.netShares.value_or(0),
                                                        .amount = yield.netAmount.amount,
                                                        .equivalent = yield.equivalentNetAmount,
                                                        .currency = yield.netAmount.currency};
                               },
                               [](const auto& cash) {
                                 return RecordedFigures{.amount = cash.amount.amount,
                                                        .currency = cash.amount.currency};
                               }},
                    transaction.kind);
}

/// Says of the cells of one row what would be recorded for them.
class RowDifference {
 public:
  RowDifference(const ImportedCells& cells, std::size_t row) : cells_(cells), row_(row) {}

  [[nodiscard]] std::optional<std::string> between(const BasicTransaction& standard,
                                                   const BasicTransaction& file,
                                                   const Calendar& calendar) const {
    for (const auto& [field, date] :
         {std::pair("tradeDate", &BasicTransaction::tradeDate),
          std::pair("settlementDate", &BasicTransaction::settlementDate)}) {
      const YearMonthDay recorded = YearMonthDay::of(standard.*date, calendar);
      if (recorded != YearMonthDay::of(file.*date, calendar)) {
        return told(cells_.cell(row_, field) ? field : "tradeDate", spelledDay(recorded));
      }
    }
    const RecordedFigures recorded = recordedFigures(standard);
    const RecordedFigures meant = recordedFigures(file);
    if (recorded.currency != meant.currency && recorded.currency) {
      return told("cashCurrency", std::string(recorded.currency->code));
    }
    for (const auto& [field, figure] : {std::pair("numberOfShares", &RecordedFigures::shares),
                                        std::pair("sharesNet", &RecordedFigures::netShares),
                                        std::pair("cashAmount", &RecordedFigures::amount),
                                        std::pair("equivalentAmount", &RecordedFigures::equivalent),
                                        std::pair("costBaseAdded", &RecordedFigures::cost)}) {
      if (recorded.*figure != meant.*figure) {
        return told(field, (recorded.*figure).value_or(0).description());
      }
    }
    return std::nullopt;
  }

 private:
  [[nodiscard]] std::string told(std::string_view field, const std::string& recorded) const {
    const std::string title = cells_.columnTitle(field);
    const std::string_view text =
        trimmedCell(cells_.cell(row_, field).value_or(std::string_view()));
    return StatementError(cells_.line(row_), title.empty() ? std::string(field) : title,
                          (text.empty() ? "the empty cell" : "“" + std::string(text) + "”") +
                              " would be recorded as " + recorded + ".")
        .description()
        .value();
  }

  const ImportedCells& cells_;
  std::size_t row_;
};

/// "2024-04-01  10 ABC for 500 CAD"
std::string lineOf(const BasicTransaction& transaction, const Calendar& calendar) {
  const auto money = [](const CurrencyAmount& amount) {
    return amount.amount.description() + " " + std::string(amount.currency.code);
  };
  const std::string what = std::visit(
      Overloaded{[&](const BasicTransaction::Trade& trade) {
                   return (trade.sharesAdded < 0 ? "sale of " : "purchase of ") +
                          abs(trade.sharesAdded).description() + " " + trade.equity->id() +
                          " for " +
                          money({trade.cashDisposed.currency, abs(trade.cashDisposed.amount)});
                 },
                 [&](const BasicTransaction::Split& split) {
                   return "split of " + split.priorShares.description() + " " + split.equity->id() +
                          " into " + split.netShares.description();
                 },
                 [&](const BasicTransaction::JournaledShares& journaled) {
                   return "journal of " + journaled.sharesAdded.description() + " " +
                          journaled.equity->id();
                 },
                 [&](const BasicTransaction::Yield& yield) {
                   return std::string(displayName(yield.type)) + " of " + yield.equity->id() +
                          ", " + money(yield.netAmount);
                 },
                 [&](const BasicTransaction::Transfer& transfer) {
                   return "transfer of " + money(transfer.amount);
                 },
                 [&](const BasicTransaction::CashAdjustment& adjustment) {
                   return "cash adjustment of " + money(adjustment.amount);
                 }},
      transaction.kind);
  return spelledDay(YearMonthDay::of(transaction.tradeDate, calendar)) + ": " + what;
}

/// Whether one text is the other with more words behind.
bool continues(std::string_view longer, std::string_view shorter) {
  return longer.starts_with(shorter) &&
         (longer.size() == shorter.size() || longer[shorter.size()] == ' ');
}

}  // namespace

ReviewHandler reviewIn(std::shared_ptr<ImportExportWindow> window) {
  return [window = std::move(window)](const ReadingQuestion& question) {
    const auto answer = std::make_shared<std::promise<ReadingAnswer>>();
    auto future = answer->get_future();
    DispatchQueue::main()->async([window, question, answer] {
      window->askForReading(question, [answer](ReadingAnswer given) { answer->set_value(given); });
    });
    return future.get();
  };
}

std::optional<std::string> firstDifference(const ImportedCells& cells,
                                           const std::vector<BasicTransaction>& standard,
                                           const StrictImport& file, const Calendar& calendar) {
  for (std::size_t i = 0; i < file.rows.size(); ++i) {
    const std::size_t row = file.positions[i];
    if (row >= standard.size()) {
      break;
    }
    if (auto found = RowDifference(cells, row).between(standard[row], file.rows[i], calendar)) {
      return found;
    }
  }
  return std::nullopt;
}

std::optional<std::string> firstSharedSymbol(const ImportedCells& cells,
                                             const std::vector<BasicTransaction>& standard) {
  struct First {
    std::string folded;
    std::string text;
    std::uint32_t line;
  };
  std::map<std::string, First, std::less<>> firsts;
  for (std::size_t row = 0; row < std::min(cells.rowCount(), standard.size()); ++row) {
    const std::string_view text =
        trimmedCell(cells.cell(row, "symbol").value_or(std::string_view()));
    const std::string_view symbol = firstWord(text);
    if (standard[row].equity() == nullptr || symbol.size() == text.size()) {
      continue;
    }
    const auto found = firsts.find(symbol);
    if (found == firsts.end()) {
      firsts.emplace(symbol, First{foldedText(text), std::string(text), cells.line(row)});
      continue;
    }
    if (found->second.text == text) {
      continue;
    }
    const std::string folded = foldedText(text);
    if (!continues(folded, found->second.folded) && !continues(found->second.folded, folded)) {
      const std::string title = cells.columnTitle("symbol");
      return StatementError(cells.line(row), title.empty() ? "symbol" : title,
                            "“" + std::string(text) + "” would be recorded as " +
                                std::string(symbol) + ", as “" + found->second.text + "” on line " +
                                std::to_string(found->second.line) + " is.")
          .description();
    }
  }
  return std::nullopt;
}

std::vector<std::string> readingLines(const std::vector<BasicTransaction>& rows, std::size_t from,
                                      const Calendar& calendar) {
  std::vector<std::string> lines;
  for (std::size_t i = from; i < rows.size() && lines.size() < shownLines; ++i) {
    lines.push_back(lineOf(rows[i], calendar));
  }
  return lines;
}

bool wouldBeTaken(const std::vector<BasicTransaction>& rows, Portfolio& portfolio) {
  const auto owner = portfolio.manager.lock();
  if (owner == nullptr) {
    return false;
  }
  const auto manager = std::make_shared<PortfolioManager>(owner->quoteProvider);
  manager->calendar = owner->calendar;
  const PortfolioPointer copy = manager->createPortfolio(portfolio.primaryCurrency());
  copy->allowsNegativeBalances = portfolio.allowsNegativeBalances;
  copy->usesCashAccounts = portfolio.usesCashAccounts;
  std::vector<BasicTransaction> present;
  for (const TransactionPointer& row : portfolio.transactions()) {
    present.push_back(row->basic);
  }
  try {
    manager->recordTransactions(present, copy, nullptr);
    manager->recordTransactions(rows, copy, nullptr);
    return true;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace corvane
