#include "exchange/statements/statement_file.h"

#include <algorithm>
#include <map>
#include <unordered_set>
#include <utility>

#include "exchange/csv/csv_parser.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/closed_quotes.h"
#include "exchange/strict/statement_error.h"
#include "exchange/strict/statement_text.h"

namespace corvane {
namespace {

/// The score of a heading that is the layout's, cell by cell; others score below.
constexpr int wholeHeading = 1000;
constexpr int leastScore = 600;

/// A line that may be a heading.
struct HeadingLine {
  std::uint32_t number = 0;
  std::size_t offset = 0;
  std::vector<std::string> cells;   ///< trimmed
  std::vector<std::string> folded;  ///< without empty ones at the end
};

std::vector<std::string> foldedHeading(const std::vector<std::string>& cells) {
  std::vector<std::string> folded;
  std::ranges::transform(cells, std::back_inserter(folded),
                         [](const std::string& cell) { return foldedText(cell); });
  while (!folded.empty() && folded.back().empty()) {
    folded.pop_back();
  }
  return folded;
}

std::string_view lineAt(std::string_view text, std::size_t offset) {
  return text.substr(offset, std::min(text.find_first_of("\r\n", offset), text.size()) - offset);
}

/// The lines of `text` that begin with a cell of one of the headings.
std::vector<HeadingLine> headingLines(std::string_view text,
                                      const std::vector<StatementProfile>& profiles) {
  std::unordered_set<std::string> firstCells;
  for (const StatementProfile& profile : profiles) {
    for (const StatementTableLayout& table : profile.tables) {
      for (const std::string& cell : table.heading) {
        firstCells.insert(foldedText(cell));
      }
    }
  }
  std::vector<HeadingLine> found;
  std::uint32_t number = 1;
  for (std::size_t offset = 0; offset < text.size(); ++number) {
    const std::string_view line = lineAt(text, offset);
    std::string_view first = trimmedCell(line.substr(0, line.find_first_of(",;\t")));
    if (first.starts_with('"')) {
      first.remove_prefix(1);
    }
    if (first.ends_with('"')) {
      first.remove_suffix(1);
    }
    if (first.size() < 100 && firstCells.contains(foldedText(first))) {
      HeadingLine heading{.number = number, .offset = offset, .cells = {}, .folded = {}};
      try {
        parseRows(line, CSVDelimiter::guessed(line), 0, 1, [&](const CSVRow& row) {
          for (const std::string_view cell : row) {
            heading.cells.emplace_back(trimmedCell(cell));
          }
        });
        heading.folded = foldedHeading(heading.cells);
        found.push_back(std::move(heading));
      } catch (const CSVParseError&) {
        // Stray quotes are common above tables.
      }
    }
    offset += line.size();
    offset += text.substr(offset).starts_with("\r\n") ? 2 : 1;
  }
  return found;
}

/// 1000 for the layout's own heading, else the thousandths of headings in common; 0 where a column
/// is missing that the layout uses.
int scoreOf(const StatementTableLayout& layout, const HeadingLine& line) {
  const std::vector<std::string> wanted = foldedHeading(layout.heading);
  if (wanted == line.folded) {
    return wholeHeading;
  }
  for (const std::string& column : layout.usedColumns()) {
    if (column.starts_with('#')) {
      return 0;  // columns by number are those of the whole heading alone
    }
    if (std::ranges::count(line.folded, foldedText(column)) != 1) {
      return 0;
    }
  }
  const std::unordered_set<std::string> all(wanted.begin(), wanted.end());
  std::unordered_set<std::string> either(line.folded.begin(), line.folded.end());
  const auto common =
      std::ranges::count_if(all, [&](const std::string& cell) { return either.contains(cell); });
  either.insert(all.begin(), all.end());
  return std::min(wholeHeading - 1,
                  static_cast<int>(common * wholeHeading / static_cast<long>(either.size())));
}

/// A layout held against a file: the best heading of each table.
struct Candidate {
  const StatementProfile* profile = nullptr;
  int score = 0;
  std::map<std::size_t, const HeadingLine*> headings;  ///< by table
  std::map<std::uint32_t, std::size_t> tablesByLine;
};

Candidate candidateOf(const StatementProfile& profile, const std::vector<HeadingLine>& lines) {
  Candidate candidate{
      .profile = &profile, .score = wholeHeading, .headings = {}, .tablesByLine = {}};
  for (std::size_t table = 0; table < profile.tables.size(); ++table) {
    int best = 0;
    for (const HeadingLine& line : lines) {
      const int score = scoreOf(profile.tables[table], line);
      if (score >= leastScore) {
        candidate.tablesByLine.emplace(line.number, table);
      }
      if (score > best) {
        best = score;
        candidate.headings[table] = &line;
      }
    }
    if (best < leastScore) {
      candidate.headings.erase(table);
      if (!profile.tables[table].isOptional) {
        candidate.score = 0;
      }
    } else {
      candidate.score = std::min(candidate.score, best);
    }
  }
  if (candidate.headings.empty()) {
    candidate.score = 0;
  }
  return candidate;
}

/// The columns that the file lacks of the layout which comes nearest to it.
std::string nearestText(const std::vector<StatementProfile>& profiles,
                        const std::vector<HeadingLine>& lines) {
  std::string text;
  std::size_t fewest = SIZE_MAX;
  for (const StatementProfile& profile : profiles) {
    const StatementTableLayout& table = profile.tables.front();
    const auto columns = table.usedColumns();
    for (const HeadingLine& line : lines) {
      std::vector<std::string> missing;
      for (const std::string& column : columns) {
        if (!column.starts_with('#') &&
            std::ranges::find(line.folded, foldedText(column)) == line.folded.end()) {
          missing.push_back(column);
        }
      }
      if (missing.size() < fewest && missing.size() * 2 <= columns.size() && !missing.empty()) {
        fewest = missing.size();
        text = " Nearest: “" + profile.name + "”, which lacks ";
        for (std::size_t i = 0; i < missing.size(); ++i) {
          text += (i == 0 ? "“" : ", “") + missing[i] + "”";
        }
        text += ".";
      }
    }
  }
  return text;
}

Candidate recognised(const std::vector<StatementProfile>& profiles,
                     const std::vector<HeadingLine>& lines,
                     const std::optional<std::string>& profileId) {
  std::vector<Candidate> best;
  for (const StatementProfile& profile : profiles) {
    if (profileId && profile.id != *profileId) {
      continue;
    }
    Candidate candidate = candidateOf(profile, lines);
    if (candidate.score == 0) {
      continue;
    }
    if (!best.empty() && candidate.score > best.front().score) {
      best.clear();
    }
    if (best.empty() || candidate.score == best.front().score) {
      best.push_back(std::move(candidate));
    }
  }
  // Of layouts with the same heading the one that reads more tables of the file is meant.
  std::ranges::stable_sort(best, std::greater<>(),
                           [](const Candidate& candidate) { return candidate.headings.size(); });
  if (best.size() > 1 && best[0].headings.size() == best[1].headings.size()) {
    throw StatementError(
        0, "",
        "This file fits “" + best[0].profile->name + "” and “" + best[1].profile->name + "”.",
        "Say which with --profile.");
  }
  if (best.empty()) {
    throw StatementError(0, "", "No known layout fits this file.",
                         "Place the columns yourself (--fields), or name a layout (--profile)." +
                             nearestText(profiles, lines));
  }
  return std::move(best.front());
}

/// "“A”, “B”": the texts of `all` that `others` lacks.
std::string namesMissingIn(const std::vector<std::string>& others,
                           const std::vector<std::string>& all) {
  std::string names;
  for (const std::string& name : all) {
    const std::string folded = foldedText(name);
    if (!folded.empty() && std::ranges::none_of(others, [&](const std::string& other) {
          return foldedText(other) == folded;
        })) {
      names += (names.empty() ? "“" : ", “") + name + "”";
    }
  }
  return names;
}

/// By which lines the file was recognised, and what is new or missing in them.
std::vector<std::string> remarksOn(const Candidate& candidate) {
  std::vector<std::string> remarks;
  for (const auto& [table, heading] : candidate.headings) {
    const std::vector<std::string>& known = candidate.profile->tables[table].heading;
    const std::string line = std::to_string(heading->number);
    const std::string added = namesMissingIn(known, heading->cells);
    const std::string gone = namesMissingIn(heading->cells, known);
    if (added.empty() && gone.empty()) {
      remarks.push_back("Line " + line + " has the headings of the layout.");
      continue;
    }
    std::string text = "Line " + line + " has the headings that the layout needs";
    text += gone.empty() ? "" : ", but not " + gone;
    text += added.empty() ? "." : "; it does not know " + added + ".";
    remarks.push_back(std::move(text));
  }
  return remarks;
}

bool matchesRule(const RowRule& rule, const StatementTable& table,
                 const std::vector<std::string>& cells) {
  return std::ranges::all_of(rule.columns, [&](const auto& entry) {
    const auto column = table.column(entry.first);
    const std::string_view cell =
        column && *column < cells.size() ? std::string_view(cells[*column]) : std::string_view();
    return std::ranges::any_of(
        entry.second, [&](const TextPattern& pattern) { return pattern.match(cell).has_value(); });
  });
}

/// Puts the rows of a file under the headings that they stand below.
class RowSorter {
 public:
  RowSorter(StatementFile& file, const Candidate& candidate) : file_(file), candidate_(candidate) {
    std::size_t place = 0;
    for (const auto& [table, heading] : candidate.headings) {
      file.tables.emplace_back(candidate.profile->tables[table], heading->cells);
      places_.emplace(table, place);
      ++place;
    }
  }

  void take(std::uint32_t line, const CSVRow& row) {
    std::vector<std::string> cells;
    for (const std::string_view cell : row) {
      const std::string_view text = trimmedCell(cell);
      const bool isEmpty =
          !text.empty() && std::ranges::find(file_.profile->emptyTexts, foldedText(text)) !=
                               file_.profile->emptyTexts.end();
      cells.emplace_back(isEmpty ? std::string_view() : text);
    }
    while (!cells.empty() && cells.back().empty()) {
      cells.pop_back();
    }
    if (cells.empty()) {
      return;
    }
    if (const auto heading = candidate_.tablesByLine.find(line);
        heading != candidate_.tablesByLine.end() && places_.contains(heading->second)) {
      open(places_.at(heading->second));
      return;
    }
    const auto table = tableOf(cells);
    if (!table) {
      file_.apart.push_back(rowApart(line, "it belongs to no table that is read"));
      return;
    }
    if (continuesLastRow(*table, cells)) {
      return;
    }
    const std::size_t width = file_.tables[*table].width();
    if (cells.size() > width) {
      StatementRow refused =
          rowApart(line, std::to_string(cells.size()) + " cells, but the heading has " +
                             std::to_string(width) + ".");
      refused.verdict = RowVerdict::refused;
      if (!hasDay(*table, cells)) {
        dayless_.push_back(file_.apart.size());
      }
      file_.apart.push_back(std::move(refused));
      return;
    }
    lastDay_ = hasDay(*table, cells) ? line : lastDay_;
    cells.resize(width);
    for (const RowRule& rule : file_.tables[*table].layout().ignore) {
      if (matchesRule(rule, file_.tables[*table], cells)) {
        file_.apart.push_back(
            rowApart(line, rule.why.empty() ? "the layout leaves it out" : rule.why));
        return;
      }
    }
    file_.rows.push_back({line, *table, std::move(cells)});
  }

  /// To be called behind the last row: rows without a day at the end are below the table, however
  /// many cells they have.
  void finish() {
    for (const std::size_t place : dayless_) {
      if (file_.apart[place].line > lastDay_) {
        file_.apart[place] = rowApart(file_.apart[place].line, "below the table");
      }
    }
  }

 private:
  static StatementRow rowApart(std::uint32_t line, std::string reason) {
    StatementRow row;
    row.line = line;
    row.verdict = RowVerdict::leftOut;
    row.reason = std::move(reason);
    return row;
  }

  [[nodiscard]] bool hasDay(std::size_t table, const std::vector<std::string>& cells) const {
    const auto& fields = file_.tables[table].layout().fields;
    const auto date = fields.find("date");
    return date != fields.end() &&
           std::ranges::any_of(date->second, [&](const FieldSource& source) {
             const auto column = file_.tables[table].column(source.column);
             return column && *column < cells.size() &&
                    cells[*column].find_first_of("0123456789") != std::string::npos;
           });
  }

  void open(std::size_t table) {
    if (file_.tables[table].layout().only) {
      open_.push_back(table);
    } else {
      current_ = table;
    }
  }

  [[nodiscard]] std::optional<std::size_t> tableOf(const std::vector<std::string>& cells) const {
    for (const std::size_t table : open_) {
      if (matchesRule(*file_.tables[table].layout().only, file_.tables[table], cells)) {
        return table;
      }
    }
    return current_;
  }

  /// A cell that went on in a line of its own is put together.
  bool continuesLastRow(std::size_t table, const std::vector<std::string>& cells) {
    if (file_.profile->continued.empty() || file_.rows.empty()) {
      return false;
    }
    const auto column = file_.tables[table].column(file_.profile->continued);
    if (!column || *column >= cells.size() || cells[*column].empty()) {
      return false;
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (i != *column && !cells[i].empty()) {
        return false;
      }
    }
    file_.rows.back().cells[*column] += cells[*column];
    return true;
  }

  StatementFile& file_;
  const Candidate& candidate_;
  std::map<std::size_t, std::size_t> places_;  ///< of the layout's tables among the file's
  std::vector<std::size_t> open_;
  std::optional<std::size_t> current_;
  std::vector<std::size_t> dayless_;  ///< rows that are too long and have no day
  std::uint32_t lastDay_ = 0;         ///< the last line with a day
};

}  // namespace

std::string_view displayName(RowVerdict verdict) {
  switch (verdict) {
    case RowVerdict::isNew:
      return "new";
    case RowVerdict::present:
      return "already there";
    case RowVerdict::perhapsPresent:
      return "perhaps already there";
    case RowVerdict::leftOut:
      return "left out";
    case RowVerdict::belongs:
      return "belongs";
    case RowVerdict::asks:
      return "asks";
    case RowVerdict::refused:
      return "refused";
    case RowVerdict::ledgerRefuses:
      break;
  }
  return "the ledger refuses";
}

StatementTable::StatementTable(const StatementTableLayout& layout,
                               const std::vector<std::string>& heading)
    : layout_(&layout), width_(std::max(heading.size(), layout.heading.size())) {
  for (std::size_t i = 0; i < heading.size(); ++i) {
    columns_.emplace(foldedText(heading[i]), i);
    columns_.emplace("#" + std::to_string(i + 1), i);
  }
  for (std::size_t i = heading.size(); i < width_; ++i) {
    columns_.emplace("#" + std::to_string(i + 1), i);
  }
  // As the layout writes them, so that a look-up need not fold.
  for (const std::string& name : layout.usedColumns()) {
    if (const auto found = columns_.find(foldedText(name)); found != columns_.end()) {
      columns_.emplace(name, found->second);
    }
  }
}

std::optional<std::size_t> StatementTable::column(std::string_view name) const {
  const auto found = columns_.find(std::string(name));
  return found == columns_.end() ? std::nullopt : std::optional(found->second);
}

StatementFile StatementFile::read(const std::string& bytes,
                                  const std::vector<StatementProfile>& profiles,
                                  const std::optional<std::string>& profileId) {
  if (profileId &&
      std::ranges::find(profiles, *profileId, &StatementProfile::id) == profiles.end()) {
    throw StatementError(0, "", "There is no layout “" + *profileId + "”.");
  }
  StatementText decoded = decodedStatement(bytes);
  Candidate candidate;
  std::vector<HeadingLine> lines;
  for (int attempt = 0;; ++attempt) {
    lines = headingLines(decoded.text, profiles);
    candidate = recognised(profiles, lines, profileId);
    // The layout knows best which of the single-byte encodings its bank writes.
    if (attempt > 0 || decoded.encoding != TextEncoding::windowsLatin1 ||
        candidate.profile->encoding == TextEncoding::windowsLatin1) {
      break;
    }
    decoded = decodedStatement(bytes, candidate.profile->encoding);
  }
  StatementFile file;
  file.profile = candidate.profile;
  file.encoding = decoded.encoding;
  file.remarks = remarksOn(candidate);
  const HeadingLine* first = nullptr;
  for (const auto& [table, heading] : candidate.headings) {
    first = first == nullptr || heading->number < first->number ? heading : first;
  }
  RowSorter sorter(file, candidate);
  const std::string_view text = std::string_view(decoded.text).substr(first->offset);
  const auto unclosed =
      parseRows(text, CSVDelimiter::guessed(lineAt(text, 0)), 0, std::nullopt,
                [&](const CSVRow& row) { sorter.take(row.line() + first->number - 1, row); });
  sorter.finish();
  requireClosedQuotes(decoded.text,
                      unclosed ? std::optional(*unclosed + first->offset) : std::nullopt);
  return file;
}

}  // namespace corvane
