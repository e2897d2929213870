#pragma once

#include "moxcore/utility/NoDestructor.h"
#include "moxui/backend/detail/drawing/WidgetStyle.h"

namespace moxui::backend {

/// How what scrolls and what drops down looks: thin scroll bars without arrows, a drop-down menu
/// below its button, a menu of commands that looks like one.
class ListStyle : public WidgetStyle {
public:
    [[nodiscard]] static ListStyle& Get();

    int pixelMetric(PixelMetric metric, QStyleOption const* option,
                    QWidget const* widget) const override;
    int styleHint(StyleHint hint, QStyleOption const* option, QWidget const* widget,
                  QStyleHintReturn* returnData) const override;
    QRect subControlRect(ComplexControl control, QStyleOptionComplex const* option, SubControl part,
                         QWidget const* widget) const override;
    void drawComplexControl(ComplexControl control, QStyleOptionComplex const* option,
                            QPainter* painter, QWidget const* widget) const override;
    QSize sizeFromContents(ContentsType type, QStyleOption const* option, QSize const& contents,
                           QWidget const* widget) const override;
    void drawControl(ControlElement element, QStyleOption const* option, QPainter* painter,
                     QWidget const* widget) const override;
    void drawPrimitive(PrimitiveElement element, QStyleOption const* option, QPainter* painter,
                       QWidget const* widget) const override;

private:
    friend class moxcore::utility::NoDestructor<ListStyle>;
    ListStyle() = default;
};

}  // namespace moxui::backend
