// What the overview of all portfolios lists: its tables and its figures.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/system/user_defaults.h"
#include "presentation/reports/record_table.h"
#include "presentation/reports/report_text.h"
#include "reports/overview/overview_history.h"
#include "reports/overview/portfolios_overview.h"

namespace corvane {

/// A portfolio, or all of them where it is null.
struct OverviewPortfolio {
  PortfolioPointer portfolio;
  PortfoliosOverview::Figures figures;
  std::optional<double> share;
};

/// An equity or a currency of cash, or all of them.
struct OverviewHolding {
  PortfoliosOverview::HoldingLine line;
  bool isSum = false;

  /// What tells it from all others, also after a refresh.
  [[nodiscard]] std::string key() const;
};

/// What figures are explained by; null makers where nothing can be.
struct OverviewTrails {
  /// The overview that is shown.
  std::function<std::shared_ptr<const PortfoliosOverview>()> overview;
  /// Of the rates; null where there are none.
  std::function<std::shared_ptr<QuoteProvider>()> quotes;
};

[[nodiscard]] std::vector<RecordTable<OverviewPortfolio>::Column> overviewPortfolioColumns(
    const OverviewTrails& trails);
[[nodiscard]] std::vector<RecordTable<OverviewHolding>::Column> overviewHoldingColumns(
    const OverviewTrails& trails);
[[nodiscard]] std::vector<RecordTable<PortfoliosOverview::CurrencyLine>::Column>
overviewCurrencyColumns(const std::function<Currency()>& currency);

/// The lines of `overview`, and below several of them their sum.
[[nodiscard]] std::vector<OverviewPortfolio> portfolioRows(const PortfoliosOverview& overview);
[[nodiscard]] std::vector<OverviewHolding> holdingRows(const PortfoliosOverview& overview);

/// The figures in one row. `history` is null until it has been worked out.
[[nodiscard]] std::vector<ReportFigure> overviewFigures(
    const std::shared_ptr<const PortfoliosOverview>& overview,
    const std::shared_ptr<const OverviewHistory>& history, const OverviewTrails& trails, Date now,
    const UserDefaults& defaults);

/// What the reader should know of `overview` and `history`, a sentence each.
[[nodiscard]] std::vector<std::string> overviewNotes(const PortfoliosOverview& overview,
                                                     const OverviewHistory* history);

}  // namespace corvane
