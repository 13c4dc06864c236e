// The panel that says how a figure came about.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "ledger/portfolio/portfolio.h"
#include "presentation/controls/table_model.h"
#include "reports/trail/trail_node.h"

namespace corvane {

/// Shows one trail at a time, as it was when it was asked for. Main queue only.
class ExplanationViewController {
 public:
  /// Called when there is another trail, or none any more.
  std::function<void()> changeHandler = [] {};
  /// Shows the row at `position`, from 0, of the portfolio.
  std::function<void(const PortfolioPointer& portfolio, std::size_t position)> openRowHandler =
      [](const PortfolioPointer&, std::size_t) {};

  /// Makes the trail and opens the panel. Where there is none, it says so.
  void explain(const TrailMaker& maker);
  void close();

  [[nodiscard]] bool isOpen() const { return isOpen_; }
  /// None where `message` says why.
  [[nodiscard]] const std::optional<TrailNode>& trail() const { return trail_; }
  [[nodiscard]] const std::string& message() const { return message_; }

  /// What a node does with the nodes below it, with its value: "Proceeds less cost = 20.00 CAD".
  [[nodiscard]] static std::string valueText(const TrailNode& node);
  /// Day, source and note in one line; may be empty.
  [[nodiscard]] static std::string sourceText(const TrailNode& node);
  /// "×", "+", "rounded" …: what made the value of the nodes below; empty for a leaf.
  [[nodiscard]] static std::string operationText(const TrailNode& node);

  /// Whether openRow() leads somewhere.
  [[nodiscard]] static bool hasRow(const TrailNode& node);
  void openRow(const TrailNode& node);

  /// The whole trail as indented text, and as text with commas: depth, label, operation, value,
  /// unit, day, source, note.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::string csv() const;

 private:
  bool isOpen_ = false;
  std::optional<TrailNode> trail_;
  std::string message_;
};

}  // namespace corvane
