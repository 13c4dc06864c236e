// A ledger that is exported, imported elsewhere, and exported again: the second file is the first.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/export_world.h"
#include "exchange/exported_columns.h"
#include "exchange/exports/export_controller.h"
#include "exchange/exports/portfolio_transactions_exporter.h"
#include "exchange/imports/import_controller.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "exchange/scripted_window.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

class ExporterRoundTrip : public ::testing::TestWithParam<const char*>, protected ExportWorld {
 protected:
  const InLocale locale{GetParam()};
  TemporaryFolder folder;
  UserDefaults defaults{folder / "settings.json"};
  std::shared_ptr<ScriptedWindow> window = std::make_shared<ScriptedWindow>();

  /// Exports what `target` holds, with such settings, and gives the text of the file.
  template <typename Change>
  std::string exported(const PortfolioPointer& target, Change change) {
    const auto exporter =
        PortfolioTransactionsExporter::make(*target, target->transactions(), nullptr);
    exporter->changeSettings([&](auto& settings) {
      settings.useDateFormatString = true;
      change(settings);
    });
    window->file = folder / "ledger.csv";
    const auto controller = ExportController::make(exporter);
    EXPECT_TRUE(completes(
        [&](auto completion) { controller->beginExport(window, std::move(completion)); }));
    return readText(folder / "ledger.csv");
  }

  /// Imports that file into an empty portfolio.
  PortfolioPointer imported() {
    const auto target = manager->createPortfolio(Currency::cad());
    const auto importer = PortfolioTransactionsImporter::make(target, &defaults);
    importer->changeSettings([](auto& settings) {
      settings.useDateFormatString = true;
      settings.fieldOrder = importedColumns;
    });
    const auto controller = ImportController::make(importer);
    EXPECT_TRUE(completes([&](auto completion) {
      controller->beginImport(window, std::move(completion));
    })) << ::testing::PrintToString(window->heard);
    return target;
  }

  /// Exports all kinds of rows in several ways, and imports each file.
  void expectTheSameFile() {
    record(everyKind());
    const auto changes = {
        +[](PortfolioExportConfiguration&) {},
        +[](PortfolioExportConfiguration& settings) {
          settings.negativeNumbersAccountingStyle = false;
          settings.fieldDelimiter = ImportExportFieldDelimiter::tab;
        },
        +[](PortfolioExportConfiguration& settings) {
          settings.includeCurrencySymbol = false;
          settings.includeThousandsSeparator = false;
        },
    };
    for (const auto change : changes) {
      const std::string first = exported(portfolio, change);
      EXPECT_EQ(std::ranges::count(first, '\n'), 1 + 20 + 1) << "a note has a line break";
      const auto copy = imported();
      EXPECT_EQ(copy->transactions().size(), rows().size());
      EXPECT_EQ(exported(copy, change), first);
    }
  }
};

TEST_P(ExporterRoundTrip, GivesTheSameFile) {
  expectTheSameFile();
}

class ExporterRoundTripInOtherDigits : public ExporterRoundTrip {};

TEST_P(ExporterRoundTripInOtherDigits, GivesTheSameFile) {
  expectTheSameFile();
}

TEST_P(ExporterRoundTrip, GivesTheSameFileInTheShortDatesOfTheLocale) {
  record(everyKind());
  // With days up to 20 March, and with the first few alone, which might be months as well.
  for (const std::size_t count : {std::size_t{20}, std::size_t{7}}) {
    const auto first = rows().begin();
    const auto exporter = PortfolioTransactionsExporter::make(
        *portfolio, {first, first + static_cast<std::ptrdiff_t>(count)}, nullptr);
    window->file = folder / "first.csv";
    const auto controller = ExportController::make(exporter);
    ASSERT_TRUE(completes(
        [&](auto completion) { controller->beginExport(window, std::move(completion)); }));

    const auto target = manager->createPortfolio(Currency::cad());
    const auto importer = PortfolioTransactionsImporter::make(target, &defaults);
    importer->reviewHandler = [](const ReadingQuestion& question) {
      ADD_FAILURE() << question.problem;
      return ReadingAnswer::cancel;
    };
    importer->changeSettings([](auto& settings) {
      settings.useDateFormatString = false;
      settings.fieldOrder = importedColumns;
    });
    const auto importing = ImportController::make(importer);
    ASSERT_TRUE(completes([&](auto completion) {
      importing->beginImport(window, std::move(completion));
    })) << ::testing::PrintToString(window->heard);

    const auto again =
        PortfolioTransactionsExporter::make(*target, target->transactions(), nullptr);
    window->file = folder / "second.csv";
    const auto exporting = ExportController::make(again);
    ASSERT_TRUE(
        completes([&](auto completion) { exporting->beginExport(window, std::move(completion)); }));
    EXPECT_EQ(readText(folder / "second.csv"), readText(folder / "first.csv"));
  }
}

INSTANTIATE_TEST_SUITE_P(Locales, ExporterRoundTrip,
                         ::testing::Values("en_US.UTF-8", "fr_CA.UTF-8", "de_CH.UTF-8",
                                           "en_GB.UTF-8"),
                         [](const auto& locale) { return std::string(locale.param, 5); });

INSTANTIATE_TEST_SUITE_P(Locales, ExporterRoundTripInOtherDigits,
                         ::testing::Values("ar_EG.UTF-8", "fa_IR.UTF-8"),
                         [](const auto& locale) { return std::string(locale.param, 5); });

}  // namespace
}  // namespace corvane::testing
