// Writes the holdings of a portfolio on a day to a delimited text file.
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

/// A line for each currency and each equity held at the end of a choice of days.
class PortfolioHoldingsExporter final : public PortfolioExporter {
 public:
  static constexpr std::string_view userDefaultsKey = "portfolioHoldingsExportConfiguration";

  /// `slice` has a portfolio. `defaults` may be null; otherwise it outlives the exporter.
  [[nodiscard]] static std::shared_ptr<PortfolioHoldingsExporter> make(PortfolioDataSlice slice,
                                                                       UserDefaults* defaults);

  [[nodiscard]] const PortfolioDataSlice& dataSlice() const { return dataSlice_; }
  [[nodiscard]] const std::vector<PortfolioAsset>& assetEntries() const { return assetEntries_; }

 private:
  /// The figures of a line, taken when the exporter is made: equities belong to the main queue.
  struct Line {
    bool isCash;
    std::string symbol;
    std::optional<std::string> name;
    HoldingLine figures;
  };
  using Self = PortfolioHoldingsExporter;
  using SchemaField = SchemaFieldOf<Self, Line>;
  static const std::array<SchemaField, 11> schema;

  PortfolioHoldingsExporter(PortfolioDataSlice slice, std::vector<PortfolioAsset> entries,
                            UserDefaults* defaults);

  [[nodiscard]] static Line lineOf(const Currency& cash, const PortfolioSnapshot& snapshot);
  [[nodiscard]] static Line lineOf(const EquityPointer& equity, const PortfolioSnapshot& snapshot);
  /// In the portfolio's currency.
  [[nodiscard]] CellText money(const std::optional<Decimal>& amount);
  [[nodiscard]] CellText cellText(std::size_t row, std::size_t field) override;

  const PortfolioDataSlice dataSlice_;
  const std::vector<PortfolioAsset> assetEntries_;
  const Currency primaryCurrency_;
  std::vector<Line> lines_;
};

}  // namespace corvane
