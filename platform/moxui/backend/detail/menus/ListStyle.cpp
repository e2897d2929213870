#include "moxui/backend/detail/menus/ListStyle.h"

#include <QPainter>
#include <QStyleOption>
#include <algorithm>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"

namespace moxui::backend {
namespace {

namespace Key = skins::ThemeColor;
using Size = skins::ThemeSize;

QColor Color(int key) {
    return ToQColor(skins::ThemeProvider::Get().GetColor(key));
}

/// The bar's thumb: as long a part of the bar as what is seen is of the whole.
QRect Thumb(QStyleOptionSlider const& bar) {
    bool const lies = bar.orientation == Qt::Horizontal;
    int const length = lies ? bar.rect.width() : bar.rect.height();
    auto const range = static_cast<qint64>(bar.maximum) - bar.minimum;
    auto const whole = std::max<qint64>(1, range + bar.pageStep);
    int const thumb =
        std::clamp(static_cast<int>(bar.pageStep * static_cast<qint64>(length) / whole),
                   std::min(WholeSize(Size::ShortestThumb), length), length);
    int const offset = QStyle::sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition,
                                                       length - thumb, bar.upsideDown);
    return lies ? QRect(bar.rect.x() + offset, bar.rect.y(), thumb, bar.rect.height())
                : QRect(bar.rect.x(), bar.rect.y() + offset, bar.rect.width(), thumb);
}

QRect PartOfBar(QStyleOptionSlider const& bar, QStyle::SubControl part) {
    auto const thumb = Thumb(bar);
    auto before = bar.rect;
    auto after = bar.rect;
    if (bar.orientation == Qt::Horizontal) {
        before.setRight(thumb.left() - 1);
        after.setLeft(thumb.right() + 1);
    } else {
        before.setBottom(thumb.top() - 1);
        after.setTop(thumb.bottom() + 1);
    }
    if (bar.upsideDown) std::swap(before, after);
    switch (part) {
        case QStyle::SC_ScrollBarSlider:
            return thumb;
        case QStyle::SC_ScrollBarGroove:
            return bar.rect;
        case QStyle::SC_ScrollBarSubPage:
            return before;
        case QStyle::SC_ScrollBarAddPage:
            return after;
        default:
            return {};
    }
}

}  // namespace

ListStyle& ListStyle::Get() {
    // Never destroyed, as the style that it derives from.
    static moxcore::utility::NoDestructor<ListStyle> style;
    return *style;
}

int ListStyle::pixelMetric(PixelMetric metric, QStyleOption const* option,
                           QWidget const* widget) const {
    switch (metric) {
        case PM_ScrollBarExtent:
            return WholeSize(Size::ScrollBar);
        case PM_ScrollBarSliderMin:
            return WholeSize(Size::ShortestThumb);
        case PM_MenuPanelWidth:
            return WholeSize(Size::LineWidth);
        case PM_MenuHMargin:
        case PM_MenuVMargin:
        case PM_ScrollView_ScrollBarSpacing:
        case PM_ScrollView_ScrollBarOverlap:
            return 0;
        default:
            return WidgetStyle::pixelMetric(metric, option, widget);
    }
}

int ListStyle::styleHint(StyleHint hint, QStyleOption const* option, QWidget const* widget,
                         QStyleHintReturn* returnData) const {
    switch (hint) {
        case SH_ComboBox_Popup:
            return 0;
        case SH_Menu_KeyboardSearch:
            return 1;
        default:
            return WidgetStyle::styleHint(hint, option, widget, returnData);
    }
}

QRect ListStyle::subControlRect(ComplexControl control, QStyleOptionComplex const* option,
                                SubControl part, QWidget const* widget) const {
    auto const* const bar = qstyleoption_cast<QStyleOptionSlider const*>(option);
    if (control != CC_ScrollBar || !bar)
        return WidgetStyle::subControlRect(control, option, part, widget);
    return PartOfBar(*bar, part);
}

void ListStyle::drawComplexControl(ComplexControl control, QStyleOptionComplex const* option,
                                   QPainter* painter, QWidget const* widget) const {
    auto const* const bar = qstyleoption_cast<QStyleOptionSlider const*>(option);
    if (control != CC_ScrollBar || !bar) {
        WidgetStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    painter->save();
    painter->fillRect(bar->rect, bar->palette.window());
    bool const held = bar->state & (State_MouseOver | State_Sunken);
    auto const thumb = QRectF(Thumb(*bar)).adjusted(1.5, 1.5, -1.5, -1.5);
    qreal const radius = std::min(thumb.width(), thumb.height()) / 2;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(Color(held ? Key::kIcon : Key::kControlBorder));
    painter->drawRoundedRect(thumb, radius, radius);
    painter->restore();
}

QSize ListStyle::sizeFromContents(ContentsType type, QStyleOption const* option,
                                  QSize const& contents, QWidget const* widget) const {
    auto const* const item = qstyleoption_cast<QStyleOptionMenuItem const*>(option);
    if (type != CT_MenuItem || !item)
        return WidgetStyle::sizeFromContents(type, option, contents, widget);
    return {item->fontMetrics.horizontalAdvance(item->text) + 2 * WholeSize(Size::MenuPadding),
            WholeSize(Size::MenuRowHeight)};
}

void ListStyle::drawControl(ControlElement element, QStyleOption const* option, QPainter* painter,
                            QWidget const* widget) const {
    auto const* const item = qstyleoption_cast<QStyleOptionMenuItem const*>(option);
    if (element != CE_MenuItem || !item) {
        WidgetStyle::drawControl(element, option, painter, widget);
        return;
    }
    bool const isEnabled = item->state & State_Enabled;
    bool const isHighlighted = isEnabled && (item->state & State_Selected);
    int const padding = WholeSize(Size::MenuPadding);
    auto const side = QStyle::visualAlignment(item->direction, Qt::AlignLeft);
    painter->save();
    if (isHighlighted) painter->fillRect(item->rect, Color(Key::kHighlight));
    painter->setFont(item->font);
    painter->setPen(Color(!isEnabled      ? Key::kDisabledText
                          : isHighlighted ? Key::kSelectedText
                                          : Key::kText));
    painter->drawText(
        item->rect.adjusted(padding, 0, -padding, 0),
        static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine | Qt::TextHideMnemonic,
        item->text);
    painter->restore();
}

void ListStyle::drawPrimitive(PrimitiveElement element, QStyleOption const* option,
                              QPainter* painter, QWidget const* widget) const {
    if (element == PE_PanelScrollAreaCorner) return;
    if (element == PE_PanelMenu) {
        painter->fillRect(option->rect, Color(Key::kGround));
        return;
    }
    if (element == PE_Frame || element == PE_FrameMenu) {
        PaintFrameLine(*painter, option->rect);
        return;
    }
    WidgetStyle::drawPrimitive(element, option, painter, widget);
}

}  // namespace moxui::backend
