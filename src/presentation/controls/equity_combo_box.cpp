#include "presentation/controls/equity_combo_box.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "core/market/portfolio_asset.h"
#include "platform/text/unicode/letter_case.h"

namespace corvane {
namespace {

constexpr std::string_view noMatches = "No matches.";
constexpr std::string_view searching = "Searching…";

bool isSymbolOf(const std::string& text, const EquityInfo& equity) {
  return uppercased(text) == uppercased(equity.symbol);
}

bool holds(const std::vector<EquityPointer>& equities, const EquityPointer& wanted) {
  return std::ranges::any_of(equities,
                             [&](const EquityPointer& equity) { return *equity == *wanted; });
}

/// A symbol is typed without spaces around it, but may be pasted with them.
std::string withoutOuterSpaces(const std::string& text) {
  constexpr std::string_view spaces = " \t\r\n";
  const auto first = text.find_first_not_of(spaces);
  return first == std::string::npos ? std::string()
                                    : text.substr(first, text.find_last_not_of(spaces) - first + 1);
}

}  // namespace

std::shared_ptr<EquityComboBoxDataSource> EquityComboBoxDataSource::make() {
  return std::make_shared<EquityComboBoxDataSource>(Passkey{});
}

void EquityComboBoxDataSource::setQuoteProvider(const std::shared_ptr<QuoteProvider>& provider) {
  if (provider != quoteProvider_.lock()) {
    quoteProvider_ = provider;
    // The former one may go without an answer, which nobody is to wait for.
    ++providerGeneration_;
    isSearchInProgress_ = false;
  }
}

void EquityComboBoxDataSource::setDefaultEquities(std::vector<EquityPointer> equities) {
  defaultEquities_ = std::move(equities);
  if (text_.empty() && !answeredText_) {
    currentResult_ = defaultEquities_;
  }
}

void EquityComboBoxDataSource::setText(const std::string& text) {
  cancelDelayedSearch();
  text_ = withoutOuterSpaces(text);
  if (text_.empty()) {
    currentResult_ = defaultEquities_;
    answeredText_.reset();
    nominalEquity_ = nullptr;
    return;
  }
  searchDelayTimer_ =
      Timer::scheduled(searchDelayInterval, false, [self = weak_from_this()](Timer&) {
        if (const auto living = self.lock()) {
          living->search();
        }
      });
}

void EquityComboBoxDataSource::searchWithoutDelay() {
  cancelDelayedSearch();
  search();
}

void EquityComboBoxDataSource::cancelDelayedSearch() {
  if (searchDelayTimer_ != nullptr) {
    searchDelayTimer_->invalidate();
    searchDelayTimer_ = nullptr;
  }
}

void EquityComboBoxDataSource::endSearch() {
  cancelDelayedSearch();
  text_.clear();
  answeredText_.reset();
}

void EquityComboBoxDataSource::endSearch(std::vector<EquityPointer> equities) {
  endSearch();
  currentResult_ = std::move(equities);
  nominalEquity_ = nullptr;
}

const std::vector<EquityPointer>& EquityComboBoxDataSource::equities() const {
  static const std::vector<EquityPointer> none;
  const auto* found = std::get_if<std::vector<EquityPointer>>(&currentResult_);
  return found == nullptr ? none : *found;
}

EquityPointer EquityComboBoxDataSource::exactMatch() const {
  for (const auto* list : {&equities(), &defaultEquities_}) {
    for (const EquityPointer& equity : *list) {
      if (isSymbolOf(text_, *equity) && (equity != nominalEquity_ || list->size() == 1)) {
        return equity;
      }
    }
  }
  return nullptr;
}

void EquityComboBoxDataSource::search() {
  const auto provider = quoteProvider_.lock();
  if (isSearchInProgress_ || text_.empty() || provider == nullptr) {
    return;
  }
  isSearchInProgress_ = true;
  searchDidBegin();
  provider->searchEquities(
      text_, [self = weak_from_this(), searched = text_,
              generation = providerGeneration_](Result<std::vector<EquityPointer>> result) mutable {
        DispatchQueue::main()->async([self, searched = std::move(searched), generation,
                                      result = std::move(result)]() mutable {
          const auto living = self.lock();
          if (living != nullptr && generation == living->providerGeneration_) {
            living->searchDidComplete(searched, std::move(result));
          }
        });
      });
}

void EquityComboBoxDataSource::searchDidComplete(const std::string& searched,
                                                 Result<std::vector<EquityPointer>> result) {
  isSearchInProgress_ = false;
  if (text_.empty()) {
    searchDidEnd();
    return;
  }
  nominalEquity_ = nullptr;
  if (result) {
    appendNominalEquity(searched, *result);
    currentResult_ = std::move(*result);
  } else {
    currentResult_ = std::move(result.error());
  }
  answeredText_ = searched;
  searchDidEnd();
  if (text_ != searched) {
    searchWithoutDelay();
  }
}

void EquityComboBoxDataSource::appendNominalEquity(const std::string& searched,
                                                   std::vector<EquityPointer>& equities) {
  const auto provider = quoteProvider_.lock();
  if (!offersNominalEquityWithCurrency || provider == nullptr ||
      std::ranges::any_of(
          equities, [&](const EquityPointer& equity) { return isSymbolOf(searched, *equity); })) {
    return;
  }
  nominalEquity_ = provider->equityWithId(uppercased(searched));
  if (!nominalEquity_->isAuthoritative) {
    nominalEquity_->currency = *offersNominalEquityWithCurrency;
  }
  equities.push_back(nominalEquity_);
}

EquityComboBox::EquityComboBox() : equityComboBoxDataSource(EquityComboBoxDataSource::make()) {
  equityComboBoxDataSource->searchDidBegin = [this] { searchDidBegin(); };
  equityComboBoxDataSource->searchDidEnd = [this] { searchDidEnd(); };
}

EquityComboBox::~EquityComboBox() {
  equityComboBoxDataSource->searchDidBegin = [] {};
  equityComboBoxDataSource->searchDidEnd = [] {};
}

std::optional<std::string> EquityComboBox::message() const {
  if (selectedEquity_ != nullptr || !equityComboBoxDataSource->answeredText() ||
      !equityComboBoxDataSource->equities().empty()) {
    return std::nullopt;
  }
  return onlyRowText();
}

bool EquityComboBox::isSelectionNominal() const {
  return selectedEquity_ != nullptr && !selectedEquity_->isAuthoritative &&
         selectedEquity_ == equityComboBoxDataSource->nominalEquity();
}

std::size_t EquityComboBox::numberOfRows() const {
  return showsSearching() ? 1
                          : std::max<std::size_t>(1, equityComboBoxDataSource->equities().size());
}

AttributedText EquityComboBox::row(std::size_t index) const {
  assert(index < numberOfRows());
  AttributedText text =
      isRowSelectable(index)
          ? PortfolioAsset(equityComboBoxDataSource->equities()[index]).title()
          : AttributedText(onlyRowText(), {.colour = Colour::Name::secondaryLabel});
  text.lineBreak = LineBreak::truncateTail;
  return text;
}

bool EquityComboBox::isRowSelectable(std::size_t index) const {
  return !showsSearching() && index < equityComboBoxDataSource->equities().size();
}

std::string EquityComboBox::announcement() const {
  if (!isPopupOpen_) {
    return {};
  }
  if (!isRowSelectable(0)) {
    return onlyRowText();
  }
  const std::size_t rows = numberOfRows();
  if (!highlightedRow_) {
    return rows == 1 ? "1 match" : std::to_string(rows) + " matches";
  }
  return row(*highlightedRow_).plainText() + ", " + std::to_string(*highlightedRow_ + 1) + " of " +
         std::to_string(rows);
}

void EquityComboBox::changeText(std::string text) {
  if (text == text_) {
    return;
  }
  text_ = std::move(text);
  isEditing_ = true;
  choosesExactMatch_ = false;
  const bool hadEquity = std::exchange(selectedEquity_, nullptr) != nullptr;
  equityComboBoxDataSource->setText(text_);
  highlightedRow_.reset();
  if (text_.empty() && equityComboBoxDataSource->equities().empty()) {
    isPopupOpen_ = false;
  }
  changeHandler();
  if (hadEquity) {
    action();
  }
}

void EquityComboBox::highlightRow(std::size_t row) {
  if (isPopupOpen_ && isRowSelectable(row) && highlightedRow_ != row) {
    highlightedRow_ = row;
    changeHandler();
  }
}

void EquityComboBox::chooseRow(std::size_t row) {
  if (isRowSelectable(row)) {
    select(equityComboBoxDataSource->equities()[row]);
  }
}

bool EquityComboBox::returnKey() {
  if (isPopupOpen_ && highlightedRow_) {
    chooseRow(*highlightedRow_);
    return true;
  }
  if (selectedEquity_ == nullptr && !text_.empty()) {
    chooseExactMatchWhenFound();
    if (selectedEquity_ == nullptr && !isPopupOpen_) {
      openPopup();
      changeHandler();
    }
    return true;
  }
  return dismissPopup();
}

void EquityComboBox::finishEditing() {
  isEditing_ = false;
  if (selectedEquity_ == nullptr && !text_.empty()) {
    chooseExactMatchWhenFound();
  }
  dismissPopup();
}

bool EquityComboBox::dismissPopup() {
  equityComboBoxDataSource->cancelDelayedSearch();
  if (!isPopupOpen_) {
    return false;
  }
  closePopup();
  changeHandler();
  return true;
}

void EquityComboBox::togglePopup() {
  if (!dismissPopup()) {
    askForPopup();
  }
}

void EquityComboBox::setSelectedEquity(const EquityPointer& equity) {
  selectedEquity_ = equity;
  choosesExactMatch_ = false;
  closePopup();
  if (equity == nullptr) {
    text_.clear();
    equityComboBoxDataSource->setText({});
  } else {
    text_ = PortfolioAsset(equity).title().plainText();
    const auto& defaults = equityComboBoxDataSource->defaultEquities();
    if (holds(equityComboBoxDataSource->equities(), equity)) {
      equityComboBoxDataSource->endSearch();
    } else if (holds(defaults, equity)) {
      equityComboBoxDataSource->endSearch(defaults);
    } else {
      equityComboBoxDataSource->endSearch({equity});
    }
  }
  changeHandler();
}

void EquityComboBox::setQuoteProvider(const std::shared_ptr<QuoteProvider>& provider) {
  equityComboBoxDataSource->setQuoteProvider(provider);
  changeHandler();
}

void EquityComboBox::setDefaultEquities(std::vector<EquityPointer> equities) {
  equityComboBoxDataSource->setDefaultEquities(std::move(equities));
  highlightedRow_.reset();
  changeHandler();
}

void EquityComboBox::setOffersNominalEquityWithCurrency(std::optional<Currency> currency) {
  equityComboBoxDataSource->offersNominalEquityWithCurrency = currency;
}

void EquityComboBox::setPlaceholder(std::string placeholder) {
  placeholder_ = std::move(placeholder);
  changeHandler();
}

void EquityComboBox::setEnabled(bool isEnabled) {
  isEnabled_ = isEnabled;
  if (!isEnabled) {
    closePopup();
  }
  changeHandler();
}

/// While nothing is known of the text, what is listed has nothing to do with it.
bool EquityComboBox::showsSearching() const {
  return isSearching() && !equityComboBoxDataSource->answeredText() && selectedEquity_ == nullptr &&
         !text_.empty();
}

bool EquityComboBox::isAnswered() const {
  return !text_.empty() && equityComboBoxDataSource->answeredText() == withoutOuterSpaces(text_);
}

std::string EquityComboBox::onlyRowText() const {
  if (showsSearching()) {
    return std::string(searching);
  }
  const auto* error = std::get_if<ErrorPointer>(&equityComboBoxDataSource->currentResult());
  return error == nullptr ? std::string(noMatches)
                          : (*error)->description().value_or("The search could not be made.");
}

void EquityComboBox::searchDidBegin() {
  openPopup();
  changeHandler();
}

void EquityComboBox::searchDidEnd() {
  highlightedRow_.reset();
  if (selectedEquity_ == nullptr && !text_.empty()) {
    const EquityPointer match = equityComboBoxDataSource->exactMatch();
    if (choosesExactMatch_ && match != nullptr) {
      select(match);
      return;
    }
    openPopup();
  }
  changeHandler();
}

/// Nothing opens over a field that the keyboard has moved on to. A row is highlighted at once where
/// it is an answer to all that was typed.
void EquityComboBox::openPopup() {
  const auto& equities = equityComboBoxDataSource->equities();
  if (!isEnabled_ || !isEditing_ || (text_.empty() && equities.empty())) {
    return;
  }
  isPopupOpen_ = true;
  if (!highlightedRow_ && isRowSelectable(0) && (selectedEquity_ != nullptr || isAnswered())) {
    const EquityPointer preferred =
        selectedEquity_ != nullptr ? selectedEquity_ : equityComboBoxDataSource->exactMatch();
    const auto found = std::ranges::find(equities, preferred);
    highlightedRow_ =
        found == equities.end() ? 0 : static_cast<std::size_t>(found - equities.begin());
  }
}

void EquityComboBox::closePopup() {
  isPopupOpen_ = false;
  highlightedRow_.reset();
}

void EquityComboBox::moveHighlight(bool forwards) {
  if (!isPopupOpen_) {
    askForPopup();
    return;
  }
  if (isRowSelectable(0)) {
    const std::size_t rows = numberOfRows();
    const std::size_t before = highlightedRow_.value_or(forwards ? rows - 1 : 0);
    highlightedRow_ = (before + (forwards ? 1 : rows - 1)) % rows;
    changeHandler();
  }
}

/// Opens the popup for a user who will not wait for the delay.
void EquityComboBox::askForPopup() {
  isEditing_ = true;
  if (selectedEquity_ == nullptr && !isAnswered()) {
    equityComboBoxDataSource->searchWithoutDelay();
  }
  openPopup();
  changeHandler();
}

void EquityComboBox::chooseExactMatchWhenFound() {
  if (const EquityPointer match = equityComboBoxDataSource->exactMatch()) {
    select(match);
    return;
  }
  choosesExactMatch_ = true;
  if (!isAnswered()) {
    equityComboBoxDataSource->searchWithoutDelay();
  }
}

void EquityComboBox::select(const EquityPointer& equity) {
  const EquityPointer former = selectedEquity_;
  setSelectedEquity(equity);
  if (former == nullptr || !(*former == *equity)) {
    action();
  }
}

}  // namespace corvane
