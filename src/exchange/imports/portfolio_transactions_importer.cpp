#include "exchange/imports/portfolio_transactions_importer.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/imports/date_order_recognition.h"
#include "exchange/imports/import_row.h"
#include "exchange/imports/portfolio_transactions_importer_accessory_view_controller.h"
#include "exchange/profiles/profile_shelf.h"
#include "exchange/profiles/profile_writer.h"
#include "exchange/strict/statement_error.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/async/dispatch_queue.h"
#include "storage/database/stored_portfolio.h"

namespace corvane {
namespace {

/// Keeps the main queue from looking at ledgers while this thread changes one.
class BackgroundEdit {
 public:
  explicit BackgroundEdit(PortfolioManager& manager) : manager_(manager) {
    // There, so that nobody is in the middle of looking.
    if (DispatchQueue::main()->isCurrent()) {
      manager_.beginBackgroundEdit();
    } else {
      DispatchQueue::main()->sync([this] { manager_.beginBackgroundEdit(); });
    }
  }
  BackgroundEdit(const BackgroundEdit&) = delete;
  BackgroundEdit& operator=(const BackgroundEdit&) = delete;
  ~BackgroundEdit() { manager_.endBackgroundEdit(); }

 private:
  PortfolioManager& manager_;
};

/// What stands in the first of the date cells that is not empty.
std::string textOfDate(const ImportBroker::ValuesByField& values) {
  for (const std::string_view field : {"tradeDate", "settlementDate"}) {
    const auto cell = values.find(field);
    if (cell != values.end() && !cell->second.empty()) {
      return cell->second;
    }
  }
  return "";
}

/// The order in which a format such as "dd.MM.yyyy" has the parts of a day.
std::optional<DayOrder> orderOfFormat(const std::string& format) {
  std::string order;
  for (const char letter : format) {
    const char part = letter == 'Y' ? 'y' : letter == 'M' || letter == 'L' ? 'm' : letter;
    if ((part == 'y' || part == 'm' || part == 'd') && !order.contains(part)) {
      order += part;
    }
  }
  return dayOrderWithRawValue(order);
}

TransactionsImportConfiguration initialConfiguration(const Portfolio& portfolio) {
  TransactionsImportConfiguration configuration;
  configuration.portfolioCurrencyCode = std::string(portfolio.primaryCurrency().code);
  configuration.defaultCurrencyCode = configuration.portfolioCurrencyCode;
  const auto* stored = dynamic_cast<const StoredPortfolio*>(&portfolio);
  configuration.portfolioKey =
      stored == nullptr
          ? portfolio.name
          : Decimal::fromDouble(stored->dateCreated.timeIntervalSince1970()).description();
  return configuration;
}

/// Asks the provider of `portfolio` on the main queue, which it lives on; null where the portfolio
/// has lost its manager.
EquityPointer equityOnMainQueue(const std::string& symbol, const Portfolio& portfolio) {
  EquityPointer equity;
  const auto ask = [&] {
    if (const auto manager = portfolio.manager.lock()) {
      equity = manager->quoteProvider->equityWithId(symbol);
    }
  };
  const auto& main = DispatchQueue::main();
  if (main->isCurrent()) {
    ask();
  } else {
    main->sync(ask);
  }
  return equity;
}

}  // namespace

std::shared_ptr<PortfolioTransactionsImporter> PortfolioTransactionsImporter::make(
    PortfolioPointer portfolio, UserDefaults* defaults) {
  return std::shared_ptr<PortfolioTransactionsImporter>(
      new PortfolioTransactionsImporter(std::move(portfolio), defaults));
}

PortfolioTransactionsImporter::PortfolioTransactionsImporter(PortfolioPointer portfolio,
                                                             UserDefaults* defaults)
    : ConfiguredBroker(defaults, std::string(userDefaultsKey), initialConfiguration(*portfolio)),
      portfolio_(std::move(portfolio)) {
  // Reading the rows of a stored portfolio asks the provider for their equities.
  (void)portfolio_->transactions();
  numberFormatter_.treatsEmptyStringAsZero = true;
  dateFormatter_.isLenient = true;
  if (const auto manager = portfolio_->manager.lock()) {
    dateFormatter_.timeZone = manager->calendar.timeZone();
  }
  applyConfiguration();
}

void PortfolioTransactionsImporter::applyConfiguration() {
  const Configuration current = settings();
  // The import itself tells of another delimiter, and reads dates while that arrives here.
  if (current.useDateFormatString && dateFormatter_.format != current.dateFormatString) {
    dateFormatter_.format = current.dateFormatString;
    lastDates_.clear();
  }
}

void PortfolioTransactionsImporter::updateAccessory() {
  if (accessory_ != nullptr) {
    accessory_->update(settings());
  }
}

std::vector<std::string> PortfolioTransactionsImporter::allFields() const {
  std::vector<std::string> names;
  for (const SchemaField& field : transactionsSchema) {
    names.emplace_back(field.rawValue);
  }
  return names;
}

std::string PortfolioTransactionsImporter::fieldTitle(std::string_view field) const {
  const auto* found = std::ranges::find(transactionsSchema, field, &SchemaField::rawValue);
  return found == transactionsSchema.end() ? "" : std::string(found->title);
}

std::shared_ptr<AccessoryConfigurationViewController>
PortfolioTransactionsImporter::accessoryConfigurationViewController() {
  if (accessory_ == nullptr) {
    accessory_ = std::make_shared<PortfolioTransactionsImporterAccessoryViewController>(
        std::static_pointer_cast<PortfolioTransactionsImporter>(shared_from_this()));
  }
  return accessory_;
}

std::vector<std::string> PortfolioTransactionsImporter::preflightFields() const {
  return settings().useDateFormatString ? std::vector<std::string>()
                                        : std::vector<std::string>{"tradeDate", "settlementDate"};
}

std::filesystem::path PortfolioTransactionsImporter::rememberLayout(
    const std::string& name, const std::vector<std::string>& heading) {
  const Configuration settings = this->settings();
  if (!settings.includesHeaderRow) {
    throw StatementError(0, "", "A layout is known by its headings, and this file has none.");
  }
  StatementProfile profile = learnedProfile(name, heading, settings.fieldOrder);
  profile.days = strictOptions.days;
  profile.decimal = strictOptions.decimal;
  if (settings.useDateFormatString && !profile.days) {
    profile.days = orderOfFormat(settings.dateFormatString);
  }
  auto& fields = profile.tables.front().fields;
  if (!fields.contains("currency")) {
    FieldSource constant;
    constant.constant =
        settings.defaultCurrencyCode.value_or(std::string(portfolio_->primaryCurrency().code));
    fields["currency"].push_back(std::move(constant));
  }
  return rememberProfile(profile, userProfilesFolder());
}

void PortfolioTransactionsImporter::preflight(const ColumnsByField& columnsByField) {
  DateOrderRecognition recognition;
  for (const std::string_view field : {"tradeDate", "settlementDate"}) {
    if (const auto column = columnsByField.find(field); column != columnsByField.end()) {
      for (const std::string& cell : column->second) {
        recognition.add(cell);
      }
    }
  }
  dateFormatter_.format = recognition.format();
  lastDates_.clear();
}

void PortfolioTransactionsImporter::importRow(const ValuesByField& valuesByField) {
  auto tradeDate = dateIn(valuesByField, "tradeDate");
  auto settlementDate = dateIn(valuesByField, "settlementDate");
  tradeDate = tradeDate ? tradeDate : settlementDate;
  settlementDate = settlementDate ? settlementDate : tradeDate;
  if (!tradeDate) {
    throw ImportError(ImportError::DateMissing{textOfDate(valuesByField)});
  }
  const auto current = std::static_pointer_cast<const Configuration>(configuration());
  const ImportSurroundings surroundings = {
      .primaryCurrency = portfolio_->primaryCurrency(),
      .defaultCurrencyCode = current->defaultCurrencyCode,
      .numberFormatter = numberFormatter_,
      .equityFor = [this](std::string_view symbol) { return equityFor(symbol); }};
  const ImportRow row(valuesByField, surroundings);
  BasicTransaction::Kind kind = row.kind();
  auto note = notes_.note(row.note(kind));
  transactionsToRecord_.push_back({std::move(kind), *tradeDate, *settlementDate, std::move(note)});
}

std::optional<Date> PortfolioTransactionsImporter::dateIn(const ValuesByField& values,
                                                          std::string_view field) {
  const auto cell = values.find(field);
  if (cell == values.end() || cell->second.empty()) {
    return std::nullopt;
  }
  ReadDate& last = lastDates_[std::string(field)];
  if (last.text != cell->second) {
    const std::string format = dateFormatter_.format.value_or("");
    last.text = cell->second;
    if (const auto day = plainDay(format, cell->second)) {
      last.date = day->startIn(calendar());
    } else {
      // A pattern that leaves a part of the day open would fill it in with one of its own.
      last.date = namesOneDay(format) ? dateFormatter_.date(cell->second) : std::nullopt;
    }
  }
  return last.date;
}

EquityPointer PortfolioTransactionsImporter::equityFor(std::string_view symbol) {
  const auto [entry, isNew] = equities_.try_emplace(std::string(symbol));
  if (isNew) {
    entry->second = equityOnMainQueue(entry->first, *portfolio_);
  }
  return entry->second;
}

Calendar PortfolioTransactionsImporter::calendar() const {
  // That of the rules, so that one day is one date in both readings.
  return Calendar(dateFormatter_.timeZone);
}

StrictImport PortfolioTransactionsImporter::fileReading(const ImportedCells& cells) {
  const auto current = std::static_pointer_cast<const Configuration>(configuration());
  const ImportSurroundings rows = {
      .primaryCurrency = portfolio_->primaryCurrency(),
      .defaultCurrencyCode = current->defaultCurrencyCode,
      .numberFormatter = numberFormatter_,
      .equityFor = [this](std::string_view symbol) { return equityFor(symbol); }};
  StrictImportSurroundings surroundings = {
      .rows = rows, .calendar = calendar(), .options = strictOptions};
  surroundings.options.isOwnExport = hasOwnHeadings(cells);
  if (current->useDateFormatString && !strictOptions.days) {
    surroundings.dateIn = [this](std::string_view cell) {
      return dateFormatter_.date(std::string(cell));
    };
  }
  return readStrictly(cells, surroundings);
}

void PortfolioTransactionsImporter::take(const StrictImport& reading) {
  transactionsToRecord_ = reading.rows;
  lines_ = reading.lines;
}

void PortfolioTransactionsImporter::review(const ImportedCells& cells, const Error* refusal) {
  if (prefersFileReading) {
    take(fileReading(cells));
  } else if (reviewHandler && refusal != nullptr) {
    offerForRefusal(cells, *refusal);
  } else if (refusal != nullptr) {
    refusal->raise();
  } else if (reviewHandler) {
    reviewDifferences(cells);
  }
}

void PortfolioTransactionsImporter::offerForRefusal(const ImportedCells& cells,
                                                    const Error& refusal) {
  StrictImport reading;
  try {
    reading = fileReading(cells);
  } catch (const Error&) {
    refusal.raise();
  }
  if (hasOwnHeadings(cells)) {
    take(reading);
    return;
  }
  ReadingQuestion question = {.problem = refusal.description().value_or(""),
                              .fileReading = readingLines(reading.rows, 0, calendar())};
  if (const auto suggestion = refusal.recoverySuggestion()) {
    question.problem += " " + *suggestion;
  }
  if (question.fileReading.empty()) {
    refusal.raise();
  }
  if (reviewHandler(question) != ReadingAnswer::file) {
    throw UserCancelledError();
  }
  take(reading);
}

void PortfolioTransactionsImporter::reviewDifferences(const ImportedCells& cells) {
  ReadingQuestion question;
  try {
    fileReading_ = fileReading(cells);
  } catch (const StatementError& error) {
    question.problem = error.description().value_or("");
  }
  if (fileReading_) {
    const auto difference =
        firstDifference(cells, transactionsToRecord_, *fileReading_, calendar());
    if (difference && hasOwnHeadings(cells)) {
      take(*fileReading_);
      return;
    }
    question.problem = difference.value_or("");
    if (difference) {
      question.fileReading = readingLines(fileReading_->rows, 0, calendar());
    } else {
      question.problem = firstSharedSymbol(cells, transactionsToRecord_).value_or("");
    }
  }
  if (question.problem.empty()) {
    if (fileReading_ && fileReading_->rows == transactionsToRecord_ &&
        std::ranges::is_sorted(fileReading_->orderOfTime())) {
      // Nothing else to offer, whatever the ledger says.
      fileReading_.reset();
    }
    return;
  }
  question.standardReading = readingLines(transactionsToRecord_, 0, calendar());
  switch (reviewHandler(question)) {
    case ReadingAnswer::file:
      assert(fileReading_ && "a reading that was not offered cannot be chosen");
      return take(*fileReading_);
    case ReadingAnswer::standard:
      return;
    case ReadingAnswer::cancel:
      throw UserCancelledError();
  }
}

bool PortfolioTransactionsImporter::takesOtherReading(const Error& refusal) {
  if (!reviewHandler || !fileReading_) {
    return false;
  }
  for (const StrictImport& reading : {*fileReading_, fileReading_->inOrderOfTime()}) {
    if (reading.rows == transactionsToRecord_ || !wouldBeTaken(reading.rows, *portfolio_)) {
      continue;
    }
    const ReadingQuestion question = {.problem = refusal.description().value_or(""),
                                      .fileReading = readingLines(reading.rows, 0, calendar())};
    if (reviewHandler(question) != ReadingAnswer::file) {
      throw UserCancelledError();
    }
    take(reading);
    return true;
  }
  return false;
}

void PortfolioTransactionsImporter::finishImport(const Progress& progress) {
  const auto manager = portfolio_->manager.lock();
  if (transactionsToRecord_.empty()) {
    return;
  }
  if (manager == nullptr) {
    throw PortfolioManagerError(
        PortfolioManagerError::InvalidPortfolio{"The portfolio is not open any more."});
  }
  try {
    record(*manager, progress);
  } catch (const UserCancelledError&) {
    throw;
  } catch (const Error& refusal) {
    if (!takesOtherReading(refusal)) {
      throw;
    }
    record(*manager, progress);
  }
  fileReading_.reset();
}

void PortfolioTransactionsImporter::record(PortfolioManager& manager, const Progress& progress) {
  std::size_t recordedCount = 0;
  const BackgroundEdit edit(manager);
  try {
    manager.recordTransactions(transactionsToRecord_, portfolio_, nullptr, [&](std::size_t count) {
      recordedCount = count;
      if (progress.isCancelled()) {
        throw UserCancelledError();
      }
    });
  } catch (const UserCancelledError&) {
    throw;
  } catch (const Error& error) {
    // Where no row is at fault more than the others, as with a full disk, all went in.
    const std::size_t row = std::min(recordedCount, transactionsToRecord_.size() - 1);
    const std::size_t line =
        lines_.empty() ? row + (settings().includesHeaderRow ? 1 : 0) : lines_[row] - 1;
    throw ImportExportError(
        ImportExportError::BrokerImportError{error.copy(), static_cast<int>(line)});
  }
}

}  // namespace corvane
