#include "moxui/backend/detail/drawing/WidgetStyle.h"

#include <QVariant>
#include <QWidget>

namespace moxui::backend {

WidgetStyle::WidgetStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

WidgetStyle& WidgetStyle::Get() {
    // Never destroyed: widgets of the host may outlive this library's own statics.
    static moxcore::utility::NoDestructor<WidgetStyle> style;
    return *style;
}

int WidgetStyle::styleHint(StyleHint hint, QStyleOption const* option, QWidget const* widget,
                           QStyleHintReturn* returnData) const {
    if (hint == SH_ToolTip_WakeUpDelay && widget) {
        auto const delay = widget->property(kToolTipDelayProperty);
        if (delay.isValid()) return delay.toInt();
    }
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

}  // namespace moxui::backend
