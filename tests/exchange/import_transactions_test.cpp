// From a row of a statement to a transaction: types, signs, dates, currencies, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/imports/date_order_recognition.h"
#include "exchange/imports/portfolio_transactions_importer_accessory_view_controller.h"
#include "exchange/statement_world.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::StatementWorld;

class ImportTransactions : public ::testing::Test {
 protected:
  StatementWorld world;

  /// Imports one row of these fields, of the day 2021-03-31: how it was understood, whether or not
  /// the ledger had the shares for it, or else the error.
  std::string imported(std::vector<std::string> fields, const std::string& row) {
    fields.emplace_back("settlementDate");
    world.fields = std::move(fields);
    world.window->heard.clear();
    const std::size_t count = world.lines().size();
    const std::string header(world.fields.size() - 1, ',');
    const bool succeeded = world.importText(header + "\n" + row + ",2021-03-31");
    EXPECT_EQ(world.lines().size(), count + (succeeded ? 1 : 0));
    const auto& understood = world.importer->transactionsToRecord();
    if (understood.empty()) {
      return world.error();
    }
    EXPECT_EQ(understood.size(), 1U);
    const std::string line = testing::told(understood.front());
    EXPECT_TRUE(line.starts_with("2021-03-31 ")) << line;
    return line.substr(11);
  }
};

TEST_F(ImportTransactions, RecognisesTheWordsOfAllKinds) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"Buy", "trade 10 ABC for 500 CAD = 500"},
      {"BOUGHT", "trade 10 ABC for 500 CAD = 500"},
      {"Sell", "trade -10 ABC for -500 CAD = -500"},
      {"sold", "trade -10 ABC for -500 CAD = -500"},
      {"transfer", "transfer 500 CAD | ABC"},
      {"Cash In", "transfer 500 CAD | ABC"},
      {"Transfer Out", "transfer -500 CAD | ABC"},
      {"withdrawal", "transfer -500 CAD | ABC"},
      {"Dividend", "dividend ABC on 10 500 CAD = 500"},
      {"Distribution", "dividend ABC on 10 500 CAD = 500"},
      {"Cap. Gains Dividend", "capital gains dividend ABC on 10 500 CAD = 500"},
      {"Eligible Capital  gains Div", "capital gains dividend ABC on 10 500 CAD = 500"},
      {"Reinvested Distribution", "reinvested distribution ABC on 10 500 CAD = 500"},
      {"ROC", "return of capital ABC on 10 500 CAD = 500"},
      {"Capital Return", "return of capital ABC on 10 500 CAD = 500"},
      {"Interest", "adjust 500 CAD | ABC"},
      {"credit", "adjust 500 CAD | ABC"},
      {"Fees", "adjust -500 CAD | ABC"},
      {"Expense", "adjust -500 CAD | ABC"},
  };
  for (const auto& [word, line] : cases) {
    EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount"}, word + ",ABC,10,500"),
              line);
  }
  for (const std::string word : {"Split 2:1", "consolidation"}) {
    EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "sharesNet"}, word + ",ABC,-10,20"),
              "split 10 ABC into 20");
  }
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "costBaseAdded"},
                     "Shares journaled in,ABC,10,99.50"),
            "journal 10 ABC at 99.5");
}

TEST_F(ImportTransactions, SaysWhatTypeItDoesNotUnderstandInLowerCase) {
  const std::vector<std::string> fields = {"type", "symbol", "numberOfShares", "cashAmount"};
  for (const auto& [word, shown] :
       std::vector<std::pair<std::string, std::string>>{{"\" Sold\"", " sold"},
                                                        {"ÄRGER", "ärger"},
                                                        {"", ""},
                                                        {"capital gain", "capital gain"}}) {
    EXPECT_EQ(imported(fields, word + ",ABC,10,500"),
              "Problem on line 2: Transaction type “" + shown + "” is not understood.");
  }
}

TEST_F(ImportTransactions, GivesAmountsTheSignOfTheirKind) {
  const std::vector<std::string> fields = {"type", "symbol", "numberOfShares", "cashAmount"};
  for (const std::string row :
       {"sold,ABC,-100,-5000.00", "sold,ABC,100,5000.00", "sold,ABC,(100),\"$5,000.00-\""}) {
    EXPECT_EQ(imported(fields, row), "trade -100 ABC for -5000 CAD = -5000") << row;
  }
  EXPECT_EQ(imported(fields, "deposit,,,-100"), "transfer 100 CAD");
  EXPECT_EQ(imported(fields, "transfer,,,(100)"), "transfer -100 CAD");
  EXPECT_EQ(imported(fields, "withdraw,,,-100"), "transfer -100 CAD");
  EXPECT_EQ(imported(fields, "fees,,,5"), "adjust -5 CAD");
  EXPECT_EQ(imported(fields, "interest,,,−5"), "adjust -5 CAD");
  EXPECT_EQ(imported(fields, "referral,,,-5"), "adjust 5 CAD");
}

TEST_F(ImportTransactions, TakesTheNoteOrElseTheDescriptionOfCash) {
  const std::vector<std::string> fields = {"type", "symbol", "numberOfShares", "cashAmount",
                                           "note"};
  EXPECT_EQ(imported(fields, "deposit,From the bank,,100,"), "transfer 100 CAD | From the bank");
  EXPECT_EQ(imported(fields, "deposit,From the bank,,100,gift"), "transfer 100 CAD | gift");
  EXPECT_EQ(imported(fields, "buy,ABC Acme Banking Corp,1,100,"), "trade 1 ABC for 100 CAD = 100");
}

TEST_F(ImportTransactions, TakesEmptyCellsForZeroAndSaysWhatAColumnLacks) {
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount"}, "journal,ABC,,0"),
            "Problem on line 2: The cost base adjustment is not specified.");
  EXPECT_EQ(imported({"type", "symbol", "cashAmount"}, "buy,ABC,10"),
            "Problem on line 2: The number of shares is not specified.");
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares"}, "buy,ABC,10"),
            "Problem on line 2: The cash amount (cost or proceeds) is not specified.");
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount"}, "buy,ABC,ten,1"),
            "Problem on line 2: The number of shares is not specified.");
  EXPECT_EQ(imported({"type", "numberOfShares", "cashAmount"}, "buy,10,1"),
            "Problem on line 2: The symbol is not specified for a trade transaction.");
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount"}, "buy,,10,1"),
            "Problem on line 2: The symbol is not specified for a trade transaction.");
  EXPECT_EQ(imported({"symbol"}, "ABC"), "Problem on line 2: Transaction type is not indicated.");
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount"}, "dividend,ABC,,12.50"),
            "dividend ABC 12.5 CAD = 12.5")
      << "an empty cell declares no shares";
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount"}, "dividend,ABC,0,12.50"),
            "dividend ABC on 0 12.5 CAD = 12.5");
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "costBaseAdded"}, "journal,ABC,-4,-99"),
            "journal -4 ABC")
      << "shares that go take their part of the cost base along";
  EXPECT_EQ(imported({"type", "symbol", "sharesNet", "numberOfShares", "cashAmount"},
                     "dividend,ABC,n/a,10,12.50"),
            "dividend ABC 12.5 CAD = 12.5");
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares"}, "journal,ABC,-4"), "journal -4 ABC");
}

TEST_F(ImportTransactions, WorksOutTheAmountInThePortfoliosCurrency) {
  const std::vector<std::string> withRate = {"type",       "symbol",       "numberOfShares",
                                             "cashAmount", "cashCurrency", "exchangeRate"};
  EXPECT_EQ(imported(withRate, "buy,XYZ,10,100.00,USD,1.3"), "trade 10 XYZ for 100 USD = 130");
  // Half a cent goes to the even neighbour.
  EXPECT_EQ(imported(withRate, "sell,XYZ,10,0.05,USD,1.5"), "trade -10 XYZ for -0.05 USD = -0.08");
  EXPECT_EQ(imported(withRate, "buy,XYZ,10,100.00,\"USD \",1.3"), "trade 10 XYZ for 100 USD = 130");
  EXPECT_EQ(imported(withRate, "buy,XYZ,10,100.00,CAD,0"), "trade 10 XYZ for 100 CAD = 100");
  for (const std::string rate : {"0", "par", "-1.3", ""}) {
    EXPECT_EQ(imported(withRate, "buy,XYZ,10,100.00,USD," + rate),
              "Problem on line 2: An exchange rate of " + rate + " is not valid.");
  }
  const std::vector<std::string> withEquivalent = {
      "type", "symbol", "numberOfShares", "cashAmount", "cashCurrency", "equivalentAmount"};
  EXPECT_EQ(imported(withEquivalent, "sell,XYZ,10,100.00,USD,131.25"),
            "trade -10 XYZ for -100 USD = -131.25");
  EXPECT_EQ(imported(withEquivalent, "dividend,XYZ,10,-1.00,USD,-1.31"),
            "dividend XYZ on 10 -1 USD = -1.31");
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount", "cashCurrency"},
                     "buy,XYZ,10,100.00,USD"),
            "Problem on line 2: The equivalent currency amount (cost or proceeds) is not "
            "specified.");
}

TEST_F(ImportTransactions, FallsBackOnTheDefaultCurrency) {
  const std::vector<std::string> fields = {"type", "symbol", "cashAmount", "cashCurrency"};
  EXPECT_EQ(imported(fields, "deposit,,1,?"), "transfer 1 CAD");
  world.atSetup = [](ImportExportFieldSetupViewController& setup) {
    auto& accessory = dynamic_cast<PortfolioTransactionsImporterAccessoryViewController&>(
        *setup.accessoryViewController);
    auto menu = accessory.defaultCurrencyPopUpButton;
    ASSERT_TRUE(menu.select("USD"));
    accessory.selectDefaultCurrency(*menu.selectedIndex);
  };
  EXPECT_EQ(imported(fields, "deposit,,1,"), "transfer 1 USD");
  EXPECT_EQ(imported(fields, "deposit,,1,JPY"), "transfer 1 JPY");
}

TEST_F(ImportTransactions, UsesOneDateForBoth) {
  world.fields = {"tradeDate", "settlementDate", "type", "cashAmount"};
  EXPECT_TRUE(
      world.importText("T,S,Type,Amount\n"
                       ",2021-03-04,deposit,1\n"
                       "2021-03-05,,deposit,2\n"
                       "2021-03-05,2021-03-31,deposit,3\n"));
  EXPECT_THAT(world.lines(), ElementsAre("2021-03-04 transfer 1 CAD", "2021-03-05 transfer 2 CAD",
                                         "2021-03-05/2021-03-31 transfer 3 CAD"));
  EXPECT_FALSE(world.importText("T,S,Type,Amount\n2021-03-31,,deposit,1\n,,deposit,1\n"));
  EXPECT_EQ(world.error(), "Problem on line 3: Trade and/or settlement dates are missing.");
  EXPECT_FALSE(world.importText("T,S,Type,Amount\n2021-03-31,2021-03-30,deposit,1\n"));
  EXPECT_EQ(world.error(),
            "Problem on line 2: The settlement date must be equal to or later than the trade "
            "date.");
  EXPECT_EQ(world.lines().size(), 3U);
}

TEST_F(ImportTransactions, ReadsNoDayByAPatternThatLeavesAPartOfItOpen) {
  world.fields = {"tradeDate", "type", "cashAmount"};
  // Worked out as day, month, day; as three months; and as month, month, year.
  for (const std::string cell : {"15-Jan-21", "01/02/03", "01/02/2021"}) {
    EXPECT_FALSE(world.importText("T,Type,Amount\n" + cell + ",deposit,1\n"));
    EXPECT_EQ(world.error(), "Problem on line 2: Trade and/or settlement dates are missing. / “" +
                                 cell + "” is not read as a date.");
  }
  EXPECT_TRUE(namesOneDay("dd.MM.yyyy'd'") && namesOneDay("YYYY-LLL-d"));
  EXPECT_FALSE(namesOneDay("dd.MM.'y'") || namesOneDay("d M d") || namesOneDay(""));
}

TEST_F(ImportTransactions, RefusesAQuoteThatSwallowsRows) {
  world.fields = {"tradeDate", "type", "cashAmount", "note"};
  const std::string header = "T,Type,Amount,Note\n2021-03-31,deposit,1,\"a\r\nb\"\n";
  EXPECT_FALSE(world.importText(header + "2021-03-31,deposit,2,\"oops\n2021-03-31,deposit,3,\n"));
  EXPECT_EQ(world.error(), "Line 4: the quote that is opened here is never closed.");
  EXPECT_TRUE(world.importText(header + "2021-03-31,deposit,2,\"oops\n")) << world.error();
}

TEST_F(ImportTransactions, NeverTakesTheCurrencyChosenForAnotherPortfolio) {
  const auto choose = [&](const std::string& code) {
    const auto importer =
        PortfolioTransactionsImporter::make(world.ledger.portfolio, &world.defaults);
    importer->changeSettings([&](auto& settings) { settings.defaultCurrencyCode = code; });
  };
  const auto chosenFor = [&](const PortfolioPointer& portfolio) {
    return PortfolioTransactionsImporter::make(portfolio, &world.defaults)
        ->settings()
        .defaultCurrencyCode;
  };
  const auto other = world.ledger.manager->createPortfolio(Currency::usd());
  const auto third = world.ledger.manager->createPortfolio(Currency::cad());
  other->name = "Other";
  third->name = "Third";
  choose("CAD");
  EXPECT_EQ(chosenFor(other), "USD");
  choose("JPY");
  EXPECT_EQ(chosenFor(world.ledger.portfolio), "JPY");
  choose("JPY");
  EXPECT_EQ(chosenFor(third), "CAD");
}

TEST_F(ImportTransactions, ReadsDatesByTheFormatThatTheUserGives) {
  world.hasHeader = false;
  world.fields = {"tradeDate", "type", "cashAmount"};
  const std::string text = "010203,deposit,1\n040506,deposit,2\n";
  EXPECT_FALSE(world.importText(text));
  EXPECT_EQ(world.error(),
            "Problem on line 1: Trade and/or settlement dates are missing. / “010203” is not read "
            "as a date.");
  world.atSetup = [](ImportExportFieldSetupViewController& setup) {
    auto& accessory = dynamic_cast<PortfolioTransactionsImporterAccessoryViewController&>(
        *setup.accessoryViewController);
    accessory.chooseCustomDateFormat();
    accessory.setDateFormatString("ddMMyy");
  };
  EXPECT_TRUE(world.importText(text)) << world.error();
  EXPECT_THAT(world.lines(), ElementsAre("2003-02-01 transfer 1 CAD", "2006-05-04 transfer 2 CAD"));
  // The next import starts with that format.
  world.atSetup = nullptr;
  world.importer.reset();
  EXPECT_TRUE(world.importText("050506,deposit,3\n"));
  EXPECT_EQ(world.lines().back(), "2006-05-05 transfer 3 CAD");
}

TEST_F(ImportTransactions, NamesTheLineThatTheLedgerRefuses) {
  world.ledger.portfolio->allowsNegativeBalances = false;
  world.fields = {"tradeDate", "type", "symbol", "numberOfShares", "cashAmount"};
  const std::string header = "Date,Type,Symbol,Shares,Cash\n";
  EXPECT_FALSE(world.importText(header + "2021-03-31,deposit,,,1000\n"
                                         "2021-03-31,buy,ABC,10,900\n"
                                         "2021-03-31,buy,ABC,10,900\n"
                                         "2021-03-31,deposit,,,1000\n"));
  EXPECT_THAT(world.error(), HasSubstr("Problem on line 4: This change would violate"));
  EXPECT_THAT(world.lines(), IsEmpty());

  // Rows that stand earlier in the ledger than those before them in the file.
  EXPECT_FALSE(world.importText(header + "2021-03-31,deposit,,,1000\n"
                                         "2021-03-30,deposit,,,1000\n"
                                         "2021-03-29,withdraw,,,1\n"));
  EXPECT_THAT(world.error(), HasSubstr("Problem on line 4: "));
  EXPECT_FALSE(world.importText(header + "2021-03-31,deposit,,,0.001\n"));
  EXPECT_THAT(world.error(), HasSubstr("Problem on line 2: The cash amount"));
  EXPECT_THAT(world.lines(), IsEmpty());
}

TEST_F(ImportTransactions, KeepsItsConfigurationForTheNextFile) {
  world.fields = {"tradeDate", "", "type", "cashAmount"};
  world.hasHeader = false;
  ASSERT_TRUE(world.importText("2021-03-31\tx\tdeposit\t1\n2021-03-31\tx\tdeposit\t1\n"));
  world.importer.reset();
  const auto stored = world.defaults.string("portfolioTransactionsImportConfiguration");
  EXPECT_EQ(stored,
            R"({"fieldDelimiter":"tab","includesHeaderRow":false,"fieldOrder":["tradeDate","",)"
            R"("type","cashAmount"],"useDateFormatString":false,"dateFormatString":"YYYY-MM-dd",)"
            R"("defaultCurrencyCode":"CAD"})");

  const auto again = PortfolioTransactionsImporter::make(world.ledger.portfolio, &world.defaults);
  EXPECT_EQ(again->settings().fieldOrder, world.fields);
  // A field that exists no more is lost, a damaged configuration gives the defaults.
  world.defaults.set("portfolioTransactionsImportConfiguration",
                     R"({"fieldDelimiter":"comma","includesHeaderRow":true,"fieldOrder":["gone",)"
                     R"("note"],"useDateFormatString":true,"dateFormatString":"d/M/y"})");
  const auto older = PortfolioTransactionsImporter::make(world.ledger.portfolio, &world.defaults);
  EXPECT_EQ(older->settings().defaultCurrencyCode, "CAD");
  (void)ImportController::make(older);
  EXPECT_THAT(older->settings().fieldOrder, ElementsAre("note"));
  for (const std::string damaged :
       {"{", "[]", R"({"fieldDelimiter":"pipe","includesHeaderRow":true,"fieldOrder":[]})"}) {
    world.defaults.set("portfolioTransactionsImportConfiguration", damaged);
    const auto fresh = PortfolioTransactionsImporter::make(world.ledger.portfolio, &world.defaults);
    EXPECT_EQ(fresh->settings().dateFormatString, "YYYY-MM-dd") << damaged;
    EXPECT_THAT(fresh->settings().fieldOrder, IsEmpty()) << damaged;
  }
}

/// A provider that lives on the main queue and says when it is asked elsewhere.
class MainQueueProvider : public QuoteProvider {
 public:
  std::vector<std::string> asked;
  [[nodiscard]] EquityPointer equityWithId(std::string_view id) override {
    EXPECT_TRUE(DispatchQueue::main()->isCurrent());
    asked.emplace_back(id);
    return QuoteProvider::equityWithId(id);
  }
};

TEST_F(ImportTransactions, AsksTheProviderOnTheMainQueueOnceForEachSymbol) {
  const auto provider = std::make_shared<MainQueueProvider>();
  world.ledger.manager->quoteProvider = provider;
  world.fields = {"tradeDate", "type", "symbol", "numberOfShares", "cashAmount"};
  EXPECT_TRUE(
      world.importText("D,T,S,N,A\n2021-03-31,buy,ABC,1,1\n2021-03-31,buy,XYZ,1,1\n"
                       "2021-03-31,sell,ABC Acme,1,1\n"))
      << world.error();
  EXPECT_THAT(provider->asked, ElementsAre("ABC", "XYZ"));
}

TEST_F(ImportTransactions, RecordsNothingInAPortfolioWithoutAManager) {
  world.ledger.manager.reset();
  EXPECT_EQ(imported({"type", "symbol", "numberOfShares", "cashAmount"}, "buy,ABC,1,1"),
            "Problem on line 2: The symbol is not specified for a trade transaction.");
  (void)imported({"type", "cashAmount"}, "deposit,1");
  EXPECT_EQ(world.error(), "The portfolio is not open any more.");
}

std::string formatOf(const std::vector<std::string>& cells) {
  DateOrderRecognition recognition;
  for (const std::string& cell : cells) {
    recognition.add(cell);
  }
  return recognition.format();
}

TEST(DateOrderRecognition, TellsDaysFromMonthsAndYears) {
  EXPECT_EQ(formatOf({"31/12/2020", "01/02/2021"}), "d M y");
  EXPECT_EQ(formatOf({"01/02/2021", "12.31.2020"}), "M d y");
  EXPECT_EQ(formatOf({"2021-03-04", "2021/3/31"}), "y M d");
  EXPECT_EQ(formatOf({"March 4, 2021"}), "M M y");
  EXPECT_EQ(formatOf({"4 févr. 2021", "14 août 2021"}), "d M y");
  EXPECT_EQ(formatOf({"15-Jan-21"}), "d M d");
  EXPECT_EQ(formatOf({"٣١/١٢/٢٠٢٠", "٠١/٠٢/٢٠٢١"}), "d M y");
  EXPECT_EQ(formatOf({"01/02/03"}), "M M M");
  EXPECT_EQ(formatOf({"2021年3月14日"}), formatOf({"x"}));
  EXPECT_EQ(formatOf({}), "M M M");
  EXPECT_EQ(formatOf({"n/a", "", "2021-03-31", "99999999999999999999-1-1"}), "M M d");
}

/// The same match by trying everything in the order in which a backtracking matcher does.
std::optional<std::vector<std::string>> slowDateParts(const std::string& text) {
  const auto isWord = [&](std::size_t i) { return i < text.size() && std::isalnum(text[i]) != 0; };
  const auto runEnd = [&](std::size_t i) {
    while (isWord(i)) {
      ++i;
    }
    return i;
  };
  for (std::size_t a = 0; a < text.size(); ++a) {
    for (std::size_t b = runEnd(a); b > a; --b) {
      for (std::size_t c = b + 1; c < text.size(); ++c) {
        for (std::size_t d = runEnd(c); d > c; --d) {
          for (std::size_t e = d + 1; e < text.size(); ++e) {
            if (isWord(e)) {
              return std::vector{text.substr(a, b - a), text.substr(c, d - c),
                                 text.substr(e, runEnd(e) - e)};
            }
          }
        }
      }
    }
  }
  return std::nullopt;
}

TEST(DateOrderRecognition, CutsCellsLikeABacktrackingMatcher) {
  const std::string letters = "12/ ";
  int matches = 0;
  for (int length = 0; length <= 9; ++length) {
    for (int number = 0; number < 1 << (2 * length); number += length < 8 ? 1 : 7) {
      std::string cell;
      for (int i = 0; i < length; ++i) {
        cell += letters[static_cast<std::size_t>(number >> (2 * i) & 3)];
      }
      const auto expected = slowDateParts(cell);
      const auto parts = dateParts(cell);
      ASSERT_EQ(parts.has_value(), expected.has_value()) << "“" << cell << "”";
      if (parts) {
        ASSERT_THAT(std::vector<std::string>(parts->begin(), parts->end()),
                    ::testing::ElementsAreArray(*expected))
            << "“" << cell << "”";
        ++matches;
      }
    }
  }
  EXPECT_GT(matches, 1000);
}

TEST(PlainDays, StartWhenTheFormatterSays) {
  for (const char* name : {"America/Toronto", "Africa/Cairo", "America/Sao_Paulo"}) {
    const TimeZone zone = TimeZone::withIdentifier(name).value();
    DateFormatter formatter;
    formatter.isLenient = true;
    formatter.format = "y M d";
    formatter.timeZone = zone;
    const Calendar calendar(zone);
    for (int number = 0; number < 10'000; number += 3) {
      const auto day = YearMonthDay::normalised(1995, 1, 1 + number, calendar);
      const auto two = [](int part) { return (part < 10 ? "0" : "") + std::to_string(part); };
      const std::string cell = std::to_string(day.year) + "-" + two(day.month) + "-" + two(day.day);
      const auto plain = plainDay("y M d", cell);
      ASSERT_EQ(plain.has_value(), day.day <= 28) << cell;
      if (plain) {
        ASSERT_EQ(plain->startIn(calendar), formatter.date(cell)) << cell << " in " << name;
      }
    }
  }
  for (const char* other : {"2021-3-04", "2021-13-04", "2021/03/04", "2021-03-0x", "1582-10-09"}) {
    EXPECT_FALSE(plainDay("y M d", other)) << other;
  }
  EXPECT_FALSE(plainDay("d M y", "2021-03-04"));
}

}  // namespace
}  // namespace corvane
