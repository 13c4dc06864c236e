// Cost bases and losses as a tax return sees them.

#include "reports/tax/tax_walk.h"

#include <gmock/gmock.h>

#include <map>

#include "random_cases.h"
#include "reports/report_cases.h"
#include "reports/report_world.h"
#include "reports/series/report_days.h"

namespace corvane::testing {
namespace {

using Kind = TaxRow::Kind;
constexpr YearMonthDay farFuture{2100, 1, 1};

/// Rows of one equity and those who hold it; each holder has one portfolio.
struct TaxLedger {
  std::vector<TaxHolder> holders{{"me", true}};
  std::vector<TaxRow> rows;
  TaxRules rules{Currency::cad(), true, farFuture};

  std::size_t holder(const std::string& name, bool isTaxable = true) {
    for (std::size_t i = 0; i < holders.size(); ++i) {
      if (holders[i].name == name) {
        return i;
      }
    }
    holders.push_back({name, isTaxable});
    return holders.size() - 1;
  }
  TaxLedger& add(Kind kind, YearMonthDay day, const std::string& shares, const std::string& amount,
                 const std::string& who = "me") {
    rows.push_back({kind, day, holder(who), holder(who), dec(shares), dec(amount)});
    return *this;
  }
  TaxLedger& split(YearMonthDay day, const std::string& from, const std::string& into,
                   const std::string& who = "me") {
    TaxRow row{.kind = Kind::split, .day = day, .holder = holder(who), .portfolio = holder(who)};
    row.splitFrom = dec(from);
    row.splitInto = dec(into);
    rows.push_back(row);
    return *this;
  }
  [[nodiscard]] TaxWalk walk() const { return walkTaxes(rows, holders, rules); }
};

TaxLedger ledgerOf(const ReportCase& made) {
  static const std::map<std::string, Kind> kinds = {{"buy", Kind::purchase},
                                                    {"sell", Kind::sale},
                                                    {"roc", Kind::returnOfCapital},
                                                    {"dist", Kind::reinvestedDistribution}};
  TaxLedger ledger;
  if (const JSONValue* registered = fieldOf(made.inputs, "registered")) {
    for (const JSONValue& name : registered->array()) {
      ledger.holder(name.string(), false);
    }
  }
  for (const JSONValue& row : made.inputs.at("rows").array()) {
    const JSONValue* shares = fieldOf(row, "shares");
    const JSONValue* who = fieldOf(row, "who");
    ledger.add(kinds.at(row.at("kind").string()), dayOf(row.at("date")),
               shares == nullptr ? "0" : shares->string(), row.at("amount").string(),
               who == nullptr ? "me" : who->string());
  }
  return ledger;
}

/// Compares all figures that the case tells of one row; whether it knows all of them.
void compareRow(const TaxLedger& ledger, const TaxWalk& walk, std::size_t row,
                const JSONValue& expected, double tolerance) {
  const auto found = std::ranges::find(walk.disposals, row, &TaxDisposal::row);
  for (const auto& [name, value] : expected.object()) {
    SCOPED_TRACE(name);
    const auto near = [&](const Decimal& figure) {
      EXPECT_NEAR(figure.doubleValue(), amountOf(value).doubleValue(), tolerance);
    };
    if (name == "cost") {
      near(walk.poolsAfter[row].cost);
    } else if (name == "deemed") {
      const auto deemed = std::ranges::find(walk.deemedGains, row, &TaxWalk::DeemedGain::row);
      ASSERT_NE(deemed, walk.deemedGains.end());
      near(deemed->amount);
    } else if (found == walk.disposals.end()) {
      ADD_FAILURE() << "no disposal";
    } else if (name == "gain") {
      near(found->taxGain);
    } else if (name == "denied") {
      near(found->superficial.denied);
    } else if (name == "S") {
      near(found->superficial.sold);
    } else if (name == "P") {
      near(found->superficial.bought);
    } else if (name == "B") {
      near(found->superficial.heldAtEnd);
    } else if (name == "over") {
      EXPECT_EQ(found->superficial.isOverApplied, value.boolean());
    } else if (name == "adjust") {
      EXPECT_EQ(found->superficial.additions.size(), value.object().size());
      for (const auto& [holder, amount] : found->superficial.additions) {
        EXPECT_NEAR(amount.doubleValue(),
                    amountOf(value.at(ledger.holders[holder].name)).doubleValue(), tolerance);
      }
    } else {
      ADD_FAILURE() << "a figure that this test does not know";
    }
  }
}

bool checkTaxCase(const ReportCase& made) {
  if (fieldOf(made.inputs, "settlement") != nullptr) {
    const SuperficialLoss window = superficialWindow(dayOf(made.inputs.at("settlement")));
    EXPECT_EQ(window.from, dayOf(made.expected.at("from")));
    EXPECT_EQ(window.to, dayOf(made.expected.at("to")));
    return true;
  }
  TaxLedger ledger = ledgerOf(made);
  const TaxWalk walk = ledger.walk();
  for (const auto& [row, expected] : made.expected.at("rows").object()) {
    SCOPED_TRACE("row " + row);
    compareRow(ledger, walk, std::stoul(row), expected, made.tolerance);
  }
  if (const JSONValue* endCost = fieldOf(made.expected, "endCost")) {
    for (const auto& [name, cost] : endCost->object()) {
      EXPECT_NEAR(walk.pools[ledger.holder(name)].cost.doubleValue(), amountOf(cost).doubleValue(),
                  made.tolerance);
    }
  }
  return true;
}

TEST(ReportCases, CostBasesForTax) {
  forReportCases("tax.costBase", checkTaxCase);
}

TEST(ReportCases, SuperficialLosses) {
  forReportCases("tax.superficialLoss", checkTaxCase);
}

/// 20 sold at a loss of 100, one of the shares of then bought again after a split of 1 into 4.
TEST(SuperficialLosses, CountSharesOfTheDayOfTheSale) {
  TaxLedger mine;
  mine.add(Kind::purchase, {2020, 1, 2}, "50", "500").add(Kind::sale, {2020, 6, 1}, "20", "100");
  mine.split({2020, 6, 5}, "30", "120").add(Kind::purchase, {2020, 6, 20}, "4", "10");
  const SuperficialLoss loss = mine.walk().disposals.front().superficial;
  EXPECT_EQ(loss.bought, 1);
  EXPECT_EQ(loss.heldAtEnd, 31);
  EXPECT_EQ(loss.denied, 5);

  // The same where the buyer has no row for the split, and where both have one, two days apart.
  TaxLedger ours = mine;
  ours.rows.back() = {Kind::purchase, {2020, 6, 20}, ours.holder("spouse"), 1, 4, 10};
  EXPECT_EQ(ours.walk().disposals.front().superficial.bought, 1);
  TaxLedger both;
  both.add(Kind::purchase, {2020, 1, 2}, "50", "500")
      .add(Kind::purchase, {2020, 1, 2}, "10", "100", "B");
  both.add(Kind::sale, {2020, 6, 1}, "20", "100").split({2020, 6, 5}, "30", "120");
  both.split({2020, 6, 7}, "10", "40", "B").add(Kind::purchase, {2020, 6, 20}, "4", "10", "B");
  EXPECT_EQ(both.walk().disposals.front().superficial.bought, 1);
  EXPECT_EQ(both.walk().disposals.front().superficial.heldAtEnd, 41);
}

TEST(SuperficialLosses, EndWithTheThirtiethDayOnBothSides) {
  for (const int apart : {-31, -30, 30, 31}) {
    TaxLedger ledger;
    ledger.add(Kind::purchase, {2019, 1, 2}, "10", "100");
    const YearMonthDay sale{2020, 6, 15};
    if (apart < 0) {
      ledger.add(Kind::purchase, daysAfter(sale, apart), "10", "100");
    }
    ledger.add(Kind::sale, sale, "10", "50");
    if (apart > 0) {
      ledger.add(Kind::purchase, daysAfter(sale, apart), "10", "100");
    }
    EXPECT_EQ(ledger.walk().disposals.front().superficial.denied, std::abs(apart) == 30 ? 50 : 0)
        << apart;
  }
}

TEST(SuperficialLosses, AreProvisionalUntilTheWindowIsOver) {
  TaxLedger ledger;
  ledger.add(Kind::purchase, {2020, 1, 2}, "10", "100").add(Kind::sale, {2020, 1, 10}, "5", "10");
  for (const auto& [today, isProvisional] :
       {std::pair(YearMonthDay{2020, 2, 8}, true), std::pair(YearMonthDay{2020, 2, 9}, false)}) {
    ledger.rules.today = today;
    EXPECT_EQ(ledger.walk().disposals.front().superficial.isProvisional, isProvisional);
  }
  ledger.rules.deniesSuperficialLosses = false;
  EXPECT_EQ(ledger.walk().disposals.front().taxGain, -40);
}

/// What one portfolio's ledger books, row by row, is what the walk books where nothing is denied.
TEST(TaxWalkProperty, IsTheLedgerForOnePortfolioWithoutDeniedLosses) {
  forRandomCases(100, [](std::mt19937_64& random) {
    const auto below = [&](long most) {
      return static_cast<long>(random() % static_cast<unsigned long>(most));
    };
    Ledger ledger;
    ledger.portfolio->usesCashAccounts = false;
    TaxLedger taxes;
    taxes.rules.deniesSuperficialLosses = false;
    std::vector<BasicTransaction> basics;
    long held = 0;
    YearMonthDay today{2021, 3, 1};
    for (int i = 0; i < 40; ++i, today = daysAfter(today, 1)) {
      const std::string amount =
          std::to_string(below(100'000)) + "." + std::to_string(below(90) + 10);
      const std::string shares = std::to_string(below(held == 0 ? 9 : held) + 1);
      const long what = held == 0 ? 0 : below(5);
      if (what < 2) {
        held += std::stol(shares);
        basics.push_back(ledger.buy(shares, amount));
        taxes.add(Kind::purchase, today, shares, amount);
      } else if (what == 2) {
        held -= std::stol(shares);
        basics.push_back(ledger.sell(shares, amount));
        taxes.add(Kind::sale, today, shares, amount);
      } else if (what == 3) {
        basics.push_back(ledger.split(std::to_string(held), std::to_string(held * 2)));
        taxes.split(today, std::to_string(held), std::to_string(held * 2));
        held *= 2;
      } else {
        basics.push_back(ledger.yield(BasicTransaction::YieldType::reinvestedDistribution, amount));
        taxes.add(Kind::reinvestedDistribution, today, "0", amount);
      }
    }
    ledger.record(basics);
    const TaxWalk walk = taxes.walk();
    auto disposal = walk.disposals.begin();
    for (std::size_t i = 0; i < ledger.rows().size(); ++i) {
      EXPECT_EQ(walk.poolsAfter[i].cost, ledger.rows()[i]->costBaseNet());
      EXPECT_EQ(walk.poolsAfter[i].shares, ledger.rows()[i]->sharesNet);
      if (const auto gain = ledger.rows()[i]->capitalGain()) {
        ASSERT_NE(disposal, walk.disposals.end());
        EXPECT_EQ((disposal++)->taxGain, gain);
      }
    }
    EXPECT_EQ(disposal, walk.disposals.end());
  });
}

/// Nothing that is denied goes astray: what has been bought, sold and gained explains the cost that
/// is left, and all that was denied was added to somebody, lost in a registered account or flagged.
TEST(TaxWalkProperty, AddsUpWhatItDenies) {
  forRandomCases(200, [](std::mt19937_64& random) {
    const auto below = [&](long most) {
      return static_cast<long>(random() % static_cast<unsigned long>(most));
    };
    TaxLedger ledger;
    ledger.holder("spouse");
    ledger.holder("plan", false);
    std::map<std::size_t, long> held;
    YearMonthDay today{2021, 1, 1};
    for (int i = 0; i < 60; ++i, today = daysAfter(today, below(12))) {
      const auto who = static_cast<std::size_t>(below(3));
      const bool isSale = held[who] > 0 && below(2) == 0;
      const long shares = below(isSale ? held[who] : 20) + 1;
      held[who] += isSale ? -shares : shares;
      ledger.add(isSale ? Kind::sale : Kind::purchase, today, std::to_string(shares),
                 std::to_string(shares * (5 + below(10))), ledger.holders[who].name);
    }
    const TaxWalk walk = ledger.walk();
    std::map<std::size_t, Decimal> cost;
    for (const TaxRow& row : ledger.rows) {
      cost[row.holder] += row.kind == Kind::purchase ? row.amount : -row.amount;
    }
    for (const TaxDisposal& disposal : walk.disposals) {
      const SuperficialLoss& loss = disposal.superficial;
      Decimal added;
      for (const auto& [holder, amount] : loss.additions) {
        EXPECT_GE(amount, 0);
        added += amount;
        cost[holder] += amount;
      }
      EXPECT_TRUE(added == loss.denied || (added.isZero() && loss.isOverApplied));
      EXPECT_LE(loss.denied, std::max(-disposal.gain, Decimal(0)));
      cost[ledger.rows[disposal.row].holder] += disposal.gain;
    }
    for (const std::size_t who : {0U, 1U}) {
      // Cost and gain are rounded apart, each to half a cent.
      EXPECT_NEAR(walk.pools[who].cost.doubleValue(), cost[who].doubleValue(),
                  0.01 * static_cast<double>(walk.disposals.size() + 1));
    }
  });
}

}  // namespace
}  // namespace corvane::testing
