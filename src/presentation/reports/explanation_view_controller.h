// The panel that says how a figure came about.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "ledger/portfolio/portfolio.h"
#include "presentation/controls/table_model.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// Fetches what a trail lacks at first, and calls `whenThere` on the main queue, later and at most
/// once.
using TrailFetch = std::function<void(std::function<void()> whenThere)>;

/// Shows one trail at a time, as it was when it was asked for. Main queue only.
class ExplanationViewController {
 public:
  /// Called when there is another trail, or none any more.
  std::function<void()> changeHandler = [] {};
  /// Shows the row at `position`, from 0, of the portfolio.
  std::function<void(const PortfolioPointer& portfolio, std::size_t position)> openRowHandler =
      [](const PortfolioPointer&, std::size_t) {};

  /// Makes the trail and opens the panel. Where there is none, it says so. What `fetch` brings is
  /// waited for by nobody: the trail is made once more then, unless another is asked for before.
  void explain(const TrailMaker& maker, const TrailFetch& fetch = nullptr);
  void close();

  [[nodiscard]] bool isOpen() const { return isOpen_; }
  /// None where `message` says why.
  [[nodiscard]] const std::optional<TrailNode>& trail() const { return trail_; }
  [[nodiscard]] const std::string& message() const { return message_; }
  /// Whether the trail is the one before, with what was fetched for it.
  [[nodiscard]] bool isCompleted() const { return isCompleted_; }
  /// Whether something is being fetched for it.
  [[nodiscard]] bool isAwaiting() const { return awaiting_ != nullptr; }

  /// What a node does with the nodes below it, with its value: "Proceeds less cost = 20.00 CAD".
  [[nodiscard]] static std::string valueText(const TrailNode& node);
  /// What was deposited, at the rates of its own days and in the currency of the trail; empty where
  /// that is not told of a node.
  [[nodiscard]] static std::string ratesOfDaysText(const TrailNode& node, const TrailNode& trail);
  /// Whether it is told of any node of the trail, and is another amount.
  [[nodiscard]] static bool tellsRatesOfDays(const TrailNode& trail);
  /// Day, source and note in one line; may be empty.
  [[nodiscard]] static std::string sourceText(const TrailNode& node);
  /// "×", "+", "rounded" …: what made the value of the nodes below; empty for a leaf.
  [[nodiscard]] static std::string operationText(const TrailNode& node);

  /// Whether openRow() leads somewhere.
  [[nodiscard]] static bool hasRow(const TrailNode& node);
  /// Opens the row of a node of the trail where it stands by now; one that is gone does not open.
  void openRow(const TrailNode& node);

  /// The whole trail as indented text, and as text with commas: depth, label, operation, value,
  /// unit, day, source, note, and atRatesOfDays where that is told.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::string csv() const;

 private:
  void make(const TrailMaker& maker);
  void rememberRows(const TrailNode& node);

  bool isOpen_ = false;
  bool isCompleted_ = false;
  std::shared_ptr<const TrailMaker> awaiting_;  ///< of the trail that is shown, while it is
  std::optional<TrailNode> trail_;
  /// The rows of the trail by ledger and by the place that they had when it was made.
  std::map<std::pair<const Portfolio*, std::size_t>, std::weak_ptr<PortfolioTransaction>> rows_;
  std::string message_;
};

}  // namespace corvane
