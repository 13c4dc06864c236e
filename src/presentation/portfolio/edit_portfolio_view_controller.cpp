#include "presentation/portfolio/edit_portfolio_view_controller.h"

#include <algorithm>

#include "core/market/portfolio_asset.h"
#include "ledger/manager/portfolio_property_changer.h"
#include "platform/fatal_error.h"
#include "platform/overloaded.h"
#include "platform/text/unicode/locale.h"

namespace corvane {
namespace {

/// The currency of the user's region, or US dollars where it is not known.
Currency currencyOfUser() {
  const auto& known = Currency::byCode();
  const auto found = known.find(Locale::current().currencyCode().value_or(""));
  return found == known.end() ? Currency::usd() : found->second;
}

}  // namespace

void EditPortfolioViewController::load() {
  if (!behaviour) {
    fatalError("The behaviour mode must be set prior to loading the view.");
  }
  loadCurrencies();
  std::visit(Overloaded{[this](const Create& mode) {
                          title = "New Portfolio";
                          nameField.text = "Untitled Portfolio";
                          currencyPopUpButton.select(currencyOfUser());
                          currencyPopUpButton.isEnabled = true;
                          allowNegativeBalancesButton.isOn = false;
                          trackCashAccountsButton.isOn = true;
                          populateRandomlyButton = {.isHidden = !mode.offersRandomPopulation};
                          goButton.title = "Create";
                        },
                        [this](const Modify& mode) {
                          title = "Portfolio Details";
                          nameField.text = mode.portfolio->name;
                          currencyPopUpButton.select(mode.portfolio->primaryCurrency());
                          currencyPopUpButton.isEnabled = false;
                          allowNegativeBalancesButton.isOn = mode.portfolio->allowsNegativeBalances;
                          trackCashAccountsButton.isOn = mode.portfolio->usesCashAccounts;
                          populateRandomlyButton = {.isHidden = true};
                          goButton.title = "Save";
                        }},
             *behaviour);
  updateGoButton();
}

void EditPortfolioViewController::updateGoButton() {
  goButton.isEnabled = !nameField.text.empty();
}

void EditPortfolioViewController::performAction(Sender sender) {
  if (sender != Sender::goButton) {
    completionHandler(nullptr);
    return;
  }
  std::visit(Overloaded{[this](const Create& mode) { create(mode); },
                        [this](const Modify& mode) { modify(mode); }},
             *behaviour);
}

void EditPortfolioViewController::loadCurrencies() {
  currencies_.clear();
  currencyPopUpButton.items.clear();
  currencyPopUpButton.selectedIndex = 0;
  for (const auto& [code, currency] : Currency::byCode()) {
    currencies_.push_back(currency);
  }
  std::ranges::sort(currencies_, {},
                    [](const Currency& currency) { return std::string_view(currency.code); });
  for (const Currency& currency : currencies_) {
    currencyPopUpButton.items.push_back({PortfolioAsset(currency).title().plainText(), currency});
  }
}

void EditPortfolioViewController::modify(const Modify& mode) {
  try {
    PortfolioPropertyChanger().changeProperties(
        mode.portfolio,
        {nameField.text, allowNegativeBalancesButton.isOn, trackCashAccountsButton.isOn},
        mode.undoManager);
  } catch (const PortfolioPropertyChanger::Error& error) {
    using Refusal = PortfolioPropertyChanger::Error;
    std::visit(Overloaded{[this](const Refusal::ExistingNegativeBalanceTransaction&) {
                            allowNegativeBalancesButton.isOn = true;
                          },
                          [this](const Refusal::ExistingTransferTransaction&) {
                            trackCashAccountsButton.isOn = true;
                          }},
               error.which());
    presentError(error);
    return;
  } catch (const Error& error) {
    presentError(error);
    return;
  }
  if (mode.undoManager != nullptr) {
    mode.undoManager->setActionName("Portfolio Settings");
  }
  completionHandler(mode.portfolio);
}

void EditPortfolioViewController::create(const Create& mode) {
  PortfolioPointer portfolio;
  try {
    portfolio = mode.portfolioManager->createPortfolio(currencyPopUpButton.selectedValue().value());
    portfolio->name = nameField.text;
    portfolio->allowsNegativeBalances = allowNegativeBalancesButton.isOn;
    portfolio->usesCashAccounts = trackCashAccountsButton.isOn;
    mode.portfolioManager->portfolioPropertiesDidChange(portfolio);
    if (populateRandomlyButton.isOn) {
      randomTrader.populateRandomly(portfolio, mode.watchlistEquities);
    }
  } catch (const Error& error) {
    if (portfolio != nullptr) {
      createdHandler(portfolio);
    }
    presentError(error);
    return;
  }
  completionHandler(portfolio);
}

}  // namespace corvane
