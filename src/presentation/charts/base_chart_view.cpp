#include "presentation/charts/base_chart_view.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace corvane {
namespace {

/// The least number of entries that a zoom shows.
constexpr double fewestEntries = 5;

ChartLegendEntry legendEntryOf(const ChartDataSet& dataSet) {
  using Mark = ChartLegendEntry::Mark;
  ChartLegendEntry entry{.label = dataSet.label, .colour = dataSet.fill.value_or(dataSet.colour)};
  switch (dataSet.shape) {
    case ChartDataSet::Shape::line:
      entry.mark = dataSet.fill ? Mark::area : dataSet.isDashed ? Mark::dashedLine : Mark::line;
      break;
    case ChartDataSet::Shape::candles:
    case ChartDataSet::Shape::bars:
      entry.mark = Mark::area;
      break;
    case ChartDataSet::Shape::circles:
      entry.mark = Mark::circle;
      break;
  }
  return entry;
}

std::string onOneLine(std::string text) {
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
    text.replace(at, 1, ", ");
  }
  return text;
}

}  // namespace

void BaseChartView::setNoninteractiveDataSets(std::vector<ChartDataSet> dataSets) {
  noninteractiveDataSets_ = std::move(dataSets);
  for (ChartDataSet& dataSet : noninteractiveDataSets_) {
    dataSet.isHighlightEnabled = false;
  }
}

std::vector<LimitLine> BaseChartView::leftAxisLimitLines(double /*viewWidth*/) const {
  return {};
}

std::vector<ChartLegendEntry> BaseChartView::legend() const {
  if (legendEntries) {
    return *legendEntries;
  }
  std::vector<ChartLegendEntry> entries;
  const auto add = [&](const ChartDataSet& dataSet) {
    if (!dataSet.label.empty()) {
      entries.push_back(legendEntryOf(dataSet));
    }
  };
  std::ranges::for_each(noninteractiveDataSets_, add);
  if (interactiveDataSet) {
    add(*interactiveDataSet);
  }
  return entries;
}

void BaseChartView::clear() {
  currentMouseoverDataIndex_.reset();
  highlightedDataIndex_.reset();
  selection_.reset();
  zoom_.reset();
  interactiveDataSet.reset();
  noninteractiveDataSets_.clear();
  xAxisLimitLines.clear();
  accessibleText.clear();
  changeHandler();
}

bool BaseChartView::isEmpty() const {
  const auto isWithoutEntries = [](const ChartDataSet& dataSet) { return dataSet.entries.empty(); };
  return (!interactiveDataSet || isWithoutEntries(*interactiveDataSet)) &&
         std::ranges::all_of(noninteractiveDataSets_, isWithoutEntries);
}

void BaseChartView::pointerMovedTo(std::optional<double> x) {
  const auto index = x ? convertXFromGraphToDataIndex(*x) : std::nullopt;
  if (index != currentMouseoverDataIndex_) {
    currentMouseoverDataIndex_ = index;
    highlightChangeHandler();
  }
}

void BaseChartView::clicked(std::optional<double> x) {
  if (valueSelectedHandler) {
    valueSelectedHandler(x ? convertXFromGraphToDataIndex(*x) : std::nullopt);
  }
}

void BaseChartView::doubleClicked(double x) {
  const auto index = convertXFromGraphToDataIndex(x);
  if (valueDoubleClickedHandler && index) {
    valueDoubleClickedHandler(*index);
  }
}

std::optional<AttributedText> BaseChartView::tooltip() const {
  if (!tooltipProvider || !currentMouseoverDataIndex_) {
    return std::nullopt;
  }
  return tooltipProvider(*currentMouseoverDataIndex_);
}

std::string BaseChartView::cursorText() const {
  if (const auto text = tooltip(); text && !text->isEmpty()) {
    return onOneLine(text->plainText());
  }
  const ChartEntry* entry =
      currentMouseoverDataIndex_ ? entryAt(*currentMouseoverDataIndex_) : nullptr;
  if (entry == nullptr) {
    return "";
  }
  const std::string key = keyTextAt(entry->x);
  return (key.empty() ? "" : key + ": ") + textOfValue(entry->y);
}

void BaseChartView::highlight(std::optional<std::size_t> dataIndex) {
  if (dataIndex != highlightedDataIndex_) {
    highlightedDataIndex_ = dataIndex;
    if (const ChartEntry* entry = dataIndex ? entryAt(*dataIndex) : nullptr) {
      scrollTo(entry->x);
    }
    highlightChangeHandler();
  }
}

const ChartEntry* BaseChartView::entryAt(std::size_t dataIndex) const {
  return entryAtX(convertXFromDataIndexToGraph(dataIndex));
}

const ChartEntry* BaseChartView::entryAtX(double x) const {
  if (!interactiveDataSet) {
    return nullptr;
  }
  const auto& entries = interactiveDataSet->entries;
  const auto found = std::ranges::lower_bound(entries, x, {}, &ChartEntry::x);
  return found != entries.end() && found->x == x ? &*found : nullptr;
}

void BaseChartView::select(std::optional<Span> span) {
  if (span) {
    const auto [from, to] = std::minmax(span->from, span->to);
    span = from == to ? std::nullopt : std::optional(Span{from, to});
  }
  if (span != selection_) {
    selection_ = span;
    highlightChangeHandler();
  }
}

std::optional<AttributedText> BaseChartView::selectionText() const {
  const ChartEntry* from = selection_ ? entryAtX(selection_->from) : nullptr;
  const ChartEntry* to = selection_ ? entryAtX(selection_->to) : nullptr;
  if (from == nullptr || to == nullptr) {
    return std::nullopt;
  }
  AttributedText text = changeText(from->y, to->y);
  if (keyText) {
    text.append("\nfrom " + keyTextAt(from->x) + "\nto " + keyTextAt(to->x));
  }
  return text;
}

AttributedText BaseChartView::changeText(double from, double to) const {
  return AttributedText(textOfValue(from) + " → " + textOfValue(to));
}

std::string BaseChartView::textOfValue(double value) const {
  return valueText ? valueText(value) : Decimal::fromDouble(value).description();
}

std::string BaseChartView::keyTextAt(double x) const {
  const auto index = keyText ? convertXFromGraphToDataIndex(x) : std::nullopt;
  return index ? keyText(*index) : "";
}

BaseChartView::Span BaseChartView::fullXRange() const {
  double first = std::numeric_limits<double>::infinity();
  double last = -first;
  const auto include = [&](const ChartDataSet& dataSet) {
    if (!dataSet.entries.empty()) {
      const double margin = dataSet.shape == ChartDataSet::Shape::bars ? 0.5 : 0;
      first = std::min(first, dataSet.entries.front().x - margin);
      last = std::max(last, dataSet.entries.back().x + margin);
    }
  };
  std::ranges::for_each(noninteractiveDataSets_, include);
  if (interactiveDataSet) {
    include(*interactiveDataSet);
  }
  first = xAxisMinimum.value_or(first <= last ? first : 0);
  last = xAxisMaximum.value_or(std::max(first, last));
  // A single value stands in the middle.
  return last > first ? Span{first, last} : Span{first - 0.5, first + 0.5};
}

BaseChartView::Span BaseChartView::shownXRange() const {
  return zoom_.value_or(fullXRange());
}

void BaseChartView::zoomBy(double factor, double x) {
  const Span full = fullXRange();
  const Span shown = shownXRange();
  const double length = full.to - full.from;
  const std::size_t count = interactiveDataSet ? interactiveDataSet->entries.size() : 0;
  const double least = std::min(
      length, length * fewestEntries / static_cast<double>(std::max<std::size_t>(count, 1)));
  const double wanted = std::clamp((shown.to - shown.from) * factor, least, length);
  const auto before = std::exchange(zoom_, std::nullopt);
  if (wanted < length) {
    const double share = (x - shown.from) / (shown.to - shown.from);
    const double from = std::clamp(x - wanted * share, full.from, full.to - wanted);
    zoom_ = Span{from, from + wanted};
  }
  if (zoom_ != before) {
    changeHandler();
  }
}

void BaseChartView::resetZoom() {
  if (zoom_) {
    zoom_.reset();
    changeHandler();
  }
}

void BaseChartView::scrollTo(double x) {
  if (!zoom_ || (zoom_->from <= x && x <= zoom_->to)) {
    return;
  }
  const double length = zoom_->to - zoom_->from;
  const double from = x < zoom_->from ? x : x - length;
  zoom_ = Span{from, from + length};
  changeHandler();
}

void BaseChartView::resetConversions() {
  convertXFromDataIndexToGraph = [](std::size_t index) { return static_cast<double>(index); };
  convertXFromGraphToDataIndex = [](double x) -> std::optional<std::size_t> {
    return x < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(x));
  };
}

}  // namespace corvane
