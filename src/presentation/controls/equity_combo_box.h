// The box in which one looks for an equity, and the search behind it.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/market/equity_info.h"
#include "core/market/quote_provider.h"
#include "core/money/currency.h"
#include "platform/async/dispatch_queue.h"
#include "platform/async/timer.h"
#include "platform/error.h"
#include "platform/text/styled/attributed_text.h"

namespace corvane {

/// What an EquityComboBox lists: the equities that a provider finds for a text. A search starts
/// half a second after the last change of the text, and there is only ever one: a text that has
/// changed meanwhile is looked for when the running search has ended. Held by shared pointer only.
/// Main queue only.
class EquityComboBoxDataSource : public std::enable_shared_from_this<EquityComboBoxDataSource> {
  struct Passkey {};

 public:
  /// The equities that were found, or why none could be (never null).
  using SearchResult = std::variant<std::vector<EquityPointer>, ErrorPointer>;

  [[nodiscard]] static std::shared_ptr<EquityComboBoxDataSource> make();
  explicit EquityComboBoxDataSource(Passkey /*passkey*/) {}
  EquityComboBoxDataSource(const EquityComboBoxDataSource&) = delete;
  EquityComboBoxDataSource& operator=(const EquityComboBoxDataSource&) = delete;

  DispatchQueue::Duration searchDelayInterval = std::chrono::milliseconds(500);
  /// Where set, a search whose text is no symbol that was found also offers an equity of that
  /// symbol, of which nothing but this currency is known. One that the provider does know keeps its
  /// own currency.
  std::optional<Currency> offersNominalEquityWithCurrency;
  /// Called when a search has begun.
  std::function<void()> searchDidBegin = [] {};
  /// Called when a search has ended with a result to list.
  std::function<void()> searchDidEnd = [] {};

  /// Who is asked; held weakly. Without one nothing is looked for. What another one still answers
  /// is dropped.
  void setQuoteProvider(const std::shared_ptr<QuoteProvider>& provider);
  /// What is listed while there is no text.
  void setDefaultEquities(std::vector<EquityPointer> equities);
  [[nodiscard]] const std::vector<EquityPointer>& defaultEquities() const {
    return defaultEquities_;
  }

  /// Looks for `text` after the delay; without text, lists the default equities at once.
  void setText(const std::string& text);
  /// Looks for the text now; while a search is under way, when that has ended.
  void searchWithoutDelay();
  /// Gives up a search that has not begun.
  void cancelDelayedSearch();
  /// Looks for nothing more: an equity has been chosen. The result stays, or is `equities`.
  void endSearch();
  void endSearch(std::vector<EquityPointer> equities);

  [[nodiscard]] bool isSearchInProgress() const { return isSearchInProgress_; }
  [[nodiscard]] const SearchResult& currentResult() const { return currentResult_; }
  /// The equities of the result; none where it is an error.
  [[nodiscard]] const std::vector<EquityPointer>& equities() const;
  /// The text for which the result was found; none while it stems from no search.
  [[nodiscard]] const std::optional<std::string>& answeredText() const { return answeredText_; }
  /// The equity of the result that the text means beyond doubt: one whose symbol it is, or the
  /// nominal one where nothing else was found. Null without one.
  [[nodiscard]] EquityPointer exactMatch() const;
  /// The equity that the last search has offered though the provider does not know it; null for
  /// none.
  [[nodiscard]] const EquityPointer& nominalEquity() const { return nominalEquity_; }

 private:
  void search();
  void searchDidComplete(const std::string& searched, Result<std::vector<EquityPointer>> result);
  void appendNominalEquity(const std::string& searched, std::vector<EquityPointer>& equities);

  std::weak_ptr<QuoteProvider> quoteProvider_;
  std::vector<EquityPointer> defaultEquities_;
  std::string text_;
  SearchResult currentResult_;
  std::optional<std::string> answeredText_;
  EquityPointer nominalEquity_;  ///< the one of the result
  bool isSearchInProgress_ = false;
  int providerGeneration_ = 0;
  std::shared_ptr<Timer> searchDelayTimer_;
};

/// The state of a search box for equities: a text, a popup with what was found for it, and the
/// equity that was chosen. Setters are for the screen that owns it and do not call `action`; the
/// other operations are what the user does. Typing never waits for a search. Main queue only.
class EquityComboBox {
 public:
  /// The rows that the popup shows at once, and the space between two of them, in pixels.
  static constexpr std::size_t numberOfVisibleItems = 9;
  static constexpr int intercellSpacing = 6;

  EquityComboBox();
  ~EquityComboBox();
  EquityComboBox(const EquityComboBox&) = delete;
  EquityComboBox& operator=(const EquityComboBox&) = delete;

  const std::shared_ptr<EquityComboBoxDataSource> equityComboBoxDataSource;

  /// Called when the user has chosen another equity, or none by changing the text.
  std::function<void()> action = [] {};
  /// Called whenever there is something new to draw.
  std::function<void()> changeHandler = [] {};

  // What is shown.

  /// What stands in the box: what the user typed, or the title of the selected equity.
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] const std::string& placeholder() const { return placeholder_; }
  [[nodiscard]] bool isEnabled() const { return isEnabled_; }
  /// The equity that the box stands for; null while the text names none that was chosen.
  [[nodiscard]] const EquityPointer& selectedEquity() const { return selectedEquity_; }
  /// Why the text stands for no equity: that nothing was found, or the error of the search. None
  /// while the user has yet to choose or a search to answer, and where one was chosen.
  [[nodiscard]] std::optional<std::string> message() const;

  /// Whether the selected equity is one that was offered though the provider does not know it.
  [[nodiscard]] bool isSelectionNominal() const;

  [[nodiscard]] bool isPopupOpen() const { return isPopupOpen_; }
  /// Whether a search is under way, for a sign beside the text.
  [[nodiscard]] bool isSearching() const { return equityComboBoxDataSource->isSearchInProgress(); }
  /// At least one: a popup without equities says why in its only row.
  [[nodiscard]] std::size_t numberOfRows() const;
  /// "ABC — Abc Mining"; "No matches.", "Searching…" or an error in a weaker colour.
  [[nodiscard]] AttributedText row(std::size_t index) const;
  /// Whether the row stands for an equity.
  [[nodiscard]] bool isRowSelectable(std::size_t index) const;
  /// The row that Return would choose.
  [[nodiscard]] std::optional<std::size_t> highlightedRow() const { return highlightedRow_; }
  /// What a screen reader says of the popup: the highlighted row with its place, or what the only
  /// row says. Empty while it is closed.
  [[nodiscard]] std::string announcement() const;

  // What the user does.

  /// Typing, pasting, deleting: whatever changes the text.
  void changeText(std::string text);
  /// Down and Up: opens the popup, or moves through its rows and around its ends.
  void highlightNextRow() { moveHighlight(true); }
  void highlightPreviousRow() { moveHighlight(false); }
  /// The mouse over a row.
  void highlightRow(std::size_t row);
  /// A click on a row. One without an equity does nothing.
  void chooseRow(std::size_t row);
  /// Return: chooses the highlighted row, or the equity whose symbol the text is, as soon as it is
  /// found. Says whether there was anything to do, so that the same key does not press the default
  /// button of a form.
  bool returnKey();
  /// The keyboard leaves the box: the popup closes, and a text that is a symbol chooses its equity
  /// as soon as that is found, without waiting for the delay.
  void finishEditing();
  /// Escape, or a click elsewhere: closes the popup. Says whether it was open.
  bool dismissPopup();
  /// The button of the box: shows what was found last, or closes the popup.
  void togglePopup();

  // What the screen sets.

  /// Shows `equity` as chosen; null empties the text.
  void setSelectedEquity(const EquityPointer& equity);
  void setQuoteProvider(const std::shared_ptr<QuoteProvider>& provider);
  void setDefaultEquities(std::vector<EquityPointer> equities);
  void setOffersNominalEquityWithCurrency(std::optional<Currency> currency);
  void setPlaceholder(std::string placeholder);
  void setEnabled(bool isEnabled);

 private:
  [[nodiscard]] bool showsSearching() const;
  [[nodiscard]] bool isAnswered() const;
  [[nodiscard]] std::string onlyRowText() const;
  void searchDidBegin();
  void searchDidEnd();
  void openPopup();
  void closePopup();
  void askForPopup();
  void moveHighlight(bool forwards);
  void chooseExactMatchWhenFound();
  void select(const EquityPointer& equity);

  std::string text_;
  std::string placeholder_;
  EquityPointer selectedEquity_;
  bool isEnabled_ = true;
  bool isEditing_ = false;  ///< the keyboard is in the box, so that the popup may open
  bool isPopupOpen_ = false;
  bool choosesExactMatch_ = false;  ///< the user is done and waits for what the text means
  std::optional<std::size_t> highlightedRow_;
};

}  // namespace corvane
