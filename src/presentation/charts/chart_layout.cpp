#include "presentation/charts/chart_layout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvane {
namespace {

constexpr double headroom = 0.06;  // of the values' span, above the highest and below the lowest
constexpr double gap = 8;          // between two things of a chart
constexpr double narrowGap = 4;
constexpr double linesPerTick = 3;
constexpr double legendSpacing = 16;
constexpr double mostLegendShare = 0.25;  // of the height
constexpr double entriesPerColumn = 4;    // first, least, greatest and last

template <typename Visit>
void forEachDataSet(const BaseChartView& chart, Visit visit) {
  for (const ChartDataSet& dataSet : chart.noninteractiveDataSets()) {
    visit(dataSet);
  }
  if (chart.interactiveDataSet) {
    visit(*chart.interactiveDataSet);
  }
}

bool hasBase(const ChartDataSet& dataSet) {
  return dataSet.shape == ChartDataSet::Shape::bars ||
         dataSet.shape == ChartDataSet::Shape::candles;
}

using EntryIterator = std::vector<ChartEntry>::const_iterator;

EntryIterator firstAtOrAfter(const std::vector<ChartEntry>& entries, double x) {
  return std::ranges::lower_bound(entries, x, {}, &ChartEntry::x);
}

EntryIterator firstAfter(const std::vector<ChartEntry>& entries, double x) {
  return std::ranges::upper_bound(entries, x, {}, &ChartEntry::x);
}

/// Of the entries from `begin` to `end`, which stand in one column of pixels: those that make up
/// the picture of it.
void appendColumn(EntryIterator begin, EntryIterator end, bool isCandle,
                  std::vector<ChartEntry>& entries) {
  if (isCandle) {
    ChartEntry whole = *begin;
    for (auto entry = begin; entry != end; ++entry) {
      whole.y = std::max(whole.y, entry->y);
      whole.base = std::min(whole.base, entry->base);
    }
    entries.push_back(whole);
    return;
  }
  const auto [least, greatest] = std::minmax_element(
      begin, end, [](const ChartEntry& left, const ChartEntry& right) { return left.y < right.y; });
  for (auto entry = begin; entry != end; ++entry) {
    if (entry == begin || entry == least || entry == greatest || std::next(entry) == end) {
      entries.push_back(*entry);
    }
  }
}

/// Of ascending `ticks` as many as stand clear of each other, `pixels` apart for a step of one in
/// value: all, or every second, or every third, and zero where it is among them.
std::vector<ChartLayout::Tick> withoutTouching(std::vector<ChartLayout::Tick> ticks, double pixels,
                                               double leastDistance) {
  const auto zero = std::ranges::find(ticks, 0.0, &ChartLayout::Tick::value);
  const auto kept = static_cast<std::size_t>(zero == ticks.end() ? 0 : zero - ticks.begin());
  for (std::size_t stride = 1; stride < ticks.size(); ++stride) {
    std::vector<ChartLayout::Tick> clear;
    bool doTouch = false;
    for (std::size_t i = kept % stride; i < ticks.size(); i += stride) {
      doTouch |=
          !clear.empty() && std::abs(ticks[i].value - clear.back().value) * pixels < leastDistance;
      clear.push_back(ticks[i]);
    }
    if (!doTouch) {
      return clear;
    }
  }
  return ticks.empty() ? ticks : std::vector{ticks[kept]};
}

std::string moreText(std::size_t count) {
  return std::to_string(count) + " more";
}

}  // namespace

ChartLayout::ChartLayout(const BaseChartView& chart, const Surface& surface) : chart_(chart) {
  chooseRanges(surface);
  placeLegend(surface);
  placePlot(surface);
  if (chart_.drawsAxes) {
    leaveRoomForCircles();
    placeDates(surface);
    placeBandLabels(surface);
  }
}

void ChartLayout::chooseRanges(const Surface& surface) {
  const BaseChartView::Span shown = chart_.shownXRange();
  xRange_ = {shown.from, shown.to};
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  const auto include = [&](double value) {
    if (std::isfinite(value)) {
      low = std::min(low, value);
      high = std::max(high, value);
    }
  };
  forEachDataSet(chart_, [&](const ChartDataSet& dataSet) {
    const auto end = firstAfter(dataSet.entries, shown.to);
    for (auto entry = firstAtOrAfter(dataSet.entries, shown.from); entry < end; ++entry) {
      include(entry->y);
      if (hasBase(dataSet)) {
        include(entry->base);
      }
    }
  });
  for (const LimitLine& line : chart_.leftAxisLimitLines(surface.width)) {
    include(line.value);
  }
  const double leastValue = low;
  if (chart_.axisMinimum) {
    include(*chart_.axisMinimum);
  }
  if (!(low <= high)) {
    low = 0;
    high = 1;
  }
  if (low == high) {
    const double half = low == 0 ? 0.5 : std::abs(low) * headroom;
    low -= half;
    high += half;
  }
  const double room = (high - low) * headroom;
  const bool isOnMinimum = chart_.axisMinimum && *chart_.axisMinimum <= leastValue;
  yRange_ = {isOnMinimum ? *chart_.axisMinimum : low - room, high + room};
}

void ChartLayout::placeLegend(const Surface& surface) {
  plotArea_ = {narrowGap, narrowGap, surface.width - narrowGap, surface.height - narrowGap};
  if (!chart_.drawsAxes) {
    return;
  }
  const std::vector<ChartLegendEntry> entries = chart_.legend();
  const double rowHeight = surface.lineHeight + narrowGap;
  const auto mostRows = static_cast<std::size_t>(
      std::max(1.0, std::floor(surface.height * mostLegendShare / rowHeight)));
  const double right = surface.width - gap;
  double x = gap;
  std::size_t row = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto widthOf = [&](const std::string& text) {
      return legendMarkWidth + narrowGap + surface.textWidth(text);
    };
    const double width = widthOf(entries[i].label);
    if (x > gap && x + width > right) {
      ++row;
      x = gap;
    }
    // Of the last row the end is kept for the number of those that find no place.
    const std::size_t left = entries.size() - i;
    const bool isLastRow = row + 1 == mostRows;
    const double needed =
        left > 1 && isLastRow ? width + legendSpacing + widthOf(moreText(left)) : width;
    if (row == mostRows || (isLastRow && x > gap && x + needed > right)) {
      // Whatever still follows might fit as a whole.
      double end = x;
      for (std::size_t j = i; j < entries.size(); ++j) {
        end += widthOf(entries[j].label) + (j + 1 < entries.size() ? legendSpacing : 0);
      }
      if (row == mostRows || end > right) {
        legend_.push_back({{.label = moreText(left), .colour = Colour::Name::clear},
                           x,
                           static_cast<double>(std::min(row, mostRows - 1)) * rowHeight,
                           widthOf(moreText(left))});
        break;
      }
    }
    legend_.push_back({entries[i], x, static_cast<double>(row) * rowHeight, width});
    x += width + legendSpacing;
  }
  if (legend_.empty()) {
    return;
  }
  const double height = legend_.back().y + rowHeight;
  plotArea_.bottom -= height;
  for (LegendLabel& label : legend_) {
    label.y += plotArea_.bottom + narrowGap;
  }
}

void ChartLayout::placePlot(const Surface& surface) {
  if (!chart_.drawsAxes) {
    return;
  }
  // Half a line above, for the uppermost value; a line below, for the dates.
  plotArea_.top += surface.lineHeight / 2;
  plotArea_.bottom -= chart_.xAxisLimitLines.empty() ? gap : surface.lineHeight + gap;
  plotArea_.bottom = std::max(plotArea_.bottom, plotArea_.top + 1);
  chooseTicks(surface);
  const auto widest = [&](const std::vector<Tick>& ticks) {
    double width = 0;
    for (const Tick& tick : ticks) {
      width = std::max(width, surface.textWidth(tick.label));
    }
    return ticks.empty() ? gap : width + 2 * gap;
  };
  plotArea_.left = widest(leftTicks_);
  plotArea_.right = std::max(plotArea_.left + 1, surface.width - widest(rightTicks_));
}

void ChartLayout::chooseTicks(const Surface& surface) {
  const auto aim = static_cast<std::size_t>(
      std::max(2.0, plotArea_.height() / (surface.lineHeight * linesPerTick)));
  const auto ticks = [&](AxisRenderer* axis) {
    std::vector<Tick> made;
    if (axis != nullptr) {
      axis->computeAxis(yRange_.lower, yRange_.upper);
      for (const double value : axis->labelledValues(yRange_.lower, yRange_.upper, aim)) {
        made.push_back({value, axis->label(value)});
      }
    }
    return withoutTouching(std::move(made), plotArea_.height() / (yRange_.upper - yRange_.lower),
                           surface.lineHeight + narrowGap);
  };
  leftTicks_ = ticks(chart_.leftAxisRenderer.get());
  rightTicks_ = ticks(chart_.rightAxisRenderer.get());
}

/// Circles that stand at the ends of the data would cover the labels of the value axes.
void ChartLayout::leaveRoomForCircles() {
  double radius = 0;
  forEachDataSet(chart_, [&](const ChartDataSet& dataSet) {
    if (dataSet.shape == ChartDataSet::Shape::circles && !dataSet.entries.empty()) {
      radius = std::max(radius, dataSet.circleRadius);
    }
  });
  const double width = plotArea_.width() - 2 * radius;
  if (radius == 0 || chart_.isZoomed() || width <= 2 * radius) {
    return;
  }
  const double margin = (xRange_.upper - xRange_.lower) * radius / width;
  xRange_ = {xRange_.lower - margin, xRange_.upper + margin};
}

/// Every date has a label, or every second one, or every third: as many as stand side by side.
void ChartLayout::placeDates(const Surface& surface) {
  const auto& lines = chart_.xAxisLimitLines;
  std::vector<Label> labels;
  bool hasFirst = false;
  for (const LimitLine& line : lines) {
    const Label label{line.label, xPixel(line.value), plotArea_.bottom + narrowGap,
                      surface.textWidth(line.label)};
    if (!label.text.empty() && label.x >= plotArea_.left - 1 &&
        label.x + label.width <= surface.width - narrowGap) {
      hasFirst |= &line == &lines.front();
      labels.push_back(label);
    }
  }
  const auto collide = [&](std::size_t left, std::size_t right) {
    return right < labels.size() && labels[left].x + labels[left].width + gap > labels[right].x;
  };
  // The first one may name what only a few values at the edge belong to; then the second one, if it
  // has all the room that it needs, says more.
  const std::size_t first = hasFirst && collide(0, 1) && !collide(1, 2) ? 1 : 0;
  std::size_t stride = 1;
  const auto doCollide = [&] {
    for (std::size_t i = first; i < labels.size(); i += stride) {
      if (collide(i, i + stride)) {
        return true;
      }
    }
    return false;
  };
  while (doCollide()) {
    ++stride;
  }
  for (std::size_t i = first; i < labels.size(); i += stride) {
    dateLabels_.push_back(labels[i]);
  }
}

void ChartLayout::placeBandLabels(const Surface& surface) {
  forEachDataSet(chart_, [&](const ChartDataSet& dataSet) {
    if (!dataSet.fill || dataSet.entries.empty()) {
      return;
    }
    const auto end = firstAfter(dataSet.entries, xRange_.upper);
    if (end == dataSet.entries.begin()) {
      return;
    }
    const ChartEntry& last = *std::prev(end);
    const double top = yPixel(std::max(last.y, last.base));
    const double bottom = std::min(yPixel(std::min(last.y, last.base)), plotArea_.bottom);
    if (bottom - top < surface.lineHeight) {
      return;
    }
    const double width = surface.textWidth(dataSet.label);
    const double right = std::min(xPixel(last.x), plotArea_.right) - narrowGap;
    const Label label{dataSet.label, right - width, (top + bottom - surface.lineHeight) / 2, width};
    const bool overlaps = std::ranges::any_of(bandLabels_, [&](const Label& other) {
      return std::abs(other.y - label.y) < surface.lineHeight;
    });
    if (label.x > plotArea_.left && !overlaps) {
      bandLabels_.push_back(label);
    }
  });
}

double ChartLayout::xPixel(double x) const {
  return plotArea_.left + (x - xRange_.lower) / (xRange_.upper - xRange_.lower) * plotArea_.width();
}

double ChartLayout::yPixel(double y) const {
  return plotArea_.bottom -
         (y - yRange_.lower) / (yRange_.upper - yRange_.lower) * plotArea_.height();
}

double ChartLayout::xAt(double pixel) const {
  return xRange_.lower +
         (pixel - plotArea_.left) / plotArea_.width() * (xRange_.upper - xRange_.lower);
}

std::vector<ChartEntry> ChartLayout::shownEntries(const ChartDataSet& dataSet) const {
  const auto& entries = dataSet.entries;
  auto begin = entries.begin() + static_cast<std::ptrdiff_t>(firstShownEntry(dataSet));
  auto end = firstAfter(entries, xRange_.upper);
  end += end != entries.end() ? 1 : 0;
  const bool isLine = dataSet.shape == ChartDataSet::Shape::line;
  const bool isCandle = dataSet.shape == ChartDataSet::Shape::candles;
  const auto count = static_cast<double>(end - begin);
  if ((!isLine && !isCandle) || count <= entriesPerColumn * plotArea_.width()) {
    if (!isCandle || count <= plotArea_.width()) {
      return {begin, end};
    }
  }
  std::vector<ChartEntry> shown;
  while (begin != end) {
    const double column = std::floor(xPixel(begin->x));
    auto next = std::next(begin);
    while (next != end && std::floor(xPixel(next->x)) == column) {
      ++next;
    }
    appendColumn(begin, next, isCandle, shown);
    begin = next;
  }
  return shown;
}

std::size_t ChartLayout::firstShownEntry(const ChartDataSet& dataSet) const {
  const auto first = firstAtOrAfter(dataSet.entries, xRange_.lower) - dataSet.entries.begin();
  // A line goes on to its neighbours beyond the edges.
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, first - 1));
}

std::optional<std::size_t> ChartLayout::nearestEntry(double x, double y) const {
  if (!chart_.interactiveDataSet || !plotArea_.contains(x, y)) {
    return std::nullopt;
  }
  const auto& entries = chart_.interactiveDataSet->entries;
  auto begin = firstAtOrAfter(entries, xRange_.lower);
  const auto end = firstAfter(entries, xRange_.upper);
  if (begin >= end) {
    return std::nullopt;
  }
  const bool isInPlane = chart_.interactiveDataSet->shape == ChartDataSet::Shape::circles;
  const auto distance = [&](const ChartEntry& entry) {
    return std::hypot(xPixel(entry.x) - x, isInPlane ? yPixel(entry.y) - y : 0);
  };
  auto nearest = begin;
  if (isInPlane) {
    nearest = std::min_element(begin, end, [&](const ChartEntry& left, const ChartEntry& right) {
      return distance(left) < distance(right);
    });
  } else {
    nearest = std::clamp(firstAtOrAfter(entries, xAt(x)), begin, std::prev(end));
    if (nearest != begin && distance(*std::prev(nearest)) < distance(*nearest)) {
      --nearest;
    }
  }
  return static_cast<std::size_t>(nearest - entries.begin());
}

std::optional<std::size_t> ChartLayout::nextEntry(std::optional<std::size_t> present,
                                                  Step step) const {
  if (!chart_.interactiveDataSet || chart_.interactiveDataSet->entries.empty()) {
    return std::nullopt;
  }
  const std::size_t last = chart_.interactiveDataSet->entries.size() - 1;
  const std::size_t tenth = std::max<std::size_t>(1, (last + 1) / 10);
  const auto moved = [&](bool isForward, std::size_t by) {
    if (!present) {
      return isForward ? 0 : last;
    }
    return isForward ? std::min(last, *present + by) : *present - std::min(*present, by);
  };
  switch (step) {
    case Step::back:
      return moved(false, 1);
    case Step::forward:
      return moved(true, 1);
    case Step::tenthBack:
      return moved(false, tenth);
    case Step::tenthForward:
      return moved(true, tenth);
    case Step::first:
      return 0;
    case Step::last:
      return last;
  }
  return std::nullopt;
}

ChartLayout::Box tooltipPlace(double x, double y, double width, double height,
                              const ChartLayout::Box& screen) {
  const auto place = [](double pointer, double length, double low, double high) {
    double start = pointer + BaseChartView::tooltipOffset;
    if (start + length > high) {
      start = pointer - BaseChartView::tooltipOffset - length;
    }
    return std::max(low, std::min(start, high - length));
  };
  const double left = place(x, width, screen.left, screen.right);
  const double top = place(y, height, screen.top, screen.bottom);
  return {left, top, left + width, top + height};
}

}  // namespace corvane
