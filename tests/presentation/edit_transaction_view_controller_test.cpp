// The form for one transaction: what it shows, computes, refuses and records.

#include "presentation/transactions/edit_transaction_view_controller.h"

#include "presentation/portfolio_screen_world.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Form = EditTransactionViewController;
using Mode = TransactionMode;
using Sender = Form::Sender;
using YieldType = BasicTransaction::YieldType;

class TransactionFormTest : public PortfolioScreenWorld {
 protected:
  TransactionFormTest() {
    form.now = [this] { return now; };
    form.completionHandler = [this](auto placement) {
      ++completions;
      result = std::move(placement);
    };
    form.presentError = surroundings.presentError;
  }

  /// 100 ABC for 1000 Canadian dollars, and 50 XYZ for 500 US dollars, which cost 600 Canadian.
  void buySomething() {
    record({on(day(2021, 3, 1)).deposit("5000"), depositDollars("5000"), buy("100", "1000"),
            buyForeign("50", "500", "600")});
  }
  void create(Mode mode = Mode::buy) {
    form.behaviour = Form::Create{portfolio};
    form.load();
    form.chooseMode(mode);
  }
  void modify(const BasicTransaction& transaction) {
    form.behaviour = Form::Modify{transaction, portfolio};
    form.load();
  }
  void choose(const EquityPointer& equity) { form.chooseEquity(equity); }
  void shares(const std::string& text) { form.typeInto(form.numberOfSharesField, text); }
  void price(const std::string& text) { form.typeInto(form.sharePriceField, text); }
  void total(const std::string& text) { form.typeInto(form.totalAmountField, text); }
  void rate(const std::string& text) { form.typeInto(form.exchangeRateField, text); }
  void equivalent(const std::string& text) { form.typeInto(form.equivalentValueField, text); }

  /// What the go button hands over; fails the test where that is no transaction.
  BasicTransaction recorded() {
    form.performAction(Sender::goButton);
    const auto* made = result ? std::get_if<Order::Record>(&result->order.kind) : nullptr;
    if (made == nullptr) {
      ADD_FAILURE() << "no transaction: " << ::testing::PrintToString(errors)
                    << ", waiting for: " << form.goButton.tooltip;
      return deposit("1");
    }
    EXPECT_TRUE(form.goButton.isEnabled) << form.goButton.tooltip;
    return made->transaction;
  }
  BasicTransaction::Kind recordedKind() { return recorded().kind; }

  /// The labels of the rows that are shown, from top to bottom.
  std::vector<std::string> shownRows() const {
    std::vector<std::string> rows;
    if (!form.equityPopUpButton.isHidden) {
      rows.emplace_back("held equity");
    } else if (form.layout().equity == EquityRow::search) {
      rows.emplace_back("any equity");
    }
    for (const NumberEntry* field : {&form.priorNumberOfSharesField, &form.numberOfSharesField}) {
      if (!field->isHidden) {
        rows.push_back(field->label);
      }
    }
    if (!form.currencyPopUpButton.isHidden) {
      rows.emplace_back("currency");
    }
    for (const NumberEntry* field : {&form.sharePriceField, &form.totalAmountField,
                                     &form.exchangeRateField, &form.equivalentValueField}) {
      if (!field->isHidden) {
        rows.push_back(field->label);
      }
    }
    return rows;
  }
  static std::vector<std::string> codes(const std::vector<Currency>& currencies) {
    std::vector<std::string> codes;
    for (const Currency& currency : currencies) {
      codes.emplace_back(std::string_view(currency.code));
    }
    return codes;
  }
  YearMonthDay settlement() const {
    return YearMonthDay::of(form.settlementDatePicker.date().value(), manager->calendar);
  }
  void tradeOn(YearMonthDay day) {
    form.changeTransactionDate([&](DateEntry& date) { date.setDay(day); });
  }

  Form form;
  int completions = 0;
  std::optional<Form::Placement> result;
};

TEST_F(TransactionFormTest, ShowsTheRowsOfEachMode) {
  buySomething();
  create();
  const auto rowsIn = [this](Mode mode) {
    form.chooseMode(mode);
    return shownRows();
  };
  EXPECT_THAT(rowsIn(Mode::buy), ElementsAre("any equity", "Number of Shares:", "currency",
                                             "Share Price:", "Total Cost:"));
  EXPECT_EQ(form.goButton.title, "Buy");
  EXPECT_THAT(rowsIn(Mode::sell), ElementsAre("held equity", "Number of Shares:", "currency",
                                              "Share Price:", "Total Proceeds:"));
  EXPECT_EQ(form.detailSectionLabel.text, "Trade details");
  EXPECT_THAT(rowsIn(Mode::deposit), ElementsAre("currency", "Total Deposit:"));
  EXPECT_EQ(form.goButton.title, "Transfer");
  EXPECT_THAT(rowsIn(Mode::withdraw), ElementsAre("currency", "Total Withdrawal:"));
  EXPECT_THAT(rowsIn(Mode::cashCredit), ElementsAre("currency", "Total Credit:"));
  EXPECT_THAT(rowsIn(Mode::cashExpense), ElementsAre("currency", "Total Expense:"));
  EXPECT_THAT(rowsIn(Mode::dividend), ElementsAre("held equity", "Shares Held:", "currency",
                                                  "Dividend Per Share:", "Total Dividend:"));
  for (const Mode mode :
       {Mode::capitalGainsDividend, Mode::reinvestedDistribution, Mode::returnOfCapital}) {
    EXPECT_THAT(rowsIn(mode), ElementsAre("held equity", "Shares Held:", "currency",
                                          "Return Per Share:", "Total Return:"));
    EXPECT_EQ(form.detailSectionLabel.text, "Distribution details");
  }
  EXPECT_THAT(rowsIn(Mode::split),
              ElementsAre("held equity", "Pre-Split Shares:", "Post-Split Shares:"));
  EXPECT_THAT(rowsIn(Mode::journaledShares),
              ElementsAre("any equity", "Number of Shares:", "Cost Base Added:"));
  EXPECT_EQ(form.goButton.title, "Save");
  EXPECT_EQ(form.equivalentSectionLabel.text, "Canadian Dollar value");
}

TEST_F(TransactionFormTest, ShowsTheEquivalentOfForeignTradesAndYieldsOnly) {
  buySomething();
  create(Mode::sell);
  choose(xyz);
  EXPECT_EQ(form.currentCurrency(), Currency::usd());
  EXPECT_THAT(shownRows(),
              ElementsAre("held equity", "Number of Shares:", "currency", "Share Price:",
                          "Total Proceeds:", "Exchange Rate:", "Equivalent Proceeds:"));
  form.chooseMode(Mode::returnOfCapital);
  EXPECT_FALSE(form.exchangeRateField.isHidden);
  EXPECT_EQ(form.equivalentValueField.label, "Equivalent Return:");
  form.chooseMode(Mode::deposit);
  EXPECT_EQ(form.currentCurrency(), Currency::usd());
  EXPECT_TRUE(form.exchangeRateField.isHidden);
  EXPECT_TRUE(form.equivalentSectionLabel.isHidden);
}

TEST_F(TransactionFormTest, OffersTheCurrenciesOfTheMode) {
  buySomething();
  create(Mode::buy);
  EXPECT_THAT(codes(form.availableCurrencies()), ElementsAre("CAD", "USD"));
  const auto yen = provider->equityWithId("YEN");
  yen->currency = Currency::byCode().find("JPY")->second;
  choose(yen);
  EXPECT_THAT(codes(form.availableCurrencies()), ElementsAre("CAD", "JPY", "USD"));
  EXPECT_EQ(form.currentCurrency().code, "JPY");
  EXPECT_EQ(form.currencyPopUpButton.selectedValue(), yen->currency);
  for (const Mode mode : {Mode::sell, Mode::deposit, Mode::dividend, Mode::cashCredit}) {
    form.chooseMode(mode);
    EXPECT_EQ(form.availableCurrencies().size(), Currency::byCode().size());
  }
  // A currency that a mode does not offer gives way to the primary one.
  form.chooseMode(Mode::deposit);
  form.chooseCurrency(Currency::byCode().find("SEK")->second);
  form.chooseMode(Mode::withdraw);
  EXPECT_EQ(form.currentCurrency(), Currency::cad());
}

TEST_F(TransactionFormTest, LetsTheFieldsFollowEachOther) {
  create();
  choose(xyz);
  shares("1");
  price("1.005");
  EXPECT_EQ(form.totalAmountField.value(), dec("1"));
  price("1.015");
  EXPECT_EQ(form.totalAmountField.value(), dec("1.02"));
  rate("1.5");
  EXPECT_EQ(form.equivalentValueField.value(), dec("1.53"));
  shares("8");
  total("100");
  EXPECT_EQ(form.sharePriceField.value(), dec("12.5"));
  EXPECT_EQ(form.equivalentValueField.value(), dec("150"));
  equivalent("125");
  EXPECT_EQ(form.exchangeRateField.value(), dec("1.25"));
  EXPECT_EQ(form.totalAmountField.value(), dec("100"));

  shares("0");
  total("100");
  EXPECT_EQ(form.sharePriceField.value(), dec("0"));
  total("0");
  equivalent("50");
  EXPECT_EQ(form.exchangeRateField.value(), dec("50"));
  price("nothing");
  EXPECT_EQ(form.totalAmountField.value(), dec("0"));
  total("nothing");
  EXPECT_EQ(form.sharePriceField.value(), dec("0"));
  EXPECT_EQ(form.equivalentValueField.value(), dec("0"));
}

TEST_F(TransactionFormTest, TakesTheRecentPriceOfANewEquity) {
  buySomething();
  abc->recentPrice = dec("12.34");
  create();
  shares("10");
  choose(abc);
  EXPECT_EQ(form.sharePriceField.text(), "CA$12.34");
  EXPECT_EQ(form.totalAmountField.text(), "CA$123.40");
  choose(xyz);  // whose price nobody knows
  EXPECT_EQ(form.sharePriceField.text(), "");
  EXPECT_EQ(form.totalAmountField.value(), dec("0"));

  modify(sell("5", "100"));
  form.chooseMode(Mode::buy);
  EXPECT_EQ(form.sharePriceField.value(), dec("20"));
}

TEST_F(TransactionFormTest, RecordsInThePrimaryCurrencyAtARateOfOne) {
  buySomething();
  create();
  choose(xyz);
  rate("1.3");
  choose(abc);
  shares("10");
  price("2");
  EXPECT_EQ(form.equivalentValueField.value(), dec("20"));
  EXPECT_TRUE(form.exchangeRateField.isHidden);
}

TEST_F(TransactionFormTest, OffersToRoundAnEquivalentAndRoundsNothingUnasked) {
  buySomething();
  create(Mode::buy);
  choose(xyz);
  shares("3");
  total("100.01");
  rate("1.2345");
  EXPECT_EQ(form.equivalentValueField.text(), "CA$123.46");
  EXPECT_EQ(std::get<BasicTransaction::Trade>(recordedKind()).equivalentCashDisposed,
            dec("123.462345"));
  EXPECT_THAT(form.preview().refusal, HasSubstr("greater precision"));
  ASSERT_FALSE(form.roundButton.isHidden);
  EXPECT_EQ(form.roundButton.title, "Round to CA$123.46");
  EXPECT_THAT(form.roundButton.tooltip, HasSubstr("123.462345 CAD"));

  form.roundEquivalent();
  EXPECT_TRUE(form.roundButton.isHidden);
  EXPECT_EQ(form.preview().refusal, "");
  EXPECT_EQ(form.exchangeRateField.value(), dec("123.46") / dec("100.01"));
  EXPECT_EQ(std::get<BasicTransaction::Trade>(recordedKind()).equivalentCashDisposed,
            dec("123.46"));
  equivalent("123.462");
  EXPECT_FALSE(form.roundButton.isHidden) << "what was typed is not rounded either";
  EXPECT_EQ(std::get<BasicTransaction::Trade>(recordedKind()).equivalentCashDisposed,
            dec("123.462"));
  form.chooseCurrency(Currency::cad());
  EXPECT_TRUE(form.roundButton.isHidden);
}

TEST_F(TransactionFormTest, SettlesTradesTwoWeekdaysLater) {
  create();
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 12}));
  tradeOn({2021, 3, 11});  // a Thursday
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 15}));
  tradeOn({2021, 3, 12});
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 16}));
  form.chooseMode(Mode::cashCredit);
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 12}));

  modify(on(day(2021, 3, 1)).buy("1", "1"));
  EXPECT_EQ(form.settlementDatePicker.date(), day(2021, 3, 1));
  form.chooseMode(Mode::journaledShares);
  EXPECT_EQ(form.settlementDatePicker.date(), day(2021, 3, 1));
  form.chooseMode(Mode::buy);
  tradeOn({2021, 3, 4});
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 8}));
  EXPECT_EQ(form.transactionDatePicker.date(), manager->calendar.startOfDay(day(2021, 3, 4)));
}

TEST_F(TransactionFormTest, SaysWhatIsWrongWithADate) {
  create(Mode::deposit);
  total("10");
  const auto wordsFor = [this](const std::string& text) {
    form.changeTransactionDate([&](DateEntry& date) { date.setText(text); });
    EXPECT_EQ(form.transactionDatePicker.text(), text);
    EXPECT_FALSE(form.goButton.isEnabled);
    EXPECT_EQ(form.goButton.tooltip, form.transactionDatePicker.hint().text);
    form.performAction(Sender::goButton);
    return form.transactionDatePicker.hint().text;
  };
  EXPECT_EQ(wordsFor("soon"), "“soon” is not a date.");
  EXPECT_EQ(wordsFor("2021-02-30"), "“2021-02-30” is not a date.");
  EXPECT_EQ(wordsFor("0000-12-31"), "Dates before the year 1 cannot be kept.");
  EXPECT_EQ(wordsFor("-0044-03-15"), "Dates before the year 1 cannot be kept.");
  EXPECT_EQ(wordsFor("20210-03-15"), "Dates after the year 9999 cannot be kept.");
  EXPECT_EQ(completions, 0);

  for (const char* text : {"2021-03-08", "3/8/2021", "Mar 8, 2021", "March 8, 2021"}) {
    form.changeTransactionDate([&](DateEntry& date) { date.setText(text); });
    EXPECT_EQ(form.transactionDatePicker.day(), (YearMonthDay{2021, 3, 8})) << text;
    EXPECT_EQ(form.transactionDatePicker.hint(), (FieldHint{"Monday, March 8, 2021"}));
  }
  form.changeSettlementDate([](DateEntry& date) { date.setText("2021-03-07"); });
  EXPECT_EQ(form.goButton.tooltip,
            "The settlement date must be equal to or later than the trade date.");
  form.changeSettlementDate([](DateEntry& date) { date.step(1); });
  EXPECT_TRUE(form.goButton.isEnabled) << form.goButton.tooltip;
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 8}));
}

TEST_F(TransactionFormTest, UnderstandsWhatIsPasted) {
  create(Mode::deposit);
  const auto understood = [this](const std::string& text) {
    total(text);
    EXPECT_EQ(form.totalAmountField.text(), text);
    return form.totalAmountField.hint();
  };
  EXPECT_EQ(understood("1234.5"), (FieldHint{"CA$1,234.50"}));
  EXPECT_EQ(understood("US$ 1,234.50"), (FieldHint{"CA$1,234.50"}));
  EXPECT_EQ(understood("12.345"), (FieldHint{"CA$12.345"}));
  EXPECT_EQ(understood("CA$7.00"), FieldHint());
  EXPECT_EQ(understood(""), FieldHint());
  EXPECT_EQ(understood("(12.50)"), (FieldHint{"(CA$12.50)"}));
  EXPECT_FALSE(form.goButton.isEnabled);
  EXPECT_EQ(understood("a lot"), (FieldHint{"“a lot” is not a number.", true}));
  const std::string digits(38, '7');
  EXPECT_FALSE(understood(digits).isProblem);
  EXPECT_EQ(form.totalAmountField.value(), dec(digits));
  EXPECT_EQ(understood(digits + ".7"), (FieldHint{"No more than 38 digits can be kept.", true}));
  EXPECT_FALSE(form.totalAmountField.value());
  total("$8");
  form.endEditing(form.totalAmountField);
  EXPECT_EQ(form.totalAmountField.text(), "CA$8.00");
  total("junk");
  form.endEditing(form.totalAmountField);
  EXPECT_EQ(form.totalAmountField.text(), "junk");

  form.chooseMode(Mode::buy);
  shares("-5");
  EXPECT_EQ(form.numberOfSharesField.hint(), (FieldHint{"Must not be negative.", true}));
}

TEST_F(TransactionFormTest, TellsWhatIsMissing) {
  create(Mode::buy);
  EXPECT_EQ(form.goButton.tooltip,
            "Choose an equity. Enter a number of shares above 0. Enter a total of 0 or more.");
  choose(abc);
  EXPECT_FALSE(form.goButton.isEnabled);
  shares("1");
  EXPECT_TRUE(form.goButton.isEnabled) << form.goButton.tooltip;
  total("(1)");
  EXPECT_EQ(form.goButton.tooltip, "Enter a total of 0 or more. Enter an equivalent of 0 or more.");
  for (const Mode mode : {Mode::deposit, Mode::withdraw, Mode::cashCredit, Mode::cashExpense}) {
    form.chooseMode(mode);
    total("0");
    EXPECT_EQ(form.goButton.tooltip, "Enter an amount above 0.");
    total("0.01");
    EXPECT_TRUE(form.goButton.isEnabled);
  }
  form.chooseMode(Mode::split);
  EXPECT_TRUE(form.goButton.isEnabled) << "the shares came along: " << form.goButton.tooltip;
  EXPECT_EQ(form.priorNumberOfSharesField.value(), dec("1"));
  form.typeInto(form.priorNumberOfSharesField, "0");
  EXPECT_FALSE(form.goButton.isEnabled);
  form.chooseMode(Mode::journaledShares);
  shares("");
  EXPECT_FALSE(form.goButton.isEnabled);
  shares("-1");
  EXPECT_TRUE(form.goButton.isEnabled) << form.goButton.tooltip;
}

TEST_F(TransactionFormTest, RecordsTrades) {
  buySomething();
  create(Mode::buy);
  choose(abc);
  shares("10");
  total("500");
  form.setNote("as advised");
  const BasicTransaction bought = recorded();
  EXPECT_EQ(
      bought.kind,
      (BasicTransaction::Kind{BasicTransaction::Trade{abc, cad("500"), dec("500"), dec("10")}}));
  EXPECT_EQ(bought.tradeDate, manager->calendar.startOfDay(now));
  EXPECT_EQ(bought.note, "as advised");
  EXPECT_EQ(result->portfolio, portfolio);

  form.chooseMode(Mode::sell);
  shares("100");
  total("500.00");
  form.setNote("");
  const BasicTransaction sold = recorded();
  EXPECT_EQ(sold.kind, (BasicTransaction::Kind{
                           BasicTransaction::Trade{abc, cad("-500"), dec("-500"), dec("-100")}}));
  EXPECT_EQ(sold.note, std::nullopt);
}

TEST_F(TransactionFormTest, RecordsYieldsSplitsAndCash) {
  buySomething();
  create(Mode::dividend);
  choose(abc);
  for (const auto& [mode, type] :
       {std::pair{Mode::dividend, YieldType::dividend},
        {Mode::capitalGainsDividend, YieldType::capitalGainsDividend},
        {Mode::reinvestedDistribution, YieldType::reinvestedDistribution},
        {Mode::returnOfCapital, YieldType::returnOfCapital}}) {
    form.chooseMode(mode);
    shares("100");
    price("0.25");
    EXPECT_EQ(recordedKind(), (BasicTransaction::Kind{BasicTransaction::Yield{
                                  type, abc, dec("100"), cad("25"), dec("25")}}));
  }
  form.chooseMode(Mode::split);
  form.typeInto(form.priorNumberOfSharesField, "100");
  shares("300");
  EXPECT_EQ(recordedKind(),
            (BasicTransaction::Kind{BasicTransaction::Split{abc, dec("100"), dec("300")}}));
  const auto kindOf = [this](Mode mode) {
    form.chooseMode(mode);
    total("7");
    return recordedKind();
  };
  EXPECT_EQ(kindOf(Mode::deposit), BasicTransaction::Kind{BasicTransaction::Transfer{cad("7")}});
  EXPECT_EQ(kindOf(Mode::withdraw), BasicTransaction::Kind{BasicTransaction::Transfer{cad("-7")}});
  EXPECT_EQ(kindOf(Mode::cashCredit),
            BasicTransaction::Kind{BasicTransaction::CashAdjustment{cad("7")}});
  EXPECT_EQ(kindOf(Mode::cashExpense),
            BasicTransaction::Kind{BasicTransaction::CashAdjustment{cad("-7")}});
}

TEST_F(TransactionFormTest, RecordsJournaledShares) {
  create(Mode::journaledShares);
  choose(abc);
  shares("-10");
  EXPECT_FALSE(form.equivalentValueField.isEnabled);
  EXPECT_EQ(
      recordedKind(),
      (BasicTransaction::Kind{BasicTransaction::JournaledShares{abc, dec("-10"), std::nullopt}}));
  shares("10");
  EXPECT_TRUE(form.equivalentValueField.isEnabled);
  result.reset();
  form.performAction(Sender::goButton);
  EXPECT_FALSE(result);
  EXPECT_THAT(errors, ElementsAre("Indeterminate money amount."));
  equivalent("250.5");
  EXPECT_EQ(
      recordedKind(),
      (BasicTransaction::Kind{BasicTransaction::JournaledShares{abc, dec("10"), dec("250.5")}}));
  EXPECT_EQ(form.exchangeRateField.value(), dec("1"));
  shares("0");
  EXPECT_EQ(form.equivalentValueField.text(), "");
  form.performAction(Sender::goButton);
  EXPECT_EQ(errors.back(), "Invalid number of shares.");
}

TEST_F(TransactionFormTest, SaysWhyThereIsNoOrder) {
  buySomething();
  create();
  const auto errorIn = [this](Mode mode) {
    form.chooseMode(mode);
    errors.clear();
    form.performAction(Sender::goButton);
    return errors.empty() ? "" : errors.front();
  };
  EXPECT_EQ(errorIn(Mode::buy), "Invalid equity.");
  choose(abc);
  EXPECT_EQ(errorIn(Mode::sell), "Invalid number of shares.");
  EXPECT_EQ(errorIn(Mode::dividend), "Invalid number of shares.");
  EXPECT_EQ(errorIn(Mode::split), "Invalid number of shares.");
  form.chooseMode(Mode::withdraw);
  total("x");
  form.performAction(Sender::goButton);
  EXPECT_EQ(errors.back(), "Indeterminate money amount.");
  EXPECT_EQ(form.totalAmountField.text(), "x");
  EXPECT_EQ(completions, 0);
}

TEST_F(TransactionFormTest, AsksAManagerThatRecordsNothingToTrade) {
  manager = std::make_shared<PortfolioManager>(
      prices, &PortfolioManager::makeTransaction<PortfolioTransaction>,
      std::vector<OrderFeature>{OrderFeature::allowsTrade});
  portfolio = manager->createPortfolio(Currency::cad());
  create(Mode::buy);
  choose(abc);
  shares("1.5");
  EXPECT_EQ(form.numberOfSharesField.hint().text, "Must be a whole number.");
  shares("2");
  EXPECT_EQ(form.makeOrder().value(), Order{(Order::Buy{abc, dec("2")})});
  form.chooseMode(Mode::withdraw);
  total("9");
  EXPECT_EQ(form.makeOrder().value(), Order{Order::Withdraw{cad("9")}});
  form.chooseMode(Mode::cashCredit);
  EXPECT_EQ(form.makeOrder().error().description(), "Unsupported order type.");
}

TEST_F(TransactionFormTest, BuysWhereNothingCanBeSold) {
  create(Mode::deposit);
  form.chooseMode(Mode::sell);
  EXPECT_EQ(form.transactionMode(), Mode::buy);
  EXPECT_EQ(form.goButton.title, "Buy");
  EXPECT_EQ(form.notice, "Nothing is held that could be sold.");
  form.chooseMode(Mode::dividend);
  EXPECT_EQ(form.notice, "");
  // Changing the note of an old sale must not make a purchase of it.
  modify(sell("100", "500"));
  EXPECT_EQ(form.transactionMode(), Mode::sell);
  EXPECT_EQ(form.equityPopUpButton.selectedValue(), abc);
}

TEST_F(TransactionFormTest, GivesBackEveryTransactionThatItIsFilledFrom) {
  buySomething();
  const auto yen = Currency::byCode().find("JPY")->second;
  std::vector<BasicTransaction> transactions = {
      buy("10", "100"),
      sell("10", "100.01"),
      buyForeign("3", "10", "13.33"),
      buyForeign("-3", "-10", "-13.33"),
      split("100", "300"),
      journal("-10"),
      journal("10", dec("0")),
      yield(YieldType::dividend, "3.33", dec("100")),
      yield(YieldType::capitalGainsDividend, "3.33", dec("100")),
      yield(YieldType::reinvestedDistribution, "3.33", dec("100")),
      yield(YieldType::returnOfCapital, "3.33", dec("100")),
      deposit("1"),
      make(BasicTransaction::Transfer{{yen, dec("-100")}}),
      adjustment("2"),
      make(BasicTransaction::CashAdjustment{{Currency::usd(), dec("-2")}}),
      make(BasicTransaction::Yield{
          YieldType::dividend, xyz, dec("50"), {Currency::usd(), dec("7")}, dec("9.123456")}),
      make(BasicTransaction::Trade{abc, cad("0"), dec("0"), dec("5")})};
  for (BasicTransaction& transaction : transactions) {
    transaction.note = "from a statement";
    transaction.settlementDate = transaction.settlementDate + 3 * 86400;
    modify(transaction);
    EXPECT_EQ(form.title, "Modify Transaction");
    EXPECT_EQ(form.goButton.title, "Modify");
    EXPECT_TRUE(form.isNoteOpen);
    EXPECT_EQ(recorded(), transaction);
  }
}

TEST_F(TransactionFormTest, ModifiesATransactionOfAnEquityThatIsNoLongerHeld) {
  modify(yield(YieldType::dividend, "3.33", dec("100")));
  EXPECT_EQ(form.equityPopUpButton.selectedValue(), abc);
  EXPECT_EQ(form.sharePriceField.text(), "CA$0.0333");
  // A free share that turns out to have been paid for.
  modify(make(BasicTransaction::Trade{abc, cad("0"), dec("0"), dec("5")}));
  total("10");
  EXPECT_EQ(form.equivalentValueField.value(), dec("10"));
}

TEST_F(TransactionFormTest, DuplicatesATransactionWithTodaysDate) {
  buySomething();
  abc->recentPrice = dec("77");
  auto original = on(day(2020, 1, 6)).buy("10", "100");
  original.note = "monthly plan";
  form.behaviour = Form::Create{portfolio, original};
  form.load();
  EXPECT_EQ(form.title, "New Transaction");
  const BasicTransaction made = recorded();
  EXPECT_EQ(made.kind, original.kind);
  EXPECT_EQ(made.note, original.note);
  EXPECT_EQ(made.tradeDate, manager->calendar.startOfDay(now));
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 12}));
}

TEST_F(TransactionFormTest, StaysForTheNextEntry) {
  buySomething();
  create(Mode::dividend);
  choose(xyz);
  shares("50");
  total("8");
  rate("1.25");
  form.setNote("first");
  tradeOn({2021, 3, 5});
  form.performAction(Sender::insertAnotherButton);
  ASSERT_TRUE(result);
  EXPECT_TRUE(form.insertsAnother());
  form.prepareForAnother();
  EXPECT_FALSE(form.insertsAnother());
  EXPECT_EQ(form.transactionMode(), Mode::dividend);
  EXPECT_EQ(form.currentEquity(), xyz);
  EXPECT_EQ(form.currentCurrency(), Currency::usd());
  EXPECT_EQ(settlement(), (YearMonthDay{2021, 3, 5}));
  EXPECT_EQ(form.numberOfSharesField.value(), dec("0"));
  EXPECT_EQ(form.noteTextView.text, "");
  EXPECT_FALSE(form.goButton.isEnabled);
}

using Figure = TransactionPreview::Figure;

TEST_F(TransactionFormTest, ShowsWhatAnEntryWouldDo) {
  buySomething();
  const LedgerState before = state();
  create(Mode::sell);
  choose(abc);
  EXPECT_EQ(form.preview(), TransactionPreview());
  shares("40");
  total("500");
  EXPECT_THAT(form.preview().figures,
              ElementsAre(Figure{"Shares held", "100", "60"},
                          Figure{"Cost base", "CA$1,000.00", "CA$600.00"},
                          Figure{"Cash in CAD", "CA$4,000.00", "CA$4,500.00"},
                          Figure{"Capital gain", "", "CA$100.00"}));
  form.chooseMode(Mode::deposit);
  total("1");
  tradeOn({2021, 3, 1});
  EXPECT_THAT(form.preview().figures,
              ElementsAre(Figure{"Cash in CAD", "CA$0.00", "CA$1.00"},
                          Figure{"CAD at the end", "CA$4,000.00", "CA$4,001.00"}));
  EXPECT_EQ(state(), before);
}

TEST_F(TransactionFormTest, SaysBeforehandWhatTheLedgerWouldRefuse) {
  buySomething();
  create(Mode::sell);
  choose(abc);
  shares("101");
  total("1");
  EXPECT_THAT(form.preview().refusal, HasSubstr("but 100 are held"));
  EXPECT_TRUE(form.goButton.isEnabled) << "the ledger itself has the last word";
  shares("1");
  total("1.234");
  EXPECT_THAT(form.preview().refusal, HasSubstr("(Round to (CA$1.23)?)"));
  form.chooseMode(Mode::withdraw);
  total("4500");
  tradeOn({2021, 3, 2});
  EXPECT_THAT(form.preview().refusal, HasSubstr("would violate a transaction settled on"));
  EXPECT_THAT(form.preview().reason, HasSubstr("Insufficient cash."));
}

TEST_F(TransactionFormTest, SaysWhatToDoWhereADividendIsInTheWay) {
  buySomething();
  record({yield(BasicTransaction::YieldType::dividend, "5")});
  create(Mode::buy);
  choose(abc);
  shares("1");
  total("1");
  tradeOn({2021, 3, 3});
  EXPECT_THAT(form.preview().refusal, HasSubstr("declares a dividend from 100"));
  EXPECT_THAT(form.preview().reason, HasSubstr("Delete it, make this change"));
}

TEST_F(TransactionFormTest, SaysThatNothingCanBeTransferredWithoutCashAccounts) {
  portfolio->usesCashAccounts = false;
  for (const Mode mode : {Mode::deposit, Mode::withdraw}) {
    create(mode);
    total("10");
    EXPECT_EQ(form.preview().refusal,
              "This portfolio keeps no cash accounts, so nothing can be transferred.");
    EXPECT_THAT(form.preview().reason, HasSubstr("Turn on cash accounting"));
  }
}

TEST_F(TransactionFormTest, ForgetsTheRateOfACurrencyThatWasLeft) {
  buySomething();
  create();
  choose(abc);
  shares("10");
  form.chooseCurrency(Currency::usd());
  total("100");
  rate("1.5");
  form.chooseCurrency(Currency::cad());
  total("100");
  EXPECT_TRUE(form.exchangeRateField.isHidden);
  EXPECT_THAT(form.preview().figures,
              ::testing::Contains(Figure{"Cost base", "CA$1,000.00", "CA$1,100.00"}));
}

TEST_F(TransactionFormTest, TriesAModificationInPlaceOfTheRow) {
  buySomething();
  form.behaviour = Form::Modify{rows()[2]->basic, portfolio, rows()[2]};
  form.load();
  shares("90");
  total("900");
  EXPECT_THAT(
      form.preview().figures,
      ElementsAre(Figure{"Shares held", "0", "90"}, Figure{"Cost base", "CA$0.00", "CA$900.00"},
                  Figure{"Cash in CAD", "CA$5,000.00", "CA$4,100.00"}));
}

TEST_F(TransactionFormTest, EndsWithoutAnOrder) {
  create();
  form.performAction(Sender::cancelButton);
  EXPECT_EQ(completions, 1);
  EXPECT_FALSE(result);

  manager.reset();
  form.load();
  EXPECT_EQ(completions, 2);
  EXPECT_FALSE(result);
}

TEST_F(TransactionFormTest, KeepsSearchBoxAndMenuInStep) {
  buySomething();
  create(Mode::sell);
  EXPECT_THAT(form.equityPopUpButton.titles(), ElementsAre("ABC", "XYZ"));
  choose(xyz);
  EXPECT_EQ(form.equityComboBox.selectedEquity(), xyz);
  form.chooseMode(Mode::buy);
  form.equityComboBox.changeText("something else");
  EXPECT_EQ(form.currentEquity(), nullptr);
  EXPECT_EQ(form.equityPopUpButton.selectedIndex, std::nullopt);
  EXPECT_EQ(form.equityComboBox.text(), "something else");
  EXPECT_THAT(form.goButton.tooltip, HasSubstr("found for “something else”"));
}

}  // namespace
}  // namespace corvane::testing
