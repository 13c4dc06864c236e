// How much of a recording can be walked at once.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_snapshot.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// Transactions are recorded one after the other, and each must leave a sound ledger behind: a sale
/// recorded before the purchase that covers it is refused, even where the purchase follows with an
/// earlier date. To walk the ledger for each of them takes time for each pair of rows. This tells
/// how many of `basics`, from the first on, are sure to be taken one after the other, in time for
/// each row: so many can be recorded with one walk, which comes to the same.
///
/// `rows` are those of `portfolio` from the first place on where one of `basics` goes, and `start`
/// is the state before them. Cautious: numbers so large or so fine that sums of them might lose
/// digits end what is sure.
[[nodiscard]] std::size_t countOfSureRecordings(const std::vector<BasicTransaction>& basics,
                                                std::span<const TransactionPointer> rows,
                                                const Portfolio& portfolio,
                                                const PortfolioSnapshot& start);

}  // namespace corvane
