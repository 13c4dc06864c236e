// Styled text on the screen: in labels and in the cells of tables.
#pragma once

#include <QLabel>
#include <QString>
#include <QStyledItemDelegate>

#include "platform/text/styled/attributed_text.h"

namespace corvane::desktop {

/// `text` as the rich text of a label, in the colours of the present appearance.
[[nodiscard]] QString richText(const AttributedText& text);

/// A label that keeps its styled text right when the appearance changes.
class AttributedLabel : public QLabel {
 public:
  explicit AttributedLabel(QWidget* parent = nullptr);
  void setAttributedText(const AttributedText& text);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  AttributedText text_;
};

/// Draws the cells of a table whose model answers attributedTextRole, on one line. Where it is too
/// long, the shorter form stands there that briefTextRole may answer with, or it ends in an
/// ellipsis. Where the model answers explainedRole with true, the text is underlined with dots.
class AttributedTextDelegate : public QStyledItemDelegate {
 public:
  static constexpr int attributedTextRole = Qt::UserRole + 1;
  static constexpr int explainedRole = Qt::UserRole + 2;
  static constexpr int briefTextRole = Qt::UserRole + 3;

  using QStyledItemDelegate::QStyledItemDelegate;
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex& index) const override;

  /// Where the text of `index` stands in its cell, which has `cell` as its place.
  [[nodiscard]] QRectF textArea(const QRectF& cell, const QFont& font,
                                const QModelIndex& index) const;
};

/// Draws `text` on one line in `area`. Without colours of its own it is drawn in `colour`.
void drawLine(QPainter& painter, const QRectF& area, const AttributedText& text, const QFont& font,
              const QColor& colour, Qt::Alignment alignment, bool usesOwnColours = true);

}  // namespace corvane::desktop

Q_DECLARE_METATYPE(corvane::AttributedText)
