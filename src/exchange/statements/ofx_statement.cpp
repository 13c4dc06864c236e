#include "exchange/statements/ofx_statement.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "exchange/strict/number_form.h"
#include "exchange/strict/statement_error.h"
#include "exchange/strict/statement_text.h"
#include "platform/data/ofx.h"
#include "platform/text/unicode/letter_case.h"

namespace corvane {
namespace {

/// The columns of the table. Most are called as the tags, which messages name.
constexpr std::array<std::string_view, 23> ofxColumns = {
    "transaction", "detail",   "FITID",     "DTTRADE",  "DTPOSTED", "DTSETTLE",
    "time",        "ACCTID",   "TICKER",    "UNIQUEID", "SECNAME",  "UNITS",
    "OLDUNITS",    "NEWUNITS", "UNITPRICE", "TOTAL",    "TRNAMT",   "charges",
    "WITHHOLDING", "currency", "CURRATE",   "NAME",     "MEMO"};

using OFXFields = std::map<std::string, std::string, std::less<>>;

std::string fieldIn(const OFXFields& fields, std::string_view name) {
  const auto found = fields.find(name);
  return found == fields.end() ? std::string() : found->second;
}

/// One transaction of a file: the texts of its tags, whatever they stand within.
struct OFXTransaction {
  std::string name;  ///< "BUYSTOCK", "STMTTRN"
  std::uint32_t line = 0;
  std::string account;
  std::string currency;  ///< of the account
  bool isPending = false;
  OFXFields fields;
};

/// Gathers what a file tells.
class OFXGatherer : public OFXHandler {
 public:
  std::vector<OFXTransaction> transactions;
  std::map<std::string, OFXFields, std::less<>> securities;  ///< by their number
  std::set<std::string> accounts;
  std::string organisation;
  std::string problem;  ///< what the bank reports
  std::uint32_t problemLine = 0;
  std::string stray;  ///< a transaction outside of all lists, which belong to an account
  std::uint32_t strayLine = 0;

  void startElement(std::string_view name, std::uint32_t line) override {
    if (isStatement(name)) {
      account_.clear();
      currency_.clear();
    } else if (name == "SECINFO") {
      security_ = OFXFields();
    } else if (name == "STATUS") {
      status_ = OFXFields();
    } else if (!open_ && !path_.empty() && isList(path_.back())) {
      // A movement of cash within investments stands in an element that tells the sub-account.
      open_ = OFXTransaction{.name = std::string(name == "INVBANKTRAN" ? "STMTTRN" : name),
                             .line = line,
                             .account = account_,
                             .currency = currency_,
                             .isPending = path_.back().ends_with("P"),
                             .fields = {}};
      depth_ = path_.size();
    } else if (!open_ && strayLine == 0 && (name == "STMTTRN" || name == "INVTRAN")) {
      stray = name;
      strayLine = line;
    }
    path_.emplace_back(name);
  }

  void endElement(std::string_view name) override {
    path_.pop_back();
    if (open_ && path_.size() == depth_) {
      transactions.push_back(*std::exchange(open_, std::nullopt));
    } else if (name == "SECINFO" && security_) {
      securities.emplace(fieldIn(*security_, "UNIQUEID"), *security_);
      security_.reset();
    } else if (name == "STATUS" && status_) {
      if (fieldIn(*status_, "SEVERITY") == "ERROR" && problem.empty()) {
        const std::string message = fieldIn(*status_, "MESSAGE");
        problem = message.empty() ? "error " + fieldIn(*status_, "CODE") : message;
        problemLine = statusLine_;
      }
      status_.reset();
    }
  }

  void value(std::string_view name, const std::string& text, std::uint32_t line) override {
    const std::string_view parent = path_.empty() ? std::string_view() : path_.back();
    const bool isOfOther = parent == "ORIGCURRENCY" || parent.ends_with("ACCTTO") ||
                           (open_ && parent.ends_with("ACCTFROM"));
    if (text.empty() || isOfOther) {
      return;
    }
    if (open_) {
      open_->fields.emplace(name, name == "CURSYM" ? uppercased(text) : text);
    } else if (security_) {
      security_->emplace(name, text);
    } else if (status_) {
      statusLine_ = line;
      status_->emplace(name, text);
    } else if (name == "CURDEF") {
      currency_ = uppercased(text);
    } else if (name == "ACCTID" && parent.ends_with("ACCTFROM")) {
      account_ = text;
      accounts.insert(text);
    } else if (name == "ORG") {
      organisation = text;
    }
  }

 private:
  static bool isStatement(std::string_view name) {
    return name == "STMTRS" || name == "CCSTMTRS" || name == "INVSTMTRS";
  }
  /// "INVTRANLIST", "BANKTRANLIST", and those of what is not posted yet.
  static bool isList(std::string_view name) {
    return name.ends_with("TRANLIST") || name.ends_with("TRANLISTP");
  }

  std::vector<std::string> path_;
  std::optional<OFXTransaction> open_;
  std::size_t depth_ = 0;  ///< of what the open transaction stands in
  std::optional<OFXFields> security_;
  std::optional<OFXFields> status_;
  std::uint32_t statusLine_ = 0;
  std::string account_;
  std::string currency_;
};

/// A number as OFX writes it: there is no grouping, and either mark stands before decimals.
std::string withPoint(std::string text) {
  if (std::ranges::count(text, ',') == 1 && !text.contains('.')) {
    std::ranges::replace(text, ',', '.');
  }
  return text;
}

std::optional<Decimal> numberOf(const std::string& text) {
  const auto cell = NumberCell::read(withPoint(text));
  return cell ? cell->value(DecimalMark::point) : std::nullopt;
}

/// Turns transactions into rows of the table.
class OFXRows {
 public:
  OFXRows(const OFXGatherer& file, const Currency& primary) : file_(file), primary_(primary) {
    // What is of one day is turned round with the rest, so its parts are written the other way.
    const auto& all = file.transactions;
    isNewestFirst_ = !all.empty() && dayOf(all.back()) < dayOf(all.front());
  }

  struct Row {
    std::uint32_t line = 0;
    OFXFields cells;
  };

  std::vector<Row> read() {
    for (const OFXTransaction& transaction : file_.transactions) {
      take(transaction);
    }
    return std::move(rows_);
  }

 private:
  static std::string dayOf(const OFXTransaction& transaction) {
    const std::string traded = fieldIn(transaction.fields, "DTTRADE");
    return (traded.empty() ? fieldIn(transaction.fields, "DTPOSTED") : traded).substr(0, 8);
  }

  void take(const OFXTransaction& transaction) {
    OFXFields cells = commonCells(transaction);
    const std::string& name = transaction.name;
    if (transaction.isPending) {
      cells["detail"] = "pending";
    } else if (cells["detail"] == "correction") {
      // Whatever it corrects may have been recorded already.
    } else if (name == "REINVEST") {
      takeReinvestment(transaction, cells);
      return;
    } else if (name.starts_with("SELL")) {
      fillSale(transaction, cells);
    } else if (name == "TRANSFER") {
      if (const auto units = numberOf(cells["UNITS"])) {
        const bool isOut = fieldIn(transaction.fields, "TFERACTION") == "OUT";
        cells["UNITS"] = (isOut ? -abs(*units) : abs(*units)).description();
      }
    } else if (name == "INCOME") {
      if (const std::string withheld = withheldText(transaction); !withheld.empty()) {
        cells["MEMO"] += (cells["MEMO"].empty() ? "withheld " : ", withheld ") + withheld;
      }
    }
    if (name.starts_with("BUY") || name.starts_with("SELL")) {
      fillCharges(transaction, cells);
    }
    rows_.push_back({transaction.line, cells});
    if (const std::string cash = fieldIn(transaction.fields, "FRACCASH");
        name == "SPLIT" && !cash.empty()) {
      addAfter({transaction.line + 1, cashCells(cells, "FRACCASH", cash)});
    }
  }

  /// A distribution that is paid out, and a purchase for it.
  void takeReinvestment(const OFXTransaction& transaction, const OFXFields& cells) {
    OFXFields income = cashCells(cells, fieldIn(transaction.fields, "INCOMETYPE"), "");
    if (const auto total = numberOf(fieldIn(cells, "TOTAL"))) {
      income["TOTAL"] = abs(*total).description();
    }
    rows_.push_back({transaction.line, std::move(income)});
    OFXFields purchase = cells;
    purchase["detail"].clear();
    addAfter({transaction.line + 1, std::move(purchase)});
  }

  /// Adds a row that follows the last one in time, on the line behind it.
  void addAfter(Row row) {
    if (isNewestFirst_) {
      std::swap(row.cells, rows_.back().cells);
    }
    rows_.push_back(std::move(row));
  }

  /// The cells of a part that is cash alone; `total` where it is not that of the whole.
  static OFXFields cashCells(OFXFields cells, const std::string& detail, const std::string& total) {
    cells["detail"] = detail;
    for (const char* column : {"UNITS", "OLDUNITS", "NEWUNITS", "UNITPRICE"}) {
      cells.erase(column);
    }
    if (!total.empty()) {
      cells["TOTAL"] = withPoint(total);
    }
    return cells;
  }

  OFXFields commonCells(const OFXTransaction& transaction) const {
    const OFXFields& fields = transaction.fields;
    OFXFields cells = {{"transaction", transaction.name},
                       {"ACCTID", transaction.account},
                       {"currency", transaction.currency}};
    for (const char* tag : {"TICKER", "UNIQUEID", "SECNAME", "NAME", "MEMO"}) {
      cells[tag] = fieldIn(fields, tag);
    }
    for (const char* tag : {"UNITS", "OLDUNITS", "NEWUNITS", "UNITPRICE", "TOTAL", "TRNAMT"}) {
      cells[tag] = withPoint(fieldIn(fields, tag));
    }
    const bool corrects = fields.contains("CORRECTFITID") || fields.contains("REVERSALFITID");
    cells["detail"] =
        corrects ? "correction"
                 : fieldIn(fields, transaction.name == "STMTTRN" ? "TRNTYPE" : "INCOMETYPE");
    fillDays(transaction, cells);
    fillSecurity(cells);
    fillCurrency(transaction, cells);
    if (const std::string id = fieldIn(fields, "FITID"); !id.empty()) {
      // Banks give a number again, so it counts with the day and the amount.
      cells["FITID"] = id + " " + dayOf(transaction) + " " + cells["TOTAL"] + cells["TRNAMT"];
    }
    return cells;
  }

  /// "20240115120000.000[-5:EST]" is the 15th, wherever it was written.
  static void fillDays(const OFXTransaction& transaction, OFXFields& cells) {
    bool hasDay = false;
    for (const char* tag : {"DTTRADE", "DTPOSTED", "DTSETTLE"}) {
      const std::string text = fieldIn(transaction.fields, tag);
      const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
      const bool isTime = digits == 14 || digits == 12 || digits == 8;
      cells[tag] = isTime ? text.substr(0, 8) : text;
      if (std::string_view(tag) == "DTSETTLE") {
        continue;
      }
      hasDay = hasDay || !text.empty();
      // Midnight and noon are what is written where no time is known.
      const std::string time = isTime ? text.substr(8, digits - 8) : "";
      if (!time.empty() && time.substr(0, 4) != "0000" && time.substr(0, 4) != "1200") {
        cells["time"] = time.substr(0, 2) + ":" + time.substr(2, 2) +
                        (time.size() > 4 ? ":" + time.substr(4, 2) : "");
      }
    }
    if (!hasDay && !transaction.isPending) {
      throw StatementError(transaction.line, transaction.name == "STMTTRN" ? "DTPOSTED" : "DTTRADE",
                           "the transaction has no day.");
    }
  }

  void fillSecurity(OFXFields& cells) const {
    const auto security = file_.securities.find(cells["UNIQUEID"]);
    if (security == file_.securities.end()) {
      return;
    }
    cells["SECNAME"] = fieldIn(security->second, "SECNAME");
    const std::string ticker = fieldIn(security->second, "TICKER");
    // Some repeat the number, which no market knows.
    cells["TICKER"] = ticker == cells["UNIQUEID"] ? "" : ticker;
  }

  /// Amounts are in the currency of the account, or in one that the transaction names with its
  /// rate. A rate of 1 between two currencies stands for none.
  void fillCurrency(const OFXTransaction& transaction, OFXFields& cells) const {
    const std::string code = fieldIn(transaction.fields, "CURSYM");
    if (code.empty()) {
      return;
    }
    const std::string rate = withPoint(fieldIn(transaction.fields, "CURRATE"));
    const bool isOfUse = code != transaction.currency &&
                         transaction.currency == std::string_view(primary_.code) &&
                         numberOf(rate) != Decimal(1);
    cells["currency"] = code;
    cells["CURRATE"] = isOfUse ? rate : "";
  }

  /// What was withheld from a payment.
  static std::optional<Decimal> withheldFrom(const OFXTransaction& transaction) {
    Decimal sum = 0;
    for (const char* tag : {"WITHHOLDING", "STATEWITHHOLDING", "PENALTY"}) {
      if (const std::string text = fieldIn(transaction.fields, tag); !text.empty()) {
        const auto number = numberOf(text);
        if (!number) {
          throw StatementError(transaction.line, tag, "“" + text + "” is not a number.");
        }
        sum += abs(*number);
      }
    }
    return sum.isZero() ? std::nullopt : std::optional(sum);
  }
  static std::string withheldText(const OFXTransaction& transaction) {
    const auto withheld = withheldFrom(transaction);
    return withheld ? withheld->description() : "";
  }

  static Decimal chargesOf(const OFXTransaction& transaction) {
    Decimal sum = 0;
    for (const char* tag : {"COMMISSION", "FEES", "LOAD", "TAXES"}) {
      if (const std::string text = fieldIn(transaction.fields, tag); !text.empty()) {
        const auto number = numberOf(text);
        if (!number) {
          throw StatementError(transaction.line, tag, "“" + text + "” is not a number.");
        }
        sum += *number;
      }
    }
    return sum;
  }

  /// The total of a sale is what came in. Tax that was withheld is no cost of the sale: it is told
  /// apart, and the proceeds are what they were before it.
  static void fillSale(const OFXTransaction& transaction, OFXFields& cells) {
    const auto withheld = withheldFrom(transaction);
    const auto total = numberOf(cells["TOTAL"]);
    if (!withheld || !total) {
      return;
    }
    cells["WITHHOLDING"] = withheld->description();
    const auto units = numberOf(cells["UNITS"]);
    const auto price = numberOf(cells["UNITPRICE"]);
    const Decimal cent = Decimal(1) / Decimal(100);
    const bool isBefore =
        units && price &&
        !(abs(abs(*units) * *price - chargesOf(transaction) - abs(*total)) > cent);
    if (!isBefore) {
      cells["TOTAL"] = (abs(*total) + *withheld).description();
    }
  }

  /// A total has all charges in it. Where there is none it follows from the price, but for bonds
  /// and options, whose price is no amount for a unit, and where the price has a margin of its own.
  static void fillCharges(const OFXTransaction& transaction, OFXFields& cells) {
    const Decimal charges = chargesOf(transaction);
    const std::string& name = transaction.name;
    if (!cells["TOTAL"].empty() || name.ends_with("DEBT") || name.ends_with("OPT") ||
        transaction.fields.contains("MARKUP") || transaction.fields.contains("MARKDOWN")) {
      cells["UNITPRICE"].clear();
    } else if (!charges.isZero()) {
      cells["charges"] = charges.description();
    }
  }

  const OFXGatherer& file_;
  const Currency& primary_;
  bool isNewestFirst_ = false;
  std::vector<Row> rows_;
};

void writeTableLine(std::string& table, const auto& cellOf) {
  for (const std::string_view column : ofxColumns) {
    table += column == ofxColumns.front() ? "\"" : ",\"";
    for (const char byte : cellOf(column)) {
      table += byte == '"' ? "\"\"" : std::string(1, byte);
    }
    table += '"';
  }
  table += '\n';
}

/// The encoding that a header names, for files that are not UTF-8 or UTF-16.
TextEncoding encodingNamed(const std::string& characterSet) {
  return characterSet.ends_with("8859-15") || characterSet.ends_with("LATIN-9")
             ? TextEncoding::latin9
             : TextEncoding::windowsLatin1;
}

std::string titleOf(const OFXGatherer& file, const OFXHeader& header) {
  std::string title = "OFX";
  title += header.version.empty() ? "" : " " + header.version;
  title += file.organisation.empty() ? "" : " of “" + file.organisation + "”";
  const std::size_t count = file.transactions.size();
  return title + ", " + std::to_string(count) + (count == 1 ? " transaction." : " transactions.");
}

/// The lines of rows that tell a transaction of the same account once more, with that of the first.
/// What a transaction has become, such as a payment and the purchase for it, differs in its words.
std::map<std::uint32_t, std::uint32_t> repetitionsIn(const std::vector<OFXRows::Row>& rows) {
  std::map<std::uint32_t, std::uint32_t> repetitions;
  std::unordered_map<std::string, std::uint32_t> lines;
  for (const OFXRows::Row& row : rows) {
    if (fieldIn(row.cells, "FITID").empty()) {
      continue;
    }
    std::string key;
    for (const char* column : {"ACCTID", "FITID", "transaction", "detail", "UNIQUEID", "UNITS"}) {
      key += fieldIn(row.cells, column) + '\n';
    }
    if (const auto [first, isFirst] = lines.emplace(std::move(key), row.line); !isFirst) {
      repetitions.emplace(row.line, first->second);
    }
  }
  return repetitions;
}

}  // namespace

OFXStatement readOFX(std::string_view bytes, const Currency& primaryCurrency) {
  const OFXHeader header = ofxHeader(bytes);
  const StatementText text =
      decodedStatement(std::string(bytes), encodingNamed(header.characterSet));
  OFXGatherer file;
  try {
    parseOFX(text.text, file);
  } catch (const OFXError& error) {
    throw StatementError(error.line, "", error.reason);
  }
  if (file.strayLine > 0) {
    throw StatementError(file.strayLine, "",
                         "“" + file.stray + "” stands in no list. The file is not whole.");
  }
  if (file.transactions.empty() && !file.problem.empty()) {
    throw StatementError(file.problemLine, "", "the bank reports “" + file.problem + "”.");
  }
  std::vector<OFXRows::Row> rows = OFXRows(file, primaryCurrency).read();
  OFXStatement statement{.table = {},
                         .encoding = text.encoding,
                         .remarks = {titleOf(file, header)},
                         .repetitions = {}};
  std::uint32_t line = 1;
  const auto isBehind = [](const OFXRows::Row& one, const OFXRows::Row& next) {
    return one.line >= next.line;
  };
  if (std::ranges::adjacent_find(rows, isBehind) != rows.end() ||
      (!rows.empty() && rows.front().line == line)) {
    for (OFXRows::Row& row : rows) {
      row.line = ++line;
    }
    statement.remarks.emplace_back(
        "Several transactions stand on one line. They are counted, from 2 on, and called by that "
        "number.");
  }
  statement.repetitions = repetitionsIn(rows);
  writeTableLine(statement.table, [](std::string_view column) { return column; });
  line = 2;
  for (const OFXRows::Row& row : rows) {
    statement.table.append(row.line - line, '\n');
    writeTableLine(statement.table,
                   [&](std::string_view column) { return fieldIn(row.cells, column); });
    line = row.line + 1;
  }
  return statement;
}

}  // namespace corvane
