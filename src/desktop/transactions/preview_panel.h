// What an entry would do, beside the form.
#pragma once

#include <QFrame>
#include <array>
#include <string>
#include <vector>

#include "presentation/transactions/transaction_preview.h"

class QLabel;

namespace corvane::desktop {

class AttributedLabel;

/// Shows a TransactionPreview, and while there is none what the form still waits for.
class PreviewPanel : public QFrame {
 public:
  PreviewPanel();

  /// `notice` stands above what is wrong or missing, `hint` below the figures.
  void show(const TransactionPreview& preview, const std::vector<std::string>& missing,
            const std::string& notice, const std::string& hint);

 private:
  static constexpr std::size_t mostFigures = 5;
  struct Row {
    QLabel* label;
    QLabel* before;
    QLabel* after;
  };

  std::array<Row, mostFigures> rows_;
  AttributedLabel* words_;
  TransactionPreview shown_;
  std::string shownWords_;
};

}  // namespace corvane::desktop
