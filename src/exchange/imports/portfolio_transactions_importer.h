// Reads the transactions of brokers' and banks' statements into a portfolio.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/money/decimal_number_formatter.h"
#include "exchange/brokers/configured_broker.h"
#include "exchange/brokers/import_export_broker.h"
#include "exchange/brokers/import_export_configuration.h"
#include "exchange/imports/import_review.h"
#include "exchange/imports/strict_import.h"
#include "exchange/imports/transactions_import_error.h"
#include "exchange/imports/transactions_schema.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/system/user_defaults.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane {

class PortfolioTransactionsImporterAccessoryViewController;

/// What a transactions import is set up with.
struct TransactionsImportConfiguration
    : ImportExportConfigurationValue<TransactionsImportConfiguration> {
  /// Whether dates are read by dateFormatString; otherwise their order is worked out from the file.
  bool useDateFormatString = false;
  std::string dateFormatString = "YYYY-MM-dd";
  /// The currency of rows that name none.
  std::optional<std::string> defaultCurrencyCode;

  /// The portfolio that this is for: a currency chosen for one is never that of another's rows.
  std::string portfolioKey;
  std::string portfolioCurrencyCode;

  [[nodiscard]] bool hasSameSettings(const TransactionsImportConfiguration& other) const {
    return useDateFormatString == other.useDateFormatString &&
           dateFormatString == other.dateFormatString &&
           defaultCurrencyCode == other.defaultCurrencyCode;
  }
  [[nodiscard]] JSONValue json() const;
  /// A missing currency is that of `defaults`, and so is one that was chosen for another portfolio
  /// than theirs. Throws JSONError where anything else is missing.
  [[nodiscard]] static TransactionsImportConfiguration fromJSON(
      const JSONValue& value, const TransactionsImportConfiguration& defaults);
};

/// Understands rows of delimited text and records them, all in one step after the last row.
///
/// One importer serves one import. Made on the main queue, where it asks the portfolio for its
/// rows, so that a stored one reads them there. The quote provider is asked for equities on the
/// main queue, to which the job hops once for each symbol; the main queue must be pumped meanwhile.
class PortfolioTransactionsImporter final
    : public ConfiguredBroker<ImportBroker, TransactionsImportConfiguration> {
 public:
  using Configuration = TransactionsImportConfiguration;
  using ImportError = TransactionsImportError;
  using SchemaField = TransactionsSchemaField;
  static constexpr std::string_view userDefaultsKey = "portfolioTransactionsImportConfiguration";

  /// `defaults` may be null; otherwise it outlives the importer.
  [[nodiscard]] static std::shared_ptr<PortfolioTransactionsImporter> make(
      PortfolioPointer portfolio, UserDefaults* defaults);

  [[nodiscard]] const PortfolioPointer& portfolio() const { return portfolio_; }

  /// The rows understood so far, in the order of the file. After an import, those recorded.
  [[nodiscard]] const std::vector<BasicTransaction>& transactionsToRecord() const {
    return transactionsToRecord_;
  }

  /// Asked, off the main queue, where the rules would record something else than the cells mean by
  /// themselves, and where they refuse a file that can be understood. None unless a shell sets it:
  /// then only the rules count.
  ReviewHandler reviewHandler;
  /// What the user has said beforehand for the reading of the cells by themselves.
  StrictImportOptions strictOptions;
  /// Whether that reading is taken without a question.
  bool prefersFileReading = false;

  /// How the cells of date columns are read at the moment.
  [[nodiscard]] const DateFormatter& dateFormatter() const { return dateFormatter_; }

  [[nodiscard]] std::vector<std::string> allFields() const override;
  [[nodiscard]] std::string fieldTitle(std::string_view field) const override;
  [[nodiscard]] std::shared_ptr<AccessoryConfigurationViewController>
  accessoryConfigurationViewController() override;

  [[nodiscard]] std::vector<std::string> preflightFields() const override;
  void preflight(const ColumnsByField& columnsByField) override;
  void willImport(std::size_t rowCount) override { transactionsToRecord_.reserve(rowCount); }
  /// Throws TransactionsImportError.
  void importRow(const ValuesByField& valuesByField) override;
  [[nodiscard]] bool canReview() const override {
    return reviewHandler != nullptr || prefersFileReading;
  }
  [[nodiscard]] bool canRememberLayout() const override { return true; }
  /// Writes the layout into the user's folder. What was said of days, decimals and the currency of
  /// rows that name none goes into it. Throws ProfileError where no column holds days, and
  /// FileError.
  std::filesystem::path rememberLayout(const std::string& name,
                                       const std::vector<std::string>& heading) override;
  /// Throws UserCancelledError where the user wants neither reading, StatementError where he wants
  /// the cells' own and they have none, and otherwise the refusal.
  void review(const ImportedCells& cells, const Error* refusal) override;
  /// Throws UserCancelledError, and ImportExportError::BrokerImportError with the line that the
  /// ledger or its store has refused; the last one where no line is at fault more than the others.
  void finishImport(const Progress& progress) override;

 private:
  PortfolioTransactionsImporter(PortfolioPointer portfolio, UserDefaults* defaults);

  void applyConfiguration() override;
  void updateAccessory() override;

  [[nodiscard]] StrictImport fileReading(const ImportedCells& cells);
  void reviewDifferences(const ImportedCells& cells);
  void offerForRefusal(const ImportedCells& cells, const Error& refusal);
  void take(const StrictImport& reading);
  [[nodiscard]] Calendar calendar() const;
  void record(PortfolioManager& manager, const Progress& progress);
  /// Whether the user takes another order or reading of the rows than the one that was refused.
  [[nodiscard]] bool takesOtherReading(const Error& refusal);

  [[nodiscard]] std::optional<Date> dateIn(const ValuesByField& values, std::string_view field);
  [[nodiscard]] EquityPointer equityFor(std::string_view symbol);

  const PortfolioPointer portfolio_;
  std::shared_ptr<PortfolioTransactionsImporterAccessoryViewController> accessory_;
  DecimalNumberFormatter numberFormatter_;
  DateFormatter dateFormatter_;
  std::vector<BasicTransaction> transactionsToRecord_;
  /// The line of each of them, from 1; empty where one stands on each line below the header.
  std::vector<std::uint32_t> lines_;
  /// The reading of the cells by themselves, as long as it may still be wanted.
  std::optional<StrictImport> fileReading_;

  /// The equities of the file so far, which the job must not ask for itself.
  std::unordered_map<std::string, EquityPointer> equities_;
  /// The date read last, by field: statements hold many rows of one day.
  struct ReadDate {
    std::string text;
    std::optional<Date> date;
  };
  std::unordered_map<std::string, ReadDate> lastDates_;
  NoteReader notes_;
};

}  // namespace corvane
