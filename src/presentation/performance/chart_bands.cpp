#include "presentation/performance/chart_bands.h"

#include <cstddef>
#include <string>

namespace corvane {
namespace {

constexpr double bandAlpha = 0.5;
/// Bands go from blue at the bottom on to purple, and every other one is paler: neighbours differ
/// in lightness, which everybody sees, and no two bands of a chart have one tone in the legend.
constexpr double fadingOfEveryOther = 0.45;
constexpr double netDepositsWidth = 2;

Colour fullTone(std::size_t band, std::size_t count) {
  const Colour blue = Colour::Name::systemBlue;
  return band == 0 ? blue
                   : blue.blended(static_cast<double>(band) / static_cast<double>(count - 1),
                                  Colour::Name::systemPurple);
}

}  // namespace

void colourBands(std::vector<ChartDataSet>& bands) {
  for (std::size_t band = 0; band < bands.size(); ++band) {
    const Colour full = fullTone(band, bands.size());
    const Colour tone =
        band % 2 == 0 ? full : full.blended(fadingOfEveryOther, Colour::Name::controlBackground);
    bands[band].colour = full;
    bands[band].fill = tone.withAlpha(bandAlpha);
  }
}

ChartDataSet netDepositsLine() {
  return {.label = std::string(netDepositsLabel),
          .colour = Colour::Name::systemGreen,
          .lineWidth = netDepositsWidth};
}

std::vector<ChartLegendEntry> legendOfBands(const std::vector<ChartDataSet>& bands,
                                            bool hasNetDeposits) {
  std::vector<ChartLegendEntry> entries;
  for (auto band = bands.rbegin(); band != bands.rend(); ++band) {
    entries.push_back({band->label, *band->fill, ChartLegendEntry::Mark::area});
  }
  if (hasNetDeposits) {
    entries.push_back(
        {std::string(netDepositsLabel), Colour::Name::systemGreen, ChartLegendEntry::Mark::line});
  }
  return entries;
}

}  // namespace corvane
