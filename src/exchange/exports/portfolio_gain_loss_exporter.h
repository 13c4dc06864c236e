// Writes the gains and losses that a portfolio realized in a range of days to a delimited text
// file.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/market/portfolio_asset.h"
#include "exchange/exports/portfolio_exporter.h"
#include "ledger/manager/portfolio_data_slice.h"
#include "ledger/reports/asset_lines.h"

namespace corvane {

/// A line for each equity that was bought or sold in a choice of days.
class PortfolioGainLossExporter final : public PortfolioExporter {
 public:
  static constexpr std::string_view userDefaultsKey = "portfolioGainLossExportConfiguration";

  /// `slice` has a portfolio. `defaults` may be null; otherwise it outlives the exporter.
  [[nodiscard]] static std::shared_ptr<PortfolioGainLossExporter> make(PortfolioDataSlice slice,
                                                                       UserDefaults* defaults);

  [[nodiscard]] const PortfolioDataSlice& dataSlice() const { return dataSlice_; }
  [[nodiscard]] const std::vector<PortfolioAsset>& assetEntries() const { return assetEntries_; }

 private:
  /// The figures of a line, taken when the exporter is made: equities belong to the main queue.
  struct Line {
    std::string symbol;
    std::optional<std::string> name;
    GainLine figures;
  };
  using Figure = Decimal PortfolioSnapshotGroup::TradingSummary::*;
  using Self = PortfolioGainLossExporter;
  using SchemaField = SchemaFieldOf<Self, Line>;
  static const std::array<SchemaField, 12> schema;

  PortfolioGainLossExporter(PortfolioDataSlice slice, std::vector<PortfolioAsset> entries,
                            UserDefaults* defaults);

  /// None for what is no equity.
  [[nodiscard]] std::optional<Line> lineOf(const PortfolioAsset& asset) const;
  /// A figure of what was traded; none where nothing was.
  [[nodiscard]] static std::optional<Decimal> traded(const Line& line, Figure figure);
  /// In the portfolio's currency.
  [[nodiscard]] CellText money(const std::optional<Decimal>& amount);
  [[nodiscard]] CellText cellText(std::size_t row, std::size_t field) override;

  const PortfolioDataSlice dataSlice_;
  const std::vector<PortfolioAsset> assetEntries_;
  const Currency primaryCurrency_;
  std::vector<std::optional<Line>> lines_;
};

}  // namespace corvane
