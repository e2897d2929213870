#include "moxui/backend/detail/FocusReturn.h"

#include <QApplication>
#include <QWindow>

namespace moxui::backend {

void FocusReturn::Remember() {
    window = QApplication::activeWindow();
    widget = QApplication::focusWidget();
}

void FocusReturn::GiveBackFrom(QWidget& from) const {
    auto const* const active = QGuiApplication::focusWindow();
    if (!window || !window->isVisible() || !active || !BelongsTo(*active, from)) return;
    window->activateWindow();
    if (widget && widget->isVisible()) widget->setFocus(Qt::PopupFocusReason);
}

bool BelongsTo(QWindow const& window, QWidget const& owner) {
    auto const* const own = owner.windowHandle();
    return own && (&window == own || own->isAncestorOf(&window, QWindow::IncludeTransients));
}

}  // namespace moxui::backend
