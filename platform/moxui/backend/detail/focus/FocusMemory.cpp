#include "moxui/backend/detail/focus/FocusMemory.h"

#include <QApplication>

#include "moxui/backend/detail/focus/FocusOrder.h"

namespace moxui::backend {

FocusMemory::FocusMemory(QWidget& window) : window(window) {
    auto const onFocusChanged = [this](QWidget*, QWidget* now) {
        if (!now || !this->window.isAncestorOf(now)) return;
        if (auto const* const control = QAccessible::queryAccessibleInterface(now)) {
            role = control->role();
            name = control->text(QAccessible::Name);
        }
    };
    connection = QObject::connect(qApp, &QApplication::focusChanged, &window, onFocusChanged);
}

FocusMemory::~FocusMemory() {
    // The window that this is a member of gives the focus away only later, while it is destroyed.
    QObject::disconnect(connection);
}

bool FocusMemory::Restore(Qt::FocusReason reason) const {
    if (role == QAccessible::NoRole) return false;
    for (auto* const widget : FocusableBelow(window)) {
        auto const* const control = QAccessible::queryAccessibleInterface(widget);
        if (!control || control->role() != role || control->text(QAccessible::Name) != name)
            continue;
        widget->setFocus(reason);
        return true;
    }
    return false;
}

void FocusMemory::Forget() {
    role = QAccessible::NoRole;
    name.clear();
}

}  // namespace moxui::backend
