#include "moxui/backend/detail/windows/ReturnPress.h"

namespace moxui::backend {

bool ReturnPress::Begin(QWindow& pressed, QMouseEvent const& press) {
    if (IsUnderWay() && at == press.timestamp()) return false;
    *this = ReturnPress();
    window = &pressed;
    at = press.timestamp();
    begun = true;
    return true;
}

void ReturnPress::HasOpened(QWidget const& opened) {
    hasOpened = true;
    givesFocusAway |= opened.windowType() != Qt::Popup;
}

bool ReturnPress::DoesSomething() const {
    // A widget that is gone by now was destroyed by the press; what a window without widgets
    // does with it is not known.
    return hasOpened || !offered || !offered->isWindow();
}

}  // namespace moxui::backend
