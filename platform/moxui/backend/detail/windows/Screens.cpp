#include "moxui/backend/detail/windows/Screens.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include "moxui/backend/detail/drawing/Conversions.h"

namespace moxui::backend {

std::vector<moxcore::geom::RectT<float>> AvailableScreens() {
    std::vector<moxcore::geom::RectT<float>> screens;
    for (auto const* const screen : QGuiApplication::screens())
        screens.push_back(FromQRectF(QRectF(screen->availableGeometry())));
    return screens;
}

void MakeTransient(QWidget& window, QWidget const* owner) {
    window.winId();  // makes the window handle
    window.windowHandle()->setTransientParent(owner ? owner->windowHandle() : nullptr);
}

}  // namespace moxui::backend
