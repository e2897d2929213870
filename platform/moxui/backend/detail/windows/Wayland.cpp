#include "moxui/backend/detail/windows/Wayland.h"

#include <QApplication>
#include <QWindow>

#include "moxui/backend/detail/focus/FocusReturn.h"

namespace moxui::backend {

bool IsOnWayland() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void HangFromOwner(QWidget& window) {
    if (!IsOnWayland()) return;
    window.winId();  // makes the window handle
    auto* const handle = window.windowHandle();
    // Qt makes what shows tooltips a popup that grabs nothing. The widget stays what it is.
    handle->setFlags((handle->flags() & ~Qt::WindowType_Mask) | Qt::ToolTip);
}

void HangFromPopup(QWidget& menu, QWidget const& opener) {
    auto const* const owner = opener.window()->windowHandle();
    if (owner && owner->type() == Qt::ToolTip) HangFromOwner(menu);
}

void LetInputThrough(QWidget& window) {
    // Qt 6.4 takes the flag for that into account elsewhere only. Here a mask is where input
    // counts.
    if (IsOnWayland()) window.windowHandle()->setMask(QRegion(-1, -1, 1, 1));
}

void Activate(QWidget& window) {
    window.activateWindow();
    if (IsOnWayland() && QGuiApplication::focusWindow()) QApplication::setActiveWindow(&window);
}

void ActivateOnReturn(QWidget& popup) {
    if (!IsOnWayland()) return popup.activateWindow();
    QMetaObject::invokeMethod(
        &popup,
        [&popup] {
            if (popup.isVisible()) Activate(popup);
        },
        Qt::QueuedConnection);
}

void CloseMenuOf(QWidget const& popup) {
    auto* const menu = IsOnWayland() ? QApplication::activePopupWidget() : nullptr;
    if (menu && menu->windowHandle() && BelongsTo(*menu->windowHandle(), popup)) menu->close();
}

bool KeysFromOwner::Filter(QObject& receiver, QEvent& event) {
    auto* const handle = popup.windowHandle();
    if (!IsOnWayland() || !handle || !receiver.isWindowType() || &receiver == handle ||
        QApplication::activeWindow() != &popup)
        return false;
    bool const isMenuOpen = QApplication::activePopupWidget() != nullptr;
    // The first of the events of a key.
    if (event.type() == QEvent::ShortcutOverride) isForMenu = isMenuOpen;
    if (isForMenu || isMenuOpen) return !isMenuOpen;
    QCoreApplication::sendEvent(handle, &event);
    return true;
}

}  // namespace moxui::backend
