#include "desktop/reports/report_parts.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "desktop/controls/explain_command.h"
#include "desktop/controls/table_view.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int leastFigureWidth = 150;
constexpr double figureValueFactor = 1.35;

}  // namespace

FigureButton::FigureButton(QWidget* parent)
    : QAbstractButton(parent),
      title_(new QLabel),
      value_(new AttributedLabel),
      detail_(new QLabel) {
  title_->setFont(theme::font(0.85));
  title_->setForegroundRole(QPalette::PlaceholderText);
  value_->setFont(theme::font(figureValueFactor, QFont::DemiBold));
  detail_->setFont(theme::font(0.85));
  detail_->setForegroundRole(QPalette::PlaceholderText);
  detail_->setWordWrap(true);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::tight, spacing::tight, spacing::tight, spacing::tight);
  column->setSpacing(2);
  for (QLabel* label : {title_, static_cast<QLabel*>(value_), detail_}) {
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    column->addWidget(label);
  }
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  setFocusPolicy(Qt::StrongFocus);
  setProperty("isFigure", true);
}

void FigureButton::setFigure(const ReportFigure& figure) {
  title_->setText(qtText(figure.title));
  value_->setAttributedText(figure.value);
  detail_->setText(qtText(figure.detail));
  isExplained_ = figure.explain != nullptr;
  setCursor(isExplained_ ? Qt::PointingHandCursor : Qt::ArrowCursor);
  setToolTip(qtText(figure.hint) +
             (isExplained_ ? QStringLiteral("\nClick to see how it came about.") : QString()));
  setAccessibleName(qtText(figure.accessibleText()));
  updateGeometry();
  update();
}

QSize FigureButton::sizeHint() const {
  return layout()->sizeHint().expandedTo(QSize(leastFigureWidth, 0));
}

int FigureButton::leastWidth() const {
  const QMargins margins = layout()->contentsMargins();
  return std::max(leastFigureWidth, value_->sizeHint().width() + margins.left() + margins.right());
}

void FigureButton::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    click();
    return;
  }
  QAbstractButton::keyPressEvent(event);
}

void FigureButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  if (isExplained_) {
    const QRect area = value_->geometry();
    const int width = std::min(area.width(), value_->sizeHint().width());
    painter.setPen(QPen(theme::colour(Colour::Name::secondaryLabel), 1, Qt::DotLine));
    painter.drawLine(area.left(), area.bottom(), area.left() + width, area.bottom());
  }
  if (hasFocus()) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
  }
}

FiguresRow::FiguresRow(QWidget* parent) : QWidget(parent), grid_(new QGridLayout(this)) {
  grid_->setContentsMargins(0, 0, 0, 0);
  grid_->setHorizontalSpacing(spacing::narrow);
  grid_->setVerticalSpacing(spacing::tight);
}

void FiguresRow::setFigures(const std::vector<ReportFigure>& figures) {
  figures_ = figures;
  while (buttons_.size() < figures_.size()) {
    auto* button = new FigureButton(this);
    const std::size_t place = buttons_.size();
    connect(button, &QAbstractButton::clicked, this, [this, place] {
      if (place < figures_.size() && figures_[place].explain != nullptr) {
        explain(figures_[place]);
      }
    });
    buttons_.push_back(button);
  }
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    buttons_[i]->setVisible(i < figures_.size());
    if (i < figures_.size()) {
      buttons_[i]->setFigure(figures_[i]);
    }
  }
  columns_ = 0;
  arrange();
}

void FiguresRow::arrange() {
  const int count = static_cast<int>(figures_.size());
  if (count == 0) {
    return;
  }
  // Rows of one length: four and three look better than six and one.
  int widest = 0;
  for (int i = 0; i < count; ++i) {
    widest = std::max(widest, buttons_[static_cast<std::size_t>(i)]->leastWidth());
  }
  const int fitting =
      std::clamp((width() + spacing::narrow) / (widest + spacing::narrow), 1, count);
  const int rows = (count + fitting - 1) / fitting;
  const int columns = (count + rows - 1) / rows;
  if (columns == columns_) {
    return;
  }
  columns_ = columns;
  for (int i = 0; i < count; ++i) {
    grid_->addWidget(buttons_[static_cast<std::size_t>(i)], i / columns, i % columns, Qt::AlignTop);
  }
  for (int column = 0; column < grid_->columnCount(); ++column) {
    grid_->setColumnStretch(column, column < columns ? 1 : 0);
  }
  updateGeometry();
}

QSize FiguresRow::minimumSizeHint() const {
  return {leastFigureWidth, grid_->minimumSize().height()};
}

void FiguresRow::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  arrange();
}

ReportWarningBar::ReportWarningBar(QWidget* parent)
    : QFrame(parent), text_(new QLabel), leaveOut_(new QPushButton(QStringLiteral("&Leave Out"))) {
  setFrameShape(QFrame::StyledPanel);
  text_->setWordWrap(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* retryButton = new QPushButton(QStringLiteral("&Retry"));
  leaveOut_->setToolTip(QStringLiteral(
      "Shows the figures without what has no price, for as long as this window is open"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(spacing::narrow, spacing::tight, spacing::narrow, spacing::tight);
  row->addWidget(text_, 1);
  row->addWidget(retryButton);
  row->addWidget(leaveOut_);
  connect(retryButton, &QPushButton::clicked, this, [this] { retry(); });
  connect(leaveOut_, &QPushButton::clicked, this, [this] { leaveOut(); });
  hide();
}

void ReportWarningBar::setWarning(const ReportWarning& warning) {
  text_->setText(qtText(warning.text));
  setAccessibleName(qtText(warning.text));
  leaveOut_->setVisible(warning.canLeaveOut);
  setVisible(!warning.text.empty());
}

ReportPage::ReportPage(QWidget* parent) : QScrollArea(parent), column_(new QVBoxLayout) {
  setWidgetResizable(true);
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  auto* content = new QWidget;
  content->setLayout(column_);
  column_->setContentsMargins(0, spacing::narrow, spacing::narrow, spacing::medium);
  column_->setSpacing(spacing::narrow);
  setWidget(content);
}

QLabel* ReportPage::addHeading(const QString& text, const QString& help) {
  auto* heading = new QLabel(text);
  heading->setFont(theme::font(1, QFont::DemiBold));
  heading->setForegroundRole(QPalette::WindowText);
  heading->setToolTip(help);
  heading->setContentsMargins(0, spacing::narrow, 0, 0);
  column_->addWidget(heading);
  return heading;
}

TableView* ReportPage::addTable(TableModelAdapter* adapter, const TableModel& model,
                                const QString& name, const QString& objectName,
                                std::function<void(const TrailMaker&)> explain) {
  auto* table = new TableView(name);
  table->setObjectName(objectName);
  table->setTable(adapter, model);
  column_->addWidget(table);
  addExplainCommand(*table, model, std::move(explain));
  return table;
}

QLabel* ReportPage::addNote() {
  auto* note = new QLabel;
  note->setWordWrap(true);
  note->setTextFormat(Qt::PlainText);
  note->setForegroundRole(QPalette::PlaceholderText);
  note->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  column_->addWidget(note);
  return note;
}

QPushButton* makeExportButton(std::vector<ListExport> lists) {
  auto* button = new QPushButton(QStringLiteral("E&xport"));
  button->setToolTip(QStringLiteral("Writes one of the lists below to a file"));
  auto* menu = new QMenu(button);
  for (ListExport& list : lists) {
    QObject::connect(menu->addAction(list.title), &QAction::triggered, button,
                     std::move(list.write));
  }
  button->setMenu(menu);
  return button;
}

void fitHeight(TableView& table, int mostRows) {
  constexpr const char* mostRowsProperty = "mostRowsShown";
  if (!table.property(mostRowsProperty).isValid()) {
    // The width, and with it the bar, comes with the layout.
    QObject::connect(table.horizontalScrollBar(), &QScrollBar::rangeChanged, &table,
                     [&table] { fitHeight(table, table.property(mostRowsProperty).toInt()); });
  }
  table.setProperty(mostRowsProperty, mostRows);
  const int rows = std::clamp(table.model()->rowCount(), 1, mostRows);
  const int bar = table.horizontalScrollBar()->maximum() > 0
                      ? table.horizontalScrollBar()->sizeHint().height()
                      : 0;
  table.setFixedHeight(table.horizontalHeader()->sizeHint().height() +
                       rows * table.verticalHeader()->defaultSectionSize() +
                       2 * table.frameWidth() + bar);
}

}  // namespace corvane::desktop
