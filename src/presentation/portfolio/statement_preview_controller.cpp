#include "presentation/portfolio/statement_preview_controller.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/overloaded.h"
#include "platform/system/file_manager.h"
#include "platform/text/unicode/isolation.h"

namespace corvane {
namespace {

/// What a word of a file may mean, in the user's words.
constexpr std::array<std::pair<StatementKind, std::string_view>, 15> kindTitles = {{
    {StatementKind::buy, "Purchase"},
    {StatementKind::sell, "Sale"},
    {StatementKind::deposit, "Deposit"},
    {StatementKind::withdrawal, "Withdrawal"},
    {StatementKind::transfer, "Transfer, in or out by its sign"},
    {StatementKind::dividend, "Dividend"},
    {StatementKind::capitalGainsDividend, "Capital-gains dividend"},
    {StatementKind::reinvested, "Reinvested distribution"},
    {StatementKind::returnOfCapital, "Return of capital"},
    {StatementKind::splitAdded, "Split, with the shares that were added"},
    {StatementKind::journal, "Journaled shares"},
    {StatementKind::cash, "Cash adjustment, by its sign"},
    {StatementKind::credit, "Credit"},
    {StatementKind::expense, "Fee or expense"},
    {StatementKind::ignore, "Nothing; leave such lines out"},
}};

bool isObstacle(RowVerdict verdict) {
  return verdict == RowVerdict::asks || verdict == RowVerdict::refused ||
         verdict == RowVerdict::ledgerRefuses;
}

/// "lines 2, 5 and 9"
std::string linesText(const std::vector<std::uint32_t>& lines) {
  constexpr std::size_t mostTold = 5;
  std::string text = lines.size() == 1 ? "line " : "lines ";
  const std::size_t told = lines.size() > mostTold + 1 ? mostTold : lines.size();
  for (std::size_t i = 0; i < told; ++i) {
    const bool isLast = i + 1 == lines.size();
    text += (i == 0 ? "" : isLast ? " and " : ", ") + std::to_string(lines[i]);
  }
  return told == lines.size() ? text
                              : text + " and " + std::to_string(lines.size() - told) + " more";
}

struct ShownFigures {
  std::string day, shares, amount, currency;
};

ShownFigures figuresIn(const StatementRow& row, const Calendar& calendar) {
  if (row.transactions.empty()) {
    return {};
  }
  const BasicTransaction& first = row.transactions.front();
  ShownFigures figures{.day = YearMonthDay::of(first.tradeDate, calendar).description(),
                       .shares = {},
                       .amount = {},
                       .currency = {}};
  const auto money = [&](const CurrencyAmount& amount) {
    figures.amount = amount.amount.description();
    figures.currency = std::string(amount.currency.code);
  };
  std::visit(Overloaded{[&](const BasicTransaction::Trade& trade) {
                          figures.shares = trade.sharesAdded.description();
                          money({trade.cashDisposed.currency, -trade.cashDisposed.amount});
                        },
                        [&](const BasicTransaction::Split& split) {
                          figures.shares = split.priorShares.description() + " → " +
                                           split.netShares.description();
                        },
                        [&](const BasicTransaction::JournaledShares& journaled) {
                          figures.shares = journaled.sharesAdded.description();
                        },
                        [&](const BasicTransaction::Yield& yield) { money(yield.netAmount); },
                        [&](const auto& cash) { money(cash.amount); }},
             first.kind);
  return figures;
}

struct PreviewLine {
  const StatementRow& row;
  ShownFigures figures;
};

template <auto StatementRow::*text>
AttributedText rowTextCell(const PreviewLine& line) {
  return AttributedText(std::string(line.row.*text));
}

template <std::string ShownFigures::*text>
AttributedText figureCell(const PreviewLine& line) {
  return AttributedText(line.figures.*text);
}

constexpr std::array<ColumnOf<PreviewLine>, 10> previewColumns = {{
    {{"line", "Line", true},
     [](const PreviewLine& line) { return AttributedText(std::to_string(line.row.line)); }},
    {{"verdict", "Verdict"},
     [](const PreviewLine& line) {
       return AttributedText(std::string(displayName(line.row.verdict)));
     }},
    {{"day", "Day"}, figureCell<&ShownFigures::day>},
    {{"kind", "Kind"}, rowTextCell<&StatementRow::kind>},
    {{"symbol", "Symbol"}, rowTextCell<&StatementRow::symbol>},
    {{"shares", "Shares", true}, figureCell<&ShownFigures::shares>},
    {{"amount", "Amount", true}, figureCell<&ShownFigures::amount>},
    {{"currency", "Currency"}, figureCell<&ShownFigures::currency>},
    {{"rate", "Rate"}, rowTextCell<&StatementRow::rate>},
    {{"reason", "Reason"}, rowTextCell<&StatementRow::reason>},
}};

}  // namespace

StatementPreviewController::StatementPreviewController(const std::filesystem::path& file,
                                                       PortfolioPointer portfolio,
                                                       const std::filesystem::path& memoryFolder,
                                                       ProgressHandler progress)
    : progress_(std::move(progress)),
      filename_(file.filename().string()),
      bytes_(files::read(file)),
      portfolio_(std::move(portfolio)),
      memory_(memoryFolder, *portfolio_),
      shelf_(ProfileShelf::standard()),
      rates_(portfolio_->primaryCurrency(), portfolio_->manager.lock()->calendar),
      self_(std::make_shared<StatementPreviewController*>(this)) {
  options_.symbols = memory_.symbols();
  options_.remembered = memory_.answers();
  readAgain();
  if (isCancelled_) {
    *self_ = nullptr;
    throw UserCancelledError();
  }
  if (options_.remembered.marketRates.contains(preview_.profileName)) {
    setTakesMarketRates(true);
  }
}

StatementPreviewController::~StatementPreviewController() {
  *self_ = nullptr;
}

void StatementPreviewController::readAgain() {
  if (isReading_) {
    isToReadAgain_ = true;
    return;
  }
  isReading_ = true;
  do {
    isToReadAgain_ = false;
    read();
  } while (isToReadAgain_ && !isCancelled_);
  isReading_ = false;
  rows_ = preview_.reading.rows.byLine();
  if (options_.takesMarketRates && rates_.areMissing() && !isFetchingRates_) {
    fetchRates();
  }
  searchSymbols();
  show();
}

void StatementPreviewController::read() {
  // What was read before makes room, since a file may be large.
  rows_ = {};
  preview_ = StatementPreview();
  problem_.clear();
  isCancelled_ = false;
  try {
    preview_ = previewStatement(
        bytes_, shelf_.profiles, portfolio_, options_,
        [&](const Currency& currency, const YearMonthDay& day) {
          needsRates_ = true;
          return rates_.rate(currency, day);
        },
        memory_.imports(), progress_);
    return;
  } catch (const UserCancelledError&) {
    isCancelled_ = true;
    problem_ = "The reading was cancelled.";
    return;
  } catch (const StatementError& error) {
    problem_ = error.withoutRemedy();
    if (const std::size_t nearest = error.remedy.find("Nearest:"); nearest != std::string::npos) {
      problem_ += " " + error.remedy.substr(nearest);
    }
    if (error.line == 0 && !error.remedy.contains("Say which")) {
      problem_ +=
          "\nPlace the columns with “Import Transactions…”; “Remember Layout…” there keeps "
          "them for the next time.";
    }
  } catch (const Error& error) {
    problem_ = error.description().value_or("");
  }
  if (progress_) {
    progress_(1.0);
  }
}

void StatementPreviewController::show() {
  findQuestions();
  if (changeHandler) {
    changeHandler();
  }
}

void StatementPreviewController::searchSymbols() {
  std::vector<RowQuestion> wanted = symbolQuestions(preview_.reading.rows);
  doubtful_ = doubtfulSymbols(preview_.reading.rows, options_, *portfolio_);
  constexpr std::size_t mostDoubtful = 40;  // a search each
  wanted.insert(
      wanted.end(), doubtful_.begin(),
      doubtful_.begin() + static_cast<std::ptrdiff_t>(std::min(doubtful_.size(), mostDoubtful)));
  std::erase_if(wanted, [&](const RowQuestion& question) {
    return !searched_.insert(question.subject).second;
  });
  const auto manager = portfolio_->manager.lock();
  if (wanted.empty() || manager == nullptr) {
    return;
  }
  ++searches_;
  corvane::searchSymbols(manager->quoteProvider, wanted, [self = self_](SymbolFinds found) {
    if (*self != nullptr) {
      --(*self)->searches_;
      (*self)->finds_.merge(found);
      (*self)->show();
    }
  });
}

void StatementPreviewController::fetchRates() {
  const auto manager = portfolio_->manager.lock();
  if (manager == nullptr) {
    return;
  }
  isFetchingRates_ = true;
  rates_.fetch(manager->quoteProvider, [self = self_](std::vector<std::string> problems) {
    if (*self != nullptr) {
      (*self)->rateProblems_ = std::move(problems);
      (*self)->readAgain();
      // Still taken for under way while it was read, so that a day without a rate is asked once.
      (*self)->isFetchingRates_ = false;
      (*self)->show();
    }
  });
}

void StatementPreviewController::setTakesMarketRates(bool takes) {
  options_.takesMarketRates = takes;
  rateProblems_.clear();
  if (!takes) {
    rates_.forgetMarket();
  }
  readAgain();
}

void StatementPreviewController::readRates(const std::filesystem::path& file) {
  rates_.readFile(files::read(file), file.filename().string());
  readAgain();
}

void StatementPreviewController::findQuestions() {
  questions_.clear();
  const StatementRows& rows = preview_.reading.rows;
  // Rows share their questions, of which several may have one text.
  std::vector<const RowQuestion*> asked;
  std::map<const RowQuestion*, std::vector<std::uint32_t>> linesByQuestion;
  for (const std::uint32_t row : rows_) {
    const RowQuestion* own = rows.question(row);
    if (own == nullptr || own->about == RowQuestion::About::rate) {
      continue;
    }
    auto& lines = linesByQuestion[own];
    if (lines.empty()) {
      asked.push_back(own);
    }
    lines.push_back(rows.line(row));
  }
  std::map<std::string, std::vector<std::uint32_t>> linesByText;
  for (const RowQuestion* each : asked) {
    Question question = questionFor(*each);
    auto& lines = linesByText[question.text];
    lines.insert(lines.end(), linesByQuestion[each].begin(), linesByQuestion[each].end());
    if (lines.size() == linesByQuestion[each].size()) {
      questions_.push_back(std::move(question));
    }
    std::ranges::sort(lines);
  }
  for (Question& question : questions_) {
    question.rows = linesText(linesByText[question.text]);
  }
  findDoubts();
}

StatementPreviewController::Question StatementPreviewController::questionFor(
    const RowQuestion& asked) const {
  Question question{.text = {},
                    .key = asked.subject,
                    .rows = {},
                    .about = asked.about,
                    .choices = {},
                    .takesOtherAnswers = true,
                    .answer = asked.proposal};
  if (asked.about == RowQuestion::About::symbol) {
    question.text = "Which symbol has “" + isolatedName(asked.subject) + "”?";
    question.text += asked.name.empty() ? "" : " (" + isolatedName(asked.name) + ")";
    if (const auto found = finds_.find(asked.subject); found != finds_.end()) {
      for (const SymbolFind& find : found->second) {
        question.choices.push_back({find.symbol, find.description()});
      }
    }
  } else if (asked.about == RowQuestion::About::currency) {
    question.text = "Which currency is the account in?";
    question.answer = std::string(portfolio_->primaryCurrency().code);
  } else {
    question.text = "What does “" + isolatedName(asked.subject) + "” mean?";
    question.takesOtherAnswers = false;
    for (const auto& [kind, title] : kindTitles) {
      question.choices.push_back({std::string(rawValue(kind)), std::string(title)});
    }
  }
  return question;
}

void StatementPreviewController::findDoubts() {
  for (const RowQuestion& doubt : doubtful_) {
    const auto found = finds_.find(doubt.subject);
    const auto likely = found == finds_.end() ? std::nullopt : likelySymbol(doubt, found->second);
    if (likely) {
      Question question{.text = "“" + isolatedName(doubt.subject) + "” has no prices in " +
                                doubt.currency + ". Which symbol is meant?",
                        .key = doubt.subject,
                        .rows = {},
                        .about = RowQuestion::About::symbol,
                        .choices = {{doubt.subject, doubt.subject + ", as it is"}},
                        .takesOtherAnswers = true,
                        .answer = *likely};
      for (const SymbolFind& find : found->second) {
        question.choices.push_back({find.symbol, find.description()});
      }
      questions_.push_back(std::move(question));
    }
  }
}

std::string StatementPreviewController::questionsTitle() const {
  const auto count = std::ranges::count_if(questions_, [](const Question& question) {
    return question.about == RowQuestion::About::symbol && !question.rows.empty();
  });
  return count < 2 ? ""
                   : std::to_string(count) +
                         " equities have no symbol yet. Choose what the search has found, or type "
                         "their symbols; all are answered at once, and remembered.";
}

void StatementPreviewController::answer(const std::vector<std::string>& answers) {
  for (std::size_t i = 0; i < std::min(answers.size(), questions_.size()); ++i) {
    const std::string given(trimmedCell(answers[i]));
    const Question& question = questions_[i];
    if (given.empty()) {
      continue;
    }
    switch (question.about) {
      case RowQuestion::About::symbol:
        options_.symbols.insert_or_assign(foldedText(question.key), given);
        break;
      case RowQuestion::About::currency:
        if (Currency::byCode().contains(given)) {
          options_.currencyCode = given;
        }
        break;
      case RowQuestion::About::kind:
        if (const auto kind = statementKindWithRawValue(given)) {
          options_.kinds.insert_or_assign(question.key, *kind);
        }
        break;
      case RowQuestion::About::rate:
        break;
    }
  }
  readAgain();
}

std::vector<StatementPreviewController::Question::Choice> StatementPreviewController::layouts()
    const {
  std::vector<Question::Choice> all;
  for (const StatementProfile& profile : shelf_.profiles) {
    all.push_back({profile.id, profile.name});
  }
  std::ranges::sort(all, {}, &Question::Choice::title);
  return all;
}

void StatementPreviewController::setLayout(std::optional<std::string> id) {
  options_.profile = std::move(id);
  readAgain();
}

void StatementPreviewController::setDays(std::optional<DayOrder> days) {
  options_.days = days;
  readAgain();
}

void StatementPreviewController::setDecimal(std::optional<DecimalMark> mark) {
  options_.decimal = mark;
  readAgain();
}

std::vector<std::string> StatementPreviewController::accounts() const {
  return {preview_.reading.accounts.begin(), preview_.reading.accounts.end()};
}

std::optional<std::string> StatementPreviewController::account() const {
  const auto remembered = options_.remembered.accounts.find(preview_.profileName);
  const auto& said = options_.accounts.empty() && remembered != options_.remembered.accounts.end()
                         ? remembered->second
                         : options_.accounts;
  return said.size() == 1 ? std::optional(*said.begin()) : std::nullopt;
}

void StatementPreviewController::setAccount(const std::optional<std::string>& account) {
  options_.remembered.accounts.erase(preview_.profileName);
  options_.accounts = account ? std::set<std::string>{*account} : std::set<std::string>();
  readAgain();
}

std::string StatementPreviewController::summary() const {
  if (!problem_.empty()) {
    return isolatingQuotedNames(problem_);
  }
  std::string text = "“" + isolatedName(filename_) + "” is “" + isolatedName(preview_.profileName) +
                     "”, " + preview_.encodingName + ".";
  for (const std::string& remark : preview_.reading.remarks) {
    text += "\n" + isolatingQuotedNames(remark);
  }
  for (const std::string& problem : rateProblems_) {
    text += "\n" + isolatingQuotedNames(problem);
  }
  if (isFetchingRates_) {
    text += "\nLooking up exchange rates…";
  } else if (searches_ > 0) {
    text += "\nSearching for symbols…";
  }
  return text;
}

const std::vector<TableColumn>& StatementPreviewController::columns() const {
  static const std::vector<TableColumn> columns = columnsOf(previewColumns);
  return columns;
}

AttributedText StatementPreviewController::cell(std::size_t row, std::size_t column) const {
  if (row >= rows_.size()) {
    return {};  // the table is drawn while the file is read again
  }
  const StatementRows& rows = preview_.reading.rows;
  const std::uint32_t place = rows_.at(row);
  if (columns().at(column).identifier == "verdict") {
    // Asked of every row where the table shows those of one verdict.
    return AttributedText(std::string(displayName(rows.verdict(place))));
  }
  const StatementRow shown = rows[place];
  const auto manager = portfolio_->manager.lock();
  return previewColumns.at(column).cell(
      {shown, figuresIn(shown, manager == nullptr ? Calendar::current() : manager->calendar)});
}

bool StatementPreviewController::isTicked(std::size_t row) const {
  return row < rows_.size() && mayBeTicked(row) &&
         preview_.reading.rows.verdict(rows_.at(row)) != RowVerdict::perhapsPresent &&
         !options_.leaveOut.contains(preview_.reading.rows.line(rows_.at(row)));
}

bool StatementPreviewController::mayBeTicked(std::size_t row) const {
  const RowVerdict verdict = preview_.reading.rows.verdict(rows_.at(row));
  return verdict == RowVerdict::isNew || verdict == RowVerdict::perhapsPresent ||
         isObstacle(verdict) ||
         options_.leaveOut.contains(preview_.reading.rows.line(rows_.at(row)));
}

void StatementPreviewController::setTicked(std::size_t row, bool isOn) {
  const std::uint32_t line = preview_.reading.rows.line(rows_.at(row));
  if (!isOn && options_.twins.erase(line) > 0) {
    // It is left out again as one that is perhaps there.
  } else if (!isOn) {
    options_.leaveOut.insert(line);
  } else if (preview_.reading.rows.verdict(rows_.at(row)) == RowVerdict::perhapsPresent) {
    options_.twins.insert(line);
  } else {
    options_.leaveOut.erase(line);
  }
  readAgain();
}

std::string StatementPreviewController::importTitle() const {
  const std::size_t count = preview_.newRowCount();
  return "Import " + std::to_string(count) + (count == 1 ? " Row" : " Rows");
}

bool StatementPreviewController::canImport() const {
  return problem_.empty() && preview_.isReady() && preview_.newRowCount() > 0;
}

/// What the market answers meanwhile waits: a reading would take away the rows being recorded.
std::vector<BasicTransaction> StatementPreviewController::record(const ProgressHandler& progress) {
  isReading_ = true;
  isToReadAgain_ = false;
  try {
    auto transactions = recordStatement(preview_, portfolio_, progress);
    isReading_ = false;
    return transactions;
  } catch (const Error&) {
    isReading_ = false;
    if (isToReadAgain_) {
      readAgain();
    }
    throw;
  }
}

std::vector<BasicTransaction> StatementPreviewController::import(const ProgressHandler& progress) {
  const auto manager = portfolio_->manager.lock();
  auto transactions = record(progress);
  memory_.rememberAnswers(options_, preview_);
  memory_.rememberImport(filename_, preview_, manager->calendar);
  memory_.write();
  if (const LearnedAnswers learned = answersToLearn(preview_, shelf_, options_);
      !learned.isEmpty()) {
    learnAnswers(preview_.profileId, learned, shippedProfilesFolder(), userProfilesFolder());
  }
  return transactions;
}

}  // namespace corvane
