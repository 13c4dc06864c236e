// An import from its panel to its end: files and layouts, the order of the sheets, the job with its
// progress, cancelling, and errors.

#include "exchange/imports/import_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "exchange/brokers/import_export_error.h"
#include "exchange/scripted_window.h"
#include "exchange/statement_world.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/strict/statement_error.h"
#include "storage/stored_ledger.h"

namespace corvane {
namespace {

using testing::completes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::PlainConfiguration;
using testing::ScriptedWindow;
using testing::StatementWorld;

/// Notes what it is called with, and on which queue.
class NotingBroker : public ImportBroker {
 public:
  std::vector<std::string> fields = {"a", "b", "c"};
  std::vector<std::string> preflighted;
  std::vector<std::string> calls;
  ConfigurationPointer current = std::make_shared<PlainConfiguration>();
  std::optional<std::string> refusedCell;
  std::function<void()> atRow;

  [[nodiscard]] std::vector<std::string> allFields() const override { return fields; }
  [[nodiscard]] std::string fieldTitle(std::string_view field) const override {
    return "Title of " + std::string(field);
  }
  [[nodiscard]] ConfigurationPointer configuration() const override { return current; }
  void setConfiguration(ConfigurationPointer configuration) override {
    current = std::move(configuration);
  }
  [[nodiscard]] std::vector<std::string> preflightFields() const override { return preflighted; }
  void preflight(const ColumnsByField& columns) override {
    std::string call = "preflight";
    for (const auto& [field, cells] : columns) {
      call += " " + field + ":";
      for (const std::string& cell : cells) {
        call += " " + cell;
      }
    }
    note(call);
  }
  void importRow(const ValuesByField& values) override {
    std::string call = "row";
    for (const auto& [field, cell] : values) {
      if (cell == refusedCell) {
        throw TransactionsImportError(TransactionsImportError::TypeMissing());
      }
      call += " " + field + "=" + cell;
    }
    note(call);
    if (atRow) {
      atRow();
    }
  }
  void finishImport(const Progress& progress) override {
    note("finish at " + std::to_string(progress.completedUnitCount()) + "/" +
         std::to_string(progress.totalUnitCount()));
  }

 private:
  void note(const std::string& call) {
    EXPECT_FALSE(DispatchQueue::main()->isCurrent()) << call;
    calls.push_back(call);
  }
};

class Importing : public ::testing::Test {
 protected:
  testing::TemporaryFolder folder;
  std::shared_ptr<NotingBroker> broker = std::make_shared<NotingBroker>();
  std::shared_ptr<ScriptedWindow> window = std::make_shared<ScriptedWindow>();
  std::shared_ptr<ImportController> controller;

  void setOrder(std::vector<std::string> order, bool hasHeader = true) {
    auto configuration = std::make_shared<PlainConfiguration>();
    configuration->fieldOrder = std::move(order);
    configuration->includesHeaderRow = hasHeader;
    broker->current = configuration;
  }
  bool importText(const std::string& text) {
    window->file = folder / "statement.csv";
    testing::writeText(*window->file, text);
    controller = ImportController::make(broker);
    return completes([&](auto completion) { controller->beginImport(window, completion); });
  }
  [[nodiscard]] std::vector<std::string> order() const { return broker->current->fieldOrder; }
};

TEST_F(Importing, GoesThroughPanelSetupAndJob) {
  broker->preflighted = {"b", "c"};
  setOrder({"c", "", "a"});
  EXPECT_TRUE(importText("h,h,h\r\n1,2,3\r\n4,5,6\r\n"));
  EXPECT_THAT(window->heard,
              ElementsAre("open panel Import/Import", "field setup", "end field setup",
                          "progress Importing statement.csv…", "end progress"));
  EXPECT_THAT(broker->calls,
              ElementsAre("preflight c: 1 4", "row a=3 c=1", "row a=6 c=4", "finish at 2/2"));
  EXPECT_EQ(controller->progress()->completedUnitCount(), controller->progress()->totalUnitCount());
  using enum ImportExportWindow::ContentType;
  EXPECT_THAT(window->contentTypes, ElementsAre(commaSeparatedText, tabSeparatedText, plainText));
}

TEST_F(Importing, CountsATenthForThePreflightAndATenthForTheEnd) {
  broker->preflighted = {"a"};
  setOrder({"a"});
  std::string text = "h\n";
  for (int row = 0; row < 25; ++row) {
    text += std::to_string(row) + "\n";
  }
  EXPECT_TRUE(importText(text));
  EXPECT_EQ(broker->calls.back(), "finish at 27/29");
  broker->preflighted.clear();
  EXPECT_TRUE(importText(text));
  EXPECT_EQ(broker->calls.back(), "finish at 25/27");
}

TEST_F(Importing, WritesTheDelimiterOfTheFileIntoTheConfiguration) {
  setOrder({"a", "b"});
  EXPECT_TRUE(importText("h\th\n1\t2\n"));
  EXPECT_EQ(broker->current->fieldDelimiter, ImportExportFieldDelimiter::tab);
  EXPECT_TRUE(importText("h;h\n1;2\n"));
  EXPECT_EQ(broker->current->fieldDelimiter, ImportExportFieldDelimiter::comma);
  using enum ImportExportWindow::ContentType;
  EXPECT_THAT(window->contentTypes, ElementsAre(tabSeparatedText, commaSeparatedText, plainText));
}

TEST_F(Importing, CleansAndFitsTheFieldOrder) {
  setOrder({"gone", "", "b"});
  controller = ImportController::make(broker);
  EXPECT_THAT(order(), ElementsAre("", "b"));
  setOrder({"gone"});
  controller = ImportController::make(broker);
  EXPECT_THAT(order(), ElementsAre("a", "b", "c"));

  setOrder({"c", "a", "b"});
  EXPECT_TRUE(importText("1,2\n"));
  EXPECT_THAT(order(), ElementsAre("c", "a"));
  EXPECT_TRUE(importText("1,2,3,4,5\n"));
  EXPECT_THAT(order(), ElementsAre("c", "a", "b", "", ""));
}

TEST_F(Importing, EndsQuietlyWithAnEmptyFile) {
  setOrder({"a"});
  for (const std::string text : {"", "\xEF\xBB\xBF"}) {
    EXPECT_FALSE(importText(text));
    EXPECT_THAT(window->takeHeard(), ElementsAre("open panel Import/Import"));
  }
  EXPECT_TRUE(importText("only,a,header\n"));
  EXPECT_THAT(broker->calls, ElementsAre("finish at 0/0"));
}

TEST_F(Importing, RefusesAFileItCannotReadBeforeAnySheet) {
  setOrder({"a", "b", "c"});
  EXPECT_FALSE(importText("h,h,h,h\n1,2,3,4\n1,2,3,4\n1,2,3,4\n1,2,3,4\n1,2,3,4\n1,2,3\n"));
  EXPECT_THAT(window->takeHeard(), ElementsAre("open panel Import/Import",
                                               "error Row 7 has 3 columns but 4 were expected."));
  EXPECT_FALSE(importText("a\n\"b\"x\n"));
  EXPECT_THAT(window->takeHeard().back(), "error Can't have non-quote here: x");
  EXPECT_FALSE(importText("a\n\xE9t\xE9\n"));
  EXPECT_THAT(window->takeHeard().back(), HasSubstr("UTF-8"));
  window->file = folder / "missing.csv";
  EXPECT_FALSE(completes([&](auto completion) { controller->beginImport(window, completion); }));
  EXPECT_THAT(window->takeHeard().back(), HasSubstr("missing.csv"));
  EXPECT_THAT(broker->calls, IsEmpty());
}

TEST_F(Importing, PutsTheConfigurationBackWhenTheUserThinksBetterOfIt) {
  setOrder({"c", "b", "a"});
  const ConfigurationPointer saved = broker->current;
  window->goesOn = false;
  window->setUp = [](auto& setup) {
    setup.setIncludesHeaderRow(false);
    setup.changeField(0, "a");
  };
  EXPECT_FALSE(importText("1,2\n"));
  EXPECT_EQ(*broker->current, *saved);
  EXPECT_THAT(window->takeHeard(),
              ElementsAre("open panel Import/Import", "field setup", "end field setup"));

  window->file.reset();
  EXPECT_FALSE(completes([&](auto completion) { controller->beginImport(window, completion); }));
  EXPECT_EQ(*broker->current, *saved);
  EXPECT_THAT(broker->calls, IsEmpty());
}

TEST_F(Importing, NamesTheLineOfTheFile) {
  setOrder({"a"});
  broker->refusedCell = "bad";
  EXPECT_FALSE(importText("h\nbad\n"));
  EXPECT_THAT(window->takeHeard(),
              ElementsAre("open panel Import/Import", "field setup", "end field setup",
                          "progress Importing statement.csv…", "end progress",
                          "error Problem on line 2: Transaction type is not indicated."));
  setOrder({"a"}, /*hasHeader=*/false);
  EXPECT_FALSE(importText("good\ngood\nbad\ngood\n"));
  EXPECT_EQ(window->heard.back(), "error Problem on line 3: Transaction type is not indicated.");
}

TEST_F(Importing, TellsWhatIsBehindAnError) {
  const ImportExportError error(ImportExportError::BrokerImportError{
      PortfolioManagerError(
          PortfolioManagerError::ViolatesExistingTransaction{
              testing::Ledger().record({testing::Ledger().deposit("1")}).front(),
              PortfolioManagerError(PortfolioManagerError::UnknownCurrency{7}).copy()})
          .copy(),
      3});
  EXPECT_THAT(error.description().value(), HasSubstr("Problem on line 4: This change would"));
  EXPECT_EQ(error.recoverySuggestion(), "Currency number \"7\" is not recognized.");
  const ImportExportError other{ImportExportError::InternalMisconfiguration()};
  EXPECT_EQ(other.description(), "Internal misconfiguration.");
  EXPECT_EQ(other.recoverySuggestion(), std::nullopt);
}

/// Neither kind of broker.
class StrangeBroker : public ImportOrExportBroker {
 public:
  [[nodiscard]] std::vector<std::string> allFields() const override { return {"a"}; }
  [[nodiscard]] std::string fieldTitle(std::string_view) const override { return "A"; }
  [[nodiscard]] ConfigurationPointer configuration() const override { return current_; }
  void setConfiguration(ConfigurationPointer now) override { current_ = std::move(now); }

 private:
  ConfigurationPointer current_ = std::make_shared<PlainConfiguration>();
};
struct StrangeController : ImportExportController {
  StrangeController() : ImportExportController(std::make_shared<StrangeBroker>()) {}
};

TEST_F(Importing, RefusesToSetUpABrokerOfNeitherKind) {
  const auto strange = std::make_shared<StrangeController>();
  const auto error = testing::errorOf<ImportExportError>([&] {
    strange->presentFieldSetup(window, ImportExportWindow::SheetParent::window, 1, nullptr,
                               [](bool) { FAIL(); });
  });
  EXPECT_EQ(error, ImportExportError(ImportExportError::InternalMisconfiguration()));
}

TEST_F(Importing, FollowsTheJobInItsSheetAndStopsWhenCancelled) {
  setOrder({"a"});
  // The job waits in its second row until the sheet has been seen and cancelled.
  std::atomic<bool> wasCancelled = false;
  broker->atRow = [&] {
    while (broker->calls.size() == 2 && !wasCancelled) {
      std::this_thread::yield();
    }
  };
  window->atProgress = [&](auto& sheet) {
    EXPECT_EQ(sheet.progressIndicator.minimum, 0);
    EXPECT_FALSE(sheet.progressIndicator.isIndeterminate);
    sheet.viewDidUpdate = [&] {
      if (sheet.progressIndicator.value == 1 && !wasCancelled) {
        EXPECT_EQ(sheet.progressIndicator.maximum, 3);
        sheet.cancel();
        EXPECT_TRUE(sheet.progressIndicator.isIndeterminate && sheet.progressIndicator.isAnimated);
        wasCancelled = true;
      }
    };
  };
  EXPECT_FALSE(importText("h\n1\n2\n3\n"));
  // It may have been on its way into the second row.
  EXPECT_LE(broker->calls.size(), 2U);
  EXPECT_EQ(window->heard.back(), "end progress") << "nobody is told of his own cancelling";
}

TEST_F(Importing, GoesOnWithoutItsControllerOnceTheJobRuns) {
  setOrder({"a"});
  testing::writeText(folder / "x.csv", "h\n1\n");
  window->file = folder / "x.csv";
  EXPECT_TRUE(completes(
      [&](auto completion) { ImportController::make(broker)->beginImport(window, completion); }));
  EXPECT_EQ(broker->calls.back(), "finish at 1/1");
}

/// 100,000 rows for a portfolio in a database, cancelled at some point of the way.
class CancellingALargeImport : public ::testing::Test {
 protected:
  CancellingALargeImport() {
    std::string text = "Date,Type,Symbol,Shares,Amount\n";
    for (int row = 0; row < 100'000; ++row) {
      text += "2021-" + std::to_string(row / 10'000 + 1) + "-" +
              std::to_string(row / 400 % 25 + 1) +
              (row % 2 == 0 ? ",deposit,,,10.00\n"
                            : ",buy,SYM" + std::to_string(row % 199) + ",1,9.50\n");
    }
    testing::writeText(folder / "large.csv", text);
    window->file = folder / "large.csv";
    window->setUp = [](ImportExportFieldSetupViewController& setup) {
      for (std::size_t row = 0; row < 5; ++row) {
        setup.changeField(row, "");
      }
      const std::vector<std::string> fields = {"settlementDate", "type", "symbol", "numberOfShares",
                                               "cashAmount"};
      for (std::size_t row = 0; row < 5; ++row) {
        setup.changeField(row, fields[row]);
      }
    };
  }

  testing::TemporaryFolder folder;
  testing::StoredLedger stored;
  std::shared_ptr<ScriptedWindow> window = std::make_shared<ScriptedWindow>();

  /// Cancels when the fraction done reaches `fraction`; how long the answer took, if there was one.
  std::optional<double> cancelAt(double fraction) {
    std::optional<std::chrono::steady_clock::time_point> cancelled;
    const auto importer = PortfolioTransactionsImporter::make(stored.portfolio, nullptr);
    const auto controller = ImportController::make(importer);
    window->atProgress = [&](auto& sheet) {
      sheet.viewDidUpdate = [&] {
        const auto& bar = sheet.progressIndicator;
        if (!cancelled && bar.maximum > 0 && bar.value >= fraction * bar.maximum) {
          cancelled = std::chrono::steady_clock::now();
          sheet.cancel();
        }
      };
    };
    const bool succeeded =
        completes([&](auto completion) { controller->beginImport(window, completion); });
    const auto end = std::chrono::steady_clock::now();
    if (succeeded || !cancelled) {
      return std::nullopt;
    }
    return std::chrono::duration<double>(end - *cancelled).count();
  }
};

/// Imports `rows`, which have the fields settlementDate, type, symbol, numberOfShares and
/// cashAmount, into a stored portfolio. What the user was told, and nothing is left of it.
std::string refusalOfStore(testing::StoredLedger& stored, const std::string& rows) {
  const auto before = stored.state();
  const auto window = std::make_shared<ScriptedWindow>();
  window->file = stored.folder / "rows.csv";
  testing::writeText(*window->file, "Date,Type,Symbol,Shares,Amount\n" + rows);
  const auto importer = PortfolioTransactionsImporter::make(stored.portfolio, nullptr);
  importer->changeSettings([](auto& settings) {
    settings.fieldOrder = {"settlementDate", "type", "symbol", "numberOfShares", "cashAmount"};
    settings.useDateFormatString = true;
  });
  MainLoop::drain();
  const auto controller = ImportController::make(importer);
  EXPECT_FALSE(
      completes([&](auto completion) { controller->beginImport(window, std::move(completion)); }));
  EXPECT_EQ(stored.state(), before);
  return window->heard.back();
}

TEST(RefusalsOfTheStore, NameTheLineThatIsAtFault) {
  testing::StoredLedger stored;
  const std::string deposit = "2021-03-10,Deposit,,,1\n";
  // An amount alone, and two that can be kept but whose sum can not.
  const std::string large = "2021-03-11,Deposit,,,90000000000000000.01\n";
  EXPECT_THAT(
      refusalOfStore(stored, deposit + "2021-03-11,Deposit,,,990000000000000000000.01\n" + deposit),
      ::testing::StartsWith("error Problem on line 3: "));
  EXPECT_THAT(refusalOfStore(stored, deposit + large + deposit + large + deposit),
              ::testing::StartsWith("error Problem on line 5: "));
  // A number of shares that is finer than what can be kept.
  EXPECT_THAT(refusalOfStore(stored, deposit + deposit +
                                         "2021-03-12,Buy,ABC,0.0000000000000000001,1\n" + deposit),
              ::testing::StartsWith("error Problem on line 4: "));
  // A row that was there before, whose balance the second line makes too large.
  stored.record({stored.make.on(testing::day(2021, 3, 20)).deposit("90000000000000000.01")});
  EXPECT_THAT(refusalOfStore(stored, deposit + large),
              ::testing::StartsWith("error Problem on line 3: "));
  // What has no line of its own to name names the last, as all of them were taken.
  stored.manager->database().executeScript(
      "CREATE TRIGGER full BEFORE INSERT ON cashByYear BEGIN SELECT RAISE(FAIL, 'full'); END;");
  stored.manager->database().executeScript("DELETE FROM cashByYear;");
  EXPECT_THAT(refusalOfStore(stored, deposit + deposit),
              ::testing::StartsWith("error Problem on line 3: "));
}

TEST(RefusalsOfTheStore, NameTheLineOfAStatement) {
  testing::StoredLedger stored;
  StatementPreview preview;
  StatementRows& rows = preview.reading.rows;
  for (const auto& [line, amount] : {std::pair(3U, "90000000000000000.01"),
                                     {5U, "1"},
                                     {8U, "90000000000000000.01"},
                                     {9U, "1"}}) {
    RowDraft draft;
    draft.line = line;
    draft.figures.kind = StatementKind::deposit;
    draft.figures.trade = draft.figures.settlement = {2021, 3, 10};
    draft.figures.cash = {Currency::cad(), Decimal::fromWholeString(amount).value()};
    rows.add(draft);
    rows.finish(rows.size() - 1, draft.figures, "");
  }
  const auto leaveOut = [&](std::size_t row) {
    rows.stop(row, {.verdict = RowVerdict::leftOut, .reason = "you leave it out"});
  };
  leaveOut(1);
  const auto error =
      testing::errorOf<StatementError>([&] { (void)recordStatement(preview, stored.portfolio); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->line, 8U) << *error;
  EXPECT_TRUE(stored.rows().empty());
  leaveOut(2);
  EXPECT_EQ(recordStatement(preview, stored.portfolio).size(), 2U);

  // What is no row's fault is told as it is.
  leaveOut(0);
  stored.manager->database().executeScript(
      "CREATE TRIGGER full BEFORE UPDATE ON cashByYear BEGIN SELECT RAISE(FAIL, 'full'); END;");
  EXPECT_TRUE(
      testing::errorOf<SQLiteError>([&] { (void)recordStatement(preview, stored.portfolio); }));
}

TEST(CancellingARecording, TakesItBackAlsoWhileTheRowsAreStored) {
  testing::StoredLedger stored;
  stored.record({stored.make.deposit("1")});
  const auto before = stored.state();
  std::vector<BasicTransaction> basics;
  for (int row = 0; row < 50; ++row) {
    basics.push_back(stored.make.deposit("1"));
  }
  std::vector<std::size_t> counts;
  stored.manager->recordTransactions(basics, stored.portfolio, stored.undo,
                                     [&](std::size_t count) { counts.push_back(count); });
  ASSERT_EQ(counts.size(), 100U) << "once when each row is walked, once when it is written";
  EXPECT_EQ(counts.front(), 1U);
  EXPECT_EQ(counts[75], 50U);
  stored.undo->undo();
  ASSERT_EQ(stored.state(), before);
  for (const std::size_t call : {1U, 50U, 51U, 80U, 100U}) {
    std::size_t calls = 0;
    EXPECT_THROW(stored.manager->recordTransactions(basics, stored.portfolio, stored.undo,
                                                    [&](std::size_t) {
                                                      if (++calls == call) {
                                                        throw UserCancelledError();
                                                      }
                                                    }),
                 UserCancelledError);
    EXPECT_EQ(stored.state(), before);
    stored.expectFileIsMemory();
  }
}

TEST_F(CancellingALargeImport, LeavesTheLedgerAsItWas) {
  stored.record({stored.make.deposit("1")});
  const auto before = stored.state();
  for (const double fraction : {0.0, 0.5, 0.916}) {
    const auto seconds = cancelAt(fraction);
    ASSERT_TRUE(seconds) << "the import at " << fraction << " was not cancelled";
    RecordProperty("secondsToAnswerAt" + std::to_string(static_cast<int>(100 * fraction)),
                   std::to_string(*seconds));
    EXPECT_EQ(stored.state(), before);
  }
  stored.expectFileIsMemory();
}

}  // namespace
}  // namespace corvane
