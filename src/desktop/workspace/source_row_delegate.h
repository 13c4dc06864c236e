// How the rows of the source list look.
#pragma once

#include <QFontMetricsF>
#include <QString>
#include <QStyledItemDelegate>
#include <memory>

#include "presentation/frame/master_source_view_controller.h"

namespace corvane::desktop {

/// Draws a row of either list on two lines. On the upper one the name, the running session of an
/// equity, and the value stand in columns of their own, the same in all rows; below them are the
/// details. What is too long for its column is cut; the tooltip has the whole of it.
class SourceRowDelegate : public QStyledItemDelegate {
 public:
  explicit SourceRowDelegate(const MasterSourceViewController& controller, bool showsPortfolios,
                             QObject* parent = nullptr);

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex& index) const override;

 private:
  void paintEquity(QPainter& painter, const QRectF& area, const EquitySourceRow& row,
                   bool isSelected) const;
  void paintPortfolio(QPainter& painter, const QRectF& area, const PortfolioSourceRow& row,
                      bool isSelected) const;

  const MasterSourceViewController& controller_;
  bool showsPortfolios_;
};

/// Draws what is behind a row of the source list, chosen or with the keyboard, and gives the area
/// that it has.
QRectF drawRowGround(QPainter& painter, const QStyleOptionViewItem& option);

/// As many whole words of `text` as fit into `width`, with an ellipsis where some are missing.
/// Where not even the first word fits, letters are cut.
[[nodiscard]] QString cutByWords(const QString& text, const QFontMetricsF& metrics, double width);

}  // namespace corvane::desktop
