// Controls beside each other, and below each other where the width ends.
#pragma once

#include <QLayout>
#include <QList>

namespace corvane::desktop {

/// Lays items out from left to right in as many lines as the width makes of them, each as large as
/// it wants to be and those of a line on one middle. In a place that is wide enough it looks like a
/// QHBoxLayout without stretch.
class FlowRow : public QLayout {
 public:
  explicit FlowRow(QWidget* parent = nullptr);
  ~FlowRow() override;

  void addItem(QLayoutItem* item) override;
  /// What is added from now on stands at the right end of the line that holds this place. In a line
  /// of its own it begins on the left.
  void addStretch();
  [[nodiscard]] int count() const override;
  [[nodiscard]] QLayoutItem* itemAt(int index) const override;
  QLayoutItem* takeAt(int index) override;

  [[nodiscard]] bool hasHeightForWidth() const override { return true; }
  [[nodiscard]] int heightForWidth(int width) const override;
  /// All in one line.
  [[nodiscard]] QSize sizeHint() const override;
  /// The widest of the items.
  [[nodiscard]] QSize minimumSize() const override;
  [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }
  void setGeometry(const QRect& area) override;
  /// Tells the layout around the widget too, which goes by what all in one line would take.
  void invalidate() override;

 private:
  /// The height of the lines that items take in `area`, into which they are put if `places`.
  int flow(const QRect& area, bool places) const;
  /// `room` is what the items leave of the line.
  void placeLine(qsizetype first, qsizetype end, const QRect& line, int room) const;

  QList<QLayoutItem*> items_;
};

}  // namespace corvane::desktop
