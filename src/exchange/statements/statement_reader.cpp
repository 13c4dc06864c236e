#include "exchange/statements/statement_reader.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <utility>

#include "core/money/currency_amount.h"
#include "exchange/statements/row_texts.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"

namespace corvane {
namespace {

using RowKind = StatementKind;

constexpr std::array<std::string_view, 11> readNumberFields = {
    "shares", "shares-after", "price",      "amount", "fee", "tax",
    "rate",   "inverse-rate", "equivalent", "cost",   "over"};

/// Why a row is not new.
struct Obstacle {
  RowVerdict verdict;
  std::string reason;
  std::string remedy = {};
  std::optional<RowQuestion> question = {};
};

void stopAt(StatementRow& row, const Obstacle& obstacle) {
  row.verdict = obstacle.verdict;
  row.reason = obstacle.reason;
  row.remedy = obstacle.remedy;
  row.question = obstacle.question;
}

/// A row on its way to a transaction.
struct Draft {
  StatementRow row;
  RowKind kind = RowKind::ignore;
  YearMonthDay trade;
  YearMonthDay settlement;
  EquityPointer equity;
  Decimal shares;
  std::optional<Decimal> sharesAfter;
  CurrencyAmount cash{Currency::noCurrency(), 0};
  Decimal tax;
  std::optional<Decimal> equivalent;
  std::optional<Decimal> rate;
  std::optional<Decimal> cost;
  std::string note;
  std::string group;
};

bool isTrade(RowKind kind) {
  return kind == RowKind::buy || kind == RowKind::sell;
}
bool isYield(RowKind kind) {
  return kind == RowKind::dividend || kind == RowKind::capitalGainsDividend ||
         kind == RowKind::reinvested || kind == RowKind::returnOfCapital;
}
bool isCash(RowKind kind) {
  return kind == RowKind::deposit || kind == RowKind::withdrawal || kind == RowKind::transfer ||
         kind == RowKind::cash || kind == RowKind::credit || kind == RowKind::expense;
}

/// "francs have (Rappen)", "CHF has": what an amount with more digits is held against.
std::string minorUnitsText(const Currency& currency) {
  constexpr std::array<std::array<std::string_view, 2>, 11> names = {{
      {"CHF", "francs have (Rappen)"},
      {"EUR", "euros have (cents)"},
      {"USD", "dollars have (cents)"},
      {"CAD", "dollars have (cents)"},
      {"AUD", "dollars have (cents)"},
      {"NZD", "dollars have (cents)"},
      {"GBP", "pounds have (pence)"},
      {"SEK", "kronor have (öre)"},
      {"NOK", "kroner have (øre)"},
      {"DKK", "kroner have (øre)"},
      {"JPY", "yen have"},
  }};
  const std::string_view code = currency.code;
  const auto* named = std::ranges::find(names, code, [](const auto& entry) { return entry[0]; });
  return named == names.end() ? std::string(code) + " has" : std::string((*named)[1]);
}

class RowsReader {
 public:
  RowsReader(const StatementFile& file, const StatementSurroundings& surroundings,
             const StatementOptions& options)
      : file_(file), profile_(*file.profile), surroundings_(surroundings), options_(options) {
    for (const StatementCells& row : file.rows) {
      texts_.emplace_back(file.tables[row.table], row);
    }
    for (const auto& [word, kind] : options.kinds) {
      kinds_.emplace(foldedText(word), kind);
    }
  }

  StatementReading read() {
    findEnd();
    learn();
    std::vector<Draft> drafts;
    for (std::size_t i = 0; i < end_; ++i) {
      drafts.push_back(draftOf(texts_[i]));
    }
    sortByTime(drafts);
    mergeGroups(drafts);
    for (Draft& draft : drafts) {
      finish(draft);
      reading_.rows.push_back(std::move(draft.row));
    }
    for (std::size_t i = end_; i < texts_.size(); ++i) {
      reading_.rows.push_back(rowApart(texts_[i].line(), "below the table"));
    }
    reading_.rows.insert(reading_.rows.end(), file_.apart.begin(), file_.apart.end());
    for (const auto& [code, sum] : rounded_) {
      reading_.remarks.push_back("Amounts were rounded, by " + sum.description() + " " + code +
                                 " in all.");
    }
    return std::move(reading_);
  }

 private:
  static StatementRow rowApart(std::uint32_t line, std::string reason) {
    StatementRow row;
    row.line = line;
    row.verdict = RowVerdict::leftOut;
    row.reason = std::move(reason);
    return row;
  }

  /// Rows at the end without an amount or without a day are no rows of the table.
  void findEnd() {
    end_ = texts_.size();
    while (end_ > 0) {
      const RowTexts& row = texts_[end_ - 1];
      const bool hasDay = row.text("date").find_first_of("0123456789") != std::string::npos;
      const bool hasAmount = !row.text("amount").empty() || !row.text("shares").empty();
      if (hasDay && hasAmount) {
        break;
      }
      if (hasDay && row.kind()) {
        break;
      }
      --end_;
    }
  }

  void learn() {
    DayOrderRecognition days;
    DecimalMarkRecognition marks;
    for (std::size_t i = 0; i < end_; ++i) {
      const RowTexts& row = texts_[i];
      if (const std::string account = row.text("account"); !account.empty()) {
        reading_.accounts.insert(account);
      }
      if (kindOfRow(row) == RowKind::ignore || options_.leaveOut.contains(row.line()) ||
          !takesAccountOf(row)) {
        continue;
      }
      days.add(row.line(), row.columnOf("date"), row.text("date"), row.columnOf("settle"),
               row.text("settle"));
      for (const std::string_view field : readNumberFields) {
        marks.add(row.line(), row.columnOf(field), row.text(field));
      }
      marks.addTrade(row.text("shares"), row.text("price"), row.text("amount"));
    }
    if (reading_.accounts.size() > 1 && options_.accounts.empty()) {
      std::string names;
      for (const std::string& account : reading_.accounts) {
        names += (names.empty() ? "“" : ", “") + account + "”";
      }
      reading_.remarks.push_back("The file has rows of several accounts: " + names + ".");
    }
    const auto told = options_.days ? options_.days : profile_.days;
    const auto verdict = days.verdict(surroundings_.today, told);
    days_ = verdict.order;
    reading_.remarks.push_back(verdict.why);
    if (!profile_.decimalOfEachCell) {
      const auto mark = options_.decimal ? options_.decimal : profile_.decimal;
      decimal_ = mark ? *mark : marks.mark();
    }
  }

  [[noreturn]] void fail(const RowTexts& row, std::string_view field, std::string reason,
                         std::string remedy = {}) const {
    throw StatementError(row.line(), field.empty() ? "" : row.columnOf(field), std::move(reason),
                         std::move(remedy));
  }

  std::optional<Decimal> number(const RowTexts& row, std::string_view field) const {
    const std::string text = row.text(field);
    if (text.empty()) {
      return std::nullopt;
    }
    const RowTexts::Scale scale = row.scaleOf(field);
    Decimal value = numberIn(row, field, text) * scale.times;
    if (!scale.over.empty()) {
      const Decimal divisor = numberIn(row, field, scale.over);
      if (divisor.isZero()) {
        fail(row, field, "it is to be divided by 0.");
      }
      value = value / divisor;
    }
    return value;
  }

  [[nodiscard]] Decimal numberIn(const RowTexts& row, std::string_view field,
                                 const std::string& text) const {
    const auto cell = NumberCell::read(text);
    std::optional<Decimal> value;
    if (cell && decimal_) {
      value = cell->value(*decimal_);
    } else if (cell) {
      value = cell->value(markOf(*cell, row, field, text));
    }
    if (!value) {
      fail(row, field, "“" + text + "” is not a number.");
    }
    return *value;
  }

  /// The mark of a cell of a layout in which each cell has its own.
  [[nodiscard]] DecimalMark markOf(const NumberCell& cell, const RowTexts& row,
                                   std::string_view field, const std::string& text) const {
    switch (cell.evidence()) {
      case NumberCell::Evidence::comma:
        return DecimalMark::comma;
      case NumberCell::Evidence::point:
      case NumberCell::Evidence::none:
        return DecimalMark::point;
      case NumberCell::Evidence::undecided:
        break;
    }
    if (options_.decimal) {
      return *options_.decimal;
    }
    // Shares times price may tell.
    DecimalMarkRecognition byTrade;
    byTrade.add(row.line(), field, text);
    byTrade.addTrade(row.text("shares"), row.text("price"), row.text("amount"));
    if (field == "amount" && !byTrade.isUndecided()) {
      return byTrade.mark();
    }
    fail(row, field,
         "“" + text + "” may be " + cell.value(DecimalMark::point).value_or(0).description() +
             " or " + cell.value(DecimalMark::comma).value_or(0).description() + ".",
         "Say --decimal . or --decimal ,");
  }

  [[nodiscard]] YearMonthDay dayIn(const RowTexts& row, std::string_view field,
                                   const std::string& text,
                                   std::optional<std::int64_t>& time) const {
    const auto cell = DayCell::read(text);
    const auto day = cell ? cell->day(days_) : std::nullopt;
    if (!day) {
      fail(row, field, text.empty() ? "the cell is empty." : "“" + text + "” is not a day.");
    }
    time = cell->time();
    return *day;
  }

  Draft draftOf(const RowTexts& row) {
    Draft draft;
    draft.row.line = row.line();
    draft.row.kind = row.kind() ? rawValue(*row.kind()) : row.text("type");
    draft.row.id = row.text("id");
    draft.row.symbol = row.text("symbol");
    try {
      if (options_.leaveOut.contains(row.line())) {
        throw Obstacle{RowVerdict::leftOut, "you leave it out"};
      }
      if (!takesAccountOf(row)) {
        throw Obstacle{RowVerdict::leftOut, "it is of another account"};
      }
      const auto kind = kindOfRow(row);
      if (!kind) {
        draft.row.question = RowQuestion{RowQuestion::About::kind, row.text("type"), {}, {}, {}};
        fail(row, "type", "“" + row.text("type") + "” is not in the layout.",
             "Leave the line out (--leave-out " + std::to_string(row.line()) +
                 ") or tell what it means in ~/.config/corvane/statements/" + profile_.id +
                 ".toml.");
      }
      draft.row.kind = rawValue(*kind);
      if (*kind == RowKind::ignore) {
        throw Obstacle{RowVerdict::leftOut,
                       row.why().empty() ? "the layout leaves it out" : row.why()};
      }
      draft.kind = *kind;
      fill(draft, row);
    } catch (const Obstacle& obstacle) {
      stopAt(draft.row, obstacle);
    } catch (const StatementError& error) {
      draft.row.verdict = RowVerdict::refused;
      draft.row.reason =
          (error.column.empty() ? "" : "column “" + error.column + "”: ") + error.reason;
      draft.row.remedy = error.remedy;
    }
    return draft;
  }

  /// What the layout makes of the row; where it does not know the word, what the user has said.
  [[nodiscard]] std::optional<RowKind> kindOfRow(const RowTexts& row) const {
    if (row.kind()) {
      return row.kind();
    }
    const auto said = kinds_.find(foldedText(row.text("type")));
    return said == kinds_.end() ? std::nullopt : std::optional(said->second);
  }

  [[nodiscard]] bool takesAccountOf(const RowTexts& row) const {
    const std::string account = row.text("account");
    return options_.accounts.empty() || account.empty() || options_.accounts.contains(account);
  }

  void fill(Draft& draft, const RowTexts& row) {
    draft.trade = dayIn(row, "date", row.text("date"), draft.row.time);
    if (const std::string time = row.text("time"); !time.empty()) {
      const auto cell = DayCell::read("2000-01-01 " + time);
      draft.row.time = cell ? cell->time() : std::nullopt;
    }
    draft.settlement = draft.trade;
    if (const std::string settle = row.text("settle"); !settle.empty()) {
      std::optional<std::int64_t> unused;
      draft.settlement = std::max(draft.trade, dayIn(row, "settle", settle, unused));
    }
    draft.note = row.text("note");
    if (draft.note.empty() && profile_.takesFirstWordOfSymbols && isCash(draft.kind)) {
      draft.note = row.text("symbol");
    }
    draft.group = row.text("group");
    fillMoney(draft, row);
    if (!isCash(draft.kind)) {
      fillShares(draft, row);
      draft.equity = equityOf(draft, row);
    }
  }

  void fillShares(Draft& draft, const RowTexts& row) {
    draft.sharesAfter = number(row, "shares-after");
    draft.cost = number(row, "cost");
    const auto shares = number(row, "shares");
    if (isYield(draft.kind)) {
      return;  // the ledger knows how many are held
    }
    if (!shares) {
      fail(row, "shares", "the cell is empty.");
    }
    draft.shares = isTrade(draft.kind) ? abs(*shares) : *shares;
    if (draft.kind == RowKind::split && !draft.sharesAfter) {
      fail(row, "shares-after", "the cell is empty.");
    }
  }

  EquityPointer equityOf(Draft& draft, const RowTexts& row) const {
    const std::string symbol = row.text("symbol");
    const std::string isin = row.text("isin");
    const std::string name = row.text("name");
    std::string asked;
    for (const std::string* text : {&isin, &name, &symbol}) {
      if (text->empty()) {
        continue;
      }
      asked = asked.empty() ? *text : asked;
      if (const auto said = options_.symbols.find(foldedText(*text));
          said != options_.symbols.end()) {
        draft.row.symbol = said->second;
        return surroundings_.equityFor(said->second);
      }
    }
    if (!symbol.empty() && !symbol.contains(' ')) {
      return surroundings_.equityFor(symbol);
    }
    draft.row.symbol = !name.empty() ? name : asked;
    if (asked.empty()) {
      fail(row, "symbol", "the cell is empty.");
    }
    const std::string subject = isin.empty() ? draft.row.symbol : isin;
    const std::string proposal =
        profile_.takesFirstWordOfSymbols ? symbol.substr(0, symbol.find(' ')) : std::string();
    throw Obstacle{RowVerdict::asks, "“" + subject + "” has no symbol yet.",
                   "Say --symbol \"" + subject + "=" + (proposal.empty() ? "…" : proposal) + "\".",
                   RowQuestion{RowQuestion::About::symbol, subject, isin.empty() ? "" : name,
                               std::string(draft.cash.currency.code), proposal}};
  }

  struct RowCurrency {
    Currency currency;
    Decimal divide = 1;
  };

  [[nodiscard]] RowCurrency currencyOf(const RowTexts& row) const {
    std::string code = row.text("currency");
    std::string_view field = "currency";
    if (code.empty()) {
      const auto amount = NumberCell::read(row.text("amount"));
      code = amount ? amount->currencyCode() : "";
      field = "amount";
    }
    if (code.empty() && options_.currencyCode) {
      code = *options_.currencyCode;
    }
    if (code.empty()) {
      throw Obstacle{RowVerdict::asks, "no column tells the currency.", "Say --currency CODE.",
                     RowQuestion{RowQuestion::About::currency, {}, {}, {}, {}}};
    }
    if (const auto alias = profile_.currencies.find(code); alias != profile_.currencies.end()) {
      return {Currency::byCode().at(alias->second.code), alias->second.divide};
    }
    if (code == "GBX" || code == "GBp" || code == "GBX (p)") {
      return {Currency::byCode().at("GBP"), 100};
    }
    const auto found = Currency::byCode().find(code);
    if (found == Currency::byCode().end()) {
      fail(row, field, "“" + code + "” is not the code of a currency.");
    }
    return {found->second, 1};
  }

  void fillMoney(Draft& draft, const RowTexts& row) {
    if (draft.kind == RowKind::split || draft.kind == RowKind::splitAdded) {
      return;
    }
    const RowCurrency currency = currencyOf(row);
    draft.cash.currency = currency.currency;
    auto amount = number(row, "amount");
    const auto shares = number(row, "shares");
    const auto price = number(row, "price");
    if (!amount && shares && price && !isCash(draft.kind)) {
      amount = abs(*shares) * *price;
    }
    if (!amount && draft.kind != RowKind::journal) {
      fail(row, "amount", "the cell is empty.");
    }
    const Decimal charge = profile_.chargesAreNegative ? -1 : 1;
    const Decimal fee = number(row, "fee").value_or(0) * charge / currency.divide;
    const Decimal tax = number(row, "tax").value_or(0) * charge / currency.divide;
    const Decimal told = amount.value_or(0) / currency.divide;
    if (draft.kind == RowKind::trade) {
      const Decimal sign = profile_.tradesBySignOfAmount ? -told : shares.value_or(0);
      if (sign.isZero()) {
        fail(row, profile_.tradesBySignOfAmount ? "amount" : "shares",
             "its sign would tell a purchase from a sale.");
      }
      draft.kind = sign < 0 ? RowKind::sell : RowKind::buy;
      draft.row.kind = rawValue(draft.kind);
    }
    draft.cash.amount = inDigits(draft, row, cashOf(draft, told, fee, tax));
    draft.tax = isTrade(draft.kind) ? inDigits(draft, row, tax) : 0;
    draft.equivalent = number(row, "equivalent");
    draft.rate = number(row, "rate");
    if (const auto inverse = number(row, "inverse-rate"); !draft.rate && inverse) {
      if (!(*inverse > 0)) {
        fail(row, "inverse-rate", "a rate is above 0.");
      }
      draft.rate = Decimal(1) / *inverse;
    }
    if (isCash(draft.kind) && draft.cash.amount.isZero()) {
      throw Obstacle{RowVerdict::leftOut, "it comes to nothing"};
    }
  }

  /// What the row does to the cash, but for the sign of a purchase, which is positive here.
  static Decimal cashOf(const Draft& draft, const Decimal& told, const Decimal& fee,
                        const Decimal& tax) {
    switch (draft.kind) {
      case RowKind::buy:
        return abs(told) + fee;
      case RowKind::sell:
        return abs(told) - fee;
      case RowKind::deposit:
        return abs(told) - fee - tax;
      case RowKind::credit:
        return abs(told) - fee - tax;
      case RowKind::withdrawal:
      case RowKind::expense:
        return -abs(told) - fee - tax;
      default:
        return told - fee - tax;
    }
  }

  Decimal inDigits(const Draft& draft, const RowTexts& row, const Decimal& amount) {
    const Currency& currency = draft.cash.currency;
    const Decimal cut = roundedToMinorUnits(amount, currency);
    if (cut == amount) {
      return amount;
    }
    if (!profile_.roundsAmounts) {
      fail(row, "amount",
           amount.description() + " " + std::string(currency.code) + " has more digits than " +
               minorUnitsText(currency) + ". The layout does not say that amounts are rounded.");
    }
    rounded_[std::string(currency.code)] += abs(amount - cut);
    if (cut.isZero() && isCash(draft.kind)) {
      throw Obstacle{RowVerdict::leftOut, "it rounds to nothing"};
    }
    return cut;
  }

  void sortByTime(std::vector<Draft>& drafts) const {
    std::optional<YearMonthDay> first;
    std::optional<YearMonthDay> last;
    for (const Draft& draft : drafts) {
      if (draft.trade != YearMonthDay()) {
        first = first ? first : draft.trade;
        last = draft.trade;
      }
    }
    const bool isOneDay = first && first == last;
    if (first && (*last < *first || (isOneDay && profile_.isNewestFirst))) {
      std::ranges::reverse(drafts);
    }
    // A row without a day goes with the one before it.
    YearMonthDay before;
    std::vector<YearMonthDay> days;
    for (const Draft& draft : drafts) {
      before = draft.trade == YearMonthDay() ? before : draft.trade;
      days.push_back(before);
    }
    const bool haveTimes = std::ranges::all_of(
        drafts, [](const Draft& draft) { return draft.row.time || draft.trade == YearMonthDay(); });
    std::vector<std::size_t> order(drafts.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, [&](std::size_t left, std::size_t right) {
      if (days[left] != days[right]) {
        return days[left] < days[right];
      }
      return haveTimes && drafts[left].row.time < drafts[right].row.time;
    });
    std::vector<Draft> sorted;
    for (const std::size_t place : order) {
      sorted.push_back(std::move(drafts[place]));
    }
    drafts = std::move(sorted);
  }

  /// Rows of one order are one transaction where one of them is a trade or a yield, and their legs
  /// come to one currency. An order that was carried out in parts is one trade.
  static void mergeGroups(std::vector<Draft>& drafts) {
    std::map<std::string, std::vector<std::size_t>> groups;
    for (std::size_t i = 0; i < drafts.size(); ++i) {
      if (!drafts[i].group.empty() && drafts[i].row.verdict == RowVerdict::isNew) {
        groups[drafts[i].group].push_back(i);
      }
    }
    for (const auto& [group, places] : groups) {
      std::vector<std::size_t> chiefs;
      std::ranges::copy_if(places, std::back_inserter(chiefs), [&](std::size_t i) {
        return isTrade(drafts[i].kind) || isYield(drafts[i].kind);
      });
      if (places.size() > 1 && !chiefs.empty() && areOfOneKind(drafts, chiefs)) {
        mergeGroup(drafts, places, chiefs);
      }
    }
  }

  /// Whether these can be parts of one trade.
  static bool areOfOneKind(const std::vector<Draft>& drafts,
                           const std::vector<std::size_t>& chiefs) {
    const Draft& first = drafts[chiefs.front()];
    return chiefs.size() == 1 ||
           (isTrade(first.kind) && std::ranges::all_of(chiefs, [&](std::size_t i) {
              return drafts[i].kind == first.kind && drafts[i].equity == first.equity &&
                     drafts[i].trade == first.trade && drafts[i].tax.isZero() &&
                     !drafts[i].equivalent;
            }));
  }

  static void mergeGroup(std::vector<Draft>& drafts, const std::vector<std::size_t>& places,
                         const std::vector<std::size_t>& chiefs) {
    std::map<std::string, CurrencyAmount, std::less<>> legs;
    Draft& chief = drafts[chiefs.front()];
    for (const std::size_t i : places) {
      const Draft& draft = drafts[i];
      const Decimal amount = draft.kind == RowKind::buy ? -draft.cash.amount : draft.cash.amount;
      const auto leg = legs.try_emplace(std::string(draft.cash.currency.code),
                                        CurrencyAmount{draft.cash.currency, 0});
      leg.first->second.amount += amount;
    }
    std::erase_if(legs, [](const auto& leg) { return leg.second.amount.isZero(); });
    if (legs.size() != 1) {
      chief.row.reason =
          "its order has amounts in several currencies, which are recorded one by one";
      return;
    }
    const CurrencyAmount& sum = legs.begin()->second;
    chief.cash = {sum.currency, chief.kind == RowKind::buy ? -sum.amount : sum.amount};
    for (const std::size_t i : chiefs) {
      chief.shares += i == chiefs.front() ? Decimal(0) : drafts[i].shares;
    }
    for (const std::size_t i : places) {
      if (i != chiefs.front()) {
        drafts[i].row.verdict = RowVerdict::belongs;
        drafts[i].row.reason = "to line " + std::to_string(chief.row.line);
      }
    }
  }

  /// Makes the transactions of a draft.
  void finish(Draft& draft) {
    if (draft.row.verdict != RowVerdict::isNew) {
      return;
    }
    try {
      const Date trade = draft.trade.startIn(surroundings_.calendar);
      const Date settlement = draft.settlement.startIn(surroundings_.calendar);
      const auto note = draft.note.empty() ? std::nullopt : std::optional(draft.note);
      draft.row.transactions.push_back({kindOf(draft, settlement), trade, settlement, note});
      if (!draft.tax.isZero()) {
        draft.row.transactions.push_back(
            {BasicTransaction::CashAdjustment{{draft.cash.currency, -draft.tax}}, trade, settlement,
             "Tax, " + draft.row.symbol});
      }
      follow(draft);
    } catch (const Obstacle& obstacle) {
      draft.row.transactions.clear();
      stopAt(draft.row, obstacle);
    }
  }

  [[nodiscard]] BasicTransaction::Kind kindOf(Draft& draft, Date settlement) {
    const CurrencyAmount& cash = draft.cash;
    switch (draft.kind) {
      case RowKind::buy:
        return BasicTransaction::Trade{draft.equity, cash, equivalentOf(draft), draft.shares};
      case RowKind::sell:
        return BasicTransaction::Trade{
            draft.equity, {cash.currency, -cash.amount}, -equivalentOf(draft), -draft.shares};
      case RowKind::split:
        return BasicTransaction::Split{draft.equity, abs(draft.shares), *draft.sharesAfter};
      case RowKind::splitAdded: {
        const Decimal held = heldBefore(draft.equity, settlement);
        return BasicTransaction::Split{draft.equity, held, held + draft.shares};
      }
      case RowKind::journal: {
        const bool isIn = !(draft.shares < 0);
        const auto cost = draft.cost             ? draft.cost
                          : cash.amount.isZero() ? std::optional<Decimal>()
                                                 : std::optional(abs(equivalentOf(draft)));
        if (isIn && !cost) {
          throw Obstacle{RowVerdict::refused, "the cost base of the shares is not told"};
        }
        return BasicTransaction::JournaledShares{draft.equity, draft.shares,
                                                 isIn ? cost : std::nullopt};
      }
      case RowKind::deposit:
      case RowKind::withdrawal:
      case RowKind::transfer:
        return BasicTransaction::Transfer{cash};
      case RowKind::cash:
      case RowKind::credit:
      case RowKind::expense:
        return BasicTransaction::CashAdjustment{cash};
      default:
        return BasicTransaction::Yield{yieldType(draft.kind), draft.equity, std::nullopt, cash,
                                       equivalentOf(draft)};
    }
  }

  static BasicTransaction::YieldType yieldType(RowKind kind) {
    using enum BasicTransaction::YieldType;
    switch (kind) {
      case RowKind::capitalGainsDividend:
        return capitalGainsDividend;
      case RowKind::reinvested:
        return reinvestedDistribution;
      case RowKind::returnOfCapital:
        return returnOfCapital;
      default:
        return dividend;
    }
  }

  /// The cash in the portfolio's currency, with the sign of the cash.
  Decimal equivalentOf(Draft& draft) {
    const Currency& primary = surroundings_.primaryCurrency;
    const Decimal& amount = draft.cash.amount;
    if (draft.cash.currency == primary) {
      return amount;
    }
    if (draft.equivalent) {
      draft.row.rate = "as told";
      return amount < 0 ? -abs(*draft.equivalent) : abs(*draft.equivalent);
    }
    if (!draft.rate && surroundings_.rateOf) {
      if (const auto found = surroundings_.rateOf(draft.cash.currency, draft.trade)) {
        draft.rate = found->rate;
        draft.row.rate = found->rate.description() + ", " + found->source;
      }
    }
    if (!draft.rate) {
      const std::string code(draft.cash.currency.code);
      throw Obstacle{RowVerdict::asks,
                     "no exchange rate for " + code + " on " + spelledDay(draft.trade) + ".",
                     "Say --rates market to look it up.",
                     RowQuestion{RowQuestion::About::rate, code, {}, code, {}}};
    }
    if (draft.row.rate.empty()) {
      draft.row.rate = rounded(*draft.rate, 6, RoundingMode::bankers).description();
    }
    return roundedToMinorUnits(amount * *draft.rate, primary);
  }

  [[nodiscard]] Decimal heldBefore(const EquityPointer& equity, Date settlement) const {
    Decimal held = surroundings_.heldAfter ? surroundings_.heldAfter(equity, settlement) : 0;
    if (const auto found = added_.find(equity); found != added_.end()) {
      held += found->second;
    }
    return held;
  }

  /// Counts the shares that the rows of the file have brought so far.
  void follow(const Draft& draft) {
    switch (draft.kind) {
      case RowKind::buy:
      case RowKind::journal:
      case RowKind::splitAdded:
        added_[draft.equity] += draft.shares;
        break;
      case RowKind::sell:
        added_[draft.equity] -= draft.shares;
        break;
      case RowKind::split:
        added_[draft.equity] += *draft.sharesAfter - abs(draft.shares);
        break;
      default:
        break;
    }
  }

  const StatementFile& file_;
  const StatementProfile& profile_;
  const StatementSurroundings& surroundings_;
  const StatementOptions& options_;
  std::vector<RowTexts> texts_;
  std::map<std::string, RowKind> kinds_;  ///< that the user has told, by the folded word
  std::size_t end_ = 0;                   ///< of the rows that are rows of a table
  DayOrder days_ = DayOrder::ymd;
  std::optional<DecimalMark> decimal_;
  std::map<EquityPointer, Decimal> added_;
  std::map<std::string, Decimal> rounded_;
  StatementReading reading_;
};

}  // namespace

StatementReading readStatement(const StatementFile& file, const StatementSurroundings& surroundings,
                               const StatementOptions& options) {
  return RowsReader(file, surroundings, options).read();
}

}  // namespace corvane
