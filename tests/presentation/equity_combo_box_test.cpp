// The search box for equities: when it searches, what it lists, and what a key chooses.

#include "presentation/controls/equity_combo_box.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/async/dispatch_queue.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Holds searches back until a test answers them.
class HeldSearches : public QuoteProvider {
 public:
  std::vector<std::string> texts;

  void searchEquities(std::string text, EquitiesCompletion completion) override {
    texts.push_back(std::move(text));
    pending_.push_back(std::move(completion));
  }
  void answer(Result<std::vector<EquityPointer>> result) {
    ASSERT_FALSE(pending_.empty());
    const auto completion = std::make_shared<EquitiesCompletion>(std::move(pending_.front()));
    pending_.erase(pending_.begin());
    DispatchQueue::global()->async(
        [completion, result = std::move(result)] { (*completion)(result); });
  }
  void find(const std::vector<std::string>& symbols) {
    std::vector<EquityPointer> found;
    for (const std::string& symbol : symbols) {
      found.push_back(equityWithId(symbol));
      found.back()->name = "Mines";
    }
    answer(found);
  }

 private:
  std::vector<EquitiesCompletion> pending_;
};

class EquityComboBoxTest : public ::testing::Test {
 protected:
  EquityComboBoxTest() {
    box.setQuoteProvider(market);
    box.equityComboBoxDataSource->searchDelayInterval = std::chrono::milliseconds(20);
    box.action = [this] { ++actions; };
  }

  void waitForSearch(std::size_t count) {
    ASSERT_TRUE(MainLoop::runUntil([&] { return market->texts.size() == count; },
                                   std::chrono::seconds(20)));
  }
  void find(const std::vector<std::string>& symbols) {
    market->find(symbols);
    waitForEnd();
  }
  void waitForEnd() {
    bool hasEnded = false;
    const auto before = box.equityComboBoxDataSource->searchDidEnd;
    box.equityComboBoxDataSource->searchDidEnd = [&] {
      hasEnded = true;
      before();
    };
    EXPECT_TRUE(MainLoop::runUntil([&] { return hasEnded; }, std::chrono::seconds(20)));
    box.equityComboBoxDataSource->searchDidEnd = before;
  }
  /// Types `text` and answers the search for it.
  void searchFor(const std::string& text, const std::vector<std::string>& symbols) {
    const std::size_t before = market->texts.size();
    box.changeText(text);
    waitForSearch(before + 1);
    find(symbols);
  }
  static void pass(std::chrono::milliseconds time) {
    MainLoop::runUntil([] { return false; }, time);
  }
  std::vector<std::string> rows() const {
    std::vector<std::string> texts;
    for (std::size_t i = 0; box.isPopupOpen() && i < box.numberOfRows(); ++i) {
      texts.push_back(box.row(i).plainText());
    }
    return texts;
  }
  std::string chosen() const {
    return box.selectedEquity() == nullptr ? "" : box.selectedEquity()->symbol;
  }

  std::shared_ptr<HeldSearches> market = std::make_shared<HeldSearches>();
  EquityComboBox box;
  int actions = 0;
};

TEST_F(EquityComboBoxTest, SearchesOnceForATextThatIsTypedFast) {
  for (const char* text : {"t", "to", "tor"}) {
    box.changeText(text);
    EXPECT_EQ(box.text(), text);
  }
  EXPECT_THAT(market->texts, IsEmpty()) << "typing waits for nothing, and asks nothing yet";
  waitForSearch(1);
  EXPECT_THAT(market->texts, ElementsAre("tor"));
  EXPECT_THAT(rows(), ElementsAre("Searching…"));
  EXPECT_FALSE(box.isRowSelectable(0));

  find({"TORO", "TORX"});
  EXPECT_THAT(rows(), ElementsAre("TORO — Mines", "TORX — Mines"));
  EXPECT_FALSE(box.isSearching());
  pass(std::chrono::milliseconds(60));
  EXPECT_EQ(market->texts.size(), 1U);
}

TEST_F(EquityComboBoxTest, SearchesForATextThatChangedMeanwhileWhenTheSearchEnds) {
  box.changeText("to");
  waitForSearch(1);
  box.changeText("tor");
  pass(std::chrono::milliseconds(60));
  EXPECT_EQ(market->texts.size(), 1U) << "never two searches at a time";
  find({"TO", "TORX"});
  EXPECT_THAT(market->texts, ElementsAre("to", "tor"));
  EXPECT_EQ(box.highlightedRow(), std::nullopt) << "this list is not yet for what was typed";
  find({"TORX"});
  EXPECT_THAT(rows(), ElementsAre("TORX — Mines"));
  pass(std::chrono::milliseconds(60));
  EXPECT_EQ(market->texts.size(), 2U);
}

TEST_F(EquityComboBoxTest, DropsTheAnswerToATextThatIsGone) {
  const EquityPointer held = market->equityWithId("HELD");
  box.setDefaultEquities({held});
  box.changeText("to");
  waitForSearch(1);
  box.changeText("");
  find({"TO"});
  EXPECT_THAT(rows(), ElementsAre("HELD"));

  // Nor does one that comes after the choice, or from a provider that is asked no more.
  box.changeText("tor");
  waitForSearch(2);
  box.setSelectedEquity(held);
  find({"TORX"});
  EXPECT_EQ(chosen(), "HELD");
  EXPECT_FALSE(box.isPopupOpen());
  EXPECT_EQ(market->texts.size(), 2U) << "the title of an equity is no text to look for";
  box.changeText("x");
  waitForSearch(3);
  box.setQuoteProvider(nullptr);
  EXPECT_FALSE(box.isSearching());
  market->find({"X"});
  pass(std::chrono::milliseconds(30));
  EXPECT_THAT(box.equityComboBoxDataSource->equities(), ElementsAre(held));
}

TEST_F(EquityComboBoxTest, SaysWhyNothingIsListed) {
  searchFor("zzz", {});
  EXPECT_THAT(rows(), ElementsAre("No matches."));
  EXPECT_EQ(box.row(0).runs().front().style.colour, Colour(Colour::Name::secondaryLabel));
  EXPECT_EQ(box.message(), "No matches.");
  box.chooseRow(0);
  EXPECT_EQ(chosen(), "");

  box.changeText("zz");
  waitForSearch(2);
  market->answer(failure(QuoteProviderError(QuoteProviderError::NotAvailable{})));
  waitForEnd();
  EXPECT_THAT(rows(), ElementsAre("Not available."));
  EXPECT_EQ(box.message(), "Not available.");
}

TEST_F(EquityComboBoxTest, OffersANominalEquityWhereNoSymbolIsTheText) {
  box.setOffersNominalEquityWithCurrency(Currency::cad());
  searchFor("abc", {"ABCD"});
  EXPECT_THAT(rows(), ElementsAre("ABCD — Mines", "ABC"));
  EXPECT_EQ(box.equityComboBoxDataSource->equities().back()->currency, Currency::cad());
  EXPECT_EQ(box.highlightedRow(), 0U) << "what is known comes before what is made up";

  const EquityPointer known = market->equityWithId("KNOWN");
  known->isAuthoritative = true;
  known->currency = Currency::usd();
  searchFor("known", {});
  EXPECT_EQ(known->currency, Currency::usd()) << "a real currency is not for a form to change";
  searchFor("ABCD", {"ABCD", "ABCDE"});
  EXPECT_THAT(rows(), ElementsAre("ABCD — Mines", "ABCDE — Mines"));
}

TEST_F(EquityComboBoxTest, ChoosesByKeyAndByMouse) {
  searchFor("tor", {"TORO", "TORX", "TORY"});
  EXPECT_EQ(box.announcement(), "TORO — Mines, 1 of 3");
  box.highlightPreviousRow();
  EXPECT_EQ(box.highlightedRow(), 2U) << "around the end";
  box.highlightNextRow();
  box.highlightNextRow();
  EXPECT_EQ(box.announcement(), "TORX — Mines, 2 of 3");
  EXPECT_TRUE(box.returnKey());
  EXPECT_EQ(chosen(), "TORX");
  EXPECT_EQ(box.text(), "TORX — Mines");
  EXPECT_FALSE(box.isPopupOpen());
  EXPECT_EQ(actions, 1);
  EXPECT_FALSE(box.returnKey()) << "the next Return is the form's";

  box.togglePopup();
  EXPECT_EQ(box.highlightedRow(), 1U);
  box.chooseRow(1);
  EXPECT_EQ(actions, 1) << "the same equity once more";
  box.changeText("TORX — Mine");
  EXPECT_EQ(chosen(), "");
  EXPECT_EQ(actions, 2);
  box.dismissPopup();
  pass(std::chrono::milliseconds(60));
  EXPECT_EQ(market->texts.size(), 1U) << "a popup that is dismissed looks for nothing";
}

TEST_F(EquityComboBoxTest, TakesASymbolFromSomebodyWhoTypesOn) {
  box.equityComboBoxDataSource->searchDelayInterval = std::chrono::hours(1);
  box.changeText(" torx ");
  box.finishEditing();
  ASSERT_THAT(market->texts, ElementsAre("torx")) << "without waiting for the delay";
  find({"TORO", "TORX"});
  EXPECT_EQ(chosen(), "TORX");
  EXPECT_EQ(actions, 1);

  box.changeText("mines");
  box.finishEditing();
  find({"TORO", "TORX"});
  EXPECT_EQ(chosen(), "") << "no symbol, so nothing is chosen for the user";
  EXPECT_FALSE(box.isPopupOpen()) << "nor opened over another field";

  // A made-up equity is only meant where there is nothing else.
  box.setOffersNominalEquityWithCurrency(Currency::cad());
  box.changeText("mine");
  box.finishEditing();
  find({"TORO"});
  EXPECT_EQ(chosen(), "");
  box.changeText("house");
  EXPECT_TRUE(box.returnKey());
  find({});
  EXPECT_EQ(chosen(), "HOUSE");
  EXPECT_TRUE(box.isSelectionNominal());
  box.setDefaultEquities({market->equityWithId("HELD")});
  box.changeText("held");
  box.finishEditing();
  EXPECT_EQ(chosen(), "HELD") << "known without a search";
  EXPECT_FALSE(box.isSelectionNominal());
  EXPECT_EQ(market->texts.size(), 4U);
}

TEST_F(EquityComboBoxTest, ShowsWhatTheScreenChooses) {
  const EquityPointer held = market->equityWithId("HELD");
  const EquityPointer other = market->equityWithId("OTHER");
  box.setDefaultEquities({held});
  box.setSelectedEquity(other);
  EXPECT_EQ(box.text(), "OTHER");
  EXPECT_THAT(box.equityComboBoxDataSource->equities(), ElementsAre(other));
  box.setSelectedEquity(held);
  EXPECT_THAT(box.equityComboBoxDataSource->equities(), ElementsAre(held));
  box.setSelectedEquity(nullptr);
  EXPECT_EQ(box.text(), "");
  EXPECT_EQ(actions, 0) << "only what the user does is told";

  box.setDefaultEquities({});
  box.togglePopup();
  EXPECT_FALSE(box.isPopupOpen()) << "an empty box without suggestions has nothing to show";
}

}  // namespace
}  // namespace corvane::testing
