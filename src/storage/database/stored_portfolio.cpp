#include "storage/database/stored_portfolio.h"

#include <utility>

#include "platform/data/json.h"
#include "platform/system/log.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane {

std::string PortfolioSettings::json() const {
  JSONValue value{JSONValue::Object()};
  value.set("allowsNegativeBalances", allowsNegativeBalances);
  value.set("usesCashAccounts", usesCashAccounts);
  return value.text();
}

PortfolioSettings PortfolioSettings::fromJSON(std::string_view text) {
  const JSONValue value = JSONValue::parse(text);
  return {value.at("allowsNegativeBalances").boolean("allowsNegativeBalances"),
          value.at("usesCashAccounts").boolean("usesCashAccounts")};
}

StoredPortfolio::StoredPortfolio(std::weak_ptr<PortfolioManager> owner,
                                 const Currency& primaryCurrency, std::int64_t id)
    : Portfolio(std::move(owner), primaryCurrency), portfolioId(id), dateCreated(Date::now()) {}

std::vector<TransactionPointer>& StoredPortfolio::storedTransactions() {
  if (isLoaded_) {
    return storedTransactions_;
  }
  const auto owner = std::dynamic_pointer_cast<StoredPortfolioManager>(manager.lock());
  if (owner == nullptr) {
    return storedTransactions_;
  }
  isLoaded_ = true;
  try {
    storedTransactions_ = owner->loadTransactions(*this);
    loadFailure_ = nullptr;
  } catch (const Error& error) {
    loadFailure_ = error.copy();
    Log::write("Stored portfolio failed to load transactions: ", error);
  }
  return storedTransactions_;
}

void StoredPortfolio::requireTransactions() {
  static_cast<void>(storedTransactions());
  if (loadFailure_ != nullptr) {
    isLoaded_ = false;
    loadFailure_->raise();
  }
}

}  // namespace corvane
