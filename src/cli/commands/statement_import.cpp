#include "cli/commands/statement_import.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "cli/console/date_text.h"
#include "cli/console/listing.h"
#include "cli/console/price_source.h"
#include "cli/console/workspace_file.h"
#include "core/market/price_adjuster.h"
#include "exchange/profiles/profile_shelf.h"
#include "exchange/statements/statement_memory.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/strict/cell_text.h"
#include "platform/async/dispatch_queue.h"
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
  options.currencyCode = line.value("--currency");
  if (options.currencyCode && !Currency::byCode().contains(*options.currencyCode)) {
    throw UsageError("“" + *options.currencyCode +
                     "” is not the code of a currency, such as CAD or EUR.");
  }
  const std::string lines = line.value("--leave-out").value_or("");
  for (const std::string_view number : splitText(lines, ',')) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size()) {
      throw UsageError("“" + std::string(number) + "” is not the number of a line.");
    }
    options.leaveOut.insert(value);
  }
  readSymbols(line, options);
  return options;
}

using Rate = StatementSurroundings::Rate;

/// The daily closes of the currencies that a file needs.
class MarketRates {
 public:
  /// Notes what is needed, and knows nothing yet.
  std::optional<Rate> note(const Currency& currency, YearMonthDay day) {
    const auto [entry, isNew] = needs_.try_emplace(std::string(currency.code), currency, day, day);
    auto& [unused, first, last] = entry->second;
    first = std::min(first, day);
    last = std::max(last, day);
    return std::nullopt;
  }
  [[nodiscard]] bool areNeeded() const { return !needs_.empty(); }

  void fetch(const std::shared_ptr<QuoteProvider>& provider, const Currency& primary,
             const Calendar& calendar, const Console& console) {
    for (const auto& [code, need] : needs_) {
      const auto& [currency, first, last] = need;
      const DateRange range(
          YearMonthDay::normalised(first.year, first.month, first.day - longestGap, calendar)
              .startIn(calendar),
          YearMonthDay::normalised(last.year, last.month, last.day + 1, calendar)
              .startIn(calendar));
      const auto outcome = std::make_shared<std::optional<Result<QuoteFetchResult>>>();
      provider->fetchQuotes(
          {provider->exchangeRateEquity(currency, primary), range,
           QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}},
          std::make_shared<PriceAdjuster>(provider), [outcome](Result<QuoteFetchResult> answer) {
            DispatchQueue::main()->async(
                [outcome, answer = std::move(answer)]() mutable { *outcome = std::move(answer); });
          });
      waitFor([&] { return outcome->has_value(); });
      if (!**outcome) {
        console.warn("No rates of " + code + ". " +
                     (**outcome).error()->description().value_or(""));
        continue;
      }
      if ((**outcome)->quotes) {
        for (const Quote& bar : *(**outcome)->quotes) {
          if (bar.close && *bar.close > 0) {
            // A day of currencies starts at midnight of another place: its middle tells which it
            // is.
            const Date middle = bar.fromDate + bar.toDate.timeIntervalSince(bar.fromDate) / 2;
            closes_[code].insert_or_assign(YearMonthDay::of(middle, calendar), *bar.close);
          }
        }
      }
    }
  }

  /// The close of the day, or of the last one before it within a week.
  [[nodiscard]] std::optional<Rate> rate(const Currency& currency, YearMonthDay day,
                                         const Calendar& calendar) const {
    const auto closes = closes_.find(std::string(currency.code));
    if (closes == closes_.end()) {
      return std::nullopt;
    }
    auto after = closes->second.upper_bound(day);
    const auto earliest =
        YearMonthDay::normalised(day.year, day.month, day.day - longestGap, calendar);
    if (after == closes->second.begin() || (--after)->first < earliest) {
      return std::nullopt;
    }
    return Rate{after->second, "market close of " + spelledDay(after->first)};
  }

 private:
  static constexpr int longestGap = 7;

  std::map<std::string, std::tuple<Currency, YearMonthDay, YearMonthDay>> needs_;
  std::map<std::string, std::map<YearMonthDay, Decimal>> closes_;
};

std::string messageOf(const StatementRow& row) {
  return "Line " + std::to_string(row.line) + (row.reason.starts_with("column “") ? ", " : ": ") +
         row.reason;
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
  using enum Listing::Kind;
  Listing lines({{"line", "Line", number},
                 {"verdict", "Verdict"},
                 {"day", "Day"},
                 {"kind", "Kind"},
                 {"symbol", "Symbol"},
                 {"shares", "Shares", number},
                 {"amount", "Amount", number},
                 {"currency", "Currency"},
                 {"rate", "Rate"},
                 {"reason", "Reason"}});
  std::vector<const StatementRow*> rows;
  for (const StatementRow& row : preview.reading.rows) {
    rows.push_back(&row);
  }
  std::ranges::stable_sort(rows, {}, &StatementRow::line);
  for (const StatementRow* row : rows) {
    std::string currency;
    const auto [shares, amount] = figuresOf(*row, currency);
    lines.add(
        {std::to_string(row->line), std::string(displayName(row->verdict)),
         row->transactions.empty() ? "" : dateText(row->transactions.front().tradeDate, calendar),
         row->kind, row->symbol, shares, amount, currency, row->rate, row->reason});
  }
  lines.write(format, console.out);
}

[[noreturn]] void failOf(const StatementPreview& preview, const Console& console) {
  constexpr std::size_t mostTold = 3;
  std::size_t count = 0;
  for (const StatementRow& row : preview.reading.rows) {
    if (row.verdict == RowVerdict::asks || row.verdict == RowVerdict::refused ||
        row.verdict == RowVerdict::ledgerRefuses) {
      if (count < mostTold) {
        console.warn(messageOf(row));
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
  return static_cast<std::size_t>(
      std::ranges::count(preview.reading.rows, RowVerdict::present, &StatementRow::verdict));
}

/// What the shelf holds; files of it that cannot be read are told.
ProfileShelf openShelf(const Console& console) {
  ProfileShelf shelf = ProfileShelf::standard();
  for (const ErrorPointer& problem : shelf.problems) {
    console.warn(problem->description().value_or(""));
  }
  return shelf;
}

}  // namespace

void importStatementByLayout(const CommandLine& line, const Console& console) {
  const bool usesMarket = line.has("--rates");
  if (usesMarket && line.value("--rates") != "market") {
    throw UsageError("“" + *line.value("--rates") + "” is not where rates are from: market.");
  }
  const ListingFormat format = previewFormat(line);
  StatementOptions options = optionsIn(line);
  std::optional<PriceSource> prices;
  if (usesMarket) {
    prices.emplace(line);
  }
  WorkspaceFile workspace(line.required("--into"), console,
                          prices ? prices->provider() : makeOfflineProvider());
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  const std::string bytes = files::read(line.word(0));
  const std::string filename = std::filesystem::path(line.word(0)).filename().string();
  if (trimmedCell(bytes).empty()) {
    console.warn("“" + line.word(0) + "” is empty. Nothing has been imported.");
    throw Failed(exitCode::failure);
  }
  const ProfileShelf shelf = openShelf(console);
  StatementMemory memory(workspace.document()->workingDirectoryURL(), *portfolio);
  if (memory.wasDamaged()) {
    console.warn(
        "What was remembered of earlier statements cannot be read any more; it was put "
        "aside.");
  }
  memory.rememberSymbols(options.symbols);
  options.symbols = memory.symbols();
  options.fingerprintsById = memory.fingerprintsById();

  const Calendar calendar = workspace.manager()->calendar;
  MarketRates rates;
  StatementPreview preview = previewStatement(
      bytes, shelf.profiles, portfolio, options,
      [&](const Currency& currency, YearMonthDay day) { return rates.note(currency, day); });
  if (usesMarket && rates.areNeeded()) {
    terminal::catchInterrupts();
    rates.fetch(prices->provider(), portfolio->primaryCurrency(), calendar, console);
    preview = previewStatement(bytes, shelf.profiles, portfolio, options,
                               [&](const Currency& currency, YearMonthDay day) {
                                 return rates.rate(currency, day, calendar);
                               });
  }
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
  const auto transactions = preview.transactions();
  if (transactions.empty()) {
    console.out << (presentCount(preview) > 0
                        ? "Nothing is new: all " + std::to_string(presentCount(preview)) +
                              " rows of “" + filename + "” are in the ledger already.\n"
                        : "There is nothing in “" + filename + "” to record.\n");
    return;
  }
  recordStatement(preview, portfolio);
  memory.rememberImport(filename, preview.profileName, preview.reading.rows, calendar);
  memory.write();
  if (!line.has("--dry-run")) {
    workspace.save();
  }
  console.out << "Imported " << transactions.size() << " transactions.\n";
}

}  // namespace corvane::cli
