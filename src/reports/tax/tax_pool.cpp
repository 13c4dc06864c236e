#include "reports/tax/tax_pool.h"

#include <algorithm>

namespace corvane {

void TaxPool::take(const Decimal& added, const Decimal& amount, const Currency& currency) {
  shares += added;
  addCost(amount, currency);
}

void TaxPool::giveUp(const Decimal& given, const Currency& currency) {
  const Decimal left = shares - given;
  cost = shares > 0 ? roundedToMinorUnits(cost * left / shares, currency) : Decimal();
  shares = left;
}

void TaxPool::journal(const Decimal& added, const Decimal& amount, const Currency& currency) {
  if (added < 0) {
    giveUp(-added, currency);
  } else {
    take(added, amount, currency);
  }
}

void TaxPool::addCost(const Decimal& amount, const Currency& currency) {
  cost = roundedToMinorUnits(cost + amount, currency);
}

Decimal TaxPool::returnCost(const Decimal& amount, const Currency& currency) {
  addCost(-amount, currency);
  const Decimal beyond = cost < 0 ? -cost : Decimal();
  cost = std::max(cost, Decimal());
  return beyond;
}

}  // namespace corvane
