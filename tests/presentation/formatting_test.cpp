#include "presentation/text/formatting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "core/market/quote_provider.h"
#include "platform/system/file_manager.h"
#include "support/decimals.h"

namespace corvane {
namespace {

using testing::dec;
using Name = Colour::Name;

/// The texts of an English locale, whatever that of the machine.
class FormattingTest : public ::testing::Test {
 protected:
  FormattingTest() { setenv("LC_ALL", "en_US.UTF-8", 1); }
  ~FormattingTest() override {
    unsetenv("LC_ALL");
    files::remove(folder_);
  }

  static AttributedText change(const std::optional<Decimal>& reference,
                               const std::optional<Decimal>& current) {
    return Formatting::changeText(Currency::usd(), reference, current);
  }

  std::string rangeText(Date from, Date to) {
    return Formatting::dateRangeText({from, to}, *equity_, defaults_);
  }

  Date at(int day, int hour, int minute) const {
    return *equity_->calendar.date({{CalendarUnit::year, 2021},
                                    {CalendarUnit::month, 5},
                                    {CalendarUnit::day, day},
                                    {CalendarUnit::hour, hour},
                                    {CalendarUnit::minute, minute}});
  }

  const std::filesystem::path folder_ =
      files::makePrivateDirectory(std::filesystem::temp_directory_path());
  UserDefaults defaults_{folder_ / "settings.json"};
  const std::shared_ptr<QuoteProvider> provider_ = std::make_shared<QuoteProvider>();
  const EquityPointer equity_ = [this] {
    auto equity = provider_->equityWithId("ABC");
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/New_York"));
    return equity;
  }();
};

TEST_F(FormattingTest, IndicatesMovements) {
  EXPECT_EQ(Formatting::movementIndicator(dec("0.01")).symbol, "▲");
  EXPECT_EQ(Formatting::movementIndicator(dec("-0.01")).symbol, "▼");
  EXPECT_EQ(Formatting::movementIndicator(0).symbol, "\u25FC\uFE0E");
  EXPECT_EQ(Formatting::movementIndicator(1).colour,
            Colour(Name::systemGreen).blended(0.3, Name::black));
  EXPECT_EQ(Formatting::movementIndicator(-1).colour, Colour(Name::systemRed));
  EXPECT_EQ(Formatting::movementIndicator(0).colour, Colour(Name::secondaryLabel));
}

TEST_F(FormattingTest, WritesMoneyCells) {
  const struct {
    const char* amount;
    bool emphasised;
    TextRun run;
  } cases[] = {
      {"0", false, {"—", {Name::secondaryLabel, FontWeight::regular, true}}},
      {"0", true, {"—", {Name::secondaryLabel, FontWeight::bold, true}}},
      {"-5", false, {"($5.00)", {std::nullopt, FontWeight::regular, true}}},
      {"-5", true, {"($5.00)", {Name::systemRed, FontWeight::bold, true}}},
      {"1234.5", false, {"$1,234.50", {std::nullopt, FontWeight::regular, true}}},
  };
  for (const auto& [amount, emphasised, run] : cases) {
    const auto cell =
        Formatting::moneyCell(dec(amount), Currency::usd(), emphasised, FontWeight::bold);
    EXPECT_THAT(cell.runs(), ::testing::ElementsAre(run)) << amount;
    EXPECT_EQ(cell.alignment, TextAlignment::right);
  }
}

TEST_F(FormattingTest, WritesValuationsWithSigns) {
  EXPECT_EQ(Formatting::currentValueText({Currency::usd(), 0, dec("-12.5")}), "-$12.50");
  EXPECT_EQ(Formatting::currentValueText({Currency::usd(), 0, Decimal::nan()}), "");
  EXPECT_EQ(Formatting::gainText({Currency::usd(), 10, dec("8.25")}),
            AttributedText("▼ -$1.75", {.colour = Name::systemRed}));
  EXPECT_EQ(Formatting::gainText({Currency::usd(), 10, 10}),
            AttributedText("\u25FC\uFE0E $0.00", {.colour = Name::secondaryLabel}));
  EXPECT_TRUE(Formatting::gainText({Currency::usd(), 10, Decimal::nan()}).isEmpty());
}

TEST_F(FormattingTest, WritesChangesOfPrices) {
  EXPECT_EQ(change(dec("10"), dec("10.123456")).plainText(), "+1.23% ▲ +$0.12346");
  EXPECT_EQ(change(dec("8"), dec("7")).plainText(), "-12.50% ▼ -$1.00");
  EXPECT_EQ(change(dec("8"), dec("8")).plainText(), "+0.00% \u25FC\uFE0E +$0.00");
  EXPECT_EQ(change(dec("8"), std::nullopt).plainText(), "-100.00% ▼ -$8.00");
  EXPECT_EQ(change(dec("8"), dec("9")).runs().front().style.colour,
            Formatting::movementIndicator(1).colour);
  const std::string unknown = change(std::nullopt, dec("8")).plainText();
  EXPECT_THAT(unknown, ::testing::EndsWith(".00% ▲ +$8.00"));
  EXPECT_GT(unknown.size(), 120U) << "the percentage is large";
  EXPECT_TRUE(change(0, dec("8")).isEmpty());
}

TEST_F(FormattingTest, SpreadsHues) {
  const auto colour = [](double hue) { return Colour::fromHue(hue, 1, 0.5).resolved({}); };
  const auto colours = Formatting::hueRangeColours(3, 0.75, 0.25, 0.5);
  ASSERT_EQ(colours.size(), 3U);
  EXPECT_EQ(colours[0].resolved({}), colour(0.75));
  EXPECT_EQ(colours[1].resolved({}), colour(1));
  EXPECT_EQ(colours[2].resolved({}), colour(0.25));
  EXPECT_EQ(Formatting::hueRangeColours(1, 0.25, 0.75, 0.5)[0].resolved({}), colour(0.25));
  EXPECT_TRUE(Formatting::hueRangeColours(0, 0, 1, 1).empty());
}

TEST_F(FormattingTest, WritesDateRangesInTheTimeOfTheExchange) {
  EXPECT_EQ(rangeText(at(3, 0, 0), at(4, 0, 0)), "May 3, 2021");
  EXPECT_EQ(rangeText(at(3, 0, 0), at(5, 0, 0)), "May 3, 2021 → May 4, 2021");
  EXPECT_EQ(rangeText(at(3, 9, 30), at(3, 16, 0)), "May 3, 2021, 9:30\u202FAM → 4:00\u202FPM EDT");
  // The day on which clocks go forward is a whole day of 23 hours.
  EXPECT_EQ(rangeText(at(3, 0, 0) - 50 * 86400, at(4, 0, 0) - 50 * 86400),
            "March 13, 2021 → March 14, 2021");
  const Quote bar{at(3, 0, 0), at(4, 0, 0), {}, {}, {}, {}, {}};
  EXPECT_EQ(Formatting::quoteDateRangeText(bar, *equity_, defaults_), "May 3, 2021");
}

TEST_F(FormattingTest, WritesRangesShorterWhereThereIsLittleRoom) {
  const auto brief = [this](Date from, Date to) {
    return Formatting::briefDateRangeText({from, to}, *equity_, defaults_);
  };
  EXPECT_EQ(brief(at(3, 0, 0), at(8, 0, 0)), "May 3, 2021 → May 7, 2021");
  EXPECT_EQ(brief(at(3, 0, 0), at(4, 0, 0)), "May 3, 2021");
  EXPECT_EQ(brief(at(3, 9, 30), at(3, 16, 0)), "5/3/21, 9:30\u202FAM → 4:00\u202FPM");
}

TEST_F(FormattingTest, WritesDatesInLocalTimeWhereTheUserPrefersIt) {
  EXPECT_EQ(Formatting::equityDateFormatter(*equity_, defaults_).string(at(3, 9, 30)),
            "May 3, 2021 at 9:30:00\u202FAM EDT");
  defaults_.set("preferLocalTimeZone", true);
  EXPECT_EQ(Formatting::equityDateFormatter(*equity_, defaults_).timeZone, TimeZone::current());
}

TEST_F(FormattingTest, NotesAdjustedPrices) {
  using enum QuoteQuery::PriceAdjustment;
  const auto event = [&](int day, EquityEvent::Kind kind) {
    return EquityEvent{at(day, 0, 0), kind, marketNominal};
  };
  const std::vector<EquityEvent> events = {event(5, EquityEvent::Split{{2, 1}}),
                                           event(9, EquityEvent::Dividend{1})};
  const auto note = [&](PriceAdjustment adjustment, int firstDay) {
    const Quote quote{at(firstDay, 0, 0), at(firstDay + 1, 0, 0), {}, {}, {}, {}, {}};
    return Formatting::priceAdjustmentNote(adjustment, {&quote, 1}, events);
  };
  EXPECT_EQ(note(adjustedForSplits, 4), "Prices adjusted for splits.");
  EXPECT_EQ(note(adjustedForSplits, 5), std::nullopt);
  EXPECT_EQ(note(adjustedForSplitsAndDividends, 8), "Prices adjusted for splits & dividends.");
  EXPECT_EQ(note(adjustedForSplitsAndDividends, 9), std::nullopt);
  EXPECT_EQ(note(marketNominal, 1), std::nullopt);
  EXPECT_EQ(note(marketNominalSnapshot, 1), std::nullopt);
  EXPECT_EQ(Formatting::priceAdjustmentNote(adjustedForSplits, {}, events), std::nullopt);
  EXPECT_EQ(Formatting::priceAdjustmentNote(adjustedForSplits, {}, {}), std::nullopt);
}

}  // namespace
}  // namespace corvane
