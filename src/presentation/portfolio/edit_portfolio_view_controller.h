// The form that makes a portfolio and changes the settings of one: its state and what its buttons
// do.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/controls/form_controls.h"
#include "core/market/equity_info.h"
#include "core/money/currency.h"
#include "ledger/manager/portfolio_manager.h"
#include "ledger/manager/random_trader.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/async/undo_manager.h"
#include "platform/error.h"

namespace corvane {

/// The form for a portfolio's name, currency and settings, without any widget: a window shows the
/// fields, writes what the user enters into them, and calls performAction. Main queue only.
class EditPortfolioViewController {
 public:
  /// Makes a portfolio of `portfolioManager`.
  struct Create {
    std::shared_ptr<PortfolioManager> portfolioManager;
    std::vector<EquityPointer> watchlistEquities;  ///< what a random ledger trades in
    bool offersRandomPopulation = false;           ///< whether the diagnostic tools are enabled
  };
  /// Changes `portfolio`, undoably where there is an undo manager.
  struct Modify {
    PortfolioPointer portfolio;
    std::shared_ptr<UndoManager> undoManager;
  };
  using BehaviourMode = std::variant<Create, Modify>;

  enum class Sender { goButton, cancelButton };

  /// What the form is for; to be set before load().
  std::optional<BehaviourMode> behaviour;

  /// Called once when the form is done, with the portfolio, or with null where the user cancelled.
  std::function<void(PortfolioPointer)> completionHandler;

  /// Called with a portfolio that was made, although the form stays open since the rest was
  /// refused.
  std::function<void(PortfolioPointer)> createdHandler = [](const PortfolioPointer&) {};

  /// Shows an error on the form's window; the form stays open.
  std::function<void(const Error&)> presentError;

  /// Fills the fields for the behaviour. Without a behaviour the program stops: the code that opens
  /// the form has forgotten it.
  void load();

  /// To be called after every change of the name or the currency.
  void updateGoButton();

  /// What a click on one of the two buttons does.
  void performAction(Sender sender);

  std::string title;
  TextField nameField;
  PopUpButton<Currency> currencyPopUpButton;
  CheckBox allowNegativeBalancesButton;
  CheckBox trackCashAccountsButton;
  CheckBox populateRandomlyButton;
  Button goButton;
  Button cancelButton{.title = "Cancel"};

  /// All currencies by code, in the order of the pop-up's items.
  [[nodiscard]] const std::vector<Currency>& currencies() const { return currencies_; }

  /// How a random ledger is drawn.
  RandomTrader randomTrader;

 private:
  void loadCurrencies();
  void modify(const Modify& mode);
  void create(const Create& mode);

  std::vector<Currency> currencies_;
};

}  // namespace corvane
