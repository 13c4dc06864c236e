#include "desktop/look/line_icon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr double iconSide = 24;  // the units in which icons are drawn
constexpr double lineWidth = 1.7;

QPainterPath lines(std::initializer_list<std::initializer_list<QPointF>> strokes) {
  QPainterPath path;
  for (const auto& stroke : strokes) {
    bool isFirst = true;
    for (const QPointF& point : stroke) {
      isFirst ? path.moveTo(point) : path.lineTo(point);
      isFirst = false;
    }
  }
  return path;
}

QPainterPath folderOutline() {
  QPainterPath path;
  path.moveTo(3, 18.5);
  path.lineTo(3, 6);
  path.lineTo(9, 6);
  path.lineTo(11, 8.5);
  path.lineTo(21, 8.5);
  path.lineTo(21, 18.5);
  path.closeSubpath();
  return path;
}

QPainterPath outlineOf(LineIcon icon) {
  switch (icon) {
    case LineIcon::back:
      return lines({{{20, 12}, {4, 12}}, {{10.5, 5.5}, {4, 12}, {10.5, 18.5}}});
    case LineIcon::forward:
      return lines({{{4, 12}, {20, 12}}, {{13.5, 5.5}, {20, 12}, {13.5, 18.5}}});
    case LineIcon::up:
      return lines({{{12, 20}, {12, 4}}, {{5.5, 10.5}, {12, 4}, {18.5, 10.5}}});
    case LineIcon::newFolder: {
      QPainterPath path = folderOutline();
      path.addPath(lines({{{12, 10.7}, {12, 16.3}}, {{9.2, 13.5}, {14.8, 13.5}}}));
      return path;
    }
    case LineIcon::list: {
      QPainterPath path;
      for (const auto& corner : {QPointF(4, 4), QPointF(14, 4), QPointF(4, 14), QPointF(14, 14)}) {
        path.addRoundedRect(QRectF(corner, QSizeF(6, 6)), 1, 1);
      }
      return path;
    }
    case LineIcon::details:
      return lines({{{4, 6}, {20, 6}}, {{4, 12}, {20, 12}}, {{4, 18}, {20, 18}}});
    case LineIcon::folder:
      return folderOutline();
    case LineIcon::file: {
      QPainterPath path = lines({{{14, 3}, {14, 8}, {19, 8}}});
      path.addPath(lines({{{14, 3}, {5, 3}, {5, 21}, {19, 21}, {19, 8}, {14, 3}}}));
      return path;
    }
    case LineIcon::computer: {
      QPainterPath path = lines({{{8, 20}, {16, 20}}, {{12, 16}, {12, 20}}});
      path.addRoundedRect(QRectF(3, 4, 18, 12), 1.5, 1.5);
      return path;
    }
    case LineIcon::home:
      return lines({{{3, 12}, {12, 4}, {21, 12}},
                    {{5.5, 10.5}, {5.5, 20}, {18.5, 20}, {18.5, 10.5}},
                    {{10, 20}, {10, 14}, {14, 14}, {14, 20}}});
    case LineIcon::information:
    case LineIcon::warning:
    case LineIcon::critical:
    case LineIcon::question:
      break;
  }
  return {};
}

/// The sign of an alert: a letter on a shape, each of which tells the kinds apart without colour.
void drawSign(QPainter& painter, LineIcon icon) {
  const bool isWarning = icon == LineIcon::warning;
  const bool isCritical = icon == LineIcon::critical;
  QColor fill = theme::colour(Colour::Name::systemBlue);
  if (isWarning) {
    fill = QColor(0xE8, 0xA3, 0x17);
  } else if (isCritical) {
    fill = theme::colour(Colour::Name::systemRed);
  }
  painter.setPen(QPen(fill, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(fill);
  if (isWarning) {
    painter.drawPolygon(QPolygonF({{12, 3.5}, {21.5, 20.5}, {2.5, 20.5}}));
  } else {
    painter.drawEllipse(QPointF(12, 12), 9.5, 9.5);
  }
  QFont font = theme::font(1, QFont::Bold);
  font.setPixelSize(isWarning ? 12 : 15);
  painter.setFont(font);
  painter.setPen(isWarning ? QColor(0x22, 0x18, 0x00) : QColor(Qt::white));
  painter.drawText(QRectF(0, isWarning ? 4 : 0, iconSide, isWarning ? 19 : iconSide),
                   Qt::AlignCenter,
                   icon == LineIcon::information ? QStringLiteral("i")
                   : icon == LineIcon::question  ? QStringLiteral("?")
                                                 : QStringLiteral("!"));
}

bool isSign(LineIcon icon) {
  return icon == LineIcon::information || icon == LineIcon::warning || icon == LineIcon::critical ||
         icon == LineIcon::question;
}

}  // namespace

QIcon lineIcon(LineIcon which) {
  QIcon icon;
  for (const int side : {16, 20, 24, 32, 48, 64, 96}) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / iconSide, side / iconSide);
    if (isSign(which)) {
      drawSign(painter, which);
    } else {
      painter.setPen(QPen(theme::colour(Colour::Name::label), lineWidth, Qt::SolidLine,
                          Qt::RoundCap, Qt::RoundJoin));
      if (which == LineIcon::folder || which == LineIcon::newFolder) {
        QColor tint = theme::colour(Colour::Name::systemBlue);
        tint.setAlphaF(0.18F);
        painter.setBrush(tint);
      }
      painter.drawPath(outlineOf(which));
    }
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace corvane::desktop
