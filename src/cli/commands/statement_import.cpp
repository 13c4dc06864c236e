#include "cli/commands/statement_import.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "cli/console/date_text.h"
#include "cli/console/listing.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "cli/console/progress_bar.h"
#include "cli/console/workspace_file.h"
#include "exchange/profiles/profile_shelf.h"
#include "exchange/statements/statement_memory.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/statements/statement_rates.h"
#include "exchange/statements/symbol_search.h"
#include "exchange/strict/cell_text.h"
#include "platform/overloaded.h"
#include "platform/system/file_manager.h"
#include "platform/system/terminal.h"

namespace corvane::cli {
namespace {

std::vector<std::string_view> splitText(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.push_back(trimmedCell(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

void readSymbols(const CommandLine& line, StatementOptions& options) {
  const std::string given = line.value("--symbol").value_or("");
  for (const std::string_view entry : splitText(given, '\n')) {
    const std::size_t sign = entry.rfind('=');
    if (sign == entry.npos || sign == 0 || sign + 1 == entry.size()) {
      throw UsageError("“" + std::string(entry) +
                       "” does not name a symbol, as in --symbol \"IE00BK5BQT80=VWCE.DE\".");
    }
    // Not every symbol ends without a sign: "EURUSD=X".
    const std::size_t first = entry.ends_with("=X") ? entry.find('=') : sign;
    options.symbols.insert_or_assign(foldedText(entry.substr(0, first)),
                                     std::string(trimmedCell(entry.substr(first + 1))));
  }
}

void readKinds(const CommandLine& line, StatementOptions& options) {
  const std::string given = line.value("--kind").value_or("");
  for (const std::string_view entry : splitText(given, '\n')) {
    const std::size_t sign = entry.rfind('=');
    const auto kind = sign == entry.npos
                          ? std::nullopt
                          : statementKindWithRawValue(trimmedCell(entry.substr(sign + 1)));
    if (!kind || sign == 0) {
      throw UsageError("“" + std::string(entry) +
                       "” does not tell what a word means, as in --kind \"Uttag=withdrawal\".");
    }
    options.kinds.insert_or_assign(std::string(trimmedCell(entry.substr(0, sign))), *kind);
  }
}

StatementOptions optionsIn(const CommandLine& line) {
  StatementOptions options;
  options.profile = line.value("--profile");
  if (const auto days = line.value("--days")) {
    options.days = dayOrderWithRawValue(*days);
    if (!options.days) {
      throw UsageError("“" + *days + "” is none of dmy, mdy and ymd.");
    }
  }
  if (const auto mark = line.value("--decimal")) {
    if (*mark != "." && *mark != ",") {
      throw UsageError("“" + *mark + "” is neither a point nor a comma.");
    }
    options.decimal = *mark == "." ? DecimalMark::point : DecimalMark::comma;
  }
  if (const auto code = line.value("--currency")) {
    options.currencyCode = std::string(currencyNamed(*code).code);
  }
  const std::string lines = line.value("--leave-out").value_or("");
  for (const std::string_view number : splitText(lines, ',')) {
    const auto value = wholeNumber(number);
    if (!value || !std::in_range<std::uint32_t>(*value)) {
      throw UsageError("“" + std::string(number) + "” is not the number of a line.");
    }
    options.leaveOut.insert(static_cast<std::uint32_t>(*value));
  }
  readSymbols(line, options);
  readKinds(line, options);
  const std::string accounts = line.value("--account").value_or("");
  for (const std::string_view account : splitText(accounts, '\n')) {
    options.accounts.emplace(account);
  }
  if (const auto twins = line.value("--twins")) {
    if (*twins != "record") {
      throw UsageError("“" + *twins + "” is not what becomes of twins: record.");
    }
    options.recordsTwins = true;
  }
  return options;
}

std::string reasonOf(const StatementRow& row) {
  return row.reason + (row.remedy.empty() ? "" : " " + row.remedy);
}

std::string messageOf(const StatementRow& row) {
  return "Line " + std::to_string(row.line) + (row.reason.starts_with("column “") ? ", " : ": ") +
         reasonOf(row);
}

/// Shares and amount of a row as they would be recorded.
std::pair<std::string, std::string> figuresOf(const StatementRow& row, std::string& currency) {
  if (row.transactions.empty()) {
    return {};
  }
  const auto money = [&](const CurrencyAmount& amount) {
    currency = std::string(amount.currency.code);
    return amount.amount.description();
  };
  using Texts = std::pair<std::string, std::string>;
  return std::visit(
      Overloaded{
          [&](const BasicTransaction::Trade& trade) {
            return Texts{trade.sharesAdded.description(),
                         money({trade.cashDisposed.currency, -trade.cashDisposed.amount})};
          },
          [&](const BasicTransaction::Split& split) {
            return Texts{split.priorShares.description() + "→" + split.netShares.description(), ""};
          },
          [&](const BasicTransaction::JournaledShares& journaled) {
            return Texts{journaled.sharesAdded.description(), ""};
          },
          [&](const BasicTransaction::Yield& yield) {
            return Texts{"", money(yield.netAmount)};
          },
          [&](const auto& cash) {
            return Texts{"", money(cash.amount)};
          }},
      row.transactions.front().kind);
}

/// How the preview is written; nothing else is, as data.
ListingFormat previewFormat(const CommandLine& line) {
  const ListingFormat format = listingFormat(line);
  if (format != ListingFormat::table && !line.has("--preview")) {
    throw UsageError("--csv and --json go with --preview.");
  }
  return format;
}

void writeHeading(const StatementPreview& preview, const Console& console) {
  console.out << "“" << preview.profileName << "”, " << preview.encodingName << ".\n";
  for (const std::string& remark : preview.reading.remarks) {
    console.out << remark << '\n';
  }
}

void writePreview(const StatementPreview& preview, const Calendar& calendar, ListingFormat format,
                  const Console& console) {
  if (format == ListingFormat::table) {
    writeHeading(preview, console);
  }
  const Listing lines(statementPreviewFields());
  const std::vector<std::uint32_t> order = preview.reading.rows.byLine();
  lines.write(format, console.out, order.size(), [&](std::size_t place) {
    const StatementRow row = preview.reading.rows[order[place]];
    std::string currency;
    const auto [shares, amount] = figuresOf(row, currency);
    return std::vector<std::string>{
        std::to_string(row.line),
        std::string(displayName(row.verdict)),
        row.transactions.empty() ? "" : dateText(row.transactions.front().tradeDate, calendar),
        row.kind,
        row.symbol,
        shares,
        amount,
        currency,
        row.rate,
        reasonOf(row)};
  });
}

[[noreturn]] void failOf(const StatementPreview& preview, const Console& console) {
  constexpr std::size_t mostTold = 3;
  std::size_t count = 0;
  const StatementRows& rows = preview.reading.rows;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const RowVerdict verdict = rows.verdict(row);
    if (verdict == RowVerdict::asks || verdict == RowVerdict::refused ||
        verdict == RowVerdict::ledgerRefuses) {
      if (count < mostTold) {
        console.warn(messageOf(rows[row]));
      }
      ++count;
    }
  }
  if (count > mostTold) {
    console.err << "And " << count - mostTold << " more; --preview tells all.\n";
  }
  console.err << "Nothing has been imported.\n";
  throw Failed(exitCode::failure);
}

std::size_t presentCount(const StatementPreview& preview) {
  return preview.reading.rows.count(RowVerdict::present);
}

/// What the shelf holds; files of it that cannot be read are told.
ProfileShelf openShelf(const Console& console) {
  ProfileShelf shelf = ProfileShelf::standard();
  for (const ErrorPointer& problem : shelf.problems) {
    console.warn(problem->description().value_or(""));
  }
  return shelf;
}

/// Waits for what the market knows of rates and symbols.
void askMarket(const std::shared_ptr<QuoteProvider>& provider, StatementRates& rates,
               const Console& console) {
  const auto problems = std::make_shared<std::optional<std::vector<std::string>>>();
  rates.fetch(provider, [problems](std::vector<std::string> told) { *problems = std::move(told); });
  waitFor([&] { return problems->has_value(); });
  for (const std::string& problem : **problems) {
    console.warn(problem);
  }
}

/// Says with each row that asks for a symbol what the market has found.
void proposeSymbols(const std::shared_ptr<QuoteProvider>& provider, StatementPreview& preview,
                    const StatementOptions& options, Portfolio& portfolio) {
  auto questions = symbolQuestions(preview.reading.rows);
  const auto doubtful = doubtfulSymbols(preview.reading.rows, options, portfolio);
  questions.insert(questions.end(), doubtful.begin(), doubtful.end());
  const auto finds = std::make_shared<std::optional<SymbolFinds>>();
  searchSymbols(provider, questions, [finds](SymbolFinds found) { *finds = std::move(found); });
  waitFor([&] { return finds->has_value(); });
  StatementRows& rows = preview.reading.rows;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const RowQuestion* asked = rows.question(row);
    if (asked == nullptr || asked->about != RowQuestion::About::symbol) {
      continue;
    }
    const auto found = (*finds)->find(asked->subject);
    if (found == (*finds)->end()) {
      rows.setRemedy(row, std::string(rows.remedy(row)) + " The search finds nothing.");
      continue;
    }
    std::string all;
    for (const SymbolFind& find : found->second) {
      all += (all.empty() ? "" : "; ") + find.description();
    }
    rows.setRemedy(row, "Say --symbol \"" + asked->subject + "=" + found->second.front().symbol +
                            "\". Found: " + all + ".");
  }
  for (const RowQuestion& doubt : doubtful) {
    const auto found = (*finds)->find(doubt.subject);
    const auto likely =
        found == (*finds)->end() ? std::nullopt : likelySymbol(doubt, found->second);
    if (likely) {
      preview.reading.remarks.push_back("“" + doubt.subject + "” has no prices in " +
                                        doubt.currency + "; say --symbol \"" + doubt.subject + "=" +
                                        *likely + "\" if that is meant.");
    }
  }
}

/// What one run of the command works with.
struct StatementRun {
  const CommandLine& line;
  const Console& console;
  StatementOptions options;
  ProfileShelf shelf;
  std::string bytes;
  std::string filename;
};

/// Reads the statement, with rates from the file or the market that --rates names.
StatementPreview previewOf(const StatementRun& run, const PortfolioPointer& portfolio,
                           const Calendar& calendar, const std::vector<RecordedImport>& earlier,
                           const std::optional<PriceSource>& prices) {
  StatementRates rates(portfolio->primaryCurrency(), calendar);
  const auto source = run.line.value("--rates");
  if (source && *source != "market") {
    rates.readFile(files::read(*source), std::filesystem::path(*source).filename().string());
  }
  const auto read = [&] {
    ProgressBar bar(run.console.err, "Reading");
    return previewStatement(
        run.bytes, run.shelf.profiles, portfolio, run.options,
        [&](const Currency& currency, YearMonthDay day) { return rates.rate(currency, day); },
        earlier, [&](double fraction) { bar.show(fraction); });
  };
  StatementPreview preview = read();
  if (source == "market" && rates.areMissing()) {
    terminal::catchInterrupts();
    askMarket(prices->provider(), rates, run.console);
    preview = read();
  }
  if (run.line.has("--find-symbols")) {
    terminal::catchInterrupts();
    proposeSymbols(prices->provider(), preview, run.options, *portfolio);
  }
  return preview;
}

/// Keeps in the user's layout what was said of words, days and numbers.
void learn(const StatementRun& run, const StatementPreview& preview) {
  const LearnedAnswers answers = answersToLearn(preview, run.shelf, run.options);
  if (answers.isEmpty()) {
    return;
  }
  const auto file =
      learnAnswers(preview.profileId, answers, shippedProfilesFolder(), userProfilesFolder());
  run.console.out << "Kept in " << file.string() << ".\n";
}

void record(StatementRun& run, const StatementPreview& preview, WorkspaceFile& workspace,
            const PortfolioPointer& portfolio, StatementMemory& memory) {
  // The rows have what is needed of a file that may be large. (An assignment keeps the room.)
  std::string().swap(run.bytes);
  if (preview.newRowCount() == 0) {
    run.console.out << (presentCount(preview) > 0
                            ? "Nothing is new: all " + std::to_string(presentCount(preview)) +
                                  " rows of “" + run.filename + "” are in the ledger already.\n"
                            : "There is nothing in “" + run.filename + "” to record.\n");
    return;
  }
  std::size_t count = 0;
  {
    ProgressBar bar(run.console.err, "Recording");
    count =
        recordStatement(preview, portfolio, [&](double fraction) { bar.show(fraction); }).size();
  }
  memory.rememberAnswers(run.options, preview);
  memory.rememberImport(run.filename, preview, workspace.manager()->calendar);
  memory.write();
  if (!run.line.has("--dry-run")) {
    workspace.save();
    learn(run, preview);
  }
  run.console.out << "Imported " << count << " transactions.\n";
  const auto doubtful = preview.reading.rows.count(RowVerdict::perhapsPresent);
  if (doubtful > 0) {
    run.console.out << doubtful << (doubtful == 1 ? " row is" : " rows are")
                    << " perhaps there already and left out; see --preview and --twins record.\n";
  }
}

}  // namespace

std::vector<Listing::Field> statementPreviewFields() {
  using enum Listing::Kind;
  return {{"line", "Line", number},
          {"verdict", "Verdict"},
          {"day", "Day"},
          {"kind", "Kind"},
          {"symbol", "Symbol"},
          {"shares", "Shares", number},
          {"amount", "Amount", number},
          {"currency", "Currency"},
          {"rate", "Rate"},
          {"reason", "Reason"}};
}

void importStatementByLayout(const CommandLine& line, const Console& console) {
  const bool usesMarket = line.value("--rates") == "market" || line.has("--find-symbols");
  const ListingFormat format = previewFormat(line);
  StatementRun run{.line = line,
                   .console = console,
                   .options = optionsIn(line),
                   .shelf = {},
                   .bytes = {},
                   .filename = std::filesystem::path(line.word(0)).filename().string()};
  std::optional<PriceSource> prices;
  if (usesMarket) {
    prices.emplace(line);
  }
  WorkspaceFile workspace(line.required("--into"), console,
                          prices ? prices->provider() : makeOfflineProvider());
  workspace.requireSureDates(DoubtfulDatesError::noImport);
  workspace.requireSound();
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  run.bytes = files::read(line.word(0));
  if (trimmedCell(run.bytes).empty()) {
    console.warn("“" + line.word(0) + "” is empty. Nothing has been imported.");
    throw Failed(exitCode::failure);
  }
  run.shelf = openShelf(console);
  StatementMemory memory(workspace.document()->workingDirectoryURL(), *portfolio);
  if (memory.wasDamaged()) {
    console.warn(
        "What was remembered of earlier statements cannot be read any more; it was put "
        "aside.");
  }
  // What is said now goes before what was said once.
  for (const auto& [name, symbol] : memory.symbols()) {
    run.options.symbols.emplace(name, symbol);
  }
  run.options.remembered = memory.answers();

  const Calendar calendar = workspace.manager()->calendar;
  const StatementPreview preview = previewOf(run, portfolio, calendar, memory.imports(), prices);
  if (line.has("--preview")) {
    writePreview(preview, calendar, format, console);
    if (!preview.isReady()) {
      throw Failed(exitCode::failure);
    }
    return;
  }
  if (!preview.isReady()) {
    failOf(preview, console);
  }
  record(run, preview, workspace, portfolio, memory);
}

}  // namespace corvane::cli
