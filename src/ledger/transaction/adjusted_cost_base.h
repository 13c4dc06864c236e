// Adjusted-cost-base accounting of one transaction: the average cost of a holding after it, and the
// gain that a sale realizes.
//
// The method is the average-cost rule of Canadian tax law (Income Tax Act, s. 47): identical shares
// have one average cost, a disposal takes its share of it, and the gain is the proceeds less that
// share. All amounts are in the portfolio's primary currency; each result is rounded once, at its
// end, so a cost base and a gain need not add up to the cent.
#pragma once

#include <optional>

#include "ledger/transaction/transaction_effect.h"

namespace corvane {

/// The cost base of the equity after a transaction, where it was `costBasePrior` before and
/// `sharesNet` shares are held after. None for kinds without an equity.
///
/// Shares that leave take their part of the cost base with them, whatever the proceeds; all of it
/// goes where nothing was held before. Nothing clamps the result: a return of capital beyond the
/// cost base leaves it negative. NaN where the sum of the costs has more digits than can be kept
/// exactly.
[[nodiscard]] std::optional<Decimal> costBaseNet(const TransactionEffect& effect,
                                                 const Decimal& sharesNet,
                                                 const Decimal& costBasePrior,
                                                 const Currency& primaryCurrency);

/// The gain that a transaction realizes; none where it is no sale. A trade that gives up shares is
/// a sale also where it is paid for (the fees exceed the proceeds): giving up shares that have cost
/// 500 and paying 2 is a loss of 502. Shares journaled out realize nothing.
[[nodiscard]] std::optional<Decimal> capitalGain(const TransactionEffect& effect,
                                                 const Decimal& sharesNet,
                                                 const Decimal& costBasePrior,
                                                 const Currency& primaryCurrency);

}  // namespace corvane
