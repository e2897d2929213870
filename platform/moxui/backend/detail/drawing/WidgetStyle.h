#pragma once

#include <QProxyStyle>

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
    WidgetStyle();
};

}  // namespace moxui::backend
