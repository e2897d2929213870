#include "moxui/backend/detail/MenuButton.h"

#include "moxui/backend/detail/Conversions.h"
#include "moxui/backend/detail/QtDrawbot.h"
#include "moxui/skins/ThemeSize.h"

namespace moxui::backend {

void PaintMenuButton(QPainter& painter, QWidget const& button, skins::ThemeClient const& colors,
                     MenuButtonLook const& look) {
    namespace Key = skins::ThemeColor;
    auto const color = [&](int key) { return ToQColor(colors.GetColor(key)); };
    bool const isFramed = look.chrome == controls::ButtonChromeType::Framed;
    bool const isEnabled = button.isEnabled();
    bool const isActive = isEnabled && (look.isHovered || look.isPressed);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    auto const place = QRectF(button.rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (isFramed || isActive) {
        painter.setPen(isFramed ? QPen(color(isEnabled ? Key::kControlBorder : Key::kControl))
                                : QPen(Qt::NoPen));
        painter.setBrush(color(isEnabled && look.isPressed ? Key::kControlPressed
                               : isActive                  ? Key::kButtonHovered
                                                           : Key::kButtonGround));
        painter.drawRoundedRect(place, skins::ThemeSize::kCornerRadius,
                                skins::ThemeSize::kCornerRadius);
    }
    painter.restore();
    if (button.hasFocus()) PaintFocusRing(painter, QRectF(button.rect()));
}

}  // namespace moxui::backend
