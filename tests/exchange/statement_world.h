// A portfolio, a file to import into it, and the ledger that comes of it, as lines of text.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/money/year_month_day.h"
#include "exchange/imports/import_controller.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "exchange/reading/statement_row.h"
#include "exchange/scripted_window.h"
#include "platform/overloaded.h"
#include "support/ledger_builder.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

inline std::string dayText(Date date) {
  const auto day = YearMonthDay::of(date, Calendar::current());
  const auto padded = [](int number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  return std::to_string(day.year) + "-" + padded(day.month) + "-" + padded(day.day);
}

/// "2021-03-01/2021-03-03 buy 10 ABC for 1000 CAD = 1250 | note"
inline std::string told(const BasicTransaction& transaction) {
  const auto amount = [](const CurrencyAmount& money) {
    return money.amount.description() + " " + std::string(money.currency.code);
  };
  std::string text = dayText(transaction.tradeDate);
  if (transaction.settlementDate != transaction.tradeDate) {
    text += "/" + dayText(transaction.settlementDate);
  }
  text +=
      " " +
      std::visit(
          Overloaded{
              [&](const BasicTransaction::Trade& trade) {
                return "trade " + trade.sharesAdded.description() + " " + trade.equity->id() +
                       " for " + amount(trade.cashDisposed) + " = " +
                       trade.equivalentCashDisposed.description();
              },
              [&](const BasicTransaction::Split& split) {
                return "split " + split.priorShares.description() + " " + split.equity->id() +
                       " into " + split.netShares.description();
              },
              [&](const BasicTransaction::JournaledShares& journaled) {
                return "journal " + journaled.sharesAdded.description() + " " +
                       journaled.equity->id() +
                       (journaled.costBaseAdded ? " at " + journaled.costBaseAdded->description()
                                                : "");
              },
              [&](const BasicTransaction::Yield& yield) {
                return std::string(displayName(yield.type)) + " " + yield.equity->id() + " " +
                       (yield.netShares ? "on " + yield.netShares->description() + " " : "") +
                       amount(yield.netAmount) + " = " + yield.equivalentNetAmount.description();
              },
              [&](const BasicTransaction::Transfer& transfer) {
                return "transfer " + amount(transfer.amount);
              },
              [&](const BasicTransaction::CashAdjustment& adjustment) {
                return "adjust " + amount(adjustment.amount);
              }},
          transaction.kind);
  return transaction.note ? text + " | " + *transaction.note : text;
}

class StatementWorld {
 public:
  StatementWorld() {
    ledger.portfolio->allowsNegativeBalances = true;
    window->setUp = [this](ImportExportFieldSetupViewController& setup) {
      setup.setIncludesHeaderRow(hasHeader);
      for (std::size_t row = 0; row < fields.size(); ++row) {
        setup.changeField(row, "");
      }
      for (std::size_t row = 0; row < fields.size(); ++row) {
        setup.changeField(row, fields[row]);
      }
      if (atSetup) {
        atSetup(setup);
      }
    };
  }

  Ledger ledger;
  TemporaryFolder folder;
  UserDefaults defaults{folder / "settings.json"};
  std::shared_ptr<ScriptedWindow> window = std::make_shared<ScriptedWindow>();
  std::shared_ptr<PortfolioTransactionsImporter> importer;

  /// The setup of the columns; those that the list does not reach keep what they have.
  std::vector<std::string> fields;
  bool hasHeader = true;
  std::function<void(ImportExportFieldSetupViewController&)> atSetup;
  /// Whether the window is asked where the rules and the cells differ.
  bool isGuarded = false;
  std::function<void(PortfolioTransactionsImporter&)> atStart;

  /// Imports `file`; whether it succeeded. What went wrong is in window->heard.
  bool importFile(const std::filesystem::path& file) {
    window->file = file;
    importer = PortfolioTransactionsImporter::make(ledger.portfolio, &defaults);
    if (isGuarded) {
      importer->reviewHandler = reviewIn(window);
    }
    if (atStart) {
      atStart(*importer);
    }
    const auto controller = ImportController::make(importer);
    return completes([&](auto completion) { controller->beginImport(window, completion); });
  }
  bool importText(const std::string& text) {
    writeText(folder / "statement.csv", text);
    return importFile(folder / "statement.csv");
  }

  /// The error that was shown last, empty for none.
  [[nodiscard]] std::string error() const {
    for (auto line = window->heard.rbegin(); line != window->heard.rend(); ++line) {
      if (line->starts_with("error ")) {
        return line->substr(6);
      }
    }
    return "";
  }

  /// What was asked last about two readings, empty for nothing.
  [[nodiscard]] std::string question() const {
    for (auto line = window->heard.rbegin(); line != window->heard.rend(); ++line) {
      if (line->starts_with("asked ")) {
        return line->substr(6);
      }
    }
    return "";
  }

  [[nodiscard]] std::vector<std::string> lines() const {
    std::vector<std::string> all;
    for (const auto& row : ledger.portfolio->transactions()) {
      all.push_back(told(row->basic));
    }
    return all;
  }
};

/// "line verdict, transactions (reason)"
inline std::string lineText(const StatementRow& row) {
  std::string text = std::to_string(row.line) + " " + std::string(displayName(row.verdict));
  for (const BasicTransaction& transaction : row.transactions) {
    text += ", " + told(transaction);
  }
  return row.reason.empty() ? text : text + " (" + row.reason + ")";
}

}  // namespace corvane::testing
