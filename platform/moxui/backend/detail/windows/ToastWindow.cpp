#include "moxui/backend/detail/windows/ToastWindow.h"

#include <QPainter>
#include <QWindow>

#include "moxui/backend/HostWidget.h"
#include "moxui/backend/detail/drawing/Conversions.h"
#include "moxui/backend/detail/drawing/QtDrawbot.h"
#include "moxui/backend/detail/drawing/Theme.h"
#include "moxui/backend/detail/windows/Placement.h"
#include "moxui/backend/detail/windows/Screens.h"
#include "moxui/backend/detail/windows/Wayland.h"
#include "moxui/skins/ThemeProvider.h"

namespace moxui::backend {
namespace {

using Size = skins::ThemeSize;

constexpr int kTextFlags = Qt::AlignCenter | Qt::TextWordWrap | Qt::TextWrapAnywhere;

QMargins Padding() {
    int const across = WholeSize(Size::ToastPaddingAcross);
    int const down = WholeSize(Size::ToastPaddingDown);
    return {across, down, across, down};
}

}  // namespace

ToastWindow::ToastWindow() {
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput |
                   Qt::WindowDoesNotAcceptFocus);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    role = ui::AccessibleRole::Alert;
}

void ToastWindow::ShowOver(QWidget const* owner, QString const& newText) {
    text = newText;
    setAccessibleName(text);
    ApplyTheme(*this);

    auto const size = TextPlace().marginsAdded(Padding()).size();
    auto const screens = AvailableScreens();
    if (screens.empty()) return;
    auto const below = owner ? FromQRectF(QRectF(owner->geometry())) : screens.front();
    auto place = CentredOver({0, 0, float(size.width()), float(size.height())}, below);
    place.y = below.y + below.height - place.height -
              skins::ThemeProvider::Get().GetSize(Size::ToastAboveFoot);
    setGeometry(ToWholeUnits(MovedInto(place, ScreenOf(below, screens))));

    MakeTransient(*this, owner);
    show();
    // Qt 6.4 forgets this one flag while it makes a window on X11.
    for (bool const on : {false, true})
        windowHandle()->setFlag(Qt::WindowTransparentForInput, on);
    LetInputThrough(*this);
    raise();
    update();
    Announce(*this);
}

void ToastWindow::paintEvent(QPaintEvent*) {
    auto const& theme = skins::ThemeProvider::Get();
    QPainter painter(this);
    painter.fillRect(rect(), ToQColor(theme.GetColor(skins::ThemeColor::kControl)));
    PaintFrameLine(painter, rect());
    painter.setPen(ToQColor(theme.GetColor(skins::ThemeColor::kText)));
    painter.drawText(rect().marginsRemoved(Padding()), kTextFlags, text);
}

QRect ToastWindow::TextPlace() const {
    return fontMetrics().boundingRect(QRect(0, 0, WholeSize(Size::ToastText), 1), kTextFlags, text);
}

}  // namespace moxui::backend
