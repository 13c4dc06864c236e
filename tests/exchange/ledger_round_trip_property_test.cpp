// Random ledgers on stored portfolios: what is exported to a file and imported from it elsewhere is
// exported again byte for byte, and the copy's file holds it.
//
// CORVANE_TEST_CASES sets the number of ledgers, CORVANE_TEST_SEED the first seed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "exchange/export_world.h"
#include "exchange/exported_columns.h"
#include "exchange/exports/export_controller.h"
#include "exchange/exports/portfolio_transactions_exporter.h"
#include "exchange/imports/import_controller.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "exchange/scripted_window.h"
#include "random_cases.h"
#include "storage/database/stored_portfolio_manager.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

constexpr std::array locales = {"en_US.UTF-8", "fr_CA.UTF-8", "de_CH.UTF-8", "en_GB.UTF-8"};

class RoundTrip {
 public:
  explicit RoundTrip(std::mt19937_64& random)
      : random_(random), locale_(locales[random() % locales.size()]) {
    for (const auto& [code, currency] : Currency::byCode()) {
      known_.push_back(currency);
    }
    primary_ = pick(known_);
    currencies_ = {primary_, pick(known_), pick(known_), pick(known_)};
    for (const char* symbol : {"ABC", "BRK.B", "^GSPTSE", "7203.T", "X-U_N"}) {
      equities_.push_back(provider_->equityWithId(symbol));
      equities_.back()->currency = pick(currencies_);
    }
    original_ = portfolioIn("original.sqlite3");
    original_->allowsNegativeBalances = below(3) > 0;
    original_->usesCashAccounts = below(4) > 0;
    portfolioManager(original_)->portfolioPropertiesDidChange(original_);
  }

  /// Records what the ledger takes.
  void fill(int count) {
    record(BasicTransaction::CashAdjustment{{primary_, 1}});
    if (original_->usesCashAccounts && !original_->allowsNegativeBalances) {
      for (const Currency& currency : currencies_) {
        record(BasicTransaction::Transfer{{currency, 50'000'000}});
      }
    }
    for (int i = 0; i < count; ++i) {
      record(kind());
      date_ = date_ + 86400.0 * static_cast<double>(below(3) * below(20));
    }
  }

  void check() {
    const std::function<void(PortfolioExportConfiguration&)> change =
        [this, isIso = below(2) == 0, accounting = below(2) == 0, thousands = below(2) == 0,
         symbol = below(2) == 0, tabs = below(2) == 0](PortfolioExportConfiguration& settings) {
          isIso_ = isIso;
          settings.useDateFormatString = isIso;
          settings.negativeNumbersAccountingStyle = accounting;
          settings.includeThousandsSeparator = thousands;
          settings.includeCurrencySymbol = symbol;
          settings.fieldDelimiter =
              tabs ? ImportExportFieldDelimiter::tab : ImportExportFieldDelimiter::comma;
        };
    const std::string first = exported(original_, change);
    PortfolioPointer copy = portfolioIn("copy.sqlite3");
    copy->allowsNegativeBalances = original_->allowsNegativeBalances;
    copy->usesCashAccounts = original_->usesCashAccounts;
    portfolioManager(copy)->portfolioPropertiesDidChange(copy);
    import(copy);
    EXPECT_EQ(exported(copy, change), first);

    // What stands in the file is the same once more.
    copy.reset();
    managers_.pop_back();
    managers_.push_back(StoredPortfolioManager::open(provider_, folder_ / "copy.sqlite3"));
    copy = managers_.back()->portfolios().front();
    EXPECT_NO_THROW(managers_.back()->verify(copy));
    EXPECT_EQ(exported(copy, change), first);
  }

 private:
  std::uint64_t below(std::uint64_t n) { return random_() % n; }
  template <typename Value>
  const Value& pick(const std::vector<Value>& values) {
    return values[below(values.size())];
  }

  PortfolioPointer portfolioIn(const char* file) {
    managers_.push_back(StoredPortfolioManager::open(provider_, folder_ / file));
    return managers_.back()->createPortfolio(primary_);
  }
  static std::shared_ptr<PortfolioManager> portfolioManager(const PortfolioPointer& portfolio) {
    return portfolio->manager.lock();
  }

  Decimal money(const Currency& currency) {
    const auto units = static_cast<long>(below(below(4) == 0 ? 100 : 2'000'000));
    return Decimal::fromParts(Sign::plus, -currency.minorUnits, units);
  }
  Decimal shares() {
    return Decimal::fromParts(Sign::plus, below(4) == 0 ? -static_cast<int>(below(7)) : 0,
                              static_cast<long>(below(1000)));
  }

  BasicTransaction::Kind kind() {
    const EquityPointer& equity = pick(equities_);
    const Currency& currency = pick(currencies_);
    const CurrencyAmount cash{currency, money(currency)};
    const Decimal equivalent = currency == primary_ ? cash.amount : money(primary_);
    const Decimal held = portfolioManager(original_)
                             ->snapshotBefore(original_->transactions().size(), original_)
                             .equitySnapshots.get(equity)
                             .sharesHeld;
    switch (below(9)) {
      case 0:
        return BasicTransaction::Transfer{{currency, below(2) == 0 ? cash.amount : -cash.amount}};
      case 1:
        return BasicTransaction::CashAdjustment{
            {currency, below(2) == 0 ? cash.amount : -cash.amount}};
      case 2:
        return BasicTransaction::Split{equity, held, shares()};
      case 3:
        return BasicTransaction::JournaledShares{equity, shares(), money(primary_)};
      case 4:
        return BasicTransaction::JournaledShares{equity, -shares(), std::nullopt};
      case 5:
      case 6: {
        // Now and then a correction.
        const bool isNegative = below(8) == 0;
        return BasicTransaction::Yield{static_cast<BasicTransaction::YieldType>(below(4)),
                                       equity,
                                       std::nullopt,
                                       {currency, isNegative ? -cash.amount : cash.amount},
                                       isNegative ? -equivalent : equivalent};
      }
      case 7: {
        // Now and then a sale that costs money.
        const bool isPaidFor = below(8) == 0;
        return BasicTransaction::Trade{equity,
                                       {currency, isPaidFor ? cash.amount : -cash.amount},
                                       isPaidFor ? equivalent : -equivalent,
                                       -shares()};
      }
      default:
        return BasicTransaction::Trade{equity, cash, equivalent, shares()};
    }
  }

  std::optional<std::string> note() {
    switch (below(5)) {
      case 0:
        return "two\r\nlines, \"quoted\"; and more";
      case 1:
        return " Mises à jour – 東京 \t";
      case 2:
        return "-12.50";
      default:
        return std::nullopt;
    }
  }

  void record(BasicTransaction::Kind kind) {
    const Date settlement = date_ + 86400.0 * static_cast<double>(below(3));
    try {
      portfolioManager(original_)->recordTransactions(
          {{std::move(kind), date_, settlement, note()}}, original_, nullptr);
    } catch (const PortfolioManagerError&) {
      // The next one may be taken.
    }
  }

  template <typename Change>
  std::string exported(const PortfolioPointer& portfolio, const Change& change) {
    const auto exporter =
        PortfolioTransactionsExporter::make(*portfolio, portfolio->transactions(), nullptr);
    exporter->changeSettings(change);
    window_->file = folder_ / "ledger.csv";
    const auto controller = ExportController::make(exporter);
    EXPECT_TRUE(completes([&](auto completion) {
      controller->beginExport(window_, std::move(completion));
    })) << ::testing::PrintToString(window_->takeHeard());
    return readText(folder_ / "ledger.csv");
  }

  void import(const PortfolioPointer& portfolio) {
    const auto importer = PortfolioTransactionsImporter::make(portfolio, nullptr);
    importer->reviewHandler = [](const ReadingQuestion& question) {
      ADD_FAILURE() << question.problem;
      return ReadingAnswer::cancel;
    };
    importer->changeSettings([this](auto& settings) {
      settings.useDateFormatString = isIso_;
      settings.fieldOrder = importedColumns;
    });
    const auto controller = ImportController::make(importer);
    EXPECT_TRUE(completes([&](auto completion) {
      controller->beginImport(window_, std::move(completion));
    })) << ::testing::PrintToString(window_->takeHeard());
  }

  std::mt19937_64& random_;
  const InLocale locale_;
  TemporaryFolder folder_;
  std::shared_ptr<ScriptedWindow> window_ = std::make_shared<ScriptedWindow>();
  std::shared_ptr<QuoteProvider> provider_ = std::make_shared<QuoteProvider>();
  std::vector<std::shared_ptr<StoredPortfolioManager>> managers_;
  std::vector<Currency> known_;
  Currency primary_ = Currency::cad();
  std::vector<Currency> currencies_;
  std::vector<EquityPointer> equities_;
  PortfolioPointer original_;
  Date date_ = localDay(1, 2);
  bool isIso_ = false;
};

TEST(RandomLedgersInFiles, AreTheSameAfterExportAndImport) {
  forRandomCases(25, [](std::mt19937_64& random) {
    RoundTrip trip(random);
    trip.fill(1 + static_cast<int>(random() % 60));
    trip.check();
  });
}

}  // namespace
}  // namespace corvane::testing
