#include "exchange/reading/statement_file.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <unordered_set>
#include <utility>

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

/// The letters that cells of headings begin with. Most lines of a file begin with none of them.
class FirstLetters {
 public:
  explicit FirstLetters(const std::unordered_set<std::string>& foldedCells) {
    for (const std::string& cell : foldedCells) {
      if (!cell.empty()) {
        isFirst_[static_cast<unsigned char>(cell.front())] = true;
      }
    }
  }

  /// False where `line` begins with a letter of ASCII, quoted or not, that is none of them.
  [[nodiscard]] bool mayBegin(std::string_view line) const {
    line.remove_prefix(line.starts_with('"') ? 1 : 0);
    if (line.empty() || line.front() <= ' ' || line.front() == '"' || line.front() == 0x7F) {
      return true;  // also where it begins with a letter beyond ASCII, whose bytes are negative
    }
    const char first = line.front();
    const bool isCapital = first >= 'A' && first <= 'Z';
    return isFirst_[static_cast<unsigned char>(isCapital ? first + ('a' - 'A') : first)] ||
           first == ',' || first == ';';
  }

 private:
  std::array<bool, 256> isFirst_{};
};

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
  const FirstLetters letters(firstCells);
  std::vector<HeadingLine> found;
  std::uint32_t number = 1;
  for (std::size_t offset = 0; offset < text.size(); ++number) {
    const std::string_view line = lineAt(text, offset);
    if (!letters.mayBegin(line)) {
      offset += line.size();
      offset += text.substr(offset).starts_with("\r\n") ? 2 : 1;
      continue;
    }
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
                 const std::vector<std::string_view>& cells) {
  return std::ranges::all_of(rule.columns, [&](const auto& entry) {
    const auto column = table.column(entry.first);
    const std::string_view cell =
        column && *column < cells.size() ? cells[*column] : std::string_view();
    return std::ranges::any_of(
        entry.second, [&](const TextPattern& pattern) { return pattern.match(cell).has_value(); });
  });
}

/// Finds where the rows of a file stand, and under which headings.
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

  /// Takes the row that starts at `offset`.
  void take(std::size_t offset, const CSVRow& row) {
    StatementCells::trim(row, *file_.profile, cells_);
    if (cells_.empty()) {
      return;
    }
    const std::uint32_t line = row.line();
    if (const auto heading = candidate_.tablesByLine.find(line);
        heading != candidate_.tablesByLine.end() && places_.contains(heading->second)) {
      open(places_.at(heading->second));
      return;
    }
    const auto table = tableOf();
    if (!table) {
      file_.apart.addApart(line, RowVerdict::leftOut, "it belongs to no table that is read");
      isLastRowKept_ = false;
      return;
    }
    if (continuesLastRow(*table)) {
      return;
    }
    isLastRowKept_ = false;
    const std::size_t width = file_.tables[*table].width();
    const bool isDated = hasDay(*table);
    if (cells_.size() > width) {
      if (!isDated) {
        dayless_.push_back(file_.apart.size());
      }
      file_.apart.addApart(line, RowVerdict::refused,
                           std::to_string(cells_.size()) + " cells, but the heading has " +
                               std::to_string(width) + ".");
      return;
    }
    lastDay_ = isDated ? line : lastDay_;
    for (const RowRule& rule : file_.tables[*table].layout().ignore) {
      if (matchesRule(rule, file_.tables[*table], cells_)) {
        file_.apart.addApart(
            line, RowVerdict::leftOut,
            rule.why.empty() ? std::string_view("the layout leaves it out") : rule.why);
        return;
      }
    }
    file_.rows.push_back({.offset = static_cast<std::uint32_t>(offset),
                          .line = line,
                          .table = static_cast<std::uint16_t>(*table),
                          .continuations = 0});
    isLastRowKept_ = true;
  }

  /// To be called behind the last row: rows without a day at the end are below the table, however
  /// many cells they have.
  void finish() {
    for (const std::size_t place : dayless_) {
      if (file_.apart.line(place) > lastDay_) {
        file_.apart.stop(place, {.verdict = RowVerdict::leftOut, .reason = "below the table"});
      }
    }
    file_.rows.shrink_to_fit();
  }

 private:
  [[nodiscard]] bool hasDay(std::size_t table) const {
    const auto& sources =
        file_.tables[table].plan().sources[static_cast<std::size_t>(RowField::date)];
    return std::ranges::any_of(sources, [&](const StatementTable::Source& source) {
      return source.column && *source.column < cells_.size() &&
             cells_[*source.column].find_first_of("0123456789") != std::string_view::npos;
    });
  }

  void open(std::size_t table) {
    if (file_.tables[table].layout().only) {
      open_.push_back(table);
    } else {
      current_ = table;
    }
    isLastRowKept_ = false;
  }

  [[nodiscard]] std::optional<std::size_t> tableOf() const {
    for (const std::size_t table : open_) {
      if (matchesRule(*file_.tables[table].layout().only, file_.tables[table], cells_)) {
        return table;
      }
    }
    return current_;
  }

  /// A cell that went on in a line of its own belongs to the row before, or to none where that is
  /// left out.
  bool continuesLastRow(std::size_t table) {
    if (!StatementCells::continuedColumn(*file_.profile, file_.tables[table], cells_)) {
      return false;
    }
    if (isLastRowKept_ &&
        file_.rows.back().continuations < std::numeric_limits<std::uint16_t>::max()) {
      ++file_.rows.back().continuations;
    }
    return !file_.rows.empty();
  }

  StatementFile& file_;
  const Candidate& candidate_;
  std::map<std::size_t, std::size_t> places_;  ///< of the layout's tables among the file's
  std::vector<std::string_view> cells_;        ///< of the row that is taken
  std::vector<std::size_t> open_;
  std::optional<std::size_t> current_;
  std::vector<std::size_t> dayless_;  ///< rows that are too long and have no day
  std::uint32_t lastDay_ = 0;         ///< the last line with a day
  bool isLastRowKept_ = false;
};

/// Decodes `bytes` for `file`, as far as need be.
void setText(StatementFile& file, std::string_view bytes, TextEncoding otherwise) {
  if (const auto plain = plainStatement(bytes)) {
    file.text = *plain;
    file.encoding = TextEncoding::utf8;
    return;
  }
  StatementText decoded = decodedStatement(bytes, otherwise);
  file.decoded = std::make_unique<const std::string>(std::move(decoded.text));
  file.text = *file.decoded;
  file.encoding = decoded.encoding;
}

}  // namespace

StatementFile StatementFile::read(std::string_view bytes,
                                  const std::vector<StatementProfile>& profiles,
                                  const std::optional<std::string>& profileId,
                                  const ProgressHandler& progress) {
  if (profileId &&
      std::ranges::find(profiles, *profileId, &StatementProfile::id) == profiles.end()) {
    throw StatementError(0, "", "There is no layout “" + *profileId + "”.");
  }
  StatementFile file;
  setText(file, bytes, TextEncoding::windowsLatin1);
  Candidate candidate;
  std::vector<HeadingLine> lines;
  for (int attempt = 0;; ++attempt) {
    lines = headingLines(file.text, profiles);
    candidate = recognised(profiles, lines, profileId);
    // The layout knows best which of the single-byte encodings its bank writes.
    if (attempt > 0 || file.encoding != TextEncoding::windowsLatin1 ||
        candidate.profile->encoding == TextEncoding::windowsLatin1) {
      break;
    }
    setText(file, bytes, candidate.profile->encoding);
  }
  file.profile = candidate.profile;
  file.remarks = remarksOn(candidate);
  const HeadingLine* first = nullptr;
  for (const auto& [table, heading] : candidate.headings) {
    first = first == nullptr || heading->number < first->number ? heading : first;
  }
  file.delimiter = CSVDelimiter::guessed(lineAt(file.text, first->offset));
  RowSorter sorter(file, candidate);
  CSVRowReader reader(file.text, file.delimiter);
  reader.moveTo(first->offset, first->number);
  constexpr std::size_t rowsOfUpdate = 4096;
  std::size_t offset = first->offset;
  std::size_t lastOffset = offset;
  for (std::size_t count = 0; const auto row = reader.next(); ++count) {
    sorter.take(offset, *row);
    lastOffset = offset;
    offset = reader.position();
    if (progress && count % rowsOfUpdate == 0) {
      progress(static_cast<double>(offset) / static_cast<double>(file.text.size()));
    }
  }
  sorter.finish();
  // Below a table stray quotes do no harm; in its last row they tell that the file was cut off.
  const bool endsInRow = !file.rows.empty() && file.rows.back().offset == lastOffset;
  requireClosedQuotes(file.text, reader.unclosedQuote(), endsInRow);
  return file;
}

StatementCells::StatementCells(const StatementFile& file)
    : file_(file), reader_(file.text, file.delimiter) {}

void StatementCells::trim(const CSVRow& row, const StatementProfile& profile,
                          std::vector<std::string_view>& cells) {
  cells.clear();
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::string_view text = trimmedCell(row[i]);
    const bool isEmpty =
        !text.empty() && !profile.emptyTexts.empty() &&
        std::ranges::find(profile.emptyTexts, foldedText(text)) != profile.emptyTexts.end();
    cells.push_back(isEmpty ? std::string_view() : text);
  }
  while (!cells.empty() && cells.back().empty()) {
    cells.pop_back();
  }
}

std::optional<std::size_t> StatementCells::continuedColumn(
    const StatementProfile& profile, const StatementTable& table,
    const std::vector<std::string_view>& cells) {
  if (profile.continued.empty()) {
    return std::nullopt;
  }
  const auto column = table.column(profile.continued);
  if (!column || *column >= cells.size() || cells[*column].empty()) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i != *column && !cells[i].empty()) {
      return std::nullopt;
    }
  }
  return column;
}

void StatementCells::goTo(std::size_t index) {
  place_ = file_.rows[index];
  if (reader_.position() != place_.offset) {
    reader_.moveTo(place_.offset, place_.line);
  }
  const auto row = reader_.next();
  trim(*row, *file_.profile, cells_);
  cells_.resize(table().width());
  if (place_.continuations > 0) {
    takeContinuations();
  }
}

void StatementCells::takeContinuations() {
  keptCells_.assign(cells_.begin(), cells_.end());
  for (std::size_t left = place_.continuations; left > 0;) {
    const auto row = reader_.next();
    if (!row) {
      break;
    }
    trim(*row, *file_.profile, further_);
    if (const auto column = continuedColumn(*file_.profile, table(), further_)) {
      keptCells_[*column] += further_[*column];
      --left;
    }
  }
  std::ranges::copy(keptCells_, cells_.begin());
}

}  // namespace corvane
