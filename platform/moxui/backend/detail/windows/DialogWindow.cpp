#include "moxui/backend/detail/windows/DialogWindow.h"

#include <QKeyEvent>

#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/windows/Placement.h"
#include "moxui/backend/detail/windows/Screens.h"

namespace moxui::backend {

DialogWindow::DialogWindow(QWidget* parentWindow) : parentWindow(parentWindow) {
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    if (parentWindow) connect(parentWindow, &QObject::destroyed, this, [this] { done(Rejected); });
}

void DialogWindow::Centre() {
    auto const screens = AvailableScreens();
    if (screens.empty()) return;
    auto const below = parentWindow && parentWindow->isVisible()
                           ? FromQRectF(QRectF(parentWindow->frameGeometry()))
                           : screens.front();
    auto const place = CentredOver(FromQRectF(QRectF(frameGeometry())), below);
    move(ToWholeUnits(MovedInto(place, ScreenOf(below, screens))).topLeft());
}

void DialogWindow::reject() {
    if (!node || !onCancel || !onCancel()) QDialog::reject();
}

void DialogWindow::setVisible(bool visible) {
    if (visible == isVisible()) return;
    if (visible) {
        MakeTransient(*this, parentWindow);
        focus.RememberFor(*this);
        if (node && onShown) onShown(true);
        QDialog::setVisible(true);
        activateWindow();
        return;
    }
    bool const focused = FocusReturn::IsWith(*this);
    QDialog::setVisible(false);
    if (focused) focus.GiveBack(parentWindow);
    if (node && onShown) onShown(false);
}

void DialogWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        return QDialog::keyPressEvent(event);
    // Not Qt's own choice, which is any button when there is no default one.
    if (node && onEnter && !(event->modifiers() & ~Qt::KeypadModifier)) onEnter();
}

}  // namespace moxui::backend
