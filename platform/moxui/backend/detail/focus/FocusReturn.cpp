#include "moxui/backend/detail/focus/FocusReturn.h"

#include <QApplication>
#include <QWindow>

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
    auto const* const focused = QGuiApplication::focusWindow();
    return focused && BelongsTo(*focused, other);
}

void FocusReturn::GiveBack(QWidget* otherwise) const {
    if (window && window->isVisible()) {
        window->activateWindow();
        if (widget && widget->isVisible()) widget->setFocus(Qt::PopupFocusReason);
    } else if (otherwise && otherwise->isVisible()) {
        otherwise->activateWindow();
    }
}

bool BelongsTo(QWindow const& window, QWidget const& owner) {
    auto const* const own = owner.windowHandle();
    return own && (&window == own || own->isAncestorOf(&window, QWindow::IncludeTransients));
}

}  // namespace moxui::backend
