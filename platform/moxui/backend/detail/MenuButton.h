#pragma once

#include <QPainter>
#include <QWidget>
#include <functional>
#include <utility>

#include "moxui/controls/ButtonChromeType.h"
#include "moxui/skins/ThemeClient.h"

namespace moxui::backend {

/// How a button that opens a menu looks at this moment.
struct MenuButtonLook {
    controls::ButtonChromeType chrome = controls::ButtonChromeType::Framed;
    bool isHovered = false;
    bool isPressed = false;  // its menu is open, too
};

/// The ground and the border of such a button, and the ring of the focus.
void PaintMenuButton(QPainter& painter, QWidget const& button, skins::ThemeClient const& colors,
                     MenuButtonLook const& look);

/// Tells somebody before a menu opens and after it has closed, once each.
class MenuNotices {
public:
    std::function<void()> before;
    std::function<void()> after;

    [[nodiscard]] bool IsOpen() const { return isOpen; }

    void WillOpen() {
        isOpen = true;
        Call(before);
    }
    void HasClosed() {
        if (std::exchange(isOpen, false)) Call(after);
    }

private:
    /// A function may replace itself.
    static void Call(std::function<void()> const& function) {
        if (auto const copy = function) copy();
    }

    bool isOpen = false;
};

}  // namespace moxui::backend
