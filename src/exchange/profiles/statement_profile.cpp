#include "exchange/profiles/statement_profile.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "core/money/currency.h"
#include "exchange/csv/csv_parser.h"
#include "exchange/profiles/profile_error.h"
#include "exchange/strict/cell_text.h"

namespace corvane {
namespace {

constexpr std::array<std::pair<std::string_view, StatementKind>, 17> kindNames = {{
    {"buy", StatementKind::buy},
    {"sell", StatementKind::sell},
    {"trade", StatementKind::trade},
    {"deposit", StatementKind::deposit},
    {"withdrawal", StatementKind::withdrawal},
    {"transfer", StatementKind::transfer},
    {"dividend", StatementKind::dividend},
    {"capital-gains-dividend", StatementKind::capitalGainsDividend},
    {"reinvested", StatementKind::reinvested},
    {"return-of-capital", StatementKind::returnOfCapital},
    {"split", StatementKind::split},
    {"split-added", StatementKind::splitAdded},
    {"journal", StatementKind::journal},
    {"cash", StatementKind::cash},
    {"credit", StatementKind::credit},
    {"expense", StatementKind::expense},
    {"ignore", StatementKind::ignore},
}};

constexpr std::array<std::string_view, 22> fieldNames = {
    "date", "time",         "settle",       "type",  "note",   "group",    "symbol", "isin",
    "name", "shares",       "shares-after", "price", "amount", "currency", "fee",    "tax",
    "rate", "inverse-rate", "equivalent",   "cost",  "id",     "account"};

constexpr std::array<std::string_view, 9> tableKeys = {
    "heading", "fields", "kinds", "words", "kind", "text", "ignore", "only", "optional"};

/// Walks over the tree of a layout and knows where it is.
class ProfileReader {
 public:
  ProfileReader(std::string id, std::string path) : path_(std::move(path)) {
    profile_.id = std::move(id);
  }

  StatementProfile read(std::string_view text) {
    TOMLValue document;
    try {
      document = TOMLValue::parse(text);
    } catch (const TOMLError& error) {
      throw ProfileError(path_, error.place, error.reason);
    }
    StatementTableLayout whole;
    bool hasTables = false;
    for (const auto& entry : *document.table()) {
      if (std::ranges::find(tableKeys, std::string_view(entry.key)) != tableKeys.end()) {
        readTableKey(entry, whole);
      } else if (entry.key == "table") {
        hasTables = true;
        for (const TOMLValue& table : arrayIn(entry.value)) {
          StatementTableLayout layout;
          for (const auto& part : tableIn(table)) {
            if (std::ranges::find(tableKeys, std::string_view(part.key)) == tableKeys.end()) {
              failUnknownKey(part);
            }
            readTableKey(part, layout);
          }
          finishTable(layout, table.place());
          profile_.tables.push_back(std::move(layout));
        }
      } else {
        readKey(entry);
      }
    }
    if (!hasTables) {
      finishTable(whole, {1, 1});
      profile_.tables.push_back(std::move(whole));
    }
    if (profile_.name.empty()) {
      throw ProfileError(path_, {1, 1}, "“name” is missing.");
    }
    return std::move(profile_);
  }

 private:
  [[noreturn]] void fail(TextPlace place, std::string reason) const {
    throw ProfileError(path_, place, std::move(reason));
  }
  [[noreturn]] void failUnknownKey(const TOMLValue::Entry& entry) const {
    fail(entry.place, "“" + entry.key + "” is not a key of a layout.");
  }

  const std::string& textIn(const TOMLValue& value) const {
    if (value.text() == nullptr) {
      fail(value.place(), "a text in quotes is needed here.");
    }
    return *value.text();
  }
  bool booleanIn(const TOMLValue& value) const {
    if (value.boolean() == nullptr) {
      fail(value.place(), "true or false is needed here.");
    }
    return *value.boolean();
  }
  const TOMLValue::Array& arrayIn(const TOMLValue& value) const {
    if (value.array() == nullptr) {
      fail(value.place(), "a list in brackets is needed here.");
    }
    return *value.array();
  }
  const TOMLValue::Table& tableIn(const TOMLValue& value) const {
    if (value.table() == nullptr) {
      fail(value.place(), "a table in braces is needed here.");
    }
    return *value.table();
  }
  Decimal numberIn(const TOMLValue& value) const {
    const auto number = value.integer() != nullptr ? std::optional(Decimal(long{*value.integer()}))
                        : value.text() != nullptr  ? Decimal::fromWholeString(*value.text())
                                                   : std::nullopt;
    if (!number || number->isNaN() || number->isZero()) {
      fail(value.place(), "a number other than 0 is needed here, with decimals in quotes.");
    }
    return *number;
  }
  TextPattern patternIn(const std::string& text, TextPlace place) const {
    auto pattern = TextPattern::read(text);
    if (!pattern) {
      fail(place, "“" + text + "” has braces without a name that a pattern knows.");
    }
    return *pattern;
  }
  StatementKind kindIn(const TOMLValue& value) const {
    const auto kind = statementKindWithRawValue(textIn(value));
    if (!kind) {
      fail(value.place(), "“" + textIn(value) + "” is not a kind.");
    }
    return *kind;
  }
  /// One text, or the texts of a list.
  std::vector<const TOMLValue*> oneOrMore(const TOMLValue& value) const {
    std::vector<const TOMLValue*> all;
    if (value.array() == nullptr) {
      all.push_back(&value);
    } else {
      for (const TOMLValue& each : *value.array()) {
        all.push_back(&each);
      }
    }
    return all;
  }

  template <typename Value>
  Value oneOf(const TOMLValue& value,
              std::initializer_list<std::pair<std::string_view, Value>> choices) const {
    const std::string& text = textIn(value);
    std::string known;
    for (const auto& [name, meant] : choices) {
      if (text == name) {
        return meant;
      }
      known += (known.empty() ? "“" : ", “") + std::string(name) + "”";
    }
    fail(value.place(), "“" + text + "” is none of " + known + ".");
  }

  void readKey(const TOMLValue::Entry& entry) {
    const TOMLValue& value = entry.value;
    if (entry.key == "name") {
      profile_.name = textIn(value);
    } else if (entry.key == "sign") {
      profile_.tradesBySignOfAmount = oneOf<bool>(value, {{"amount", true}, {"shares", false}});
    } else if (entry.key == "decimal") {
      const char mark = oneOf<char>(value, {{".", '.'}, {",", ','}, {"either", 'e'}});
      profile_.decimalOfEachCell = mark == 'e';
      if (mark != 'e') {
        profile_.decimal = mark == '.' ? DecimalMark::point : DecimalMark::comma;
      }
    } else if (entry.key == "days") {
      profile_.days = oneOf<DayOrder>(
          value, {{"ymd", DayOrder::ymd}, {"dmy", DayOrder::dmy}, {"mdy", DayOrder::mdy}});
    } else if (entry.key == "rows") {
      profile_.isNewestFirst = oneOf<bool>(value, {{"newest first", true}});
    } else if (entry.key == "charges") {
      profile_.chargesAreNegative = oneOf<bool>(value, {{"negative", true}});
    } else if (entry.key == "round") {
      profile_.roundsAmounts = booleanIn(value);
    } else if (entry.key == "empty") {
      for (const TOMLValue* text : oneOrMore(value)) {
        profile_.emptyTexts.push_back(foldedText(textIn(*text)));
      }
    } else if (entry.key == "currencies") {
      readCurrencies(value);
    } else if (entry.key == "encoding") {
      profile_.encoding = oneOf<TextEncoding>(value, {{"windows-1252", TextEncoding::windowsLatin1},
                                                      {"iso-8859-1", TextEncoding::windowsLatin1},
                                                      {"iso-8859-15", TextEncoding::latin9},
                                                      {"utf-16", TextEncoding::utf16}});
    } else if (entry.key == "symbols") {
      profile_.takesFirstWordOfSymbols = oneOf<bool>(value, {{"first word", true}});
    } else if (entry.key == "continued") {
      profile_.continued = textIn(value);
    } else {
      failUnknownKey(entry);
    }
  }

  void readCurrencies(const TOMLValue& value) {
    for (const auto& entry : tableIn(value)) {
      StatementProfile::CurrencyAlias alias;
      if (entry.value.text() != nullptr) {
        alias.code = textIn(entry.value);
      } else {
        for (const auto& part : tableIn(entry.value)) {
          if (part.key == "code") {
            alias.code = textIn(part.value);
          } else if (part.key == "divide") {
            alias.divide = numberIn(part.value);
          } else {
            failUnknownKey(part);
          }
        }
      }
      if (!Currency::byCode().contains(alias.code)) {
        fail(entry.value.place(), "“" + alias.code + "” is not the code of a currency.");
      }
      profile_.currencies.emplace(entry.key, std::move(alias));
    }
  }

  void readTableKey(const TOMLValue::Entry& entry, StatementTableLayout& table) {
    const TOMLValue& value = entry.value;
    if (entry.key == "heading") {
      table.heading = headingIn(value);
    } else if (entry.key == "fields") {
      table.fields = fieldsIn(tableIn(value));
    } else if (entry.key == "kinds") {
      for (const auto& kind : tableIn(value)) {
        addKind(kind, table);
      }
    } else if (entry.key == "words") {
      table.usesStandardWords = oneOf<bool>(value, {{"standard", true}});
    } else if (entry.key == "kind") {
      table.kind = kindIn(value);
    } else if (entry.key == "text") {
      for (const TOMLValue* rule : oneOrMore(value)) {
        table.text.push_back(textRuleIn(*rule));
      }
    } else if (entry.key == "ignore") {
      for (const TOMLValue* rule : oneOrMore(value)) {
        table.ignore.push_back(rowRuleIn(*rule));
      }
    } else if (entry.key == "only") {
      table.only = rowRuleIn(value);
    } else {
      table.isOptional = booleanIn(value);
    }
  }

  std::vector<std::string> headingIn(const TOMLValue& value) const {
    const std::string& line = textIn(value);
    std::vector<std::string> heading;
    try {
      parseRows(line, CSVDelimiter::guessed(line), 0, 1,
                [&](const CSVRow& row) { heading = row.strings(); });
    } catch (const Error& error) {
      fail(value.place(), error.description().value_or(""));
    }
    for (std::string& cell : heading) {
      cell = trimmedCell(cell);
    }
    if (line.ends_with(',') || line.ends_with(';')) {
      heading.emplace_back();  // a cell without text at the end
    }
    if (heading.empty()) {
      fail(value.place(), "the heading is empty.");
    }
    return heading;
  }

  FieldSources fieldsIn(const TOMLValue::Table& table) {
    FieldSources fields;
    for (const auto& entry : table) {
      if (std::ranges::find(fieldNames, std::string_view(entry.key)) == fieldNames.end()) {
        fail(entry.place, "“" + entry.key + "” is not a field.");
      }
      auto& sources = fields[entry.key];
      for (const TOMLValue* value : oneOrMore(entry.value)) {
        if (value->text() != nullptr && value->text()->empty()) {
          continue;  // none for these rows
        }
        sources.push_back(sourceIn(*value, entry.key));
      }
    }
    return fields;
  }

  FieldSource sourceIn(const TOMLValue& value, const std::string& field) {
    FieldSource source;
    if (value.text() != nullptr) {
      source.column = *value.text();
      columns_.emplace_back(source.column, value.place());
      return source;
    }
    for (const auto& part : tableIn(value)) {
      if (part.key == "value") {
        source.constant = textIn(part.value);
      } else if (part.key == "column") {
        source.column = textIn(part.value);
        columns_.emplace_back(source.column, part.value.place());
      } else if (part.key == "pattern") {
        source.pattern = patternIn(textIn(part.value), part.value.place());
        if (!source.pattern->captures(field)) {
          fail(part.value.place(), "the pattern has no {" + field + "}.");
        }
      } else if (part.key == "times") {
        source.times = numberIn(part.value);
      } else if (part.key == "over") {
        source.over = textIn(part.value);
        columns_.emplace_back(source.over, part.value.place());
      } else {
        failUnknownKey(part);
      }
    }
    return source;
  }

  void addKind(const TOMLValue::Entry& entry, StatementTableLayout& table) {
    KindRule rule{.pattern = patternIn(entry.key, entry.place), .why = {}, .fields = {}};
    if (entry.value.text() != nullptr) {
      rule.kind = kindIn(entry.value);
    } else {
      TOMLValue::Table fields;
      bool hasKind = false;
      for (const auto& part : tableIn(entry.value)) {
        if (part.key == "kind") {
          rule.kind = kindIn(part.value);
          hasKind = true;
        } else if (part.key == "why") {
          rule.why = textIn(part.value);
        } else {
          fields.push_back(part);
        }
      }
      if (!hasKind) {
        fail(entry.place, "“kind” is missing.");
      }
      rule.fields = fieldsIn(fields);
    }
    const std::string folded = foldedText(entry.key);
    if (std::ranges::any_of(table.kinds, [&](const KindRule& other) {
          return foldedText(other.pattern.text()) == folded;
        })) {
      fail(entry.place, "“" + entry.key + "” stands here twice.");
    }
    for (const KindRule& other : table.kinds) {
      if (rule.pattern.hasWildcards() && other.pattern.hasWildcards() &&
          rule.pattern.literalLength() == other.pattern.literalLength() &&
          !haveSameResult(rule, other) && rule.pattern.overlaps(other.pattern)) {
        fail(entry.place, "“" + entry.key + "” and “" + other.pattern.text() +
                              "” fit the same texts equally well.");
      }
    }
    table.kinds.push_back(std::move(rule));
  }

  TextRule textRuleIn(const TOMLValue& value) {
    TextRule rule;
    for (const auto& part : tableIn(value)) {
      if (part.key == "column") {
        rule.column = textIn(part.value);
        columns_.emplace_back(rule.column, part.value.place());
      } else if (part.key == "pattern") {
        rule.pattern = patternIn(textIn(part.value), part.value.place());
      } else {
        failUnknownKey(part);
      }
    }
    return rule;
  }

  RowRule rowRuleIn(const TOMLValue& value) {
    RowRule rule;
    for (const auto& part : tableIn(value)) {
      if (part.key == "why") {
        rule.why = textIn(part.value);
        continue;
      }
      columns_.emplace_back(part.key, part.place);
      auto& patterns = rule.columns.emplace_back(part.key, std::vector<TextPattern>()).second;
      for (const TOMLValue* pattern : oneOrMore(part.value)) {
        patterns.push_back(patternIn(textIn(*pattern), pattern->place()));
      }
    }
    return rule;
  }

  /// Holds what was read against the heading, which may stand behind it in the file.
  void finishTable(const StatementTableLayout& table, TextPlace place) {
    if (table.heading.empty()) {
      fail(place, "“heading” is missing.");
    }
    if (!table.fields.contains("date")) {
      fail(place, "the field “date” is missing.");
    }
    if (!table.kind && table.kinds.empty() && !table.usesStandardWords) {
      fail(place, "“kinds” or “kind” is missing.");
    }
    std::multiset<std::string> headings;
    for (const std::string& cell : table.heading) {
      headings.insert(foldedText(cell));
    }
    for (const auto& [column, where] : columns_) {
      if (column.starts_with('#')) {
        const auto number = Decimal::fromWholeString(column.substr(1));
        if (!number || *number < 1 || *number > static_cast<int>(table.heading.size())) {
          fail(where, "the heading has no column “" + column + "”.");
        }
      } else if (const auto count = headings.count(foldedText(column)); count != 1) {
        fail(where, count == 0 ? "the heading has no column “" + column + "”."
                               : "the heading has “" + column +
                                     "” twice; name it by its number, such as “#3”.");
      }
    }
    columns_.clear();
  }

  std::string path_;
  StatementProfile profile_;
  std::vector<std::pair<std::string, TextPlace>> columns_;  ///< of the table that is being read
};

void addColumns(const FieldSources& fields, std::set<std::string>& columns) {
  for (const auto& [field, sources] : fields) {
    for (const FieldSource& source : sources) {
      columns.insert(source.column);
      columns.insert(source.over);
    }
  }
}

}  // namespace

std::string_view rawValue(StatementKind kind) {
  return std::ranges::find(kindNames, kind, [](const auto& entry) { return entry.second; })->first;
}

bool haveSameResult(const KindRule& left, const KindRule& right) {
  const auto isSame = [](const FieldSource& one, const FieldSource& other) {
    const auto patternOf = [](const FieldSource& source) {
      return source.pattern ? source.pattern->text() : std::string();
    };
    return one.column == other.column && one.constant == other.constant &&
           one.times == other.times && one.over == other.over && patternOf(one) == patternOf(other);
  };
  return left.kind == right.kind && left.why == right.why &&
         std::ranges::equal(left.fields, right.fields, [&](const auto& one, const auto& other) {
           return one.first == other.first && std::ranges::equal(one.second, other.second, isSame);
         });
}

std::optional<StatementKind> statementKindWithRawValue(std::string_view rawValue) {
  const auto* found =
      std::ranges::find(kindNames, rawValue, [](const auto& entry) { return entry.first; });
  return found == kindNames.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> StatementTableLayout::usedColumns() const {
  std::set<std::string> columns;
  addColumns(fields, columns);
  for (const KindRule& rule : kinds) {
    addColumns(rule.fields, columns);
  }
  for (const TextRule& rule : text) {
    columns.insert(rule.column);
  }
  for (const RowRule& rule : ignore) {
    for (const auto& [column, patterns] : rule.columns) {
      columns.insert(column);
    }
  }
  if (only) {
    for (const auto& [column, patterns] : only->columns) {
      columns.insert(column);
    }
  }
  columns.erase("");
  return {columns.begin(), columns.end()};
}

StatementProfile StatementProfile::parse(std::string_view text, std::string id,
                                         const std::string& path) {
  return ProfileReader(std::move(id), path).read(text);
}

}  // namespace corvane
