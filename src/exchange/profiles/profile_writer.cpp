#include "exchange/profiles/profile_writer.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "exchange/profiles/profile_error.h"
#include "exchange/strict/cell_text.h"
#include "platform/data/toml.h"
#include "platform/system/file_manager.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

std::string inQuotes(std::string_view text) {
  std::string written = "\"";
  for (const char character : text) {
    switch (character) {
      case '"':
      case '\\':
        written += '\\';
        written += character;
        break;
      case '\t':
        written += "\\t";
        break;
      case '\n':
        written += "\\n";
        break;
      case '\r':
        written += "\\r";
        break;
      default:
        written += character;
    }
  }
  return written + "\"";
}

template <typename Items, typename Write>
std::string listed(const Items& items, std::string_view open, std::string_view close, Write write) {
  std::string text(open);
  bool isFirst = true;
  for (const auto& item : items) {
    text += std::exchange(isFirst, false) ? "" : ", ";
    text += write(item);
  }
  return text + std::string(close);
}

std::string patternsText(const std::vector<TextPattern>& patterns) {
  const auto write = [](const TextPattern& pattern) { return inQuotes(pattern.text()); };
  return patterns.size() == 1 ? write(patterns.front()) : listed(patterns, "[", "]", write);
}

/// The line of a heading, with the cells in quotes that a reader would cut.
std::string headingText(const std::vector<std::string>& heading) {
  std::string line;
  for (std::size_t i = 0; i < heading.size(); ++i) {
    const std::string& cell = heading[i];
    line += i == 0 ? "" : ",";
    if (cell.find_first_of(",;\t\"\r\n") == std::string::npos) {
      line += cell;
      continue;
    }
    line += '"';
    for (const char character : cell) {
      line += character == '"' ? "\"\"" : std::string(1, character);
    }
    line += '"';
  }
  return inQuotes(line);
}

std::string sourceText(const FieldSource& source) {
  if (source.column.empty()) {
    return "{ value = " + inQuotes(source.constant) + " }";
  }
  if (!source.pattern && source.times == Decimal(1) && source.over.empty()) {
    return inQuotes(source.column);
  }
  std::string text = "{ column = " + inQuotes(source.column);
  text += source.pattern ? ", pattern = " + inQuotes(source.pattern->text()) : "";
  text += source.times == Decimal(1) ? "" : ", times = " + inQuotes(source.times.description());
  text += source.over.empty() ? "" : ", over = " + inQuotes(source.over);
  return text + " }";
}

std::string fieldText(const std::pair<const std::string, std::vector<FieldSource>>& field) {
  const auto& [name, sources] = field;
  const std::string text = name + " = ";
  if (sources.empty()) {
    return text + "\"\"";
  }
  return text + (sources.size() == 1 ? sourceText(sources.front())
                                     : listed(sources, "[", "]", sourceText));
}

std::string kindText(const KindRule& rule) {
  std::string text = inQuotes(rule.pattern.text()) + " = ";
  const std::string kind = inQuotes(rawValue(rule.kind));
  if (rule.why.empty() && rule.fields.empty()) {
    return text + kind;
  }
  text += "{ kind = " + kind;
  text += rule.why.empty() ? "" : ", why = " + inQuotes(rule.why);
  for (const auto& field : rule.fields) {
    text += ", " + fieldText(field);
  }
  return text + " }";
}

std::string rowRuleText(const RowRule& rule) {
  std::string text = listed(rule.columns, "{ ", "", [](const auto& entry) {
    return inQuotes(entry.first) + " = " + patternsText(entry.second);
  });
  text += rule.why.empty() ? "" : ", why = " + inQuotes(rule.why);
  return text + " }";
}

std::string tableText(const StatementTableLayout& table) {
  std::string text = "heading = " + headingText(table.heading) + "\n";
  if (table.kind) {
    text += "kind = " + inQuotes(rawValue(*table.kind)) + "\n";
  }
  text += table.usesStandardWords ? "words = \"standard\"\n" : "";
  text += table.isOptional ? "optional = true\n" : "";
  if (!table.text.empty()) {
    text += "text = " + listed(table.text, "[", "]\n", [](const TextRule& rule) {
              return "{ column = " + inQuotes(rule.column) +
                     ", pattern = " + inQuotes(rule.pattern.text()) + " }";
            });
  }
  if (!table.ignore.empty()) {
    text += "ignore = " + listed(table.ignore, "[", "]\n", rowRuleText);
  }
  text += table.only ? "only = " + rowRuleText(*table.only) + "\n" : "";
  return text + "fields = " + listed(table.fields, "{ ", " }\n", fieldText);
}

std::string encodingText(TextEncoding encoding) {
  switch (encoding) {
    case TextEncoding::latin9:
      return "encoding = \"iso-8859-15\"\n";
    case TextEncoding::utf16:
      return "encoding = \"utf-16\"\n";
    case TextEncoding::utf8:
    case TextEncoding::windowsLatin1:
      break;
  }
  return "";  // what is supposed anyway
}

std::string readingText(const StatementProfile& profile) {
  std::string text;
  text += profile.tradesBySignOfAmount ? "sign = \"amount\"\n" : "";
  if (profile.decimalOfEachCell) {
    text += "decimal = \"either\"\n";
  } else if (profile.decimal) {
    text += *profile.decimal == DecimalMark::point ? "decimal = \".\"\n" : "decimal = \",\"\n";
  }
  if (profile.days) {
    text += "days = " + inQuotes(rawValue(*profile.days)) + "\n";
  }
  text += profile.isNewestFirst ? "rows = \"newest first\"\n" : "";
  text += profile.chargesAreNegative ? "charges = \"negative\"\n" : "";
  text += profile.roundsAmounts ? "round = true\n" : "";
  text += profile.takesFirstWordOfSymbols ? "symbols = \"first word\"\n" : "";
  if (!profile.emptyTexts.empty()) {
    text += "empty = " + listed(profile.emptyTexts, "[", "]\n", inQuotes);
  }
  if (!profile.currencies.empty()) {
    text += "currencies = " + listed(profile.currencies, "{ ", " }\n", [](const auto& entry) {
              return inQuotes(entry.first) + " = { code = " + inQuotes(entry.second.code) +
                     ", divide = " + inQuotes(entry.second.divide.description()) + " }";
            });
  }
  text += encodingText(profile.encoding);
  text += profile.continued.empty() ? "" : "continued = " + inQuotes(profile.continued) + "\n";
  return text;
}

/// `text` with `line` behind the line of the key `key`, which stands at the top.
std::string withLineBehind(const std::string& text, std::string_view key, const std::string& line) {
  const TOMLValue document = TOMLValue::parse(text);
  std::size_t end = 0;
  for (const auto& entry : *document.table()) {
    if (entry.key == key) {
      for (std::uint32_t i = 0; i < entry.place.line && end < text.size(); ++i) {
        end = std::min(text.find('\n', end), text.size() - 1) + 1;
      }
    }
  }
  return text.substr(0, end) + line + "\n" + text.substr(end);
}

/// `text` with further lines below its line "[kinds]", or with such a part at its end.
std::string withKinds(const std::string& text,
                      const std::map<std::string, StatementKind, std::less<>>& kinds) {
  std::string lines;
  for (const auto& [word, kind] : kinds) {
    lines += inQuotes(word) + " = " + inQuotes(rawValue(kind)) + "\n";
  }
  const std::string header = "[kinds]";
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    if (trimmedCell(std::string_view(text).substr(start, end - start)) == header) {
      return text.substr(0, end) + "\n" + lines + text.substr(std::min(end + 1, text.size()));
    }
    start = end + 1;
  }
  return text + (text.ends_with('\n') ? "" : "\n") + header + "\n" + lines;
}

bool hasKinds(const StatementProfile& profile, const LearnedAnswers& answers) {
  return std::ranges::all_of(answers.kinds, [&](const auto& answer) {
    return std::ranges::any_of(profile.tables, [&](const StatementTableLayout& table) {
      return std::ranges::any_of(table.kinds, [&](const KindRule& rule) {
        return foldedText(rule.pattern.text()) == foldedText(answer.first) &&
               rule.kind == answer.second;
      });
    });
  });
}

/// The layout with the answers, written anew.
std::string rewritten(StatementProfile profile, const LearnedAnswers& answers) {
  profile.days = profile.days ? profile.days : answers.days;
  if (!profile.decimalOfEachCell && !profile.decimal) {
    profile.decimal = answers.decimal;
  }
  const bool haveKinds = std::ranges::any_of(
      profile.tables, [](const StatementTableLayout& table) { return !table.kinds.empty(); });
  for (const auto& [word, kind] : answers.kinds) {
    for (StatementTableLayout& table : profile.tables) {
      if (!haveKinds || !table.kinds.empty()) {
        std::erase_if(table.kinds, [&](const KindRule& rule) {
          return foldedText(rule.pattern.text()) == foldedText(word);
        });
        table.kinds.push_back(
            {.pattern = *TextPattern::read(word), .kind = kind, .why = {}, .fields = {}});
      }
    }
  }
  return profileText(profile);
}

/// "my-bank-transactions", of a layout's name.
std::string fileNameOf(const std::string& name) {
  std::string id;
  for (const char character : foldedText(name)) {
    const bool isPlain =
        (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
    if (isPlain) {
      id += character;
    } else if (!id.empty() && !id.ends_with('-')) {
      id += '-';
    }
  }
  while (id.ends_with('-')) {
    id.pop_back();
  }
  return id.empty() ? "layout" : id;
}

}  // namespace

std::string profileText(const StatementProfile& profile) {
  std::string text = "name = " + inQuotes(profile.name) + "\n" + readingText(profile);
  const auto kindLines = [](const StatementTableLayout& table) {
    std::string lines;
    for (const KindRule& rule : table.kinds) {
      lines += kindText(rule) + "\n";
    }
    return lines;
  };
  if (profile.tables.size() == 1) {
    const StatementTableLayout& table = profile.tables.front();
    text += tableText(table);
    return table.kinds.empty() ? text : text + "[kinds]\n" + kindLines(table);
  }
  for (const StatementTableLayout& table : profile.tables) {
    text += "[[table]]\n" + tableText(table);
    text += table.kinds.empty() ? "" : "[table.kinds]\n" + kindLines(table);
  }
  return text;
}

std::string profileTextWith(std::string_view text, const LearnedAnswers& answers) {
  const std::string path = "the layout";
  const StatementProfile before = StatementProfile::parse(text, "learned", path);
  LearnedAnswers wanted = answers;
  // A word with braces is no pattern, and cannot be kept.
  std::erase_if(wanted.kinds, [](const auto& kind) { return !TextPattern::read(kind.first); });
  std::string with(text);
  if (wanted.days && !before.days) {
    with = withLineBehind(with, "name", "days = " + inQuotes(rawValue(*wanted.days)));
  }
  if (wanted.decimal && !before.decimal && !before.decimalOfEachCell) {
    with = withLineBehind(
        with, "name",
        *wanted.decimal == DecimalMark::point ? "decimal = \".\"" : "decimal = \",\"");
  }
  if (wanted.kinds.empty()) {
    return with;
  }
  if (before.tables.size() == 1) {
    with = withKinds(with, wanted.kinds);
    try {
      if (hasKinds(StatementProfile::parse(with, "learned", path), wanted)) {
        return with;
      }
    } catch (const ProfileError&) {
      // The words stand in a table in braces, or one stands there already.
    }
  }
  return rewritten(before, wanted);
}

fs::path learnAnswers(const std::string& id, const LearnedAnswers& answers, const fs::path& shipped,
                      const fs::path& folder) {
  const std::string name = id + ".toml";
  std::error_code ignored;
  const fs::path own = folder / name;
  const std::string text = files::read(fs::exists(own, ignored) ? own : shipped / name);
  const std::string with = profileTextWith(text, answers);
  fs::create_directories(folder, ignored);
  files::writeAtomically(own, with);
  return own;
}

StatementProfile learnedProfile(const std::string& name, const std::vector<std::string>& heading,
                                const std::vector<std::string>& fieldOrder) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 12> names = {{
      {"type", "type"},
      {"tradeDate", "date"},
      {"settlementDate", "settle"},
      {"symbol", "symbol"},
      {"numberOfShares", "shares"},
      {"sharesNet", "shares-after"},
      {"cashAmount", "amount"},
      {"cashCurrency", "currency"},
      {"exchangeRate", "rate"},
      {"equivalentAmount", "equivalent"},
      {"costBaseAdded", "cost"},
      {"note", "note"},
  }};
  StatementProfile profile;
  profile.id = fileNameOf(name);
  profile.name = name;
  profile.takesFirstWordOfSymbols = true;
  StatementTableLayout& table = profile.tables.emplace_back();
  table.heading = heading;
  table.usesStandardWords = true;
  for (std::size_t i = 0; i < std::min(heading.size(), fieldOrder.size()); ++i) {
    const auto* found = std::ranges::find(names, std::string_view(fieldOrder[i]),
                                          [](const auto& entry) { return entry.first; });
    if (found == names.end()) {
      continue;
    }
    const auto alike = std::ranges::count_if(heading, [&](const std::string& cell) {
      return foldedText(cell) == foldedText(heading[i]);
    });
    FieldSource source;
    source.column = alike == 1 && !heading[i].empty() && !heading[i].starts_with('#')
                        ? heading[i]
                        : "#" + std::to_string(i + 1);
    table.fields[std::string(found->second)].push_back(std::move(source));
  }
  if (const auto settle = table.fields.find("settle");
      settle != table.fields.end() && !table.fields.contains("date")) {
    auto date = table.fields.extract(settle);
    date.key() = "date";
    table.fields.insert(std::move(date));
  }
  return profile;
}

fs::path rememberProfile(const StatementProfile& profile, const fs::path& folder) {
  const std::string text = profileText(profile);
  fs::path file = folder / (profile.id + ".toml");
  std::error_code ignored;
  for (int number = 2; fs::exists(file, ignored); ++number) {
    file = folder / (profile.id + "-" + std::to_string(number) + ".toml");
  }
  (void)StatementProfile::parse(text, profile.id, file.filename().string());
  fs::create_directories(folder, ignored);
  files::writeAtomically(file, text);
  return file;
}

}  // namespace corvane
