#include "ledger/transaction/order.h"

namespace corvane {

BasicTransaction BulkRevision::applied(BasicTransaction transaction) const {
  transaction.tradeDate = tradeDate.value_or(transaction.tradeDate);
  transaction.settlementDate = settlementDate.value_or(transaction.settlementDate);
  if (note) {
    transaction.note = note;
  }
  if (equity != nullptr) {
    std::visit(
        [this](auto& payload) {
          if constexpr (requires { payload.equity; }) {
            payload.equity = equity;
          }
        },
        transaction.kind);
  }
  return transaction;
}

}  // namespace corvane
