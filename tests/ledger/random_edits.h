// Random edits of a ledger, some of which it must refuse.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "support/ledger_builder.h"

namespace corvane::testing {

/// The number in the environment variable `name`, `standard` where it is not set.
inline std::uint64_t setting(const char* name, std::uint64_t standard) {
  const char* text = std::getenv(name);
  return text == nullptr ? standard : std::strtoull(text, nullptr, 10);
}

struct RandomEdit {
  enum class Kind { record, revise, move, remove, undo, redo };
  Kind kind = Kind::record;
  std::vector<BasicTransaction> basics = {};      ///< to record, or one for each revised row
  std::vector<TransactionPointer> subjects = {};  ///< rows to revise, move or remove
  PortfolioManager::Anchors anchors = {};         ///< where moved rows go
};

/// Draws edits for one portfolio of `manager`.
class RandomEdits {
 public:
  RandomEdits(std::uint64_t seed, std::shared_ptr<PortfolioManager> manager,
              PortfolioPointer portfolio)
      : random_(seed), manager_(std::move(manager)), portfolio_(std::move(portfolio)) {
    for (const auto* id : {"A", "B", "C"}) {
      equities_.push_back(manager_->quoteProvider->equityWithId(id));
    }
  }

  std::uint64_t below(std::uint64_t n) { return random_() % n; }
  bool chance(std::uint64_t n) { return below(n) == 0; }

  RandomEdit next() {
    using Kind = RandomEdit::Kind;
    switch (rows().empty() ? 0 : below(10)) {
      case 7:
        return {Kind::redo};
      case 6:
        return {Kind::undo};
      case 5:
        return {Kind::remove, {}, pickRows(most())};
      case 3:
      case 4: {
        RandomEdit edit = {Kind::revise, {}, pickRows(most())};
        const BulkRevision bulk = bulkRevision();
        const bool isOfMany = edit.subjects.size() > 3;
        for (const auto& row : edit.subjects) {
          edit.basics.push_back(chance(2) && !isOfMany ? transaction() : bulk.applied(row->basic));
        }
        return edit;
      }
      case 2: {
        RandomEdit edit = {Kind::move, {}, pickRows(most())};
        for (std::size_t i = 0; i < edit.subjects.size(); ++i) {
          edit.anchors.push_back(chance(5) ? nullptr : rows()[below(rows().size())]);
        }
        return edit;
      }
      default: {
        RandomEdit edit;
        const std::uint64_t count = 1 + below(most());
        for (std::uint64_t i = 0; i < count; ++i) {
          edit.basics.push_back(transaction());
        }
        return edit;
      }
    }
  }

  /// Carries `edit` out; an undo or redo of nothing does nothing. Returns the rows that it recorded
  /// or was about.
  std::vector<TransactionPointer> perform(const RandomEdit& edit,
                                          const std::shared_ptr<UndoManager>& undo) {
    switch (edit.kind) {
      case RandomEdit::Kind::record:
        return manager_->recordTransactions(edit.basics, portfolio_, undo);
      case RandomEdit::Kind::revise:
        manager_->reviseTransactions(edit.subjects, edit.basics, std::nullopt, portfolio_, undo);
        break;
      case RandomEdit::Kind::move:
        manager_->moveTransactions(edit.subjects, edit.anchors, portfolio_, undo);
        break;
      case RandomEdit::Kind::remove:
        manager_->deleteTransactions(edit.subjects, portfolio_, undo);
        break;
      case RandomEdit::Kind::undo:
        undo->undo();
        break;
      case RandomEdit::Kind::redo:
        undo->redo();
        break;
    }
    return edit.subjects;
  }

  BasicTransaction transaction() {
    const Date trade =
        day(2019 + static_cast<int>(below(5)), 12, 28) + 86400.0 * static_cast<double>(below(8));
    const double settlesAfter = chance(50) ? -86400.0 : 86400.0 * static_cast<double>(below(3));
    return {randomKind(), trade, trade + settlesAfter, std::nullopt};
  }

 private:
  [[nodiscard]] const std::vector<TransactionPointer>& rows() const {
    return portfolio_->transactions();
  }

  /// How many rows an edit is about at most; now and then many.
  std::size_t most() { return chance(6) ? 30 : 3; }

  BulkRevision bulkRevision() {
    switch (below(4)) {
      case 0:
        return {.note = "n"};
      case 1:
        return {.equity = equities_[below(equities_.size())]};
      case 2:
        return {.tradeDate = day(2018, 1, 1)};
      default:
        return {.settlementDate = day(2024, 1, 1 + static_cast<int>(below(3)))};
    }
  }

  Decimal number(int largest, int scale) {
    const auto digits = static_cast<long>(below(static_cast<std::uint64_t>(largest)));
    return Decimal::fromParts(Sign::plus, -scale, digits);
  }
  Decimal money() { return number(100'000, chance(40) ? 3 : 2); }

  Decimal heldAtEnd(const EquityPointer& equity) {
    return manager_->snapshotBefore(rows().size(), portfolio_)
        .equitySnapshots.get(equity)
        .sharesHeld;
  }

  BasicTransaction::Kind randomKind() {
    static const std::vector<Currency> currencies = {Currency::cad(), Currency::usd(),
                                                     Currency::byCode().find("JPY")->second};
    const Currency& currency = currencies[below(currencies.size())];
    const EquityPointer& equity = equities_[below(equities_.size())];
    CurrencyAmount amount{currency, currency.minorUnits == 0 ? number(100'000, 0) : money()};
    const bool isNegative = chance(3);
    if (isNegative) {
      amount.amount = -amount.amount;
    }
    Decimal shares = number(1000, chance(4) ? 4 : 0);
    switch (below(10)) {
      case 0:
        return BasicTransaction::Split{equity, chance(4) ? shares : heldAtEnd(equity), shares};
      case 1:
        return BasicTransaction::JournaledShares{equity, isNegative ? -shares : shares,
                                                 chance(2) ? std::optional(money()) : std::nullopt};
      case 2:
      case 3:
        return BasicTransaction::Yield{static_cast<BasicTransaction::YieldType>(below(4)),
                                       equity,
                                       chance(3) ? std::optional(heldAtEnd(equity)) : std::nullopt,
                                       {currency, abs(amount.amount)},
                                       number(10'000'000, chance(3) ? 5 : 2)};
      case 4:
        return BasicTransaction::CashAdjustment{amount};
      case 5:
      case 6:
        return BasicTransaction::Transfer{{currency, amount.amount * 10}};
      default:
        // Now and then a sale that costs money.
        return BasicTransaction::Trade{equity, amount,
                                       isNegative && !chance(10) ? -money() : money(),
                                       isNegative ? -shares : shares};
    }
  }

  std::vector<TransactionPointer> pickRows(std::size_t atMost) {
    std::vector<TransactionPointer> picked;
    for (const auto& row : rows()) {
      if (picked.size() < atMost && below(rows().size()) < atMost) {
        picked.push_back(row);
      }
    }
    return picked.empty() ? std::vector{rows()[below(rows().size())]} : picked;
  }

  std::mt19937_64 random_;
  std::shared_ptr<PortfolioManager> manager_;
  PortfolioPointer portfolio_;
  std::vector<EquityPointer> equities_;
};

}  // namespace corvane::testing
