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
  using SearchResult = std::variant<std::vector<EquityPointer>, ErrorPointer>;

  [[nodiscard]] static std::shared_ptr<EquityComboBoxDataSource> make();
  explicit EquityComboBoxDataSource(Passkey /*passkey*/) {}
  EquityComboBoxDataSource(const EquityComboBoxDataSource&) = delete;
  EquityComboBoxDataSource& operator=(const EquityComboBoxDataSource&) = delete;

  /// Who is asked. Without one nothing is found, and nothing is said.
  std::weak_ptr<QuoteProvider> quoteProvider;
  DispatchQueue::Duration searchDelayInterval = std::chrono::milliseconds(500);
  /// What is listed while there is no text.
  std::vector<EquityPointer> defaultEquities;
  /// Where set, a search whose text is no symbol that was found also offers an equity of that
  /// symbol, of which nothing but this currency is known.
  std::optional<Currency> offersNominalEquityWithCurrency;
  /// Called when a search has begun or ended.
  std::function<void()> searchDidBegin = [] {};
  std::function<void()> searchDidEnd = [] {};

  /// Looks for `text` after the delay; without text, lists the default equities at once.
  void setText(std::string text);
  /// Looks for the text now rather than after the delay, unless a search is under way.
  void searchWithoutDelay();
  /// Whether the text has yet to be looked for, or is being looked for.
  [[nodiscard]] bool isAnswerPending() const;
  /// Gives up a search that has not begun.
  void cancelDelayedSearch();

  [[nodiscard]] bool isSearchInProgress() const { return isSearchInProgress_; }
  [[nodiscard]] const SearchResult& currentResult() const { return currentResult_; }
  void setCurrentResult(std::vector<EquityPointer> equities);
  /// The equities of the result; none where it is an error.
  [[nodiscard]] const std::vector<EquityPointer>& equities() const;

 private:
  void search();
  void searchDidComplete(const std::string& searched, Result<std::vector<EquityPointer>> result);
  void appendNominalEquity(const std::string& searched, std::vector<EquityPointer>& equities) const;

  std::string text_;
  SearchResult currentResult_;
  bool isSearchInProgress_ = false;
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

  [[nodiscard]] bool isPopupOpen() const { return isPopupOpen_; }
  /// Whether a search is under way, for a sign beside the text.
  [[nodiscard]] bool isSearching() const;
  /// At least one: a popup without equities says why in its only row.
  [[nodiscard]] std::size_t numberOfRows() const;
  /// "ABC — Abc Mining"; "No matches.", "Searching…" or an error in a weaker colour.
  [[nodiscard]] AttributedText row(std::size_t index) const;
  /// Whether the row stands for an equity.
  [[nodiscard]] bool isRowSelectable(std::size_t index) const;
  /// The row that Return would choose; also for the mouse over the popup.
  [[nodiscard]] std::optional<std::size_t> highlightedRow() const { return highlightedRow_; }
  /// What a screen reader says when the popup changes: "3 matches, ABC — Abc Mining".
  [[nodiscard]] std::string announcement() const;

  // What the user does.

  /// Typing, pasting, deleting: whatever changes the text.
  void changeText(std::string text);
  /// Down and Up: opens the popup, or moves through its rows and around its ends.
  void highlightNextRow();
  void highlightPreviousRow();
  void highlightRow(std::optional<std::size_t> row);
  /// A click on a row. One without an equity does nothing.
  void chooseRow(std::size_t row);
  /// Return: chooses the highlighted row; otherwise see `finishEditing`. Says whether there was
  /// anything to do, so that a form's default button is not pressed with the same key.
  bool returnKey();
  /// The keyboard leaves the box, or Return is pressed: a text that is a symbol chooses its equity
  /// as soon as one is found, without waiting for the delay.
  void finishEditing();
  /// Escape, or a click elsewhere: closes the popup. Says whether it was open.
  bool dismissPopup();
  /// The button of the box: shows what was found last.
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
  void searchDidEnd();
  void openPopup();
  void moveHighlight(bool forwards);
  void select(EquityPointer equity);
  bool selectExactMatch();

  std::string text_;
  std::string placeholder_;
  EquityPointer selectedEquity_;
  bool isEnabled_ = true;
  bool isPopupOpen_ = false;
  bool hasResultForText_ = false;  ///< the result stems from the text or from its beginning
  bool choosesExactMatch_ = false;
  std::optional<std::size_t> highlightedRow_;
};

}  // namespace corvane
