// Cost bases and losses as a tax return sees them.

#include "reports/tax/tax_walk.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>

#include "random_cases.h"
#include "reports/report_cases.h"
#include "reports/report_world.h"
#include "reports/series/report_days.h"
#include "reports/tax/tax_ledger.h"

namespace corvane::testing {
namespace {

using Kind = TaxRow::Kind;
constexpr YearMonthDay farFuture{2100, 1, 1};

/// Rows of one equity and those who hold it; each holder has one portfolio.
struct HandmadeRows {
  std::vector<TaxHolder> holders{{"me", true}};
  std::vector<TaxRow> rows;
  TaxRules rules{Currency::cad(), TaxCountry::canada, farFuture};

  std::size_t holder(const std::string& name, bool isTaxable = true) {
    for (std::size_t i = 0; i < holders.size(); ++i) {
      if (holders[i].name == name) {
        return i;
      }
    }
    holders.push_back({name, isTaxable});
    return holders.size() - 1;
  }
  HandmadeRows& add(Kind kind, YearMonthDay day, const std::string& shares,
                    const std::string& amount, const std::string& who = "me") {
    rows.push_back({kind, day, holder(who), holder(who), dec(shares), dec(amount)});
    return *this;
  }
  HandmadeRows& split(YearMonthDay day, const std::string& from, const std::string& into,
                      const std::string& who = "me") {
    TaxRow row{.kind = Kind::split, .day = day, .holder = holder(who), .portfolio = holder(who)};
    row.splitFrom = dec(from);
    row.splitInto = dec(into);
    rows.push_back(row);
    return *this;
  }
  [[nodiscard]] TaxWalk walk() const { return walkTaxes(rows, holders, rules); }
};

/// What `who` of `ledger` holds after its rows.
Decimal heldOf(const HandmadeRows& ledger, std::size_t who) {
  Decimal held;
  for (const TaxRow& row : ledger.rows) {
    if (row.holder == who) {
      held += row.kind == Kind::sale ? -row.shares : row.shares + row.splitInto - row.splitFrom;
    }
  }
  return held;
}

/// A split of new shares for old ones, "2:1", of `who`, or of all who hold where nobody is named.
void addSplit(HandmadeRows& ledger, const JSONValue& row) {
  const std::string& ratio = row.at("ratio").string();
  const std::size_t colon = ratio.find(':');
  const JSONValue* who = fieldOf(row, "who");
  const std::vector<TaxHolder> holders = ledger.holders;
  for (std::size_t i = 0; i < holders.size(); ++i) {
    const Decimal held = heldOf(ledger, i);
    if (held > 0 && (who == nullptr || who->string() == holders[i].name)) {
      const Decimal into = held * dec(ratio.substr(0, colon)) / dec(ratio.substr(colon + 1));
      ledger.split(dayOf(row.at("date")), held.description(), into.description(), holders[i].name);
    }
  }
}

/// The ledger of a case, and for each row of the case the last of the ledger's rows that it became.
HandmadeRows ledgerOf(const ReportCase& made, std::vector<std::size_t>& places) {
  static const std::map<std::string, Kind> kinds = {{"buy", Kind::purchase},
                                                    {"sell", Kind::sale},
                                                    {"roc", Kind::returnOfCapital},
                                                    {"dist", Kind::reinvestedDistribution}};
  HandmadeRows ledger;
  if (const JSONValue* registered = fieldOf(made.inputs, "registered")) {
    for (const JSONValue& name : registered->array()) {
      ledger.holder(name.string(), false);
    }
  }
  for (const JSONValue& row : made.inputs.at("rows").array()) {
    const std::string& kind = row.at("kind").string();
    const JSONValue* shares = fieldOf(row, "shares");
    const JSONValue* who = fieldOf(row, "who");
    const JSONValue* price = fieldOf(row, "price");
    if (kind == "split") {
      addSplit(ledger, row);
    } else {
      const JSONValue* fees = fieldOf(row, "fees");
      const Decimal fee = fees == nullptr ? Decimal() : amountOf(*fees);
      const Decimal amount =
          price == nullptr ? amountOf(row.at("amount"))
                           : amountOf(*shares) * amountOf(*price) + (kind == "sell" ? -fee : fee);
      ledger.add(kinds.at(kind), dayOf(row.at("date")),
                 shares == nullptr ? "0" : amountOf(*shares).description(), amount.description(),
                 who == nullptr ? "me" : who->string());
    }
    places.push_back(ledger.rows.size() - 1);
  }
  return ledger;
}

/// Compares all figures that the case tells of one row; whether it knows all of them.
void compareRow(const HandmadeRows& ledger, const TaxWalk& walk, std::size_t row,
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
    } else if (name == "gainBefore" || name == "loss") {
      EXPECT_NEAR(abs(found->gain).doubleValue(), abs(amountOf(value)).doubleValue(), tolerance);
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
  std::vector<std::size_t> places;
  HandmadeRows ledger = ledgerOf(made, places);
  const TaxWalk walk = ledger.walk();
  for (const auto& [row, expected] : made.expected.at("rows").object()) {
    SCOPED_TRACE("row " + row);
    compareRow(ledger, walk, places.at(std::stoul(row)), expected, made.tolerance);
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
  HandmadeRows mine;
  mine.add(Kind::purchase, {2020, 1, 2}, "50", "500").add(Kind::sale, {2020, 6, 1}, "20", "100");
  mine.split({2020, 6, 5}, "30", "120").add(Kind::purchase, {2020, 6, 20}, "4", "10");
  const SuperficialLoss loss = mine.walk().disposals.front().superficial;
  EXPECT_EQ(loss.bought, 1);
  EXPECT_EQ(loss.heldAtEnd, 31);
  EXPECT_EQ(loss.denied, 5);

  // The same where the buyer has no row for the split, and where both have one, two days apart.
  HandmadeRows ours = mine;
  ours.rows.back() = {Kind::purchase, {2020, 6, 20}, ours.holder("spouse"), 1, 4, 10};
  EXPECT_EQ(ours.walk().disposals.front().superficial.bought, 1);
  HandmadeRows both;
  both.add(Kind::purchase, {2020, 1, 2}, "50", "500")
      .add(Kind::purchase, {2020, 1, 2}, "10", "100", "B");
  both.add(Kind::sale, {2020, 6, 1}, "20", "100").split({2020, 6, 5}, "30", "120");
  both.split({2020, 6, 7}, "10", "40", "B").add(Kind::purchase, {2020, 6, 20}, "4", "10", "B");
  EXPECT_EQ(both.walk().disposals.front().superficial.bought, 1);
  EXPECT_EQ(both.walk().disposals.front().superficial.heldAtEnd, 41);
}

TEST(SuperficialLosses, EndWithTheThirtiethDayOnBothSides) {
  for (const int apart : {-31, -30, 30, 31}) {
    HandmadeRows ledger;
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
  HandmadeRows ledger;
  ledger.add(Kind::purchase, {2020, 1, 2}, "10", "100").add(Kind::sale, {2020, 1, 10}, "5", "10");
  for (const auto& [today, isProvisional] :
       {std::pair(YearMonthDay{2020, 2, 8}, true), std::pair(YearMonthDay{2020, 2, 9}, false)}) {
    ledger.rules.today = today;
    EXPECT_EQ(ledger.walk().disposals.front().superficial.isProvisional, isProvisional);
  }
  ledger.rules.country = TaxCountry::none;
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
    HandmadeRows taxes;
    taxes.rules.country = TaxCountry::none;
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

/// The same from the rows of a ledger itself, of all kinds and in two equities.
TEST(TaxWalkProperty, BooksEveryKindOfRowAsTheLedgerDoes) {
  forRandomCases(60, [](std::mt19937_64& random) {
    const auto below = [&](long most) {
      return static_cast<long>(random() % static_cast<unsigned long>(most));
    };
    Ledger ledger;
    ledger.portfolio->usesCashAccounts = false;
    ledger.xyz->currency = Currency::cad();
    std::map<EquityPointer, long> held;
    std::vector<BasicTransaction> basics;
    for (int i = 0; i < 60; ++i) {
      const EquityPointer equity = below(2) == 0 ? ledger.abc : ledger.xyz;
      long& shares = held[equity];
      const Decimal amount = Decimal::fromParts(Sign::plus, -2, random() % 90'000 + 1);
      const long moved = below(shares == 0 ? 9 : shares) + 1;
      using enum BasicTransaction::YieldType;
      switch (shares == 0 ? 0 : below(8)) {
        case 1:
          shares -= moved;
          basics.push_back(ledger.make(
              BasicTransaction::Trade{equity, {Currency::cad(), -amount}, -amount, -moved}));
          break;
        case 2:
          basics.push_back(ledger.make(BasicTransaction::Split{equity, shares, shares * 3}));
          shares *= 3;
          break;
        case 3:
          shares -= moved;
          basics.push_back(ledger.make(BasicTransaction::JournaledShares{equity, -moved, amount}));
          break;
        case 4:
          shares += moved;
          basics.push_back(ledger.make(BasicTransaction::JournaledShares{equity, moved, amount}));
          break;
        case 5:
          basics.push_back(ledger.make(BasicTransaction::JournaledShares{
              equity, 0, below(2) == 0 ? dec("-0.07") : dec("3.5")}));
          break;
        case 6:
          basics.push_back(ledger.make(BasicTransaction::Yield{
              reinvestedDistribution, equity, std::nullopt, {Currency::cad(), amount}, amount}));
          break;
        case 7:
          basics.push_back(
              ledger.make(BasicTransaction::Yield{below(2) == 0 ? dividend : capitalGainsDividend,
                                                  equity,
                                                  std::nullopt,
                                                  {Currency::cad(), amount},
                                                  amount}));
          break;
        default:
          shares += moved;
          basics.push_back(ledger.make(
              BasicTransaction::Trade{equity, {Currency::cad(), amount}, amount, moved}));
      }
    }
    ledger.record(basics);
    TaxYearQuestion question{{2000, 1, 1}, {2040, 12, 31}, {2041, 1, 1}};
    question.country = TaxCountry::none;
    const std::vector<TaxedPortfolio> taxed{{ledger.portfolio}};
    const auto told = taxLedger(taxed, question, ledger.manager->calendar);
    EXPECT_EQ(told.equities.size(), held.size());
    for (const TaxedEquity& line : told.equities) {
      const TaxWalk walk = walkTaxes(line.rows, told.holders, taxRules(line, question));
      ASSERT_TRUE(walk.deemedGains.empty());
      for (std::size_t i = 0; i < line.rows.size(); ++i) {
        const PortfolioTransaction& row = line.places[i].row();
        EXPECT_EQ(walk.poolsAfter[i].cost, row.costBaseNet()) << i;
        EXPECT_EQ(walk.poolsAfter[i].shares, row.sharesNet) << i;
        const auto sale = std::ranges::find(walk.disposals, i, &TaxDisposal::row);
        EXPECT_EQ(sale == walk.disposals.end() ? std::nullopt : std::optional(sale->taxGain),
                  row.capitalGain())
            << i;
      }
    }
  });
}

/// Nothing that is denied goes astray: what has been bought, sold and gained explains the cost that
/// is left, and all that was denied was added to somebody, lost in a registered account or flagged.
TEST(TaxWalkProperty, AddsUpWhatItDenies) {
  forRandomCases(200, [](std::mt19937_64& random) {
    const auto below = [&](long most) {
      return static_cast<long>(random() % static_cast<unsigned long>(most));
    };
    HandmadeRows ledger;
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

/// Losses that were denied, with purchases and holdings counted anew for each of them.
TEST(TaxWalkProperty, DeniesWhatCountingEachRowGives) {
  int losses = 0;
  forRandomCases(100, [&](std::mt19937_64& random) {
    HandmadeRows ledger;
    ledger.holder("plan", false);
    std::map<std::size_t, long> held;
    YearMonthDay today{2021, 1, 1};
    for (int i = 0; i < 50; ++i, today = daysAfter(today, static_cast<int>(random() % 16))) {
      const std::size_t who = random() % 2;
      const bool isSale = held[who] > 0 && random() % 2 == 0;
      const long shares =
          1 + static_cast<long>(random() % static_cast<std::uint64_t>(isSale ? held[who] : 9));
      held[who] += isSale ? -shares : shares;
      ledger.add(isSale ? Kind::sale : Kind::purchase, today, std::to_string(shares),
                 std::to_string(shares * static_cast<long>(random() % 20 + 1)),
                 ledger.holders[who].name);
    }
    for (const TaxDisposal& disposal : ledger.walk().disposals) {
      const TaxRow& sale = ledger.rows[disposal.row];
      Decimal bought;
      Decimal left;
      for (const TaxRow& row : ledger.rows) {
        const int apart = daysBetween(sale.day, row.day);
        const Decimal change = row.kind == Kind::purchase ? row.shares : -row.shares;
        bought += row.kind == Kind::purchase && std::abs(apart) <= 30 ? row.shares : Decimal();
        left += apart <= 30 ? change : Decimal();
      }
      const Decimal counted = std::max(Decimal(0), std::min({sale.shares, bought, left}));
      const Decimal loss = std::max(-disposal.gain, Decimal(0));
      EXPECT_EQ(disposal.superficial.denied,
                roundedToMinorUnits(loss * counted / sale.shares, Currency::cad()));
      Decimal listed;
      for (const auto& [row, shares] : disposal.superficial.purchases) {
        listed += shares;
      }
      EXPECT_TRUE(loss.isZero() || listed == bought);
      losses += loss.isZero() ? 0 : 1;
    }
  });
  EXPECT_GT(losses, 0);
}

// ── The United Kingdom ──

HandmadeRows british(HandmadeRows ledger) {
  ledger.rules = {Currency::byCode().find("GBP")->second, TaxCountry::unitedKingdom, farFuture};
  return ledger;
}

TEST(ReportCases, BritishDisposals) {
  forReportCases("tax.uk", [](const ReportCase& made) {
    std::vector<std::size_t> places;
    const HandmadeRows ledger = british(ledgerOf(made, places));
    const TaxWalk walk = ledger.walk();
    // Disposals of one day are one.
    std::map<YearMonthDay, Decimal> gains;
    for (const TaxDisposal& disposal : walk.disposals) {
      const TaxRow& row = ledger.rows[disposal.row];
      gains[row.day] += row.amount - disposal.costDisposed;
    }
    const auto compare = [&](const JSONValue& expected, auto isRight) {
      ASSERT_EQ(gains.size(), expected.array().size());
      auto value = expected.array().begin();
      for (const auto& [day, gain] : gains) {
        EXPECT_TRUE(isRight(gain, amountOf(*value++))) << isoText(day) << ": " << gain;
      }
    };
    for (const auto& [name, value] : made.expected.object()) {
      SCOPED_TRACE(name);
      if (name == "gainsExact") {
        compare(value, [](const Decimal& gain, const Decimal& exact) { return gain == exact; });
      } else if (name == "gainsNear") {
        compare(value, [&](const Decimal& gain, const Decimal& near) {
          return std::abs((gain - near).doubleValue()) <= made.tolerance;
        });
      } else if (name == "gainsRoundedDown") {
        // Whether a loss is cut or rounded up with its pence is its publisher's habit.
        compare(value, [](const Decimal& gain, const Decimal& whole) {
          return gain < 0 ? abs(gain - whole) < 1 : rounded(gain, 0, RoundingMode::down) == whole;
        });
      } else {
        ADD_FAILURE() << "a figure that this test does not know";
      }
    }
    return true;
  });
}

TEST(ShareMatching, TakesTheSameDayBeforeTheNextThirtyBeforeThePool) {
  HandmadeRows ledger = british({});
  ledger.holder("spouse");
  ledger.add(Kind::purchase, {2020, 1, 2}, "10", "100").add(Kind::sale, {2020, 6, 1}, "4", "80");
  ledger.add(Kind::purchase, {2020, 6, 1}, "1", "7");
  ledger.add(Kind::purchase, {2020, 6, 20}, "9", "9", "spouse");
  ledger.add(Kind::purchase, {2020, 7, 1}, "2", "16").add(Kind::purchase, {2020, 7, 2}, "5", "45");
  const TaxWalk walk = ledger.walk();
  const TaxDisposal& sale = walk.disposals.front();
  ASSERT_EQ(sale.matches.size(), 3U) << "the 31st day and what somebody else buys play no part";
  EXPECT_EQ(sale.matches[0].cost, 7);
  EXPECT_EQ(sale.matches[1].day, (YearMonthDay{2020, 7, 1}));
  EXPECT_EQ(sale.matches[2].cost, 10);
  EXPECT_EQ(sale.taxGain, 80 - 7 - 16 - 10);
  EXPECT_EQ(walk.pools[0].shares, 14);
  EXPECT_EQ(walk.pools[0].cost, 90 + 45);
  EXPECT_FALSE(sale.superficial.isProvisional);
  ledger.rules.today = {2020, 6, 30};
  EXPECT_TRUE(ledger.walk().disposals.front().superficial.isProvisional);
}

/// 10 of 20 sold, the other 10 split into 30, then 15 bought, which are 5 of those sold.
TEST(ShareMatching, CountsSharesOfTheDayOfTheSale) {
  HandmadeRows ledger = british({});
  ledger.add(Kind::purchase, {2020, 1, 2}, "20", "200").add(Kind::sale, {2020, 6, 1}, "10", "150");
  ledger.split({2020, 6, 5}, "10", "30").add(Kind::purchase, {2020, 6, 9}, "15", "60");
  const TaxWalk walk = ledger.walk();
  ASSERT_EQ(walk.disposals.front().matches.size(), 2U);
  EXPECT_EQ(walk.disposals.front().matches[0].shares, 5);
  EXPECT_EQ(walk.disposals.front().taxGain, 150 - 60 - 50);
  EXPECT_EQ(walk.pools[0].shares, 45) << "15 of before the split were never taken out of the pool";
  EXPECT_EQ(walk.pools[0].cost, 150);
}

/// The rules once more, share by share.
TEST(ShareMatchingProperty, IsWhatMatchingSingleSharesGives) {
  forRandomCases(100, [](std::mt19937_64& random) {
    HandmadeRows ledger = british({});
    long held = 0;
    YearMonthDay today{2021, 1, 1};
    for (int i = 0; i < 40; ++i, today = daysAfter(today, static_cast<int>(random() % 20))) {
      const bool isSale = held > 0 && random() % 2 == 0;
      const long shares =
          1 + static_cast<long>(random() % static_cast<std::uint64_t>(isSale ? held : 9));
      held += isSale ? -shares : shares;
      ledger.add(isSale ? Kind::sale : Kind::purchase, today, std::to_string(shares),
                 std::to_string(shares * static_cast<long>(random() % 20 + 1)));
    }
    struct Share {
      std::size_t row;
      bool isTaken = false;
    };
    std::vector<Share> bought;
    std::map<YearMonthDay, std::pair<Decimal, Decimal>> days;  // cost and shares
    std::map<std::size_t, long> unmatched;
    for (std::size_t i = 0; i < ledger.rows.size(); ++i) {
      const TaxRow& row = ledger.rows[i];
      const long count = std::stol(row.shares.description());
      if (row.kind == Kind::sale) {
        unmatched[i] = count;
        continue;
      }
      bought.insert(bought.end(), static_cast<std::size_t>(count), {i});
      days[row.day].first += row.amount;
      days[row.day].second += row.shares;
    }
    const auto costOfOne = [&](const YearMonthDay& day) {
      return days[day].first / days[day].second;
    };
    std::map<std::size_t, Decimal> cost;
    for (const auto& [first, last] : {std::pair(0, 0), std::pair(1, 30)}) {
      for (auto& [sale, left] : unmatched) {
        for (Share& share : bought) {
          const int apart = daysBetween(ledger.rows[sale].day, ledger.rows[share.row].day);
          if (left > 0 && !share.isTaken && first <= apart && apart <= last) {
            share.isTaken = true;
            --left;
            cost[sale] += costOfOne(ledger.rows[share.row].day);
          }
        }
      }
    }
    double poolCost = 0;
    double poolShares = 0;
    const TaxWalk walk = ledger.walk();
    auto disposal = walk.disposals.begin();
    for (std::size_t i = 0; i < ledger.rows.size(); ++i) {
      const TaxRow& row = ledger.rows[i];
      if (row.kind == Kind::sale) {
        const auto left = static_cast<double>(unmatched[i]);
        const double ofPool = left == 0 ? 0 : poolCost * left / poolShares;
        EXPECT_NEAR(disposal->gain.doubleValue(), (row.amount - cost[i]).doubleValue() - ofPool,
                    0.02 * (1 + left));
        EXPECT_EQ(disposal->row, i);
        ++disposal;
        poolCost -= ofPool;
        poolShares -= left;
        continue;
      }
      for (const Share& share : bought) {
        if (share.row == i && !share.isTaken) {
          poolCost += costOfOne(row.day).doubleValue();
          poolShares += 1;
        }
      }
    }
    EXPECT_EQ(disposal, walk.disposals.end());
    EXPECT_NEAR(walk.pools[0].shares.doubleValue(), poolShares, 1e-9);
  });
}

}  // namespace
}  // namespace corvane::testing
