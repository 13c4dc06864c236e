// A portfolio with prices, and the window around its screens.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "presentation/controls/table_model.h"
#include "presentation/screen/screen_surroundings.h"
#include "support/ledger_builder.h"
#include "support/scripted_quote_provider.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

/// It is noon on 2021-03-10, a Wednesday. ABC is traded in Canadian, XYZ in US dollars. The price
/// of a day is what `closes` says of the id, whatever the day; nothing is known of other ids.
class PortfolioScreenWorld : public ::testing::Test, protected Ledger {
 protected:
  PortfolioScreenWorld() {
    manager->quoteProvider = prices;
    for (const auto& equity : {abc, xyz}) {
      equity->calendar = manager->calendar;
    }
    prices->script = [this](const QuoteQuery& query) {
      const auto found = closes.find(query.equity->id());
      if (found == closes.end()) {
        return ScriptedQuoteProvider::refusal();
      }
      Quote bar;
      bar.open = found->second;
      bar.close = found->second;
      return ScriptedQuoteProvider::quotes(ScriptedQuoteProvider::dailyBars(
          query, [&](YearMonthDay) { return std::optional(bar); }));
    };
    surroundings.presentError = [this](const Error& error) {
      errors.push_back(error.description().value_or(""));
    };
    surroundings.presentMessage = [this](const std::string& text) { messages.push_back(text); };
    surroundings.showAlert = [this](const DocumentAlert& alert,
                                    const std::function<void(std::size_t)>& pressed) {
      alerts.push_back(alert);
      pressed(pressedButton);
    };
    surroundings.documentDidChange = [this] { ++documentChanges; };
    surroundings.undoManager = undo;
    surroundings.now = [this] { return now; };
    surroundings.defaults = &defaults;
  }

  /// A price of US dollars in Canadian ones.
  void quoteDollars(int rate) {
    const auto pair = prices->exchangeRateEquity(Currency::usd(), Currency::cad());
    pair->recentPrice = rate;
    closes[pair->id()] = rate;
    dollars_ = pair;
  }

  BasicTransaction buyForeign(const std::string& shares, const std::string& cost,
                              const std::string& equivalent) {
    return make(
        BasicTransaction::Trade{xyz, {Currency::usd(), dec(cost)}, dec(equivalent), dec(shares)});
  }
  BasicTransaction depositDollars(const std::string& amount) {
    return make(BasicTransaction::Transfer{{Currency::usd(), dec(amount)}});
  }

  /// Runs the main loop until `isDone` holds.
  static void waitUntil(const std::function<bool()>& isDone) {
    ASSERT_TRUE(MainLoop::runUntil(isDone, std::chrono::seconds(20)));
  }

  /// The cells of a row by column, those without text left out.
  static std::map<std::string, std::string> cells(const TableModel& table, std::size_t row) {
    std::map<std::string, std::string> cells;
    for (std::size_t i = 0; i < table.columns().size(); ++i) {
      const std::string text = table.cell(row, i).plainText();
      if (!text.empty()) {
        cells[std::string(table.columns()[i].identifier)] = text;
      }
    }
    return cells;
  }

  Date now = day(2021, 3, 10);
  std::shared_ptr<ScriptedQuoteProvider> prices = std::make_shared<ScriptedQuoteProvider>();
  std::map<std::string, int> closes;
  TemporaryFolder folder;
  UserDefaults defaults{folder.path() / "settings.json"};
  ScreenSurroundings surroundings;
  std::vector<std::string> errors;
  std::vector<std::string> messages;
  std::vector<DocumentAlert> alerts;
  std::size_t pressedButton = 0;
  int documentChanges = 0;

 private:
  EquityPointer dollars_;
};

}  // namespace corvane::testing
