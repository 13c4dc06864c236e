#include "presentation/portfolio/statement_preview_controller.h"

#include <algorithm>
#include <utility>

#include "exchange/strict/cell_text.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/overloaded.h"
#include "platform/system/file_manager.h"

namespace corvane {
namespace {

constexpr std::string_view symbolAsked = "” has no symbol yet";
constexpr std::string_view currencyAsked = "no column tells the currency";

bool isObstacle(RowVerdict verdict) {
  return verdict == RowVerdict::asks || verdict == RowVerdict::refused ||
         verdict == RowVerdict::ledgerRefuses;
}

struct RowFigures {
  std::string day, shares, amount, currency;
};

RowFigures figuresIn(const StatementRow& row, const Calendar& calendar) {
  if (row.transactions.empty()) {
    return {};
  }
  const BasicTransaction& first = row.transactions.front();
  RowFigures figures{.day = YearMonthDay::of(first.tradeDate, calendar).description(),
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

}  // namespace

StatementPreviewController::StatementPreviewController(const std::filesystem::path& file,
                                                       PortfolioPointer portfolio,
                                                       const std::filesystem::path& memoryFolder)
    : filename_(file.filename().string()),
      bytes_(files::read(file)),
      portfolio_(std::move(portfolio)),
      memory_(memoryFolder, *portfolio_),
      shelf_(ProfileShelf::standard()) {
  options_.symbols = memory_.symbols();
  options_.fingerprintsById = memory_.fingerprintsById();
  readAgain();
}

void StatementPreviewController::readAgain() {
  rows_.clear();
  problem_.clear();
  try {
    preview_ = previewStatement(bytes_, shelf_.profiles, portfolio_, options_);
  } catch (const Error& error) {
    preview_ = {};
    problem_ = error.description().value_or("");
  }
  for (const StatementRow& row : preview_.reading.rows) {
    rows_.push_back(&row);
  }
  std::ranges::stable_sort(rows_, {}, &StatementRow::line);
  findQuestions();
  if (changeHandler) {
    changeHandler();
  }
}

void StatementPreviewController::findQuestions() {
  questions_.clear();
  for (const StatementRow* row : rows_) {
    if (row->verdict != RowVerdict::asks) {
      continue;
    }
    Question question;
    if (const std::size_t end = row->reason.find(symbolAsked); end != std::string::npos) {
      question.key =
          row->reason.substr(std::string_view("“").size(), end - std::string_view("“").size());
      question.text = "Which symbol has “" + question.key + "”?";
      if (!row->symbol.empty() && row->symbol != question.key) {
        question.text += " (" + row->symbol + ")";
      }
    } else if (row->reason.starts_with(currencyAsked)) {
      question.text = "Which currency is the account in?";
    } else {
      continue;
    }
    if (std::ranges::find(questions_, question.text, &Question::text) == questions_.end()) {
      questions_.push_back(std::move(question));
    }
  }
}

void StatementPreviewController::answer(const std::vector<std::string>& answers) {
  for (std::size_t i = 0; i < std::min(answers.size(), questions_.size()); ++i) {
    const std::string given(trimmedCell(answers[i]));
    if (given.empty()) {
      continue;
    }
    if (!questions_[i].key.empty()) {
      options_.symbols.insert_or_assign(foldedText(questions_[i].key), given);
    } else if (Currency::byCode().contains(given)) {
      options_.currencyCode = given;
    }
  }
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

std::string StatementPreviewController::summary() const {
  if (!problem_.empty()) {
    return problem_;
  }
  std::string text =
      "“" + filename_ + "” is “" + preview_.profileName + "”, " + preview_.encodingName + ".";
  for (const std::string& remark : preview_.reading.remarks) {
    text += "\n" + remark;
  }
  return text;
}

const std::vector<TableColumn>& StatementPreviewController::columns() const {
  static const std::vector<TableColumn> all = {
      {"line", "Line", true},     {"verdict", "Verdict"},   {"day", "Day"},
      {"kind", "Kind"},           {"symbol", "Symbol"},     {"shares", "Shares", true},
      {"amount", "Amount", true}, {"currency", "Currency"}, {"rate", "Rate"},
      {"reason", "Reason"}};
  return all;
}

AttributedText StatementPreviewController::cell(std::size_t row, std::size_t column) const {
  const StatementRow& shown = *rows_.at(row);
  const auto manager = portfolio_->manager.lock();
  const RowFigures figures =
      figuresIn(shown, manager == nullptr ? Calendar::current() : manager->calendar);
  const std::vector<std::string> texts = {std::to_string(shown.line),
                                          std::string(displayName(shown.verdict)),
                                          figures.day,
                                          shown.kind,
                                          shown.symbol,
                                          figures.shares,
                                          figures.amount,
                                          figures.currency,
                                          shown.rate,
                                          shown.reason};
  return AttributedText(texts.at(column));
}

bool StatementPreviewController::isTicked(std::size_t row) const {
  return mayBeTicked(row) && !options_.leaveOut.contains(rows_.at(row)->line);
}

bool StatementPreviewController::mayBeTicked(std::size_t row) const {
  const StatementRow& shown = *rows_.at(row);
  return shown.verdict == RowVerdict::isNew || isObstacle(shown.verdict) ||
         options_.leaveOut.contains(shown.line);
}

void StatementPreviewController::setTicked(std::size_t row, bool isOn) {
  const std::uint32_t line = rows_.at(row)->line;
  if (isOn) {
    options_.leaveOut.erase(line);
  } else {
    options_.leaveOut.insert(line);
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

std::vector<BasicTransaction> StatementPreviewController::import() {
  const auto manager = portfolio_->manager.lock();
  auto transactions = recordStatement(preview_, portfolio_);
  memory_.rememberSymbols(options_.symbols);
  memory_.rememberImport(filename_, preview_.profileName, preview_.reading.rows, manager->calendar);
  memory_.write();
  return transactions;
}

}  // namespace corvane
