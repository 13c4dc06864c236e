#include "desktop/look/corvane_style.h"

#include <QAbstractScrollArea>
#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTabBar>
#include <QTableView>
#include <algorithm>
#include <optional>

#include "desktop/look/line_icon.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int scrollBarExtent = 12;
constexpr int leastThumb = 28;
constexpr double thumbInset = 2.5;
constexpr QMargins headingMargins(6, 5, 6, 6);  // the last row of them is the line below
constexpr QMargins tabMargins(16, 7, 16, 9);    // with the line below
constexpr int tabLine = 2;
constexpr int tooltipFrame = 4;
constexpr int leastPlacesWidth = 130;  // in the panel for files

/// The edge of a field in a dark window or one of high contrast; that of the field with the
/// keyboard is the style's own.
void drawFieldEdge(const QStyleOption& option, QPainter& painter) {
  const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
  const bool isDark = theme::appearance() == Appearance::dark;
  const bool isStrong = theme::contrast() == Contrast::high;
  if ((!isDark && !isStrong) || (option.state.testFlag(QStyle::State_HasFocus) && isEnabled)) {
    return;
  }
  QColor edge = isEnabled ? QColor(0x6A, 0x6B, 0x72) : QColor(0x48, 0x49, 0x4F);
  if (isStrong) {
    edge = theme::colour(isEnabled ? Colour::Name::label : Colour::Name::tertiaryLabel);
  }
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(edge);
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
  painter.restore();
}

void drawTick(QPainter& painter, const QRectF& box, const QColor& ink, bool isWhole) {
  const double side = box.width();
  const auto at = [&](double x, double y) { return box.topLeft() + QPointF(x, y) * side; };
  painter.setPen(QPen(ink, side * 0.14, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(isWhole ? QPolygonF({at(0.24, 0.52), at(0.43, 0.72), at(0.78, 0.30)})
                               : QPolygonF({at(0.26, 0.5), at(0.74, 0.5)}));
}

QRectF indicatorBox(const QStyleOption& option) {
  const double side = std::min(option.rect.width(), option.rect.height()) - 1;
  QRectF box(0, 0, side, side);
  box.moveCenter(QRectF(option.rect).center());
  return box;
}

void drawCheckIndicator(const QStyleOption& option, QPainter& painter, bool isRound) {
  const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
  const bool isFull =
      option.state.testFlag(QStyle::State_On) || option.state.testFlag(QStyle::State_NoChange);
  const QRectF box = indicatorBox(option);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor fill = option.palette.color(isFull ? QPalette::Highlight : QPalette::Base);
  QColor edge = theme::colour(isEnabled ? Colour::Name::secondaryLabel : Colour::Name::separator);
  if (isFull) {
    edge = fill;
  }
  if (option.state.testFlag(QStyle::State_HasFocus)) {
    edge = theme::colour(Colour::Name::systemBlue);
  }
  painter.setPen(QPen(edge, 1));
  painter.setBrush(fill);
  isRound ? painter.drawEllipse(box) : painter.drawRoundedRect(box, 3, 3);
  const QColor ink = option.palette.color(QPalette::HighlightedText);
  if (isFull && isRound) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    painter.drawEllipse(box.center(), box.width() * 0.2, box.width() * 0.2);
  } else if (isFull) {
    drawTick(painter, box, ink, option.state.testFlag(QStyle::State_On));
  }
  painter.restore();
}

/// What is chosen in a menu has a tick, and what is not has nothing.
void drawMenuMark(const QStyleOption& option, QPainter& painter) {
  if (!option.state.testFlag(QStyle::State_On)) {
    return;
  }
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  drawTick(
      painter, indicatorBox(option),
      option.palette.color(option.state.testFlag(QStyle::State_Selected) ? QPalette::HighlightedText
                                                                         : QPalette::Text),
      true);
  painter.restore();
}

QRect scrollBarPart(const QStyleOptionSlider& bar, QStyle::SubControl part) {
  const bool isAcross = bar.orientation == Qt::Horizontal;
  const int length = isAcross ? bar.rect.width() : bar.rect.height();
  const qint64 range = qint64{bar.maximum} - bar.minimum;
  const int thumb = range <= 0
                        ? length
                        : std::clamp(static_cast<int>(qint64{bar.pageStep} * length /
                                                      std::max<qint64>(1, range + bar.pageStep)),
                                     std::min(leastThumb, length), length);
  const int start = QStyle::sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition,
                                                    length - thumb, bar.upsideDown);
  const auto piece = [&](int from, int size) {
    const QRect logical =
        isAcross ? QRect(from, 0, size, bar.rect.height()) : QRect(0, from, bar.rect.width(), size);
    return QStyle::visualRect(bar.direction, bar.rect, logical.translated(bar.rect.topLeft()));
  };
  switch (part) {
    case QStyle::SC_ScrollBarSubPage:
      return piece(0, start);
    case QStyle::SC_ScrollBarAddPage:
      return piece(start + thumb, length - start - thumb);
    case QStyle::SC_ScrollBarSlider:
      return piece(start, thumb);
    case QStyle::SC_ScrollBarGroove:
      return bar.rect;
    default:
      return {};  // there are no arrows
  }
}

/// The colour behind what scrolls in `area`, if it is something that scrolls.
QColor groundOf(const QWidget* area, const QStyleOption& option) {
  const auto* scrolled = qobject_cast<const QAbstractScrollArea*>(area);
  if (scrolled == nullptr) {
    return option.palette.color(QPalette::Base);
  }
  const QWidget& ground = *scrolled->viewport();
  return ground.palette().color(ground.backgroundRole());
}

/// What scrolls by `bar`, which stands in a container of its own.
const QWidget* areaOf(const QWidget* bar) {
  const QWidget* container = bar == nullptr ? nullptr : bar->parentWidget();
  return container == nullptr ? nullptr : container->parentWidget();
}

void drawScrollBar(const QStyleOptionSlider& bar, QPainter& painter, const QColor& ground) {
  painter.fillRect(bar.rect, ground);
  if (bar.maximum <= bar.minimum) {
    return;
  }
  QColor thumb = theme::colour(Colour::Name::label);
  const bool isHeld =
      bar.activeSubControls.testFlag(QStyle::SC_ScrollBarSlider) &&
      (bar.state.testFlag(QStyle::State_Sunken) || bar.state.testFlag(QStyle::State_MouseOver));
  thumb.setAlphaF(isHeld ? 0.62F : 0.42F);
  const QRectF shape = QRectF(scrollBarPart(bar, QStyle::SC_ScrollBarSlider))
                           .adjusted(thumbInset, thumbInset, -thumbInset, -thumbInset);
  const double radius = std::min(shape.width(), shape.height()) / 2;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(thumb);
  painter.drawRoundedRect(shape, radius, radius);
  painter.restore();
}

/// The ground of a heading, with a line between it and the table.
void drawHeadingGround(const QRect& rect, QPainter& painter, bool hasLine) {
  painter.fillRect(rect, theme::colour(Colour::Name::controlBackground));
  if (hasLine) {
    painter.fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1),
                     theme::colour(Colour::Name::separator));
  }
}

/// A button that is chosen among others must be told from them in the dark as well.
void drawChosenBevel(const QStyleOption& button, QPainter& painter) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(button.palette.color(QPalette::Highlight));
  painter.drawRoundedRect(button.rect, 3, 3);
  painter.restore();
}

void drawChosenLabel(const QStyleOptionButton& button, QPainter& painter) {
  painter.save();
  QFont font = painter.font();
  font.setWeight(QFont::DemiBold);
  painter.setFont(font);
  painter.setPen(button.palette.color(QPalette::HighlightedText));
  painter.drawText(button.rect, Qt::AlignCenter | Qt::TextShowMnemonic, button.text);
  painter.restore();
}

void drawTabLine(const QStyleOption& tab, QPainter& painter) {
  if (tab.state.testFlag(QStyle::State_Selected)) {
    painter.fillRect(
        QRect(tab.rect.left(), tab.rect.bottom() + 1 - tabLine, tab.rect.width(), tabLine),
        theme::colour(Colour::Name::systemBlue));
  }
}

Colour::Name tabInk(QStyle::State state) {
  if (state.testFlag(QStyle::State_HasFocus)) {
    return Colour::Name::systemBlue;
  }
  return state & (QStyle::State_Selected | QStyle::State_MouseOver) ? Colour::Name::label
                                                                    : Colour::Name::secondaryLabel;
}

/// `option` with text in `ink`, wherever its palette is looked at for it.
template <class Option>
Option withInk(const Option& option, Colour::Name ink) {
  Option made = option;
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    made.palette.setColor(role, theme::colour(ink));
  }
  return made;
}

/// A list or table of ours says by other means where the keyboard is.
bool hasFocusFrame(const QWidget* widget) {
  return qobject_cast<const QTableView*>(widget) == nullptr &&
         (widget == nullptr || widget->objectName() != QLatin1String("sourceList"));
}

/// What the toolkit's own panels leave to the style.
void polishPanelPart(QWidget& widget) {
  if (widget.objectName() == QLatin1String("qt_msgbox_label")) {
    QFont font = widget.font();
    font.setWeight(QFont::DemiBold);
    widget.setFont(font);
  } else if (widget.objectName() == QLatin1String("sidebar") && widget.inherits("QSidebar")) {
    widget.setMinimumWidth(leastPlacesWidth);
  }
}

/// A screen reader hears the value of a box as its name, and its name only from a label beside it.
/// Where there is none, one that is not seen says it.
void nameAloud(QComboBox& box) {
  QWidget* parent = box.parentWidget();
  if (parent == nullptr) {
    return;
  }
  const QString spoken = QStringLiteral("spokenName");
  // The panel for files has labels for its boxes, but does not say whose they are.
  const QString ofPanel =
      box.objectName().replace(QStringLiteral("Combo"), QStringLiteral("Label"));
  for (QLabel* label : parent->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (label->buddy() == &box) {
      if (label->objectName() == spoken) {
        label->setText(box.accessibleName());
      }
      return;
    }
    if (!ofPanel.isEmpty() && label->objectName() == ofPanel && label->buddy() == nullptr) {
      label->setBuddy(&box);
      return;
    }
  }
  if (box.accessibleName().isEmpty()) {
    return;
  }
  auto* label = new QLabel(box.accessibleName(), parent);
  label->setObjectName(spoken);
  label->setTextFormat(Qt::PlainText);
  label->hide();
  label->setBuddy(&box);
  QObject::connect(&box, &QObject::destroyed, label, &QObject::deleteLater);
}

std::optional<LineIcon> ownIcon(QStyle::StandardPixmap which) {
  switch (which) {
    case QStyle::SP_ArrowBack:
    case QStyle::SP_ArrowLeft:
    case QStyle::SP_FileDialogBack:
      return LineIcon::back;
    case QStyle::SP_ArrowForward:
    case QStyle::SP_ArrowRight:
      return LineIcon::forward;
    case QStyle::SP_ArrowUp:
    case QStyle::SP_FileDialogToParent:
      return LineIcon::up;
    case QStyle::SP_FileDialogNewFolder:
      return LineIcon::newFolder;
    case QStyle::SP_FileDialogListView:
      return LineIcon::list;
    case QStyle::SP_FileDialogDetailedView:
      return LineIcon::details;
    case QStyle::SP_DirIcon:
    case QStyle::SP_DirOpenIcon:
    case QStyle::SP_DirClosedIcon:
    case QStyle::SP_DirLinkIcon:
      return LineIcon::folder;
    case QStyle::SP_FileIcon:
    case QStyle::SP_FileLinkIcon:
      return LineIcon::file;
    case QStyle::SP_ComputerIcon:
    case QStyle::SP_DriveHDIcon:
      return LineIcon::computer;
    case QStyle::SP_DirHomeIcon:
      return LineIcon::home;
    case QStyle::SP_MessageBoxInformation:
      return LineIcon::information;
    case QStyle::SP_MessageBoxWarning:
      return LineIcon::warning;
    case QStyle::SP_MessageBoxCritical:
      return LineIcon::critical;
    case QStyle::SP_MessageBoxQuestion:
      return LineIcon::question;
    default:
      return std::nullopt;
  }
}

}  // namespace

CorvaneStyle::CorvaneStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

void CorvaneStyle::polish(QWidget* widget) {
  QProxyStyle::polish(widget);
  if (qobject_cast<QComboBox*>(widget) != nullptr) {
    widget->installEventFilter(this);
  } else if (auto* table = qobject_cast<QTableView*>(widget)) {
    table->setFrameShape(QFrame::NoFrame);
  } else if (qobject_cast<QTabBar*>(widget) != nullptr) {
    widget->setAttribute(Qt::WA_Hover);
  }
  polishPanelPart(*widget);
}

void CorvaneStyle::unpolish(QWidget* widget) {
  widget->removeEventFilter(this);
  QProxyStyle::unpolish(widget);
}

bool CorvaneStyle::eventFilter(QObject* watched, QEvent* event) {
  // By then it has its name, which a style that is asked for sizes early does not find yet.
  if (event->type() == QEvent::Show) {
    if (auto* box = qobject_cast<QComboBox*>(watched)) {
      nameAloud(*box);
    }
  }
  return QProxyStyle::eventFilter(watched, event);
}

void CorvaneStyle::drawControl(ControlElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
  const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
  if (element == CE_PushButtonLabel && button != nullptr && widget != nullptr &&
      widget->property(fieldProperty).toBool()) {
    drawItemText(painter, button->rect.adjusted(spacing::tight, 0, -spacing::tight, 0),
                 Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic, button->palette,
                 button->state.testFlag(State_Enabled), button->text, QPalette::ButtonText);
    return;
  }
  if (button != nullptr && button->state.testFlag(State_On) &&
      qobject_cast<const QPushButton*>(widget) != nullptr) {
    if (element == CE_PushButtonBevel) {
      drawChosenBevel(*button, *painter);
      return;
    }
    if (element == CE_PushButtonLabel) {
      drawChosenLabel(*button, *painter);
      return;
    }
  }
  switch (element) {
    case CE_HeaderSection:
      drawHeadingGround(option->rect, *painter,
                        qobject_cast<const QHeaderView*>(widget) != nullptr);
      return;
    case CE_HeaderEmptyArea:
      drawHeadingGround(option->rect, *painter, false);
      return;
    case CE_Splitter:
      painter->fillRect(option->rect, theme::colour(Colour::Name::separator));
      return;
    case CE_TabBarTabShape:
      drawTabLine(*option, *painter);
      return;
    default:
      break;
  }
  if (const auto* heading = qstyleoption_cast<const QStyleOptionHeader*>(option);
      element == CE_HeaderLabel && heading != nullptr) {
    auto inked = withInk(*heading, Colour::Name::secondaryLabel);
    // The base has left its own margin, which the size of a heading has on top of ours.
    const int margin = pixelMetric(PM_HeaderMargin, option, widget);
    inked.rect = inked.rect.marginsAdded(QMargins(margin, margin, margin, margin))
                     .marginsRemoved(headingMargins);
    QProxyStyle::drawControl(element, &inked, painter, widget);
    return;
  }
  if (const auto* tab = qstyleoption_cast<const QStyleOptionTab*>(option);
      element == CE_TabBarTabLabel && tab != nullptr) {
    const auto inked = withInk(*tab, tabInk(tab->state));
    QProxyStyle::drawControl(element, &inked, painter, widget);
    return;
  }
  QProxyStyle::drawControl(element, option, painter, widget);
  if (element == CE_PushButtonBevel && theme::contrast() == Contrast::high && button != nullptr &&
      !button->features.testFlag(QStyleOptionButton::Flat)) {
    drawFieldEdge(*option, *painter);
  }
}

QSize CorvaneStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                     const QSize& size, const QWidget* widget) const {
  if (type == CT_TabBarTab || type == CT_TabWidget) {
    return size;
  }
  QSize made = QProxyStyle::sizeFromContents(type, option, size, widget);
  const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
  if (type == CT_PushButton && button != nullptr && !button->text.isEmpty()) {
    // A button has a least width of its own, in which a short text has air enough.
    made.setWidth(std::max(made.width(), size.width() + 2 * spacing::medium));
  } else if (type == CT_HeaderSection) {
    made = made.grownBy(headingMargins);
  }
  return made;
}

void CorvaneStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const {
  switch (element) {
    case PE_IndicatorCheckBox:
    case PE_IndicatorRadioButton:
      if (qobject_cast<const QMenu*>(widget) != nullptr) {
        drawMenuMark(*option, *painter);
      } else {
        drawCheckIndicator(*option, *painter, element == PE_IndicatorRadioButton);
      }
      return;
    case PE_FrameTabWidget:
    case PE_FrameTabBarBase:
      return;
    case PE_FrameFocusRect:
      if (hasFocusFrame(widget)) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
      }
      return;
    case PE_PanelTipLabel:
      painter->fillRect(option->rect, theme::colour(Colour::Name::separator));
      painter->fillRect(option->rect.adjusted(1, 1, -1, -1),
                        option->palette.color(QPalette::ToolTipBase));
      return;
    case PE_PanelScrollAreaCorner:
      painter->fillRect(option->rect, groundOf(widget, *option));
      return;
    case PE_PanelMenu:
    case PE_FrameMenu:
      QProxyStyle::drawPrimitive(element, option, painter, widget);
      painter->save();
      painter->setPen(theme::colour(Colour::Name::separator));
      painter->setBrush(Qt::NoBrush);
      painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
      painter->restore();
      return;
    case PE_FrameLineEdit:
    case PE_Frame:
      QProxyStyle::drawPrimitive(element, option, painter, widget);
      drawFieldEdge(*option, *painter);
      return;
    default:
      QProxyStyle::drawPrimitive(element, option, painter, widget);
  }
}

void CorvaneStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const {
  if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
      control == CC_ScrollBar && bar != nullptr) {
    drawScrollBar(*bar, *painter, groundOf(areaOf(widget), *option));
    return;
  }
  QProxyStyle::drawComplexControl(control, option, painter, widget);
  if (control == CC_ComboBox || control == CC_SpinBox) {
    drawFieldEdge(*option, *painter);
  }
}

QRect CorvaneStyle::subElementRect(SubElement element, const QStyleOption* option,
                                   const QWidget* widget) const {
  switch (element) {
    case SE_TabBarTabText:
      return option->rect.marginsRemoved(tabMargins);
    case SE_TabWidgetTabContents:
      return QProxyStyle::subElementRect(SE_TabWidgetTabPane, option, widget);
    default:
      return QProxyStyle::subElementRect(element, option, widget);
  }
}

QRect CorvaneStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                   SubControl part, const QWidget* widget) const {
  if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
      control == CC_ScrollBar && bar != nullptr) {
    return scrollBarPart(*bar, part);
  }
  return QProxyStyle::subControlRect(control, option, part, widget);
}

int CorvaneStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                              const QWidget* widget) const {
  switch (metric) {
    case PM_ScrollBarExtent:
      return scrollBarExtent;
    case PM_ScrollBarSliderMin:
      return leastThumb;
    case PM_TabBarTabHSpace:
      return tabMargins.left() + tabMargins.right();
    case PM_TabBarTabVSpace:
      return tabMargins.top() + tabMargins.bottom();
    case PM_TabBarTabOverlap:
    case PM_TabBarBaseOverlap:
    case PM_TabBarTabShiftVertical:
    case PM_TabBarTabShiftHorizontal:
      return 0;
    case PM_ToolTipLabelFrameWidth:
      return tooltipFrame;
    default:
      return QProxyStyle::pixelMetric(metric, option, widget);
  }
}

QIcon CorvaneStyle::standardIcon(StandardPixmap which, const QStyleOption* option,
                                 const QWidget* widget) const {
  const auto own = ownIcon(which);
  return own ? lineIcon(*own) : QProxyStyle::standardIcon(which, option, widget);
}

QPixmap CorvaneStyle::standardPixmap(StandardPixmap which, const QStyleOption* option,
                                     const QWidget* widget) const {
  const auto own = ownIcon(which);
  return own ? lineIcon(*own).pixmap(pixelMetric(PM_LargeIconSize, option, widget))
             : QProxyStyle::standardPixmap(which, option, widget);
}

}  // namespace corvane::desktop
