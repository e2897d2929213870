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
    // A widget that is gone by now went because of the press; a window without widgets tells
    // nothing of what it does.
    return hasOpened || !offered || !offered->isWindow();
}

}  // namespace moxui::backend
