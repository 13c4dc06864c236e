// The screen that shows what an import of a statement would do, before it does it.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/statements/statement_memory.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/statements/statement_rates.h"
#include "exchange/statements/symbol_search.h"
#include "presentation/controls/table_model.h"

namespace corvane {

/// A statement that has been read for a portfolio, the questions that it leaves open, and the rows
/// that the user has ticked. Symbols that are missing are searched for by itself; rates only where
/// the user allows it. Main queue only; the portfolio's manager outlives it.
class StatementPreviewController final : public TableModel {
 public:
  /// Told again and again what part of the work is done, from 0 to 1, which comes last. It may let
  /// events be handled, and throws UserCancelledError to end the work.
  using ProgressHandler = std::function<void(double fraction)>;

  /// Reads `file` for `portfolio`. `memoryFolder` is where the workspace keeps its further files.
  /// What is wrong with the whole file is told by problem(). `progress` is told of this and of
  /// every later reading, and may be null. Throws FileError, and UserCancelledError where the
  /// reading was cancelled; one that is cancelled later leaves no rows, and problem() tells.
  StatementPreviewController(const std::filesystem::path& file, PortfolioPointer portfolio,
                             const std::filesystem::path& memoryFolder,
                             ProgressHandler progress = nullptr);
  StatementPreviewController(const StatementPreviewController&) = delete;
  StatementPreviewController& operator=(const StatementPreviewController&) = delete;
  ~StatementPreviewController() override;

  /// Called when something else is to be shown.
  std::function<void()> changeHandler;

  /// What was recognised, how days and numbers were read, and whether the market is being asked; a
  /// sentence on each line.
  [[nodiscard]] std::string summary() const;
  /// Why nothing can be shown of the file; empty where it can.
  [[nodiscard]] const std::string& problem() const { return problem_; }

  /// What only the user knows.
  struct Question {
    std::string text;  ///< "Which symbol has “ISHARES CORE EQUITY ETF”?"
    std::string key;   ///< what the file calls it
    std::string rows;  ///< "lines 2, 5 and 9": which ask it; empty where it is about another thing
    RowQuestion::About about = RowQuestion::About::symbol;
    struct Choice {
      std::string value;  ///< what is answered
      std::string title;
      friend bool operator==(const Choice&, const Choice&) = default;
    };
    std::vector<Choice> choices;  ///< what may be meant
    bool takesOtherAnswers = true;
    std::string answer;  ///< a proposal, may be empty
    friend bool operator==(const Question&, const Question&) = default;
  };
  /// All questions of the file, each once.
  [[nodiscard]] const std::vector<Question>& questions() const { return questions_; }
  /// What is above the questions where several equities have no symbol; empty for fewer.
  [[nodiscard]] std::string questionsTitle() const;
  /// Reads the file once more with these answers, one for each question; empty ones stay open.
  void answer(const std::vector<std::string>& answers);

  // How the file is read. Nothing said means that it is worked out.

  [[nodiscard]] std::vector<Question::Choice> layouts() const;
  void setLayout(std::optional<std::string> id);
  void setDays(std::optional<DayOrder> days);
  void setDecimal(std::optional<DecimalMark> mark);
  /// The accounts whose rows the file has; more than one is worth a question.
  [[nodiscard]] std::vector<std::string> accounts() const;
  [[nodiscard]] std::optional<std::string> account() const;
  /// Takes the rows of one account alone, or those of all.
  void setAccount(const std::optional<std::string>& account);

  // Exchange rates that the file does not tell.

  /// Whether a row lacks one, or would without the market or a file.
  [[nodiscard]] bool needsRates() const { return needsRates_; }
  [[nodiscard]] bool takesMarketRates() const { return options_.takesMarketRates; }
  void setTakesMarketRates(bool takes);
  /// Takes the rates of a file of days, codes and rates. Throws FileError and StatementError.
  void readRates(const std::filesystem::path& file);

  // The rows, in the order of the lines of the file.

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return rows_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;
  /// Whether a row is to be recorded. Only new ones, those that ask or are refused, and those that
  /// are perhaps there already can be.
  [[nodiscard]] bool isTicked(std::size_t row) const;
  [[nodiscard]] bool mayBeTicked(std::size_t row) const;
  void setTicked(std::size_t row, bool isOn);

  /// "Import 12 Rows"
  [[nodiscard]] std::string importTitle() const;
  /// Whether there is a row to record, and no ticked one asks or is refused.
  [[nodiscard]] bool canImport() const;
  /// Records the ticked rows as one edit that cannot be undone, and remembers the answers. What was
  /// said of words, days and decimals goes into the user's layout. Throws what the ledger throws;
  /// then nothing has changed. `progress` is told of the recording; where it cancels, nothing has
  /// changed either.
  std::vector<BasicTransaction> import(const ProgressHandler& progress = nullptr);

 private:
  void readAgain();
  [[nodiscard]] std::vector<BasicTransaction> record(const ProgressHandler& progress);
  /// Reads the file as the options say; whatever is wrong with it becomes the problem.
  void read();
  void show();
  void findQuestions();
  [[nodiscard]] Question questionFor(const RowQuestion& asked) const;
  void findDoubts();
  void searchSymbols();
  void fetchRates();

  ProgressHandler progress_;
  bool isReading_ = false;  ///< or recording, during which nothing is read either
  bool isCancelled_ = false;
  bool isToReadAgain_ = false;  ///< an answer has come during a reading
  std::string filename_;
  std::string bytes_;
  PortfolioPointer portfolio_;
  StatementMemory memory_;
  ProfileShelf shelf_;
  StatementOptions options_;
  StatementRates rates_;
  StatementPreview preview_;
  std::vector<RowQuestion> doubtful_;  ///< symbols that the market may have under another name
  SymbolFinds finds_;
  std::set<std::string> searched_;  ///< subjects that were searched for
  int searches_ = 0;
  bool needsRates_ = false;
  bool isFetchingRates_ = false;
  std::vector<std::string> rateProblems_;
  std::string problem_;
  std::vector<Question> questions_;
  std::vector<std::uint32_t> rows_;  ///< of the preview, by line
  /// Answers of the market that arrive when this is gone find it gone.
  std::shared_ptr<StatementPreviewController*> self_;
};

}  // namespace corvane
