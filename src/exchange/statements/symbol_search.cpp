#include "exchange/statements/symbol_search.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace {

constexpr std::size_t mostFinds = 5;

/// The searches of one statement, one after the other, so that a service is not flooded.
class SymbolSearch : public std::enable_shared_from_this<SymbolSearch> {
 public:
  SymbolSearch(std::shared_ptr<QuoteProvider> provider, std::vector<RowQuestion> questions,
               std::move_only_function<void(SymbolFinds)> completion)
      : provider_(std::move(provider)),
        questions_(std::move(questions)),
        completion_(std::move(completion)) {}

  void next() {
    if (place_ == questions_.size()) {
      completion_(std::move(finds_));
      return;
    }
    search(questions_[place_].subject, true);
  }

 private:
  void search(const std::string& text, bool maySearchName) {
    provider_->searchEquities(
        text, [self = shared_from_this(), maySearchName](Result<std::vector<EquityPointer>> found) {
          DispatchQueue::main()->async([self, maySearchName, found = std::move(found)]() mutable {
            self->take(found ? std::move(*found) : std::vector<EquityPointer>(), maySearchName);
          });
        });
  }

  void take(std::vector<EquityPointer> found, bool maySearchName) {
    const RowQuestion& question = questions_[place_];
    if (found.empty() && maySearchName && !question.name.empty()) {
      search(question.name, false);
      return;
    }
    if (found.empty()) {
      ++place_;
      next();
      return;
    }
    // Finds do not tell their currency, by which the exchange is chosen.
    constexpr std::size_t mostLookedAt = 10;
    found.resize(std::min(found.size(), mostLookedAt));
    provider_->refreshEquities(
        found, [self = shared_from_this(), found](const ErrorPointer&) mutable {
          DispatchQueue::main()->async(
              [self, found = std::move(found)]() mutable { self->keep(std::move(found)); });
        });
  }

  void keep(std::vector<EquityPointer> found) {
    const RowQuestion& question = questions_[place_];
    std::ranges::stable_partition(found, [&](const EquityPointer& equity) {
      return !question.currency.empty() &&
             std::string_view(equity->currency.code) == question.currency;
    });
    found.resize(std::min(found.size(), mostFinds));
    std::vector<SymbolFind> finds;
    for (const EquityPointer& equity : found) {
      finds.push_back({equity->id(), equity->name.value_or(""), equity->exchange.value_or(""),
                       equity->isAuthoritative ? std::string(equity->currency.code) : ""});
    }
    finds_.insert_or_assign(question.subject, std::move(finds));
    ++place_;
    next();
  }

  std::shared_ptr<QuoteProvider> provider_;
  std::vector<RowQuestion> questions_;
  std::move_only_function<void(SymbolFinds)> completion_;
  std::size_t place_ = 0;
  SymbolFinds finds_;
};

}  // namespace

std::string SymbolFind::description() const {
  std::string text = symbol;
  for (const std::string* part : {&name, &exchange, &currency}) {
    if (!part->empty()) {
      text += ", " + *part;
    }
  }
  return text;
}

void searchSymbols(const std::shared_ptr<QuoteProvider>& provider,
                   const std::vector<RowQuestion>& questions,
                   std::move_only_function<void(SymbolFinds)> completion) {
  const auto search = std::make_shared<SymbolSearch>(provider, questions, std::move(completion));
  DispatchQueue::main()->async([search] { search->next(); });
}

std::vector<RowQuestion> doubtfulSymbols(const StatementRows& rows, const StatementOptions& options,
                                         Portfolio& portfolio) {
  std::set<std::string> known;
  for (const TransactionPointer& row : portfolio.transactions()) {
    if (const EquityPointer* equity = row->basic.equity()) {
      known.insert((*equity)->id());
    }
  }
  for (const auto& [name, symbol] : options.symbols) {
    known.insert(symbol);
  }
  std::vector<RowQuestion> questions;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const RowFigures figures = rows.figures(row);
    const bool isTrade = figures.kind == StatementKind::buy || figures.kind == StatementKind::sell;
    if (rows.verdict(row) != RowVerdict::isNew || rows.transactionCount(row) == 0 || !isTrade ||
        !known.insert(figures.equity->id()).second) {
      continue;
    }
    RowQuestion question;
    question.subject = figures.equity->id();
    question.currency = std::string(figures.cash.currency.code);
    questions.push_back(std::move(question));
  }
  return questions;
}

std::optional<std::string> likelySymbol(const RowQuestion& question,
                                        const std::vector<SymbolFind>& finds) {
  std::optional<std::string> likely;
  for (const SymbolFind& find : finds) {
    if (find.symbol == question.subject &&
        (find.currency.empty() || find.currency == question.currency)) {
      return std::nullopt;
    }
    if (!likely && find.symbol.starts_with(question.subject + ".") &&
        find.currency == question.currency) {
      likely = find.symbol;
    }
  }
  return likely;
}

std::vector<RowQuestion> symbolQuestions(const StatementRows& rows) {
  std::vector<RowQuestion> questions;
  std::set<std::string_view> subjects;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const RowQuestion* asked = rows.question(row);
    if (asked != nullptr && asked->about == RowQuestion::About::symbol &&
        subjects.insert(asked->subject).second) {
      questions.push_back(*asked);
    }
  }
  return questions;
}

}  // namespace corvane
