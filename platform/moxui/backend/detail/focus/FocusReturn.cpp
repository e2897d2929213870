#include "moxui/backend/detail/focus/FocusReturn.h"

#include <QApplication>
#include <QWindow>

#include "moxui/backend/detail/windows/Wayland.h"

namespace moxui::backend {

void FocusReturn::RememberFor(QWidget const& taking) {
    auto* const active = QApplication::activeWindow();
    if (!active || active == &taking) return;
    window = active;
    widget = QApplication::focusWidget();
}

void FocusReturn::ForgetOutside(QWidget const& other) {
    if (window == &other) return;
    window = nullptr;
    widget = nullptr;
}

bool FocusReturn::IsWith(QWidget const& other) {
    // Where the window system gives a popup's focus to its owner, Qt knows better.
    auto const* const active = QApplication::activeWindow();
    auto const* const focused = IsOnWayland() ? (active ? active->windowHandle() : nullptr)
                                              : QGuiApplication::focusWindow();
    return focused && BelongsTo(*focused, other);
}

void FocusReturn::GiveBack(QWidget* otherwise) const {
    if (window && window->isVisible()) {
        Activate(*window);
        if (widget && widget->isVisible()) widget->setFocus(Qt::PopupFocusReason);
    } else if (otherwise && otherwise->isVisible()) {
        Activate(*otherwise->window());
    }
}

bool BelongsTo(QWindow const& window, QWidget const& owner) {
    auto const* const own = owner.windowHandle();
    return own && (&window == own || own->isAncestorOf(&window, QWindow::IncludeTransients));
}

}  // namespace moxui::backend
