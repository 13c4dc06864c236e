#include "desktop/charts/pie_chart_widget.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "platform/text/unicode/isolation.h"

namespace corvane::desktop {
namespace {

constexpr double widestHole = 0.58;  // of the ring's radius
constexpr double narrowestHole = 0.38;
constexpr double leastLabelledAngle = 30;  // degrees; a narrower slice has no room for a text
constexpr double degreesAtTop = 90;
constexpr int leastListWidth = 180;
constexpr int leastNameWidth = 64;
constexpr int leastShareWidth = 24;
constexpr int fewestRows = 3;

QFont sliceFont() {
  return theme::font(0.85, QFont::DemiBold);
}

double sliceTextWidth(const PieSlice& slice) {
  return QFontMetricsF(sliceFont()).horizontalAdvance(qtText(slice.percentText));
}

/// The hole's share of a ring of `radius`: small rings are thicker, so that their slices' texts
/// have room all alike.
double holeShare(const PieChartView& pie, double radius) {
  double widest = 0;
  for (const PieSlice& slice : pie.slices) {
    widest = std::max(widest, sliceTextWidth(slice));
  }
  return std::clamp(1 - (widest + 2 * spacing::tight) / radius, narrowestHole, widestHole);
}

}  // namespace

/// The ring alone, which says by a tooltip what is under the pointer.
class PieRing : public QWidget {
 public:
  PieRing(const PieChartView& pie, QWidget* parent) : QWidget(parent), pie_(pie) {}

  void setSelectedRow(int row) {
    selectedRow_ = row;
    update();
  }

 protected:
  bool event(QEvent* event) override {
    if (event->type() != QEvent::ToolTip) {
      return QWidget::event(event);
    }
    const auto* help = static_cast<QHelpEvent*>(event);
    const double radius = std::min(width(), height()) / 2.0;
    const double x = (help->pos().x() - width() / 2.0) / radius;
    const double y = (help->pos().y() - height() / 2.0) / radius;
    const PieSlice* slice =
        std::hypot(x, y) >= holeShare(pie_, radius) ? pie_.sliceAt(x, y) : nullptr;
    QToolTip::showText(help->globalPos(),
                       slice != nullptr
                           ? qtText(isolatedName(slice->label) + " " + slice->percentText)
                           : QString(),
                       this);
    return true;
  }

  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double radius = std::min(width(), height()) / 2.0 - 2;
    const QPointF centre(width() / 2.0, height() / 2.0);
    double whole = 0;
    for (const PieSlice& slice : pie_.slices) {
      whole += slice.value;
    }
    if (whole <= 0) {
      painter.setPen(QPen(theme::colour(Colour::Name::separator), 1));
      painter.drawEllipse(centre, radius, radius);
      painter.drawEllipse(centre, radius * widestHole, radius * widestHole);
      return;
    }
    painter.setFont(sliceFont());
    const double hole = radius * holeShare(pie_, radius);
    double angle = degreesAtTop;
    for (std::size_t i = 0; i < pie_.slices.size(); ++i) {
      const double span = 360 * pie_.slices[i].value / whole;
      const bool isSelected = static_cast<int>(pie_.slices.size() - 1 - i) == selectedRow_;
      paintSlice(painter, pie_.slices[i], centre, {radius, hole}, {angle, span}, isSelected);
      angle -= span;
    }
  }

 private:
  struct Radii {
    double outer;
    double hole;
  };

  struct Arc {
    double start;  ///< degrees, from which it runs clockwise
    double span;
  };

  void paintSlice(QPainter& painter, const PieSlice& slice, const QPointF& centre, Radii radii,
                  Arc arc, bool isSelected) const {
    const auto [angle, span] = arc;
    const double outer = radii.outer;
    const double inner = isSelected ? radii.hole * 0.9 : radii.hole;
    const QRectF outerBox(centre.x() - outer, centre.y() - outer, 2 * outer, 2 * outer);
    const QRectF innerBox(centre.x() - inner, centre.y() - inner, 2 * inner, 2 * inner);
    QPainterPath path;
    path.arcMoveTo(outerBox, angle);
    path.arcTo(outerBox, angle, -span);
    path.arcTo(innerBox, angle - span, span);
    path.closeSubpath();
    const QColor colour = theme::colour(slice.colour);
    const QColor edge =
        isSelected ? theme::colour(Colour::Name::label) : palette().color(QPalette::Window);
    painter.setPen(QPen(edge, isSelected ? 2 : 1.5));
    painter.setBrush(colour);
    painter.drawPath(path);
    const QString text = qtText(slice.percentText);
    const double radius = (outer + radii.hole) / 2;
    if (span < leastLabelledAngle || sliceTextWidth(slice) + spacing::tight > outer - radii.hole) {
      return;
    }
    const double middle = (angle - span / 2) * std::numbers::pi / 180;
    const QPointF point(centre.x() + radius * std::cos(middle),
                        centre.y() - radius * std::sin(middle));
    painter.setPen(colour.lightnessF() > 0.5F ? Qt::black : Qt::white);
    painter.drawText(QRectF(point.x() - 40, point.y() - 10, 80, 20), Qt::AlignCenter, text);
  }

  const PieChartView& pie_;
  int selectedRow_ = -1;
};

PieChartWidget::PieChartWidget(const QString& accessibleName, QWidget* parent)
    : QWidget(parent),
      ring_(new PieRing(pie_, this)),
      adapter_(new TableModelAdapter(pie_, this)),
      list_(new TableView(accessibleName + QStringLiteral(", shares"), this)) {
  setAccessibleName(accessibleName);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
  list_->horizontalHeader()->setMinimumSectionSize(leastShareWidth);
  list_->setLeastStretchedWidth(leastNameWidth);
  list_->setTable(adapter_, pie_);
  list_->horizontalHeader()->hide();
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->setAlternatingRowColors(false);
  list_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
  QPalette colours = list_->palette();
  colours.setBrush(QPalette::Base, Qt::transparent);
  list_->setPalette(colours);
  connect(list_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex& current) { ring_->setSelectedRow(current.row()); });
}

PieChartWidget::~PieChartWidget() = default;

void PieChartWidget::setPie(const PieChartView& pie) {
  pie_ = pie;
  setAccessibleDescription(qtText(pie.accessibleText()));
  ring_->setSelectedRow(-1);
  adapter_->reload();
  place();
  update();
}

void PieChartWidget::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  place();
}

void PieChartWidget::place() {
  const bool hasSlices = !pie_.slices.empty();
  ring_->setVisible(hasSlices);
  list_->setVisible(hasSlices);
  const QRect area =
      rect().adjusted(spacing::narrow, spacing::narrow, -spacing::narrow, -spacing::narrow);
  const int rowHeight = list_->verticalHeader()->defaultSectionSize();
  const int rows = static_cast<int>(pie_.slices.size());
  const int leastListHeight = rowHeight * std::min(rows, fewestRows) + spacing::tight;
  const int besideSide = std::min(area.height(), area.width() - leastListWidth - spacing::medium);
  const int belowSide = std::min(area.width(), area.height() - leastListHeight - spacing::narrow);
  if (besideSide >= belowSide) {
    ring_->setGeometry(area.left(), area.center().y() - besideSide / 2, besideSide, besideSide);
    const int height = std::min(area.height(), rowHeight * rows + spacing::tight);
    list_->setGeometry(area.left() + besideSide + spacing::medium, area.center().y() - height / 2,
                       area.width() - besideSide - spacing::medium, height);
  } else {
    // The list takes what it needs for all slices, as long as it leaves the ring two fifths.
    const int wanted = rowHeight * rows + spacing::tight;
    const int least = std::min(area.height() * 2 / 5, belowSide);
    const int side = std::clamp(area.height() - wanted - spacing::narrow, least, belowSide);
    ring_->setGeometry(area.center().x() - side / 2, area.top(), side, side);
    list_->setGeometry(area.left(), area.top() + side + spacing::narrow, area.width(),
                       area.height() - side - spacing::narrow);
  }
}

void PieChartWidget::paintEvent(QPaintEvent* /*event*/) {
  if (pie_.slices.empty()) {
    QPainter painter(this);
    painter.setPen(theme::colour(Colour::Name::secondaryLabel));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, qtText(pie_.noDataText));
  }
}

}  // namespace corvane::desktop
