#include "presentation/reports/report_view_controller.h"

#include <algorithm>

namespace corvane {

void ReportViewController::setCurrentData(PortfolioDataSlice data,
                                          const std::optional<TransactionChanges>& /*changes*/) {
  currentData_ = std::move(data);
  ReportScope scope{.name = "", .portfolios = {}, .days = currentData_.ymdRange};
  if (currentData_.portfolio != nullptr && currentData_.transactions) {
    scope.name = currentData_.portfolio->name;
    scope.portfolios = {currentData_.portfolio};
    if (scope.portfolios == scope_.portfolios) {
      scope.equity = scope_.equity;
    }
  }
  setScope(std::move(scope));
}

void ReportViewController::setScope(ReportScope scope) {
  const bool isOther = scope.portfolios != scope_.portfolios;
  scope_ = std::move(scope);
  currencies_ = primaryCurrencies(scope_.portfolios);
  if (!currencies_.empty() && std::ranges::count(currencies_, currency_) == 0) {
    currency_ = currencies_.front();
  }
  if (isOther) {
    forget(scope_.portfolios.empty() ? "No portfolio selected." : "");
  }
  scopeDidChange();
  reload();
}

void ReportViewController::setShown(bool isShown) {
  isShown_ = isShown;
  if (isShown_ && isStale_) {
    reload();
  }
}

void ReportViewController::chooseCurrency(std::size_t index) {
  currency_ = currencies_.at(index);
  currencyDidChange();
}

void ReportViewController::reload() {
  const auto quotes = reportQuotes(scope_);
  ++generation_;
  inquiry_.cancel();
  isStale_ = quotes != nullptr && !isShown_;
  isFetching_ = quotes != nullptr && isShown_;
  if (isFetching_) {
    askMarket(quotes);
  }
  changeHandler();
}

}  // namespace corvane
