#include "desktop/reports/explanation_panel.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSaveFile>
#include <QToolButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

#include "desktop/look/alert_box.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "platform/text/unicode/isolation.h"

namespace corvane::desktop {
namespace {

constexpr int openLevels = 2;
constexpr int nodeRole = Qt::UserRole;
enum OutlineColumn { labelColumn, valueColumn, sourceColumn, ratesColumn, columnCount };

/// Which items of an outline are open, from its top.
std::vector<bool> openItems(QTreeWidget& outline) {
  std::vector<bool> open;
  for (QTreeWidgetItemIterator item(&outline); *item != nullptr; ++item) {
    open.push_back((*item)->isExpanded());
  }
  return open;
}

}  // namespace

ExplanationPanel::ExplanationPanel(ExplanationViewController& controller, QWidget* parent)
    : QWidget(parent),
      controller_(controller),
      message_(new QLabel),
      outline_(new QTreeWidget),
      copy_(new QPushButton(QStringLiteral("&Copy as Text"))),
      save_(new QPushButton(QStringLiteral("Export CS&V…"))) {
  auto* title = new QLabel(QStringLiteral("How This Number Came About"));
  title->setFont(theme::font(1, QFont::DemiBold));
  auto* close = new QToolButton;
  close->setText(QStringLiteral("✕"));
  close->setAccessibleName(QStringLiteral("Close the explanation"));
  close->setToolTip(QStringLiteral("Close (Escape)"));
  close->setAutoRaise(true);
  message_->setWordWrap(true);
  outline_->setAccessibleName(QStringLiteral("How this number came about"));
  outline_->setColumnCount(columnCount);
  outline_->setHeaderLabels({QStringLiteral("Step"), QStringLiteral("Value"),
                             QStringLiteral("From"), QStringLiteral("At Rates of Days")});
  outline_->headerItem()->setToolTip(
      ratesColumn, QStringLiteral("What was deposited, at the rate of its own day"));
  outline_->header()->moveSection(ratesColumn, sourceColumn);
  outline_->setUniformRowHeights(true);
  outline_->setAlternatingRowColors(true);
  outline_->setFrameShape(QFrame::NoFrame);
  outline_->header()->setStretchLastSection(false);
  outline_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  outline_->setFont(theme::font(theme::tableFactor));

  auto* heading = new QHBoxLayout;
  heading->addWidget(title, 1);
  heading->addWidget(close);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(copy_);
  buttons->addWidget(save_);
  buttons->addStretch(1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::medium, spacing::wide, spacing::medium, spacing::narrow);
  column->setSpacing(spacing::narrow);
  column->addLayout(heading);
  column->addWidget(message_);
  column->addWidget(outline_, 1);
  column->addLayout(buttons);

  connect(close, &QToolButton::clicked, this, [this] { controller_.close(); });
  connect(copy_, &QPushButton::clicked, this, &ExplanationPanel::copyText);
  connect(save_, &QPushButton::clicked, this, &ExplanationPanel::exportCSV);
  connect(outline_, &QTreeWidget::itemActivated, this,
          [this](const QTreeWidgetItem* item) { openRowOf(item); });
  changes_ = subscribe(controller_.changeHandler, [this] { showState(); });
  showState();
}

void ExplanationPanel::showState() {
  const bool isCompleted = controller_.isCompleted();
  const std::vector<bool> open = isCompleted ? openItems(*outline_) : std::vector<bool>();
  outline_->clear();
  const auto& trail = controller_.trail();
  message_->setText(qtText(controller_.message()));
  message_->setVisible(!controller_.message().empty());
  outline_->setVisible(trail.has_value());
  copy_->setEnabled(trail.has_value());
  save_->setEnabled(trail.has_value());
  setVisible(controller_.isOpen());
  if (!trail) {
    return;
  }
  addNode(*trail, outline_->invisibleRootItem(), 0);
  outline_->setColumnHidden(ratesColumn, !ExplanationViewController::tellsRatesOfDays(*trail));
  outline_->setCurrentItem(outline_->topLevelItem(0));
  if (isCompleted) {
    // The reader is somewhere in it, or somewhere else by now.
    std::size_t place = 0;
    for (QTreeWidgetItemIterator item(outline_); *item != nullptr && place < open.size(); ++item) {
      (*item)->setExpanded(open[place++]);
    }
  } else {
    outline_->setFocus();
  }
  fitColumns();
}

/// Values are seen whole, and steps as far as the panel has room beside them, at least two fifths
/// of it; where they come from is scrolled to if there is no room for it. Levels that are opened
/// later may need more.
void ExplanationPanel::fitColumns() {
  constexpr int gap = 2 * spacing::narrow;
  for (const int column : {labelColumn, valueColumn, sourceColumn, ratesColumn}) {
    outline_->resizeColumnToContents(column);
  }
  QHeaderView& header = *outline_->header();
  const int whole = outline_->viewport()->width();
  const int value = header.sectionSize(valueColumn) + gap;
  const int most = std::clamp(whole - value, whole * 2 / 5, whole * 3 / 5);
  const int label = std::min(header.sectionSize(labelColumn) + gap, most);
  header.resizeSection(labelColumn, label);
  header.resizeSection(valueColumn, value);
  const int rates =
      outline_->isColumnHidden(ratesColumn) ? 0 : header.sectionSize(ratesColumn) + gap;
  if (rates > 0) {
    header.resizeSection(ratesColumn, rates);
  }
  header.resizeSection(sourceColumn,
                       std::max(header.sectionSize(sourceColumn), whole - label - value - rates));
}

void ExplanationPanel::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  fitColumns();
}

void ExplanationPanel::addNode(const TrailNode& node, QTreeWidgetItem* parent, int depth) {
  auto* item = new QTreeWidgetItem(parent);
  const QString operation = qtText(ExplanationViewController::operationText(node));
  item->setText(labelColumn, qtText(isolatingQuotedNames(node.label)));
  item->setText(valueColumn, qtText(ExplanationViewController::valueText(node)));
  const QString source = qtText(isolatingQuotedNames(ExplanationViewController::sourceText(node)));
  item->setText(sourceColumn, operation.isEmpty() || source.isEmpty()
                                  ? operation + source
                                  : operation + QStringLiteral("; ") + source);
  item->setText(ratesColumn,
                qtText(ExplanationViewController::ratesOfDaysText(node, *controller_.trail())));
  for (const int column : {valueColumn, ratesColumn}) {
    item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    item->setFont(column, theme::monospacedFont());
  }
  item->setToolTip(labelColumn, qtText(isolatingQuotedNames(node.label)));
  item->setToolTip(sourceColumn, item->text(sourceColumn));
  item->setData(labelColumn, nodeRole, QVariant::fromValue(static_cast<const void*>(&node)));
  if (ExplanationViewController::hasRow(node)) {
    item->setToolTip(sourceColumn, item->text(sourceColumn) +
                                       QStringLiteral("\nReturn or a double click opens the row."));
  }
  for (const TrailNode& child : node.children) {
    addNode(child, item, depth + 1);
  }
  item->setExpanded(depth < openLevels - 1);
}

void ExplanationPanel::openRowOf(const QTreeWidgetItem* item) {
  const auto* node =
      static_cast<const TrailNode*>(item->data(labelColumn, nodeRole).value<const void*>());
  if (node != nullptr) {
    controller_.openRow(*node);
  }
}

void ExplanationPanel::copyText() const {
  QApplication::clipboard()->setText(qtText(controller_.text()));
}

void ExplanationPanel::exportCSV() {
  const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Export Explanation"),
                                                    QStringLiteral("Explanation.csv"),
                                                    QStringLiteral("Delimited text (*.csv)"));
  if (path.isEmpty()) {
    return;
  }
  QSaveFile file(path);
  const QByteArray bytes = QByteArray::fromStdString(controller_.csv());
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
    showAlert(this, AlertKind::warning,
              QStringLiteral("The explanation could not be written to “%1”.").arg(path), {},
              {QStringLiteral("OK")});
  }
}

void ExplanationPanel::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    controller_.close();
    return;
  }
  QWidget::keyPressEvent(event);
}

}  // namespace corvane::desktop
