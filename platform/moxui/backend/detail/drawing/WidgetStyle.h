#pragma once

#include <QProxyStyle>

#include "moxcore/utility/NoDestructor.h"

namespace moxui::backend {

/// The dynamic property of a widget that holds its tooltip's delay in milliseconds.
inline constexpr char kToolTipDelayProperty[] = "moxuiToolTipDelay";

/// How the toolkit's controls look, whatever style the host's application has: flat, in the theme's
/// colours. Put on each control by itself.
class WidgetStyle : public QProxyStyle {
public:
    [[nodiscard]] static WidgetStyle& Get();

    int styleHint(StyleHint hint, QStyleOption const* option, QWidget const* widget,
                  QStyleHintReturn* returnData) const override;

protected:
    friend class moxcore::utility::NoDestructor<WidgetStyle>;
    WidgetStyle();
};

}  // namespace moxui::backend
