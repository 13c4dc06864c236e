// What the user and the market answer to the questions of a statement, and how the program keeps
// it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/profiles/profile_error.h"
#include "exchange/profiles/profile_shelf.h"
#include "exchange/profiles/profile_writer.h"
#include "exchange/statement_world.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/statements/statement_rates.h"
#include "exchange/statements/symbol_search.h"
#include "exchange/strict/statement_error.h"
#include "support/checkout.h"
#include "support/scripted_quote_provider.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::ScriptedQuoteProvider;
using testing::told;

const std::string layoutText =
    "# My bank\nname = \"Bank\"\nheading = \"Day,What,Share,Count,Amount,Currency,Account\"\n"
    "fields = { date = \"Day\", type = \"What\", symbol = \"Share\", shares = \"Count\", amount = "
    "\"Amount\", currency = \"Currency\", account = \"Account\" }\n[kinds]\n\"Kauf\" = \"buy\"  # "
    "never more\n";

class StatementAnswers : public ::testing::Test {
 protected:
  StatementAnswers() { ledger.portfolio->allowsNegativeBalances = true; }

  StatementPreview preview(const std::string& rows, StatementRates* rates = nullptr) {
    const auto profile = StatementProfile::parse(layout, "bank", "bank.toml");
    return previewStatement("Day,What,Share,Count,Amount,Currency,Account\n" + rows, {profile},
                            ledger.portfolio, options,
                            [&](const Currency& currency, const YearMonthDay& day) {
                              return rates == nullptr ? std::nullopt : rates->rate(currency, day);
                            });
  }
  static std::vector<std::string> toldBy(const StatementPreview& preview) {
    std::vector<std::string> lines;
    for (const BasicTransaction& transaction : preview.transactions()) {
      lines.push_back(told(transaction));
    }
    return lines;
  }
  static std::string problemOf(StatementRates& rates, const std::string& file) {
    try {
      rates.readFile(file, "rates.csv");
      return "";
    } catch (const Error& error) {
      return error.description().value_or("");
    }
  }

  testing::Ledger ledger;
  testing::TemporaryFolder folder;
  StatementOptions options;
  std::string layout = layoutText;
};

TEST_F(StatementAnswers, ForeignRowsAreFoundInTheLedgerWithoutARate) {
  StatementRates rates(Currency::cad(), Calendar::current());
  rates.readFile("Day;Currency;Rate\n05.05.2025;USD;1,4\n", "rates.csv");
  const std::string rows = "2025-05-05,Kauf,ABC,2,20,USD,\n2025-05-05,Kauf,ABC,2,20,USD,\n";
  EXPECT_EQ(recordStatement(preview(rows, &rates), ledger.portfolio).size(), 2U);
  const StatementPreview again = preview(rows + "2025-05-05,Kauf,ABC,2,20,USD,\n");
  EXPECT_EQ(again.reading.rows[0].verdict, RowVerdict::present);
  EXPECT_EQ(again.reading.rows[0].question, std::nullopt);
  EXPECT_EQ(again.reading.rows[1].verdict, RowVerdict::present);
  EXPECT_EQ(again.reading.rows[2].verdict, RowVerdict::asks) << "there are two in the ledger";
  EXPECT_EQ(again.newRowCount(), 0U);
  EXPECT_TRUE(again.transactions().empty());
}

TEST_F(StatementAnswers, TakeRatesFromAFile) {
  StatementRates rates(Currency::cad(), Calendar::current());
  const std::string rows = "2025-05-05,Kauf,ABC,2,20,USD,\n2025-05-13,Kauf,ABC,2,20,USD,\n";
  EXPECT_EQ(preview(rows, &rates).reading.rows[0].reason,
            "no exchange rate for USD on 5 May 2025.");
  EXPECT_TRUE(rates.areMissing());
  rates.readFile("Day;Currency;Rate\n02.05.2025;USD;1,3805\n31.12.2024;EUR;1,5\n", "rates.csv");
  EXPECT_FALSE(rates.areMissing());
  const StatementPreview read = preview(rows, &rates);
  EXPECT_EQ(told(read.reading.rows[0].transactions.front()),
            "2025-05-05 trade 2 ABC for 20 USD = 27.61");
  EXPECT_EQ(read.reading.rows[0].rate, "1.3805, rates.csv of 2 May 2025");
  EXPECT_EQ(read.reading.rows[1].verdict, RowVerdict::asks) << "the rate is more than a week old";
  EXPECT_TRUE(rates.areMissing());

  EXPECT_EQ(problemOf(rates, "2025-05-05,USD,x\n"),
            "“rates.csv”: Line 1, column “rate”: “x” is not a rate.");
  EXPECT_EQ(problemOf(rates, "2025-05-05,USA,1\n"),
            "“rates.csv”: Line 1, column “currency”: “USA” is not the code of a currency.");
  EXPECT_EQ(problemOf(rates, "Day,Currency,Rate\n"), "“rates.csv”: there are no rates in it.");
}

TEST_F(StatementAnswers, TakeRatesFromTheMarketWithOneQueryACurrency) {
  const auto market = std::make_shared<ScriptedQuoteProvider>();
  market->script = [](const QuoteQuery& query) {
    if (query.equity->id().contains("EUR")) {
      return ScriptedQuoteProvider::refusal();
    }
    return ScriptedQuoteProvider::quotes(
        ScriptedQuoteProvider::dailyBars(query, [](const YearMonthDay& day) {
          Quote bar;
          bar.close = Decimal(day.day);
          return day.day > 5 ? std::optional<Quote>() : std::optional(bar);
        }));
  };
  StatementRates rates(Currency::cad(), Calendar::current());
  const std::string rows =
      "2025-05-02,Kauf,ABC,2,20,USD,\n2025-05-08,Kauf,ABC,2,20,USD,\n"
      "2025-05-08,Kauf,ABC,2,20,EUR,\n";
  (void)preview(rows, &rates);
  std::optional<std::vector<std::string>> problems;
  rates.fetch(market, [&](std::vector<std::string> told) { problems = std::move(told); });
  EXPECT_FALSE(problems) << "never before the call returns";
  while (!problems) {
    MainLoop::drain();
  }
  EXPECT_THAT(*problems, ElementsAre(HasSubstr("No rates of EUR.")));
  EXPECT_EQ(market->queries.size(), 2U);
  const StatementPreview read = preview(rows, &rates);
  EXPECT_THAT(toldBy(read), ElementsAre("2025-05-02 trade 2 ABC for 20 USD = 40",
                                        "2025-05-08 trade 2 ABC for 20 USD = 100"));
  EXPECT_EQ(read.reading.rows[1].rate, "5, market close of 5 May 2025");
  EXPECT_FALSE(read.isReady()) << "there is no rate of the euro";
}

/// A market that finds an equity under its ISIN at two exchanges, and one by its name.
class KnowingMarket : public QuoteProvider {
 public:
  std::vector<std::string> searches;

  void searchEquities(std::string text, EquitiesCompletion completion) override {
    searches.push_back(text);
    std::vector<EquityPointer> found;
    const auto add = [&](const char* id, const char* currency) {
      const EquityPointer equity = equityWithId(id);
      equity->name = "World";
      equity->isAuthoritative = true;
      equity->currency = Currency::byCode().at(currency);
      found.push_back(equity);
      kept_.push_back(equity);
    };
    if (text == "IE0000000001") {
      add("WLD.L", "GBP");
      add("WLD.DE", "EUR");
    } else if (text == "Penwyth plc") {
      add("PWYTH.L", "GBP");
    }
    DispatchQueue::main()->async(
        [found = std::move(found), completion = std::move(completion)]() mutable {
          completion(std::move(found));
        });
  }
  void refreshEquities(std::vector<EquityPointer> /*equities*/,
                       RefreshCompletion completion) override {
    DispatchQueue::main()->async(
        [completion = std::move(completion)]() mutable { completion(nullptr); });
  }

 private:
  std::vector<EquityPointer> kept_;
};

TEST_F(StatementAnswers, OfferWhatTheMarketFindsInTheRowsCurrencyFirst) {
  const auto market = std::make_shared<KnowingMarket>();
  using enum RowQuestion::About;
  std::optional<SymbolFinds> finds;
  searchSymbols(market,
                {{symbol, "IE0000000001", "World", "EUR", ""},
                 {symbol, "GB0000000001", "Penwyth plc", "GBP", ""},
                 {symbol, "Nobody", "", "GBP", ""}},
                [&](SymbolFinds found) { finds = std::move(found); });
  while (!finds) {
    MainLoop::drain();
  }
  ASSERT_EQ(finds->at("IE0000000001").size(), 2U);
  EXPECT_EQ(finds->at("IE0000000001").front().description(), "WLD.DE, World, EUR");
  EXPECT_EQ(finds->at("GB0000000001").front().symbol, "PWYTH.L");
  EXPECT_FALSE(finds->contains("Nobody"));
  EXPECT_THAT(market->searches,
              ElementsAre("IE0000000001", "GB0000000001", "Penwyth plc", "Nobody"));
}

TEST_F(StatementAnswers, SayWhatAWordMeansAndWhichAccountIsRead) {
  const std::string rows =
      "2025-03-04,Kauf,ABC,2,20,CAD,A\n2025-05-05,Uttag,,,-5,CAD,A\n2025-05-06,uttag,,,-6,CAD,B\n";
  StatementPreview read = preview(rows);
  EXPECT_EQ(read.reading.rows[1].verdict, RowVerdict::refused);
  EXPECT_EQ(read.reading.rows[1].question,
            (RowQuestion{RowQuestion::About::kind, "Uttag", "", "", ""}));
  EXPECT_EQ(read.reading.accounts, (std::set<std::string>{"A", "B"}));
  options.kinds = {{"Uttag", StatementKind::withdrawal}};
  options.accounts = {"A"};
  read = preview(rows);
  EXPECT_THAT(toldBy(read),
              ElementsAre("2025-03-04 trade 2 ABC for 20 CAD = 20", "2025-05-05 transfer -5 CAD"));
  EXPECT_EQ(read.reading.rows[2].reason, "it is of another account");
  EXPECT_TRUE(read.isReady());
}

TEST_F(StatementAnswers, GoIntoTheLayoutWithItsComments) {
  const std::string rows = "03/04/2025,Kauf,ABC,\"1,234\",20,CAD,A\n03/05/2025,Uttag,,,-5,CAD,A\n";
  options.days = DayOrder::dmy;
  options.decimal = DecimalMark::comma;
  options.kinds = {{"Uttag", StatementKind::withdrawal}};
  ProfileShelf shelf;
  shelf.profiles = {StatementProfile::parse(layout, "bank", "bank.toml")};
  const LearnedAnswers answers = answersToLearn(preview(rows), shelf, options);
  EXPECT_EQ(answers.days, DayOrder::dmy);
  testing::writeText(folder / "bank.toml", layout);
  const auto file = learnAnswers("bank", answers, folder / "none", folder.path());
  layout = testing::readText(file);
  EXPECT_THAT(layout, HasSubstr("# My bank\n"));
  EXPECT_THAT(layout, HasSubstr("# never more\n"));
  options = {};
  EXPECT_THAT(toldBy(preview(rows)), ElementsAre("2025-04-03 trade 1.234 ABC for 20 CAD = 20",
                                                 "2025-05-03 transfer -5 CAD"));
}

TEST_F(StatementAnswers, GoIntoLayoutsOfAnyShape) {
  const LearnedAnswers answers = {
      .kinds = {{"Wire In", StatementKind::deposit}, {"{odd", StatementKind::cash}},
      .days = {},
      .decimal = {}};
  const auto shelf = ProfileShelf::of({testing::sourcePath("resources/statements")});
  for (const StatementProfile& profile : shelf.profiles) {
    const std::string text =
        testing::readText(testing::sourcePath("resources/statements/" + profile.id + ".toml"));
    const auto learned = StatementProfile::parse(profileTextWith(text, answers), "x", profile.id);
    EXPECT_TRUE(std::ranges::any_of(learned.tables, [](const StatementTableLayout& table) {
      return std::ranges::any_of(table.kinds, [](const KindRule& rule) {
        return rule.pattern.text() == "Wire In" && rule.kind == StatementKind::deposit;
      });
    })) << profile.id;
    EXPECT_EQ(learned.tables.size(), profile.tables.size()) << profile.id;
  }
}

TEST_F(StatementAnswers, AreLearnedFromPlacedColumns) {
  const std::vector<std::string> heading = {"Valuta", "Text", "Text", "Menge", "\"Betrag\"; EUR"};
  StatementProfile profile =
      learnedProfile("My Bank, Käufe", heading,
                     {"settlementDate", "type", "symbol", "numberOfShares", "cashAmount"});
  FieldSource constant;
  constant.constant = "EUR";
  profile.tables.front().fields["currency"].push_back(constant);
  const auto file = rememberProfile(profile, folder.path());
  EXPECT_EQ(file.filename(), "my-bank-k-ufe.toml");
  EXPECT_EQ(rememberProfile(profile, folder.path()).filename(), "my-bank-k-ufe-2.toml");
  ledger.portfolio = ledger.manager->createPortfolio(Currency::byCode().at("EUR"));
  ledger.portfolio->allowsNegativeBalances = true;
  const std::string statement =
      "Valuta;Text;Text;Menge;\"\"\"Betrag\"\"; EUR\"\n2025-05-13;Bought;ABC Acme Corp;2;20,50\n"
      "2025-05-14;Deposit;From my bank;;100\n";
  StatementPreview read =
      previewStatement(statement, {readProfile(file)}, ledger.portfolio, options);
  ASSERT_EQ(read.reading.rows.size(), 2U);
  EXPECT_EQ(read.reading.rows[0].question->proposal, "ABC");
  options.symbols = {{"abc acme corp", "ABC"}};
  read = previewStatement(statement, {readProfile(file)}, ledger.portfolio, options);
  EXPECT_THAT(toldBy(read), ElementsAre("2025-05-13 trade 2 ABC for 20.5 EUR = 20.5",
                                        "2025-05-14 transfer 100 EUR | From my bank"));
  EXPECT_THROW(
      (void)rememberProfile(learnedProfile("No days", heading, {"", "type"}), folder.path()),
      ProfileError);
}

}  // namespace
}  // namespace corvane
