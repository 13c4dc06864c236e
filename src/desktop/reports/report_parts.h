// What the screens of reports are built of.
#pragma once

#include <QAbstractButton>
#include <QScrollArea>
#include <QWidget>
#include <functional>
#include <vector>

#include "presentation/reports/report_scope.h"
#include "presentation/reports/report_text.h"

class QGridLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace corvane::desktop {

class AttributedLabel;
class TableModelAdapter;
class TableView;

/// A figure with its title above and a detail below. One that can be explained is underlined with
/// dots, and a click, Space or Return asks for it.
class FigureButton : public QAbstractButton {
 public:
  explicit FigureButton(QWidget* parent = nullptr);
  void setFigure(const ReportFigure& figure);
  [[nodiscard]] QSize sizeHint() const override;
  /// What shows the value whole.
  [[nodiscard]] int leastWidth() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QLabel* title_;
  AttributedLabel* value_;
  QLabel* detail_;
  bool isExplained_ = false;
};

/// Figures beside each other, in as many rows as the width makes of them.
class FiguresRow : public QWidget {
 public:
  /// Called with a figure that the user wants explained.
  std::function<void(const ReportFigure&)> explain = [](const ReportFigure&) {};

  explicit FiguresRow(QWidget* parent = nullptr);
  void setFigures(const std::vector<ReportFigure>& figures);
  /// That of one column: what does not fit beside it stands in further rows.
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void arrange();

  QGridLayout* grid_;
  std::vector<ReportFigure> figures_;
  std::vector<FigureButton*> buttons_;
  int columns_ = 0;
};

/// The bar that says what a report lacks, with what can be done about it.
class ReportWarningBar : public QFrame {
 public:
  std::function<void()> retry = [] {};
  std::function<void()> leaveOut = [] {};

  explicit ReportWarningBar(QWidget* parent = nullptr);
  void setWarning(const ReportWarning& warning);

 private:
  QLabel* text_;
  QPushButton* leaveOut_;
};

/// A page that scrolls up and down: a heading for each section, and what stands below it. What the
/// keyboard reaches is scrolled to.
class ReportPage : public QScrollArea {
 public:
  explicit ReportPage(QWidget* parent = nullptr);

  [[nodiscard]] QVBoxLayout& column() { return *column_; }
  /// Adds a heading; `help` is its tooltip. Returns the label, so that it can be hidden.
  QLabel* addHeading(const QString& text, const QString& help = {});
  /// Adds a table of `model`, whose figures `explain` is asked to explain. `adapter` and `model`
  /// outlive it.
  TableView* addTable(TableModelAdapter* adapter, const TableModel& model, const QString& name,
                      const QString& objectName, std::function<void(const TrailMaker&)> explain);
  /// Adds a small text in a weaker colour.
  QLabel* addNote();

 private:
  QVBoxLayout* column_;
};

/// A list that can be written to a file: its title in the menu, and what writes it.
struct ListExport {
  QString title;
  std::function<void()> write;
};

/// The button with the menu of the lists that can be written to a file.
[[nodiscard]] QPushButton* makeExportButton(std::vector<ListExport> lists);

/// Makes `table` as high as its rows, of which it shows `mostRows` before it scrolls by itself,
/// also when it turns out to need a bar to scroll sideways.
void fitHeight(TableView& table, int mostRows);

}  // namespace corvane::desktop
